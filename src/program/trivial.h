// The corners and the centre of the box of the variable bounds: three candidates that cost nothing.
#pragma once

#include "lattice/lattice.h"

namespace latbox {

// Judges them. None of them ends the run by itself; what they found is told afterwards, and so is a bound
// that has moved since the lattice was made.
// Throws: RestartException.
template <class T, class F>
void checkTrivialSolutions(Lattice<T, F>& lattice);

}  // namespace latbox
