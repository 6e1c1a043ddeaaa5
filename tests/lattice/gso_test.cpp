// Gram-Schmidt data: the update, the two factorisations and their wrappers.
#include "lattice/orthogonal_factorisation.h"
#include "lattice/support.h"

#include <cmath>
#include <limits>
#include <type_traits>

#include "support/failure.h"

namespace latbox::testing {

template <class T>
class GsoTest : public ::testing::Test {
 public:
  Lattice<T, dbl_t> lattice;
  Matrix<dbl_t> L, Q;
  SerializableArray<Matrix<dbl_t>> stages;
  Vector<dbl_t> norms;

  long reduced(const Matrix<T>& M, long kk, long end) { return lq_reduced(M, L, Q, stages, norms, kk, end); }
  void full(const Matrix<T>& M, long kk, long end) { lq_full(M, L, Q, stages, kk, end); }
};
TYPED_TEST_SUITE(GsoTest, NumberTypes);

// mu and bstarSq of all rows against exact arithmetic.
template <class T>
void expectExactGso(const Lattice<T, dbl_t>& l) {
  const Matrix<QQ> B = exact(l.B);
  Matrix<QQ> star = B;
  for (long i = 1; i <= l.rank; ++i) {
    for (long j = 1; j < i; ++j) {
      const QQ mu = (B[i] * star[j]) / (star[j] * star[j]);
      star[i] -= star[j] * mu;
      EXPECT_NEAR(static_cast<double>(l.mu[i][j]), static_cast<double>(toDouble(mu)), 1e-12) << i << ' ' << j;
    }
    const double length = static_cast<double>(toDouble(star[i] * star[i]));
    EXPECT_NEAR(static_cast<double>(l.bstarSq[i]) / length, 1.0, 1e-9) << i;
    EXPECT_EQ(l.mu[i][i], 1);
    for (long j = i + 1; j <= l.rank; ++j) EXPECT_EQ(l.mu[i][j], 0);
    EXPECT_EQ(QQ(l.bNormSq[i]), B[i] * B[i]);
  }
}

inline Rows mixedRows() {
  return {{3, 1, -2, 0, 5}, {7, 4, 1, 1, -3}, {-2, 8, 6, 0, 1}, {1, 1, 1, 9, 2}};
}

TYPED_TEST(GsoTest, UpdateGivesTheExactValues) {
  setBasis(this->lattice, matrixOf<TypeParam>(mixedRows()));
  EXPECT_TRUE(this->lattice.updateGso(1, 0));
  expectExactGso(this->lattice);
  for (long i = 1; i <= 4; ++i) EXPECT_EQ(this->lattice.status[i], STATUS_GSO);
}

// In either type the products are summed in floating point: what falls below the mantissa is gone. The
// squared length is the one exact sum.
TYPED_TEST(GsoTest, ProductsAreSummedInFloatingPoint) {
  constexpr long big = 10'000'000'000L;
  auto& l = this->lattice;
  setBasis(l, matrixOf<TypeParam>({{1, big, big}, {1, big, -big}}));
  EXPECT_TRUE(l.updateGso(1, 0));
  EXPECT_EQ(l.mu[2][1], 0);
  if (std::is_same_v<TypeParam, QQ>) {
    EXPECT_TRUE(l.bNormSq[1] == TypeParam(big) * TypeParam(2 * big) + TypeParam(1));
  }
}

TYPED_TEST(GsoTest, UpdateSkipsValidRows) {
  setBasis(this->lattice, matrixOf<TypeParam>(mixedRows()));
  this->lattice.updateGso(1, 2);
  EXPECT_EQ(this->lattice.status[3], 0);
  this->lattice.mu[2][1] = 0.25L;
  this->lattice.updateGso(1, 3);
  EXPECT_EQ(this->lattice.mu[2][1], 0.25L);
  EXPECT_EQ(this->lattice.status[3], STATUS_GSO);
}

TYPED_TEST(GsoTest, UpdateMarksTheSecondOfTwoEqualRows) {
  setBasis(this->lattice, matrixOf<TypeParam>({{1, 2, 3}, {1, 2, 3}, {0, 0, 1}}));
  EXPECT_FALSE(this->lattice.updateGso(1, 0));
  EXPECT_LE(this->lattice.bstarSq[2], EPS);
  EXPECT_EQ(this->lattice.status[1], STATUS_GSO);
  EXPECT_EQ(this->lattice.status[2], STATUS_DEPENDENT);
  EXPECT_EQ(this->lattice.status[3], 0);  // it returned at once
}

TYPED_TEST(GsoTest, ValidBitReplacesTheDependentWord) {
  setBasis(this->lattice, matrixOf<TypeParam>(mixedRows()));
  setWord(this->lattice, 1, STATUS_DEPENDENT);
  EXPECT_TRUE(this->lattice.updateGso(1, 1));
  EXPECT_EQ(this->lattice.status[1], STATUS_GSO);
}

TEST(GsoNoNumber, CountsAsDependent) {
  Lattice<dbl_t, dbl_t> l;
  setBasis(l, matrixOf<dbl_t>({{1, 0}, {0, 1}}));
  rows(l).B[2][1] = std::numeric_limits<dbl_t>::quiet_NaN();
  EXPECT_FALSE(l.updateGso(1, 0));
  EXPECT_EQ(l.status[2], STATUS_DEPENDENT);
}

TYPED_TEST(GsoTest, WrappersGiveTheExactValues) {
  setBasis(this->lattice, matrixOf<TypeParam>(mixedRows()));
  EXPECT_EQ(this->lattice.gsoByReduced(1, 0, true), 0);
  expectExactGso(this->lattice);
  for (long i = 1; i <= 4; ++i) EXPECT_EQ(this->lattice.status[i], STATUS_LQ);
  this->lattice.clearStatus();
  EXPECT_EQ(this->lattice.gsoByFull(1, 0, true), 0);
  expectExactGso(this->lattice);
  for (long i = 1; i <= 4; ++i) EXPECT_EQ(this->lattice.status[i], STATUS_FULL);
}

TYPED_TEST(GsoTest, FullDirectionsPointAlongTheGramSchmidtVectors) {
  auto& l = this->lattice;
  setBasis(l, matrixOf<TypeParam>(mixedRows()));
  l.gsoByReduced(1, 0, true);
  const Matrix<dbl_t> star = l.Bstar;
  l.gsoByFull(1, 0, true);
  for (long i = 1; i <= 4; ++i)
    for (long j = 1; j <= 5; ++j)
      EXPECT_NEAR(static_cast<double>(l.Bstar[i][j] * std::sqrt(l.bstarSq[i])),
                  static_cast<double>(star[i][j]), 1e-12);
}

// The two share their storage, so the row of one must never pass for a row of the other.
TYPED_TEST(GsoTest, OneFactorisationVoidsTheOther) {
  auto& l = this->lattice;
  setBasis(l, matrixOf<TypeParam>(mixedRows()));
  l.gsoByReduced(1, 3, true);
  l.gsoByFull(1, 2, true);
  l.gsoByReduced(1, 0, true);
  expectExactGso(l);
  l.gsoByFull(1, 0, true);
  expectExactGso(l);
}

TYPED_TEST(GsoTest, WrappersRedoOnlyTheInvalidTail) {
  auto& l = this->lattice;
  for (const bool full : {false, true}) {
    setBasis(l, matrixOf<TypeParam>(mixedRows()));
    const auto run = [&] { return full ? l.gsoByFull(1, 0, true) : l.gsoByReduced(1, 0, true); };
    run();
    l.mu[1][1] = 5;  // valid rows are not looked at
    rows(l).B[3] = vectorOf<TypeParam>({4, 4, 4, 4, 1});
    l.invalidateFrom(3);
    EXPECT_EQ(run(), 0);
    EXPECT_EQ(l.mu[1][1], 5);
    l.mu[1][1] = 1;
    expectExactGso(l);
    EXPECT_EQ(run(), 0);
  }
}

TYPED_TEST(GsoTest, WrappersReportTheDependentRow) {
  auto& l = this->lattice;
  setBasis(l, matrixOf<TypeParam>({{1, 2, 3}, {4, 5, 6}, {5, 7, 9}, {1, 0, 0}}));
  EXPECT_EQ(l.gsoByReduced(1, 0, false), 3);
  EXPECT_EQ(l.status[2], STATUS_LQ);
  EXPECT_EQ(l.status[3], 0);
  l.clearStatus();
  EXPECT_EQ(l.gsoByFull(1, 0, false), 3);
  EXPECT_EQ(l.status[2], STATUS_FULL);
  l.clearStatus();
  EXPECT_FAILURE(l.gsoByReduced(1, 0, true), "Linear dependency detected - remove these first!");
  EXPECT_FAILURE(l.gsoByFull(1, 0, true), "Linear dependency detected - remove first!");
}

TYPED_TEST(GsoTest, MoreRowsThanColumnsDepend) {
  auto& l = this->lattice;
  setBasis(l, matrixOf<TypeParam>({{1, 2}, {3, 4}, {5, 7}}));
  EXPECT_EQ(l.gsoByFull(1, 0, false), 3);
  l.clearStatus();
  EXPECT_EQ(l.gsoByReduced(1, 0, false), 3);
}

TYPED_TEST(GsoTest, ReducedFactorsGiveTheMatrixBack) {
  const Matrix<TypeParam> M = matrixOf<TypeParam>(mixedRows());
  EXPECT_EQ(this->reduced(M, 1, 0), 0);
  const Matrix<dbl_t> product = this->L * this->Q;
  for (long i = 1; i <= 4; ++i)
    for (long j = 1; j <= 5; ++j)
      EXPECT_NEAR(static_cast<double>(product[i][j]), static_cast<double>(toDouble(M[i][j])), 1e-14);
  EXPECT_EQ(this->stages.MN, 4);  // no level behind the last row
}

TYPED_TEST(GsoTest, ReducedComputesOnlyTheLastRow) {
  Matrix<TypeParam> M = matrixOf<TypeParam>(mixedRows());
  this->reduced(M, 1, 0);
  M[4] = vectorOf<TypeParam>({0, 0, 0, 0, 1});
  const Matrix<dbl_t> before = this->Q;
  EXPECT_EQ(this->reduced(M, 4, 4), 0);
  for (long i = 1; i <= 3; ++i) EXPECT_TRUE(this->Q[i] == before[i]);
  EXPECT_FALSE(this->Q[4] == before[4]);
  const Matrix<dbl_t> resumed = this->Q;
  this->reduced(M, 1, 0);
  EXPECT_TRUE(this->Q == resumed);
}

TYPED_TEST(GsoTest, ReducedResumesFromEveryRow) {
  const Matrix<TypeParam> M = matrixOf<TypeParam>(mixedRows());
  this->reduced(M, 1, 0);
  const Matrix<dbl_t> Q = this->Q;
  const Matrix<dbl_t> L = this->L;
  for (long kk = 1; kk <= 4; ++kk) {
    EXPECT_EQ(this->reduced(M, kk, 0), 0);
    EXPECT_TRUE(this->Q == Q) << kk;
    EXPECT_TRUE(this->L == L) << kk;
  }
  // In two parts.
  Matrix<dbl_t> L2, Q2;
  SerializableArray<Matrix<dbl_t>> stages2;
  Vector<dbl_t> norms2;
  lq_reduced(M, L2, Q2, stages2, norms2, 1, 2);
  lq_reduced(M, L2, Q2, stages2, norms2, 3, 4);
  EXPECT_TRUE(Q2 == Q);
}

// Storage is kept between the calls, what stood in it must not show.
TYPED_TEST(GsoTest, ReducedWritesTheZerosOfFactorAndLevels) {
  const Matrix<TypeParam> M = matrixOf<TypeParam>(mixedRows());
  this->reduced(M, 1, 0);
  for (long i = 1; i <= 4; ++i)
    for (long j = 1; j <= 4; ++j) {
      this->L[i][j] = 7;
      for (long l = 1; l <= 4; ++l) this->stages[l][i][j] = 7;
    }
  this->reduced(M, 1, 0);
  for (long i = 1; i <= 4; ++i)
    for (long j = i + 1; j <= 4; ++j) EXPECT_EQ(this->L[i][j], 0) << i << ' ' << j;
  for (long l = 3; l <= 4; ++l)
    for (long r = 1; r <= l - 2; ++r)
      EXPECT_TRUE(this->stages[l][r] == Vector<dbl_t>::zeros(5)) << l << ' ' << r;
}

TYPED_TEST(GsoTest, ReducedReportsAZeroFirstRow) {
  EXPECT_EQ(this->reduced(matrixOf<TypeParam>({{0, 0}, {1, 2}}), 1, 0), 1);
  EXPECT_TRUE(this->Q[1] == Vector<dbl_t>::zeros(2));
}

TYPED_TEST(GsoTest, ReducedReportsTheSecondOfTwoEqualRows) {
  EXPECT_EQ(this->reduced(matrixOf<TypeParam>({{3, 1}, {3, 1}}), 1, 0), 2);
}

TYPED_TEST(GsoTest, ReducedRefusesBadRanges) {
  const Matrix<TypeParam> M = matrixOf<TypeParam>(mixedRows());
  EXPECT_FAILURE(this->reduced(M, 0, 0), "lq_reduced: kk is invalid (< 1)");
  EXPECT_FAILURE(this->reduced(M, 3, 2), "lq_reduced: dimension mismatch");
}

TYPED_TEST(GsoTest, FullRefusesBadRanges) {
  const Matrix<TypeParam> M = matrixOf<TypeParam>(mixedRows());
  EXPECT_FAILURE(this->full(M, 0, 0), "lq_full: kk is invalid (< 1)");
  EXPECT_FAILURE(this->full(M, 1, 5), "lq_full: end index overflow");
  EXPECT_FAILURE(this->full(M, 3, 2), "lq_full: dimension mismatch");
}

template <class T>
void expectProduct(const Matrix<dbl_t>& L, const Matrix<dbl_t>& Q, const Matrix<T>& M) {
  for (long i = 1; i <= M.M; ++i)
    for (long j = 1; j <= M.N; ++j) {
      dbl_t sum = 0;
      for (long k = 1; k <= M.N; ++k) sum += L[i][k] * Q[k][j];
      EXPECT_NEAR(static_cast<double>(sum), static_cast<double>(toDouble(M[i][j])), 1e-12);
    }
}

TYPED_TEST(GsoTest, FullFactorsGiveTheMatrixBack) {
  const Matrix<TypeParam> M = matrixOf<TypeParam>(mixedRows());
  this->full(M, 1, 0);
  expectProduct(this->L, this->Q, M);
  for (long i = 1; i <= 4; ++i)
    for (long j = i + 1; j <= 5; ++j) EXPECT_NEAR(static_cast<double>(this->L[i][j]), 0, 1e-12);
  EXPECT_EQ(this->stages.MN, 4);
}

TYPED_TEST(GsoTest, FullStopsItsReflectionsBeforeTheLastColumn) {
  const Matrix<TypeParam> M = matrixOf<TypeParam>({{1, 2, 2}, {3, 4, 1}, {5, 7, 1}, {1, 1, 1}});
  this->full(M, 1, 0);
  EXPECT_EQ(this->stages.MN, 2);
  expectProduct(this->L, this->Q, M);
}

TYPED_TEST(GsoTest, FullResumesFromEveryRow) {
  const Matrix<TypeParam> M = matrixOf<TypeParam>({{1, 2, 2}, {3, 4, 1}, {5, 7, 1}, {1, 1, 1}});
  this->full(M, 1, 0);
  const Matrix<dbl_t> L = this->L;
  for (long kk = 1; kk <= 4; ++kk) {
    this->full(M, kk, 0);
    EXPECT_TRUE(this->L == L) << kk;
  }
}

TYPED_TEST(GsoTest, FullReflectsAwayFromTheSignOfTheEntry) {
  this->full(matrixOf<TypeParam>({{4, 3}}), 1, 0);
  EXPECT_NEAR(static_cast<double>(this->L[1][1]), -5, 1e-15);
  this->full(matrixOf<TypeParam>({{-4, 3}}), 1, 0);
  EXPECT_NEAR(static_cast<double>(this->L[1][1]), 5, 1e-15);
  this->full(matrixOf<TypeParam>({{0, 3}}), 1, 0);  // zero counts as positive
  EXPECT_NEAR(static_cast<double>(this->L[1][1]), -3, 1e-15);
}

// A rule of this design: the root is taken in double, and the diagonal keeps no more digits than that.
TYPED_TEST(GsoTest, FullTakesTheLengthAtDoubleWidth) {
  this->full(matrixOf<TypeParam>({{1, 1}}), 1, 0);
  const dbl_t narrow = static_cast<dbl_t>(std::sqrt(2.0));
  EXPECT_LT(std::fabs(this->L[1][1] + 2 / narrow), 1e-18L);
  EXPECT_GT(std::fabs(this->L[1][1] + std::sqrt(dbl_t(2))), 5e-17L);
}

TYPED_TEST(GsoTest, FullTakesAZeroRowForTheIdentity) {
  const Matrix<TypeParam> M = matrixOf<TypeParam>({{0, 0, 0}, {1, 2, 2}});
  this->full(M, 1, 0);
  EXPECT_EQ(this->L[1][1], 0);
  expectProduct(this->L, this->Q, M);
}

TYPED_TEST(GsoTest, OneColumnNeedsNoReflection) {
  this->full(matrixOf<TypeParam>({{4}, {2}}), 1, 0);
  EXPECT_EQ(this->stages.MN, 0);
  EXPECT_EQ(this->L[1][1], 4);
  EXPECT_EQ(this->Q[1][1], 1);
}

TYPED_TEST(GsoTest, RefreshComputesEverythingAnew) {
  setBasis(this->lattice, matrixOf<TypeParam>(mixedRows()));
  this->lattice.updateGso(1, 0);
  this->lattice.mu[2][1] = 77;
  this->lattice.orthogonalisationRefresh();
  expectExactGso(this->lattice);
}

}  // namespace latbox::testing
