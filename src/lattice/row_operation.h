// The row operations of reduction: exact, or they throw.
#pragma once

#include <cmath>

#include "numbers/number.h"
#include "numbers/vector.h"

namespace latbox {

// A whole number of F in T, below 9 * 10^18 exactly. The text conversion of larger values keeps 17 digits,
// and a whole number stays whole.
template <class T>
T wholeNumber(dbl_t q) {
  if (std::fabs(q) < 9e18L) return T(static_cast<long long>(q));
  return fromDouble<T>(q);
}
template <>
inline dbl_t wholeNumber(dbl_t q) {
  return q;
}

// row -= q * other. In dbl_t every new entry passes the precision gate. One that passes came from a product
// below 2 * 10^9, so product and difference of whole numbers were exact.
// Throws: in dbl_t, PrecisionException with "vector precisison overflow" beyond 10^9,
// FatalPrecisionException beyond 10^18.
template <class T>
void subtractChecked(Vector<T>& row, const T& q, const Vector<T>& other);

// True when no entry is beyond the tolerance.
template <class T>
bool isZeroVector(const Vector<T>& row) {
  for (long i = 1; i <= row.MN; ++i)
    if (!isZero(row.data[i])) return false;
  return true;
}

// The largest absolute entry of row, and of row - q * other.
template <class T>
T supNorm(const Vector<T>& row);
template <class T>
T supNormOfDifference(const Vector<T>& row, const T& q, const Vector<T>& other);

}  // namespace latbox
