// The exact point at a leaf of the search. The cuts may leave more than the box, and mostly it is a leaf that
// is not in it; or there are millions of points. So there is a way of its own where all numbers are short.
#pragma once

#include "complete/lattice/box_lattice.h"

namespace latbox::complete {

class Leaf {
 public:
  explicit Leaf(const BoxLattice& lattice);

  // All variables of point + sum lambda_i basis_i, until the next call; null if it is not in the box.
  const IntegerVector* pointOf(const IntegerVector& lambda);
  // The same from multipliers that are whole numbers of a floating type; there may be more of them.
  const IntegerVector* pointOf(const std::vector<double>& lambda);
  const IntegerVector* pointOf(const std::vector<mpf_class>& lambda);

 private:
  // Entries below 2^31, multipliers below 2^24, at most 2^6 of them, and points and ends below 2^61 keep
  // every sum below 2^62.
  static constexpr std::size_t MOST_ROWS = 64;
  static constexpr long ENTRY_LIMIT = 1l << 31;
  static constexpr double MULTIPLIER_LIMIT = 1 << 24;
  static constexpr long END_LIMIT = 1l << 61;

  struct Coordinate {
    long point;
    long low;
    long high;
    std::vector<long> entries;
  };

  void listShort();
  bool takeShort(const std::vector<double>& lambda);
  const IntegerVector* shortPoint();

  const BoxLattice& lattice_;
  // Empty if a number is too long.
  std::vector<Coordinate> coordinates_;
  std::vector<long> steps_;
  std::vector<long> values_;
  // The last point.
  IntegerVector z_;
};

}  // namespace latbox::complete
