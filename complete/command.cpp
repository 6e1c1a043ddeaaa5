#include "complete/command.h"

#include <cstdio>

#include "complete/jobs/command.h"
#include "complete/lattice/reduction.h"
#include "complete/run/exit_status.h"
#include "complete/run/options.h"
#include "complete/run/run.h"
#include "complete/run/watch.h"

namespace latbox::complete {
namespace {

int run(const std::vector<std::string>& arguments) {
  const Options options = parseOptions(arguments);
  if (options.help) {
    print(helpText());
    return 0;
  }
  if (options.version) {
    print(std::string("latbox-all v") + VERSION + "\nGMP " + gmp_version + ", " + libraryVersion() + "\n");
    return 0;
  }
  if (!options.jobs.empty()) return jobs::runJobs(options);
  return runProgram(options, plainAnswers());
}

int fail(const std::exception& e, int status) {
  std::fprintf(stderr, "latbox-all: %s\n", e.what());
  return status;
}

}  // namespace

int runCommand(const std::vector<std::string>& arguments) {
  Watch::takeSignals();
  try {
    return run(arguments);
  } catch (const BadInput& e) {
    return fail(e, BAD_INPUT);
  } catch (const std::exception& e) {
    return fail(e, FAILURE);
  }
}

}  // namespace latbox::complete
