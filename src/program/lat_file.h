// The saved lattice: the current basis in unit coordinates with its check vectors and scale, so that a later
// run goes on from the reduced basis. Writer and reader agree item by item; the program itself stands in the
// .opt file.
#pragma once

#include "lattice/lattice.h"

namespace latbox {

// Lattice::writeLatFile writes the file. Reading prepares the program by the bounds of the file; the lattice
// is touched only when all of it could be read. A file that is damaged or of another program ends the run.
// Throws: PrecisionException with "B_save overflow", "lbnd overflow", "ubnd overflow" and "c overflow".
template <class T, class F>
void readLatFile(Lattice<T, F>& lattice);

}  // namespace latbox
