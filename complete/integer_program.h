// The program in whole numbers: whole variables in ranges, rows with whole coefficients and sides.
#pragma once

#include <optional>
#include <vector>

#include "complete/program.h"

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

// What the range of a row follows from.
enum class RowKind {
  CONDITION,
  // The upper side is the bound of the target norm.
  TARGET,
  // Both sides are: the absolute value of the row is bounded.
  TARGET_SIZE
};

// low <= a z <= high. What the row was before it lost its fixed variables and its common divisor is
// divisor * (a z) + offset; bounds of the target norm are told in these units.
struct Row {
  IntegerVector a;
  Range range;
  RowKind kind = RowKind::CONDITION;
  Integer divisor = 1;
  Integer offset = 0;
};

struct IntegerProgram {
  std::vector<Range> box;
  std::vector<Row> rows;
};

// z[j] = 10^digits[j] x[j]; each row is multiplied by a common denominator, sides are rounded inwards. A row
// that no point can keep becomes an empty range.
IntegerProgram integerProgramOf(const Program& program);

// The point that belongs to whole variables.
Point pointOf(const Program& program, const IntegerVector& z);

// Narrows the range of a row that is no condition to what the bound of the target norm leaves.
void limitRow(Row& row, const Integer& limit);

// The coefficients of a row of the program for the whole variables.
std::vector<Rational> perStep(const Program& program, const std::vector<Rational>& row);
Integer commonDenominator(const std::vector<Rational>& values);

}  // namespace latbox::complete
