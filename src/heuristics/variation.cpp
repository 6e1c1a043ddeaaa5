#include "heuristics/variation.h"

#include <algorithm>
#include <string>
#include <utility>

#include "heuristics/random_draw.h"
#include "lib/heapsort.h"
#include "lib/progress.h"
#include "params/statistics.h"

namespace latbox {

namespace {

// Row source[i] comes to position i, one exchange a row.
template <class T, class F>
void permuteBase(Lattice<T, F>& l, const Array<long>& source) {
  Array<long> rowAt(l.rank), positionOf(l.rank);
  for (long i = 1; i <= l.rank; ++i) rowAt[i] = positionOf[i] = i;
  for (long i = 1; i <= l.rank; ++i) {
    const long p = positionOf[source[i]];
    l.swapBase(i, p, false);
    std::swap(rowAt[i], rowAt[p]);
    positionOf[rowAt[i]] = i;
    positionOf[rowAt[p]] = p;
  }
}

}  // namespace

// The order has a tolerance, so that it is no strict weak order: what the library's sort requires.
template <class T, class F>
void heuristicSort(Lattice<T, F>& l) {
  const ProgressScope scope(l.verb() > 1, "Heuristic Sorting ... ");
  Array<HeuristicDeviation<F>> quality(l.rank);
  Vector<T> row;
  for (long i = 1; i <= l.rank; ++i) {
    l.unscaledVector(l.B[i], row);
    quality[i] = l.computeDeviation(row);
  }
  heapsort(
      l.rank, [&](long i, long j) { return better(quality[i], quality[j]); },
      [&](long i, long j) {
        std::swap(quality[i], quality[j]);
        l.swapBase(i, j, false);
      });
}

// The exchanges grow with each iteration that brings nothing, to thousands: they are drawn on the positions
// alone, and each row moves once. As in the exchanges themselves, all that lies behind the lowest position
// touched is void.
template <class T, class F>
void shuffleBase(Lattice<T, F>& l, long count) {
  const ProgressScope scope(l.verb() > 1,
                            "Shuffling base vectors ( " + std::to_string(count) + " shuffle(s) ) ...");
  if (l.rank == 0) return;
  Array<long> source(l.rank);
  for (long i = 1; i <= l.rank; ++i) source[i] = i;
  long lowest = l.rank + 1;
  // An index drawn twice exchanges nothing and counts.
  for (long n = 1; n < count; ++n) {
    const long a = rand_eq(1L, l.rank);
    const long b = rand_eq(1L, l.rank);
    if (a != b) lowest = std::min({lowest, a, b});
    std::swap(source[a], source[b]);
  }
  l.invalidateFrom(lowest);
  permuteBase(l, source);
}

template <class T, class F>
void variateBase(Lattice<T, F>& l) {
  const long n = static_cast<long>(statisticsOf<T>().noPrimaryImprovement);
  if (n == 0) return;
  if (n > l.rank) heuristicSort(l);
  if (rand_eq(0L, 1L) != 0) shuffleBase(l, n);
}

LATBOX_BOTH_TYPES(heuristicSort)
LATBOX_BOTH_TYPES(shuffleBase)
LATBOX_BOTH_TYPES(variateBase)

}  // namespace latbox
