// The memory of the search: two sorted sets of the best homogeneous and inhomogeneous vectors, and the one
// best vector that carries the inhomogeneous coordinate.
#include "lattice/lattice.h"
#include "lattice/row_operation.h"
#include "numbers/number.h"
#include "params/statistics.h"

namespace latbox {
namespace {

template <class T, class F>
long stamp(const Lattice<T, F>& l, DiscoveryTime time) {
  return time.known ? time.seconds : stampNow<T>(l.params.bench.get());
}

// Insertion would link the vector at the head and drop it again. Most candidates end here, and none of them
// costs a node.
template <class T, class F>
bool wouldDrop(const SortedSet<HeuristicVector<T, F>>& set, const HeuristicDeviation<F>& d) {
  return set.limit > 0 && set.count >= set.limit && better(set.head->value.deviation, d);
}

}  // namespace

// A change of the parameter at run time shows at the next insertion; the worst vectors go first.
template <class T, class F>
void Lattice<T, F>::followLimit(SortedSet<HeuristicVector<T, F>>& set) const {
  set.limit = params.collectLimit.get();
  while (set.limit != 0 && set.count > set.limit && set.popFront() != nullptr) {
  }
}

template <class T, class F>
void Lattice<T, F>::collect(const Vector<T>& w, SortedSet<HeuristicVector<T, F>>* homogeneous,
                            SortedSet<HeuristicVector<T, F>>* inhomogeneous, DiscoveryTime time) {
  if (w * w > normBound) return;
  const HeuristicDeviation<F> deviation = computeDeviation(w);
  const bool isHomogeneous = deviation.kind == 1;
  auto* set = isHomogeneous ? homogeneous : inhomogeneous;
  if (set == nullptr) {
    set = isHomogeneous ? &homogeneousVectors : &inhomogeneousVectors;
    followLimit(*set);
  }
  if (wouldDrop(*set, deviation)) return;
  measured_ = w;
  measured_.deviation = deviation;
  measured_.secondsUntilDiscovered = stamp(*this, time);
  set->insert(measured_);
}

template <class T, class F>
bool Lattice<T, F>::collectIfBetter(const HeuristicDeviation<F>& bound, HeuristicVector<T, F>& v,
                                    SortedSet<HeuristicVector<T, F>>& set) const {
  if (isZeroVector<T>(v)) return false;
  v.deviation = computeDeviation(v);
  v.secondsUntilDiscovered = stamp(*this, NOW);
  if (!better(v.deviation, bound)) return false;
  set.insert(v);
  return true;
}

// A near miss of the check and the winner of a sieve come here. Nothing that is printed before the report of
// the iteration shows this vector, so there is nothing to publish.
template <class T, class F>
void Lattice<T, F>::offerInhomogeneous(const Vector<T>& w, DiscoveryTime time) {
  if (!isZero(T(abs(w[dim]) - abs(inhomBase)))) return;
  const bool negated = (w[dim] < T(0)) != (inhomBase < T(0));
  HeuristicDeviation<F> deviation, opposite;
  computeDeviations(w, deviation, opposite);
  if (negated) std::swap(deviation, opposite);
  // An empty vector was never measured and compares with none.
  if (bestInhomogeneous.notEmpty() && !better(deviation, bestInhomogeneous.deviation)) return;
  bestInhomogeneous = negated ? -w : w;
  bestInhomogeneous.deviation = deviation;
  bestInhomogeneous.secondsUntilDiscovered = stamp(*this, time);
  Statistics& statistics = statisticsOf<T>();
  if (!statistics.reinserting && !isBenchmark(params.bench.get())) ++statistics.inhomogeneousImprovements;
}

#define LATBOX_INSTANTIATE(T)                                                                              \
  template void Lattice<T, dbl_t>::followLimit(SortedSet<HeuristicVector<T, dbl_t>>&) const;               \
  template void Lattice<T, dbl_t>::collect(const Vector<T>&, SortedSet<HeuristicVector<T, dbl_t>>*,        \
                                           SortedSet<HeuristicVector<T, dbl_t>>*, DiscoveryTime);          \
  template bool Lattice<T, dbl_t>::collectIfBetter(                                                        \
      const HeuristicDeviation<dbl_t>&, HeuristicVector<T, dbl_t>&, SortedSet<HeuristicVector<T, dbl_t>>&) \
      const;                                                                                               \
  template void Lattice<T, dbl_t>::offerInhomogeneous(const Vector<T>&, DiscoveryTime);
LATBOX_INSTANTIATE(dbl_t)
LATBOX_INSTANTIATE(QQ)

}  // namespace latbox
