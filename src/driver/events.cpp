#include "driver/events.h"

#include <csignal>
#include <iostream>
#include <utility>

#include "driver/report.h"
#include "lib/exceptions.h"
#include "lib/immortal.h"
#include "lib/os/process.h"
#include "lib/os/signals.h"
#include "lib/progress.h"
#include "lib/scope_value.h"
#include "params/statistics.h"
#include "program/memory.h"
#include "program/sol_file.h"

namespace latbox {
namespace {

template <class T>
class RunEvents : public SearchEvents<T, dbl_t> {
 public:
  void found(Lattice<T, dbl_t>& lattice) override { tellFinds(lattice); }
  void boundMoved(Lattice<T, dbl_t>& lattice) override { restartHandling(lattice, false); }
  void limitReached(Lattice<T, dbl_t>& lattice) override { restartHandling(lattice, true); }
};

template <class T, class F>
void writeAndCheck(Lattice<T, F>& lattice) {
  if (!lattice.writeEnabled) return;
  writeSolFile(lattice, false);
  lattice.checkConsistency(false, false);
}

// What the finds of a failed step bring, as CHECK_ bits; the run does not act on it yet. One that does not
// fit the lattice any more stays what it was, a star.
template <class T, class F>
unsigned judgePending(Lattice<T, F>& lattice) {
  const std::vector<Star<T>> pending = std::exchange(lattice.search.pending, {});
  const ScopeValue finishing(lattice.finishEnabled, false);
  unsigned results = 0;
  for (const Star<T>& find : pending) {
    Vector<T> v;
    if (lattice.tryOpt2lat(find, v, false))
      results |= lattice.checkSolution(v, false, foundAfter(find.secondsUntilDiscovered), false);
  }
  lattice.output->held = false;
  tellFinds(lattice);
  return results;
}

}  // namespace

template <class T>
SearchEvents<T, dbl_t>& runEvents() {
  static Immortal<RunEvents<T>> events;
  return *events;
}

template <class T, class F>
void tellFinds(Lattice<T, F>& lattice) {
  if (!lattice.writeEnabled) return;
  const bool known = lattice.program.stars.MN > 0 || lattice.solutions.MN > 0 || lattice.bestSlack.notEmpty();
  const SignalHold hold;
  if (known && !lattice.search.reinserting) writeSolFile(lattice, false);
  publishSummary(lattice);
}

template <class T, class F>
void settleFinds(Lattice<T, F>& lattice) {
  if (lattice.search.pending.empty()) return;
  const unsigned results = judgePending(lattice);
  if (results & CHECK_LIMIT)
    restartHandling(lattice, true);
  else if (results & CHECK_BOUND)
    restartHandling(lattice, false);
}

template <class T, class F>
void restartHandling(Lattice<T, F>& lattice, bool terminate) {
  {
    const ProgressScope level(lattice.verb() == 2, "Restart / termination handling ...");
    if (!lattice.search.pending.empty() && lattice.finishEnabled) judgePending(lattice);
    writeAndCheck(lattice);
    if (!lattice.finishEnabled) return;
    if (lattice.verb() == 2 || terminate) std::cout << solutionSummary(lattice) << '\n' << std::flush;
    if (terminate || statisticsOf<T>().iterations == lattice.params.iters.get()) {
      terminateRun(lattice);
      return;
    }
    regenerateLattice(lattice);
    // This iteration never reaches its own end.
    statisticsOf<T>().updateProgress();
    writeAndCheck(lattice);
  }
  throw RestartException("Lattice was regenerated");
}

// The handler of the signal prints the final report and ends the process. Where it returns, the report is
// under way on another thread, and this one may not go on with a run that has ended.
template <class T, class F>
void terminateRun(Lattice<T, F>& lattice) {
  if (lattice.params.gui.get()) {
    lattice.mainVars[MainMutexVariable::runState].set("stopped");
    return;
  }
  std::cout << std::flush;
  raiseTermination(SIGTERM);
  waitForTheEnd();
}

template SearchEvents<dbl_t, dbl_t>& runEvents();
template SearchEvents<QQ, dbl_t>& runEvents();
LATBOX_BOTH_TYPES(restartHandling)
LATBOX_BOTH_TYPES(terminateRun)
LATBOX_BOTH_TYPES(tellFinds)
LATBOX_BOTH_TYPES(settleFinds)

}  // namespace latbox
