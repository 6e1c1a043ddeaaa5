#include <gtest/gtest.h>

#include "lib/exceptions.h"
#include "support/failure.h"
#include "support/program.h"

namespace latbox {
namespace {

using testing::programOf;
using testing::shown;

template <class T>
class StageOne : public ::testing::Test {};
using Numbers = ::testing::Types<dbl_t, QQ>;
TYPED_TEST_SUITE(StageOne, Numbers);

// A pure system of inequations over `columns` variables in 0..9.
std::string inequations(const std::string& rows, const std::string& lu, const std::string& ru, int columns) {
  std::string zeros, nines;
  for (int i = 0; i < columns; ++i) zeros += "0 ", nines += "9 ";
  return "[][][][] [" + rows + "][" + lu + "][" + ru + "][" + zeros + "][" + zeros + "][" + nines + "]";
}

TYPED_TEST(StageOne, UselessInequationsGo) {
  using T = TypeParam;
  Tessik<T> p = programOf<T>(inequations("[1 0][2 0][3 0][4 0]", "0 0 0 0", "1 1 1 1", 2));
  for (const long i : {1, 2, 4}) {
    p.lu[i] = -infinity<T>();
    p.ru[i] = infinity<T>();
  }
  ::testing::internal::CaptureStdout();
  p.removeUselessInequations(true);
  EXPECT_EQ(::testing::internal::GetCapturedStdout(),
            "|-> Useless inequation (-inf <= ... <= inf) detected\n"
            "|-> Useless inequation (-inf <= ... <= inf) detected\n"
            "|-> Useless inequation (-inf <= ... <= inf) detected\n");
  EXPECT_EQ(shown(p.Au), "[ 3 0 ]");
  EXPECT_EQ(shown(p.lu), "[ 0 ]");
  EXPECT_EQ(shown(p.ru), "[ 1 ]");
}

TYPED_TEST(StageOne, AFakeInequationBecomesTheOnlyEquation) {
  using T = TypeParam;
  Tessik<T> p = programOf<T>(inequations("[1 2]", "3", "3", 2));
  ::testing::internal::CaptureStdout();
  p.transferFakeInequations(true);
  EXPECT_EQ(::testing::internal::GetCapturedStdout(), "|-> Fake inequation detected and transfered\n");
  EXPECT_EQ(shown(p.Ag), "[ 1 2 ]");
  EXPECT_EQ(p.Ag.N, 2);
  EXPECT_EQ(shown(p.bg), "[ 3 ]");
  EXPECT_EQ(p.Au.M, 0);
  EXPECT_EQ(p.lu.MN + p.ru.MN, 0);
}

// The index is that of the inequation: equation 1 is overwritten, and the new last row stays zero.
TYPED_TEST(StageOne, AFakeInequationOverwritesTheEquationOfItsNumber) {
  using T = TypeParam;
  Tessik<T> p = programOf<T>("[][][[5 6]][7][[1 2][3 4]][3 0][3 9][0 0][0 0][9 9]");
  p.transferFakeInequations(false);
  EXPECT_EQ(shown(p.Ag), "[ 1 2 ][ 0 0 ]");
  EXPECT_EQ(shown(p.bg), "[ 3 0 ]");
  EXPECT_EQ(shown(p.Au), "[ 3 4 ]");
}

TYPED_TEST(StageOne, AFakeInequationAsManyAsTheGrownEquationsTakesTheLastRow) {
  using T = TypeParam;
  Tessik<T> p = programOf<T>("[][][[5 6]][7][[3 4][1 2]][0 3][9 3][0 0][0 0][9 9]");
  p.transferFakeInequations(false);
  EXPECT_EQ(shown(p.Ag), "[ 5 6 ][ 1 2 ]");
  EXPECT_EQ(shown(p.bg), "[ 7 3 ]");
}

TYPED_TEST(StageOne, AFakeInequationBeyondTheGrownEquationsTakesTheNewLastRow) {
  using T = TypeParam;
  Tessik<T> p = programOf<T>(inequations("[1 0][2 0][3 4]", "0 0 5", "9 9 5", 2));
  p.transferFakeInequations(false);
  EXPECT_EQ(shown(p.Ag), "[ 3 4 ]");
  EXPECT_EQ(shown(p.bg), "[ 5 ]");
  EXPECT_EQ(shown(p.Au), "[ 1 0 ][ 2 0 ]");
}

TYPED_TEST(StageOne, NeighbouringFakeInequationsAreAllSeen) {
  using T = TypeParam;
  Tessik<T> p = programOf<T>(inequations("[1 2][3 4][5 6]", "1 2 3", "1 2 3", 2));
  p.transferFakeInequations(false);
  // Each is number 1 when its turn comes, so each takes the place of the one before.
  EXPECT_EQ(shown(p.Ag), "[ 5 6 ][ 0 0 ][ 0 0 ]");
  EXPECT_EQ(shown(p.bg), "[ 3 0 0 ]");
  EXPECT_EQ(p.Au.M, 0);
}

// Equal by the system's tolerance; the lower side is what the equation asks for.
TYPED_TEST(StageOne, SidesThatAreNearlyEqualAreAnEquation) {
  using T = TypeParam;
  Tessik<T> p = programOf<T>(inequations("[1 0][0 1]", "3 4", "3.0000000001 4.00000001", 2));
  p.transferFakeInequations(false);
  EXPECT_EQ(shown(p.Ag), "[ 1 0 ]");
  EXPECT_EQ(shown(p.bg), "[ 3 ]");
  EXPECT_EQ(shown(p.Au), "[ 0 1 ]");
}

TYPED_TEST(StageOne, EqualInfiniteSidesCannotBeMet) {
  using T = TypeParam;
  for (const char* side : {"inf", "-inf"}) {
    Tessik<T> p = programOf<T>(inequations("[1 2]", side, side, 2));
    EXPECT_FAILURE(p.transferFakeInequations(false),
                   "Unfulfillable infinite inequation detected --> NO SOLUTIONS!");
  }
}

TYPED_TEST(StageOne, ALowerBoundAloneTakesASlack) {
  using T = TypeParam;
  Tessik<T> p = programOf<T>(inequations("[1 2]", "3", "inf", 2));
  p.insertSlacks();
  EXPECT_EQ(p.slackCount, 1);
  EXPECT_EQ(shown(p.Ag), "[ 1 2 -1 ]");
  EXPECT_EQ(shown(p.bg), "[ 3 ]");
  EXPECT_EQ(p.Au.M, 0);
  EXPECT_EQ(p.Au.N, 3);
  EXPECT_EQ(shown(p.lx), "[ 0 0 0 ]");
  EXPECT_EQ(shown(p.rx), "[ 9 9 inf ]");
  EXPECT_EQ(shown(p.dx), "[ 0 0 0 ]");
  EXPECT_EQ(shown(p.fx), "002");
}

TYPED_TEST(StageOne, AnUpperBoundAloneIsTurnedFirst) {
  using T = TypeParam;
  Tessik<T> p = programOf<T>(inequations("[1 -2 0]", "-inf", "3", 3));
  p.insertSlacks();
  EXPECT_EQ(shown(p.Ag), "[ -1 2 0 -1 ]");
  EXPECT_EQ(shown(p.bg), "[ -3 ]");
}

TYPED_TEST(StageOne, TheLastInequationTakesThePlaceOfTheOneThatLeft) {
  using T = TypeParam;
  Tessik<T> p = programOf<T>("[-inf][[1 1]][[7 7]][70][[1 0][2 0][3 0]][1 2 -inf][inf 5 6][0 0][0 0][9 9]");
  p.insertSlacks();
  EXPECT_EQ(p.slackCount, 2);
  // Row 1 left, row 3 took its place, was turned and left as well.
  EXPECT_EQ(shown(p.Ag), "[ 7 7 0 0 ][ 1 0 -1 0 ][ -3 0 0 -1 ]");
  EXPECT_EQ(shown(p.bg), "[ 70 1 -6 ]");
  EXPECT_EQ(shown(p.Au), "[ 2 0 0 0 ]");
  EXPECT_EQ(shown(p.lu), "[ 2 ]");
  EXPECT_EQ(shown(p.ru), "[ 5 ]");
  EXPECT_EQ(p.At.N, 2);  // targets are not widened here
}

TYPED_TEST(StageOne, ASlackNeedsMatricesAsWideAsTheVariables) {
  using T = TypeParam;
  Tessik<T> p = programOf<T>(inequations("[1 2]", "3", "inf", 2));
  p.appendComponent(T(0), T(1), T(0));
  EXPECT_FAILURE(p.insertSlacks(), "Implement the insert at sdim position case!");
}

TYPED_TEST(StageOne, InequationsOnBothSidesStay) {
  using T = TypeParam;
  Tessik<T> p = programOf<T>(inequations("[1 2]", "3", "4", 2));
  p.slackCount = 5;
  p.insertSlacks();
  EXPECT_EQ(p.slackCount, 0);
  EXPECT_EQ(shown(p.Au), "[ 1 2 ]");
}

TYPED_TEST(StageOne, AnAskedValueBecomesAPairOfDeviations) {
  using T = TypeParam;
  Tessik<T> p = programOf<T>("[7][[1 2]][[3 4]][5][[5 6]][0][9][0 0][0 0][9 9]");
  p.insertDeviations();
  EXPECT_EQ(p.deviationCount, 2);
  EXPECT_EQ(shown(p.Ag), "[ 3 4 0 0 ][ 1 2 1 -1 ]");
  EXPECT_EQ(shown(p.bg), "[ 5 7 ]");
  EXPECT_EQ(shown(p.At), "[ 0 0 1 1 ]");
  EXPECT_EQ(shown(p.Au), "[ 5 6 0 0 ]");
  EXPECT_EQ(shown(p.dt), "[ -inf ]");
  EXPECT_EQ(shown(p.kt), "[ -inf ]");  // the threshold 7 is lost, by the order of the steps
  EXPECT_EQ(shown(p.lx), "[ 0 0 0 0 ]");
  EXPECT_EQ(shown(p.rx), "[ 9 9 inf inf ]");
  EXPECT_EQ(shown(p.fx), "0022");
}

TYPED_TEST(StageOne, DirectionsHaveNoDeviations) {
  using T = TypeParam;
  Tessik<T> p = programOf<T>("[-inf inf][[1 2][3 4]][][][][][][0 0][0 0][9 9]");
  p.deviationCount = 4;
  p.insertDeviations();
  EXPECT_EQ(p.deviationCount, 0);
  EXPECT_EQ(shown(p.At), "[ 1 2 ][ 3 4 ]");
  EXPECT_EQ(p.Ag.M, 0);
}

// The first pair goes to the last target, the next to the last but one.
TYPED_TEST(StageOne, DeviationTargetsGatherAtTheEnd) {
  using T = TypeParam;
  Tessik<T> p = programOf<T>("[7 -inf 8 inf] = [inf 2 inf 4] [[1][2][3][4]][][][][][][0][0][9]");
  p.insertDeviations();
  EXPECT_EQ(p.deviationCount, 4);
  EXPECT_EQ(shown(p.dt), "[ inf -inf -inf -inf ]");
  EXPECT_EQ(shown(p.kt), "[ 4 2 inf inf ]");
  EXPECT_EQ(shown(p.At), "[ 4 0 0 0 0 ][ 2 0 0 0 0 ][ 0 0 0 1 1 ][ 0 1 1 0 0 ]");
  EXPECT_EQ(shown(p.Ag), "[ 1 1 -1 0 0 ][ 3 0 0 1 -1 ]");
  EXPECT_EQ(shown(p.bg), "[ 7 8 ]");
}

// A target whose number meets the count of pairs so far stays where it is.
TYPED_TEST(StageOne, ADeviationTargetWhoseNumberMeetsTheCountStays) {
  using T = TypeParam;
  Tessik<T> p = programOf<T>("[7 8 9][[1][2][3]][][][][][][0][0][9]");
  p.insertDeviations();
  EXPECT_EQ(p.deviationCount, 6);
  EXPECT_EQ(shown(p.At), "[ 0 0 0 1 1 0 0 ][ 0 0 0 0 0 1 1 ][ 0 1 1 0 0 0 0 ]");
  EXPECT_EQ(shown(p.bg), "[ 7 9 8 ]");
}

TYPED_TEST(StageOne, TheCombinedTargetSumsWithSigns) {
  using T = TypeParam;
  Tessik<T> p = programOf<T>("[-inf inf][[1 2][3 4]][][][][][][0 0][0 0][9 9]");
  p.computeAtu();
  EXPECT_EQ(shown(p.atu), "[ -2 -2 ]");
  Tessik<T> none = programOf<T>(inequations("[1 2]", "0", "1", 2));
  none.computeAtu();
  EXPECT_EQ(none.atu.MN, 0);
}

TEST(StageOnePrecision, TheCombinedTargetAsksForExactNumbers) {
  Tessik<dbl_t> p = programOf<dbl_t>("[-inf -inf][[600000000][600000000]][][][][][][0][0][9]");
  testing::expectPrecisionException([&p] { p.computeAtu(); }, "atu overflow");
  Tessik<QQ> q = programOf<QQ>("[-inf -inf][[600000000][600000000]][][][][][][0][0][9]");
  q.computeAtu();
  EXPECT_EQ(shown(q.atu), "[ 1200000000 ]");
}

TEST(StageOnePrecision, CornersAskForExactNumbersEvenWhereTheirSumIsSmall) {
  const char* const text = "[-inf][[4 -4]][][][][][][0 0][-300000000 -300000000][1 1]";
  Tessik<dbl_t> p = programOf<dbl_t>(text);
  testing::expectPrecisionException([&p] { p.boundTargetByVariables(); }, "sum overflow");
  Tessik<QQ> q = programOf<QQ>(text);
  q.boundTargetByVariables();
  EXPECT_EQ(shown(q.lrtu), "0 .. 0");
}

// The small example of the manual: a minimised target beside a half-infinite inequation.
TYPED_TEST(StageOne, SlacksPadTheTargets) {
  using T = TypeParam;
  Tessik<T> p = programOf<T>("[-inf][[1 1]][[1 2]][7][[3 -1]][0][inf][0 0][0 0][10 10]");
  p.prepareStageOne(true, false);
  EXPECT_TRUE(p.prepared);
  EXPECT_EQ(shown(p.At), "[ 1 1 0 ]");
  EXPECT_EQ(shown(p.atu), "[ 1 1 0 ]");
  EXPECT_EQ(shown(p.Ag), "[ 1 2 0 ][ 3 -1 -1 ]");
  EXPECT_EQ(shown(p.bg), "[ 7 0 ]");
  EXPECT_EQ(shown(p.lrtu), "0 .. 0");  // the corner lx gives both sides; rx has no finite one
  EXPECT_FALSE(p.tu);
}

TYPED_TEST(StageOne, SlacksStandBeforeDeviations) {
  using T = TypeParam;
  Tessik<T> p = programOf<T>("[7][[1 2]][][][[5 6]][0][inf][0 0][0 0][9 9]");
  p.prepareStageOne(true, false);
  EXPECT_EQ(shown(p.Ag), "[ 5 6 -1 0 0 ][ 1 2 0 1 -1 ]");
  EXPECT_EQ(shown(p.At), "[ 0 0 0 1 1 ]");
  EXPECT_EQ(p.slackCount, 1);
  EXPECT_EQ(p.deviationCount, 2);
}

TYPED_TEST(StageOne, AskedValuesAloneKeepTheTargetFromBelowZero) {
  using T = TypeParam;
  Tessik<T> p = programOf<T>("[7 8][[1 2][2 1]][][][][][][0 0][-5 -5][9 9]");
  p.prepareStageOne(true, false);
  EXPECT_TRUE(p.allTargetsFinite);
  EXPECT_EQ(shown(p.dt), "[ -inf -inf ]");
  EXPECT_FALSE(p.ltu() < T(0));
}

// Deviations from values are never negative, so neither is the bound that a norm of them gives.
TYPED_TEST(StageOne, AskedValuesAloneAreBoundByZero) {
  using T = TypeParam;
  Tessik<T> p = programOf<T>("[7][[1]][][][][][][0][-5][9]");
  p.prepareStageOne(false, false);
  p.setTargetBound(Vector<T>("[ 3 ]"), T(3));
  EXPECT_EQ(shown(p.lrtu), "0 .. 2");
  Tessik<T> corners = programOf<T>("[-inf][[1]][][][][][][0][-5][9]");
  corners.allTargetsFinite = true;
  corners.boundTargetByVariables();
  EXPECT_EQ(shown(corners.lrtu), "0 .. 9");
}

// Such a row would become an equation with an infinite right-hand side.
TYPED_TEST(StageOne, UselessInequationsGoBeforeSlacksAreInserted) {
  using T = TypeParam;
  Tessik<T> p = programOf<T>(inequations("[1 0][2 0]", "0 0", "1 1", 2));
  p.lu[1] = -infinity<T>();
  p.ru[1] = infinity<T>();
  p.prepareStageOne(true, false);
  EXPECT_EQ(shown(p.Au), "[ 2 0 ]");
  EXPECT_EQ(p.Ag.M, 0);
  EXPECT_EQ(p.slackCount, 0);
}

TYPED_TEST(StageOne, OnlyTheFullPreparationBoundsTheTarget) {
  using T = TypeParam;
  Tessik<T> p = programOf<T>("[-inf] = [5] [[1 1]][][][][][][0 0][-1 0][3 4]");
  Tessik<T> light = p;
  light.prepareStageOne(false, false);
  EXPECT_EQ(shown(light.lrtu), "-inf .. inf");
  EXPECT_FALSE(light.tu);
  p.prepareStageOne(true, false);
  EXPECT_TRUE(p.tu);
  // The threshold gives -5 .. 5; the corner (3, 4) lowers the lower bound to -7.
  EXPECT_EQ(shown(p.lrtu), "-7 .. 5");
}

TYPED_TEST(StageOne, AThresholdOfInfinityBoundsNothing) {
  using T = TypeParam;
  Tessik<T> p = programOf<T>("[-inf inf] = [5 inf] [[1][1]][][][][][][0][0][3]");
  p.applyThresholds();
  EXPECT_FALSE(p.tu);
  EXPECT_EQ(shown(p.lrtu), "-inf .. inf");
}

TYPED_TEST(StageOne, ThresholdsAddUpWithSigns) {
  using T = TypeParam;
  Tessik<T> p = programOf<T>("[-inf inf] = [5 8] [[1][1]][][][][][][0][0][3]");
  p.applyThresholds();
  EXPECT_TRUE(p.tu);
  EXPECT_EQ(shown(p.lrtu), "-13 .. -3");
}

TYPED_TEST(StageOne, ATargetBoundMovesInAndNeverOut) {
  using T = TypeParam;
  Tessik<T> p = programOf<T>("[-inf][[1]][][][][][][0][0][3]");
  p.setTargetBound(Vector<T>("[ 10 ]"), T(10));
  EXPECT_EQ(shown(p.lrtu), "-10 .. 9");
  EXPECT_TRUE(p.tu);
  p.setTargetBound(Vector<T>("[ 4 ]"), T(4));
  EXPECT_EQ(shown(p.lrtu), "-10 .. 3");
  p.tu = false;
  p.setTargetBound(Vector<T>("[ 8 ]"), T(8));  // neither side moves: no effect at all
  EXPECT_EQ(shown(p.lrtu), "-10 .. 3");
  EXPECT_FALSE(p.tu);
  p.setTargetBound(Vector<T>("[ 20 ]"), T(20));  // the lower side moves, the upper stays
  EXPECT_EQ(shown(p.lrtu), "-20 .. 3");
  EXPECT_TRUE(p.tu);
}

TYPED_TEST(StageOne, ATargetBoundThatCrossesLeavesOneValue) {
  using T = TypeParam;
  Tessik<T> p = programOf<T>("[-inf][[1]][][][][][][0][0][3]");
  p.setTargetBound(Vector<T>("[ -4 ]"), T(-4));
  EXPECT_EQ(shown(p.lrtu), "-5 .. -5");
}

TYPED_TEST(StageOne, CornersBoundTheTarget) {
  using T = TypeParam;
  Tessik<T> p = programOf<T>("[-inf inf][[1 1][1 -1]][][][][][][0 0][-1 -2][3 4]");
  p.boundTargetByVariables();
  // (-1, -2): |-3| + |1| = 4; (3, 4): 7 + 1 = 8.
  EXPECT_EQ(shown(p.lrtu), "-8 .. 8");
  EXPECT_FALSE(p.tu);
}

TYPED_TEST(StageOne, InfiniteCornersAreSkippedAndABoundTargetKeepsItsUpperBound) {
  using T = TypeParam;
  Tessik<T> p = programOf<T>("[-inf][[1 1]][][][][][][0 0][-1 -2][3 inf]");
  p.tu = true;
  p.rtu() = T(2);
  p.boundTargetByVariables();
  EXPECT_EQ(shown(p.lrtu), "-3 .. 2");
}

TYPED_TEST(StageOne, WithoutTargetsNothingIsBounded) {
  using T = TypeParam;
  Tessik<T> p = programOf<T>(inequations("[1 2]", "0", "1", 2));
  p.boundTargetByVariables();
  p.applyThresholds();
  EXPECT_EQ(shown(p.lrtu), "-inf .. inf");
  EXPECT_FALSE(p.tu);
}

}  // namespace
}  // namespace latbox
