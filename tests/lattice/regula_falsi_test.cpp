// The rule of false position.
#include "lattice/regula_falsi.h"

#include "lattice/support.h"
#include "support/failure.h"

namespace latbox::testing {

template <class T>
class RegulaFalsiTest : public ::testing::Test {
 public:
  static T third() { return T(1) / T(3); }
};
TYPED_TEST_SUITE(RegulaFalsiTest, NumberTypes);

template <class T>
void expectNear(const T& value, dbl_t wanted) {
  EXPECT_NEAR(static_cast<double>(toDouble(value)), static_cast<double>(wanted), 1e-7);
}

TYPED_TEST(RegulaFalsiTest, LineIsHitAtOnce) {
  using T = TypeParam;
  long calls = 0;
  const auto line = [&](const T& x) {
    ++calls;
    return T(3) * x + T(1);
  };
  EXPECT_EQ(regula_falsi<T>(line, T(2)), fromDouble<T>(toDouble(this->third())));
  // Both ends, the root, and nothing more: the second step gives the root again.
  EXPECT_EQ(calls, 3);
}

TYPED_TEST(RegulaFalsiTest, RisingAndFallingCurves) {
  using T = TypeParam;
  expectNear<T>(regula_falsi<T>([](const T& x) { return x * x; }, T(1) / T(4)), 0.5L);
  expectNear<T>(regula_falsi<T>([](const T& x) { return x * x * x; }, T(1) / T(8)), 0.5L);
  expectNear<T>(regula_falsi<T>([](const T& x) { return T(1) - x * x; }, T(19) / T(100)), 0.9L);
}

TYPED_TEST(RegulaFalsiTest, DigitsOfTheExactTypeStayBounded) {
  using T = TypeParam;
  const T x = regula_falsi<T>([](const T& p) { return p * p * p * p + p; }, T(7) / T(5));
  expectNear<T>(x * x * x * x + x, 1.4L);
  EXPECT_EQ(x, fromDouble<T>(toDouble(x)));
}

TYPED_TEST(RegulaFalsiTest, SameSideFails) {
  using T = TypeParam;
  EXPECT_FAILURE(regula_falsi<T>([](const T& x) { return x; }, T(2)), "f(a)*f(b) >= 0!");
  EXPECT_FAILURE(regula_falsi<T>([](const T& x) { return x; }, T(-1)), "f(a)*f(b) >= 0!");
}

TYPED_TEST(RegulaFalsiTest, LimitIsToldAndTheLastPointReturned) {
  using T = TypeParam;
  ::testing::internal::CaptureStderr();
  const T x = regula_falsi<T>([](const T& p) { return p * p; }, T(1) / T(4), 1);
  EXPECT_EQ(::testing::internal::GetCapturedStderr(), "*** regula_falsi: LOOP_LIMIT reached!\n");
  EXPECT_EQ(x, T(1) / T(4));
}

TYPED_TEST(RegulaFalsiTest, NoLineWithinTheLimit) {
  using T = TypeParam;
  ::testing::internal::CaptureStderr();
  regula_falsi<T>([](const T& p) { return p * p; }, T(1) / T(4), 1000);
  EXPECT_EQ(::testing::internal::GetCapturedStderr(), "");
  EXPECT_EQ(LOOP_LIMIT, 1000000000);
}

// The tolerance is relative: by an absolute one the search would end 5e-8 too early.
TYPED_TEST(RegulaFalsiTest, SmallRootsAreHeldAsWell) {
  using T = TypeParam;
  const T x = regula_falsi<T>([](const T& p) { return p * p; }, T(1) / T(10000));
  EXPECT_NEAR(static_cast<double>(toDouble(x)), 1e-2, 1e-8);
}

TYPED_TEST(RegulaFalsiTest, RootAtAnEnd) {
  using T = TypeParam;
  long calls = 0;
  const auto line = [&](const T& x) {
    ++calls;
    return x;
  };
  EXPECT_EQ(regula_falsi<T>(line, T(0)), T(0));
  EXPECT_EQ(calls, 3);
  // The point before the first is 1, so a first point of 1 ends the search.
  calls = 0;
  EXPECT_EQ(regula_falsi<T>(line, T(1)), T(1));
  EXPECT_EQ(calls, 2);
}

}  // namespace latbox::testing
