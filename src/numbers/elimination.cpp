#include "numbers/elimination.h"

#include <cstdlib>
#include <vector>

#include "numbers/integer_elimination.h"
#include "numbers/number.h"
#include "numbers/tolerance.h"

namespace latbox {
namespace {

// The row of the largest absolute value in column `col` among rows from..M; the first of equal ones.
template <class T>
long pivotRow(const Matrix<T>& work, long from, long col) {
  long best = from;
  T bestValue = abs(work.data[from].data[col]);
  for (long i = from + 1; i <= work.M; ++i) {
    const T value = abs(work.data[i].data[col]);
    if (value > bestValue) {
      best = i;
      bestValue = value;
    }
  }
  return best;
}

// Clears column `col` of row i with the pivot row, in both matrices.
template <class T>
void clearEntry(Matrix<T>& work, Matrix<T>& companion, long i, long pivot, long col, const char* message) {
  const T q = work.data[i].data[col] / work.data[pivot].data[col];
  checkPrecision(q, message);
  work.data[i].subtractMultiple(q, work.data[pivot], col);
  work.data[i].data[col] = T(0);
  companion.data[i].subtractMultiple(q, companion.data[pivot]);
}

template <class T>
long pivotColumn(const Vector<T>& row) {
  long col = 1;
  while (isZero(row.data[col])) ++col;
  return col;
}

template <class T>
bool isIntegral(const Vector<T>& x) {
  for (long i = 1; i <= x.MN; ++i)
    if (!vanishes(T(x.data[i] - roundNearest(x.data[i])))) return false;
  return true;
}

// The triangular system of `gauss`: rows 1..columns.size() have their pivots in `columns`, ascending.
template <class T>
struct Triangle {
  Matrix<T> U;
  Vector<T> y;
  std::vector<long> columns;
};

template <class T>
Triangle<T> triangulate(const Matrix<T>& A, const Vector<T>& b) {
  Triangle<T> triangle{A, b, {}};
  long counted = A.N;
  for (long col = 1; col <= A.N; ++col) {
    const long k = static_cast<long>(triangle.columns.size()) + 1;
    const long p = k <= A.M ? pivotRow(triangle.U, k, col) : 0;
    if (p == 0 || vanishes(triangle.U.data[p].data[col])) {
      --counted;
      continue;
    }
    triangle.U.swapRows(p, k);
    triangle.y.swap(p, k);
    triangle.columns.push_back(col);
    for (long i = k + 1; i <= A.M; ++i) {
      const T q = triangle.U.data[i].data[col] / triangle.U.data[k].data[col];
      if (isExactZero(q)) continue;
      triangle.U.data[i].subtractMultiple(q, triangle.U.data[k], col);
      triangle.U.data[i].data[col] = T(0);
      subtractProduct(triangle.y.data[i], q, triangle.y.data[k]);
    }
  }
  if (std::min(A.M, A.N) < counted) fail("gauss: rang too big");
  return triangle;
}

// Rows without a pivot must have come out with a zero right-hand side.
template <class T>
bool isConsistent(const Triangle<T>& triangle) {
  for (long i = static_cast<long>(triangle.columns.size()) + 1; i <= triangle.U.M; ++i)
    if (!vanishes(triangle.y.data[i])) return false;
  return true;
}

template <class T>
void substituteBack(const Triangle<T>& triangle, Vector<T>& x) {
  x.resizeZero(triangle.U.N);
  for (long k = static_cast<long>(triangle.columns.size()); k >= 1; --k) {
    const Vector<T>& row = triangle.U.data[k];
    const long col = triangle.columns[static_cast<std::size_t>(k - 1)];
    T value = triangle.y.data[k];
    for (long j = col + 1; j <= row.MN; ++j) subtractProduct(value, row.data[j], x.data[j]);
    x.data[col] = value / row.data[col];
  }
}

}  // namespace

template <class T>
long forwardEliminate(Matrix<T>& work, Matrix<T>& companion, bool exact) {
  const auto isNull = [exact](const T& x) { return exact ? vanishes(x) : isZero(x); };
  long pivots = 0;
  long sign = 1;
  for (long col = 1; col <= work.N && pivots < work.M; ++col) {
    const long p = pivotRow(work, pivots + 1, col);
    if (isNull(work.data[p].data[col])) continue;
    ++pivots;
    if (p != pivots) {
      work.swapRows(p, pivots);
      companion.swapRows(p, pivots);
      sign = -sign;
    }
    for (long i = pivots + 1; i <= work.M; ++i)
      if (!isNull(work.data[i].data[col])) clearEntry(work, companion, i, pivots, col, "q overflow");
  }
  return sign * pivots;
}

template <class T>
long signedRank(Matrix<T>& work, Matrix<T>& companion) {
  const long signedPivots = forwardEliminate(work, companion, false);
  for (long k = std::labs(signedPivots); k >= 2; --k) {
    const long col = pivotColumn(work.data[k]);
    for (long i = k - 1; i >= 1; --i)
      if (!isZero(work.data[i].data[col])) clearEntry(work, companion, i, k, col, "q2 overflow");
  }
  return signedPivots;
}

// The backward pass finds no pivot, but in dbl_t it may throw: a step that can't do it runs in the exact
// type.
template <>
long rankOf(const Matrix<dbl_t>& M) {
  Matrix<dbl_t> work(M), companion(M.M, 0);
  return std::labs(signedRank(work, companion));
}

// Exact numbers don't throw, so that here the pivots are all there is to find.
template <>
long rankOf(const Matrix<QQ>& M) {
  long rank = 0;
  if (wholeRank(M, rank)) return rank;
  Matrix<QQ> work(M), companion(M.M, 0);
  return std::labs(forwardEliminate(work, companion, false));
}

template <class T>
bool gauss(const Matrix<T>& A, const Vector<T>& b, Vector<T>& x, bool integral) {
  const Triangle<T> triangle = triangulate(A, b);
  if (!isConsistent(triangle)) return false;
  substituteBack(triangle, x);
  return !integral || isIntegral(x);
}

#define LATBOX_INSTANTIATE(T)                                                        \
  template long forwardEliminate(Matrix<T>& work, Matrix<T>& companion, bool exact); \
  template long signedRank(Matrix<T>& work, Matrix<T>& companion);                   \
  template bool gauss(const Matrix<T>& A, const Vector<T>& b, Vector<T>& x, bool integral);
LATBOX_INSTANTIATE(dbl_t)
LATBOX_INSTANTIATE(QQ)
#undef LATBOX_INSTANTIATE

}  // namespace latbox
