#include "complete/program/presolve.h"

#include "support.h"

namespace latbox::complete {
namespace {

using testing::rangeOf;
using testing::rowOf;

TEST(Tighten, NarrowsByActivities) {
  IntegerProgram program{{rangeOf(0, 9), rangeOf(0, 9)}, {rowOf({2, 3}, std::nullopt, 7)}};
  ASSERT_TRUE(tighten(program));
  EXPECT_EQ(*program.box[0].high, 3);
  EXPECT_EQ(*program.box[1].high, 2);
}

TEST(Tighten, ClosesInfiniteBounds) {
  IntegerProgram program{{{Integer(0), {}}, {Integer(0), {}}}, {rowOf({2, 3}, 12, 12)}};
  ASSERT_TRUE(tighten(program));
  EXPECT_EQ(*program.box[0].high, 6);
  EXPECT_EQ(*program.box[1].high, 4);
}

TEST(Tighten, LeavesOpenWhatTwoOpenVariablesShare) {
  IntegerProgram program{{{Integer(0), {}}, {Integer(0), {}}}, {rowOf({2, -3}, 12, 12)}};
  ASSERT_TRUE(tighten(program));
  EXPECT_FALSE(program.box[0].high);
}

TEST(Tighten, FindsContradictions) {
  IntegerProgram divisibility{{rangeOf(0, 9), rangeOf(0, 9)}, {rowOf({4, 6}, 7, 7)}};
  EXPECT_FALSE(tighten(divisibility));
  IntegerProgram activity{{rangeOf(0, 2), rangeOf(0, 2)}, {rowOf({1, 1}, 5, std::nullopt)}};
  EXPECT_FALSE(tighten(activity));
  IntegerProgram empty{{rangeOf(3, 2)}, {}};
  EXPECT_FALSE(tighten(empty));
  IntegerProgram nothing{{rangeOf(0, 1)}, {rowOf({0}, 1, 2)}};
  EXPECT_FALSE(tighten(nothing));
}

TEST(Tighten, RemovesWhatSaysNothingMore) {
  IntegerProgram program{{rangeOf(0, 2), rangeOf(0, 2)}, {rowOf({1, 1}, 0, 4)}};
  ASSERT_TRUE(tighten(program));
  EXPECT_TRUE(program.rows.empty());
}

// As two coordinates of the lattice neither of them would cut anything.
TEST(Tighten, ConditionsOnOneCombinationBecomeOneRow) {
  IntegerProgram program{{rangeOf(0, 99), rangeOf(0, 99)},
                         {rowOf({3, -2}, 5, std::nullopt), rowOf({-6, 4}, -14, std::nullopt)}};
  ASSERT_TRUE(tighten(program));
  ASSERT_EQ(program.rows.size(), 1u);
  EXPECT_EQ(program.rows[0].a, testing::vectorOf({3, -2}));
  EXPECT_EQ(*program.rows[0].range.low, 5);
  EXPECT_EQ(*program.rows[0].range.high, 7);
  IntegerProgram contradiction{{rangeOf(0, 99), rangeOf(0, 99)},
                               {rowOf({3, -2}, 5, std::nullopt), rowOf({-3, 2}, -4, std::nullopt)}};
  EXPECT_FALSE(tighten(contradiction));
}

TEST(Tighten, TakesFixedVariablesAndCommonDivisorsOut) {
  // 6 x + 4 y + 5 z with z = 1: twice (3 x + 2 y), and 5.
  IntegerProgram program{{rangeOf(0, 9), rangeOf(0, 9), rangeOf(1, 1)}, {rowOf({6, 4, 5}, 10, 30)}};
  ASSERT_TRUE(tighten(program));
  const Row& row = program.rows.at(0);
  EXPECT_EQ(row.a, testing::vectorOf({3, 2, 0}));
  EXPECT_EQ(*row.range.low, 3);
  EXPECT_EQ(*row.range.high, 12);
}

}  // namespace
}  // namespace latbox::complete
