#include "complete/first_point.h"

#include <random>

#include "support.h"

namespace latbox::complete {
namespace {

TEST(QuantileCaps, GrowFromTheLastLevelDown) {
  const std::vector<double> caps = quantileCaps(40, 3, 60, SHARE);
  ASSERT_EQ(caps.size(), 41u);
  for (std::size_t t = 1; t < 39; ++t) EXPECT_LT(caps[t], caps[t - 1]) << t;
  // A point is as long as it is: none is lost at the end, nor at the first choice.
  EXPECT_GE(caps[0], 60);
  EXPECT_GE(caps[39], 60);
  EXPECT_GE(caps[40], 60);
  for (const double cap : caps) EXPECT_GT(cap, 3);
}

TEST(QuantileCaps, LargerSharesLeaveMore) {
  const std::vector<double> half = quantileCaps(40, 0, 60, 0.5);
  const std::vector<double> most = quantileCaps(40, 0, 60, 0.9);
  for (std::size_t t = 1; t < 39; ++t) EXPECT_LT(half[t], most[t]) << t;
}

// 0/1 variables in rows of drawn coefficients, with one point that is known.
IntegerProgram marketSplit(std::size_t rows, std::size_t columns, unsigned seed) {
  std::mt19937 random(seed);
  IntegerProgram program;
  program.box.assign(columns, testing::rangeOf(0, 1));
  IntegerVector point;
  for (std::size_t j = 0; j < columns; ++j) point.emplace_back(static_cast<long>(random() % 2));
  for (std::size_t i = 0; i < rows; ++i) {
    Row row;
    Integer side = 0;
    for (std::size_t j = 0; j < columns; ++j) {
      row.a.emplace_back(static_cast<long>(random() % 100));
      side += row.a.back() * point[j];
    }
    row.range = {side, side};
    program.rows.push_back(std::move(row));
  }
  return program;
}

std::set<IntegerVector> firstOf(const IntegerProgram& program, unsigned long seed) {
  testing::Collector one(1);
  SearchControl control;
  Journal journal(control);
  const auto lattice = boxLatticeOf(program);
  EXPECT_TRUE(lattice);
  findByPasses("key", *lattice, seed, journal, one);
  return one.points;
}

TEST(FindByPasses, FindsAPointThatTheSeedDetermines) {
  const IntegerProgram program = marketSplit(6, 50, 1);
  const std::set<IntegerVector> first = firstOf(program, 3);
  ASSERT_EQ(first.size(), 1u);
  for (const Row& row : program.rows) {
    Integer value = 0;
    for (std::size_t j = 0; j < row.a.size(); ++j) value += row.a[j] * (*first.begin())[j];
    EXPECT_EQ(value, *row.range.low);
  }
  EXPECT_EQ(firstOf(program, 3), first);
}

TEST(FindByPasses, LeavesSmallLatticesToTheCompleteSearch) {
  IntegerProgram program;
  program.box.assign(3, testing::rangeOf(0, 1));
  EXPECT_TRUE(firstOf(program, 1).empty());
}

// Without a point they end, when they have cost their part of the complete search.
TEST(FindByPasses, EndWithoutAPoint) {
  IntegerProgram program = marketSplit(5, 40, 2);
  for (Row& row : program.rows) *row.range.low += 1, *row.range.high += 1;
  EXPECT_TRUE(firstOf(program, 1).empty());
}

}  // namespace
}  // namespace latbox::complete
