// A piece where the best point is wanted.
//
// The regions of the piece are programs of their own (regions.h), which are solved one after the other as a
// whole program is, each for points that are better than what is known: the best point of the folder when the
// job began, or one that the job has found since. So what is known makes every region smaller, by presolve
// too, and nothing of the tree that the folder was split by is used. What has not been finished when time is
// over is left as a whole.
#pragma once

#include "complete/jobs/folder.h"
#include "complete/run/options.h"

namespace latbox::complete::jobs {

// As doJob.
int doBestJob(const Options& options, const Folder& folder, const Entry& entry);

}  // namespace latbox::complete::jobs
