// The maps between lattice vectors (unit coordinates) and the variables of the program.
#include "program/embedding.h"

#include "numbers/tolerance.h"
#include "program/exact_product.h"

namespace latbox {
namespace {

// Standard precision has a negative zero, which would show in files.
template <class T>
void plainZeros(Vector<T>& v) {
  for (long i = 1; i <= v.MN; ++i)
    if (isExactZero(v[i])) v[i] = T(0);
}

template <class T>
T scaleOf(const T& digits) {
  return powerOfTen<T>(static_cast<long>(toDouble(digits)));
}

// What the user's variables look like to the lattice: without fixed components, integral, shifted.
template <class T, class F>
void toLatticeVariables(const Lattice<T, F>& l, Vector<T>& x) {
  for (long k = l.fixedComponents.MN; k >= 1; --k) x.removeComponent(l.fixedComponents[k].left);
  for (long i = 1; i <= x.MN; ++i) {
    if (l.dx[i] > T(0)) {
      x[i] *= scaleOf(l.dx[i]);
      snapToWhole(x[i]);
    }
  }
  for (long k = 1; k <= l.swappedComponents.MN; ++k) x[l.swappedComponents[k]] = -x[l.swappedComponents[k]];
  for (long i = 1; i <= x.MN; ++i)
    if (!isInfinite(l.lx[i])) x[i] -= l.lx[i];
}

// How far the equation that holds column `column` is from its right-hand side, in units of that column's
// entry. The equation is found by its entry: elimination may have moved it.
template <class T, class F>
T equationExcess(const Lattice<T, F>& l, const Vector<T>& x, long base, long column) {
  for (long row = 1; row <= l.Ag.M; ++row) {
    const Vector<T>& a = l.Ag[row];
    if (isExactZero(a[column])) continue;
    T excess = -l.bg[row];
    for (long j = 1; j <= base; ++j) {
      excess += a[j] * x[j];
      requireAllDigits(excess);
    }
    excess /= abs(a[column]);
    snapToWhole(excess);
    return excess;
  }
  return T(0);
}

// Appends the values of the slack and deviation variables that belong to x; false if one of them is no
// integer. A negative slack is told by `negativeSlack` and stays as computed.
template <class T, class F>
bool appendSlacks(const Lattice<T, F>& l, Vector<T>& x, bool& negativeSlack) {
  const long base = x.MN;
  const long added = l.slackCount + l.deviationCount;
  bool whole = true;
  x.resize(base + added, false);
  for (long k = 1; k <= added; ++k) {
    const T excess = equationExcess(l, x, base, base + k);
    whole = whole && isInteger(excess);
    if (k <= l.slackCount) {
      negativeSlack = negativeSlack || excess < T(0);
      x[base + k] = excess;
    } else {
      const bool below = excess < T(0);
      x[base + k] = below ? T(-excess) : T(0);
      x[base + k + 1] = below ? T(0) : excess;
      ++k;
    }
  }
  return whole;
}

template <class T, class F>
void embedPoint(const Lattice<T, F>& l, const Vector<T>& x, Vector<T>& latVec) {
  const long q = l.dim - 1 - x.MN;
  const long tu = l.generatedTu ? 1 : 0;
  latVec.resizeZero(l.dim);
  if (l.checkMode == CHECK_MODE_EQUATIONS) {
    for (long i = 1; i <= q; ++i) latVec[i] = exactProduct(l.Ag[i], x) - l.bg[i];
  } else {
    if (tu == 1) latVec[1] = l.c[1] * (T(2) * exactProduct(l.atu, x) - (l.ltu() + l.rtu()));
    for (long i = 1; i <= l.Au.M; ++i)
      latVec[tu + i] = l.c[tu + i] * (T(2) * exactProduct(l.Au[i], x) - (l.lu[i] + l.ru[i]));
  }
  for (long i = 1; i <= x.MN; ++i) latVec[q + i] = x[i] * T(2) * l.c[q + i] - l.R;
  latVec[l.dim] = l.inhomBase;
  plainZeros(latVec);
  for (long i = 1; i <= l.dim; ++i) checkPrecision(latVec[i], "lat_vec overflow");
}

// The way to the lattice leaves fixed variables out, so that it takes any value of theirs for the right one.
template <class T, class F>
bool keepsFixedValues(const Lattice<T, F>& l, const Vector<T>& optVec) {
  for (long k = 1; k <= l.fixedComponents.MN; ++k) {
    const auto& fixed = l.fixedComponents[k];
    if (isInfinite(optVec[fixed.left]) || !isZero(T(optVec[fixed.left] - fixed.right))) return false;
  }
  return true;
}

enum class Embedded { yes, negativeSlack, notIntegral, wrongDimension };

// What may be wrong with a point that is embedded all the same.
struct Passing {
  bool fractions = false;
  bool negativeSlacks = false;
};

template <class T, class F>
Embedded embed(const Lattice<T, F>& l, const Vector<T>& optVec, Vector<T>& latVec, Passing passing) {
  if (l.checkMode == CHECK_MODE_NONE) fail("opt2lat called with uninitialized check vectors!");
  const long users = l.n() - l.slackCount - l.deviationCount;
  if (optVec.MN != users + l.fixedComponents.MN) return Embedded::wrongDimension;
  Vector<T> x(optVec);
  toLatticeVariables(l, x);
  bool negativeSlack = false;
  const bool integral = appendSlacks(l, x, negativeSlack);
  if (negativeSlack && !passing.negativeSlacks) return Embedded::negativeSlack;
  if (!integral && !passing.fractions) return Embedded::notIntegral;
  embedPoint(l, x, latVec);
  return Embedded::yes;
}

}  // namespace

template <class T, class F>
int Lattice<T, F>::lat2opt(const Vector<T>& latVec, Vector<T>& optVec, bool keepAll) const {
  if (this->checkMode == CHECK_MODE_NONE) fail("lat2opt called with uninitialized check vectors!");
  if (latVec.MN == 0) fail("lat_vec == 0");
  if (latVec.MN != this->dim) fail("lat_vec doesn't match lattice dimension");
  // A zero inhomogeneous coordinate counts as positive.
  const bool negated = (latVec[this->dim] < T(0)) != (this->inhomBase < T(0));
  const long variables = this->n();
  const long q = this->dim - 1 - variables;
  const T last = negated ? T(-latVec[this->dim]) : latVec[this->dim];
  optVec.resize(keepAll ? variables : variables - this->deviationCount - this->slackCount, false);
  for (long i = 1; i <= optVec.MN; ++i) {
    T value = negated ? T(this->R - latVec[q + i]) : T(this->R + latVec[q + i]);
    value /= T(2) * this->c[q + i];
    if (!isInfinite(this->lx[i])) value += this->lx[i];
    // A lattice vector gives whole numbers, but standard precision carries multipliers such as 4/3 rounded,
    // and exact arithmetic may have taken them over. Left as it comes out, the noise would show in solutions
    // and move bounds that are rounded inward or outward later.
    toNearWhole(value);
    checkPrecision(value, "opt_vec overflow1");
    optVec[i] = value;
  }
  for (long k = 1; k <= this->swappedComponents.MN; ++k) {
    T& value = optVec[this->swappedComponents[k]];
    value = -value;
  }
  for (long i = 1; i <= optVec.MN; ++i)
    if (this->dx[i] > T(0)) optVec[i] /= scaleOf(this->dx[i]);
  plainZeros(optVec);
  for (long k = 1; k <= this->fixedComponents.MN; ++k)
    optVec.insertComponent(this->fixedComponents[k].left, this->fixedComponents[k].right);
  return isZero(T(this->inhomBase - last)) ? 1 : -1;
}

template <class T, class F>
void Lattice<T, F>::opt2lat(const Vector<T>& optVec, Vector<T>& latVec, bool transformed) const {
  switch (embed(*this, optVec, latVec, {.fractions = true})) {
    case Embedded::negativeSlack:
      fail("slack variable insonsistency, s should be >= 0");
    case Embedded::wrongDimension:
      fail("lat_vec doesn't match lattice dimension");
    default:
      break;
  }
  if (transformed && !this->unweighted()) this->rescaledVector(Vector<T>(latVec), latVec);
}

template <class T, class F>
bool Lattice<T, F>::tryOpt2lat(const Vector<T>& optVec, Vector<T>& latVec, bool transformed) const {
  if (embed(*this, optVec, latVec, {}) != Embedded::yes || !keepsFixedValues(*this, optVec)) return false;
  if (transformed && !this->unweighted()) this->rescaledVector(Vector<T>(latVec), latVec);
  return true;
}

template <class T, class F>
bool embedNearMiss(const Lattice<T, F>& lattice, const Vector<T>& optVec, Vector<T>& latVec) {
  return embed(lattice, optVec, latVec, {.negativeSlacks = true}) == Embedded::yes &&
         keepsFixedValues(lattice, optVec);
}

#define LATBOX_INSTANTIATE(T)                                                         \
  template int Lattice<T, dbl_t>::lat2opt(const Vector<T>&, Vector<T>&, bool) const;  \
  template void Lattice<T, dbl_t>::opt2lat(const Vector<T>&, Vector<T>&, bool) const; \
  template bool Lattice<T, dbl_t>::tryOpt2lat(const Vector<T>&, Vector<T>&, bool) const;
LATBOX_INSTANTIATE(dbl_t)
LATBOX_INSTANTIATE(QQ)
LATBOX_BOTH_TYPES(embedNearMiss)

}  // namespace latbox
