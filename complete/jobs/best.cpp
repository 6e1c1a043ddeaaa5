#include "complete/jobs/best.h"

#include <atomic>

#include "complete/files/points_file.h"
#include "complete/program/known_points.h"

namespace latbox::complete::jobs {

std::optional<BestPoint> bestIn(const std::string& path, const Program& program) {
  std::atomic<bool> unused = false;
  KnownPoints known(program, path, unused);
  known.look();
  std::optional<Point> x = known.takeBetter(std::nullopt);
  if (!x) return std::nullopt;
  Norms norms = normsOf(program, *x);
  return BestPoint{std::move(*x), std::move(norms)};
}

std::optional<BestPoint> betterOf(std::optional<BestPoint> a, std::optional<BestPoint> b) {
  return !a || (b && b->norms < a->norms) ? b : a;
}

void offer(const Folder& folder, const std::optional<BestPoint>& point) {
  if (!point) return;
  const FolderLock lock(folder.pathOf(""));
  offerLocked(folder, point);
}

void offerLocked(const Folder& folder, const std::optional<BestPoint>& point) {
  if (!point) return;
  const std::string path = folder.pathOf("best");
  const auto old = bestIn(path, folder.program());
  if (old && !(point->norms < old->norms)) return;
  replaceFile(path, lineOf(folder.program(), point->x, point->norms, 0, ""), true);
}

}  // namespace latbox::complete::jobs
