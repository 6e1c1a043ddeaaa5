// The uniform draw: its formula, and what it takes from the generator.
#include "heuristics/random_draw.h"

#include <gtest/gtest.h>

#include <climits>
#include <cstdint>
#include <cstdlib>
#include <set>

#include "numbers/number.h"
#include "support/failure.h"

namespace latbox::testing {

template <class T>
class RandomDrawTest : public ::testing::Test {};
using NumberTypes = ::testing::Types<dbl_t, QQ>;
TYPED_TEST_SUITE(RandomDrawTest, NumberTypes);

int firstOf(unsigned seed) {
  std::srand(seed);
  const int first = std::rand();
  std::srand(seed);
  return first;
}

TEST(RandomDraw, EqualBoundsTakeNothingFromTheGenerator) {
  const int first = firstOf(7);
  EXPECT_EQ(rand_eq(5L, 5L), 5);
  EXPECT_EQ(rand_eq(-5, -5), -5);
  EXPECT_EQ(std::rand(), first);
}

TEST(RandomDraw, ReversedBoundsFail) {
  EXPECT_FAILURE(rand_eq(7L, 3L), "invalid input for rand_eq");
  EXPECT_FAILURE(rand_eq(LONG_MIN, LONG_MAX), "invalid input for rand_eq");  // no long holds the width
}

TEST(RandomDraw, FollowsTheFormula) {
  for (unsigned seed = 1; seed <= 50; ++seed) {
    const dbl_t r = firstOf(seed);
    EXPECT_EQ(rand_eq(10L, 27L), 10 + static_cast<long>(floor(17.0L / 2147483647.0L * r + 0.5L)));
  }
}

TEST(RandomDraw, ReachesAllOfASmallRangeAndNothingElse) {
  std::srand(3);
  std::set<long> seen;
  for (int i = 0; i < 500; ++i) seen.insert(rand_eq(-2L, 3L));
  EXPECT_EQ(seen, (std::set<long>{-2, -1, 0, 1, 2, 3}));
}

TEST(RandomDraw, WidestSingleRangeTakesOneDraw) {
  for (unsigned seed = 1; seed <= 20; ++seed) {
    const long r = firstOf(seed);
    EXPECT_EQ(rand_eq(1L, 2147483648L), 1 + r);  // d is the greatest value of rand() itself
    const int after = std::rand();
    firstOf(seed);
    std::rand();
    EXPECT_EQ(std::rand(), after);
  }
}

TEST(RandomDraw, WiderRangesTakeASecondDrawForTheGaps) {
  constexpr long D = 10000000000000L;
  for (unsigned seed = 1; seed <= 50; ++seed) {
    const dbl_t r = firstOf(seed);
    std::rand();
    const dbl_t gap = floor(dbl_t(D - 1) / 2147483647.0L);
    const dbl_t w = floor(gap / 2147483647.0L * static_cast<dbl_t>(std::rand()) + 0.5L);
    const dbl_t x = floor(dbl_t(D) / 2147483647.0L * r + 0.5L);
    std::srand(seed);
    EXPECT_EQ(rand_eq(-5L, D - 5), -5 + static_cast<long>(std::min(x + w, dbl_t(D))));
  }
}

// A range that one draw covers to the last integer has no gap: d / 2147483647 is whole, and counts less one.
TEST(RandomDraw, GapsAreOneLessThanTheStep) {
  constexpr long D = 3 * 2147483647L;
  std::set<long> added;
  for (unsigned seed = 1; seed <= 50; ++seed) {
    const long r = firstOf(seed);
    added.insert(rand_eq(0L, D) - 3 * r);
  }
  EXPECT_EQ(added, (std::set<long>{0, 1, 2}));
}

// The generator's simplest form has one word of state, which can be made to draw what a test asks for.
class ForcedDraw {
 public:
  explicit ForcedDraw(std::uint32_t draw) {
    // The inverse of 1103515245 modulo 2^31 takes the step of the generator back.
    std::uint32_t inverse = 1;
    for (int i = 0; i < 31; ++i) inverse *= 2 - 1103515245U * inverse;
    before_ = initstate(1, state_, sizeof state_);
    std::srand(((draw - 12345U) * inverse) & 0x7fffffffU);
  }
  ~ForcedDraw() { setstate(before_); }
  ForcedDraw(const ForcedDraw&) = delete;
  ForcedDraw& operator=(const ForcedDraw&) = delete;

 private:
  alignas(std::int32_t) char state_[8];  // one word makes the simplest form
  char* before_;
};

TEST(RandomDraw, GreatestDrawGivesTheUpperEndAndTakesNoSecondOne) {
  constexpr long D = 10000000000000L;
  int second = 0;
  {
    const ForcedDraw forced(2147483647U);
    ASSERT_EQ(std::rand(), 2147483647);
    second = std::rand();
  }
  const ForcedDraw forced(2147483647U);
  EXPECT_EQ(rand_eq(-5L, D - 5), D - 5);
  EXPECT_EQ(std::rand(), second);
}

TEST(RandomDraw, NoDrawLeavesTheWidestRange) {
  std::srand(11);
  for (int i = 0; i < 1000; ++i) EXPECT_GE(rand_eq(0L, LONG_MAX), 0);
}

TYPED_TEST(RandomDrawTest, EqualBoundsTakeNothingFromTheGenerator) {
  const int first = firstOf(7);
  EXPECT_EQ(rand_eq(TypeParam(5), TypeParam(5)), TypeParam(5));
  EXPECT_EQ(std::rand(), first);
}

TYPED_TEST(RandomDrawTest, ReversedBoundsFail) {
  EXPECT_FAILURE(rand_eq(TypeParam(7), TypeParam(3)), "invalid input for rand_eq");
}

TYPED_TEST(RandomDrawTest, AgreesWithTheDrawOfLongs) {
  for (unsigned seed = 1; seed <= 50; ++seed) {
    std::srand(seed);
    const long expected = rand_eq(-4L, 9L);
    std::srand(seed);
    EXPECT_EQ(rand_eq(TypeParam(-4), TypeParam(9)), TypeParam(expected));
  }
}

TEST(RandomDraw, AnyWidthIsExactInExtendedPrecision) {
  const QQ wide = powerOfTen<QQ>(30);
  for (unsigned seed = 1; seed <= 20; ++seed) {
    const QQ r(firstOf(seed));
    EXPECT_EQ(rand_eq(QQ(1), QQ(wide + QQ(1))), QQ(1) + floor(QQ(wide * r / QQ(2147483647) + qqHalf())));
  }
}

}  // namespace latbox::testing
