// What all kinds of jobs share: how they end.
#pragma once

#include "complete/jobs/folder.h"
#include "complete/run/options.h"

namespace latbox::complete::jobs {

// One, unless more are asked for: machines are filled by many jobs.
unsigned threadsOf(const Options& options);

// The result appears by one rename; then the checkpoint goes, and the result's line is printed. Throws
// WriteFailure.
void place(const Folder& folder, const Entry& entry, const Result& result);

// "piece 3: done, 12 points, 3456 nodes", and where the best is wanted that, as far as it is known.
std::string lineOf(const Folder& folder, const Entry& entry, const Result& result);

}  // namespace latbox::complete::jobs
