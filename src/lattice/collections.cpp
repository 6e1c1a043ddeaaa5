// The memory of the search: two sorted sets of the best homogeneous and inhomogeneous vectors, and the one
// best vector that carries the inhomogeneous coordinate.
#include <algorithm>

#include "lattice/lattice.h"
#include "lattice/row_operation.h"
#include "numbers/number.h"
#include "params/statistics.h"

namespace latbox {
namespace {

// Insertion would link the vector at the head and drop it again. Most candidates end here, and none of them
// costs a node.
template <class T, class F>
bool wouldDrop(const SortedSet<HeuristicVector<T, F>>& set, const HeuristicDeviation<F>& d) {
  return set.limit > 0 && set.count >= set.limit && better(set.head->value.deviation, d);
}

// A change of the parameter at run time shows at the next insertion; the worst vectors go first. One stays,
// as it does behind an insertion, whatever the limit says.
template <class T, class F>
void followLimit(SortedSet<HeuristicVector<T, F>>& set, long limit) {
  set.limit = limit;
  while (set.limit != 0 && set.count > std::max(set.limit, 1L)) set.popFront();
}

}  // namespace

template <class T, class F>
void Lattice<T, F>::collect(const Vector<T>& w, SortedSet<HeuristicVector<T, F>>* homogeneous,
                            SortedSet<HeuristicVector<T, F>>* inhomogeneous, DiscoveryTime time) {
  if (!this->isTooLong(w)) collectMeasured(w, computeDeviation(w), homogeneous, inhomogeneous, time);
}

template <class T, class F>
void Lattice<T, F>::collectMeasured(const Vector<T>& w, const HeuristicDeviation<F>& deviation,
                                    SortedSet<HeuristicVector<T, F>>* homogeneous,
                                    SortedSet<HeuristicVector<T, F>>* inhomogeneous, DiscoveryTime time) {
  const bool isHomogeneous = deviation.kind == KIND_HOMOGENEOUS;
  auto* set = isHomogeneous ? homogeneous : inhomogeneous;
  if (set == nullptr) {
    set = isHomogeneous ? &this->homogeneousVectors : &this->inhomogeneousVectors;
    followLimit(*set, params.collectLimit.get());
  }
  if (wouldDrop(*set, deviation)) return;
  measured_ = w;
  measured_.deviation = deviation;
  measured_.secondsUntilDiscovered = stamp(time);
  set->insert(measured_);
}

template <class T, class F>
bool Lattice<T, F>::collectIfBetter(const HeuristicDeviation<F>& bound, HeuristicVector<T, F>& v,
                                    SortedSet<HeuristicVector<T, F>>& set) const {
  if (isZeroVector<T>(v)) return false;
  v.deviation = computeDeviation(v);
  v.secondsUntilDiscovered = stamp(NOW);
  if (!better(v.deviation, bound)) return false;
  set.insert(v);
  return true;
}

// A near miss of the check and the winner of a sieve come here. Nothing that is printed before the report of
// the iteration shows this vector, so there is nothing to publish.
template <class T, class F>
void Lattice<T, F>::offerInhomogeneous(const Vector<T>& w, DiscoveryTime time) {
  if (!this->carriesBase(w)) return;
  const bool negated = (w[this->dim] < T(0)) != (this->inhomBase < T(0));
  if (negated) return offerInhomogeneous(-w, time);
  offerMeasured(w, computeDeviation(w), time);
}

template <class T, class F>
void Lattice<T, F>::offerMeasured(const Vector<T>& w, const HeuristicDeviation<F>& deviation,
                                  DiscoveryTime time) {
  // An empty vector was never measured and compares with none.
  if (this->bestInhomogeneous.notEmpty() && !better(deviation, this->bestInhomogeneous.deviation)) return;
  this->bestInhomogeneous = w;
  this->bestInhomogeneous.deviation = deviation;
  this->bestInhomogeneous.secondsUntilDiscovered = stamp(time);
  if (!search.reinserting && !isBenchmark(params.bench.get())) ++statisticsOf<T>().inhomogeneousImprovements;
}

#define LATBOX_INSTANTIATE(T)                                                                              \
  template void Lattice<T, dbl_t>::collect(const Vector<T>&, SortedSet<HeuristicVector<T, dbl_t>>*,        \
                                           SortedSet<HeuristicVector<T, dbl_t>>*, DiscoveryTime);          \
  template bool Lattice<T, dbl_t>::collectIfBetter(                                                        \
      const HeuristicDeviation<dbl_t>&, HeuristicVector<T, dbl_t>&, SortedSet<HeuristicVector<T, dbl_t>>&) \
      const;                                                                                               \
  template void Lattice<T, dbl_t>::collectMeasured(const Vector<T>&, const HeuristicDeviation<dbl_t>&,     \
                                                   SortedSet<HeuristicVector<T, dbl_t>>*,                  \
                                                   SortedSet<HeuristicVector<T, dbl_t>>*, DiscoveryTime);  \
  template void Lattice<T, dbl_t>::offerMeasured(const Vector<T>&, const HeuristicDeviation<dbl_t>&,       \
                                                 DiscoveryTime);                                           \
  template void Lattice<T, dbl_t>::offerInhomogeneous(const Vector<T>&, DiscoveryTime);
LATBOX_INSTANTIATE(dbl_t)
LATBOX_INSTANTIATE(QQ)

}  // namespace latbox
