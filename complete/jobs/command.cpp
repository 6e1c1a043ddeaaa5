#include "complete/jobs/command.h"

#include <cstdio>

#include "complete/jobs/division.h"
#include "complete/jobs/job.h"
#include "complete/jobs/join.h"
#include "complete/jobs/standing.h"
#include "complete/jobs/taking.h"
#include "complete/run/run.h"
#include "complete/run/watch.h"

namespace latbox::complete::jobs {
namespace {

const char* nameOf(State state) {
  switch (state) {
    case State::OPEN:
      return "open";
    case State::DONE:
      return "done";
    case State::PARTIAL:
      return "partial";
    case State::SPLIT:
      break;
  }
  return "split";
}

void guardParts(const Options& options) {
  for (const auto& [name, path] : {std::pair("out", options.out), std::pair("proof", options.proof)})
    if (!path.empty() && isPart(options.jobs, path))
      throw BadInput(std::string("--") + name + "=" + path + ": is a part of the folder of pieces");
}

int list(const Options& options) {
  const Folder folder(options.jobs);
  const auto complain = [](const std::string& what) {
    std::fprintf(stderr, "latbox-all: %s\n", what.c_str());
  };
  const SearchControl alone;
  const Reports reports = *readReports(folder, alone, [](const Entry&, const Result&) {});
  std::string text;
  for (const Standing& standing : standings(folder, reports, complain)) {
    char line[128];
    std::snprintf(line, sizeof line, "%lu %s %.3g %lu %lu\n", standing.entry->number, nameOf(standing.state),
                  standing.entry->nodes, standing.result ? standing.result->points : 0,
                  standing.result ? standing.result->nodes : 0);
    text += line;
  }
  print(text);
  return 0;
}

}  // namespace

int runJobs(const Options& options) {
  if (options.join) {
    guardParts(options);
    return join(options);
  }
  const bool isJob = options.job > 0 && options.split == 0 && options.take.empty();
  if (isJob && !options.pieces) return doJob(options);
  // Whatever these have not put in its place by a rename is as if it had not been begun.
  Watch::leaveSignals();
  if (options.pieces) return list(options);
  if (!options.take.empty()) return take(options);
  return options.job > 0 ? divide(options) : begin(options);
}

}  // namespace latbox::complete::jobs
