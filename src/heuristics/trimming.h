// Trimming: the coordinates in which a nearly feasible basis vector leaves its bounds get a larger weight or
// a shift, so that the next reduction prefers vectors that behave there.
#pragma once

#include "lattice/lattice.h"

namespace latbox {

// One pass, and further ones while they pay. `previous` holds the coordinates of the pass before; null for
// the driver. The reduction checks what it touches.
// Throws: RestartException, PrecisionException.
template <class T, class F>
void trim(Lattice<T, F>& lattice, const Set<long>* previous);

}  // namespace latbox
