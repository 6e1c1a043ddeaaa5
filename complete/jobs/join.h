// The results of all pieces become the verdict of the undivided run.
#pragma once

#include "complete/run/options.h"

namespace latbox::complete::jobs {

// The exit status of the verdict. Throws BadFolder, and has written nothing, where something is missing or
// damaged.
int join(const Options& options);

}  // namespace latbox::complete::jobs
