// Sweep, size reduction, blending and deep insertion.
#include "lattice/support.h"

#include "lattice/row_operation.h"
#include "lib/exceptions.h"
#include "lib/os/clock.h"
#include "params/statistics.h"
#include "support/failure.h"
#include "support/lattice.h"

namespace latbox::testing {

template <class T>
class LllTest : public ::testing::Test {
 public:
  Lattice<T, dbl_t> lattice;
};
TYPED_TEST_SUITE(LllTest, NumberTypes);

TYPED_TEST(LllTest, OracleSaysNoOnTheRawBasisAndYesOnTheReducedOne) {
  const Matrix<TypeParam> raw = matrixOf<TypeParam>(knapsackRows(10, 1000000, 7));
  setBasis(this->lattice, raw);
  EXPECT_FALSE(isReduced(exact(raw)));
  reduceFully(this->lattice);
  EXPECT_TRUE(isReduced(exact(this->lattice.B)));
  EXPECT_EQ(gramDeterminant(exact(raw)), gramDeterminant(exact(this->lattice.B)));
}

TYPED_TEST(LllTest, TransformationIsKeptInStepWithConsistency) {
  const Matrix<TypeParam> raw = matrixOf<TypeParam>(knapsackRows(12, 100000, 3));
  setBasis(this->lattice, raw);
  this->lattice.params.consistency.set(true);
  this->lattice.setScale(2, TypeParam(3));
  this->lattice.setTranslation(1, TypeParam(5));
  for (int sweep = 0; sweep < 5; ++sweep) {
    this->lattice.lll(1, 0, 0);
    ASSERT_TRUE(this->lattice.TT[1] * this->lattice.B_save == this->lattice.unscaled(this->lattice.B));
  }
  EXPECT_TRUE(this->lattice.B_save == raw);
}

TEST(LllBothTypes, SameReducedBasisOnIntegers) {
  for (const long n : {4, 9, 16}) {
    Lattice<dbl_t, dbl_t> fast;
    Lattice<QQ, dbl_t> slow;
    setBasis(fast, matrixOf<dbl_t>(knapsackRows(n, 3000000, static_cast<std::uint64_t>(n))));
    setBasis(slow, matrixOf<QQ>(knapsackRows(n, 3000000, static_cast<std::uint64_t>(n))));
    for (int sweep = 0; sweep < 4; ++sweep) {
      EXPECT_EQ(fast.lll(1, 0, 0), slow.lll(1, 0, 0));
      ASSERT_TRUE(exact(fast.B) == slow.B) << n << " at sweep " << sweep;
      ASSERT_EQ(fast.interval_tt, slow.interval_tt);
    }
  }
}

TYPED_TEST(LllTest, RankZeroReturnsAtOnce) {
  this->lattice.resizeLattice(0, 0);
  EXPECT_EQ(this->lattice.lll(1, 0, 0), 1);
  EXPECT_EQ(this->lattice.status.MN, 0);
}

TYPED_TEST(LllTest, EmptyRangeReturnsKAndLowersTheBudget) {
  setBasis(this->lattice, matrixOf<TypeParam>({{1, 0, 0}, {0, 1, 0}, {0, 0, 1}}));
  EXPECT_EQ(this->lattice.lll(3, 2, 0), 3);
  EXPECT_EQ(this->lattice.interval_tt, 99);
  EXPECT_EQ(this->lattice.status[3], 0);
}

TYPED_TEST(LllTest, SweepWithoutSkipsLowersTheBudgetByOne) {
  setBasis(this->lattice, matrixOf<TypeParam>({{1, 0, 0}, {0, 1, 0}, {0, 0, 1}}));
  EXPECT_EQ(this->lattice.lll(1, 0, 0), 1);
  EXPECT_EQ(this->lattice.interval_tt, 99);
}

// Orthogonal rows need one step each; the rest of the range is skipped.
template <class T>
long intervalAfter(long budget, long rows) {
  Lattice<T, dbl_t> lattice;
  Rows unit(static_cast<std::size_t>(rows), std::vector<long>(static_cast<std::size_t>(rows), 0));
  for (std::size_t i = 0; i < unit.size(); ++i) unit[i][i] = 1;
  setBasis(lattice, matrixOf<T>(unit));
  lattice.interval_tt = budget;
  lattice.lll(1, 0, 0);
  return lattice.interval_tt;
}

TYPED_TEST(LllTest, BudgetDoublesWhenMoreThanATenthWasSkipped) {
  EXPECT_EQ(intervalAfter<TypeParam>(100, 111), 200);
  EXPECT_EQ(intervalAfter<TypeParam>(100, 110), 100);
  EXPECT_EQ(intervalAfter<TypeParam>(100, 101), 100);
  EXPECT_EQ(intervalAfter<TypeParam>(100, 100), 99);
  // Integer division: nine steps allow no skip.
  EXPECT_EQ(intervalAfter<TypeParam>(9, 10), 18);
}

TYPED_TEST(LllTest, BudgetCountsAsOneAtLeast) {
  EXPECT_EQ(intervalAfter<TypeParam>(0, 1), -1);
  EXPECT_EQ(intervalAfter<TypeParam>(0, 3), 2);
  EXPECT_EQ(intervalAfter<TypeParam>(-7, 3), 2);
}

TYPED_TEST(LllTest, SkippedPositionsAreSizeReducedAndNotTested) {
  setBasis(this->lattice, matrixOf<TypeParam>({{10, 0, 0}, {7, 1, 0}, {23, 0, 5}}));
  this->lattice.interval_tt = 1;
  EXPECT_EQ(this->lattice.lll(1, 0, 0), 1);
  // Row 2 would have been exchanged with row 1; row 3 loses twice row 1, and no multiple of row 2 after that.
  EXPECT_EQ(this->lattice.B[1][1], TypeParam(10));
  EXPECT_EQ(this->lattice.B[2][1], TypeParam(-3));
  EXPECT_EQ(this->lattice.status[2] & STATUS_SWEPT, 0);
  EXPECT_NE(this->lattice.status[2] & STATUS_REDUCED, 0);
  EXPECT_NE(this->lattice.status[1] & STATUS_SWEPT, 0);
}

TYPED_TEST(LllTest, ReturnsTheSmallestPositionVisited) {
  setBasis(this->lattice, matrixOf<TypeParam>({{9, 0, 0, 0}, {0, 8, 0, 0}, {0, 0, 7, 0}, {0, 0, 0, 1}}));
  EXPECT_EQ(this->lattice.lll(4, 0, 0), 1);
  EXPECT_EQ(this->lattice.B[1][4], TypeParam(1));
  setBasis(this->lattice, matrixOf<TypeParam>({{1, 0, 0, 0}, {0, 2, 0, 0}, {0, 0, 3, 0}, {0, 0, 0, 4}}));
  EXPECT_EQ(this->lattice.lll(3, 0, 0), 3);
}

TYPED_TEST(LllTest, SweptPositionsAreLeftAlone) {
  setBasis(this->lattice, matrixOf<TypeParam>({{1, 0}, {0, 1}}));
  this->lattice.lll(1, 0, 0);
  rows(this->lattice).B[2][1] = TypeParam(5);
  this->lattice.lll(1, 0, 0);
  EXPECT_EQ(this->lattice.B[2][1], TypeParam(5));
}

TYPED_TEST(LllTest, SizeBoundIsStrict) {
  setBasis(this->lattice, matrixOf<TypeParam>({{2, 0}, {1, 9}}));
  bool guarded = false;
  EXPECT_FALSE(this->lattice.sizeReduce(2, guarded));
  EXPECT_EQ(this->lattice.B[2][1], TypeParam(1));
  EXPECT_NE(this->lattice.status[2] & STATUS_REDUCED, 0);
}

TYPED_TEST(LllTest, SizeReductionRoundsHalfAwayFromZero) {
  setBasis(this->lattice, matrixOf<TypeParam>({{2, 0}, {3, 9}}));
  bool guarded = false;
  EXPECT_TRUE(this->lattice.sizeReduce(2, guarded));
  EXPECT_EQ(this->lattice.B[2][1], TypeParam(-1));
  // Whatever was known of the row is gone but that it is reduced; mu is kept in value.
  EXPECT_EQ(this->lattice.status[2], STATUS_REDUCED);
  EXPECT_EQ(this->lattice.mu[2][1], -0.5L);
  EXPECT_FALSE(this->lattice.sizeReduce(2, guarded));
  // 2.5 lies as near to 2, which is even.
  setBasis(this->lattice, matrixOf<TypeParam>({{2, 0}, {5, 9}}));
  EXPECT_TRUE(this->lattice.sizeReduce(2, guarded));
  EXPECT_EQ(this->lattice.B[2][1], TypeParam(-1));
  setBasis(this->lattice, matrixOf<TypeParam>({{2, 0}, {-5, 9}}));
  EXPECT_TRUE(this->lattice.sizeReduce(2, guarded));
  EXPECT_EQ(this->lattice.B[2][1], TypeParam(1));
}

TYPED_TEST(LllTest, ReducedRowIsLeftAlone) {
  setBasis(this->lattice, matrixOf<TypeParam>({{2, 0}, {7, 9}}));
  setWord(this->lattice, 2, STATUS_REDUCED);
  bool guarded = false;
  EXPECT_FALSE(this->lattice.sizeReduce(2, guarded));
  EXPECT_EQ(this->lattice.B[2][1], TypeParam(7));
  EXPECT_EQ(this->lattice.status[2], STATUS_REDUCED);
}

// mu of the later steps follows each step, so that one downward pass is enough.
TYPED_TEST(LllTest, OneDownwardPassReducesAgainstAllPredecessors) {
  setBasis(this->lattice, matrixOf<TypeParam>({{10, 0, 0}, {4, 10, 0}, {3, 27, 1}, {0, 0, 0}}));
  bool guarded = false;
  this->lattice.updateGso(1, 2);
  EXPECT_TRUE(this->lattice.sizeReduce(3, guarded));
  // Three times row 2 come off, and only then is it seen that row 1 must come on once.
  EXPECT_TRUE(this->lattice.B[3] == vectorOf<TypeParam>({1, -3, 1}));
  EXPECT_NEAR(static_cast<double>(this->lattice.mu[3][1]), 0.1, 1e-15);
  EXPECT_NEAR(static_cast<double>(this->lattice.mu[3][2]), -0.3, 1e-15);
}

TYPED_TEST(LllTest, SizeReductionDropsTheCachedFactorisation) {
  auto& l = this->lattice;
  setBasis(l, matrixOf<TypeParam>({{2, 0}, {7, 9}}));
  Vector<TypeParam> x;
  ASSERT_TRUE(l.coordinates(vectorOf<TypeParam>({7, 9}), x, false));
  bool guarded = false;
  ASSERT_TRUE(l.sizeReduce(2, guarded));
  ASSERT_TRUE(l.coordinates(l.B[2], x, false));
  EXPECT_TRUE(x == vectorOf<TypeParam>({0, 1}));
}

TYPED_TEST(LllTest, GuardKeepsTheLargestEntryFromGrowing) {
  // Reduction by (3,0,9) takes (2,5,2) to (-1,5,-7): shorter nowhere, larger in the sup-norm.
  setBasis(this->lattice, matrixOf<TypeParam>({{3, 0, 9}, {10, 8, 5}}));
  const Matrix<TypeParam> before = this->lattice.B;
  bool guarded = true;
  this->lattice.updateGso(1, 2);
  ASSERT_GT(this->lattice.mu[2][1], 0.5L);
  this->lattice.sizeReduce(2, guarded);
  EXPECT_EQ(this->lattice.B[2][3], TypeParam(-4));  // the sup-norm falls from 10 to 8: done
  setBasis(this->lattice, matrixOf<TypeParam>({{4, 0, 9}, {0, 3, 6}}));
  this->lattice.sizeReduce(2, guarded);
  EXPECT_EQ(this->lattice.B[2][3], TypeParam(-3));  // from 6 to 4: done
  setBasis(this->lattice, matrixOf<TypeParam>({{9, 4, 0}, {6, 0, 3}}));
  rows(this->lattice).B[1][2] = TypeParam(7);
  rows(this->lattice).B[2][1] = TypeParam(6);
  rows(this->lattice).B[2][2] = TypeParam(3);
  this->lattice.sizeReduce(2, guarded);
  EXPECT_EQ(this->lattice.B[2][1], TypeParam(-3));  // from 6 to 4
}

TYPED_TEST(LllTest, GuardSkipsAStepThatWouldGrow) {
  setBasis(this->lattice, matrixOf<TypeParam>({{4, 4, 9}, {3, -3, 6}}));
  bool guarded = false;
  this->lattice.updateGso(1, 2);
  const dbl_t coefficient = this->lattice.mu[2][1];
  ASSERT_LT(coefficient, 0.5L);  // nothing to do at all
  setBasis(this->lattice, matrixOf<TypeParam>({{4, 6, 9}, {-2, 6, 6}}));
  guarded = true;
  this->lattice.updateGso(1, 2);
  ASSERT_GT(this->lattice.mu[2][1], 0.5L);
  this->lattice.sizeReduce(2, guarded);  // (-6, 0, -3): sup-norm 6 is not greater than 6, so it is done
  EXPECT_EQ(this->lattice.B[2][1], TypeParam(-6));
  setBasis(this->lattice, matrixOf<TypeParam>({{5, 6, 9}, {-2, 6, 6}}));
  guarded = true;
  this->lattice.sizeReduce(2, guarded);  // (-7, 0, -3): greater than 6, so it is not
  EXPECT_EQ(this->lattice.B[2][1], TypeParam(-2));
  setBasis(this->lattice, matrixOf<TypeParam>({{5, 6, 9}, {-2, 6, 6}}));
  guarded = false;
  this->lattice.sizeReduce(2, guarded);
  EXPECT_EQ(this->lattice.B[2][1], TypeParam(-7));
}

TYPED_TEST(LllTest, ZeroRowMovesToTheTopOfTheRange) {
  setBasis(this->lattice, matrixOf<TypeParam>({{1, 0, 0, 0}, {0, 0, 0, 0}, {0, 0, 3, 0}, {0, 0, 0, 5}}));
  bool guarded = false;
  EXPECT_TRUE(this->lattice.lllStep(1, 4, guarded));
  EXPECT_TRUE(this->lattice.lllStep(2, 4, guarded));
  EXPECT_TRUE(guarded);
  EXPECT_EQ(this->lattice.B[2][3], TypeParam(3));
  EXPECT_EQ(this->lattice.B[3][4], TypeParam(5));
  EXPECT_TRUE(this->lattice.B[4] == Vector<TypeParam>::zeros(4));
  EXPECT_EQ(this->lattice.status[4], STATUS_DEPENDENT);
}

// Which zero row stands where is told by the transformation.
template <class T>
long originOf(const Lattice<T, dbl_t>& lattice, long position) {
  for (long j = 1; j <= lattice.rank; ++j)
    if (lattice.TT[1][position][j] == T(1)) return j;
  return 0;
}

TYPED_TEST(LllTest, DependentVectorGoesBehindTheLastIndependentOneOfItsRange) {
  auto& l = this->lattice;
  setBasis(l, matrixOf<TypeParam>({{1, 0, 0}, {0, 0, 0}, {0, 0, 3}, {0, 0, 0}, {0, 5, 0}}));
  l.params.consistency.set(true);
  setWord(l, 4, STATUS_DEPENDENT);
  bool guarded = false;
  EXPECT_TRUE(l.lllStep(1, 4, guarded));
  EXPECT_FALSE(guarded);
  EXPECT_TRUE(l.lllStep(2, 4, guarded));
  const std::vector<long> order = {1, 3, 2, 4, 5};
  for (long i = 1; i <= 5; ++i) EXPECT_EQ(originOf(l, i), order[static_cast<std::size_t>(i - 1)]) << i;
  EXPECT_EQ(l.status[3], STATUS_DEPENDENT);
  EXPECT_EQ(l.status[4], STATUS_DEPENDENT);
}

TYPED_TEST(LllTest, SweepParksWithinItsRange) {
  auto& l = this->lattice;
  setBasis(l, matrixOf<TypeParam>({{1, 0, 0, 0}, {0, 0, 0, 0}, {0, 0, 3, 0}, {0, 0, 0, 5}}));
  EXPECT_EQ(l.lll(1, 3, 3), 1);
  EXPECT_TRUE(l.sweepStopped);
  EXPECT_EQ(l.B[2][3], TypeParam(3));
  EXPECT_TRUE(l.B[3] == Vector<TypeParam>::zeros(4));
  EXPECT_EQ(l.B[4][4], TypeParam(5));
}

// What is known of dependent vectors is kept behind position 1 only: a new first vector changes it.
TYPED_TEST(LllTest, DependentWordsFallWhenTheFirstVectorMoves) {
  auto& l = this->lattice;
  setBasis(l, matrixOf<TypeParam>({{0, 0}, {0, 0}, {1, 0}}));
  l.params.consistency.set(true);
  bool guarded = false;
  EXPECT_TRUE(l.lllStep(1, 3, guarded));
  // The first zero row went to the end and its word with it was lost, so the second one goes there too.
  EXPECT_EQ(originOf(l, 1), 3);
  EXPECT_EQ(originOf(l, 2), 1);
  EXPECT_EQ(originOf(l, 3), 2);
}

// A dependent vector that is short enough goes down by deep insertion, whatever `deep` says, and all
// positions from there on are gone through anew.
TYPED_TEST(LllTest, DependentVectorIsInsertedDeepBeforeItIsBlended) {
  auto& l = this->lattice;
  setBasis(l, matrixOf<TypeParam>({{10, 0, 0}, {0, 10, 0}, {0, 4, 0}, {0, 0, 7}}));
  const long long before = statisticsOf<TypeParam>().deepInsertions;
  bool guarded = false;
  for (long k = 1; k <= 2; ++k) EXPECT_TRUE(l.lllStep(k, 4, guarded));
  EXPECT_TRUE(l.lllStep(3, 4, guarded));
  EXPECT_EQ(statisticsOf<TypeParam>().deepInsertions, before + 1);
  EXPECT_TRUE(l.B == matrixOf<TypeParam>({{10, 0, 0}, {0, 4, 0}, {0, 0, 7}, {0, 10, 0}}));
  EXPECT_EQ(l.status[4], STATUS_DEPENDENT);
  EXPECT_NE(l.status[2] & STATUS_REDUCED, 0);
  EXPECT_NE(l.status[3] & STATUS_REDUCED, 0);
  EXPECT_TRUE(guarded);
}

TYPED_TEST(LllTest, TailStopsAtTheFirstPositionThatGivesUp) {
  auto& l = this->lattice;
  setBasis(l, matrixOf<TypeParam>({{1, 0, 0}, {0, 0, 0}, {7, 0, 1}}));
  l.lll(1, 3, 2);
  EXPECT_TRUE(l.sweepStopped);
  EXPECT_EQ(l.status[2], STATUS_DEPENDENT);
  EXPECT_EQ(l.status[3], 0);
  EXPECT_EQ(l.B[3][1], TypeParam(7));
}

TYPED_TEST(LllTest, SweepEndsQuietlyWhenAllThatIsLeftDepends) {
  setBasis(this->lattice, matrixOf<TypeParam>({{1, 0, 0}, {0, 0, 0}, {0, 0, 0}}));
  EXPECT_EQ(this->lattice.lll(1, 0, 0), 1);
  EXPECT_FALSE(this->lattice.blended);
  EXPECT_EQ(this->lattice.B[1][1], TypeParam(1));
  setBasis(this->lattice, matrixOf<TypeParam>({{0, 0}, {0, 0}}));
  EXPECT_EQ(this->lattice.lll(1, 0, 0), 1);
}

TYPED_TEST(LllTest, DependentVectorIsParkedBehindTheIndependentOnes) {
  auto& l = this->lattice;
  setBasis(l, matrixOf<TypeParam>({{4, 1, 0}, {1, 3, 0}, {9, 5, 0}, {2, 2, 7}}));
  l.params.consistency.set(true);
  l.lll(1, 0, 0);
  Matrix<TypeParam> front = l.B;
  front.resize(3, 3);
  EXPECT_EQ(abs(exact(front).determinant()) / QQ(7), floor(abs(exact(front).determinant()) / QQ(7)));
  EXPECT_NE(exact(front).determinant(), QQ(0));
  EXPECT_EQ(l.status[4], STATUS_DEPENDENT);
  EXPECT_TRUE(l.TT[1] * l.B_save == l.B);
  EXPECT_EQ(abs(exact(l.TT[1]).determinant()), QQ(1));
}

TYPED_TEST(LllTest, DeepInsertNeedsAThirdPosition) {
  setBasis(this->lattice, matrixOf<TypeParam>({{100, 0, 0}, {0, 1, 0}, {0, 0, 1}}));
  this->lattice.updateGso(1, 0);
  EXPECT_EQ(this->lattice.deepInsert(1), 2);
  EXPECT_EQ(this->lattice.deepInsert(2), 3);
  EXPECT_EQ(this->lattice.deepInsert(3), 4);
}

TYPED_TEST(LllTest, DeepInsertMovesToTheFirstPlaceThatGains) {
  setBasis(this->lattice, matrixOf<TypeParam>({{9, 0, 0, 0}, {0, 8, 0, 0}, {0, 0, 6, 0}, {0, 0, 0, 2}}));
  this->lattice.updateGso(1, 0);
  const long long before = statisticsOf<TypeParam>().deepInsertions;
  EXPECT_EQ(this->lattice.deepInsert(4), 2);
  EXPECT_EQ(statisticsOf<TypeParam>().deepInsertions, before + 1);
  EXPECT_EQ(this->lattice.B[1][1], TypeParam(9));
  EXPECT_EQ(this->lattice.B[2][4], TypeParam(2));
  EXPECT_EQ(this->lattice.B[3][2], TypeParam(8));
  EXPECT_EQ(this->lattice.B[4][3], TypeParam(6));
  EXPECT_NE(this->lattice.status[1], 0);
  for (long i = 2; i <= 4; ++i) EXPECT_EQ(this->lattice.status[i], 0);
}

// A gain of one in ten thousand counts, one of one in ten thousand millions does not.
const Rows GAIN = {{100, 0, 0, 0, 0}, {0, 99, 14, 1, 1}};
const Rows NO_GAIN = {{100000, 0, 0, 0, 0, 0}, {0, 99999, 447, 13, 4, 2}};

// Behind a first vector that is shorter than either.
Rows behindAUnit(const Rows& rows) {
  Rows result = {std::vector<long>(rows[0].size() + 1, 0)};
  result[0][0] = 1;
  for (const auto& row : rows) {
    result.push_back({0});
    result.back().insert(result.back().end(), row.begin(), row.end());
  }
  return result;
}

TYPED_TEST(LllTest, LovaszFactorIsNearlyOne) {
  setBasis(this->lattice, matrixOf<TypeParam>(GAIN));
  this->lattice.lll(1, 0, 0);
  EXPECT_EQ(this->lattice.B[2][1], TypeParam(100));
  setBasis(this->lattice, matrixOf<TypeParam>(NO_GAIN));
  this->lattice.lll(1, 0, 0);
  EXPECT_EQ(this->lattice.B[1][1], TypeParam(100000));
}

TYPED_TEST(LllTest, DeepInsertionHasTheSameFactor) {
  setBasis(this->lattice, matrixOf<TypeParam>(behindAUnit(GAIN)));
  this->lattice.updateGso(1, 0);
  EXPECT_EQ(this->lattice.deepInsert(3), 2);
  setBasis(this->lattice, matrixOf<TypeParam>(behindAUnit(NO_GAIN)));
  this->lattice.updateGso(1, 0);
  EXPECT_EQ(this->lattice.deepInsert(3), 4);
}

// The test is on the projection: the part of a vector that lies along its predecessor counts as well.
TYPED_TEST(LllTest, LovaszTestAddsThePartAlongThePredecessor) {
  setBasis(this->lattice, matrixOf<TypeParam>({{10, 0}, {5, 9}}));
  this->lattice.lll(1, 0, 0);
  EXPECT_EQ(this->lattice.B[1][1], TypeParam(10));  // 81 + 25 is no less than 100
  setBasis(this->lattice, matrixOf<TypeParam>({{10, 0}, {4, 9}}));
  this->lattice.lll(1, 0, 0);
  EXPECT_EQ(this->lattice.B[1][1], TypeParam(4));  // 81 + 16 is
}

// Marked is the position below the two that were exchanged, where the sweep has never been: a rule of this
// design.
TYPED_TEST(LllTest, ExchangeMarksThePositionBelow) {
  auto& l = this->lattice;
  setBasis(l, matrixOf<TypeParam>({{1, 0, 0}, {0, 8, 0}, {0, 0, 7}}));
  l.updateGso(1, 2);
  EXPECT_EQ(l.lll(3, 0, 0), 2);
  EXPECT_EQ(l.status[1], STATUS_GSO | STATUS_SWEPT);
  for (long i = 2; i <= 3; ++i) EXPECT_NE(l.status[i] & STATUS_SWEPT, 0);
}

TYPED_TEST(LllTest, DeepInsertionMarksThePositionBelowItsTarget) {
  auto& l = this->lattice;
  setBasis(l, matrixOf<TypeParam>({{10, 0, 0}, {5, 9, 0}, {0, 1, 2}}));
  l.params.deep.set(true);
  l.lll(1, 0, 0);
  // Position 3, to which the second vector moved, is looked at again.
  EXPECT_TRUE(l.B == matrixOf<TypeParam>({{10, 0, 0}, {0, 1, 2}, {5, 7, -4}}));
  for (long i = 1; i <= 3; ++i) EXPECT_NE(l.status[i] & STATUS_SWEPT, 0);
}

// An hour passes at each look at the clock.
TYPED_TEST(LllTest, LongSweepTellsEveryHourWhereItStands) {
  setBasis(this->lattice, matrixOf<TypeParam>({{1, 0}, {0, 1}}));
  this->lattice.params.verb.set(2);
  static long hours;
  hours = 0;
  setClock([]() -> long { return 3600 * ++hours; });
  ::testing::internal::CaptureStdout();
  this->lattice.lll(1, 0, 0);
  const std::string shown = ::testing::internal::GetCapturedStdout();
  setClock(nullptr);
  EXPECT_NE(shown.find("|-> lll interval_tt status: k = 1 (m = 2)\n"), std::string::npos) << shown;
  EXPECT_NE(shown.find("|-> lll interval_tt status: k = 2 (m = 2)\n"), std::string::npos) << shown;
}

// Half an hour passes at each look; the line tells the last position of the sweep, not the end of the range.
TYPED_TEST(LllTest, HourCountsFromTheLastLine) {
  setBasis(this->lattice,
           matrixOf<TypeParam>(
               {{1, 0, 0, 0, 0}, {0, 1, 0, 0, 0}, {0, 0, 1, 0, 0}, {0, 0, 0, 1, 0}, {0, 0, 0, 0, 1}}));
  static long looks;
  looks = 0;
  setClock([]() -> long { return 1800 * ++looks; });
  for (const long verb : {2, 1}) {
    this->lattice.clearStatus();
    this->lattice.params.verb.set(verb);
    ::testing::internal::CaptureStdout();
    this->lattice.lll(1, 4, 5);
    EXPECT_EQ(::testing::internal::GetCapturedStdout(), verb == 1
                                                            ? ""
                                                            : "|-> lll interval_tt status: k = 2 (m = 4)\n"
                                                              "|-> lll interval_tt status: k = 4 (m = 4)\n");
  }
  setClock(nullptr);
}

TYPED_TEST(LllTest, BlockTimeEndsASweepAndTheTailStillReducesInSize) {
  setBasis(this->lattice, matrixOf<TypeParam>({{2, 0}, {7, 1}}));
  this->lattice.params.btime.set(1);
  static long seconds;
  seconds = 0;
  setClock([]() -> long { return ++seconds; });
  this->lattice.lll(1, 0, 0);
  setClock(nullptr);
  EXPECT_TRUE(this->lattice.sweepStopped);
  EXPECT_EQ(this->lattice.B[1][1], TypeParam(2));
  EXPECT_EQ(abs(this->lattice.B[2][1]), TypeParam(1));
}

TYPED_TEST(LllTest, WithDeepThePlainTestIsNotApplied) {
  setBasis(this->lattice, matrixOf<TypeParam>({{9, 0, 0}, {0, 5, 0}, {0, 0, 1}}));
  this->lattice.params.deep.set(true);
  reduceFully(this->lattice);
  EXPECT_EQ(this->lattice.B[1][1], TypeParam(9));
  EXPECT_EQ(this->lattice.B[2][3], TypeParam(1));
}

TYPED_TEST(LllTest, VectorThatArisesOnTheWayBecomesASolution) {
  auto& l = this->lattice;
  setBasis(l, matrixOf<TypeParam>({{7, 1}, {5, 0}}));
  l.lbnd = vectorOf<TypeParam>({-3, 1});
  l.ubnd = vectorOf<TypeParam>({3, 1});
  l.params.sol.set(0);
  // Row 2 loses row 1 once: (-2, -1), which is judged as its negative.
  l.lll(1, 0, 0);
  ASSERT_EQ(l.solutions.MN, 1);
  EXPECT_TRUE(l.solutions[1] == vectorOf<TypeParam>({2, 1}));
}

// Each position is judged as it stands and once more when size reduction has changed it, in unit coordinates.
TYPED_TEST(LllTest, RowIsJudgedBeforeAndAfterSizeReduction) {
  for (const long wanted : {3L, -1L}) {
    auto& l = this->lattice;
    setBasis(l, matrixOf<TypeParam>({{2, 0}, {3, 1}}));
    l.solutions.clear();
    l.setScale(1, TypeParam(4));
    l.lbnd = l.ubnd = vectorOf<TypeParam>({wanted, 1});
    l.params.sol.set(0);
    bool guarded = false;
    ASSERT_TRUE(l.lllStep(1, 2, guarded));
    ASSERT_EQ(l.solutions.MN, 0);
    ASSERT_TRUE(l.lllStep(2, 2, guarded));
    ASSERT_EQ(l.solutions.MN, 1) << wanted;
    EXPECT_TRUE(l.solutions[1] == vectorOf<TypeParam>({wanted, 1}));
  }
}

TYPED_TEST(LllTest, SwapExchangesAllThatBelongsToARow) {
  auto& l = this->lattice;
  setBasis(l, matrixOf<TypeParam>({{1, 0, 0}, {0, 2, 0}, {0, 0, 3}}));
  l.params.consistency.set(true);
  l.enumCoeffs[1] = TypeParam(7);
  l.stages[1].u = TypeParam(5);
  l.stages[1].w.resizeZero(4);
  setWord(l, 1, STATUS_GSO);
  l.swapBase(1, 3, true);
  EXPECT_EQ(l.B[1][3], TypeParam(3));
  EXPECT_EQ(l.TT[1][1][3], TypeParam(1));
  EXPECT_EQ(l.enumCoeffs[3], TypeParam(7));
  EXPECT_EQ(l.stages[3].u, TypeParam(5));
  EXPECT_EQ(l.stages[1].w.MN, 4);  // stays in place
  EXPECT_EQ(l.status[3], STATUS_GSO);
  EXPECT_EQ(l.status[1], 0);
}

TYPED_TEST(LllTest, SwapClearsFromTheLowerPosition) {
  auto& l = this->lattice;
  setBasis(l, matrixOf<TypeParam>({{1, 0, 0}, {0, 2, 0}, {0, 0, 3}}));
  for (long i = 1; i <= 3; ++i) setWord(l, i, STATUS_GSO);
  l.swapBase(3, 2, false);
  EXPECT_EQ(l.status[1], STATUS_GSO);
  EXPECT_EQ(l.status[2], 0);
  EXPECT_EQ(l.status[3], 0);
  l.swapBase(2, 2, false);
  EXPECT_EQ(l.status[1], STATUS_GSO);
  // Position 0 counts as the other one's place.
  for (long i = 1; i <= 3; ++i) setWord(l, i, STATUS_GSO);
  l.swapBase(0, 2, false);
  EXPECT_EQ(l.status[1], STATUS_GSO);
  EXPECT_EQ(l.status[2], 0);
  // A dependent word stays while blended is set, but not at position 1.
  for (long i = 1; i <= 3; ++i) setWord(l, i, STATUS_DEPENDENT);
  l.setBlended(true);
  l.swapBase(1, 3, false);
  EXPECT_EQ(l.status[1], 0);
  EXPECT_EQ(l.status[2], STATUS_DEPENDENT);
  EXPECT_EQ(l.status[3], STATUS_DEPENDENT);
}

// The vector at the second place is a better target, so that the sweep is left from within a step that
// blends.
TYPED_TEST(LllTest, ARestartOutOfTheSweepPutsBlendedBack) {
  const auto l = latticeOf<TypeParam>(SMALL_TARGET);
  l->finishEnabled = true;
  l->swapBase(1, 2, false);
  rows(*l).B[2] = l->B[1] + l->B[2] + l->B[3];
  ASSERT_EQ(l->B[2], latticeVector(*l, "[ 1 1 ]"));
  EXPECT_THROW(l->lll(1, 0, 0), RestartException);
  EXPECT_FALSE(l->blended);
}

TYPED_TEST(LllTest, SortBasisOrdersByLength) {
  auto& l = this->lattice;
  setBasis(l, matrixOf<TypeParam>({{5, 0, 0}, {0, 4, 0}, {0, 0, 3}}));
  l.sortBasis(2);
  EXPECT_EQ(l.B[1][2], TypeParam(4));
  EXPECT_EQ(l.B[3][3], TypeParam(3));
  l.sortBasis(0);
  EXPECT_EQ(l.B[1][3], TypeParam(3));
  EXPECT_EQ(l.B[2][2], TypeParam(4));
  EXPECT_EQ(l.B[3][1], TypeParam(5));
}

TEST(LllOverflow, RowOperationBeyondTheGateThrows) {
  Lattice<dbl_t, dbl_t> l;
  setBasis(l, matrixOf<dbl_t>({{900000000, 900000000, -500000000}, {900000000, 900000000, 600000000}}));
  try {
    l.lll(1, 0, 0);
    FAIL() << "no exception";
  } catch (const PrecisionException& e) {
    EXPECT_STREQ(e.what(), "vector precisison overflow");
  }
  EXPECT_FALSE(l.blended);
}

// A bound that a vector of the sweep widens regenerates the lattice; the flag of the sweep does not outlive
// it.
TYPED_TEST(LllTest, RestartOutOfASweepLeavesNoBlend) {
  auto l = latticeOf<TypeParam>("[ ] [ ] [ ] [ ] [ [ 1 1 ] ] [ 1 ] [ 3 ] [ 0 0 ] [ 0 0 ] [ 4 inf ]");
  l->params.sol.set(0);
  Vector<TypeParam> x;
  ASSERT_TRUE(l->coordinates(latticeVector(*l, "[ 1 2 ]"), x, false));
  l->replaceCombination(x, 1, l->rank, l->rank);
  // The rows before it widen nothing, so that the sweep is behind position 1 when it happens.
  for (long i = 1; i < l->rank; ++i) ASSERT_EQ(l->checkSolution(l->B[i], true, NOW, false) & CHECK_BOUND, 0U);
  l->finishEnabled = true;
  EXPECT_THROW(l->lll(1, 0, 0), RestartException);
  EXPECT_FALSE(l->blended);
}

TEST(LllOverflow, ExactTypeDoesNotOverflow) {
  Lattice<QQ, dbl_t> l;
  setBasis(l, matrixOf<QQ>({{900000000, 900000000, -500000000}, {900000000, 900000000, 600000000}}));
  reduceFully(l);
  EXPECT_TRUE(isReduced(l.B));
}

TEST(RowOperation, ChecksEveryNewEntry) {
  Vector<dbl_t> row = vectorOf<dbl_t>({1, 2});
  subtractChecked(row, dbl_t(-1), vectorOf<dbl_t>({999999999, 0}));
  EXPECT_EQ(row[1], 1e9L);  // the limit itself is held
  EXPECT_THROW(subtractChecked(row, dbl_t(-1), vectorOf<dbl_t>({1, 0})), PrecisionException);
  row = vectorOf<dbl_t>({1, 2});
  EXPECT_THROW(subtractChecked(row, dbl_t(1e10L), vectorOf<dbl_t>({0, 999999999})), FatalPrecisionException);
  row = vectorOf<dbl_t>({1, 2});
  EXPECT_THROW(subtractChecked(row, infinity<dbl_t>(), vectorOf<dbl_t>({0, 1})), PrecisionException);
  EXPECT_FAILURE(subtractChecked(row, dbl_t(1), vectorOf<dbl_t>({1})), "Vector: dimension mismatch2");
}

}  // namespace latbox::testing
