// The file of points: lines of the .sol form, each one true and complete when its line end stands.
#pragma once

#include <fstream>
#include <optional>
#include <string>

#include "complete/files/digest.h"
#include "complete/files/write_failure.h"
#include "complete/program/program.h"

namespace latbox::complete {

// The line of a point, with its line end. Target values stand in the order of .sol files: those with a wanted
// value are moved behind the others, each changing places with the last one that is not there yet.
std::string lineOf(const Program& program, const Point& x, const Norms& norms, long seconds,
                   const std::string& parameters);

// Of the first bytes of a file; nothing if it is shorter, or cannot be read.
std::optional<Digest> digestOfFile(const std::string& path, unsigned long bytes);

class PointsFile {
 public:
  // Behind the path: the file that was there before, and the one that takes the place of the points.
  static constexpr const char* KEPT = ".old";
  static constexpr const char* NEXT = ".tmp";

  // Begins an empty file; one that is there is kept as PATH.old, unless it is empty too, so that a run which
  // is killed at its beginning and begun again does not put nothing in the place of what was kept. Throws
  // WriteFailure.
  explicit PointsFile(std::string path);
  // Goes on with the first `bytes` bytes of the file that is there, whose digest that is; what stands behind
  // them goes. Throws WriteFailure, also if it is shorter.
  PointsFile(std::string path, unsigned long bytes, const Digest& digest);

  void append(const std::string& line);
  // The line becomes the only one, by a rename: a reader finds the old content or the new.
  void replace(const std::string& line);
  // What was appended stands in the file.
  void flush();
  unsigned long bytes() const { return bytes_; }
  const Digest& digest() const { return digest_; }

 private:
  void open(bool append);
  void require(bool well);

  std::string path_;
  std::ofstream file_;
  // Why it cannot be written any more: whichever thread comes second tells the reason of the first.
  int error_ = 0;
  unsigned long bytes_ = 0;
  Digest digest_;
};

}  // namespace latbox::complete
