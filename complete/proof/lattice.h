// The lattice of a derivation: its columns, a point, a basis, vectors dual to it, and those orthogonal to it.
#pragma once

#include <optional>

#include "complete/lattice/box_lattice.h"
#include "complete/proof/derivation.h"

namespace latbox::complete::proof {

struct ProofLattice {
  // The columns: variables, then rows. Numbers of rows that are equations and coordinates.
  std::vector<std::size_t> equations;
  std::vector<std::size_t> coordinates;
  // Point, basis, and the ends of the columns where each is in its class; `equations` of it over all columns.
  BoxLattice box;
  // Candidates of its search, estimated.
  double nodes = 0;
  // dual_i basis_j = 1 for i = j, else 0.
  IntegerMatrix dual;
  // A reduced basis of all whole vectors that are orthogonal to the basis.
  IntegerMatrix orthogonal;

  std::size_t rank() const { return box.rank(); }
  std::size_t columns() const { return box.coordinates(); }
  // The width of a column.
  Integer width(std::size_t c) const { return box.high[c] - box.low[c]; }
};

// Narrows all ranges as far as may be and makes the lattice of what is left. Nothing: a contradiction. Throws
// NoProof where a variable stays open, ReductionFailure.
std::optional<ProofLattice> latticeOf(Derivation& derivation);

// Why there is no proof; what() is for the user.
class NoProof : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

}  // namespace latbox::complete::proof
