#include <gtest/gtest.h>

#include "lib/exceptions.h"
#include "support/failure.h"
#include "support/program.h"

namespace latbox {
namespace {

using testing::programOf;
using testing::shown;

template <class T>
class TessikTest : public ::testing::Test {};
using Numbers = ::testing::Types<dbl_t, QQ>;
TYPED_TEST_SUITE(TessikTest, Numbers);

TYPED_TEST(TessikTest, StartsEmpty) {
  const Tessik<TypeParam> p;
  EXPECT_EQ(shown(p.lrtu), "-inf .. inf");
  EXPECT_TRUE(p.allTargetsFinite);
  EXPECT_FALSE(p.tu);
  EXPECT_FALSE(p.writeEnabled);
  EXPECT_FALSE(p.finishEnabled);
  EXPECT_FALSE(p.prepared);
  EXPECT_EQ(p.n(), 0);
}

template <class T>
Tessik<T> filled() {
  Tessik<T> p = programOf<T>("[5][[1 1]][[1 2]][7][[3 -1]][0][inf][0 0][0 0][10 10]");
  p.optFile = "a.opt";
  p.solFile = "a.sol";
  p.ltu() = T(3);
  p.tu = p.writeEnabled = p.finishEnabled = p.prepared = true;
  p.allTargetsFinite = false;
  p.slackCount = 1;
  p.deviationCount = 2;
  p.stars.append(Star<T>());
  p.fixedComponents.add(1, T(2));
  p.swappedComponents.append(1);
  p.atu = p.At[1];
  return p;
}

TYPED_TEST(TessikTest, ResetEmptiesEverythingButTheNamesOnRequest) {
  for (const bool keep : {true, false}) {
    Tessik<TypeParam> p = filled<TypeParam>();
    p.reset(keep);
    EXPECT_EQ(p.optFile, keep ? "a.opt" : "");
    EXPECT_EQ(p.solFile, keep ? "a.sol" : "");
    EXPECT_EQ(p.dt.MN + p.kt.MN + p.At.M + p.atu.MN + p.bg.MN + p.lu.MN + p.ru.MN + p.Ag.M + p.Au.M, 0);
    EXPECT_EQ(p.dx.MN + p.lx.MN + p.rx.MN + p.fx.MN, 0);
    EXPECT_EQ(p.stars.MN + p.fixedComponents.MN + p.swappedComponents.MN, 0);
    EXPECT_EQ(p.slackCount + p.deviationCount, 0);
    EXPECT_EQ(shown(p.lrtu), "-inf .. inf");
    EXPECT_TRUE(p.allTargetsFinite);
    EXPECT_FALSE(p.tu || p.writeEnabled || p.finishEnabled || p.prepared);
  }
}

TYPED_TEST(TessikTest, ACopyTakesAllAndSharesNothing) {
  Tessik<TypeParam> p = filled<TypeParam>();
  const Tessik<TypeParam> copy = p;
  p.Ag[1][1] = TypeParam(99);
  p.stars.clear();
  EXPECT_EQ(shown(copy.Ag), "[ 1 2 ]");
  EXPECT_EQ(copy.stars.MN, 1);
  EXPECT_EQ(copy.optFile, "a.opt");
  EXPECT_TRUE(copy.writeEnabled && copy.finishEnabled && copy.prepared && copy.tu);
}

TYPED_TEST(TessikTest, AppendComponentSetsTheFreedomAndLeavesTheMatrices) {
  using T = TypeParam;
  Tessik<T> p = programOf<T>("[][][[1]][1][][][][0][0][1]");
  p.appendComponent(T(0), infinity<T>(), T(2));
  p.appendComponent(-infinity<T>(), T(1), T(0));
  p.appendComponent(-infinity<T>(), infinity<T>(), T(0));
  EXPECT_EQ(shown(p.lx), "[ 0 0 -inf -inf ]");
  EXPECT_EQ(shown(p.rx), "[ 1 inf 1 inf ]");
  EXPECT_EQ(shown(p.dx), "[ 0 2 0 0 ]");
  EXPECT_EQ(shown(p.fx), "0213");
  EXPECT_EQ(p.Ag.N, 1);
}

TYPED_TEST(TessikTest, SignsAndNorms) {
  using T = TypeParam;
  const Tessik<T> p = programOf<T>("[-inf inf][[1][1]][][][][][][0][0][1]");
  EXPECT_EQ(toText(p.targetSign(1)), "1");
  EXPECT_EQ(toText(p.targetSign(2)), "-1");
  EXPECT_EQ(toText(programOf<T>("[4][[1]][][][][][][0][0][1]").targetSign(1)), "1");
  EXPECT_EQ(toText(Tessik<T>::maxNorm(Vector<T>())), "0");
  EXPECT_EQ(toText(Tessik<T>::maxNorm(Vector<T>("[ 2 -7 3 ]"))), "7");
  EXPECT_EQ(toText(Tessik<T>::maxNorm(Vector<T>("[ 2 -inf ]"))), "inf");
  EXPECT_EQ(toText(p.targetNorm(Vector<T>("[ 2 -7 ]"))), "9");
}

TYPED_TEST(TessikTest, TargetNormRefusesAFiniteTarget) {
  using T = TypeParam;
  const Tessik<T> p = programOf<T>("[-inf 3][[1][1]][][][][][][0][0][1]");
  EXPECT_FAILURE(p.targetNorm(Vector<T>("[ 2 -7 ]")), "This should not be the case anymore!");
}

TEST(TessikPrecision, TargetNormAsksForExactNumbers) {
  const Tessik<dbl_t> p = programOf<dbl_t>("[-inf inf][[1][1]][][][][][][0][0][1]");
  testing::expectPrecisionException([&p] { p.targetNorm(Vector<dbl_t>("[ 600000000 -600000000 ]")); },
                                    "sum overflow");
  const Tessik<QQ> q = programOf<QQ>("[-inf inf][[1][1]][][][][][][0][0][1]");
  EXPECT_EQ(toText(q.targetNorm(Vector<QQ>("[ 600000000 -600000000 ]"))), "1200000000");
}

TYPED_TEST(TessikTest, NormsOfAnUnpreparedProgram) {
  using T = TypeParam;
  const Tessik<T> p = programOf<T>("[-inf inf 10][[1][1][1]][][][][][][0][0][1]");
  EXPECT_EQ(shown(p.targetNorms(Vector<T>("[ 5 2 7 ]"), Vector<T>("[ 1 ]"))), "6 .. 3");
}

TYPED_TEST(TessikTest, NormsOfAPreparedProgramRefuseAFiniteTarget) {
  using T = TypeParam;
  Tessik<T> p = programOf<T>("[10][[1]][][][][][][0][0][1]");
  p.prepared = true;
  EXPECT_FAILURE(p.targetNorms(Vector<T>("[ 5 ]"), Vector<T>("[ 1 ]")), "preparation inconsistency");
}

// Two targets, the second one finite: its deviation equation is row 1 of Ag, and there is no row 2.
TYPED_TEST(TessikTest, ADeviationTargetBeyondTheEquationsTakesItsOwnEquation) {
  using T = TypeParam;
  Tessik<T> p = programOf<T>("[-inf 10][[1 0][3 1]][][][][][][0 0][0 0][9 9]");
  p.prepareStageOne(true, false);
  ASSERT_EQ(p.Ag.M, 1);
  // x = (2, 1): 3 x1 + x2 = 7 misses 10 by 3, so p = 3, q = 0.
  const Vector<T> x("[ 2 1 3 0 ]");
  EXPECT_EQ(shown(p.targetNorms(p.At * x, x)), "5 .. 3");
}

// Regression: the slack norm missed a target with a value that had stayed in its place, and took another's
// equation.
TYPED_TEST(TessikTest, ADeviationTargetThatStaysInItsPlaceIsMeasuredToo) {
  using T = TypeParam;
  Tessik<T> p = programOf<T>("[-2 -inf inf 3][[6 -4][6 1][8 1][-5 0]][][][][][][0 0][0 0][6 3]");
  p.prepareStageOne(true, false);
  // x = (0, 0) misses -2 by 2 and 3 by 3; the fourth target stands first and keeps place 1.
  const Vector<T> x("[ 0 0 0 2 3 0 ]");
  EXPECT_EQ(shown(p.targetNorms(p.At * x, x)), "5 .. 5");
}

// By the target's number and not by that of its own equation: with an equation of the user in front, target 1
// is measured by that one.
TYPED_TEST(TessikTest, ADeviationTargetIsMeasuredByTheEquationOfItsNumber) {
  using T = TypeParam;
  Tessik<T> p = programOf<T>("[10][[3 1]][[1 1]][5][][][][0 0][0 0][9 9]");
  p.prepareStageOne(true, false);
  ASSERT_EQ(p.Ag.M, 2);
  const Vector<T> x("[ 2 1 3 0 ]");  // x1 + x2 - 5 = -2
  EXPECT_EQ(shown(p.targetNorms(p.At * x, x)), "3 .. 2");
}

TYPED_TEST(TessikTest, TheFiguresLineCountsAsTheDesignSays) {
  using T = TypeParam;
  Tessik<T> p = programOf<T>("[7][[1 1]][[1 2]][7][[3 -1][1 1]][0 0][inf 4][0 0][0 0][10 10]");
  p.prepareStageOne(true, false);
  ASSERT_EQ(p.slackCount, 1);
  ASSERT_EQ(p.deviationCount, 2);
  ::testing::internal::CaptureStdout();
  p.printProgram(true);
  p.printProgram(false);
  // Five variables: two of the user, a slack, a pair. The plus before the deviations is by design.
  EXPECT_EQ(::testing::internal::GetCapturedStdout(),
            "|-> Optimization program: Targets = 1, Equations = 1, Inequations = 2, Variables = 6\n");
}

TEST(FreedomDegreeText, IsItsNumber) {
  std::stringstream text;
  text << FreedomDegree::free << ' ' << FreedomDegree::noLower << " 4 x";
  FreedomDegree degree{};
  EXPECT_TRUE(text >> degree);
  EXPECT_EQ(degree, FreedomDegree::free);
  EXPECT_TRUE(text >> degree);
  EXPECT_EQ(degree, FreedomDegree::noLower);
  EXPECT_FALSE(text >> degree);
}

}  // namespace
}  // namespace latbox
