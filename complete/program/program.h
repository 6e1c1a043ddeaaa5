// The program by the plain meaning of its file, and what a point is worth in it.
#pragma once

#include <string_view>
#include <vector>

#include "complete/program/number.h"

namespace latbox::complete {

using Point = std::vector<Rational>;
using Matrix = std::vector<std::vector<Rational>>;

// Find x with Ag x = bg, lu <= Au x <= ru, lx <= x <= rx, each x[i] a multiple of 10^-digits[i]. A target is
// minimised (wanted -inf), maximised (inf) or brought to a value. Numbering begins at 0.
struct Program {
  std::vector<Number> wanted;
  Matrix targets;
  Matrix equations;
  std::vector<Rational> sides;
  Matrix inequations;
  std::vector<Number> lowerSides;
  std::vector<Number> upperSides;
  std::vector<unsigned long> digits;
  std::vector<Number> lower;
  std::vector<Number> upper;

  std::size_t variables() const { return upper.size(); }
};

// Smaller is better: first by the target norm, then by the slack norm.
struct Norms {
  Rational target;
  Rational slack;

  friend bool operator==(const Norms&, const Norms&) = default;
  friend bool operator<(const Norms& a, const Norms& b) {
    return a.target < b.target || (a.target == b.target && a.slack < b.slack);
  }
};

// Whether the point keeps every condition. Requires one value a variable.
bool isFeasible(const Program& program, const Point& x);

// Of each target its value, or its distance from the value that is wanted.
std::vector<Rational> targetValues(const Program& program, const Point& x);
// Values to be maximised count negated; the slack norm sums the distances from wanted values alone.
Norms normsOf(const Program& program, const Point& x);

Rational product(const std::vector<Rational>& row, const Point& x);

}  // namespace latbox::complete
