// A result that was made elsewhere comes into the folder, if it is one.
#pragma once

#include "complete/jobs/best.h"
#include "complete/jobs/point_reader.h"
#include "complete/run/options.h"

namespace latbox::complete::jobs {

// Status 0 and the line of what is in place then. Throws BadFolder with the reason why it is not taken.
int take(const Options& options);

// Throws BadWords unless all that the result claims, and can be looked at, is so.
void judge(const Folder& folder, const PointReader& reader, const Entry& entry, const Result& result);

// Of a result that was judged: the point that it brings.
std::optional<BestPoint> bestOf(const PointReader& reader, const Result& result, const Program& program);

}  // namespace latbox::complete::jobs
