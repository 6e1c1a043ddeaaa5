// The cut vectors of a proof: near the Gram-Schmidt vectors of the basis in the coordinates of the cube,
// whole, and orthogonal to the rows below their level exactly.
//
// A whole vector is orthogonal to K_0, ..., K_{t-1} if and only if it is a whole combination of D_t, ...,
// D_{k-1} and the vectors that are orthogonal to all rows. A scaled real vector is rounded to one by nearest
// planes: along D_i its part is its product with K_i.
#pragma once

#include "complete/proof/lattice.h"
#include "complete/proof/nearest_plane.h"

namespace latbox::complete::proof {

struct Level {
  IntegerVector main;
  Integer divisor;
  IntegerMatrix sides;
};

struct CutVectors {
  IntegerVector constant;
  // From level 0 up.
  std::vector<Level> levels;
};

// A real vector is given in fixed point, with so many binary places.
inline constexpr unsigned long PLACES = 40;

class CutRounding {
 public:
  // The lattice must outlive this.
  explicit CutRounding(const ProofLattice& lattice);

  // A whole vector near this one, orthogonal to all rows below the level.
  IntegerVector rounded(IntegerVector fixedPoint, std::size_t level) const;

 private:
  const ProofLattice& lattice_;
  NearestPlane plane_;
};

// Of this scale the vectors are near enough to the real ones, and short enough for a walk in double if that
// can be. Moves the point of the lattice near the centre.
CutVectors cutVectorsOf(ProofLattice& lattice);

}  // namespace latbox::complete::proof
