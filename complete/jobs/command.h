// What latbox-all does with a folder of pieces: splits, does a piece, takes a result, lists, joins.
#pragma once

#include "complete/run/options.h"

namespace latbox::complete::jobs {

// Requires options.jobs, and that they go together as parseOptions asks. The exit status; throws BadInput,
// and other exceptions for failures.
int runJobs(const Options& options);

}  // namespace latbox::complete::jobs
