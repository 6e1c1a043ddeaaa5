#include "complete/tree/first_point.h"

#include <mutex>

#include "market_split.h"

namespace latbox::complete {
namespace {

using testing::isPointOf;
using testing::marketSplit;

const auto untold = [](unsigned long) {};

Passes passesOf(const IntegerProgram& program, unsigned long seed) {
  return {*unreducedLatticeOf(program), seed};
}

// Has enough with the first point; for several threads.
class One : public Visitor {
 public:
  Next visit(const IntegerVector& z) override {
    const std::lock_guard lock(mutex_);
    if (!point) point = z;
    return Next::STOP;
  }

  std::optional<IntegerVector> point;

 private:
  std::mutex mutex_;
};

// By all stages.
std::optional<IntegerVector> firstOf(const IntegerProgram& program, unsigned long seed,
                                     unsigned threads = 1) {
  One one;
  SearchControl control;
  control.threads = threads;
  Passes passes = passesOf(program, seed);
  for (std::size_t stage = 0; passes.hasStage(stage); ++stage)
    if (!passes.make(stage, 0, untold, one, control)) break;
  return one.point;
}

TEST(Passes, FindAPointThatTheSeedDetermines) {
  const IntegerProgram program = marketSplit(7, 60, 1);
  const auto first = firstOf(program, 3);
  ASSERT_TRUE(first);
  EXPECT_TRUE(isPointOf(program, *first));
  EXPECT_EQ(firstOf(program, 3), first);
}

TEST(Passes, FindAPointWithTwoThreads) {
  const IntegerProgram program = marketSplit(7, 60, 2);
  const auto first = firstOf(program, 3, 2);
  ASSERT_TRUE(first);
  EXPECT_TRUE(isPointOf(program, *first));
}

// With each point the one on the other side of the centre is one, and half of the tree is enough.
TEST(Passes, SymmetricPrograms) {
  IntegerProgram program = marketSplit(7, 60, 3);
  // Twice the side of each row is the sum of its coefficients: so is that of this point and its opposite.
  for (Row& row : program.rows) {
    Integer sum = 0;
    for (std::size_t j = 0; j < row.a.size(); ++j) {
      if (j % 2 == 1) row.a[j] = row.a[j - 1];
      sum += row.a[j];
    }
    row.range = {Integer(sum / 2), Integer(sum / 2)};
  }
  const auto first = firstOf(program, 1);
  ASSERT_TRUE(first);
  EXPECT_TRUE(isPointOf(program, *first));
}

TEST(Passes, LeaveSmallLatticesToTheCompleteSearch) {
  IntegerProgram program;
  program.box.assign(3, testing::rangeOf(0, 1));
  EXPECT_FALSE(passesOf(program, 1).hasStage(0));
  EXPECT_FALSE(passesOf(marketSplit(5, 40, 1), 1).hasStage(0));
}

TEST(Passes, NoneOfLongNumbers) {
  IntegerProgram program = marketSplit(2, 60, 1);
  Integer side = 0;
  for (std::size_t j = 0; j < program.box.size(); ++j) {
    program.box[j] = {Integer(0), Integer(Integer(1) << (40 + 7 * (j % 8)))};
    program.rows[0].a[j] <<= 300;
    program.rows[0].a[j] += static_cast<long>(j * j * j);
    side += program.rows[0].a[j];
  }
  program.rows[0].range = {side, side};
  EXPECT_FALSE(passesOf(program, 1).hasStage(0));
}

// Without a point they end, when they have cost their part of the complete search.
TEST(Passes, EndWithoutAPoint) {
  IntegerProgram program = marketSplit(7, 60, 2);
  for (Row& row : program.rows) *row.range.low += 1, *row.range.high += 1;
  Passes passes = passesOf(program, 1);
  ASSERT_TRUE(passes.hasStage(0));
  EXPECT_GT(passes.cost(), 0);
  EXPECT_FALSE(firstOf(program, 1));
}

// The stages are the same for all seeds, so that a run may go on with another one.
TEST(Passes, StagesDoNotDependOnTheSeed) {
  const IntegerProgram program = marketSplit(7, 60, 1);
  Passes one = passesOf(program, 1);
  Passes other = passesOf(program, 2);
  for (std::size_t stage = 0; stage < 3; ++stage) {
    EXPECT_EQ(one.hasStage(stage), other.hasStage(stage));
    EXPECT_EQ(one.cost(), other.cost());
  }
}

TEST(Passes, BeginWhereTheyAreTold) {
  const IntegerProgram program = marketSplit(7, 60, 1);
  Passes passes = passesOf(program, 1);
  ASSERT_TRUE(passes.hasStage(0));
  testing::Collector none;
  SearchControl control;
  std::vector<unsigned long> told;
  // Behind all of them.
  EXPECT_TRUE(passes.make(
      0, 1'000'000, [&](unsigned long pass) { told.push_back(pass); }, none, control));
  EXPECT_EQ(control.nodes, 0u);
  EXPECT_EQ(told.back(), 1'000'000u);
}

TEST(Passes, StopAtOnce) {
  Passes passes = passesOf(marketSplit(9, 80, 1), 1);
  ASSERT_TRUE(passes.hasStage(0));
  testing::Collector none;
  SearchControl control;
  control.stop = true;
  EXPECT_FALSE(passes.make(0, 0, untold, none, control));
}

TEST(RoughLattice, IsTheLatticeOfTheProgram) {
  for (const std::size_t columns : {12, 50}) {
    const IntegerProgram program = marketSplit(3, columns, 4);
    const auto rough = roughLatticeOf(program);
    auto lattice = boxLatticeOf(program);
    ASSERT_TRUE(rough);
    EXPECT_EQ(rough->low, lattice->low);
    EXPECT_EQ(rough->high, lattice->high);
    EXPECT_TRUE(takeBasis(*lattice, rough->basis));
  }
  IntegerProgram none = marketSplit(3, 12, 4);
  for (Integer& a : none.rows[0].a) a *= 2;
  none.rows[0].range = {Integer(301), Integer(301)};
  EXPECT_FALSE(roughLatticeOf(none));
}

}  // namespace
}  // namespace latbox::complete
