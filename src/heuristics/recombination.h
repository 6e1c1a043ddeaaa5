// Pairwise recombination: the sums and differences of a homogeneous and an inhomogeneous vector, over a
// sample of the collections and the whole basis.
#pragma once

#include "lattice/lattice.h"

namespace latbox {

// Judges all candidates. They are combinations of lattice vectors: solutions are recorded.
// Throws: RestartException, PrecisionException.
template <class T, class F>
void pairwiseRecombination(Lattice<T, F>& lattice);

// Copies at most `pairLimit` vectors of `source` into `destination`, spread evenly and at random, and sets
// its limit to the number that is sought; a `pairLimit` below 1 selects nothing.
template <class T, class F>
void selectRandom(const Lattice<T, F>& lattice, const SortedSet<HeuristicVector<T, F>>& source,
                  SortedSet<HeuristicVector<T, F>>& destination);

}  // namespace latbox
