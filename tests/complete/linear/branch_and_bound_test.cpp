#include "complete/linear/branch_and_bound.h"

#include <atomic>

#include "complete/program/presolve.h"
#include "small_programs.h"

namespace latbox::complete {
namespace {

using testing::rangeOf;
using testing::rowOf;
using End = BranchAndBound::End;

constexpr unsigned long ENOUGH = 1'000'000'000;

bool never() {
  return false;
}

// Those it shows, all if nothing ends it.
struct Shown {
  Shown(const IntegerProgram& program, const IntegerVector& goal, unsigned seed, std::size_t most = 0) {
    EXPECT_TRUE(BranchAndBound::isPossible(program));
    BranchAndBound search(program, goal, seed);
    const auto visit = [&](const IntegerVector& z) {
      if (points.insert(z).second) order.push_back(z);
      return most == 0 || points.size() < most;
    };
    end = search.run(visit, ENOUGH, never, nodes);
  }

  std::set<IntegerVector> points;
  std::vector<IntegerVector> order;
  std::atomic<unsigned long> nodes = 0;
  End end;
};

TEST(BranchAndBound, ShowsAllPointsOfRandomPrograms) {
  testing::SmallPrograms programs(8);
  std::size_t empty = 0;
  for (unsigned i = 0; i < 3000; ++i) {
    const IntegerProgram program = programs.next();
    IntegerVector goal;
    for (std::size_t j = 0; j < program.box.size(); ++j) goal.emplace_back(programs.draw(-2, 2));
    const auto points = testing::pointsOf(program);
    const Shown shown(program, goal, i);
    EXPECT_EQ(shown.end, End::COMPLETE);
    EXPECT_EQ(shown.points, points) << i;
    empty += points.empty() ? 1 : 0;
  }
  EXPECT_GT(empty, 300u);
}

// As the solver gives them, with fixed variables out of the rows.
TEST(BranchAndBound, ShowsAllPointsAfterPresolve) {
  testing::SmallPrograms programs(9);
  for (unsigned i = 0; i < 2000; ++i) {
    IntegerProgram program = programs.next();
    const auto points = testing::pointsOf(program);
    if (!tighten(program)) continue;
    EXPECT_EQ(Shown(program, {}, i).points, points) << i;
  }
}

// Boxes of a million steps: halves of halves.
TEST(BranchAndBound, InWideBoxes) {
  // 1001 x - 999 y = 7: one point in so many.
  const IntegerProgram program{{rangeOf(0, 900), rangeOf(0, 1'000'000)}, {rowOf({1001, -999}, 7, 7)}};
  std::set<IntegerVector> points;
  for (long x = 0; x <= 900; ++x)
    if ((1001 * x - 7) % 999 == 0 && 1001 * x >= 7)
      points.insert(testing::vectorOf({x, (1001 * x - 7) / 999}));
  ASSERT_EQ(points.size(), 1u);
  EXPECT_EQ(Shown(program, {}, 1).points, points);
}

// 10^8 (x - y) = z + 1 and z below 11: doubles take x = y for a point, and ends creep too slowly to tell.
TEST(BranchAndBound, ShowsNothingThatOnlyRoundingMakesAPoint) {
  const IntegerProgram program{{rangeOf(0, 2000), rangeOf(0, 2000), rangeOf(0, 10)},
                               {rowOf({100'000'000, -100'000'000, -1}, 1, 1)}};
  const Shown shown(program, {}, 1);
  EXPECT_TRUE(shown.points.empty());
  EXPECT_EQ(shown.end, End::COMPLETE);
}

// 10^7 (x - y) + u_1 + ... + u_4 = 2: beside x and y doubles take the others for rounding, and where x = y
// see no point.
TEST(BranchAndBound, BelievesNoDoublesThatThereIsNoPoint) {
  IntegerProgram program;
  program.box = {rangeOf(0, 40), rangeOf(0, 40), rangeOf(0, 1), rangeOf(0, 1), rangeOf(0, 1), rangeOf(0, 1)};
  program.rows.push_back(rowOf({10'000'000, -10'000'000, 1, 1, 1, 1}, 2, 2));
  EXPECT_EQ(Shown(program, {}, 1).points, testing::pointsOf(program));
  EXPECT_EQ(Shown(program, {}, 1).points.size(), 41u * 6);
}

TEST(BranchAndBound, EndsWhenTheVisitorHasEnough) {
  IntegerProgram program;
  program.box.assign(6, rangeOf(0, 3));
  program.rows.push_back(rowOf({1, 1, 1, 1, 1, 1}, 9, 9));
  const Shown one(program, {}, 1, 1);
  EXPECT_EQ(one.end, End::STOPPED);
  EXPECT_EQ(one.points.size(), 1u);
  EXPECT_EQ(Shown(program, {}, 1, 5).points.size(), 5u);
}

// 0/1: of what fits into 10 the best value is 15, by its last three.
TEST(BranchAndBound, LooksFirstWhereTheGoalIsSmall) {
  IntegerProgram program;
  program.box.assign(5, rangeOf(0, 1));
  program.rows.push_back(rowOf({5, 4, 6, 3, 1}, std::nullopt, 10));
  const Shown shown(program, testing::vectorOf({-1, -1, -8, -5, -2}), 1);
  EXPECT_EQ(shown.order.front(), testing::vectorOf({0, 0, 1, 1, 1}));
  EXPECT_EQ(shown.points, testing::pointsOf(program));
}

TEST(BranchAndBound, TheSameSeedGoesTheSameWay) {
  IntegerProgram program;
  program.box.assign(6, rangeOf(0, 3));
  program.rows.push_back(rowOf({1, 1, 1, 1, 1, 1}, 9, 9));
  EXPECT_EQ(Shown(program, {}, 3).order, Shown(program, {}, 3).order);
  EXPECT_NE(Shown(program, {}, 3).order, Shown(program, {}, 4).order);
}

TEST(BranchAndBound, GivesUpAfterItsEffortOrWhenAsked) {
  IntegerProgram program;
  program.box.assign(30, rangeOf(0, 1));
  Row row = rowOf({}, 15, 15);
  // Twice a sum, and one: by no linear program.
  for (int j = 0; j < 30; ++j) row.a.emplace_back(2);
  program.box.push_back(rangeOf(0, 0));
  row.a.emplace_back(1);
  program.rows.push_back(row);
  const auto all = [](const IntegerVector&) { return true; };
  std::atomic<unsigned long> nodes = 0;
  BranchAndBound small(program, {}, 1);
  EXPECT_EQ(small.run(all, 100'000, never, nodes), End::GIVEN_UP);
  EXPECT_GT(nodes, 1u);
  nodes = 0;
  BranchAndBound stopped(program, {}, 1);
  EXPECT_EQ(stopped.run(
                all, ENOUGH, [&] { return nodes == 9; }, nodes),
            End::GIVEN_UP);
  EXPECT_EQ(nodes, 9u);
}

TEST(BranchAndBound, IsNotPossibleForLongNumbersAndLargeDictionaries) {
  IntegerProgram program{{rangeOf(0, 1)}, {rowOf({1}, 0, std::nullopt)}};
  EXPECT_TRUE(BranchAndBound::isPossible(program));
  program.rows[0].a[0] = powerOfTen(20);
  EXPECT_FALSE(BranchAndBound::isPossible(program));
  program.rows[0].a[0] = 1;
  program.box[0].high.reset();
  EXPECT_FALSE(BranchAndBound::isPossible(program));
  IntegerProgram large;
  large.box.assign(2000, rangeOf(0, 1));
  Row row;
  row.a.assign(2000, 1);
  row.range = rangeOf(1, 2);
  large.rows.assign(1000, row);
  EXPECT_FALSE(BranchAndBound::isPossible(large));
}

TEST(BranchAndBound, AContradictionOfThePresolveIsNoPoint) {
  const Shown shown({{rangeOf(0, 1)}, {rowOf({1}, 2, std::nullopt)}}, {}, 1);
  EXPECT_EQ(shown.end, End::COMPLETE);
  EXPECT_TRUE(shown.points.empty());
}

TEST(BranchAndBound, WithoutVariables) {
  EXPECT_EQ(Shown({}, {}, 1).points, std::set<IntegerVector>{IntegerVector()});
}

}  // namespace
}  // namespace latbox::complete
