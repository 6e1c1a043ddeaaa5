#include "numbers/elimination.h"

#include <gtest/gtest.h>

#include <random>
#include <string>

#include "lib/exceptions.h"
#include "numbers/number.h"
#include "support/failure.h"

namespace latbox {
namespace {

template <class T>
class EliminationOf : public ::testing::Test {};
using NumberTypes = ::testing::Types<dbl_t, QQ>;
TYPED_TEST_SUITE(EliminationOf, NumberTypes);

TYPED_TEST(EliminationOf, Ranks) {
  const struct {
    const char* text;
    long rank;
  } cases[] = {
      {"[]", 0},           {"[[0 0][0 0]]", 0},      {"[[1 2][2 4]]", 1},
      {"[[1 2][3 4]]", 2}, {"[[0 1][0 2][1 0]]", 2}, {"[[1 2 3]]", 1},
      {"[[1][2][3]]", 1},  {"[[0 0 1][0 0 2]]", 1},  {"[[1 1 0][0 1 1][1 2 1]]", 2},
  };
  for (const auto& c : cases) EXPECT_EQ(rankOf(Matrix<TypeParam>(c.text)), c.rank) << c.text;
}

TYPED_TEST(EliminationOf, TheSignIsThatOfTheExchanges) {
  Matrix<TypeParam> work("[[0 1][1 0]]"), companion = Matrix<TypeParam>::unit(2);
  EXPECT_EQ(signedRank(work, companion), -2);
  work = Matrix<TypeParam>("[[0 0 1][1 0 0][0 1 0]]");
  companion = Matrix<TypeParam>::unit(3);
  EXPECT_EQ(signedRank(work, companion), 3);
}

TYPED_TEST(EliminationOf, OfEqualPivotsTheFirstStays) {
  Matrix<TypeParam> work("[[1 2][-1 3]]"), companion = Matrix<TypeParam>::unit(2);
  EXPECT_EQ(signedRank(work, companion), 2);
}

TYPED_TEST(EliminationOf, TheCompanionReceivesTheSameOperations) {
  const Matrix<TypeParam> A("[[2 1 1][4 3 3][8 7 9]]");
  Matrix<TypeParam> work(A), companion = Matrix<TypeParam>::unit(3);
  EXPECT_EQ(std::abs(signedRank(work, companion)), 3);
  EXPECT_TRUE(companion * A == work);
  for (long i = 1; i <= 3; ++i)
    for (long j = 1; j <= 3; ++j) EXPECT_TRUE(i == j || isZero(work[i][j])) << i << ' ' << j;
}

TYPED_TEST(EliminationOf, ForwardAloneKeepsWhatStandsAboveThePivots) {
  Matrix<TypeParam> work("[[4 2][1 1]]"), companion(2, 0);
  EXPECT_EQ(forwardEliminate(work, companion, false), 2);
  EXPECT_TRUE(work[1][2] == TypeParam(2));
  EXPECT_TRUE(isZero(work[2][1]));
}

TEST(Elimination, OverflowOfTheBackwardQuotient) {
  Matrix<dbl_t> work("[[1 1e6][0 1e-6]]"), companion(2, 0);
  try {
    signedRank(work, companion);
    FAIL();
  } catch (const PrecisionException& caught) {
    EXPECT_STREQ(caught.what(), "q2 overflow");
  }
  Matrix<QQ> exact(2, 2), none(2, 0);
  exact[1][1] = QQ(1);
  exact[1][2] = QQ(1'000'000);
  exact[2][2] = QQ("1/1000000");
  EXPECT_EQ(signedRank(exact, none), 2);
}

// The pivot is the largest of its column, so only an infinity can push a forward quotient over the edge; the
// gate lets that pass as it does everywhere.
TEST(Elimination, ForwardQuotientsAreAtMostOne) {
  Matrix<dbl_t> work("[[1e-6 1][1e6 1]]"), companion(2, 0);
  EXPECT_EQ(forwardEliminate(work, companion, false), -2);
}

TYPED_TEST(EliminationOf, SolvesSquareSystems) {
  Vector<TypeParam> x;
  EXPECT_TRUE(gauss(Matrix<TypeParam>("[[2 1][1 3]]"), Vector<TypeParam>("[3 5]"), x));
  EXPECT_TRUE(x == Vector<TypeParam>("[4/5 7/5]"));
}

TYPED_TEST(EliminationOf, IntegralAsksForWholeUnknowns) {
  Vector<TypeParam> x;
  const Matrix<TypeParam> A("[[2 1][1 3]]");
  EXPECT_FALSE(gauss(A, Vector<TypeParam>("[3 5]"), x, true));
  EXPECT_TRUE(gauss(A, Vector<TypeParam>("[4 7]"), x, true));
  EXPECT_TRUE(x == Vector<TypeParam>("[1 2]"));
}

TYPED_TEST(EliminationOf, SkippedUnknownsAreZero) {
  Vector<TypeParam> x("[9 9 9 9 9]");
  EXPECT_TRUE(gauss(Matrix<TypeParam>("[[0 2 4][0 1 5]]"), Vector<TypeParam>("[2 4]"), x));
  EXPECT_TRUE(x == Vector<TypeParam>("[0 -1 1]"));
  EXPECT_TRUE(gauss(Matrix<TypeParam>("[[1 1 1]]"), Vector<TypeParam>("[5]"), x));
  EXPECT_TRUE(x == Vector<TypeParam>("[5 0 0]"));
}

TYPED_TEST(EliminationOf, MoreRowsThanColumns) {
  Vector<TypeParam> x;
  const Matrix<TypeParam> A("[[1 0][0 1][1 1]]");
  EXPECT_TRUE(gauss(A, Vector<TypeParam>("[2 3 5]"), x));
  EXPECT_TRUE(x == Vector<TypeParam>("[2 3]"));
  EXPECT_FALSE(gauss(A, Vector<TypeParam>("[2 3 6]"), x));
}

TYPED_TEST(EliminationOf, DependentRows) {
  Vector<TypeParam> x;
  const Matrix<TypeParam> A("[[1 2][2 4]]");
  EXPECT_TRUE(gauss(A, Vector<TypeParam>("[1 2]"), x));
  EXPECT_TRUE(A * x == Vector<TypeParam>("[1 2]"));
  EXPECT_FALSE(gauss(A, Vector<TypeParam>("[1 3]"), x));
}

TYPED_TEST(EliminationOf, ZeroCoefficients) {
  Vector<TypeParam> x;
  EXPECT_TRUE(gauss(Matrix<TypeParam>("[[0 0]]"), Vector<TypeParam>("[0]"), x));
  EXPECT_TRUE(x == Vector<TypeParam>("[0 0]"));
  EXPECT_FALSE(gauss(Matrix<TypeParam>("[[0 0]]"), Vector<TypeParam>("[1]"), x));
}

TYPED_TEST(EliminationOf, ANarrowMatrixWithDependentColumns) {
  Vector<TypeParam> x;
  const Matrix<TypeParam> A("[[1 2 1][2 4 3][3 6 4]]");
  EXPECT_TRUE(gauss(A, Vector<TypeParam>("[1 3 4]"), x));
  EXPECT_TRUE(x == Vector<TypeParam>("[0 0 1]"));
}

TYPED_TEST(EliminationOf, SolvesRandomIntegerSystems) {
  std::mt19937 random(7);
  std::uniform_int_distribution<long> entry(-9, 9);
  for (int round = 0; round < 200; ++round) {
    const long n = 1 + round % 7;
    const long m = 1 + round % 5;
    Matrix<TypeParam> A(m, n);
    Vector<TypeParam> planted(n);
    for (long i = 1; i <= m; ++i)
      for (long j = 1; j <= n; ++j) A[i][j] = TypeParam(entry(random));
    for (long j = 1; j <= n; ++j) planted[j] = TypeParam(entry(random));
    const Vector<TypeParam> b = A * planted;
    Vector<TypeParam> x;
    ASSERT_TRUE(gauss(A, b, x));
    EXPECT_TRUE(A * x == b);
  }
}

// An entry below the tolerance is no pivot in floating point; an exact number knows better.
TEST(Elimination, SolvingIsExactForExactNumbers) {
  const Matrix<QQ> A("[[1/100000000000]]");
  Vector<QQ> x;
  EXPECT_TRUE(gauss(A, Vector<QQ>("[1]"), x));
  EXPECT_TRUE(x[1] == QQ(100'000'000'000L));
  Matrix<dbl_t> B(1, 1);
  B[1][1] = 1e-11L;
  Vector<dbl_t> y;
  EXPECT_FALSE(gauss(B, Vector<dbl_t>("[1]"), y));
}

}  // namespace
}  // namespace latbox
