// Where floating point needs leave to be off by a rounding error, and exact numbers do not: the predicates
// and roundings whose tolerance is that of dbl_t alone. isZero, the tolerance of both types, stands in
// number.h.
#pragma once

#include "numbers/number.h"

namespace latbox {

// Whether x counts as zero: isZero in dbl_t, exactly zero in QQ. For eliminations, which would lose small
// fractions by a tolerance.
inline bool vanishes(dbl_t x) {
  return isZero(x);
}
inline bool vanishes(const QQ& x) {
  return x.isExactZero();
}

// a > b; in dbl_t only by more than isZero allows. Infinities of one sign do not exceed each other.
inline bool exceeds(dbl_t a, dbl_t b) {
  return a > b && !isZero(a - b);
}
inline bool exceeds(const QQ& a, const QQ& b) {
  return a > b;
}

// x becomes the nearest whole number where isZero holds of the distance, in both types. x is finite.
template <class T>
void toNearWhole(T& x) {
  if (isInteger(x)) return;
  const T nearest = roundNearest(x);
  if (isZero(T(x - nearest))) x = nearest;
}

// For what is whole by its definition: toNearWhole in dbl_t, while exact arithmetic has nothing to mend.
inline void snapToWhole(dbl_t& x) {
  toNearWhole(x);
}
inline void snapToWhole(QQ&) {}

// x, or the nearest whole number where a dbl_t is within 8 units in the last place of it: what a product or
// quotient may be off, and nearer than any number of 17 digits that is not whole. Never -0 for a whole
// number. QQ: x itself. x is finite.
dbl_t withoutRounding(dbl_t x);
inline const QQ& withoutRounding(const QQ& x) {
  return x;
}

// Cuts the fraction of a QQ to PRECISION_DIGITS digits of its denominator, in canonical form: exact powers of
// a fraction would double in length with every factor. dbl_t: nothing to cut.
inline void shorten(dbl_t&) {}
void shorten(QQ& x);

}  // namespace latbox
