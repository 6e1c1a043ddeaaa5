// The row operations of reduction: exact, or they throw.
#pragma once

#include "lib/vector.h"

namespace latbox {

// row -= q * other. In dbl_t every new entry passes the precision gate: beyond 10^9 PrecisionException with
// "vector precisison overflow", beyond 10^18 FatalPrecisionException. An entry that passes came from a
// product below 2 * 10^9, so product and difference of whole numbers were exact.
template <class T>
void subtractMultiple(Vector<T>& row, const T& q, const Vector<T>& other);

// The largest absolute entry of row, and of row - q * other.
template <class T>
T supNorm(const Vector<T>& row);
template <class T>
T supNormOfDifference(const Vector<T>& row, const T& q, const Vector<T>& other);

}  // namespace latbox
