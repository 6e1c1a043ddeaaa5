// The maps between lattice vectors and variables beside those that every layer needs (Lattice::lat2opt,
// opt2lat, tryOpt2lat).
#pragma once

#include "lattice/lattice.h"

namespace latbox {

// As Lattice::tryOpt2lat, in unit coordinates, but a slack may be negative: the point breaks the row that the
// slack stands for, as near misses do.
template <class T, class F>
bool embedNearMiss(const Lattice<T, F>& lattice, const Vector<T>& optVec, Vector<T>& latVec);

}  // namespace latbox
