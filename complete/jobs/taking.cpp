#include "complete/jobs/taking.h"

#include "complete/files/words.h"
#include "complete/files/write_failure.h"
#include "complete/jobs/cover.h"
#include "complete/jobs/placing.h"
#include "complete/jobs/standing.h"
#include "complete/run/run.h"

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
  if (entry.share && (!result.open.empty() || result.points > 0)) throw BadWords("it is none of a share");
  if (!entry.share && result.isOpenShare) throw BadWords("it is one of a share");
  if (entry.share || (folder.wanted().count && folder.isListing())) return;
  if (!result.open.empty() && !isWithin(result.open, entry.pieces))
    throw BadWords("what is left is no part of the piece");
  if (folder.isListing()) {
    reader.judge(result, entry);
    return;
  }
  const auto found = bestOf(reader, result, folder.program());
  const auto known = betterOf(bestIn(folder.pathOf("best"), folder.program()), found);
  if (!result.bound) {
    if (found) throw BadWords("a point without a bound");
    return;
  }
  const Rational bound = parseRational(*result.bound);
  if (found && found->norms.target != bound) throw BadWords("its bound is not that of its point");
  if (!known || bound < known->norms.target)
    throw BadWords("it is complete below " + *result.bound + " alone");
}

std::optional<BestPoint> bestOf(const PointReader& reader, const Result& result, const Program& program) {
  std::optional<BestPoint> best;
  reader.read(result, [&](const Point& x) { best = betterOf(best, BestPoint{x, normsOf(program, x)}); });
  return best;
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
      const PointReader reader(folder.program(), lattice);
      judge(folder, reader, entry, result);
      if (!folder.isListing()) offerLocked(folder, bestOf(reader, result, folder.program()));
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

}  // namespace latbox::complete::jobs
