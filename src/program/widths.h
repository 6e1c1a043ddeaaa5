// The common range of the embedding.
#pragma once

#include "lattice/lattice.h"

namespace latbox {

// The common multiple of all widths of the base part: of its variables, and without `equations` of its rows
// and its bounded target.
// Requires: the base part is prepared.
// Throws: PrecisionException with "R overflow".
// Fails with: "ineq bounds error1" where a row has no width.
template <class T, class F>
T computeRange(Lattice<T, F>& lattice, bool equations);

// The common multiple of `range` and, with `take`, the widths of the variables; the working bounds that the
// user left open are moved to widths that fit in any case.
template <class T, class F>
T lcmOfWidths(Lattice<T, F>& lattice, T range, bool take);

// A width near b - s with a small common multiple with `range`; s is updated in place.
template <class T>
T adjustWidth(const T& range, const T& b, T& s);

}  // namespace latbox
