// Whether an integer matrix is unimodular.
#pragma once

#include "numbers/matrix.h"

namespace latbox {

// True if `m` has the determinant 1 or -1. Decided modulo primes, never against a tolerance: a floating
// determinant of a 200 x 200 transformation has lost its digits. False if an entry is not an integer.
// Requires: `m` is square.
template <class T>
bool isUnimodular(const Matrix<T>& m);

}  // namespace latbox
