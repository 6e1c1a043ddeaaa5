// What the tests of the lattice share: lattices from a given basis, a generator of bases, and an oracle for
// reducedness that computes everything anew in exact arithmetic.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <initializer_list>
#include <vector>

#include "driver/events.h"
#include "lattice/lattice.h"
#include "numbers/number.h"
#include "support/draws.h"
#include "support/rows.h"

namespace latbox::testing {

using Rows = std::vector<std::vector<long>>;
using NumberTypes = ::testing::Types<dbl_t, QQ>;

template <class T>
Matrix<T> matrixOf(const Rows& rows) {
  Matrix<T> m(static_cast<long>(rows.size()), rows.empty() ? 0 : static_cast<long>(rows[0].size()));
  for (long i = 1; i <= m.M; ++i)
    for (long j = 1; j <= m.N; ++j)
      m[i][j] = T(rows[static_cast<std::size_t>(i - 1)][static_cast<std::size_t>(j - 1)]);
  return m;
}

template <class T>
Vector<T> vectorOf(const std::vector<long>& entries) {
  Vector<T> v(static_cast<long>(entries.size()));
  for (long i = 1; i <= v.MN; ++i) v[i] = T(entries[static_cast<std::size_t>(i - 1)]);
  return v;
}

// A lattice with this basis in the state after generation. Its bounds admit no vector, so that nothing that
// the reduction touches becomes a solution.
template <class T>
void setBasis(Lattice<T, dbl_t>& lattice, const Matrix<T>& basis) {
  lattice.events = &runEvents<T>();
  lattice.resizeLattice(basis.M, basis.N);
  lattice.enterBasis(basis);
  lattice.checkMode = CHECK_MODE_FINAL;
  lattice.lbnd[lattice.dim] = T(1);
  lattice.ubnd[lattice.dim] = T(-1);
  lattice.params.pair.set(false);
}

// Upper triangular rows with large entries: independent, and far from reduced.
inline Rows knapsackRows(long n, long size, std::uint64_t seed) {
  Draws draw(seed);
  Rows rows(static_cast<std::size_t>(n), std::vector<long>(static_cast<std::size_t>(n + 1), 0));
  for (std::size_t i = 0; i < rows.size(); ++i) {
    rows[i][i] = 1;
    rows[i].back() = draw.next(size / 2, size);
  }
  return rows;
}

template <class T>
Matrix<QQ> exact(const Matrix<T>& m) {
  Matrix<QQ> result;
  result.assignConverted(m, [](const T& x) { return QQ(x); });
  return result;
}

// Size-reduced and Lovász-reduced with a factor a little below the system's, from an exact orthogonalisation.
inline bool isReduced(const Matrix<QQ>& B) {
  const QQ half = QQ(1) / QQ(2) + QQ(1) / QQ(1000000000);
  const QQ factor = QQ(1) - QQ(2) / QQ(1000000000);
  Matrix<QQ> star = B;
  Vector<QQ> length(B.M);
  for (long i = 1; i <= B.M; ++i) {
    QQ before;
    for (long j = 1; j < i; ++j) {
      const QQ mu = (B[i] * star[j]) / length[j];
      if (abs(mu) > half) return false;
      star[i] -= star[j] * mu;
      before = mu;
    }
    length[i] = star[i] * star[i];
    if (i > 1 && length[i] + before * before * length[i - 1] < factor * length[i - 1]) return false;
  }
  return true;
}

// det(B B^T), exact.
inline QQ gramDeterminant(const Matrix<QQ>& B) {
  return (B * B.transposed()).determinant();
}

// Sweeps until one leaves everything as it is.
template <class T>
void reduceFully(Lattice<T, dbl_t>& lattice) {
  for (int sweep = 0; sweep < 200; ++sweep) {
    const Matrix<T> before = lattice.B;
    lattice.clearStatus();
    lattice.lll(1, 0, 0);
    if (before == lattice.B) return;
  }
  FAIL() << "the sweeps do not end";
}

}  // namespace latbox::testing
