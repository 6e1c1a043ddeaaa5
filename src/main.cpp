// The entry of the program: the main thread serves the console, the solver thread does the work.
#include <unistd.h>

#include <iostream>

#include "driver/command_line.h"
#include "driver/console.h"
#include "driver/end_on_exception.h"
#include "driver/program_name.h"
#include "driver/run.h"
#include "driver/signals.h"
#include "lib/os/output.h"
#include "lib/os/process.h"
#include "lib/os/signals.h"
#include "lib/os/threads.h"

namespace {

using latbox::dbl_t;

void printBanner() {
  std::cout << "<< " << latbox::programName() << " v" << latbox::VERSION << " +++ PID: " << getpid()
            << " >>\n"
            << std::flush;
}

pthread_t startSolver(latbox::YLattice<dbl_t>& y) {
  pthread_t solver;
  latbox::startThread(&solver, [&y](void*) -> void* {
    latbox::endOnException([&y] { latbox::myMain(y); });
    return nullptr;
  });
  return solver;
}

void run(int argc, char** argv) {
  latbox::YLattice<dbl_t> y;
  latbox::parseCommandLine(argc, argv, y);
  const latbox::SignalHandlers handlers(y);
  const pthread_t solver = startSolver(y);
  latbox::LineInput input(STDIN_FILENO);
  latbox::serveConsole(y, input);
  const latbox::TerminationWindow window;
  latbox::joinThread(solver);
}

}  // namespace

int main(int argc, char** argv) {
  latbox::settleProcess();
  latbox::installOutput();
  // Before any thread starts: the signals arrive only where the final report can be written.
  latbox::blockTermination();
  latbox::setProgramName(argc > 0 ? argv[0] : "");
  printBanner();
  latbox::endOnException([=] { run(argc, argv); });
  return 0;
}
