#include "driver/iterate.h"

#include <iostream>

#include "driver/ladder.h"
#include "driver/reinsert.h"
#include "driver/report.h"
#include "driver/run_state.h"
#include "heuristics/recombination.h"
#include "heuristics/sampling.h"
#include "heuristics/sieving.h"
#include "heuristics/trimming.h"
#include "heuristics/variation.h"
#include "program/sol_file.h"

namespace latbox {
namespace {

// The snapshot stays valid when the precision changes on the way: the statistics cross with the lattice.
void beginIteration(YLattice<dbl_t>& y) {
  y.statistics().takeSnapshot();
  ++y.statistics().iterations;
}

bool mustLeave(YLattice<dbl_t>& y) {
  return !inputIsLoaded(y) || runState(y) == RUN_STOPPED;
}

// Whether the live lattice has an option set; the precision may change from step to step.
bool wanted(YLattice<dbl_t>& y, Param<bool> Params::*option) {
  return y.live([option](auto& lattice) { return (lattice.params.*option).get(); });
}

// Re-insertion climbs by itself. Where it loses precision for good the iteration goes on without it.
void reinsertStep(YLattice<dbl_t>& y) {
  const int depth = progressDepth();
  try {
    reinsert(y);
  } catch (const PrecisionException&) {
    setProgressDepth(depth);
  }
}

void reportIteration(YLattice<dbl_t>& y) {
  std::string text;
  oneStep(y, [&text](auto& lattice) { text = iterationReport(lattice); });
  std::cout << text << std::flush;
}

bool countReached(YLattice<dbl_t>& y) {
  const long limit = y.live([](auto& lattice) { return lattice.params.iters.get(); });
  return y.statistics().iterations == limit;
}

// The steps stand in the order in which they run: writing and checking, pairwise recombination, sieving,
// sampling, re-insertion, variation, reduction, trimming, report, end of count.
void runSteps(YLattice<dbl_t>& y) {
  oneStep(y, [](auto& lattice) {
    writeSolFile(lattice, false);
    lattice.checkConsistency(false, false);
  });
  if (wanted(y, &Params::pair)) oneStep(y, [](auto& lattice) { pairwiseRecombination(lattice); });
  if (wanted(y, &Params::sieve)) oneStep(y, [](auto& lattice) { sieve(lattice); });
  if (wanted(y, &Params::sample)) oneStep(y, [](auto& lattice) { randomSampling(lattice); });
  if (wanted(y, &Params::reinsert)) reinsertStep(y);
  if (wanted(y, &Params::variate)) oneStep(y, [](auto& lattice) { variateBase(lattice); });
  oneStep(y, [](auto& lattice) { lattice.reduce(); });
  oneStep(y, [](auto& lattice) { trim(lattice, nullptr); });
  reportIteration(y);
  if (countReached(y)) oneStep(y, [](auto& lattice) { restartHandling(lattice, true); });
}

}  // namespace

void iterate(YLattice<dbl_t>& y) {
  for (;;) {
    beginIteration(y);
    if (mustLeave(y)) return;
    runSteps(y);
    y.statistics().updateProgress();
  }
}

}  // namespace latbox
