#include "driver/iterate.h"

#include <iostream>

#include "driver/run_state.h"
#include "lib/os/clock.h"

namespace latbox {
namespace {

constexpr int MAX_SWEEPS = 64;

Statistics& liveStatistics(YLattice<dbl_t>& y) {
  return y.extendedActive ? statisticsExtended() : statisticsStandard();
}

// The snapshot stays valid when the precision changes on the way: the statistics cross with the lattice.
void beginIteration(YLattice<dbl_t>& y) {
  liveStatistics(y).takeSnapshot();
  ++liveStatistics(y).iterations;
}

bool mustLeave(YLattice<dbl_t>& y) {
  return !inputIsLoaded(y) || runState(y) == RUN_STOPPED;
}

// The choice of the reduction. Until enumeration joins, `eenum` asks for as much as LLL can do; without it
// one sweep is all that an iteration spends, and the next iteration goes on from there.
template <class T, class F>
void reduce(Lattice<T, F>& lattice) {
  if (lattice.params.eenum.get())
    reduceFully(lattice);
  else
    lattice.lll(1, 0, 0);
}

void reportIteration(YLattice<dbl_t>& y) {
  std::string text;
  oneStep(y, [&text](auto& lattice) { text = lattice.iterationReport(); });
  std::cout << text << std::flush;
}

bool countReached(YLattice<dbl_t>& y) {
  const long limit = y.live([](auto& lattice) { return lattice.params.iters.get(); });
  return liveStatistics(y).iterations == limit;
}

// The steps stand in the order in which they run: writing and checking, pairwise recombination, sieving,
// sampling, re-insertion, variation, reduction, trimming, report, end of count. Those between writing and
// reduction, and trimming, join where they are named.
void runSteps(YLattice<dbl_t>& y) {
  oneStep(y, [](auto& lattice) {
    lattice.writeSolFile(false);
    lattice.checkConsistency(false, false);
  });
  // pairwise recombination, sieving, sampling, re-insertion, variation
  oneStep(y, [](auto& lattice) { reduce(lattice); });
  // trimming
  reportIteration(y);
  if (countReached(y)) oneStep(y, [](auto& lattice) { lattice.restartHandling(true); });
}

}  // namespace

void iterate(YLattice<dbl_t>& y) {
  for (;;) {
    beginIteration(y);
    if (mustLeave(y)) return;
    runSteps(y);
    liveStatistics(y).updateProgress();
  }
}

template <class T, class F>
void reduceFully(Lattice<T, F>& lattice) {
  const long start = now();
  for (int sweep = 0; sweep < MAX_SWEEPS; ++sweep) {
    const long budget = lattice.interval_tt;
    lattice.lll(1, 0, 0);
    // The budget falls exactly when the sweep has skipped nothing.
    if (lattice.interval_tt < budget) return;
    const long limit = lattice.params.btime.get();
    if (limit != 0 && now() - start >= limit) return;
  }
}

template void reduceFully(Lattice<dbl_t, dbl_t>&);
template void reduceFully(Lattice<QQ, dbl_t>&);

}  // namespace latbox
