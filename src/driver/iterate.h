// The iterations of a run.
#pragma once

#include "driver/ylattice.h"

namespace latbox {

// Iterates until another input is asked for or the run state is "stopped" at the top of an iteration. Each
// step runs on the ladder. RestartException and the end conditions leave through it.
void iterate(YLattice<dbl_t>& y);

// Sweeps until one has left no position untested, at most 64 times: a sweep has a budget of swaps, and what
// it did not reach is left to its caller. Stops early when the time of `btime` is spent.
template <class T, class F>
void reduceFully(Lattice<T, F>& lattice);

}  // namespace latbox
