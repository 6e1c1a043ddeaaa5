// Programs of a few variables in small boxes, and all their points by trying each.
#pragma once

#include <random>

#include "support.h"

namespace latbox::complete::testing {

class SmallPrograms {
 public:
  explicit SmallPrograms(unsigned seed) : random_(seed) {}

  // Up to five variables with up to six values each, up to five rows of all kinds of sides around a point.
  IntegerProgram next() {
    IntegerProgram program;
    IntegerVector middle;
    for (long n = draw(1, 5); n > 0; --n) {
      const long low = draw(-4, 4);
      program.box.push_back(rangeOf(low, low + draw(0, 5)));
      middle.emplace_back(low);
    }
    for (long m = draw(0, 5); m > 0; --m) {
      Row row;
      Integer value = draw(-2, 6);
      for (std::size_t j = 0; j < program.box.size(); ++j) {
        row.a.emplace_back(draw(0, 2) == 0 ? 0 : draw(-9, 9));
        value += row.a[j] * middle[j];
      }
      const long kind = draw(0, 3);
      if (kind != 1) row.range.high = value + (kind == 3 ? draw(0, 6) : 0);
      if (kind != 2) row.range.low = value;
      program.rows.push_back(row);
    }
    return program;
  }

  long draw(long low, long high) {
    return low + static_cast<long>(random_() % static_cast<unsigned long>(high - low + 1));
  }

 private:
  std::mt19937 random_;
};

inline bool keeps(const Range& range, const Integer& value) {
  return (!range.low || value >= *range.low) && (!range.high || value <= *range.high);
}

// Requires finite ranges of the variables.
inline std::set<IntegerVector> pointsOf(const IntegerProgram& program) {
  std::set<IntegerVector> points;
  IntegerVector z;
  for (const Range& range : program.box) {
    if (range.isEmpty()) return {};
    z.push_back(*range.low);
  }
  while (true) {
    bool isPoint = true;
    for (const Row& row : program.rows) {
      Integer value = 0;
      for (std::size_t j = 0; j < z.size(); ++j) value += row.a[j] * z[j];
      isPoint = isPoint && keeps(row.range, value);
    }
    if (isPoint) points.insert(z);
    std::size_t j = 0;
    for (; j < z.size() && z[j] == *program.box[j].high; ++j) z[j] = *program.box[j].low;
    if (j == z.size()) return points;
    ++z[j];
  }
}

}  // namespace latbox::complete::testing
