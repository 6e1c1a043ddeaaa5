// The points of a result, none of which is believed.
#pragma once

#include <cstdint>
#include <functional>
#include <string_view>
#include <vector>

#include "complete/jobs/coefficients.h"
#include "complete/jobs/result.h"
#include "complete/verification.h"

namespace latbox::complete::jobs {

class PointReader {
 public:
  // Of lists of points, or of better and better ones. Both must outlive this.
  PointReader(const Program& program, const PieceLattice& lattice, bool isListing);

  // The points of the lines, as many as the result says, each verified against the program as it was read;
  // those of a list to belong to the entry, and not to what the result has left, each once, and its line to
  // be that of the .sol form. Throws BadWords with the line.
  void read(const Result& result, const Entry& entry, const std::function<void(const Point&)>& take) const;

 private:
  struct Line {
    // Equal points have equal ones, and others hardly ever.
    std::uint64_t sum;
    unsigned long number;
    std::string_view text;
  };

  IntegerVector wholeOf(std::string_view line) const;
  // The same, into the memory of another one.
  void takeWhole(std::string_view line, IntegerVector& z) const;
  void requireDistinct(std::vector<Line>& all) const;
  bool isLineOf(std::string_view line, const IntegerVector& z, const Point& x) const;
  void append(std::string& text, const IntegerVector& z) const;

  const Program& program_;
  bool isListing_;
  Verification verification_;
  Coefficients coefficients_;
  std::vector<long> steps_;
  // What is between a point's values and its time, where that is the same for all points whose values are
  // whole; else empty.
  std::string middle_;
};

}  // namespace latbox::complete::jobs
