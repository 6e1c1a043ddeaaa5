// Random sampling of short lattice vectors (after C. P. Schnorr, "Lattice reduction by random sampling and
// birthday methods", 2003).
#pragma once

#include "lattice/lattice.h"

namespace latbox {

// The result of one draw.
template <class T>
struct Sample {
  Vector<T> vector;       // the lattice vector, weighted coordinates
  Vector<T> coordinates;  // in the basis, length `rank`
  Vector<dbl_t> mu;       // its Gram-Schmidt coefficients, length `rank`
};

// Draws a vector b_m - sum of c_j b_j over the positions j from m - 1 down to k: with coefficients within
// about 1 for the last u of them and within about 1/2 for the others. Positions below k keep those of b_m.
// Requires: the Gram-Schmidt coefficients of rows k..m are valid.
// Throws: PrecisionException as row operations do.
template <class T, class F>
void sampleVector(const Lattice<T, F>& lattice, Sample<T>& result, long k, long m, long u);

// Judges up to `sampleLimit` samples that carry the inhomogeneous coordinate. The first one that is shorter
// than a basis vector, both projected, enters the basis there and ends the call. Without a basis vector that
// carries the coordinate nothing happens.
template <class T, class F>
void randomSampling(Lattice<T, F>& lattice);

}  // namespace latbox
