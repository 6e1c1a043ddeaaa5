// When an iteration brings no progress the basis is sorted by quality or shuffled, so that the next reduction
// takes another path.
#include <string>

#include "heuristics/random_draw.h"
#include "lattice/lattice.h"
#include "lib/heapsort.h"
#include "lib/progress.h"
#include "params/statistics.h"

namespace latbox {

// The order has a tolerance, so that it is no strict weak order: what the library's sort requires.
template <class T, class F>
void Lattice<T, F>::heuristicSort() {
  const ProgressScope scope(verb() > 1, "Heuristic Sorting ... ");
  Array<HeuristicDeviation<F>> quality(rank);
  Vector<T> row;
  for (long i = 1; i <= rank; ++i) {
    unscaledVector(B[i], row);
    quality[i] = computeDeviation(row);
  }
  heapsort(
      rank, [&](long i, long j) { return better(quality[i], quality[j]); },
      [&](long i, long j) {
        std::swap(quality[i], quality[j]);
        swapBase(i, j, false);
      });
}

template <class T, class F>
void Lattice<T, F>::shuffleBase(long count) {
  const ProgressScope scope(verb() > 1,
                            "Shuffling base vectors ( " + std::to_string(count) + " shuffle(s) ) ...");
  if (rank == 0) return;
  // An index drawn twice exchanges nothing and counts.
  for (long n = 1; n < count; ++n) {
    const long a = rand_eq(1L, rank);
    const long b = rand_eq(1L, rank);
    swapBase(a, b, false);
  }
}

template <class T, class F>
void Lattice<T, F>::variateBase() {
  const long n = static_cast<long>(statisticsOf<T>().noPrimaryImprovement);
  if (n == 0) return;
  if (n > rank) heuristicSort();
  if (rand_eq(0L, 1L) != 0) shuffleBase(n);
}

#define LATBOX_INSTANTIATE(T)                         \
  template void Lattice<T, dbl_t>::heuristicSort();   \
  template void Lattice<T, dbl_t>::shuffleBase(long); \
  template void Lattice<T, dbl_t>::variateBase();
LATBOX_INSTANTIATE(dbl_t)
LATBOX_INSTANTIATE(QQ)

}  // namespace latbox
