#include <gtest/gtest.h>

#include "lib/exceptions.h"
#include "support/failure.h"
#include "support/program.h"

namespace latbox {
namespace {

using testing::expectPrecisionException;
using testing::programOf;
using testing::shown;

template <class T>
class StageTwo : public ::testing::Test {};
using Numbers = ::testing::Types<dbl_t, QQ>;
TYPED_TEST_SUITE(StageTwo, Numbers);

TYPED_TEST(StageTwo, FixedVariablesLeaveAndTheirShareMoves) {
  using T = TypeParam;
  Tessik<T> p = programOf<T>(
      "[-inf inf][[1 2 3 4][5 6 7 8]][[1 2 3 4]][50][[4 3 2 1]][0][20][0 0 0 0][2 0 3 1][2 9 3 9]");
  p.computeAtu();
  p.ltu() = T(-100);
  p.rtu() = T(100);
  p.removeComponents();
  EXPECT_EQ(shown(p.fixedComponents), "1:2 3:3 ");
  EXPECT_EQ(shown(p.Ag), "[ 2 4 ]");
  EXPECT_EQ(shown(p.bg), "[ 39 ]");
  EXPECT_EQ(shown(p.Au), "[ 3 1 ]");
  EXPECT_EQ(shown(p.lu), "[ -14 ]");
  EXPECT_EQ(shown(p.ru), "[ 6 ]");
  EXPECT_EQ(shown(p.At), "[ 2 4 ][ 6 8 ]");
  EXPECT_EQ(shown(p.atu), "[ -4 -4 ]");
  // Targets lose 1*2 + 3*3 = 11 and, negated, 5*2 + 7*3 = 31: the bounds rise by 20.
  EXPECT_EQ(shown(p.lrtu), "-80 .. 120");
  EXPECT_EQ(shown(p.lx), "[ 0 1 ]");
  EXPECT_EQ(shown(p.rx), "[ 9 9 ]");
  EXPECT_EQ(shown(p.dx), "[ 0 0 ]");
  EXPECT_EQ(shown(p.fx), "00");
  EXPECT_EQ(p.Ag.N, 2);
}

TYPED_TEST(StageTwo, FixedVariablesOfTheLastRunAreForgotten) {
  using T = TypeParam;
  Tessik<T> p = programOf<T>("[][][[1 1]][3][][][][0 0][0 0][9 9]");
  p.fixedComponents.add(1, T(5));
  p.removeComponents();
  EXPECT_EQ(p.fixedComponents.MN, 0);
  EXPECT_EQ(p.n(), 2);
}

// Regression: the edge of a row was lost, and with it whatever lay there, when a fixed variable left a
// program with decimals in standard precision.
TYPED_TEST(StageTwo, TheShareOfAFixedVariableCostsNoDigits) {
  using T = TypeParam;
  for (int k = 1; k < 9; ++k) {
    const std::string lower = "1000." + std::to_string(k);
    const std::string upper = "1000." + std::to_string(k + 1);
    Tessik<T> p = programOf<T>("[][][][][[0.1 1]][" + lower + "][" + upper + "][0 0][0 1000][90 1000]");
    p.prepareStageTwo(false);
    EXPECT_EQ(shown(p.lu), "[ " + std::to_string(k) + " ]");
    EXPECT_EQ(shown(p.ru), "[ " + std::to_string(k + 1) + " ]");
  }
}

// What is left has more digits than standard precision holds.
TEST(StageTwoPrecision, ASideWithTooManyDigitsAsksForExactNumbers) {
  const char* text =
      "[][][][][[1 0.1]][0][100000000.00000001][0 0][0 0.0000000123456789][9 0.0000000123456789]";
  Tessik<dbl_t> p = programOf<dbl_t>(text);
  expectPrecisionException([&p] { p.removeComponents(); }, "ru overflow");
  Tessik<QQ> q = programOf<QQ>(text);
  q.removeComponents();
  EXPECT_EQ(toText(q.ru[1]), toText(QQ("100000000.00000001") - QQ("0.00000000123456789")));
}

// A solution may have given a free variable two equal working bounds; it stays a variable.
TYPED_TEST(StageTwo, AFreeVariableWithEqualWorkingBoundsStays) {
  using T = TypeParam;
  Tessik<T> p = programOf<T>("[][][[1 1 1]][3][][][][0 0 0][-inf 0 -inf][inf inf 5]");
  for (long i = 1; i <= 3; ++i) p.lx[i] = p.rx[i] = T(5);
  p.removeComponents();
  EXPECT_EQ(p.n(), 3);
  EXPECT_EQ(p.fixedComponents.MN, 0);
}

TYPED_TEST(StageTwo, AFixedVariableWithDigitsIsRemovedUnscaled) {
  using T = TypeParam;
  Tessik<T> p = programOf<T>("[][][[2 1]][7][][][][2 0][1.25 0][1.25 9]");
  p.prepareStageTwo(false);
  EXPECT_EQ(shown(p.fixedComponents), "1:" + toText(T(1.25L)) + " ");
  EXPECT_EQ(shown(p.Ag), "[ 2 ]");
  EXPECT_EQ(shown(p.bg), "[ 9 ]");
}

TYPED_TEST(StageTwo, AllVariablesMayBeFixed) {
  using T = TypeParam;
  Tessik<T> p = programOf<T>("[-inf][[1 1]][[1 2]][8][[1 1]][0][9][0 0][2 3][2 3]");
  p.prepareStageTwo(false);
  EXPECT_EQ(p.n(), 0);
  EXPECT_EQ(shown(p.fixedComponents), "1:2 2:3 ");
}

TYPED_TEST(StageTwo, DigitsScaleBoundsAndColumns) {
  using T = TypeParam;
  Tessik<T> p = programOf<T>("[-inf][[4 1]][[8 1]][7][[12 1]][0][9][2 0][-1.25 0][2.555 3.5]");
  p.applyDigits();
  EXPECT_EQ(shown(p.lx), "[ -125 0 ]");
  EXPECT_EQ(shown(p.rx), "[ 255 3 ]");
  p.makeIntegral();
  EXPECT_EQ(shown(p.At), "[ 1 25 ]");
  EXPECT_EQ(shown(p.Ag), "[ 2 25 ]");
  EXPECT_EQ(shown(p.bg), "[ 175 ]");
  EXPECT_EQ(shown(p.Au), "[ 3 25 ]");
  EXPECT_EQ(shown(p.lu), "[ 0 ]");
  EXPECT_EQ(shown(p.ru), "[ 225 ]");
}

TYPED_TEST(StageTwo, BoundsAreRoundedInwardWithOrWithoutDigits) {
  using T = TypeParam;
  Tessik<T> p = programOf<T>("[][][[1 1 1 1]][7][][][][0 -2 0 0][-1.5 0.25 -inf -0.5][1.5 7.75 2.5 inf]");
  p.applyDigits();
  EXPECT_EQ(shown(p.lx), "[ -1 1 -inf 0 ]");
  EXPECT_EQ(shown(p.rx), "[ 1 7 2 inf ]");
}

// 0.3 * 10^1 and its like are whole numbers in either type.
TYPED_TEST(StageTwo, ScaledDecimalBoundsStayWhole) {
  using T = TypeParam;
  for (int k = 1; k < 1000; ++k) {
    const std::string bound = "0." + std::string(3 - std::to_string(k).size(), '0') + std::to_string(k);
    if (k % 10 == 0) continue;
    Tessik<T> p = programOf<T>("[][][[1]][7][][][][3][-" + bound + "][" + bound + "]");
    p.applyDigits();
    ASSERT_EQ(shown(p.rx), "[ " + std::to_string(k) + " ]");
    ASSERT_EQ(shown(p.lx), "[ " + std::to_string(-k) + " ]");
  }
}

TYPED_TEST(StageTwo, BoundsThatCrossWhenRoundedCannotBeMet) {
  using T = TypeParam;
  Tessik<T> p = programOf<T>("[][][[1]][7][][][][0][0.25][0.75]");
  EXPECT_FAILURE(p.applyDigits(), "Unfulfillable inequality detected --> NO SOLUTIONS!");
}

TYPED_TEST(StageTwo, AbsurdDigitsAreRefused) {
  using T = TypeParam;
  for (const char* digits : {"inf", "10001", "1/2"}) {
    Tessik<T> p = programOf<T>("[][][[1]][7][][][][" + std::string(digits) + "][0][1]");
    EXPECT_FAILURE(p.applyDigits(), "dx has to be a whole number <= 10000 in each of its components");
  }
  Tessik<T> negative = programOf<T>("[][][[1 1]][7][][][][-inf -0.5][0 0][1 1]");
  negative.applyDigits();
  EXPECT_EQ(shown(negative.rx), "[ 1 1 ]");
}

TEST(StageTwoExact, ManyDigitsAreExact) {
  Tessik<QQ> p = programOf<QQ>("[][][[1]][1][][][][10000][0][1]");
  p.applyDigits();
  p.makeIntegral();
  EXPECT_EQ(shown(p.Ag), "[ 1 ]");
  EXPECT_EQ(toText(p.bg[1]), "1" + std::string(10000, '0'));
}

TEST(StageTwoPrecision, DigitsThatCostPrecisionAreNoticed) {
  Tessik<dbl_t> many = programOf<dbl_t>("[][][[1]][1][][][][10][0][1]");
  expectPrecisionException([&many] { many.applyDigits(); }, "data overflow");
  Tessik<dbl_t> beyondRange = programOf<dbl_t>("[][][[1]][1][][][][5000][0][1]");
  expectPrecisionException([&beyondRange] { beyondRange.applyDigits(); }, "data overflow");
  Tessik<dbl_t> upper = programOf<dbl_t>("[][][[1000]][1][][][][6][0][10000]");
  expectPrecisionException([&upper] { upper.applyDigits(); }, "rx overflow");
  Tessik<dbl_t> lower = programOf<dbl_t>("[][][[1000]][1][][][][6][-10000][1]");
  expectPrecisionException([&lower] { lower.applyDigits(); }, "lx overflow");
  // 1 / 10^9 is zero to the system's tolerance.
  Tessik<dbl_t> small = programOf<dbl_t>("[][][[1]][1][][][][9][0][1]");
  expectPrecisionException([&small] { small.applyDigits(); }, "data overflow");
}

TYPED_TEST(StageTwo, OneFactorServesAllTargets) {
  using T = TypeParam;
  Tessik<T> p =
      programOf<T>("[-inf inf -inf] = [0.5 0.125 inf] [[0.5 1][1 0.25][1 1]][][][][][][0 0][0 0][9 9]");
  p.ltu() = T(-3);
  p.rtu() = T(4);
  Tessik<T> bound = p;
  p.makeIntegral();
  EXPECT_EQ(shown(p.At), "[ 4 8 ][ 8 2 ][ 8 8 ]");
  EXPECT_EQ(shown(p.kt), "[ 4 1 inf ]");
  EXPECT_EQ(shown(p.dt), "[ -inf inf -inf ]");
  EXPECT_EQ(shown(p.lrtu), "-3 .. 4");  // no bound is in force
  bound.tu = true;
  bound.makeIntegral();
  EXPECT_EQ(shown(bound.lrtu), "-24 .. 32");
}

TYPED_TEST(StageTwo, FiniteTargetValuesAreScaledToo) {
  using T = TypeParam;
  Tessik<T> p = programOf<T>("[0.25][[1 3]][][][][][][0 0][0 0][9 9]");
  p.makeIntegral();
  EXPECT_EQ(shown(p.dt), "[ 1 ]");
  EXPECT_EQ(shown(p.kt), "[ 1 ]");
  EXPECT_EQ(shown(p.At), "[ 4 12 ]");
}

// The asked value's own denominator counts, with no threshold that repeats it.
TYPED_TEST(StageTwo, TheDenominatorOfAnAskedValueCounts) {
  using T = TypeParam;
  Tessik<T> p = programOf<T>("[0.25] = [inf] [[1 3]][][][][][][0 0][0 0][9 9]");
  p.makeIntegral();
  EXPECT_EQ(shown(p.dt), "[ 1 ]");
  EXPECT_EQ(shown(p.kt), "[ inf ]");
  EXPECT_EQ(shown(p.At), "[ 4 12 ]");
}

TYPED_TEST(StageTwo, RowsAreScaledOneByOne) {
  using T = TypeParam;
  Tessik<T> p = programOf<T>("[][][[0.5 0.25][3 1]][1.125 2][[0.2 1][1 1]][0.3 0.5][0.7 2.5][0 0][0 0][9 9]");
  p.makeIntegral();
  EXPECT_EQ(shown(p.Ag), "[ 4 2 ][ 3 1 ]");
  EXPECT_EQ(shown(p.bg), "[ 9 2 ]");
  EXPECT_EQ(shown(p.Au), "[ 1 5 ][ 1 1 ]");
  EXPECT_EQ(shown(p.lu), "[ 2 1 ]");  // 1.5 and 0.5, rounded inward
  EXPECT_EQ(shown(p.ru), "[ 3 2 ]");
}

TEST(StageTwoExact, FractionsBecomeIntegers) {
  Tessik<QQ> p = programOf<QQ>("[][][[1/3 -1/2]][1/7][[1/6 1]][1/4][5/4][0 0][0 0][9 9]");
  p.makeIntegral();
  EXPECT_EQ(shown(p.Ag), "[ 14 -21 ]");
  EXPECT_EQ(shown(p.bg), "[ 6 ]");
  EXPECT_EQ(shown(p.Au), "[ 1 6 ]");
  EXPECT_EQ(shown(p.lu), "[ 2 ]");
  EXPECT_EQ(shown(p.ru), "[ 7 ]");
}

// A bound a hair below a whole number is below it; only the exact type can tell, and it does.
TEST(StageTwoExact, NothingIsSnapped) {
  Tessik<QQ> p = programOf<QQ>("[][][[1]][0][][][][0][0][0.999999999999999999999]");
  p.applyDigits();
  EXPECT_EQ(shown(p.rx), "[ 0 ]");
}

struct Overflow {
  const char* text;
  const char* message;
};

class IntegralOverflow : public ::testing::TestWithParam<Overflow> {};

TEST_P(IntegralOverflow, AsksForExactNumbers) {
  Tessik<dbl_t> p = programOf<dbl_t>(GetParam().text);
  p.tu = true;
  if (p.dt.MN > 1) p.ltu() = 900000000, p.rtu() = 1;
  expectPrecisionException([&p] { p.makeIntegral(); }, GetParam().message);
  // The exact type does the same without.
  Tessik<QQ> q = programOf<QQ>(GetParam().text);
  q.makeIntegral();
}

INSTANTIATE_TEST_SUITE_P(
    Texts, IntegralOverflow,
    ::testing::Values(Overflow{"[-inf][[0.5 900000000]][][][][][][0 0][0 0][1 1]", "At iMFFT overflow"},
                      Overflow{"[-inf][[0.0009765625 0.000000512]][][][][][][0 0][0 0][1 1]",
                               "iMFFT overflow"},
                      Overflow{"[900000000][[0.5]][][][][][][0][0][1]", "dt iMFFT overflow"},
                      Overflow{"[-inf] = [900000000] [[0.5]][][][][][][0][0][1]", "kt iMFFT overflow"},
                      Overflow{"[-inf -inf][[0.5][0]][][][][][][0][0][1]", "ltu iMFFT overflow"},
                      Overflow{"[][][[0.0009765625 0.000000512]][1][][][][0 0][0 0][1 1]", "iMF overflow2"},
                      Overflow{"[][][[0.5 900000000]][1][][][][0 0][0 0][1 1]", "Ag iMF overflow"},
                      Overflow{"[][][[0.5]][900000000][][][][0][0][1]", "bg iMF overflow"},
                      Overflow{"[][][][][[0.0009765625 0.000000512]][0][1][0 0][0 0][1 1]", "iMF overflow3"},
                      Overflow{"[][][][][[0.5 900000000]][0][1][0 0][0 0][1 1]", "Au iMF overflow"},
                      Overflow{"[][][][][[0.5]][-900000000][1][0][0][1]", "lu iMF overflow"},
                      Overflow{"[][][][][[0.5]][1][900000000][0][0][1]", "ru iMF overflow"}));

TEST(StageTwoPrecision, TheUpperTargetBoundOverflowsByItsOwnName) {
  Tessik<dbl_t> p = programOf<dbl_t>("[-inf][[0.5]][][][][][][0][0][1]");
  p.tu = true;
  p.rtu() = 900000000;
  expectPrecisionException([&p] { p.makeIntegral(); }, "rtu iMFFT overflow");
}

TEST(StageTwoPrecision, FixedVariablesOverflowByName) {
  const char* bounds = "[0][900000000][900000000]";
  auto expect = [](const std::string& text, const char* message) {
    Tessik<dbl_t> p = programOf<dbl_t>(text);
    if (p.At.M > 0) (message[0] == 'l' ? p.ltu() : p.rtu()) = 0;
    expectPrecisionException([&p] { p.removeComponents(); }, message);
  };
  expect(std::string("[][][[2]][1][][][]") + bounds, "bg overflow");
  expect(std::string("[][][][][[2]][1][2]") + bounds, "lu overflow");
  expect(std::string("[][][][][[1]][900000000][1900000001]") + bounds, "ru overflow");
  expect(std::string("[-inf][[2]][][][][][]") + bounds, "ltu overflow");
  expect(std::string("[-inf][[2]][][][][][]") + bounds, "rtu overflow");
}

TYPED_TEST(StageTwo, DependentEquationsAreRemovedAndTold) {
  using T = TypeParam;
  Tessik<T> p = programOf<T>("[][][[1 2][1 2][2 0][3 0]][5 5 2 3][][][][0 0][0 0][9 9]");
  Tessik<T> quiet = p;
  ::testing::internal::CaptureStdout();
  p.removeDependencies(true);
  quiet.removeDependencies(false);
  EXPECT_EQ(::testing::internal::GetCapturedStdout(), "|-> Linear dependencies detected and removed\n");
  EXPECT_EQ(shown(p.Ag), "[ 1 2 ][ 1 0 ]");
  EXPECT_EQ(shown(p.bg), "[ 5 1 ]");
  EXPECT_EQ(shown(quiet.Ag), shown(p.Ag));
}

TYPED_TEST(StageTwo, ContradictingEquationsStay) {
  using T = TypeParam;
  Tessik<T> p = programOf<T>("[][][[1 1][2 2]][1 3][][][][0 0][0 0][9 9]");
  ::testing::internal::CaptureStdout();
  p.removeDependencies(true);
  EXPECT_EQ(::testing::internal::GetCapturedStdout(), "");
  EXPECT_EQ(p.Ag.M, 2);
}

TYPED_TEST(StageTwo, HalfFreeVariablesAreTurned) {
  using T = TypeParam;
  Tessik<T> p = programOf<T>("[-inf][[1 2 3]][[4 5 6]][1][[7 8 0]][0][9][0 0 0][-inf -inf 0][5 inf inf]");
  p.swappedComponents.append(9);
  ::testing::internal::CaptureStdout();
  p.swapHalfFree(true);
  EXPECT_EQ(::testing::internal::GetCapturedStdout(), "|-> Swapped half-free variable detected\n");
  EXPECT_EQ(shown(p.swappedComponents), "[ 1 ]");
  EXPECT_EQ(shown(p.At), "[ -1 2 3 ]");
  EXPECT_EQ(shown(p.Ag), "[ -4 5 6 ]");
  EXPECT_EQ(shown(p.Au), "[ -7 8 0 ]");
  EXPECT_EQ(shown(p.lx), "[ -5 -inf 0 ]");
  EXPECT_EQ(shown(p.rx), "[ inf inf inf ]");
  EXPECT_EQ(shown(p.fx), "232");
}

// Solutions were lost on regeneration: with a working lower bound the variable stayed unswapped.
TYPED_TEST(StageTwo, HalfFreeVariableIsTurnedWithItsWorkingBound) {
  using T = TypeParam;
  Tessik<T> p = programOf<T>("[][][][][[17 23]][1000][1004][0 0][-inf 0][100 10]");
  p.lx[1] = T(48);
  p.swapHalfFree(false);
  EXPECT_EQ(shown(p.swappedComponents), "[ 1 ]");
  EXPECT_EQ(shown(p.lx), "[ -100 0 ]");
  EXPECT_EQ(shown(p.rx), "[ -48 10 ]");
  EXPECT_EQ(shown(p.fx), "20");
}

// A run with free variables ended with "ineq bounds error1" after its first solution.
TYPED_TEST(StageTwo, WorkingBoundsDoNotTightenRows) {
  using T = TypeParam;
  Tessik<T> p = programOf<T>("[][][][][[17 23]][1000][1004][0 0][-inf 0][inf inf]");
  p.lx[1] = T(59);
  p.rx[1] = T(59);
  p.rx[2] = T(0);
  p.tightenRows(true);
  EXPECT_EQ(shown(p.lu), "[ 1000 ]");
  EXPECT_EQ(shown(p.ru), "[ 1004 ]");
}

TYPED_TEST(StageTwo, SwappingZeroLeavesNoNegativeZero) {
  using T = TypeParam;
  Tessik<T> p = programOf<T>("[][][[0 1]][1][][][][0 0][-inf 0][0 1]");
  p.swapHalfFree(false);
  EXPECT_EQ(shown(p.Ag), "[ 0 1 ]");
  EXPECT_EQ(shown(p.lx), "[ 0 0 ]");
}

TYPED_TEST(StageTwo, InequationsMoveInToWhatTheVariablesAllow) {
  using T = TypeParam;
  Tessik<T> p =
      programOf<T>("[][][][][[1 -2 0][1 1 0][0 0 1]][-100 2 -7][100 3 7][0 0 0][-1 0 -inf][4 3 inf]");
  p.tightenRows(true);
  EXPECT_EQ(shown(p.lu), "[ -7 2 -7 ]");
  EXPECT_EQ(shown(p.ru), "[ 4 3 7 ]");
}

TYPED_TEST(StageTwo, AnEquationMayLieAtTheEndOfItsRange) {
  using T = TypeParam;
  Tessik<T> p = programOf<T>("[][][[1 -1][1 -1]][-4 4][][][][0 0][0 0][4 4]");
  p.tightenRows(false);
  EXPECT_EQ(shown(p.bg), "[ -4 4 ]");
}

// Only zero itself is left out: a coefficient below the tolerance still moves its row.
TYPED_TEST(StageTwo, CoefficientsBelowTheToleranceCount) {
  using T = TypeParam;
  Tessik<T> p = programOf<T>("[][][][][[1]][-5][5][0][0][400000000]");
  p.Au[1][1] = T(1) / T(2000000000L);
  p.tightenRows(true);
  EXPECT_EQ(shown(p.lu), "[ 0 ]");
  EXPECT_EQ(toText(p.ru[1]), toText(T(0.2L)));
}

// Zero coefficients of unbounded variables say nothing: no zero times infinity.
TYPED_TEST(StageTwo, ZeroCoefficientsAreLeftOut) {
  using T = TypeParam;
  Tessik<T> p = programOf<T>("[][][[1 0]][3][[2 0]][-9][9][0 0][0 -inf][4 inf]");
  p.tightenRows(true);
  p.tightenRows(false);
  EXPECT_EQ(shown(p.lu), "[ 0 ]");
  EXPECT_EQ(shown(p.ru), "[ 8 ]");
  EXPECT_EQ(shown(p.bg), "[ 3 ]");
}

// The line that precedes the failure is part of what the user reads.
template <class Statement>
void expectRefusal(Statement statement, const std::string& line, const std::string& message) {
  EXPECT_EXIT(statement(), ::testing::ExitedWithCode(1),
              "^" + testing::literal(line) + "\n\n\\*\\*\\* FAIL: " + testing::literal(message) + "\n$");
}

TYPED_TEST(StageTwo, AnInequationOutOfReachEndsTheRun) {
  using T = TypeParam;
  Tessik<T> p = programOf<T>("[][][][][[1 1][1 -1]][0 8][9 9][0 0][0 0][4 4]");
  p.optFile = "x.opt";
  expectRefusal([&p] { p.tightenRows(true); }, "x.opt: Inequality #2, this->lu = 8, this->ru = 4",
                "Unfulfillable inequality detected --> NO SOLUTIONS!");
}

TYPED_TEST(StageTwo, AnEquationOutOfReachEndsTheRun) {
  using T = TypeParam;
  Tessik<T> p = programOf<T>("[][][[1 1][1 -1]][3 -5][][][][0 0][0 0][4 4]");
  p.optFile = "x.opt";
  expectRefusal([&p] { p.tightenRows(false); }, "x.opt: Equality #2, lg = -4, this->bg = -5, rg = 4",
                "Unfulfillable equality detected --> NO SOLUTIONS!");
  Tessik<T> above = programOf<T>("[][][[1 1]][2][][][][0 0][0 3][inf 4]");
  above.optFile = "y.opt";
  expectRefusal([&above] { above.tightenRows(false); }, "y.opt: Equality #1, lg = 3, this->bg = 2, rg = inf",
                "Unfulfillable equality detected --> NO SOLUTIONS!");
}

TYPED_TEST(StageTwo, TranslationStartsEveryVariableAtZero) {
  using T = TypeParam;
  Tessik<T> p = programOf<T>("[-inf][[1 2 1]][[3 4 1]][20][[5 6 1]][10][30][0 0 0][2 -3 -inf][7 1 inf]");
  p.computeAtu();
  p.tu = true;
  p.ltu() = T(0);
  p.rtu() = T(50);
  p.translate();
  EXPECT_EQ(shown(p.lx), "[ 2 -3 -inf ]");
  EXPECT_EQ(shown(p.rx), "[ 5 4 inf ]");
  EXPECT_EQ(shown(p.lrtu), "4 .. 54");
  EXPECT_EQ(shown(p.bg), "[ 26 ]");
  EXPECT_EQ(shown(p.lu), "[ 18 ]");
  EXPECT_EQ(shown(p.ru), "[ 38 ]");
}

// Digits and fractions have scaled the target rows since their sum was formed; the bounds move by the new
// one.
TYPED_TEST(StageTwo, TheCombinedTargetIsFormedAnewBeforeItIsMoved) {
  using T = TypeParam;
  Tessik<T> p = programOf<T>("[-inf][[0.5 1]][][][][][][1 0][0.3 1][0.9 4]");
  p.prepareStageOne(false, false);
  p.tu = true;
  p.ltu() = T(0);
  p.rtu() = T(10);
  p.prepareStageTwo(false);
  EXPECT_EQ(shown(p.atu), "[ 1 20 ]");
  // Twenty times as large, then moved by 1 * 3 + 20 * 1.
  EXPECT_EQ(shown(p.lrtu), "-23 .. 177");
}

TYPED_TEST(StageTwo, RowsAreTightenedBeforeTheyAreMoved) {
  using T = TypeParam;
  Tessik<T> p = programOf<T>("[][][][][[1 1]][-5][100][0 0][1 0][3 4]");
  p.prepareStageTwo(false);
  EXPECT_EQ(shown(p.lu), "[ 0 ]");  // 1 .. 7, moved by 1
  EXPECT_EQ(shown(p.ru), "[ 6 ]");
  Tessik<T> crossed = programOf<T>("[][][][][[1 1]][8][9][0 0][1 0][3 4]");
  EXPECT_FAILURE(crossed.prepareStageTwo(false), "Unfulfillable inequality detected --> NO SOLUTIONS!");
  Tessik<T> beyond = programOf<T>("[][][[1 1]][8][][][][0 0][1 0][3 4]");
  EXPECT_FAILURE(beyond.prepareStageTwo(false), "Unfulfillable equality detected --> NO SOLUTIONS!");
}

TEST(StageTwoPrecision, TightenAndTranslateOverflowByName) {
  Tessik<dbl_t> wide = programOf<dbl_t>("[][][][][[900000000]][0][1][0][0][2]");
  expectPrecisionException([&wide] { wide.tightenRows(true); }, "llu overflow");
  auto expect = [](const std::string& text, const char* message) {
    Tessik<dbl_t> p = programOf<dbl_t>(text);
    if (p.At.M > 0) {
      p.tu = true;
      p.computeAtu();
      (message[0] == 'l' ? p.ltu() : p.rtu()) = 0;
    }
    expectPrecisionException([&p] { p.translate(); }, message);
  };
  expect("[][][[2]][0][][][][0][900000000][900000001]", "this->bg overflow");
  expect("[][][][][[2]][0][1][0][900000000][900000001]", "this->lu overflow");
  expect("[][][][][[1]][900000000][1900000001][0][900000000][900000001]", "this->ru overflow");
  expect("[-inf][[2]][][][][][][0][900000000][900000001]", "ltu overflow");
  expect("[-inf][[2]][][][][][][0][900000000][900000001]", "rtu overflow");
  // The width of a variable alone.
  expect("[][][][][[1]][0][1][0][-900000000][900000000]", "this->ru overflow");
  // The sum is small, its parts are not.
  expect("[][][[2 -2]][0][][][][0 0][900000000 900000000][900000001 900000001]", "this->bg overflow");
}

// The whole of stage two on the two-variable example, after stage one.
TYPED_TEST(StageTwo, TheExampleReachesItsNormalForm) {
  using T = TypeParam;
  Tessik<T> p = programOf<T>("[-inf][[1 1]][[1 2]][7][[3 -1]][0][inf][0 0][0 0][10 10]");
  p.prepareStageOne(true, false);
  p.prepareStageTwo(false);
  EXPECT_EQ(shown(p.Ag), "[ 1 2 0 ][ 3 -1 -1 ]");
  EXPECT_EQ(shown(p.bg), "[ 7 0 ]");
  EXPECT_EQ(shown(p.atu), "[ 1 1 0 ]");
  EXPECT_EQ(shown(p.lx), "[ 0 0 0 ]");
  EXPECT_EQ(shown(p.rx), "[ 10 10 inf ]");
}

TYPED_TEST(StageTwo, BothTypesAgreeOnADecimalProgram) {
  using T = TypeParam;
  Tessik<T> p = programOf<T>(
      "[-inf 2.5][[0.1 0.25 1][1 1 1]][[0.5 0.1 2]][3.3][[1.5 -0.2 0]][-inf][4.4][1 2 0]"
      "[0.1 -inf 3][9.9 2.55 3]");
  p.prepareStageOne(true, false);
  p.prepareStageTwo(false);
  EXPECT_EQ(shown(p.fixedComponents), "3:3 ");
  EXPECT_EQ(shown(p.swappedComponents), "[ 2 ]");
  EXPECT_EQ(shown(p.lx), "[ 1 -255 0 0 0 ]");
  EXPECT_EQ(shown(p.rx), "[ 98 inf inf inf inf ]");
  // 0.05 y1 - 0.001 y2 = -2.7 times 1000, moved by the offsets 1 and -255.
  EXPECT_EQ(shown(p.Ag[1]), "[ 50 -1 0 0 0 ]");
  EXPECT_EQ(toText(p.bg[1]), "-3005");
}

}  // namespace
}  // namespace latbox
