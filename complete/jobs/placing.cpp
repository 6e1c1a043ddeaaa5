#include "complete/jobs/placing.h"

#include <unistd.h>

#include <algorithm>
#include <filesystem>

#include "complete/files/write_failure.h"
#include "complete/jobs/best.h"
#include "complete/run/exit_status.h"
#include "complete/run/run.h"

namespace latbox::complete::jobs {

unsigned threadsOf(const Options& options) {
  constexpr unsigned long MOST = 1024;
  return static_cast<unsigned>(std::clamp(options.threads, 1ul, MOST));
}

Ending::Ending(const Options& options, const Folder& folder, const Entry& entry, const Results& results,
               const SearchControl& control)
    : rtime_(options.jobRtime), folder_(folder), entry_(entry), results_(results), control_(control) {}

bool Ending::isOver() const {
  return rtime_ > 0 && results_.seconds() >= rtime_;
}

void Ending::leaveStopped() const {
  if (!isOver()) _exit(UNKNOWN);
}

Result Ending::result() const {
  Result result;
  result.number = entry_.number;
  result.entry = entry_.digest;
  result.nodes = control_.nodes;
  return result;
}

void Ending::sign(Checkpoint& checkpoint) const {
  checkpoint.identity = entry_.digest;
  checkpoint.seconds = results_.allSeconds();
  checkpoint.nodes = control_.nodes;
}

void Ending::place(const Result& result) const {
  replaceFile(folder_.resultPath(entry_.number), textOf(result), true);
  for (const char* kind : {".checkpoint", ".points"}) std::filesystem::remove(folder_.pathOf(entry_, kind));
  print(lineOf(folder_, entry_, result));
}

std::string lineOf(const Folder& folder, const Entry& entry, const Result& result) {
  const std::size_t open = result.open.size() + (result.isOpenShare ? 1 : 0);
  std::string line = "piece " + std::to_string(entry.number) + ": " +
                     (open == 0 ? "done" : "open " + std::to_string(open) + " prefixes") + ", " +
                     std::to_string(result.points) + " points, " + std::to_string(result.nodes) + " nodes";
  if (!folder.isListing())
    if (const auto best = bestIn(folder.pathOf("best"), folder.program()))
      line += " best " + toText(best->norms.target) + " " + toText(best->norms.slack);
  return line + "\n";
}

}  // namespace latbox::complete::jobs
