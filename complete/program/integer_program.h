// The program in whole numbers: whole variables in ranges, rows with whole coefficients and sides.
#pragma once

#include <optional>
#include <vector>

#include "complete/program/program.h"

namespace latbox::complete {

using IntegerVector = std::vector<Integer>;
using IntegerMatrix = std::vector<IntegerVector>;

// No value: no bound.
struct Range {
  std::optional<Integer> low;
  std::optional<Integer> high;

  bool isFixed() const { return low && high && *low == *high; }
  bool isEmpty() const { return low && high && *low > *high; }
  bool isFinite() const { return low && high; }
};

// low <= a z <= high.
struct Row {
  IntegerVector a;
  Range range;
};

struct IntegerProgram {
  std::vector<Range> box;
  std::vector<Row> rows;
};

// z[j] = 10^digits[j] x[j]; each row is multiplied by a common denominator, sides are rounded inwards. A row
// that no point can keep becomes an empty range.
IntegerProgram integerProgramOf(const Program& program);

// The point that belongs to whole variables; the second form takes the memory of another point.
Point pointOf(const Program& program, const IntegerVector& z);
void takePoint(Point& x, const Program& program, const IntegerVector& z);

// The coefficients of a row of the program for the whole variables.
std::vector<Rational> perStep(const Program& program, const std::vector<Rational>& row);
Integer commonDenominator(const std::vector<Rational>& values);

}  // namespace latbox::complete
