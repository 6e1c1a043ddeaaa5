// What the bounds of the variables allow a row to be, by interval arithmetic: bounds of inequations move in,
// and a row that can't be met ends the run.
#include <iostream>

#include "lib/failure.h"
#include "model/tessik.h"
#include "numbers/number.h"

namespace latbox {

namespace {

template <class T>
struct Interval {
  T low = T(0);
  T high = T(0);
};

template <class T>
void growSum(T& sum, const T& a, const T& bound) {
  sum += a * bound;
  checkPrecision(sum, "llu overflow");
}

// Zero coefficients are left out: they say nothing, and zero times an infinite bound is not defined.
template <class T>
Interval<T> rangeOf(const Vector<T>& row, const Vector<T>& lx, const Vector<T>& rx) {
  Interval<T> range;
  for (long j = 1; j <= row.MN; ++j) {
    const int sign = signOf(row[j]);
    if (sign == 0) continue;
    growSum(range.low, row[j], sign < 0 ? rx[j] : lx[j]);
    growSum(range.high, row[j], sign < 0 ? lx[j] : rx[j]);
  }
  return range;
}

template <class T>
void tightenInequation(Tessik<T>& p, long i, Interval<T> range) {
  if (p.lu[i] > range.low) range.low = p.lu[i];
  if (p.ru[i] < range.high) range.high = p.ru[i];
  if (range.high < range.low) {
    std::cerr << p.optFile << ": Inequality #" << i << ", this->lu = " << toText(range.low)
              << ", this->ru = " << toText(range.high) << std::endl;
    fail("Unfulfillable inequality detected --> NO SOLUTIONS!");
  }
  p.lu[i] = range.low;
  p.ru[i] = range.high;
}

template <class T>
void checkEquation(const Tessik<T>& p, long i, const Interval<T>& range) {
  if (!(range.low > p.bg[i]) && !(p.bg[i] > range.high)) return;
  std::cerr << p.optFile << ": Equality #" << i << ", lg = " << toText(range.low)
            << ", this->bg = " << toText(p.bg[i]) << ", rg = " << toText(range.high) << std::endl;
  fail("Unfulfillable equality detected --> NO SOLUTIONS!");
}

// Sides that the user left open. A solution gives them working bounds, which say nothing about the next one:
// a row that was tightened by them would cut off whatever would widen them again.
template <class T>
void forgetWorkingBounds(const Tessik<T>& p, Vector<T>& low, Vector<T>& high) {
  for (long j = 1; j <= p.fx.MN; ++j) {
    const FreedomDegree freedom = p.fx[j];
    if (freedom == FreedomDegree::noLower || freedom == FreedomDegree::free) low[j] = -infinity<T>();
    if (freedom == FreedomDegree::noUpper || freedom == FreedomDegree::free) high[j] = infinity<T>();
  }
}

}  // namespace

template <class T>
void Tessik<T>::tightenRows(bool inequations) {
  const Matrix<T>& rows = inequations ? Au : Ag;
  Vector<T> low = lx;
  Vector<T> high = rx;
  forgetWorkingBounds(*this, low, high);
  for (long i = 1; i <= rows.M; ++i) {
    const Interval<T> range = rangeOf(rows[i], low, high);
    if (inequations)
      tightenInequation(*this, i, range);
    else
      checkEquation(*this, i, range);
  }
}

#define LATBOX_INSTANTIATE(T) template void Tessik<T>::tightenRows(bool);
LATBOX_INSTANTIATE(dbl_t)
LATBOX_INSTANTIATE(QQ)

}  // namespace latbox
