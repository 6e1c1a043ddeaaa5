#include "numbers/tolerance.h"

#include <gtest/gtest.h>

#include <cmath>

namespace latbox {
namespace {

template <class T>
class ToleranceOf : public ::testing::Test {};
using NumberTypes = ::testing::Types<dbl_t, QQ>;
TYPED_TEST_SUITE(ToleranceOf, NumberTypes);

template <class T>
constexpr bool EXACT = std::is_same_v<T, QQ>;

TYPED_TEST(ToleranceOf, ASmallNumberVanishesInFloatingPointAlone) {
  using T = TypeParam;
  EXPECT_TRUE(vanishes(T(0)));
  EXPECT_EQ(vanishes(T(1) / T(2000000000)), !EXACT<T>);
  EXPECT_EQ(vanishes(T(-1) / T(2000000000)), !EXACT<T>);
  EXPECT_FALSE(vanishes(T(1) / T(999999999)));
  EXPECT_FALSE(vanishes(infinity<T>()));
}

TYPED_TEST(ToleranceOf, ASmallExcessCountsInExactNumbersAlone) {
  using T = TypeParam;
  const T small = T(1) / T(2000000000), large = T(1) / T(500000000);
  EXPECT_FALSE(exceeds(T(3), T(3)));
  EXPECT_EQ(exceeds(T(3) + small, T(3)), EXACT<T>);
  EXPECT_TRUE(exceeds(T(3) + large, T(3)));
  EXPECT_FALSE(exceeds(T(3), T(3) + large));
  EXPECT_TRUE(exceeds(infinity<T>(), T(3)));
  EXPECT_TRUE(exceeds(infinity<T>(), -infinity<T>()));
  EXPECT_FALSE(exceeds(infinity<T>(), infinity<T>()));
  EXPECT_FALSE(exceeds(-infinity<T>(), -infinity<T>()));
}

TYPED_TEST(ToleranceOf, NearWholeNumbers) {
  using T = TypeParam;
  const T small = T(1) / T(2000000000), large = T(1) / T(500000000);
  T x = T(5) - small;
  toNearWhole(x);
  EXPECT_TRUE(x == T(5));
  x = T(-5) - small;
  toNearWhole(x);
  EXPECT_TRUE(x == T(-5));
  x = T(5) - large;
  toNearWhole(x);
  EXPECT_TRUE(x == T(5) - large);
}

TYPED_TEST(ToleranceOf, ExactNumbersAreNotSnapped) {
  using T = TypeParam;
  const T near = T(5) + T(1) / T(2000000000);
  T x = near;
  snapToWhole(x);
  EXPECT_TRUE(x == (EXACT<T> ? near : T(5)));
  x = T(1) / T(2);
  snapToWhole(x);
  EXPECT_TRUE(x == T(1) / T(2));
}

TYPED_TEST(ToleranceOf, WhatCanBeStatedIsNoRounding) {
  using T = TypeParam;
  for (const T& x : {T(7), T(-7), T(1) / T(2), T(5) + T(1) / T(2000000000), T(0)})
    EXPECT_TRUE(withoutRounding(x) == x);
}

TEST(Tolerance, RoundingErrorsAreTakenBack) {
  EXPECT_EQ(withoutRounding(std::nextafter(3.0L, 4.0L)), 3.0L);
  EXPECT_EQ(withoutRounding(std::nextafter(-3.0L, 0.0L)), -3.0L);
  EXPECT_EQ(withoutRounding(3 * (1.0L / 3)), 1.0L);
  const dbl_t beyond = 3 + 16 * (std::nextafter(3.0L, 4.0L) - 3);
  EXPECT_EQ(withoutRounding(beyond), beyond);
  EXPECT_FALSE(std::signbit(withoutRounding(-0.0L)));
}

TYPED_TEST(ToleranceOf, DenominatorsAreCutInExactNumbersAlone) {
  using T = TypeParam;
  T x = T(1) / T(3);
  const T third = x;
  shorten(x);
  EXPECT_TRUE(x == third);
}

TEST(Tolerance, ALongDenominatorIsCutAndReduced) {
  QQ x = QQ(1) / (QQ("3") * QQ("1000000000000000000000"));
  x += QQ("1/2");
  const QQ before = x;
  shorten(x);
  EXPECT_LE(x.nenner.digits(), PRECISION_DIGITS);
  EXPECT_TRUE(isZero(QQ(x - before)));
  QQ canonical = x;
  canonical.normalize();
  EXPECT_EQ(toText(x), toText(canonical));
}

}  // namespace
}  // namespace latbox
