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

// Output is held no longer, whatever way the judgement ends.
class Release {
 public:
  explicit Release(RunOutput& output) : output_(output) {}
  ~Release() { output_.held = false; }
  Release(const Release&) = delete;
  Release& operator=(const Release&) = delete;

 private:
  RunOutput& output_;
};

// Has the finds of a failed step judged, as if they came now; the run acts on what they bring later
// (`settled`). One that does not fit the lattice any more, or is no longer good enough to be kept, stays what
// it was in the file: a star.
template <class T, class F>
void judgePending(Lattice<T, F>& lattice) {
  auto& pending = lattice.search.pending;
  {
    const ScopeValue finishing(lattice.finishEnabled, false);
    const Release release(*lattice.output);
    while (!pending.empty()) {
      const Star<T> find = std::move(pending.front());
      pending.erase(pending.begin());
      Vector<T> v;
      const bool fits = lattice.tryOpt2lat(find, v, false);
      if (fits)
        lattice.search.settled |=
            lattice.checkSolution(v, false, foundAfter(find.secondsUntilDiscovered), false);
      if (!fits || !lattice.isKnown(v)) lattice.program.stars.append(find);
    }
  }
  tellFinds(lattice);
}

}  // namespace

template <class T>
SearchEvents<T, dbl_t>& runEvents() {
  static Immortal<RunEvents<T>> events;
  return *events;
}

template <class T, class F>
void tellFinds(Lattice<T, F>& lattice) {
  // The exact step has found something, and may go on for hours: what waits is judged now, so that all of it
  // can be told.
  if (lattice.output->held && lattice.finishEnabled && !lattice.search.pending.empty()) {
    judgePending(lattice);
    return;
  }
  if (!lattice.writeEnabled) return;
  const bool known = lattice.program.stars.MN > 0 || lattice.solutions.MN > 0 || lattice.bestSlack.notEmpty();
  const SignalHold hold;
  if (known && !lattice.search.reinserting) writeSolFile(lattice, false);
  publishSummary(lattice);
}

template <class T, class F>
void settleFinds(Lattice<T, F>& lattice) {
  // A step in this precision is never taken back.
  lattice.search.journal.clear();
  if (!lattice.search.pending.empty()) judgePending(lattice);
  const unsigned results = std::exchange(lattice.search.settled, 0U);
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
    if (std::exchange(lattice.search.settled, 0U) & CHECK_LIMIT) terminate = true;
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
