// How trimming moves a weight: by steps within a limit that grows slowly, never through 0, and back to all
// ones when it has grown beyond use.
#pragma once

#include "lattice/lattice.h"

namespace latbox {

// One step of the weight of coordinate p away from or towards 0.
// Fails with: "zero step inconsistency".
template <class T, class F>
void scaleStep(Lattice<T, F>& lattice, long p, const T& step);

// Takes 1 off the magnitude of all other weights instead; false, and nothing changed, if one of them is too
// small for that.
template <class T, class F>
bool normalizeScales(Lattice<T, F>& lattice, long p);

// value or -value, by one draw.
template <class T>
T randomSign(const T& value);

}  // namespace latbox
