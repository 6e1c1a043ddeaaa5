// Bounds on the combined target: from the thresholds, from a solution in hand, from the bounds of the
// variables.
#include "model/tessik.h"
#include "numbers/number.h"

namespace latbox {

namespace {

// The least combined target that target values of this norm allow. Deviations from values are never negative.
template <class T>
T lowerTarget(const Tessik<T>& p, const T& norm) {
  const T v = negated(norm);
  return p.allTargetsFinite && v < T(0) ? T(0) : v;
}

template <class T>
bool lowerBound(Tessik<T>& p, const T& v) {
  if (!isMinusInfinity(p.ltu()) && !(v < p.ltu())) return false;
  p.ltu() = v;
  return true;
}

// At x, with each partial sum tested: large ones that cancel would lose digits unnoticed.
template <class T>
Vector<T> targetValues(const Tessik<T>& p, const Vector<T>& x) {
  Vector<T> t = Vector<T>::zeros(p.At.M);
  for (long i = 1; i <= p.At.M; ++i)
    for (long j = 1; j <= x.MN; ++j) {
      t[i] += p.At[i][j] * x[j];
      checkPrecision(t[i], "sum overflow");
    }
  return t;
}

template <class T>
void boundByCorner(Tessik<T>& p, const Vector<T>& x) {
  if (isInfinite(p.maxNorm(x))) return;
  const T w = p.targetNorm(targetValues(p, x));
  lowerBound(p, lowerTarget(p, w));
  if (!p.tu && (isPlusInfinity(p.rtu()) || w > p.rtu())) p.rtu() = w;
}

}  // namespace

template <class T>
void Tessik<T>::applyThresholds() {
  if (!kt.notEmpty()) return;
  T s = T(1);
  for (long i = 1; i <= kt.MN; ++i) {
    if (isInfinite(kt[i])) return;
    s += targetSign(i) * kt[i];
    checkPrecision(s, "sum overflow");
  }
  setTargetBound(kt, s);
}

template <class T>
void Tessik<T>::setTargetBound(const Vector<T>& k, const T& s) {
  const bool changed = lowerBound(*this, lowerTarget(*this, targetNorm(k)));
  const T w = s - T(1);
  if (isPlusInfinity(rtu()) || w < rtu())
    rtu() = w;
  else if (!changed)
    return;
  if (ltu() > rtu()) ltu() = rtu();
  tu = true;
}

template <class T>
void Tessik<T>::boundTargetByVariables() {
  if (At.M == 0) return;
  boundByCorner(*this, lx);
  boundByCorner(*this, rx);
}

#define LATBOX_INSTANTIATE(T)                                          \
  template void Tessik<T>::applyThresholds();                          \
  template void Tessik<T>::setTargetBound(const Vector<T>&, const T&); \
  template void Tessik<T>::boundTargetByVariables();
LATBOX_INSTANTIATE(dbl_t)
LATBOX_INSTANTIATE(QQ)

}  // namespace latbox
