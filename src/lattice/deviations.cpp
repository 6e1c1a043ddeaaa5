// How far a lattice vector is from feasible: coordinate by coordinate as a list, and in one pass as the
// record that every collection is ordered by. The record is the unit of cost of all searches that work on
// pools.
#include <algorithm>
#include <cmath>

#include "lattice/lattice.h"
#include "lib/heapsort.h"
#include "numbers/number.h"

namespace latbox {
namespace {

// Calls visit(coordinate, low, high) from `first` on; a bound is null where it is missing. What is missing
// is told by the variable and not by the box: a half-free variable has a finite range of the embedding too.
template <class L, class Visit>
void forEachBound(const L& l, long first, Visit visit) {
  const auto* low = l.lbnd.data;
  const auto* high = l.ubnd.data;
  const long variables = l.fx.MN;
  const long before = l.dim - 1 - variables;
  for (long i = first; i <= before; ++i) visit(i, low + i, high + i);
  for (long j = 1, i = before + 1; j <= variables; ++j, ++i) {
    const FreedomDegree freedom = l.fx.data[j];
    const bool noLower = freedom == FreedomDegree::noLower || freedom == FreedomDegree::free;
    const bool noUpper = freedom == FreedomDegree::noUpper || freedom == FreedomDegree::free;
    visit(i, noLower ? nullptr : low + i, noUpper ? nullptr : high + i);
  }
  visit(l.dim, low + l.dim, high + l.dim);
}

// True, with the amount in d, if v misses one of its bounds by more than the tolerance. Compared before it is
// subtracted: bounds may be infinite, and an exact difference costs much more than a comparison.
template <class T>
bool misses(const T& v, const T* low, const T* high, T& d) {
  const bool below = low != nullptr && v < *low;
  const bool above = high != nullptr && *high < v;
  if (!below && !above) return false;
  d = below ? *low : v;
  d -= below ? v : *high;
  if (below && above && v - *high > d) d = v - *high;
  return !isZero(d);
}

inline void negate(dbl_t& x) {
  x = -x;
}
inline void negate(QQ& x) {
  x.negate();
}

// The same against a range [-high, high], of which `low` is the lower end, for x and -x at once: both miss it
// by the same.
inline bool leaves(dbl_t x, dbl_t, dbl_t high, dbl_t& d) {
  d = std::fabs(x) - high;
  return d > EPS;
}
inline bool leaves(const QQ& x, const QQ& low, const QQ& high, QQ& d) {
  return misses(x, &low, &high, d);
}

// The violations of one vector. They are added in the order of the coordinates: sorting them first would
// change the last bits of the sum, which lie far below the margin of every comparison.
template <class F>
struct Tally {
  long count = 0;
  long worst = 0;
  F largest = F(0);
  F sum = F(0);

