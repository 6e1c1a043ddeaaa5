// A vector with the inhomogeneous coordinate exactly once.
#pragma once

#include "lattice/lattice.h"

namespace latbox {

// Such a vector of the lattice, in unit coordinates; empty where there is none. In the equation lattice only
// the kernel's rows count. What is met on the way is judged.
// Throws: RestartException; PrecisionException as row operations do.
template <class T, class F>
Vector<T> extractInhom(Lattice<T, F>& lattice);

}  // namespace latbox
