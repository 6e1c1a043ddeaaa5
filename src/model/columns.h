// Changes of columns, shared by the steps of the preparation.
#pragma once

#include "numbers/matrix.h"
#include "numbers/number.h"

namespace latbox {

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
