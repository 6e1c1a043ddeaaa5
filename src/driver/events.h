// What the run does when its search tells of something.
#pragma once

#include "lattice/lattice.h"

namespace latbox {

// found: tellFinds. boundMoved, limitReached: restartHandling. One object per number type, never destroyed,
// without a state.
template <class T>
SearchEvents<T, dbl_t>& runEvents();

// What was found is written. Then, if `finishEnabled`: with `terminate`, or in the last iteration that
// `iters` allows, the run ends; otherwise the lattice is regenerated. Returns only while `finishEnabled` is
// off, and under a front end, where the end stops the run instead.
// Throws: RestartException with "Lattice was regenerated", by which the step is left.
template <class T, class F>
void restartHandling(Lattice<T, F>& lattice, bool terminate);

// The final report and the end of the process, by SIGTERM; under a front end the run state "stopped".
template <class T, class F>
void terminateRun(Lattice<T, F>& lattice);

// What is known goes to the .sol file and into the summary that the final report prints, in one go: a signal
// in between would end the run with a report that knows of more than the file, or of less. Where nothing is
// known the file stays as it is. Nothing while writing is off: at the start the file of the run before stands
// until all of it has been read.
template <class T, class F>
void tellFinds(Lattice<T, F>& lattice);

// Has the finds judged that wait in search.pending, by the road that every candidate takes, and then lets the
// run act on what they changed.
// Requires: comes before anything of the lattice is written or the lattice is regenerated.
// Throws: as restartHandling.
template <class T, class F>
void settleFinds(Lattice<T, F>& lattice);

}  // namespace latbox
