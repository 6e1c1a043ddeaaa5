#include "program/generation.h"
#include "lib/exceptions.h"
#include "support/failure.h"
#include "support/lattice.h"

namespace latbox {
namespace {

using testing::latticeOf;
using testing::preparedLattice;
using testing::shown;

template <class T>
class Generation : public ::testing::Test {};
using NumberTypes = ::testing::Types<dbl_t, QQ>;
TYPED_TEST_SUITE(Generation, NumberTypes);

TYPED_TEST(Generation, SmallExample) {
  using T = TypeParam;
  auto l = latticeOf<T>(testing::SMALL);
  EXPECT_EQ(shown(l->B_save), "[ -8 -4 -4 1 ][ 4 2 0 0 ][ 4 0 2 0 ]");
  EXPECT_EQ(shown(l->B), shown(l->B_save));
  EXPECT_EQ(shown(l->lbnd), "[ -4 -4 -4 1 ]");
  EXPECT_EQ(shown(l->ubnd), "[ 4 4 4 1 ]");
  EXPECT_EQ(shown(l->lbndSaved), shown(l->lbnd));
  EXPECT_EQ(shown(l->ubndSaved), shown(l->ubnd));
  EXPECT_EQ(shown(l->c), "[ 2 1 1 1 ]");
  EXPECT_EQ(l->R, T(4));
  EXPECT_EQ(l->rank, 3);
  EXPECT_EQ(l->dim, 4);
  EXPECT_EQ(l->checkMode, CHECK_MODE_FINAL);
  EXPECT_EQ(l->TT.MN, 1);
  EXPECT_EQ(l->normBound, T(3 * 49));
  EXPECT_FALSE(l->symmetricBounds);  // the inhomogeneous coordinate is 1 on both sides
  EXPECT_FALSE(l->generatedTu);
}

TYPED_TEST(Generation, SymmetricOnlyWithoutInhomogeneousCoordinate) {
  auto l = latticeOf<TypeParam>(testing::SMALL);
  l->lbnd[4] = l->ubnd[4] = TypeParam(0);
  l->takeBounds(2);
  EXPECT_TRUE(l->symmetricBounds);
}

// The range of the target, 2 rows of coefficients, and both check bounds 0.
TYPED_TEST(Generation, NeitherTargetBoundNorRows) {
  using T = TypeParam;
  auto l = latticeOf<T>("[ -inf ] [ [ 1 1 ] ] [ ] [ ] [ ] [ ] [ ] [ 0 0 ] [ 0 0 ] [ 4 6 ]");
  EXPECT_EQ(l->R, T(12));
  EXPECT_EQ(shown(l->B_save), "[ -12 -12 1 ][ 6 0 0 ][ 0 4 0 ]");
}

TYPED_TEST(Generation, CombinedTargetIsTheFirstCoordinate) {
  using T = TypeParam;
  auto l = preparedLattice<T>(testing::SMALL_TARGET);
  l->tu = l->program.tu = true;
  l->ltu() = T(-4);
  l->rtu() = T(0);
  generateLattice(*l, false);
  EXPECT_TRUE(l->generatedTu);
  EXPECT_EQ(shown(l->B_save), "[ 4 -8 -4 -4 1 ][ 2 4 2 0 0 ][ -2 4 0 2 0 ]");
  EXPECT_EQ(shown(l->lbnd), "[ 0 -4 -4 -4 1 ]");
  EXPECT_EQ(shown(l->ubnd), "[ 0 4 4 4 1 ]");
  EXPECT_EQ(shown(l->c), "[ 1 2 1 1 1 ]");
}

TYPED_TEST(Generation, TargetWithoutWidthTakesTheRange) {
  using T = TypeParam;
  auto l = preparedLattice<T>(testing::SMALL_TARGET);
  l->tu = true;
  l->ltu() = l->rtu() = T(-1);
  generateLattice(*l, false);
  EXPECT_EQ(l->c[1], T(4));
  EXPECT_EQ(l->B_save[1][1], T(8));
}

// The layout is that of the base part, though `program` has gained a bound since.
TYPED_TEST(Generation, LayoutIsTheBaseParts) {
  auto l = latticeOf<TypeParam>(testing::SMALL_TARGET);
  l->program.tu = true;
  EXPECT_FALSE(l->generatedTu);
  EXPECT_TRUE(programAhead(*l));
  EXPECT_EQ(l->dim, 4);
  EXPECT_EQ(shown(testing::latticeVector(*l, "[ 1 1 ]")), "[ 0 -2 -2 1 ]");
}

// The width of a variable is the translated upper bound less the untranslated lower one: for -2..4 that is
// 6 - (-2) and not 6.
TYPED_TEST(Generation, WidthTakesTheUntranslatedLowerBound) {
  using T = TypeParam;
  auto l = latticeOf<T>("[ ] [ ] [ ] [ ] [ [ 1 1 ] ] [ 1 ] [ 3 ] [ 0 0 ] [ -2 0 ] [ 4 3 ]");
  EXPECT_EQ(l->R, T(6));
  EXPECT_EQ(l->c[2], T(6) / T(8));
  EXPECT_EQ(l->B_save[2][2], T(3) / T(2));
  EXPECT_EQ(l->c[3], T(2));
}

TYPED_TEST(Generation, NoWidthAgainstTheUntranslatedLowerBoundFails) {
  auto l = preparedLattice<TypeParam>("[ ] [ ] [ ] [ ] [ [ 1 1 ] ] [ 1 ] [ 7 ] [ 0 0 ] [ 2 0 ] [ 4 3 ]");
  EXPECT_FAILURE(prepareLattice(*l), "sol bounds error");
}

TYPED_TEST(Generation, RowWithoutWidthFails) {
  auto l = latticeOf<TypeParam>(testing::SMALL);
  l->lu[1] = l->ru[1];
  EXPECT_FAILURE(generateLattice(*l, false), "ineq bounds error1");
}

TYPED_TEST(Generation, FreeAndHalfFreeVariables) {
  using T = TypeParam;
  auto l = latticeOf<T>(
      "[ ] [ ] [ ] [ ] [ [ 1 1 1 1 ] ] [ 1 ] [ 5 ] [ 0 0 0 0 ] [ 0 -inf 0 -inf ] [ 4 inf inf 3 ]");
  EXPECT_EQ(shown(l->lbnd), "[ -4 -4 -inf -4 -4 1 ]");
  EXPECT_EQ(shown(l->ubnd), "[ 4 4 inf inf inf 1 ]");
  EXPECT_EQ(shown(l->c), "[ 1 1 1 1 1 1 ]");
  EXPECT_TRUE(isInfinite(l->normBound));
}

TYPED_TEST(Generation, DeviationVariablesTakeTheRangeAsMultiplier) {
  using T = TypeParam;
  auto l = preparedLattice<T>("[ 3 ] [ [ 1 1 ] ] [ ] [ ] [ ] [ ] [ ] [ 0 0 ] [ 0 0 ] [ 4 6 ]");
  generateLattice(*l, true);
  ASSERT_EQ(l->deviationCount, 2);
  EXPECT_EQ(l->c[l->dim - 2], T(12));
  EXPECT_EQ(l->c[l->dim - 1], T(12));
  EXPECT_TRUE(isInfinite(l->ubnd[l->dim - 1]));
}

TYPED_TEST(Generation, EquationLattice) {
  using T = TypeParam;
  auto l = preparedLattice<T>("[ ] [ ] [ [ 1 2 ] ] [ 7 ] [ ] [ ] [ ] [ 0 0 ] [ 0 0 ] [ 10 10 ]");
  generateLattice(*l, true);
  EXPECT_EQ(l->checkMode, CHECK_MODE_EQUATIONS);
  EXPECT_EQ(shown(l->B_save), "[ -7 -10 -10 1 ][ 1 2 0 0 ][ 2 0 2 0 ]");
  EXPECT_EQ(shown(l->lbnd), "[ 0 -10 -10 1 ]");
  EXPECT_EQ(shown(l->ubnd), "[ 0 10 10 1 ]");
  EXPECT_EQ(shown(l->c), "[ 0 1 1 1 ]");
}

// Each row of the final basis satisfies the equations: homogeneous ones map to differences of solutions.
TYPED_TEST(Generation, EquationsLeaveTheKernel) {
  using T = TypeParam;
  auto l = latticeOf<T>("[ ] [ ] [ [ 3 5 7 ] ] [ 38 ] [ ] [ ] [ ] [ 0 0 0 ] [ 0 0 0 ] [ 10 10 10 ]");
  ASSERT_EQ(l->rank, 3);  // n + 1 - e
  EXPECT_EQ(l->dim, 4);
  EXPECT_EQ(l->B.M, 3);
  EXPECT_EQ(l->B_save.M, 3);
  EXPECT_EQ(l->TT.MN, 1);
  EXPECT_EQ(l->TT[1].M, 3);
  EXPECT_EQ(l->status.MN, 3);
  T greatest(0);
  for (long i = 1; i <= 3; ++i) {
    const Vector<T>& b = l->B_save[i];
    // 3 x1 + 5 x2 + 7 x3 = 38 for x = (10 + b) / 2 where the last coordinate is 1.
    EXPECT_EQ(T(3) * b[1] + T(5) * b[2] + T(7) * b[3], (T(76) - T(150)) * b[4]);
    greatest = gcd(greatest, b[4]);
  }
  EXPECT_EQ(greatest, T(1));
}

TYPED_TEST(Generation, EquationsWithAnInequation) {
  using T = TypeParam;
  auto l =
      latticeOf<T>("[ ] [ ] [ [ 3 5 7 ] ] [ 38 ] [ [ 1 1 1 ] ] [ 4 ] [ 9 ] [ 0 0 0 ] [ 0 0 0 ] [ 10 10 10 ]");
  EXPECT_EQ(l->rank, 3);
  EXPECT_EQ(l->dim, 5);
  EXPECT_TRUE(l->isMember(testing::latticeVector(*l, "[ 6 4 0 ]")));
  EXPECT_FALSE(l->isMember(testing::latticeVector(*l, "[ 6 4 1 ]")));
}

TYPED_TEST(Generation, NoIntegerSolution) {
  EXPECT_FAILURE(latticeOf<TypeParam>("[ ] [ ] [ [ 2 ] ] [ 1 ] [ ] [ ] [ ] [ 0 ] [ 0 ] [ 4 ]"),
                 "The equation system has no integer solution :(");
  EXPECT_FAILURE(
      latticeOf<TypeParam>("[ ] [ ] [ [ 6 10 14 ] ] [ 7 ] [ ] [ ] [ ] [ 0 0 0 ] [ 0 0 0 ] [ 9 9 9 ]"),
      "The equation system has no integer solution :(");
}

TYPED_TEST(Generation, ProgramLineAtVerbosityTwo) {
  auto l = preparedLattice<TypeParam>(testing::SMALL);
  l->params.verb.set(2);
  ::testing::internal::CaptureStdout();
  prepareLattice(*l);
  EXPECT_NE(::testing::internal::GetCapturedStdout().find(
                "Optimization program: Targets = 0, Equations = 0, Inequations = 1, Variables = 2"),
            std::string::npos);
}

TYPED_TEST(Generation, SecondGenerationStartsAnew) {
  auto l = latticeOf<TypeParam>(testing::SMALL);
  const std::string rows = shown(l->B_save);
  l->setScale(1, TypeParam(3));
  l->swapBase(1, 2, false);
  prepare(*l, false, false);
  prepareLattice(*l);
  EXPECT_EQ(shown(l->B), rows);
  EXPECT_EQ(l->TT.MN, 1);
  EXPECT_TRUE(l->unweighted());
}

// Stars that stand when a lattice is prepared are judged against it, and only those that fit stay.
TYPED_TEST(Generation, StarsAreJudgedAgain) {
  using T = TypeParam;
  auto l = preparedLattice<T>(testing::SMALL);
  Star<T> good, bad;
  good = Vector<T>("[ 1 1 ]");
  good.secondsUntilDiscovered = 0;
  bad = Vector<T>("[ 4 4 ]");
  l->program.stars.append(good);
  l->program.stars.append(bad);
  prepareLattice(*l);
  ASSERT_EQ(l->program.stars.MN, 1);
  EXPECT_EQ(shown<T>(l->program.stars[1]), "[ 1 1 ]");
  ASSERT_EQ(l->solutions.MN, 1);
  EXPECT_EQ(l->solutions[1].secondsUntilDiscovered, 0);
}

TEST(GenerationStandard, BasisBeyondTheLimitAsksForExactArithmetic) {
  auto l = preparedLattice<dbl_t>("[ ] [ ] [ ] [ ] [ [ 300000000 1 ] ] [ 1 ] [ 3 ] [ 0 0 ] [ 0 0 ] [ 3 3 ]");
  testing::expectPrecisionException([&] { prepareLattice(*l); }, "B_save overflow");
}

// Symptom: the saved lattice of such a program did not hold its solutions when it was read back, for 17
// digits show too few places of the multiples of a sixth. Up to a range of 10^6 they show enough.
TEST(GenerationStandard, FractionsOfAWideRangeAskForExactArithmetic) {
  const std::string rows = "[ ] [ ] [ ] [ ] [ [ 1 1 0 ] ] [ 7 ] [ 12 ] [ 0 0 0 ] ";
  auto wide = preparedLattice<dbl_t>(rows + "[ -1 0 0 ] [ 4 9973 499 ]");
  testing::expectPrecisionException([&] { prepareLattice(*wide); }, "B_save overflow");
  auto narrow = latticeOf<dbl_t>(rows + "[ -1 0 0 ] [ 4 9973 19 ]");
  EXPECT_EQ(narrow->R, 5 * 9973 * 19);
  auto few = latticeOf<dbl_t>(rows + "[ -3 0 0 ] [ 4 9973 499 ]");  // tenths
  EXPECT_EQ(few->R, 5L * 7 * 9973 * 499);
}

// What the equations alone need fits; the rows of their kernel times the inequation's coefficients do not.
TEST(GenerationStandard, TransformedBasisBeyondTheLimitAsksForExactArithmetic) {
  auto l = preparedLattice<dbl_t>(
      "[ ] [ ] [ [ 1009 1013 ] ] [ 2022 ] [ [ 9000001 1 ] ] [ 1 ] [ 9000003 ] [ 0 0 ] [ 0 0 ] [ 1 7 ]");
  testing::expectPrecisionException([&] { prepareLattice(*l); }, "Overflow when applying transformation");
}

}  // namespace
}  // namespace latbox
