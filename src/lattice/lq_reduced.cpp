// Modified Gram-Schmidt factorisation with kept levels: level l holds the rows projected away from the first
// l - 1 orthogonal directions. More stable than sums of inner products, at the cost of `end` matrices.
#include "lattice/orthogonal_factorisation.h"
#include "numbers/number.h"

namespace latbox {

namespace {

template <class T, class F>
void copyRow(const Matrix<T>& M, long r, Matrix<F>& level) {
  for (long j = 1; j <= M.N; ++j) level.rows[r].data[j] = toDouble(M.rows[r].data[j]);
}

template <class F>
F dot(const Vector<F>& a, const Vector<F>& b) {
  F sum(0);
  for (long j = 1; j <= a.MN; ++j) sum += a.data[j] * b.data[j];
  return sum;
}

// One row of the next level: what is left of `row` without direction q.
template <class F>
void projectAway(const Vector<F>& row, const F& factor, const Vector<F>& q, Vector<F>& rest) {
  for (long j = 1; j <= q.MN; ++j) rest.data[j] = row.data[j] - factor * q.data[j];
}

// Shapes, with what is there kept.
template <class F>
void shape(Matrix<F>& L, Matrix<F>& Q, SerializableArray<Matrix<F>>& stages, Vector<F>& norms, long end,
           long columns) {
  L.resize(end, end);
  Q.resize(end, columns);
  stages.resize(end, false);
  for (long l = 1; l <= end; ++l) stages[l].resize(end, columns);
  norms.resize(end, false);
}

// Rows kk..end against the kept directions 1..kk-1.
template <class T, class F>
void rederive(const Matrix<T>& M, Matrix<F>& L, const Matrix<F>& Q, SerializableArray<Matrix<F>>& stages,
              const Vector<F>& norms, long kk, long end) {
  for (long r = kk; r <= end; ++r) copyRow(M, r, stages[1]);
  for (long l = 1; l < kk; ++l) {
    for (long r = kk; r <= end; ++r) {
      L[r][l] = dot(Q[l], stages[l][r]) / norms[l];
      projectAway(stages[l][r], L[r][l], Q[l], stages[l + 1][r]);
    }
  }
}

// Takes direction i off the rows behind it. There is no level behind the last one.
template <class F>
void descend(Matrix<F>& L, const Matrix<F>& Q, SerializableArray<Matrix<F>>& stages, const Vector<F>& norms,
             long i, long end) {
  for (long j = 1; j < i; ++j) L[j][i] = F(0);
  L[i][i] = F(1);
  for (long r = i + 1; r <= end; ++r) L[r][i] = dot(Q[i], stages[i][r]) / norms[i];
  if (i == end) return;
  for (long r = 1; r < i; ++r) stages[i + 1][r].setZero();
  for (long r = i + 1; r <= end; ++r) projectAway(stages[i][r], L[r][i], Q[i], stages[i + 1][r]);
}

}  // namespace

template <class T, class F>
long lq_reduced(const Matrix<T>& M, Matrix<F>& L, Matrix<F>& Q, SerializableArray<Matrix<F>>& stages,
                Vector<F>& norms, long kk, long end) {
  if (kk < 1) fail("lq_reduced: kk is invalid (< 1)");
  if (end == 0) end = M.M;
  if (end < kk) fail("lq_reduced: dimension mismatch");
  shape(L, Q, stages, norms, end, M.N);
  if (kk > 1) rederive(M, L, Q, stages, norms, kk, end);
  for (long i = kk; i <= end; ++i) {
    if (i == 1)
      for (long r = 1; r <= end; ++r) copyRow(M, r, stages[1]);
    Q[i] = stages[i][i];
    norms[i] = dot(Q[i], Q[i]);
    if (isZero(norms[i])) return i;
    descend(L, Q, stages, norms, i, end);
  }
  return 0;
}

template long lq_reduced(const Matrix<dbl_t>&, Matrix<dbl_t>&, Matrix<dbl_t>&,
                         SerializableArray<Matrix<dbl_t>>&, Vector<dbl_t>&, long, long);
template long lq_reduced(const Matrix<QQ>&, Matrix<dbl_t>&, Matrix<dbl_t>&, SerializableArray<Matrix<dbl_t>>&,
                         Vector<dbl_t>&, long, long);

}  // namespace latbox
