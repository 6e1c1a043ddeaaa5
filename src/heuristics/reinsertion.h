// A good vector that the search has remembered goes back into the basis, so that the next reduction starts
// from another side.
#pragma once

#include "lattice/lattice.h"

namespace latbox {

// Puts what the search remembers back into the basis: with solutions found, the next of them in turn;
// otherwise the best slack vector, or before there was one the best inhomogeneous vector.
// Throws: as insertion does.
template <class T, class F>
void reinsertBest(Lattice<T, F>& lattice);

// Brings a lattice vector, in weighted coordinates, into the basis where it is short enough. A vector that
// is none, or a basis vector already, changes nothing.
template <class T, class F>
void insertVector(Lattice<T, F>& lattice, const Vector<T>& weighted);

}  // namespace latbox
