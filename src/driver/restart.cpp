// The end of a run or its restart on a regenerated lattice, both of which begin deep inside a step.
#include <csignal>
#include <iostream>

#include "driver/report.h"
#include "lattice/lattice.h"
#include "lib/exceptions.h"
#include "lib/os/process.h"
#include "lib/os/signals.h"
#include "lib/progress.h"
#include "lib/scope_value.h"
#include "params/statistics.h"
#include "program/results_version.h"

namespace latbox {
namespace {

template <class T, class F>
void writeAndCheck(Lattice<T, F>& lattice) {
  if (!lattice.writeEnabled) return;
  lattice.writeSolFile(false);
  lattice.checkConsistency(false, false);
}

// What a regenerated lattice gets back, in the variables of the .opt file: lattice coordinates lose their
// meaning with the lattice.
template <class T, class F>
struct Memory {
  ConversionArray<Star<T>> records;
  std::vector<Star<T>> vectors;
  SortedSet<HeuristicVector<T, F>> homogeneous;
  SortedSet<HeuristicVector<T, F>> inhomogeneous;
};

// Slack and deviation variables are left out, as in the file; they follow from the others.
template <class T, class F>
void keepVector(const Lattice<T, F>& lattice, const TimeVector<T>& v, std::vector<Star<T>>& kept) {
  if (v.MN == 0) return;
  Star<T> star;
  if (lattice.lat2opt(v, star, false) != 1) return;
  star.secondsUntilDiscovered = v.secondsUntilDiscovered;
  kept.push_back(star);
}

template <class T, class F>
void keepCollected(const Lattice<T, F>& lattice, SortedSet<HeuristicVector<T, F>>& kept) {
  kept.limit = lattice.inhomogeneousVectors.limit;
  for (const auto* node = lattice.inhomogeneousVectors.head; node != nullptr; node = node->next) {
    Vector<T> x;
    if (lattice.lat2opt(node->value, x, false) != 1) continue;
    HeuristicVector<T, F> h = node->value;
    h = x;
    kept.append(h);
  }
}

template <class T, class F>
Memory<T, F> takeMemory(Lattice<T, F>& lattice) {
  Memory<T, F> memory;
  memory.records = lattice.program.stars;
  lattice.program.stars.clear();
  keepVector(lattice, lattice.bestInhomogeneous, memory.vectors);
  keepVector(lattice, lattice.bestSlack, memory.vectors);
  for (long i = 1; i <= lattice.solutions.MN; ++i) keepVector(lattice, lattice.solutions[i], memory.vectors);
  keepCollected(lattice, memory.inhomogeneous);
  return memory;
}

// The collection of homogeneous vectors isn't carried over, by design: their coordinates were differences
// of the old embedding.
template <class T, class F>
void forgetVectors(Lattice<T, F>& lattice) {
  lattice.solutions.clear();
  lattice.emptyCollections();
  lattice.bestInhomogeneous.clear();
  lattice.bestSlack.clear();
  ++resultsVersion();
}

}  // namespace

template <class T, class F>
void Lattice<T, F>::restartHandling(bool terminate) {
  {
    const ProgressScope level(verb() == 2, "Restart / termination handling ...");
    writeAndCheck(*this);
    if (!this->finishEnabled) return;
    if (verb() == 2 || terminate) std::cout << solutionSummary() << '\n' << std::flush;
    if (terminate || statisticsOf<T>().iterations == params.iters.get()) {
      terminateRun();
      return;
    }
    regenerateLattice();
    // This iteration never reaches its own end.
    statisticsOf<T>().updateProgress();
    writeAndCheck(*this);
  }
  throw RestartException("Lattice was regenerated");
}

template <class T, class F>
void Lattice<T, F>::regenerateLattice() {
  const ProgressScope level(verb() == 2, "Regenerating lattice ...");
  const Memory<T, F> memory = takeMemory(*this);
  forgetVectors(*this);
  try {
    const ScopeValue writing(this->writeEnabled, false);
    const ScopeValue finishing(this->finishEnabled, false);
    prepare(false, false);
    prepareLattice();
    reinstate(memory.records, memory.vectors, memory.homogeneous, memory.inhomogeneous, 3);
  } catch (const PrecisionException&) {
    // Whoever goes back to the state before the step keeps what was found in it.
    program.stars = memory.records;
    throw;
  }
  publishSummary(*this);
  writeLatFile();
}

// The handler of the signal prints the final report and ends the process. Where it returns, the report is
// under way on another thread, and this one may not go on with a run that has ended.
template <class T, class F>
void Lattice<T, F>::terminateRun() {
  if (params.gui.get()) {
    mainVars[MainMutexVariable::runState].set("stopped");
    return;
  }
  std::cout << std::flush;
  raiseTermination(SIGTERM);
  waitForTheEnd();
}

#define LATBOX_INSTANTIATE(T)                             \
  template void Lattice<T, dbl_t>::restartHandling(bool); \
  template void Lattice<T, dbl_t>::regenerateLattice();   \
  template void Lattice<T, dbl_t>::terminateRun();
LATBOX_INSTANTIATE(dbl_t)
LATBOX_INSTANTIATE(QQ)

}  // namespace latbox
