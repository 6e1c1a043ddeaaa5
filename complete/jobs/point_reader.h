// The points of a result, none of which is believed.
//
// Idea: millions of them come from other machines, and whoever joins them must not take as long as who found
// them. A line in the very form that is written for such a point, with values that are whole and short, is
// read, verified and placed in machine words, some 3 microseconds for 100 variables; any other line by GMP,
// which says the same, and what is wrong.
#pragma once

#include <cstdint>
#include <functional>
#include <string_view>
#include <vector>

#include "complete/jobs/coefficients.h"
#include "complete/jobs/result.h"
#include "complete/program/verification.h"

namespace latbox::complete::jobs {

class PointReader {
 public:
  // Both must outlive this.
  PointReader(const Program& program, const PieceLattice& lattice);

  // Of a list of points. Throws BadWords with the line unless there are as many as the result says, each one
  // verified against the program as it was read, of the entry and not of what the result has left, there once
  // alone, and its line that of the .sol form.
  void judge(const Result& result, const Entry& entry) const;
  // Of better and better points, each one verified. Throws BadWords with the line.
  void read(const Result& result, const std::function<void(const Point&)>& take) const;

 private:
  struct Line {
    // Equal points have equal ones, and others hardly ever.
    std::uint64_t sum;
    unsigned long number;
    std::string_view text;
  };
  // Room for one point after another.
  struct Room {
    std::vector<long> words;
    Coefficients::Room coefficients;
    IntegerVector z;
    Point x;
  };

  template <class Use>
  void eachLine(const Result& result, const Use& use) const;
  std::uint64_t judgeLine(std::string_view line, const Result& result, const Entry& entry, Room& room) const;
  bool takeWords(std::string_view line, std::vector<long>& words) const;
  void takeWhole(std::string_view line, IntegerVector& z) const;
  void requireDistinct(std::vector<Line>& all) const;

  const Program& program_;
  Verification verification_;
  Coefficients coefficients_;
  // What is between a point's values and its time, where that is the same for all points; else empty.
  std::string middle_;
};

}  // namespace latbox::complete::jobs
