#include "complete/tree/parts.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <mutex>
#include <stdexcept>

namespace latbox::complete {
namespace {

class PartsOf : public ::testing::TestWithParam<unsigned> {
 protected:
  PartsOf() { control.threads = GetParam(); }

  Parts parts(unsigned long begin, unsigned long end) {
    return {begin, end,
            [this](unsigned long part) {
              const std::lock_guard lock(mutex);
              if (part == thrower) throw std::runtime_error("part");
              if (part == broken) return false;
              made.push_back(part);
              return true;
            },
            [this](unsigned long part) { told.push_back(part); }};
  }

  static constexpr unsigned long NONE = static_cast<unsigned long>(-1);

  SearchControl control;
  std::mutex mutex;
  std::vector<unsigned long> made;
  std::vector<unsigned long> told;
  unsigned long broken = NONE;
  unsigned long thrower = NONE;
};

TEST_P(PartsOf, AreMadeOnce) {
  EXPECT_TRUE(goThrough(parts(7, 100), control));
  std::sort(made.begin(), made.end());
  ASSERT_EQ(made.size(), 93u);
  for (std::size_t i = 0; i < made.size(); ++i) EXPECT_EQ(made[i], 7 + i);
  EXPECT_EQ(told.back(), 100u);
}

TEST_P(PartsOf, NoneAreLeft) {
  EXPECT_TRUE(goThrough(parts(5, 5), control));
  EXPECT_TRUE(made.empty());
}

// Whoever goes on from what was told makes all parts that were not, and hardly any twice.
TEST_P(PartsOf, GoOnFromTheOneThatWasBrokenOff) {
  broken = 40;
  EXPECT_FALSE(goThrough(parts(0, 100), control));
  EXPECT_EQ(told.back(), 40u);
  for (unsigned long part = 0; part < 40; ++part)
    EXPECT_EQ(std::count(made.begin(), made.end(), part), 1) << part;
  EXPECT_LE(made.size(), 40u + 60u);
  // With one thread nothing is begun behind it.
  if (GetParam() == 1) {
    EXPECT_EQ(made.size(), 40u);
  }
  broken = NONE;
  EXPECT_TRUE(goThrough(parts(told.back(), 100), control));
  for (unsigned long part = 0; part < 100; ++part)
    EXPECT_GE(std::count(made.begin(), made.end(), part), 1) << part;
}

TEST_P(PartsOf, ThrowOn) {
  thrower = 20;
  EXPECT_THROW(goThrough(parts(0, 100), control), std::runtime_error);
}

TEST_P(PartsOf, EndWhereTheControlStops) {
  control.stop = true;
  EXPECT_FALSE(goThrough(parts(3, 100), control));
  EXPECT_TRUE(made.empty());
  EXPECT_EQ(told.back(), 3u);
}

INSTANTIATE_TEST_SUITE_P(Threads, PartsOf, ::testing::Values(1, 2, 3));

}  // namespace
}  // namespace latbox::complete
