// The vectors of the basis from which a solution can come.
#pragma once

#include "lattice/lattice.h"
#include "numbers/number.h"

namespace latbox {

// The first row of B that carries the inhomogeneous coordinate at its full value, 0 if there is none.
template <class T, class F>
long carrierOfInhom(const Lattice<T, F>& lattice) {
  for (long i = 1; i <= lattice.rank; ++i)
    if (isZero(T(abs(lattice.B[i][lattice.dim]) - abs(lattice.inhomScaled)))) return i;
  return 0;
}

}  // namespace latbox
