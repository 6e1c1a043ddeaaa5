// Which of two points has the smaller target norm, where a dbl_t tells no difference or a false one.
#include "program/target_order.h"

#include <gtest/gtest.h>

#include "numbers/number.h"
#include "support/program.h"

namespace latbox {
namespace {

template <class T>
class TargetOrder : public ::testing::Test {
 protected:
  // The sign for two points of the program as it is prepared; both ways, which must agree.
  static int order(const std::string& text, const char* x, const char* y) {
    Tessik<T> program = testing::programOf<T>(text);
    program.prepareStageOne(true, false);
    return order(program, x, y);
  }
  static int order(const Tessik<T>& program, const char* x, const char* y) {
    const Vector<T> first(x), second(y);
    const T a = norm(program, first);
    const T b = norm(program, second);
    const int result = compareTargetNorms(program, first, a, second, b);
    EXPECT_EQ(compareTargetNorms(program, second, b, first, a), -result);
    return result;
  }
  static T norm(const Tessik<T>& program, const Vector<T>& x) {
    Vector<T> values(program.At.M);
    for (long i = 1; i <= program.At.M; ++i)
      for (long j = 1; j <= x.MN; ++j) values[i] += program.At[i][j] * x[j];
    return program.targetNorms(values, x).left;
  }
};
using NumberTypes = ::testing::Types<dbl_t, QQ>;
TYPED_TEST_SUITE(TargetOrder, NumberTypes);

std::string twoVariables(const std::string& target, const std::string& coefficients) {
  return "[ " + target + " ] [ [ " + coefficients +
         " ] ] [ ] [ ] [ [ 1 1 ] ] [ 1 ] [ 7 ] [ 0 0 ] [ 0 0 ] [ 5 5 ]";
}

TYPED_TEST(TargetOrder, ADifferenceThatShows) {
  EXPECT_EQ(this->order(twoVariables("-inf", "1 2"), "[ 1 0 ]", "[ 0 1 ]"), -1);
  EXPECT_EQ(this->order(twoVariables("inf", "1 2"), "[ 1 0 ]", "[ 0 1 ]"), 1);
  EXPECT_EQ(this->order(twoVariables("-inf", "1 2"), "[ 2 0 ]", "[ 0 1 ]"), 0);
}

// Below the tolerance of standard precision, and real: by the program there is a better point.
TYPED_TEST(TargetOrder, ARealDifferenceWithinTheTolerance) {
  EXPECT_EQ(this->order(twoVariables("-inf", "1 1.0000000005"), "[ 1 0 ]", "[ 0 1 ]"), -1);
  EXPECT_EQ(this->order(twoVariables("inf", "1 1.0000000005"), "[ 1 0 ]", "[ 0 1 ]"), 1);
  EXPECT_EQ(this->order(twoVariables("-inf", "0.25 0.2500000001"), "[ 3 0 ]", "[ 0 3 ]"), -1);
}

// 0.1 three times is not 0.3 in binary, but the program says that both are equal.
TYPED_TEST(TargetOrder, RoundingIsNoDifference) {
  EXPECT_EQ(this->order(twoVariables("-inf", "0.1 0.3"), "[ 3 0 ]", "[ 0 1 ]"), 0);
  EXPECT_EQ(this->order(twoVariables("inf", "0.1 0.3"), "[ 3 0 ]", "[ 0 1 ]"), 0);
  EXPECT_EQ(this->order(twoVariables("-inf", "0.7 0.1"), "[ 1 0 ]", "[ 0 7 ]"), 0);
}

// Points on a grid of one digit: 0.1 + 0.2 against 0.3.
TYPED_TEST(TargetOrder, RoundingOfPointsOnADecimalGridIsNoDifference) {
  const std::string text =
      "[ -inf ] [ [ 1 1 1 ] ] [ ] [ ] [ [ 1 1 1 ] ] [ 0.1 ] [ 0.9 ] [ 1 1 1 ] [ 0 0 0 ] [ 1 1 1 ]";
  auto program = testing::programOf<TypeParam>(text);
  EXPECT_EQ(this->order(program, "[ 0.1 0.2 0 ]", "[ 0 0 0.3 ]"), 0);
  EXPECT_EQ(this->order(program, "[ 0.1 0.2 0 ]", "[ 0 0 0.4 ]"), -1);
}

// Off the grid nothing can be told of a difference within the tolerance; exact arithmetic always can.
TYPED_TEST(TargetOrder, OffTheGrid) {
  const auto program = testing::programOf<TypeParam>(twoVariables("-inf", "1 1.0000000005"));
  const int sign = std::is_same_v<TypeParam, QQ> ? -1 : 0;
  EXPECT_EQ(this->order(program, "[ 1.5 0 ]", "[ 0 1.5 ]"), sign);
  EXPECT_EQ(this->order(program, "[ 1 0 ]", "[ 0 1 ]"), -1);
}

// With more digits than a dbl_t tells apart there is no grid.
TYPED_TEST(TargetOrder, AGridOfTooManyDigits) {
  const auto program = testing::programOf<TypeParam>(
      "[ -inf ] [ [ 1 1.0000000005 ] ] [ ] [ ] [ [ 1 1 ] ] [ 1 ] [ 7 ] [ 19 19 ] [ 0 0 ] [ 5 5 ]");
  EXPECT_EQ(this->order(program, "[ 1 0 ]", "[ 0 1 ]"), (std::is_same_v<TypeParam, QQ> ? -1 : 0));
}

// A fixed variable has its value, on whatever grid.
TYPED_TEST(TargetOrder, AFixedVariableNeedsNoGrid) {
  const auto program = testing::programOf<TypeParam>(
      "[ -inf ] [ [ 1 1.0000000005 1 ] ] [ ] [ ] [ [ 1 1 1 ] ] [ 1 ] [ 7 ] [ 0 0 0 ] [ 0 0 0.5 ] [ 5 5 0.5 "
      "]");
  EXPECT_EQ(this->order(program, "[ 1 0 0.5 ]", "[ 0 1 0.5 ]"), -1);
  EXPECT_EQ(this->order(program, "[ 0 1 0.5 ]", "[ 0 1 0.5 ]"), 0);
}

// Bounds that finds have moved may meet; the variable is no more fixed by that than before.
TYPED_TEST(TargetOrder, BoundsThatFindsHaveMovedFixNothing) {
  auto program = testing::programOf<TypeParam>(
      "[ -inf ] [ [ 1 1.0000000005 ] ] [ ] [ ] [ [ 1 1 ] ] [ 1 ] [ 3 ] [ 0 0 ] [ 0 0 ] [ 4 inf ]");
  program.rx[2] = TypeParam(0);
  EXPECT_EQ(this->order(program, "[ 1 0 ]", "[ 0 1 ]"), -1);
  EXPECT_EQ(this->order(program, "[ 0 1 ]", "[ 1 0 ]"), 1);
}

// A variable without weight may lie off its grid.
TYPED_TEST(TargetOrder, AVariableWithoutWeightNeedsNoGrid) {
  const auto program = testing::programOf<TypeParam>(
      "[ -inf ] [ [ 1 1.0000000005 0 ] ] [ ] [ ] [ [ 1 1 1 ] ] [ 1 ] [ 7 ] [ 0 0 0 ] [ 0 0 0 ] [ 5 5 5 ]");
  EXPECT_EQ(this->order(program, "[ 1 0 0.5 ]", "[ 0 1 0.25 ]"), -1);
}

// Two targets of opposite directions: weights that cancel leave what the other rows tell.
TYPED_TEST(TargetOrder, SeveralTargets) {
  const auto program = testing::programOf<TypeParam>(
      "[ -inf inf ] [ [ 2 2.0000000005 ] [ 1 1.0000000005 ] ] [ ] [ ] [ [ 1 1 ] ] [ 1 ] [ 7 ] [ 0 0 ] [ 0 0 "
      "] [ 5 5 ]");
  EXPECT_EQ(this->order(program, "[ 1 0 ]", "[ 0 1 ]"), 0);
}

// Targets with a value become deviation variables, and these are what the norm adds up.
TYPED_TEST(TargetOrder, DeviationsOfTargetsWithAValue) {
  auto program = testing::programOf<TypeParam>(
      "[ 3 ] [ [ 1 2 ] ] [ ] [ ] [ [ 1 1 ] ] [ 1 ] [ 7 ] [ 0 0 ] [ 0 0 ] [ 5 5 ]");
  program.prepareStageOne(true, false);
  ASSERT_EQ(program.deviationCount, 2);
  EXPECT_EQ(this->order(program, "[ 1 1 0 0 ]", "[ 2 0 1 0 ]"), -1);
  EXPECT_EQ(this->order(program, "[ 2 0 1 0 ]", "[ 0 2 0 1 ]"), 0);
}

// Infinite norms stand at the ends and are not computed.
TYPED_TEST(TargetOrder, Infinite) {
  using T = TypeParam;
  const auto program = testing::programOf<T>(twoVariables("-inf", "0.1 0.2"));
  const Vector<T> x("[ 1 0 ]");
  EXPECT_EQ(compareTargetNorms(program, x, T(5), x, infinity<T>()), -1);
  EXPECT_EQ(compareTargetNorms(program, x, infinity<T>(), x, T(5)), 1);
  EXPECT_EQ(compareTargetNorms(program, x, T(-infinity<T>()), x, T(5)), -1);
  EXPECT_EQ(compareTargetNorms(program, x, infinity<T>(), x, infinity<T>()), 0);
}

}  // namespace
}  // namespace latbox
