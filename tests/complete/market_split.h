// Hard programs of any size: 0/1 variables in rows of drawn coefficients.
#pragma once

#include <random>

#include "support.h"

namespace latbox::complete::testing {

// With one point that is known.
inline IntegerProgram marketSplit(std::size_t rows, std::size_t columns, unsigned seed) {
  std::mt19937 random(seed);
  IntegerProgram program;
  program.box.assign(columns, rangeOf(0, 1));
  IntegerVector point;
  for (std::size_t j = 0; j < columns; ++j) point.emplace_back(static_cast<long>(random() % 2));
  for (std::size_t i = 0; i < rows; ++i) {
    Row row;
    Integer side = 0;
    for (std::size_t j = 0; j < columns; ++j) {
      row.a.emplace_back(static_cast<long>(random() % 100));
      side += row.a.back() * point[j];
    }
    row.range = {side, side};
    program.rows.push_back(std::move(row));
  }
  return program;
}

// Whether all rows and ranges are kept.
inline bool isPointOf(const IntegerProgram& program, const IntegerVector& z) {
  const auto isIn = [](const Range& range, const Integer& value) {
    return value >= *range.low && value <= *range.high;
  };
  for (std::size_t j = 0; j < z.size(); ++j)
    if (!isIn(program.box[j], z[j])) return false;
  for (const Row& row : program.rows) {
    Integer value = 0;
    for (std::size_t j = 0; j < z.size(); ++j) value += row.a[j] * z[j];
    if (!isIn(row.range, value)) return false;
  }
  return true;
}

}  // namespace latbox::complete::testing
