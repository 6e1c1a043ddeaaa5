// The file of points: lines of the .sol form, each one true and complete when its line end stands.
#pragma once

#include <fstream>
#include <stdexcept>
#include <string>

#include "complete/program.h"

namespace latbox::complete {

// The file cannot be written: the run ends with status 1.
class WriteFailure : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// The line of a point, with its line end. Target values stand in the order of .sol files: those with a wanted
// value are moved behind the others, each changing places with the last one that is not there yet.
std::string lineOf(const Program& program, const Point& x, const Norms& norms, long seconds,
                   const std::string& parameters);

class PointsFile {
 public:
  // Behind the path: the file that was there before, and the one that takes the place of the points.
  static constexpr const char* KEPT = ".old";
  static constexpr const char* NEXT = ".tmp";

  // Begins an empty file; one that is there is kept as PATH.old. Throws WriteFailure.
  explicit PointsFile(std::string path);

  void append(const std::string& line);
  // The line becomes the only one, by a rename: a reader finds the old content or the new.
  void replace(const std::string& line);
  // What was appended stands in the file.
  void flush();

 private:
  void open(bool append);
  void require(bool well) const;

  std::string path_;
  std::ofstream file_;
};

}  // namespace latbox::complete
