// When an iteration brings no progress the basis is sorted by quality or shuffled, so that the next reduction
// takes another path.
#pragma once

#include "lattice/lattice.h"

namespace latbox {

template <class T, class F>
void heuristicSort(Lattice<T, F>& lattice);  // the rows by their deviations, best first
template <class T, class F>
void shuffleBase(Lattice<T, F>& lattice, long count);  // count - 1 exchanges of two rows drawn at random
template <class T, class F>
void variateBase(Lattice<T, F>& lattice);  // the harder the longer there was no primary improvement

}  // namespace latbox
