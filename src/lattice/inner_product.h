// Inner products of basis rows, in the one form that Gram-Schmidt data are made from: each product exact (QQ)
// or as dbl_t gives it, converted to F and summed in F from coordinate 1 upward.
#pragma once

#include "numbers/matrix.h"

namespace latbox {

// result[j] = <b_j, b_i> for j = 1..i-1.
// Requires: `result` has room for element i - 1.
template <class T, class F>
void innerProducts(const Matrix<T>& B, long i, F* result);

// <b, b>, summed in T: exact in QQ.
template <class T>
void squaredLength(const Vector<T>& b, T& result);

}  // namespace latbox
