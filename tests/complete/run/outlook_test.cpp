#include "complete/run/outlook.h"

#include <gtest/gtest.h>

#include "complete/tree/estimate.h"
#include "support.h"

namespace latbox::complete {
namespace {

TEST(OutlookText, SaysHowLongAndHowMuch) {
  Outlook outlook;
  outlook.nodes = 2e8;
  outlook.speed = 2e7;
  outlook.points = 225;
  outlook.lineBytes = 160;
  EXPECT_EQ(textOf(outlook), "estimate: 2e+08 nodes, 10 s, 2.2e+02 points, a file of 36 KB\n");
  outlook.points = 0.3;
  EXPECT_EQ(textOf(outlook), "estimate: 2e+08 nodes, 10 s, a point or none\n");
  outlook.points = -1;
  EXPECT_EQ(textOf(outlook), "estimate: 2e+08 nodes, 10 s\n");
}

TEST(OutlookText, IsPlainWhereItIsHopeless) {
  Outlook outlook;
  outlook.nodes = 1e20;
  outlook.speed = 2e7;
  EXPECT_EQ(
      textOf(outlook),
      "estimate: 1e+20 nodes, 1.6e+05 years\n"
      "this search will not end in 5 years; --first=1, or latbox itself, may find a point all the same\n");
}

TEST(OutlookText, TakesTheLargestUnit) {
  EXPECT_EQ(duration(0.4), "0 s");
  EXPECT_EQ(duration(59), "59 s");
  EXPECT_EQ(duration(90), "1.5 min");
  EXPECT_EQ(duration(7200), "2 h");
  EXPECT_EQ(duration(86400 * 40), "40 days");
  EXPECT_EQ(size(12), "12 bytes");
  EXPECT_EQ(size(36000), "36 KB");
  EXPECT_EQ(size(4.5e9), "4.5 GB");
}

// A box without equations has all its points.
TEST(ExpectedPoints, OfABox) {
  IntegerProgram program;
  program.box.assign(3, testing::rangeOf(0, 4));
  const auto lattice = boxLatticeOf(program);
  ASSERT_TRUE(lattice);
  EXPECT_NEAR(expectedPoints(*lattice), 125, 1e-9);
}

// The middle one of the binomial coefficients of 20 is 184756.
TEST(ExpectedPoints, OfASum) {
  IntegerProgram program;
  program.box.assign(20, testing::rangeOf(0, 1));
  Row row;
  row.a.assign(20, 1);
  row.range = {Integer(10), Integer(10)};
  program.rows.push_back(row);
  const auto lattice = boxLatticeOf(program);
  ASSERT_TRUE(lattice);
  EXPECT_NEAR(expectedPoints(*lattice) / 184756, 1, 0.03);
}

// The whole tree is in the sample where it is small: the estimate is the number.
TEST(EstimatedNodes, OfASmallTree) {
  IntegerProgram program;
  program.box.assign(4, testing::rangeOf(0, 2));
  auto lattice = boxLatticeOf(program);
  ASSERT_TRUE(lattice);
  const double nodes = estimatedNodes(*lattice, 1000);
  testing::Collector all;
  SearchControl control;
  search(*lattice, all, control);
  EXPECT_EQ(all.points.size(), 81u);
  EXPECT_NEAR(nodes, static_cast<double>(control.nodes), 0.1 * nodes);
}

}  // namespace
}  // namespace latbox::complete
