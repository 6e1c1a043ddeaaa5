#include "complete/tree/adaptive_bounds.h"

#include <gtest/gtest.h>

#include "support.h"

namespace latbox::complete {
namespace {

// The cube 0..4 with unit vectors for its basis: a multiplier of 100 is far out.
BoxLattice cubeOf(std::size_t k) {
  BoxLattice lattice;
  lattice.fixed.resize(k);
  lattice.point.resize(k);
  for (std::size_t j = 0; j < k; ++j) {
    lattice.variables.push_back(j);
    lattice.basis.emplace_back(k);
    lattice.basis.back()[j] = 1;
    lattice.low.emplace_back(0);
    lattice.high.emplace_back(4);
  }
  return lattice;
}

class AdaptiveBoundsTest : public ::testing::Test {
 protected:
  enum class Trials { CHEAP, DEAR };

  // Looks at a candidate that is out in so many nodes of the level; tells how many have excluded it.
  int excluded(int nodes, Trials trials) {
    int count = 0;
    for (int i = 0; i < nodes; ++i) {
      bounds_.enter(LEVEL);
      if (bounds_.excluding(LEVEL, far_))
        ++count;
      else
        walk(trials);
    }
    return count;
  }

  // The tree below the candidate, if that is what is wanted: of one candidate, or without an end.
  void walk(Trials trials) {
    if (trials == Trials::CHEAP) {
      bounds_.countCandidates(1);
      if (bounds_.isTrialOver(LEVEL)) bounds_.endTrial(LEVEL);
      return;
    }
    for (int i = 0; i < 1000; ++i) bounds_.countCandidates(1);
    if (bounds_.isTrialOver(LEVEL - 1)) {
      EXPECT_EQ(bounds_.endTrial(LEVEL - 1), LEVEL);
      return;
    }
  }

  static constexpr std::size_t LEVEL = 20;
  static constexpr std::size_t RANK = 24;
  BoxLattice lattice_ = cubeOf(RANK);
  AdaptiveBounds bounds_{lattice_, std::vector<double>(RANK, 5)};
  std::vector<double> far_ = std::vector<double>(RANK, 100);
};

TEST_F(AdaptiveBoundsTest, TellTheRangeOrNothing) {
  std::vector<double> lambda(RANK, 2);
  bounds_.enter(RANK - 1);
  EXPECT_FALSE(bounds_.excluding(RANK - 1, lambda));
  lambda[RANK - 1] = 5;
  const auto* range = bounds_.excluding(RANK - 1, lambda);
  // The first exclusions are trials.
  for (int i = 0; !range && i < 100; ++i) {
    bounds_.countCandidates(1);
    bounds_.endTrial(RANK - 1);
    range = bounds_.excluding(RANK - 1, lambda);
  }
  ASSERT_TRUE(range);
  EXPECT_EQ(range->least, 0);
  EXPECT_EQ(range->greatest, 4);
}

TEST_F(AdaptiveBoundsTest, StayWhereTheySaveMoreThanTheyCost) {
  EXPECT_GT(excluded(10000, Trials::DEAR), 9000);
}

TEST_F(AdaptiveBoundsTest, LeaveWhereTheySaveLess) {
  EXPECT_LT(excluded(10000, Trials::CHEAP), 1000);
}

TEST_F(AdaptiveBoundsTest, AreTriedAgainWhenTheSearchHasGoneOn) {
  excluded(10000, Trials::CHEAP);
  EXPECT_EQ(excluded(1000, Trials::DEAR), 0);
  bounds_.review(100000000);
  EXPECT_GT(excluded(1000, Trials::DEAR), 900);
}

TEST_F(AdaptiveBoundsTest, OneTrialRunsAtATime) {
  EXPECT_FALSE(bounds_.trialLevel());
  bounds_.enter(LEVEL);
  ASSERT_FALSE(bounds_.excluding(LEVEL, far_));
  EXPECT_EQ(bounds_.trialLevel(), LEVEL);
  bounds_.enter(LEVEL - 1);
  EXPECT_TRUE(bounds_.excluding(LEVEL - 1, far_));
  EXPECT_EQ(bounds_.endTrial(LEVEL - 1), LEVEL);
  EXPECT_FALSE(bounds_.trialLevel());
  bounds_.enter(LEVEL - 1);
  EXPECT_FALSE(bounds_.excluding(LEVEL - 1, far_));
}

TEST_F(AdaptiveBoundsTest, LongNumbersAreNeverExcluded) {
  lattice_.high[0] = Integer(1) << 60;
  AdaptiveBounds none(lattice_, std::vector<double>(RANK, 5));
  for (int i = 0; i < 100; ++i) {
    none.enter(LEVEL);
    EXPECT_FALSE(none.excluding(LEVEL, far_));
    EXPECT_FALSE(none.isTrialOver(LEVEL));
    none.review(100000000);
  }
}

}  // namespace
}  // namespace latbox::complete
