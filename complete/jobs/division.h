// A folder of pieces from a program, and more pieces in the place of one.
#pragma once

#include "complete/run/options.h"

namespace latbox::complete::jobs {

// Both print how many pieces there are now in the place of what was split, and their numbers. Where that was
// done before, nothing is changed. Throw BadInput, BadFolder, WriteFailure, ReductionFailure.

// The pieces of the program, in a new folder. Nothing is left to be split where presolve decides.
int begin(const Options& options);

// The pieces of a piece, or of what its result has left undone.
int divide(const Options& options);

}  // namespace latbox::complete::jobs
