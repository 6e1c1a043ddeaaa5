// Sieving: rounds over the collected vectors. What beats the worst inhomogeneous vector of its round goes on,
// as it is or with a centre added or subtracted; what no centre helps becomes a centre.
#pragma once

#include "lattice/lattice.h"

namespace latbox {

// The collections are read alone; what the rounds end with is judged, and the best inhomogeneous vector of it
// offered.
// Throws: RestartException, PrecisionException.
template <class T, class F>
void sieve(Lattice<T, F>& lattice);

}  // namespace latbox
