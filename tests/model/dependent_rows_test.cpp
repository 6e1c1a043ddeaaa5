#include "model/dependent_rows.h"
#include "lib/exceptions.h"

#include <gtest/gtest.h>

#include <random>
#include <vector>

#include "numbers/elimination.h"
#include "support/failure.h"
#include "support/program.h"

namespace latbox {
namespace {

using testing::shown;

template <class T>
class DependentRows : public ::testing::Test {};
using Numbers = ::testing::Types<dbl_t, QQ>;
TYPED_TEST_SUITE(DependentRows, Numbers);

template <class T>
std::string reduced(const std::string& text) {
  Matrix<T> M(text);
  eliminateDependentRows(M);
  return shown(M);
}

TYPED_TEST(DependentRows, IndependentRowsStayAsTheyAre) {
  EXPECT_EQ(reduced<TypeParam>("[[2 0 1][0 3 1]]"), "[ 2 0 1 ][ 0 3 1 ]");
  EXPECT_EQ(reduced<TypeParam>("[]"), "");
}

TYPED_TEST(DependentRows, OfTwoEqualRowsTheSecondGoes) {
  EXPECT_EQ(reduced<TypeParam>("[[1 2][1 2]]"), "[ 1 2 ]");
}

TYPED_TEST(DependentRows, ASumGoesAndTheLastRowTakesItsPlace) {
  EXPECT_EQ(reduced<TypeParam>("[[1 2 0 0][0 1 1 0][1 3 1 0][0 0 0 5]]"),
            "[ 1 2 0 0 ][ 0 1 1 0 ][ 0 0 0 5 ]");
}

TYPED_TEST(DependentRows, NegativeAndLargeIntegerCombinationsGo) {
  EXPECT_EQ(reduced<TypeParam>("[[1 0][0 1][-123456 99999]]"), "[ 1 0 ][ 0 1 ]");
}

TYPED_TEST(DependentRows, ARationalDependencyKeepsTheSpan) {
  EXPECT_EQ(reduced<TypeParam>("[[2 0][3 0]]"), "[ 1 0 ]");
  EXPECT_EQ(reduced<TypeParam>("[[0 4][0 6]]"), "[ 0 2 ]");
}

// Of equally small entries the one furthest down is the pivot, so that the rows that stay are told.
TYPED_TEST(DependentRows, OfEqualPivotsTheLastOneLeads) {
  EXPECT_EQ(reduced<TypeParam>("[[2 0 2][0 2 2][1 1 2]]"), "[ 1 1 2 ][ -1 1 0 ]");
  EXPECT_EQ(reduced<TypeParam>("[[-1 -2][-2 0][0 2]]"), "[ 0 2 ][ -1 0 ]");
}

// What is left in the columns to come is not reduced any further.
TYPED_TEST(DependentRows, TheReductionEndsWithTheFirstZeroRow) {
  EXPECT_EQ(reduced<TypeParam>("[[-2 3][0 5][-1 4]]"), "[ -5 0 ][ 1 1 ]");
}

// The last row has gone to a place that had been passed already; the rewritten one is another row.
TYPED_TEST(DependentRows, RewrittenRowsAreLookedAtAgain) {
  EXPECT_EQ(reduced<TypeParam>("[[-2][1][-1]]"), "[ -1 ]");
  EXPECT_EQ(reduced<TypeParam>("[[2][-1][1]]"), "[ 1 ]");
}

TYPED_TEST(DependentRows, TheOrderOfTheOthersIsNotKept) {
  EXPECT_EQ(reduced<TypeParam>("[[0][1][-1]]"), "[ -1 ]");
  EXPECT_EQ(reduced<TypeParam>("[[0 0 0][1 0 0][0 1 0][0 0 1]]"), "[ 0 0 1 ][ 1 0 0 ][ 0 1 0 ]");
}

TYPED_TEST(DependentRows, ZeroRowsGoWhereverTheyStand) {
  EXPECT_EQ(reduced<TypeParam>("[[0 0][1 2]]"), "[ 1 2 ]");
  EXPECT_EQ(reduced<TypeParam>("[[1 2][0 0][0 1]]"), "[ 1 2 ][ 0 1 ]");
  EXPECT_EQ(reduced<TypeParam>("[[0 0][0 0]]"), "");
}

TYPED_TEST(DependentRows, MoreRowsThanColumnsAlwaysLoseSome) {
  EXPECT_EQ(reduced<TypeParam>("[[2][3]]"), "[ 1 ]");
  Matrix<TypeParam> M("[[4 1][1 5][7 3][2 2][6 6]]");
  eliminateDependentRows(M);
  EXPECT_EQ(M.M, 2);
}

// Coefficients dependent, right-hand sides (column 1) not: a contradiction that must stay.
TYPED_TEST(DependentRows, AContradictionIsNoDependency) {
  EXPECT_EQ(reduced<TypeParam>("[[1 1 1][3 2 2]]"), "[ 1 1 1 ][ 3 2 2 ]");
}

// A number that vanishes modulo the first prime in use is not zero.
TEST(DependentRowsExact, TheModulusItselfIsNotZero) {
  EXPECT_EQ(reduced<QQ>("[[2305843009213693951 0][0 1]]"), "[ 2305843009213693951 0 ][ 0 1 ]");
  EXPECT_EQ(reduced<QQ>("[[1 2305843009213693951][1 0]]"), "[ 1 2305843009213693951 ][ 1 0 ]");
}

TEST(DependentRowsExact, CombinationsBeyondAllMachineWordsAreFound) {
  EXPECT_EQ(reduced<QQ>("[[1 0][100000000000000000000000000000 0]]"), "[ 1 0 ]");
  EXPECT_EQ(reduced<QQ>("[[1/3 0][1/2 0]]"), "[ 1/6 0 ]");
}

// Nearly dependent by any floating measure, and independent.
TEST(DependentRowsExact, NearlyDependentIsIndependent) {
  EXPECT_EQ(reduced<QQ>("[[100000000000000000000 1][100000000000000000001 1]]"),
            "[ 100000000000000000000 1 ][ 100000000000000000001 1 ]");
  EXPECT_EQ(reduced<dbl_t>("[[999999999 1000000000][999999998 999999999]]"),
            "[ 999999999 1000000000 ][ 999999998 999999999 ]");
}

// No prime has a residue for it.
TYPED_TEST(DependentRows, AnInfiniteEntryHasNoCoordinates) {
  Matrix<TypeParam> M("[[1 2][1 inf]]");
  EXPECT_FAILURE(eliminateDependentRows(M), "Coordinates of dependent row could not be computed!");
}

TEST(DependentRowsPrecision, OverflowAsksForExactNumbers) {
  // The Euclidean step on column 2 needs a factor of 10^10.
  testing::expectPrecisionException(
      [] {
        Matrix<dbl_t> M("[[3 1][5 10000000000][2 7]]");
        eliminateDependentRows(M);
      },
      "factor overflow");
  testing::expectPrecisionException(
      [] {
        Matrix<dbl_t> M("[[900000000 2][700000000 3001][5 0]]");
        eliminateDependentRows(M);
      },
      "row overflow");
}

// The Hermite normal form of integer rows without its zero rows: two sets of rows span the same integers
// exactly when it is the same. A reference of its own, on machine integers.
__extension__ using Wide = __int128;
using Rows = std::vector<std::vector<Wide>>;

void clearBelow(Rows& rows, std::size_t top, std::size_t column) {
  for (;;) {
    std::size_t least = rows.size();
    for (std::size_t i = top; i < rows.size(); ++i) {
      const Wide x = rows[i][column];
      if (x == 0) continue;
      if (least == rows.size() ||
          (x < 0 ? -x : x) < (rows[least][column] < 0 ? -rows[least][column] : rows[least][column]))
        least = i;
    }
    if (least == rows.size()) return;
    std::swap(rows[top], rows[least]);
    bool more = false;
    for (std::size_t i = top + 1; i < rows.size(); ++i) {
      const Wide q = rows[i][column] / rows[top][column];
      for (std::size_t j = 0; j < rows[i].size(); ++j) rows[i][j] -= q * rows[top][j];
      more = more || rows[i][column] != 0;
    }
    if (!more) return;
  }
}

Rows hermite(Rows rows) {
  std::size_t top = 0;
  const std::size_t columns = rows.empty() ? 0 : rows[0].size();
  for (std::size_t column = 0; column < columns && top < rows.size(); ++column) {
    clearBelow(rows, top, column);
    if (rows[top][column] == 0) continue;
    if (rows[top][column] < 0)
      for (Wide& x : rows[top]) x = -x;
    for (std::size_t i = 0; i < top; ++i) {
      Wide q = rows[i][column] / rows[top][column];
      if (rows[i][column] - q * rows[top][column] < 0) --q;
      for (std::size_t j = 0; j < columns; ++j) rows[i][j] -= q * rows[top][j];
    }
    ++top;
  }
  rows.resize(top);
  return rows;
}

template <class T>
Rows integers(const Matrix<T>& M) {
  Rows rows;
  for (long i = 1; i <= M.M; ++i) {
    rows.emplace_back();
    for (long j = 1; j <= M.N; ++j)
      rows.back().push_back(static_cast<Wide>(static_cast<long long>(toDouble(M[i][j]))));
  }
  return rows;
}

// Rows of random rank: products of two random factors, so that integer and rational dependencies both occur.
template <class T>
Matrix<T> randomRows(std::mt19937& random) {
  const long rows = 1 + static_cast<long>(random() % 7);
  const long columns = 1 + static_cast<long>(random() % 6);
  const long rank = static_cast<long>(random() % 5);
  Matrix<T> left(rows, rank), right(rank, columns);
  for (Matrix<T>* factor : {&left, &right})
    for (long i = 1; i <= factor->M; ++i)
      for (long j = 1; j <= factor->N; ++j) (*factor)[i][j] = T(static_cast<long>(random() % 9) - 4);
  Matrix<T> product(rows, columns);
  for (long i = 1; i <= rows; ++i)
    for (long j = 1; j <= columns; ++j)
      for (long k = 1; k <= rank; ++k) product[i][j] += left[i][k] * right[k][j];
  return product;
}

TYPED_TEST(DependentRows, TheIntegerSpanOfRandomRowsStays) {
  std::mt19937 random(1);
  long removed = 0;
  long overflows = 0;
  for (int round = 0; round < 3000; ++round) {
    Matrix<TypeParam> M = randomRows<TypeParam>(random);
    const Rows before = hermite(integers(M));
    const long rows = M.M;
    try {
      eliminateDependentRows(M);
    } catch (const PrecisionException&) {
      ++overflows;
      continue;
    }
    removed += rows - M.M;
    ASSERT_EQ(static_cast<std::size_t>(M.M), before.size()) << "round " << round;
    ASSERT_TRUE(hermite(integers(M)) == before) << "round " << round;
  }
  EXPECT_GT(removed, 3000);
  // Entries grow on the way; only the exact type has no bound on them.
  const bool exact = std::is_same_v<TypeParam, QQ>;
  EXPECT_LE(overflows, exact ? 0 : 30);
}

}  // namespace
}  // namespace latbox
