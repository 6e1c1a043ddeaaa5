#include "complete/jobs/taking.h"

#include "complete/jobs/standing.h"
#include "complete/run.h"
#include "complete/words.h"
#include "complete/write_failure.h"

namespace latbox::complete::jobs {
namespace {

// Nothing: there is none, or a damaged one.
std::optional<Result> resultInPlace(const Folder& folder, const Entry& entry) {
  if (!folder.hasResult(entry)) return std::nullopt;
  try {
    return folder.resultIn(folder.resultPath(entry.number), entry);
  } catch (const BadWords&) {
    return std::nullopt;
  }
}

bool stays(const Folder& folder, const Entry& entry, const Result& old, const Result& result) {
  return old.isDone() || !result.isDone() ||
         !folder.manifest().childrenOf(entry.number, sourceOf(&old)).empty();
}

}  // namespace

void judge(const Folder& folder, const PointReader& reader, const Entry& entry, const Result& result) {
  if (folder.wanted().count && folder.isListing()) return;
  reader.read(result, entry, [](const Point&) {});
}

int take(const Options& options) {
  const FolderLock lock(options.jobs);
  const Folder folder(options.jobs);
  const Entry& entry = folder.entry(options.job);
  const std::optional<Result> old = resultInPlace(folder, entry);
  try {
    Result result = folder.resultIn(options.take, entry);
    if (!old || !stays(folder, entry, *old, result)) {
      const PieceLattice lattice = folder.lattice();
      judge(folder, PointReader(folder.program(), lattice), entry, result);
      replaceFile(folder.resultPath(entry.number), textOf(result), true);
      print(lineOf(folder, entry, result));
      return 0;
    }
  } catch (const BadWords& e) {
    throw BadFolder(options.take + ": not taken: " + e.what());
  }
  print(lineOf(folder, entry, *old));
  return 0;
}

std::string lineOf(const Folder&, const Entry& entry, const Result& result) {
  const std::size_t open = result.open.size() + (result.isOpenShare ? 1 : 0);
  return "piece " + std::to_string(entry.number) + ": " +
         (open == 0 ? "done" : "open " + std::to_string(open) + " prefixes") + ", " +
         std::to_string(result.points) + " points, " + std::to_string(result.nodes) + " nodes\n";
}

}  // namespace latbox::complete::jobs
