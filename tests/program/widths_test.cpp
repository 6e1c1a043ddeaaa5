#include "program/widths.h"
#include "lib/exceptions.h"
#include "program/divisors.h"
#include "support/failure.h"
#include "support/lattice.h"

namespace latbox {
namespace {

using testing::Draws;

template <class T>
class Widths : public ::testing::Test {
 protected:
  Lattice<T, dbl_t> lattice;

  // The rule as it is told: the width grows one by one.
  static T steppedWidth(const T& range, const T& b, T& s) {
    T d = b - s;
    if (d == T(0)) return T(0);
    T best = s, g = gcd(range, d), bestMultiple = range * d / g;
    while (g != d && g != range) {
      s -= T(1);
      d = b - s;
      g = gcd(range, d);
      const T multiple = range * d / g;
      if (multiple < bestMultiple) {
        best = s;
        bestMultiple = multiple;
      }
    }
    s = best;
    return b - s;
  }
};
using NumberTypes = ::testing::Types<dbl_t, QQ>;
TYPED_TEST_SUITE(Widths, NumberTypes);

TYPED_TEST(Widths, SteppingAndArithmeticAgree) {
  using T = TypeParam;
  Draws draws(7);
  const long cases = std::is_same_v<T, QQ> ? 1000 : 8000;
  for (long k = 0; k < cases; ++k) {
    const T range(draws.next(1, k % 3 == 0 ? 60 : 5000));
    const T b(draws.next(-50, 6000));
    T s = b - T(draws.next(0, k % 2 == 0 ? 80 : 6000)), t = s;
    const T expected = this->steppedWidth(range, b, s);
    const T width = adjustWidth(range, b, t);
    ASSERT_EQ(width, expected) << range << ' ' << b;
    ASSERT_EQ(t, s);
  }
}

TYPED_TEST(Widths, ZeroWidthStays) {
  TypeParam s(5);
  EXPECT_EQ(adjustWidth(TypeParam(12), TypeParam(5), s), TypeParam(0));
  EXPECT_EQ(s, TypeParam(5));
}

TYPED_TEST(Widths, AboveTheRangeTheNextMultipleIsTaken) {
  TypeParam s(0);
  EXPECT_EQ(adjustWidth(TypeParam(4), TypeParam(9), s), TypeParam(12));
  EXPECT_EQ(s, TypeParam(-3));
}

TYPED_TEST(Widths, FractionalWidthIsRoundedOutwardFirst) {
  using T = TypeParam;
  T s = T(1) / T(2);
  EXPECT_EQ(adjustWidth(T(12), T(4), s), T(4));  // 7/2 grows to 4, which divides 12
  EXPECT_EQ(s, T(0));
}

TYPED_TEST(Widths, WideWidthsNeedNoSteps) {
  using T = TypeParam;
  T s(0);
  // One step of the rule for each of these widths would take minutes.
  EXPECT_EQ(adjustWidth(T(999999937), T(2), s), T(999999937));  // a prime
  s = T(0);
  EXPECT_EQ(adjustWidth(T(2), T(999999999), s), T(1000000000));
  for (long k = 0; k < 2000; ++k) {
    s = T(0);
    ASSERT_EQ(adjustWidth(T(1000000000), T(500000001 + k), s), T(1000000000));
  }
}

TYPED_TEST(Widths, RangeOfTwoLargePrimes) {
  using T = TypeParam;
  const T p = T(998244353), q = T(1000000007);
  EXPECT_EQ(divisorFrom(T(p * q), T(2)), p);
  EXPECT_EQ(divisorFrom(T(p * q), T(p + T(1))), q);
  EXPECT_EQ(divisorFrom(T(p * p), T(2)), p);
}

TEST(WidthsExact, DivisorsOfAPowerOfTen) {
  const QQ n = powerOfTen<QQ>(40);
  const QQ least = powerOfTen<QQ>(20) + QQ(1);
  QQ best = n;
  QQ two(1);
  for (long a = 0; a <= 40; ++a, two *= QQ(2)) {
    QQ product = two;
    for (long b = 0; b <= 40; ++b, product *= QQ(5))
      if (product >= least && product < best) best = product;
  }
  EXPECT_EQ(divisorFrom(n, least), best);
}

// Factors that are hidden in a large rest are overlooked; what comes out divides the range all the same.
TEST(WidthsExact, LargeRestStillGivesADivisor) {
  const QQ big = QQ("1000000000000000000000007") * QQ("1000000000000000000000007");  // a prime
  const QQ divisor = divisorFrom(QQ(big * QQ(6)), QQ(4));
  EXPECT_EQ(divisor, QQ(6));
  EXPECT_EQ(divisorFrom(big, QQ(2)), big);
}

TYPED_TEST(Widths, RangeIsTheMultipleOfAllWidths) {
  using T = TypeParam;
  auto l = testing::preparedLattice<T>(
      "[ ] [ ] [ ] [ ] [ [ 1 1 ] [ 1 2 ] ] [ 0 2 ] [ 5 9 ] [ 0 0 ] [ 0 0 ] [ 4 6 ]");
  EXPECT_EQ(computeRange(*l, true), T(12));
  EXPECT_EQ(computeRange(*l, false), T(420));  // 4, 6, 5, 7
}

TYPED_TEST(Widths, RowWithoutWidthFails) {
  auto l = testing::preparedLattice<TypeParam>(testing::SMALL);
  l->lu[1] = l->ru[1];
  EXPECT_FAILURE(computeRange(*l, false), "ineq bounds error1");
}

TYPED_TEST(Widths, TargetWidthMayGrow) {
  using T = TypeParam;
  auto l = testing::preparedLattice<T>(testing::SMALL);
  l->tu = true;
  l->ltu() = T(0);
  l->rtu() = T(3);
  EXPECT_EQ(computeRange(*l, false), T(4));
  EXPECT_EQ(l->ltu(), T(-1));
}

TYPED_TEST(Widths, OnlyUpperBoundsThatNobodyGaveMove) {
  using T = TypeParam;
  auto l = testing::preparedLattice<T>("[ ] [ ] [ ] [ ] [ [ 1 1 ] ] [ 1 ] [ 3 ] [ 0 0 ] [ 0 0 ] [ 6 inf ]");
  l->rx[2] = T(5);
  EXPECT_EQ(lcmOfWidths(*l, T(12), false), T(12));
  EXPECT_EQ(l->rx[1], T(6));
  EXPECT_EQ(l->rx[2], T(6));
}

TEST(WidthsStandard, LargeRangeAsksForExactArithmetic) {
  auto l = testing::preparedLattice<dbl_t>(
      "[ ] [ ] [ ] [ ] [ [ 1 1 ] ] [ 1 ] [ 3 ] [ 0 0 ] [ 0 0 ] [ 99991 99989 ]");
  testing::expectPrecisionException([&] { computeRange(*l, false); }, "R overflow");
}

TEST(WidthsExact, LargeRangeIsHeld) {
  auto l =
      testing::preparedLattice<QQ>("[ ] [ ] [ ] [ ] [ [ 1 1 ] ] [ 1 ] [ 3 ] [ 0 0 ] [ 0 0 ] [ 99991 99989 ]");
  EXPECT_EQ(computeRange(*l, false), QQ("19996000198"));
}

}  // namespace
}  // namespace latbox
