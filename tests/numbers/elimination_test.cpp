#include "numbers/elimination.h"

#include <gtest/gtest.h>

#include <random>
#include <string>

#include "lib/exceptions.h"
#include "numbers/integer_elimination.h"
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

// What throws decides for the exact type: the rank alone must not hide it.
TEST(Elimination, RanksThrowAsTheBackwardPassDoes) {
  EXPECT_THROW(rankOf(Matrix<dbl_t>("[[1 1e6][0 1e-6]]")), PrecisionException);
  EXPECT_EQ(rankOf(Matrix<QQ>("[[1 1000000][0 1/1000000]]")), 2);
}

long rankByFractions(const Matrix<QQ>& M) {
  Matrix<QQ> work(M), companion(M.M, 0);
  return std::abs(signedRank(work, companion));
}

TEST(WholeRank, AgreesWithEliminationByFractions) {
  std::mt19937 random(11);
  std::uniform_int_distribution<long> entry(-4, 4);
  for (int round = 0; round < 500; ++round) {
    Matrix<QQ> M(1 + round % 7, 1 + round % 5);
    for (long i = 1; i <= M.M; ++i)
      for (long j = 1; j <= M.N; ++j)
        M[i][j] = round % 3 == 0 ? QQ(entry(random) / 3) : QQ(entry(random)) * QQ(1000 + round);
    if (round % 4 == 0 && M.M > 2) M[M.M] = M[1] + M[2];
    long rank = -1;
    ASSERT_TRUE(wholeRank(M, rank)) << M;
    EXPECT_EQ(rank, rankByFractions(M)) << M;
  }
}

TEST(WholeRank, FractionsAndInfinitiesAreLeftToTheOther) {
  long rank = 7;
  EXPECT_FALSE(wholeRank(Matrix<QQ>("[[1 2][3 1/2]]"), rank));
  EXPECT_FALSE(wholeRank(Matrix<QQ>("[[1 2][3 inf]]"), rank));
  EXPECT_EQ(rank, 7);
  EXPECT_EQ(rankOf(Matrix<QQ>("[[1 2][3 1/2]]")), 2);
}

// The second pivot would be 1/3000000000, which the tolerance takes for zero; 1/1000000000 is still zero, and
// 1/999999999 is not.
TEST(WholeRank, TheToleranceIsThatOfTheElimination) {
  const struct {
    const char* text;
    long rank;
  } cases[] = {{"[[3000000000 1][3000000000 2]]", 2},
               {"[[3000000000 2999999999][2999999999 2999999998]]", 1},
               {"[[1000000000 999999999][999999999 999999998]]", 1},
               {"[[999999999 999999998][999999998 999999997]]", 2},
               {"[[3000000000 2999999999 0][2999999999 2999999998 5]]", 2}};
  for (const auto& c : cases) {
    const Matrix<QQ> M(c.text);
    long rank = -1;
    EXPECT_TRUE(wholeRank(M, rank)) << c.text;
    EXPECT_EQ(rank, c.rank) << c.text;
    EXPECT_EQ(rankByFractions(M), c.rank) << c.text;
  }
}

// Below the first pivot row 2 keeps 1/3000000000 in column 2, and in row 3 stands the second pivot.
TEST(WholeRank, AnEntryThatTheToleranceLeavesStandingIsLeftToTheOther) {
  const Matrix<QQ> M("[[3000000000 2999999999 0][2999999999 2999999998 1][0 5 1]]");
  long rank = 7;
  EXPECT_FALSE(wholeRank(M, rank));
  EXPECT_EQ(rank, 7);
  EXPECT_EQ(rankOf(M), rankByFractions(M));
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
