// The two orthogonal factorisations that Gram-Schmidt data are made of where sums of inner products are not
// stable enough.
#pragma once

#include "numbers/matrix.h"

namespace latbox {

// Orthogonal factorisations M = L Q in F of the rows of M (lattice/lq_reduced.cpp, lattice/lq_full.cpp). kk
// is the first row to compute, `end` the last (0: all).
// Requires: for kk > 1 all other arguments are as the call that computed the rows before left them.
//
// lq_reduced: Q has `end` orthogonal rows, norms their squared lengths, L a unit diagonal. stages[l] holds
// the rows behind the first l - 1 directions, row r of it for r >= l. Returns 0, or the first row whose
// orthogonal part is zero: that row of Q and norms is written, L and the levels behind it are not.
// Fails with: "lq_reduced: kk is invalid (< 1)", "lq_reduced: dimension mismatch".
//
// lq_full: Q is square with orthonormal rows, L has the columns of M, and stages[t] is the product of the
// first t reflections, min(columns - 1, end) in all; a dependent row shows as a vanishing diagonal entry of
// L.
// Fails with: "lq_full: kk is invalid (< 1)", "lq_full: end index overflow", "lq_full: dimension mismatch".
template <class T, class F>
long lq_reduced(const Matrix<T>& M, Matrix<F>& L, Matrix<F>& Q, SerializableArray<Matrix<F>>& stages,
                Vector<F>& norms, long kk, long end);
template <class T, class F>
void lq_full(const Matrix<T>& M, Matrix<F>& L, Matrix<F>& Q, SerializableArray<Matrix<F>>& stages, long kk,
             long end);

}  // namespace latbox
