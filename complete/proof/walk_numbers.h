// The numbers of a walk: 64 bits and doubles where no operation rounds, GMP's else; and the loops over
// columns, which take nearly all of its time.
#pragma once

#include <cstdint>

#include "complete/lattice/elimination.h"

namespace latbox::complete::proof {

// Vectors are padded with zeros to a multiple of this, for the loops over them.
inline constexpr std::size_t WIDTH = 8;

// 64 bits and doubles.
struct Short {
  using Scalar = std::int64_t;
  using Entry = double;
  static Scalar scalar(const Integer& value) { return value.get_si(); }
  static Entry entry(const Integer& value) { return value.get_d(); }
  static Integer whole(Scalar value) { return value; }
};

struct Long {
  using Scalar = Integer;
  using Entry = Integer;
  static const Integer& scalar(const Integer& value) { return value; }
  static const Integer& entry(const Integer& value) { return value; }
  static const Integer& whole(const Integer& value) { return value; }
};

// Rounded towards minus infinity; divisor > 0.
inline std::int64_t floorDivided(std::int64_t value, std::int64_t divisor) {
  const std::int64_t quotient = value / divisor;
  return quotient - static_cast<std::int64_t>(value % divisor < 0);
}

inline Integer floorDivided(const Integer& value, const Integer& divisor) {
  return floorOf(value, divisor);
}

// next = before + factor * vector; the sum of the sizes of next. All vectors have one size, a multiple of
// WIDTH. All sums are exact, so that their order is of no importance.
std::int64_t addScaled(std::vector<double>& next, const std::vector<double>& before,
                       const std::vector<double>& vector, std::int64_t factor);
Integer addScaled(IntegerVector& next, const IntegerVector& before, const IntegerVector& vector,
                  const Integer& factor);

}  // namespace latbox::complete::proof
