// What a walk goes by, in GMP's numbers: products of the cut vectors with point and basis, weighted vectors
// and the reach of the multipliers; and whether doubles can hold all that the walk forms of them.
//
// Names are those of docs/proof.md.
#pragma once

#include "complete/proof/cut_vectors.h"

namespace latbox::complete::proof {

// The constant vector and its value are in units of one part in so many.
inline constexpr unsigned long UNIT = 1024;

struct Product {
  // g u = start + sum_i steps_i lambda_i, i >= the level.
  Integer start;
  IntegerVector steps;
  // |g|.
  Integer size;
};

class WalkInput {
 public:
  // The lattice must outlive this.
  WalkInput(const ProofLattice& lattice, const CutVectors& cuts);

  // Bounds of everything that a walk forms, those of docs/proof.md: where they hold, doubles do for whoever
  // checks, and here.
  bool fitsShort() const;

  // Of a vector that is orthogonal to all rows below level t.
  Product productOf(const IntegerVector& vector, std::size_t t) const;

  // By level.
  std::vector<Product> mains;
  std::vector<std::vector<Product>> sides;
  // Entries times widths.
  IntegerMatrix weighted;
  IntegerVector divisors;
  IntegerVector top;
  Integer topValue;
  // The reach of the multipliers.
  IntegerVector least;
  IntegerVector most;

 private:
  IntegerVector weightedOf(const IntegerVector& vector, unsigned long factor) const;
  void addReach(const IntegerVector& dual);

  const ProofLattice& lattice_;
  IntegerVector widths_;
  IntegerVector start_;
};

}  // namespace latbox::complete::proof
