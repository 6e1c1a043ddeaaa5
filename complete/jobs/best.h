// The best point that is known in a folder: a line of the .sol form, which nobody believes before it has been
// verified.
#pragma once

#include <optional>

#include "complete/jobs/folder.h"

namespace latbox::complete::jobs {

struct BestPoint {
  Point x;
  Norms norms;
};

// The best one of the lines of a file that are points of the program; nothing if there is none.
std::optional<BestPoint> bestIn(const std::string& path, const Program& program);

// The better of both, the first one of equals.
std::optional<BestPoint> betterOf(std::optional<BestPoint> a, std::optional<BestPoint> b);

// The point takes the place of the folder's if it is better. The first locks the folder, the second requires
// that it is locked.
void offer(const Folder& folder, const std::optional<BestPoint>& point);
void offerLocked(const Folder& folder, const std::optional<BestPoint>& point);

}  // namespace latbox::complete::jobs
