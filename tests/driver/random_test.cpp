#include "driver/random.h"

#include <gtest/gtest.h>

#include <cstdlib>

namespace latbox {
namespace {

TEST(SeedRandom, PassesTheSeedOn) {
  EXPECT_EQ(seedRandom(42), 42U);
  const int first = std::rand();
  std::rand();
  seedRandom(42);
  EXPECT_EQ(std::rand(), first);
  std::srand(42);
  EXPECT_EQ(std::rand(), first);
}

TEST(SeedRandom, ZeroDrawsOneAndReturnsWhatItUsed) {
  const unsigned seed = seedRandom(0);
  EXPECT_NE(seed, 0U);
  const int first = std::rand();
  std::srand(seed);
  EXPECT_EQ(std::rand(), first);
}

}  // namespace
}  // namespace latbox
