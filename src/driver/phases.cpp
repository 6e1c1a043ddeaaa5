// The way of the solver thread through a run.
#include <cstdlib>
#include <iostream>

#include "driver/command_line.h"
#include "driver/iterate.h"
#include "driver/ladder.h"
#include "driver/random.h"
#include "driver/run.h"
#include "driver/run_state.h"
#include "driver/timer.h"
#include "lib/os/clock.h"
#include "lib/os/threads.h"
#include "numbers/elimination.h"
#include "program/trivial.h"

namespace latbox {
namespace {

// A run repeats: every run of the same input takes the same random path.
constexpr unsigned RUN_SEED = 42;

void startTimer(YLattice<dbl_t>& y, bool gui) {
  if (y.live([](auto& lattice) { return lattice.params.rtime.get(); }) == 0) return;
  if (gui) fail("The GUI and RTIME parameter don't go well together right now ...");
  pthread_t timer;
  startThread(&timer, [&y](void*) -> void* {
    timerBody(y);
    return nullptr;
  });
}

void start(YLattice<dbl_t>& y) {
  seedRandom(RUN_SEED);
  if (y.verb() != 0) std::cout << '\n' << std::flush;
  const bool gui = y.live([](auto& lattice) { return lattice.params.gui.get(); });
  if (!mainValue(y, MainMutexVariable::inputRequested).empty()) startTimer(y, gui);
  if (mainValue(y, MainMutexVariable::inputRequested).empty()) printUsage(y, false);
  setRunState(y, RUN_RUNNING);
}

std::string waitForInput(YLattice<dbl_t>& y) {
  for (;;) {
    const std::string input = mainValue(y, MainMutexVariable::inputRequested);
    if (input != mainValue(y, MainMutexVariable::inputLoaded)) return input;
    sleepSeconds(1);
  }
}

template <class T, class F>
void forgetInput(Lattice<T, F>& lattice) {
  lattice.reinitialise();
  ++lattice.output->resultsVersion;
}

void waitUntilRunning(YLattice<dbl_t>& y) {
  y.live([](auto& lattice) {
    lattice.mainVars[MainMutexVariable::runState].compareAndSetUnless(RUN_RUNNING, RUN_WAITING);
  });
  while (runState(y) == RUN_WAITING) sleepSeconds(1);
}

void load(YLattice<dbl_t>& y) {
  const std::string input = waitForInput(y);
  y.live([](auto& lattice) { forgetInput(lattice); });
  readFiles(y, input);
  y.live([](auto& lattice) { lattice.writeEnabled = lattice.finishEnabled = true; });
  setMainValue(y, MainMutexVariable::inputLoaded, input);
  // A run of no iterations only prepares the files.
  if (y.live([](auto& lattice) { return lattice.params.iters.get(); }) == 0) std::exit(0);
  oneStep(y, [](auto& lattice) { tellFinds(lattice); });
  waitUntilRunning(y);
}

void reportSize(YLattice<dbl_t>& y) {
  const auto [rows, columns] = y.live([](auto& lattice) { return std::pair(lattice.rank, lattice.dim); });
  std::cout << "\nLattice dimension: M = " << rows << ", N = " << columns << '\n' << std::flush;
}

void findRank(YLattice<dbl_t>& y, bool report) {
  long rank = 0;
  oneStep(y, [&rank](auto& lattice) { rank = rankOf(lattice.B); });
  if (report) std::cout << "Lattice rank = " << rank << '\n' << std::flush;
}

void removeDependencies(YLattice<dbl_t>& y, bool report) {
  long removed = 0;
  oneStep(y, [&removed](auto& lattice) {
    lattice.resetScales(true, true);
    removed = lattice.removeDependentVectors();
    lattice.updateGso(1, 0);
  });
  if (report) std::cout << "Integer-linear dependencies: " << removed << "\n\n" << std::flush;
}

void reportAndReduce(YLattice<dbl_t>& y, bool report) {
  if (report) reportSize(y);
  findRank(y, report);
  removeDependencies(y, report);
  oneStep(y, [](auto& lattice) { lattice.enumerate(nullptr); });
}

// "RUN" resumes where "STOP" halted, with all state intact. An input that has asked for another one while it
// loaded enters the iterations all the same, and they count one before they see it: the total is printed, and
// `iters` ends a run by it.
void iterateUntilNewInput(YLattice<dbl_t>& y) {
  do {
    iterate(y);
    while (runState(y) == RUN_STOPPED && inputIsLoaded(y)) sleepSeconds(1);
  } while (inputIsLoaded(y));
}

// The levels that the restart left open are closed in any case: they would add up over the restarts.
void announceRestart(const RestartException& restart, bool report) {
  if (report) std::cout << progressEnter() << ' ' << restart.what() << " ==> Re-Looping ...";
  const std::string lineEnd = progressReset();
  if (report) std::cout << lineEnd << std::flush;
}

// Works on the input that is loaded until another one is asked for. A restart, from the trivial solutions
// too, leads back to the report of the sizes.
void runInput(YLattice<dbl_t>& y) {
  // Fixed for this load, whatever the console sets later.
  const bool report = y.verb() == 2;
  for (bool trivialTried = false;;) {
    try {
      if (!std::exchange(trivialTried, true))
        oneStep(y, [](auto& lattice) { checkTrivialSolutions(lattice); });
      reportAndReduce(y, report);
      iterateUntilNewInput(y);
      return;
    } catch (const RestartException& restart) {
      announceRestart(restart, report);
    }
  }
}

}  // namespace

template <class D>
[[noreturn]] void myMain(YLattice<D>& y) {
  start(y);
  for (;;) {
    load(y);
    runInput(y);
  }
}

template void myMain<dbl_t>(YLattice<dbl_t>&);

}  // namespace latbox
