// The counters of a run, one instance per precision. Pulls in nothing of the layers above the library.
#pragma once

#include <atomic>
#include <ctime>

#include "lib/constants.h"
#include "lib/os/mutex_type.h"

namespace latbox {

class QQ;

// A counter of the solver thread that the final report reads on whatever thread the signal lands.
class SharedCounter {
 public:
  SharedCounter() = default;
  SharedCounter(const SharedCounter& other) : value_(other.get()) {}
  SharedCounter& operator=(const SharedCounter& other) { return *this = other.get(); }
  SharedCounter& operator=(long long value) {
    value_.store(value, std::memory_order_relaxed);
    return *this;
  }
  SharedCounter& operator++() { return *this = get() + 1; }  // one writer: no read-modify-write needed
  operator long long() const { return get(); }
  long long get() const { return value_.load(std::memory_order_relaxed); }

 private:
  std::atomic<long long> value_{0};
};

// The counts of finds, which go back with a step that is taken back.
struct FindCounts {
  long long inhomogeneousImprovements = 0;
  long long targetImprovements = 0;
  long long solutionsFound = 0;
};

struct Statistics {
  SharedCounter iterations;
  long long inhomogeneousImprovements = 0;
  long long targetImprovements = 0;
  long long solutionsFound = 0;
  long long noPrimaryImprovement = 0;  // consecutive iterations without primary improvement
  // Values at the top of the current iteration.
  long long inhomogeneousImprovementsBefore = 0;
  long long targetImprovementsBefore = 0;
  long long solutionsFoundBefore = 0;
  long long samplingBasisExtensionsBefore = 0;
  long long basisSubstitutionsTrivial = 0;
  long long basisSubstitutionsNontrivial = 0;
  long long nontrivialBasisExtensions = 0;
  long long samplingBasisExtensions = 0;
  long long deepInsertions = 0;
  long long pairwiseCollections = 0;
  long long samplingCollections = 0;
  std::time_t discoveryStart;
  MutexType<long> startTime;

  Statistics();
  Statistics(const Statistics&) = default;
  Statistics& operator=(const Statistics&) = default;

  // Copies the progress counters into the four snapshot fields.
  void takeSnapshot();
  FindCounts findCounts() const { return {inhomogeneousImprovements, targetImprovements, solutionsFound}; }
  void setFindCounts(const FindCounts& counts) {
    inhomogeneousImprovements = counts.inhomogeneousImprovements;
    targetImprovements = counts.targetImprovements;
    solutionsFound = counts.solutionsFound;
  }
  // Counts an iteration with or without primary progress since the last snapshot.
  void updateProgress();

 private:
  bool madeProgress() const;
};

// The two instances live from before main to the end of the process; they are never destroyed, since exit()
// may run while another thread still counts.
Statistics& statisticsStandard();
Statistics& statisticsExtended();

// The instance of a number type.
template <class T>
Statistics& statisticsOf();
template <>
inline Statistics& statisticsOf<dbl_t>() {
  return statisticsStandard();
}
template <>
inline Statistics& statisticsOf<QQ>() {
  return statisticsExtended();
}

// Whether this value of the parameter `bench` makes the run a benchmark.
inline bool isBenchmark(float bench) {
  return bench > 1e-9F || bench < -1e-9F;
}

// The discovery time to stamp on a vector: seconds since discoveryStart, multiplied by `bench` in a benchmark
// run (|bench| > 1e-9), at most 18 digits long. The one helper that stamps times.
template <class T>
long stampNow(float bench);

}  // namespace latbox
