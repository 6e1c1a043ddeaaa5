#include "params/statistics.h"

#include "lib/immortal.h"
#include "lib/os/clock.h"

namespace latbox {

Statistics::Statistics() : discoveryStart(now()), startTime(now()) {
  takeSnapshot();
}

void Statistics::takeSnapshot() {
  inhomogeneousImprovementsBefore = inhomogeneousImprovements;
  targetImprovementsBefore = targetImprovements;
  solutionsFoundBefore = solutionsFound;
  samplingBasisExtensionsBefore = samplingBasisExtensions;
}

void Statistics::updateProgress() {
  noPrimaryImprovement = madeProgress() ? 0 : noPrimaryImprovement + 1;
}

// What counts depends on how far the search has come: first better inhomogeneous vectors, then better
// targets, then new solutions, and these only until sampling has extended the basis. With sampling at work an
// iteration that did not extend the basis never counts. Variation shakes the basis by this figure: a rule
// without the asymmetry would draw in other iterations, and every run would take another path.
bool Statistics::madeProgress() const {
  if (inhomogeneousImprovements == 0) return false;
  if (targetImprovements == 0) {
    if (inhomogeneousImprovements == inhomogeneousImprovementsBefore) return false;
  } else if (solutionsFound == 0) {
    if (targetImprovements == targetImprovementsBefore) return false;
  }
  const bool noNewSolution = solutionsFound >= 1 && solutionsFound == solutionsFoundBefore;
  if (noNewSolution && samplingBasisExtensionsBefore == 0) return false;
  return !(samplingCollections >= 1 && samplingBasisExtensions == samplingBasisExtensionsBefore);
}

Statistics& statisticsStandard() {
  static Immortal<Statistics> statistics;
  return *statistics;
}

Statistics& statisticsExtended() {
  static Immortal<Statistics> statistics;
  return *statistics;
}

namespace {

// The clock of a run starts with the process, not with the first counter that moves.
[[maybe_unused]] const bool madeBeforeMain = (statisticsStandard(), statisticsExtended(), true);

// `bench` may be infinite. The readers of the files take 18 digits: a time beyond would make a .sol file that
// no later run reads.
long wholeSeconds(double seconds) {
  constexpr long LONGEST = 999'999'999'999'999'999;
  constexpr double BEYOND = 1e18;
  if (seconds > -BEYOND && seconds < BEYOND) return static_cast<long>(seconds);
  return seconds < 0 ? -LONGEST : LONGEST;
}

}  // namespace

template <class T>
long stampNow(float bench) {
  const long seconds = now() - static_cast<long>(statisticsOf<T>().discoveryStart);
  if (!isBenchmark(bench)) return seconds;
  return wholeSeconds(static_cast<double>(seconds) * static_cast<double>(bench));
}

template long stampNow<dbl_t>(float);
template long stampNow<QQ>(float);

}  // namespace latbox
