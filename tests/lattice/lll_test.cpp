// Sweep, size reduction, blending and deep insertion.
#include "lattice/support.h"

#include "driver/statistics.h"
#include "lattice/row_operation.h"
#include "lib/exceptions.h"
#include "lib/os/clock.h"
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
  this->lattice.B[2][1] = TypeParam(5);
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
  this->lattice.B[1][2] = TypeParam(7);
  this->lattice.B[2][1] = TypeParam(6);
  this->lattice.B[2][2] = TypeParam(3);
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

TYPED_TEST(LllTest, SwapExchangesAllThatBelongsToARow) {
  auto& l = this->lattice;
  setBasis(l, matrixOf<TypeParam>({{1, 0, 0}, {0, 2, 0}, {0, 0, 3}}));
  l.params.consistency.set(true);
  l.enumCoeffs[1] = TypeParam(7);
  l.stages[1].u = TypeParam(5);
  l.stages[1].w.resizeZero(4);
  l.status[1] = STATUS_GSO;
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
  for (long i = 1; i <= 3; ++i) l.status[i] = STATUS_GSO;
  l.swapBase(3, 2, false);
  EXPECT_EQ(l.status[1], STATUS_GSO);
  EXPECT_EQ(l.status[2], 0);
  EXPECT_EQ(l.status[3], 0);
  l.swapBase(2, 2, false);
  EXPECT_EQ(l.status[1], STATUS_GSO);
  // Position 0 counts as the other one's place.
  for (long i = 1; i <= 3; ++i) l.status[i] = STATUS_GSO;
  l.swapBase(0, 2, false);
  EXPECT_EQ(l.status[1], STATUS_GSO);
  EXPECT_EQ(l.status[2], 0);
  // A dependent word stays while blended is set, but not at position 1.
  for (long i = 1; i <= 3; ++i) l.status[i] = STATUS_DEPENDENT;
  l.blended = true;
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
  l->B[2] = l->B[1] + l->B[2] + l->B[3];
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

TEST(LllOverflow, ExactTypeDoesNotOverflow) {
  Lattice<QQ, dbl_t> l;
  setBasis(l, matrixOf<QQ>({{900000000, 900000000, -500000000}, {900000000, 900000000, 600000000}}));
  reduceFully(l);
  EXPECT_TRUE(isReduced(l.B));
}

TEST(RowOperation, ChecksEveryNewEntry) {
  Vector<dbl_t> row = vectorOf<dbl_t>({1, 2});
  subtractMultiple(row, dbl_t(-1), vectorOf<dbl_t>({999999999, 0}));
  EXPECT_EQ(row[1], 1e9L);  // the limit itself is held
  EXPECT_THROW(subtractMultiple(row, dbl_t(-1), vectorOf<dbl_t>({1, 0})), PrecisionException);
  row = vectorOf<dbl_t>({1, 2});
  EXPECT_THROW(subtractMultiple(row, dbl_t(1e10L), vectorOf<dbl_t>({0, 999999999})), FatalPrecisionException);
  row = vectorOf<dbl_t>({1, 2});
  EXPECT_THROW(subtractMultiple(row, infinity<dbl_t>(), vectorOf<dbl_t>({0, 1})), PrecisionException);
  EXPECT_FAILURE(subtractMultiple(row, dbl_t(1), vectorOf<dbl_t>({1})), "Vector: dimension mismatch2");
}

}  // namespace latbox::testing
