#include "complete/jobs/proof_job.h"

#include "complete/files/words.h"
#include "complete/jobs/placing.h"
#include "complete/jobs/proof_walk.h"
#include "complete/run/exit_status.h"
#include "complete/run/watch.h"

namespace latbox::complete::jobs {
namespace {

ProofWalk proofWalkOf(const Folder& folder) {
  try {
    return parseProofWalk(folder.proofText());
  } catch (const BadWords& e) {
    throw BadFolder(folder.pathOf("proof") + ": " + e.what());
  }
}

}  // namespace

int doShare(const Options& options, const Folder& folder, const Entry& entry) {
  const ProofWalk walk = proofWalkOf(folder);
  SearchControl control;
  Results results(folder.program(), "", options.text);
  proof::WalkSettings settings;
  settings.threads = threadsOf(options);
  settings.stop = &control.stop;
  settings.share = {entry.share->rest, entry.share->count, walk.parts};
  // Every point of the lattice in its ranges is one of the program.
  const proof::Judge judge = [](const IntegerVector&) { return true; };
  const Ending ending(options, folder, entry, results, control);
  std::optional<proof::WalkCount> count;
  {
    const Watch watch({options.jobRtime, true}, results, control, [&] { ending.leaveStopped(); });
    count = proof::walk(*walk.beginning.lattice, walk.beginning.cuts, judge, settings);
  }
  if (!ending.hasResult(count.has_value())) return UNKNOWN;
  Result result = ending.result();
  result.isOpenShare = !count;
  if (count) result.nodes = count->nodes;
  if (count) result.met = count->points;
  ending.place(result);
  return 0;
}

}  // namespace latbox::complete::jobs
