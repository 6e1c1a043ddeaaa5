// A file of solutions, of whatever length, in the memory of one of them.
//
// latbox keeps a few solutions, latbox-all lists millions. So no line is kept: who needs them again reads
// them again, all of them or a single one.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

#include "check/files/line_file.h"
#include "check/files/solution.h"

namespace latbox::check {

class SolutionFile {
 public:
  // Throws: Unreadable, here and below, without the file's name.
  explicit SolutionFile(const std::string& path) : lines_(path) {}

  using Visit = std::function<void(const Solution& solution, std::uint64_t offset)>;
  // Calls `visit` for each solution, in the order of the file, with the offset of its line. Blank lines are
  // passed over, and so is a torn one: a last line without a line end that breaks off where more is needed. A
  // program that appends its lines leaves it when it is killed.
  // Throws: what `visit` throws, too.
  void forEach(const Visit& visit);
  // The solution whose line begins at `offset`.
  // Requires: `offset` came from forEach.
  Solution at(std::uint64_t offset);

  // The number of the torn line, 0 if there is none. Valid after forEach.
  long tornLine() const { return tornLine_; }

 private:
  std::optional<Solution> read(const LineFile::Line& line, long number);

  LineFile lines_;
  long tornLine_ = 0;
};

}  // namespace latbox::check
