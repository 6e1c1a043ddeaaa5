// Gram-Schmidt vectors of a lattice in its cube, to many digits. Suggestions: what is decided by them is
// proven elsewhere.
#pragma once

#include <optional>
#include <vector>

#include "complete/lattice/box_lattice.h"

namespace latbox::complete {

using Float = mpf_class;
using FloatVector = std::vector<Float>;

struct GramSchmidt {
  // The vectors of rows 0 to k - 1, and behind them what of the point is orthogonal to all rows.
  std::vector<FloatVector> vectors;
  FloatVector norms;
  // mu[i][j], j < i: the part of row i along vector j; row k: of the point.
  std::vector<FloatVector> mu;
  // dual[i] K_j is 1 for i = j and 0 otherwise, up to rounding.
  std::vector<FloatVector> dual;
};

// With the point as it stands, to `bits` bits.
GramSchmidt gramSchmidtOf(const BoxLattice& lattice, unsigned long bits);
// The same computed in long double: good for a reduced basis of short numbers. Nothing: a number is too long
// or too short.
std::optional<GramSchmidt> roughGramSchmidtOf(const BoxLattice& lattice, unsigned long bits);

// Moves the point by rows of the basis so that its parts along the Gram-Schmidt vectors are at most 1/2, but
// for a millionth.
// False: they are, and it stays.
bool centre(BoxLattice& lattice, const GramSchmidt& gso);

}  // namespace latbox::complete
