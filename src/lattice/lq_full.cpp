// Householder factorisation M = L Q, reflections applied from the right. The running product of the
// reflections is kept per level, so that later rows can resume from it.
#include <algorithm>
#include <cmath>

#include "lattice/orthogonal_factorisation.h"
#include "numbers/number.h"

namespace latbox {

namespace {

// I - scale v v^T, v being zero before `first`.
template <class F>
struct Reflector {
  Vector<F> v;
  F scale = F(0);
  long first = 1;
};

template <class T, class F>
Vector<F> convertedRow(const Vector<T>& row) {
  Vector<F> result(row.MN);
  for (long j = 1; j <= row.MN; ++j) result.data[j] = toDouble(row.data[j]);
  return result;
}

template <class F>
void reflect(const Reflector<F>& h, Vector<F>& row) {
  F product(0);
  for (long j = h.first; j <= row.MN; ++j) product += row.data[j] * h.v.data[j];
  product *= h.scale;
  for (long j = h.first; j <= row.MN; ++j) row.data[j] -= product * h.v.data[j];
}

// The reflection that clears row t of L behind its diagonal; the identity (scale 0) for a row that is zero
// there.
template <class F>
Reflector<F> reflectorOf(const Vector<F>& row, long t) {
  Reflector<F> h;
  h.v = row;
  h.first = t;
  F squares(0);
  for (long j = t; j <= row.MN; ++j) squares += row.data[j] * row.data[j];
  // At double width: a deliberate loss of precision that the tolerance of the callers absorbs.
  const F s = static_cast<F>(std::sqrt(static_cast<double>(squares)));
  if (s == F(0)) return h;
  const F x1 = row.data[t];
  h.v.data[t] = x1 < F(0) ? x1 - s : x1 + s;
  h.scale = F(1) / (s * (s + (x1 < F(0) ? -x1 : x1)));
  return h;
}

// L: all rows of M for a fresh start, otherwise the rows from kk on behind the kept reflections.
template <class T, class F>
void startRows(const Matrix<T>& M, Matrix<F>& L, const SerializableArray<Matrix<F>>& stages, long kk,
               long end) {
  if (kk == 1) {
    L.resize(M.M, M.N);
    for (long r = 1; r <= M.M; ++r) L[r] = convertedRow<T, F>(M[r]);
    return;
  }
  L.resize(std::max(end, L.M), M.N);
  const long kept = std::min(kk - 1, stages.MN);
  for (long r = kk; r <= end; ++r) {
    L[r] = convertedRow<T, F>(M[r]);
    if (kept > 0) L[r] = L[r] * stages[kept];
  }
}

template <class F>
void takeDirections(Matrix<F>& Q, const SerializableArray<Matrix<F>>& stages, long kk, long columns) {
  Q.resize(columns, columns);
  const Matrix<F> product = stages.MN > 0 ? stages[stages.MN] : Matrix<F>::unit(columns);
  for (long i = kk; i <= columns; ++i)
    for (long j = 1; j <= columns; ++j) Q[i][j] = product[j][i];
}

}  // namespace

template <class T, class F>
void lq_full(const Matrix<T>& M, Matrix<F>& L, Matrix<F>& Q, SerializableArray<Matrix<F>>& stages, long kk,
             long end) {
  if (kk < 1) fail("lq_full: kk is invalid (< 1)");
  if (end > M.M) fail("lq_full: end index overflow");
  if (end == 0) end = M.M;
  if (kk > end) fail("lq_full: dimension mismatch");
  const long count = std::max(std::min(M.N - 1, end), 0L);
  stages.resize(count, false);
  startRows(M, L, stages, kk, end);
  for (long t = kk; t <= count; ++t) {
    const Reflector<F> h = reflectorOf(L[t], t);
    stages[t] = t == 1 ? Matrix<F>::unit(M.N) : stages[t - 1];
    for (long i = 1; i <= M.N; ++i) reflect(h, stages[t][i]);
    for (long r = t; r <= end; ++r) reflect(h, L[r]);
  }
  takeDirections(Q, stages, kk, M.N);
}

template void lq_full(const Matrix<dbl_t>&, Matrix<dbl_t>&, Matrix<dbl_t>&, SerializableArray<Matrix<dbl_t>>&,
                      long, long);
template void lq_full(const Matrix<QQ>&, Matrix<dbl_t>&, Matrix<dbl_t>&, SerializableArray<Matrix<dbl_t>>&,
                      long, long);

}  // namespace latbox