  void add(long coordinate, const F& violation) {
    ++count;
    sum += violation;
    if (violation <= largest) return;
    largest = violation;
    worst = coordinate;
  }
};

template <class F>
void take(const Tally<F>& tally, HeuristicDeviation<F>& d) {
  d.f = false;
  d.fs = std::numeric_limits<F>::infinity();
  d.fc = tally.count;
  d.fm = tally.largest;
  d.tn = tally.sum;
  d.worstIndex = tally.worst;
}

template <class T>
void sortLargestFirst(DeviationList<T>& list) {
  const auto before = [&list](long i, long j) {
    const auto& a = list[i];
    const auto& b = list[j];
    return a.right > b.right || (a.right == b.right && a.left < b.left);
  };
  heapsort(list.MN, before, [&list](long i, long j) { list.swap(i, j); });
}

// The coordinates in front that hold a bounded target, as the basis was generated.
template <class T, class F>
long targetCoordinates(const Lattice<T, F>& l) {
  return l.checkMode == CHECK_MODE_FINAL && l.generatedTu ? 1 : 0;
}

// What the combined target lacks to the next improvement: at least 1 for a vector that has been judged. A
// threshold is missing as a rule and can't serve as the bound here.
template <class T, class F>
T targetExcess(const Lattice<T, F>& l, const Vector<T>& v) {
  Vector<T> x;
  if (l.lat2opt(v, x, true) == 0) fail("is not within lattice2");
  const T value = l.program.atu * x;
  return value > l.program.rtu() ? T(value - l.program.rtu()) : T(0);
}

// A vector without a violation counts as feasible only in a program with targets: without them it is a
// solution already, no search has to prefer it, and its zeros put it first in any case.
template <class T, class F>
void rateFeasible(const Lattice<T, F>& l, const Vector<T>& v, HeuristicDeviation<F>& d) {
  if (d.fc != 0 || l.program.At.M == 0) return;
  d.f = true;
  Vector<T> x;
  l.lat2opt(v, x, true);
  d.fs = toDouble(l.program.targetNorms(l.program.At * x, x).left);
}

template <class T, class F>
HeuristicDeviation<F> rated(const Lattice<T, F>& l, const Vector<T>& v, const Tally<F>& tally,
                            const F& length) {
  HeuristicDeviation<F> result;
  result.kind = isZero(v.data[l.dim]) ? KIND_HOMOGENEOUS : KIND_INHOMOGENEOUS;
  result.len = length;
  take(tally, result);
  rateFeasible(l, v, result);
  return result;
}

// Whether the even part of the bounds covers all coordinates but a bounded target and the last: the case of
// programs without free variables, and thus the common one.
template <class T, class F>
bool isEven(const Lattice<T, F>& l) {
  if (l.evenFrom > targetCoordinates(l) + 1) return false;
  const FreedomDegree* freedom = l.fx.data;
  return std::all_of(freedom + 1, freedom + l.fx.MN + 1,
                     [](FreedomDegree f) { return f == FreedomDegree::bounded; });
}

// Then one pass gives the violations of v and of -v, which differ in the last coordinate alone, and the
// squared length, which is returned.
template <class T, class F>
F tallyEven(const Lattice<T, F>& l, const Vector<T>& v, Tally<F>& ofPlus, Tally<F>& ofMinus) {
  const long targets = targetCoordinates(l);
  const long dim = l.dim;
  T squares{}, d{};
  Tally<F> tally;
  for (long i = 1; i <= targets; ++i) addProduct(squares, v.data[i], v.data[i]);
  if (dim > targets + 1) {
    const T& low = l.lbnd.data[dim - 1];
    const T& high = l.ubnd.data[dim - 1];
    for (long i = targets + 1; i < dim; ++i) {
      addProduct(squares, v.data[i], v.data[i]);
      if (leaves(v.data[i], low, high, d)) tally.add(i - targets, toDouble(d));
    }
  }
  const T& last = v.data[dim];
  addProduct(squares, last, last);
  ofPlus = ofMinus = tally;
  T opposite = last;
  negate(opposite);
  if (misses(last, &l.lbnd.data[dim], &l.ubnd.data[dim], d)) ofPlus.add(dim - targets, toDouble(d));
  if (misses(opposite, &l.lbnd.data[dim], &l.ubnd.data[dim], d)) ofMinus.add(dim - targets, toDouble(d));
  return toDouble(squares);
}

}  // namespace

template <class T, class F>
DeviationList<T> Lattice<T, F>::deviations(const Vector<T>& vector, bool skipTarget,
                                           bool inLatticeForm) const {
  Vector<T> v = vector;
  if (inLatticeForm) this->unscaledVector(vector, v);
  const long targets = targetCoordinates(*this);
  DeviationList<T> list;
  if (targets > 0 && !skipTarget) {
    const T excess = targetExcess(*this, v);
    if (!isZero(excess)) list.append({1, excess});
  }
  T d{};
  forEachBound(*this, targets + 1, [&](long i, const T* low, const T* high) {
    if (misses(v.data[i], low, high, d)) list.append({skipTarget ? i - targets : i, d});
  });
  sortLargestFirst(list);
  return list;
}

template <class T, class F>
HeuristicDeviation<F> Lattice<T, F>::computeDeviation(const Vector<T>& v) const {
  if (isEven(*this)) {
    Tally<F> tally, unused;
    const F length = tallyEven(*this, v, tally, unused);
    return rated(*this, v, tally, length);
  }
  Tally<F> tally;
  const long targets = targetCoordinates(*this);
  T d{};
  forEachBound(*this, targets + 1, [&](long i, const T* low, const T* high) {
    if (misses(v.data[i], low, high, d)) tally.add(i - targets, toDouble(d));
  });
  return rated(*this, v, tally, toDouble(v * v));
}

template <class T, class F>
void Lattice<T, F>::computeDeviations(const Vector<T>& v, HeuristicDeviation<F>& plus,
                                      HeuristicDeviation<F>& minus) const {
  Tally<F> ofPlus, ofMinus;
  // Only a vector that carries inhomBase is feasible, and that one and its negation are mapped to the same
  // point.
  if (isEven(*this)) {
    const F length = tallyEven(*this, v, ofPlus, ofMinus);
    plus = rated(*this, v, ofPlus, length);
    minus = rated(*this, v, ofMinus, length);
    return;
  }
  const long targets = targetCoordinates(*this);
  T d{}, opposite{};
  forEachBound(*this, targets + 1, [&](long i, const T* low, const T* high) {
    const T& x = v.data[i];
    opposite = x;
    negate(opposite);
    if (misses(x, low, high, d)) ofPlus.add(i - targets, toDouble(d));
    if (misses(opposite, low, high, d)) ofMinus.add(i - targets, toDouble(d));
  });
  const F length = toDouble(v * v);
  plus = rated(*this, v, ofPlus, length);
  minus = rated(*this, v, ofMinus, length);
}

#define LATBOX_INSTANTIATE(T)                                                                      \
  template DeviationList<T> Lattice<T, dbl_t>::deviations(const Vector<T>&, bool, bool) const;     \
  template HeuristicDeviation<dbl_t> Lattice<T, dbl_t>::computeDeviation(const Vector<T>&) const;  \
  template void Lattice<T, dbl_t>::computeDeviations(const Vector<T>&, HeuristicDeviation<dbl_t>&, \
                                                     HeuristicDeviation<dbl_t>&) const;
LATBOX_INSTANTIATE(dbl_t)
LATBOX_INSTANTIATE(QQ)

}  // namespace latbox
