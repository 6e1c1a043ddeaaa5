#include "lattice/heuristic_vector.h"

#include <ostream>

#include "lib/failure.h"
#include "numbers/number.h"

namespace latbox {

namespace {

// x is less than y by more than the tolerance. Infinite values of both sides beat nothing.
template <class F>
bool beats(const F& x, const F& y) {
  return y > x + EPS;
}

template <class F>
void requireComparableKinds(const HeuristicDeviation<F>& a, const HeuristicDeviation<F>& b) {
  if (a.kind != b.kind && (a.kind == KIND_NONE || b.kind == KIND_NONE))
    fail("Heuristic deviation is not initialized!");
}

// Neither is feasible: the number of violations first, then their size, then the length.
template <class F>
bool betterInfeasible(const HeuristicDeviation<F>& a, const HeuristicDeviation<F>& b) {
  if (a.fc != b.fc) return a.fc < b.fc;
  if (beats(a.fm, b.fm)) return true;
  if (beats(b.fm, a.fm)) return false;
  if (beats(a.tn, b.tn)) return true;
  if (beats(b.tn, a.tn)) return false;
  return beats(a.len, b.len);
}

}  // namespace

template <class F>
HeuristicDeviation<F>::HeuristicDeviation(bool worst) {
  if (worst) return;
  f = true;
  fs = fm = tn = len = F(0);
  fc = 0;
}

template <class F>
bool better(const HeuristicDeviation<F>& a, const HeuristicDeviation<F>& b) {
  if (&a == &b) return false;
  requireComparableKinds(a, b);
  if (a.kind != b.kind) return a.kind == KIND_INHOMOGENEOUS;
  if (a.kind == KIND_HOMOGENEOUS) {
    // Homogeneous vectors are first of all short.
    if (beats(a.len, b.len)) return true;
    if (beats(b.len, a.len)) return false;
  }
  if (a.f != b.f) return a.f;
  // The target ends the comparison of feasible vectors: it is what is asked for, and a shorter point with the
  // same target is no better one.
  if (a.f) return beats(a.fs, b.fs);
  return betterInfeasible(a, b);
}

template <class F>
bool sameDeviation(const HeuristicDeviation<F>& a, const HeuristicDeviation<F>& b) {
  if (&a == &b) return true;
  requireComparableKinds(a, b);
  return !better(a, b) && !better(b, a);
}

template <class F>
std::ostream& operator<<(std::ostream& stream, const HeuristicDeviation<F>& d) {
  return stream << "[len,f,fs,fm,fc,tn] = " << d.len << ' ' << d.f << ' ' << d.fs << ' ' << d.fm << ' '
                << d.fc << ' ' << d.tn;
}

template <class T, class F>
HeuristicVector<T, F>::HeuristicVector() : targetNorm(infinity<T>()), slackNorm(infinity<T>()) {}

template <class T, class F>
HeuristicVector<T, F>::HeuristicVector(const Vector<T>& v)
    : TimeVector<T>(v), targetNorm(infinity<T>()), slackNorm(infinity<T>()) {}

template <class T, class F>
HeuristicVector<T, F>& HeuristicVector<T, F>::operator=(const Vector<T>& v) {
  TimeVector<T>::operator=(v);
  return *this;
}

template <class T, class F>
void HeuristicVector<T, F>::clear() {
  TimeVector<T>::clear();
  deviation.kind = KIND_NONE;
  targetNorm = infinity<T>();
  slackNorm = infinity<T>();
}

template <class T, class F>
bool HeuristicVector<T, F>::operator<(const HeuristicVector& other) const {
  return latbox::better(deviation, other.deviation);
}

template class HeuristicDeviation<dbl_t>;
template bool better(const HeuristicDeviation<dbl_t>&, const HeuristicDeviation<dbl_t>&);
template bool sameDeviation(const HeuristicDeviation<dbl_t>&, const HeuristicDeviation<dbl_t>&);
template std::ostream& operator<<(std::ostream&, const HeuristicDeviation<dbl_t>&);
template class HeuristicVector<dbl_t, dbl_t>;
template class HeuristicVector<QQ, dbl_t>;

}  // namespace latbox
