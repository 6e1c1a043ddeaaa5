#include "complete/proof/system.h"

#include "small_systems.h"

namespace latbox::complete::proof {
namespace {

using namespace testing;

// Minimise x1 / 2, bring x1 + x2 to 5/2.
const char* const MIXED =
    "[ -inf 5/2 ] [ [ 1/2 0 ] [ 1 1 ] ] [ ] [ ] [ [ 1 1/3 ] ] [ -inf ] [ 7/2 ] [ 0 1 ] [ 0 0 ] [ 3 1/4 ]";

std::vector<std::string> linesOf(const System& system) {
  std::vector<std::string> lines;
  for (std::size_t i = 0; i < system.rows.size(); ++i) {
    std::string line = system.ranges[i].low ? system.ranges[i].low->get_str() : "-";
    for (const Integer& a : system.rows[i]) line += " " + a.get_str();
    lines.push_back(line + " " + (system.ranges[i].high ? system.ranges[i].high->get_str() : "-"));
  }
  return lines;
}

TEST(System, CountsSteps) {
  const System system = systemOf(programOf(MIXED), Goal::POINTS, {});
  EXPECT_EQ(endsOf(system.box[1]), std::make_pair(Integer(0), Integer(2)));
  EXPECT_EQ(linesOf(system), (std::vector<std::string>{"- 30 1 105"}));
}

TEST(System, RowsOfGoals) {
  const Program program = programOf(MIXED);
  // c = 10; L = 5 z1, E = 10 z1 + z2 - 25.
  const Norms norms{2, Rational(1, 2)};
  using Lines = std::vector<std::string>;
  EXPECT_EQ(linesOf(systemOf(program, Goal::BETTER, norms)),
            (Lines{"- 30 1 105", "- 15 1 44", "- -5 -1 -6"}));
  EXPECT_EQ(linesOf(systemOf(program, Goal::SLACK, norms)),
            (Lines{"- 30 1 105", "- 15 1 45", "- -5 -1 -5", "- 10 1 29", "- -10 -1 -21", "16 5 0 -"}));
  EXPECT_EQ(linesOf(systemOf(program, Goal::EQUAL, norms)),
            (Lines{"- 30 1 105", "- 15 1 45", "- -5 -1 -5", "- 10 1 30", "- -10 -1 -20", "15 5 0 15"}));
}

TEST(System, ManyTargetsHaveSingleSigns) {
  const Program program = programOf(
      "[ 1 1 1 1 1 ] [ [ 1 0 0 0 0 ] [ 0 1 0 0 0 ] [ 0 0 1 0 0 ] [ 0 0 0 1 0 ] [ 0 0 0 0 1 ] ] [ ] [ ] [ ] [ "
      "] [ ] "
      "[ 0 0 0 0 0 ] [ 0 0 0 0 0 ] [ 3 3 3 3 3 ]");
  EXPECT_EQ(systemOf(program, Goal::BETTER, {3, 3}).objective.size(), 10u);
}

TEST(System, WhatCounts) {
  const Norms best{2, 1};
  EXPECT_TRUE(counts(Goal::POINTS, best, {9, 9}));
  EXPECT_TRUE(counts(Goal::BETTER, best, {1, 9}));
  EXPECT_FALSE(counts(Goal::BETTER, best, {2, 0}));
  EXPECT_TRUE(counts(Goal::SLACK, best, {2, 0}));
  EXPECT_FALSE(counts(Goal::SLACK, best, {1, 0}));
  EXPECT_FALSE(counts(Goal::SLACK, best, {2, 1}));
  EXPECT_TRUE(counts(Goal::EQUAL, best, {2, 1}));
  EXPECT_FALSE(counts(Goal::EQUAL, best, {2, 0}));
}

}  // namespace
}  // namespace latbox::complete::proof
