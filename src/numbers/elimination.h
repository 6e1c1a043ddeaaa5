// Gaussian elimination over dbl_t and QQ.
#pragma once

#include "numbers/matrix.h"

namespace latbox {

// Brings `work` to echelon form from the top, then clears the columns of the pivots above them as well;
// `companion` (same row count) receives the same row operations. In each column the pivot is the largest
// absolute value at or below the current row; a column in which that isZero is skipped. Returns the number of
// pivots, negated for an odd number of row exchanges. In dbl_t throws PrecisionException "q overflow"
// (forward) and "q2 overflow" (backward) when a quotient fails the precision gate.
template <class T>
long signedRank(Matrix<T>& work, Matrix<T>& companion);

// The number of pivots that signedRank finds in `M`, and in dbl_t what it throws.
template <class T>
long rankOf(const Matrix<T>& M);

// The forward half of signedRank alone: echelon form, pivots from the largest absolute value. Returns the
// signed number of pivots; 0 for a matrix of rank 0. With `exact`, zero in QQ is exactly zero: a determinant
// must not lose an entry below the tolerance.
template <class T>
long forwardEliminate(Matrix<T>& work, Matrix<T>& companion, bool exact);

// Solves A x = b for a rectangular A by LU with row pivoting and substitution; unknowns of columns without a
// pivot are 0. b.MN == A.M; x gets A.N elements. Returns false if the system is inconsistent (zero means
// isZero in dbl_t, exactly zero in QQ), and, with `integral`, if an unknown is not an integer by the same
// measure. Fails with "gauss: rang too big" when min(rows, columns) is smaller than the counted rank.
template <class T>
bool gauss(const Matrix<T>& A, const Vector<T>& b, Vector<T>& x, bool integral = false);

}  // namespace latbox
