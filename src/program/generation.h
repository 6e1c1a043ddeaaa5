// From the program as read to the lattice that is searched.
#pragma once

#include "lattice/lattice.h"

namespace latbox {

// Rewrites `program` by stage one, unless that has been done, and makes the base part anew from it by stage
// two. Without `full` (which also bounds the combined target) and `force` stage one is left out, except where
// the base part has a bounded target without its row.
// Throws, fails with: as the stages do.
template <class T, class F>
void prepare(Lattice<T, F>& lattice, bool full, bool force);

// The lattice of the prepared base part: through the kernel of the equations where there are any. What was
// found in the equation lattice, and the stars, are judged again in the new one.
// Fails with: "The equation system has no integer solution :(".
template <class T, class F>
void prepareLattice(Lattice<T, F>& lattice);

// B_save, B, c, R, bounds and one unit transformation anew: of the equations, or of targets and rows.
// Throws: PrecisionException with "R overflow" and "B_save overflow".
// Fails with: "sol bounds error", "ineq bounds error1" and "ineq bounds error2" where a width is 0.
template <class T, class F>
void generateLattice(Lattice<T, F>& lattice, bool equations);

// Whether a bound of `program` has moved since the basis was generated.
template <class T, class F>
bool programAhead(const Lattice<T, F>& lattice);

}  // namespace latbox
