// Products of vectors that keep all their digits, in either number type.
#pragma once

#include "numbers/matrix.h"
#include "numbers/number.h"

namespace latbox {

// For a partial sum: standard precision holds whole numbers up to 10^18 as they are, others only up to 10^9
// with the places behind the point that the tolerance needs.
// Throws: PrecisionException with "sum overflow" beyond that.
inline void requireAllDigits(dbl_t sum) {
  if (precisionCheck(sum) && sum != roundNearest(sum)) throwPrecision("sum overflow");
}
inline void requireAllDigits(const QQ&) {}

// The sum of a[j] b[j] over the components of a, from the first on. Each partial sum is tested, for large
// ones that cancel would lose digits unnoticed.
template <class T>
T exactProduct(const Vector<T>& a, const Vector<T>& b) {
  T sum(0);
  for (long j = 1; j <= a.MN; ++j) {
    addProduct(sum, a.data[j], b[j]);
    requireAllDigits(sum);
  }
  return sum;
}

template <class T>
Vector<T> exactProduct(const Matrix<T>& A, const Vector<T>& x) {
  Vector<T> result(A.M);
  for (long i = 1; i <= A.M; ++i) result.data[i] = exactProduct(A[i], x);
  return result;
}

}  // namespace latbox
