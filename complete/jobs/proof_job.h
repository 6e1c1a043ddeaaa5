// A share of the walk of the folder's proof, which is counted. It has no checkpoint: one that is killed is
// walked again, and one whose time is over is left as a whole.
#pragma once

#include "complete/jobs/folder.h"
#include "complete/run/options.h"

namespace latbox::complete::jobs {

// As doJob.
int doShare(const Options& options, const Folder& folder, const Entry& entry);

}  // namespace latbox::complete::jobs
