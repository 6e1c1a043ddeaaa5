// Short representatives modulo a lattice, by Babai's nearest plane (On Lovasz' lattice reduction and the
// nearest lattice point problem, 1986), in coordinates that are stretched by weights.
#pragma once

#include "complete/lattice/gram_schmidt.h"

namespace latbox::complete::proof {

class NearestPlane {
 public:
  // Rows that are independent, best reduced where each coordinate counts times its weight.
  NearestPlane(const IntegerMatrix& rows, const IntegerVector& weights);

  // Takes whole multiples of scale * rows away from the vector.
  void reduce(IntegerVector& vector, const Integer& scale) const;

 private:
  const IntegerMatrix& rows_;
  // For the products with what is not weighted.
  std::vector<FloatVector> directions_;
};

}  // namespace latbox::complete::proof
