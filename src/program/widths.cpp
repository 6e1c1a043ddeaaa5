// The common range of the embedding: a common multiple of all widths. Widths that the user has not fixed grow
// a little where that keeps the range small.
#include "program/widths.h"

#include "numbers/number.h"
#include "program/divisors.h"

namespace latbox {
namespace {

template <class T>
T commonMultiple(const T& range, const T& width) {
  checkPrecision(width, "R overflow");  // so that the product below is exact in standard precision
  T result = lcm(range, width);
  checkPrecision(result, "R overflow");
  return result;
}

// A fractional width is rounded outward; what is whole but for rounding stays.
template <class T>
T wholeWidth(const T& width) {
  const T nearest = roundNearest(width);
  return isZero(T(width - nearest)) ? nearest : T(ceil(width));
}

template <class T>
T fittingWidth(const T& range, const T& width) {
  if (width > range) return range * ceil(T(width / range));
  if (gcd(range, width) == width) return width;
  return divisorFrom(range, width);
}

}  // namespace

template <class T, class F>
T computeRange(Lattice<T, F>& l, bool equations) {
  T range = lcmOfWidths(l, T(1), true);
  if (equations) return range;
  for (long i = 1; i <= l.Au.M; ++i) {
    const T width = l.ru[i] - l.lu[i];
    if (isZero(width)) fail("ineq bounds error1");
    range = commonMultiple(range, width);
  }
  if (l.tu) {
    const T width = adjustWidth(range, l.rtu(), l.ltu());
    if (!isZero(width)) range = commonMultiple(range, width);
  }
  return range;
}

template <class T, class F>
T lcmOfWidths(Lattice<T, F>& l, T range, bool take) {
  for (long i = 1; i <= l.n(); ++i) {
    if (isInfinite(l.lx[i]) || isInfinite(l.rx[i])) continue;
    if (l.fx[i] == FreedomDegree::noUpper || l.fx[i] == FreedomDegree::free) {
      T s(0);
      adjustWidth(range, l.rx[i], s);
      l.rx[i] -= s;
    }
    if (take && !isZero(l.rx[i])) range = commonMultiple(range, l.rx[i]);
  }
  return range;
}

// The rule: the width grows one by one until it divides the range or the range divides it, and of the widths
// passed the one with the smallest common multiple is taken, the first on a tie. A width above the range
// can't do better than the next multiple: a width d = k g, g a divisor of the range, has the common multiple
// k times the range, and g at most half the range makes k larger than that multiple's. A width below the
// range meets a divisor, the range itself at the latest, and no earlier width has a common multiple as small.
template <class T>
T adjustWidth(const T& range, const T& b, T& s) {
  if (isZero(T(b - s))) return T(0);
  const T width = wholeWidth(T(b - s));
  const T fitting = fittingWidth(range, width);
  s = b - fitting;
  return fitting;
}

template dbl_t adjustWidth(const dbl_t&, const dbl_t&, dbl_t&);
template QQ adjustWidth(const QQ&, const QQ&, QQ&);
LATBOX_BOTH_TYPES(computeRange)
LATBOX_BOTH_TYPES(lcmOfWidths)

}  // namespace latbox
