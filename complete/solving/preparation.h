// A basis worth its search: several are made, and the one with the smallest estimated tree is taken.
//
// Trees of bases that are reduced alike differ by factors of two and more, a basis costs some hundredths of a
// second, and its tree is estimated in as much. So as long as the best tree is much larger than what another
// basis costs, another one is made. All is counted in candidates, not in seconds: the same lattice is always
// prepared in the same way.
#pragma once

#include "complete/lattice/box_lattice.h"

namespace latbox::complete {

struct Prepared {
  BoxLattice lattice;
  // Candidates of its search, estimated; infinite where double does not do.
  double nodes = 0;
};

// The same lattice, by the best of several bases; its point may have moved. Throws ReductionFailure.
Prepared bestBasisOf(BoxLattice lattice);

// Nothing: the program has no point, by proof. A basis that was made before and is one of the lattice is
// taken as it is, its search not estimated; with the basis that comes out it brings the same lattice, point
// and all, so that what was left of a search can be gone on with. Requires finite ranges of all variables.
// Throws ReductionFailure.
std::optional<Prepared> preparedLatticeOf(const IntegerProgram& program, const IntegerMatrix& basis = {});

}  // namespace latbox::complete
