#include "complete/jobs/placing.h"

#include <algorithm>
#include <filesystem>

#include "complete/files/write_failure.h"
#include "complete/jobs/best.h"
#include "complete/run/run.h"

namespace latbox::complete::jobs {

unsigned threadsOf(const Options& options) {
  constexpr unsigned long MOST = 1024;
  return static_cast<unsigned>(std::clamp(options.threads, 1ul, MOST));
}

void place(const Folder& folder, const Entry& entry, const Result& result) {
  replaceFile(folder.resultPath(entry.number), textOf(result), true);
  for (const char* name : {".checkpoint", ".points"})
    std::filesystem::remove(folder.pathOf(std::to_string(entry.number) + name));
  print(lineOf(folder, entry, result));
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
