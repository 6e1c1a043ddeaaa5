// One piece of a folder, from its line to its result.
//
// A job that is killed goes on from its checkpoint when it is begun again; one that is told to end writes one
// and has no result. One whose time is over brings what it has found and what it has left.
#pragma once

#include "complete/run/options.h"

namespace latbox::complete::jobs {

// Status 0: the result is in place, and its line was printed. UNKNOWN: a signal has ended it before.
int doJob(const Options& options);

}  // namespace latbox::complete::jobs
