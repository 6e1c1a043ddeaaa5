// Small predicates on bounds, shared by the steps of the preparation.
#pragma once

#include "numbers/matrix.h"
#include "numbers/number.h"

namespace latbox {

template <class T>
bool isPlusInfinity(const T& x) {
  return isInfinite(x) && signOf(x) > 0;
}

template <class T>
bool isMinusInfinity(const T& x) {
  return isInfinite(x) && signOf(x) < 0;
}

// -x without the negative zero of floating point, which would show as "-0" in files and messages.
template <class T>
T negated(const T& x) {
  return isExactZero(x) ? T(0) : -x;
}

// Makes `matrix` `columns` wide; the gained columns are 0.
template <class T>
void widen(Matrix<T>& matrix, long columns) {
  const long before = matrix.N;
  matrix.resize(matrix.M, columns);
  for (long i = 1; i <= matrix.M; ++i)
    for (long j = before + 1; j <= columns; ++j) matrix[i][j] = T(0);
}

template <class T>
void negateColumn(Matrix<T>& matrix, long j) {
  for (long i = 1; i <= matrix.M; ++i) matrix[i][j] = negated(matrix[i][j]);
}

}  // namespace latbox
