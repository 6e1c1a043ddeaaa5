#include "check/judging/rewriting.h"

#include <gtest/gtest.h>

#include "support.h"

namespace latbox::check {
namespace {

using Order = std::vector<std::size_t>;

// A program of one variable with these targets.
Program withTargets(const std::string& dt, int rows) {
  std::string at;
  for (int i = 0; i < rows; ++i) at += " [ 1 ]";
  return readProgram("[ " + dt + " ] [" + at + " ] [ ] [ ] [ ] [ ] [ ] [ 0 ] [ 0 ] [ 9 ]");
}

Order orderOf(const std::string& dt, int rows) {
  const Program p = withTargets(dt, rows);
  return Rewriting(p).targetOrder();
}

TEST(TargetOrder, targets_with_a_value_gather_at_the_end) {
  EXPECT_EQ(orderOf("-inf inf -inf", 3), (Order{0, 1, 2}));
  EXPECT_EQ(orderOf("5", 1), (Order{0}));
  EXPECT_EQ(orderOf("5 inf", 2), (Order{1, 0}));
  EXPECT_EQ(orderOf("inf 5", 2), (Order{0, 1}));
  EXPECT_EQ(orderOf("5 inf 6 inf", 4), (Order{3, 1, 2, 0}));
  EXPECT_EQ(orderOf("inf 5 6 inf", 4), (Order{0, 3, 2, 1}));
}

TEST(TargetOrder, a_target_whose_number_meets_the_count_stays) {
  EXPECT_EQ(orderOf("5 6", 2), (Order{1, 0}));
  EXPECT_EQ(orderOf("5 inf 6", 3), (Order{2, 1, 0}));
}

Program withRows(const std::string& rows) {
  return readProgram("[ 3 ] [ [ 1 1 ] ] " + rows + " [ 0 0 ] [ 0 0 ] [ 9 9 ]");
}

TEST(SlackNorm, is_the_distance_where_no_other_row_stands_before) {
  const Program p = withRows("[ ] [ ] [ [ 1 2 ] ] [ 0 ] [ 9 ]");
  EXPECT_EQ(Rewriting(p).slackNorm(Scaled({1, 1})), 1);
  EXPECT_EQ(Rewriting(p).slackNorm(Scaled({2, 1})), 0);
  EXPECT_EQ(Rewriting(p).slackNorm(Scaled({4, 4})), 5);
}

TEST(SlackNorm, is_taken_from_an_equation_of_its_number) {
  const Program p = withRows("[ [ 1 0 ] ] [ 4 ] [ ] [ ] [ ]");
  EXPECT_EQ(Rewriting(p).slackNorm(Scaled({4, 4})), 0);
  EXPECT_EQ(Rewriting(p).slackNorm(Scaled({5, 4})), 1);
}

TEST(SlackNorm, is_taken_from_an_inequation_with_one_side) {
  const Program above = withRows("[ ] [ ] [ [ 1 2 ] ] [ 2 ] [ inf ]");
  EXPECT_EQ(Rewriting(above).slackNorm(Scaled({4, 4})), 10);
  const Program below = withRows("[ ] [ ] [ [ 1 2 ] ] [ -inf ] [ 20 ]");
  EXPECT_EQ(Rewriting(below).slackNorm(Scaled({4, 4})), 8);
}

TEST(SlackNorm, a_row_that_is_missing_is_the_targets_own) {
  // The second of the last two places has no row of its number: three targets, two rows.
  const Program p = readProgram(
      "[ 7 -inf 5 ] [ [ 2 3 4 ] [ 1 1 1 ] [ 3 1 0 ] ] [ ] [ ] [ ] [ ] [ ] [ 0 0 0 ] [ 0 0 0 ]"
      "[ 9 9 9 ]");
  const Rewriting rewriting(p);
  ASSERT_EQ(rewriting.targetOrder(), (Order{2, 1, 0}));
  // 13 - 7 and 4 - 5: row 2 is that of target 3, row 3 does not exist, and place 3 holds target 1.
  EXPECT_EQ(rewriting.slackNorm(Scaled({1, 1, 2})), 1 + 6);
}

TEST(SlackNorm, a_target_that_stays_where_it_is_counts_too) {
  const Program p = readProgram(
      "[ -2 -inf inf 3 ] [ [ 6 -4 ] [ 6 1 ] [ 8 1 ] [ -5 0 ] ] [ ] [ ] [ ] [ ] [ ] [ 0 0 ] [ 0 0 ]"
      "[ 6 3 ]");
  const Rewriting rewriting(p);
  ASSERT_EQ(rewriting.targetOrder(), (Order{3, 1, 2, 0}));
  EXPECT_EQ(rewriting.slackNorm(Scaled({0, 0})), 2 + 3);
}

TEST(Replacement, equal_sides_take_the_equation_of_their_number) {
  const Program p = withRows("[ [ 1 0 ] [ 0 1 ] ] [ 4 4 ] [ [ 1 2 ] [ 2 1 ] ] [ 0 5 ] [ 9 5 ]");
  const Rewriting rewriting(p);
  EXPECT_EQ(rewriting.replacedEquation(0), "");
  EXPECT_EQ(rewriting.replacedEquation(1), "inequation 2");
  ASSERT_EQ(rewriting.warnings().size(), 1U);
  EXPECT_NE(rewriting.warnings()[0].find("equation 2 by inequation 2"), std::string::npos);
}

TEST(Replacement, nothing_is_lost_beyond_the_last_equation) {
  const Program p = withRows("[ [ 1 0 ] ] [ 4 ] [ [ 1 2 ] [ 2 1 ] ] [ 0 5 ] [ 9 5 ]");
  EXPECT_TRUE(Rewriting(p).warnings().empty());
  const Program alone = withRows("[ ] [ ] [ [ 2 1 ] ] [ 5 ] [ 5 ]");
  EXPECT_TRUE(Rewriting(alone).warnings().empty());
}

TEST(Replacement, two_in_a_row_meet_in_one_place) {
  const Program p = withRows("[ ] [ ] [ [ 1 2 ] [ 2 1 ] ] [ 5 6 ] [ 5 6 ]");
  const Rewriting rewriting(p);
  EXPECT_EQ(rewriting.replacedInequation(0), "inequation 2");
  EXPECT_EQ(rewriting.replacedInequation(1), "");
}

TEST(Replacement, sides_count_as_equal_within_a_billionth) {
  const Program equal = withRows("[ [ 1 0 ] ] [ 4 ] [ [ 1 2 ] ] [ 5 ] [ 5.000000001 ]");
  EXPECT_EQ(Rewriting(equal).warnings().size(), 1U);
  const Program apart = withRows("[ [ 1 0 ] ] [ 4 ] [ [ 1 2 ] ] [ 5 ] [ 5.000000002 ]");
  EXPECT_TRUE(Rewriting(apart).warnings().empty());
}

Program withBounds(const std::string& digits, const std::string& low, const std::string& high) {
  return readProgram("[ ] [ ] [ [ 1 ] ] [ 1 ] [ ] [ ] [ ] [ " + digits + " ] [ " + low + " ] [ " + high +
                     " ]");
}

std::string boxOf(const std::string& digits, const std::string& low, const std::string& high) {
  const Program p = withBounds(digits, low, high);
  const auto box = Rewriting(p).ownBox(0);
  return box ? toText(box->low) + " .. " + toText(box->high) : "";
}

TEST(OwnBox, reaches_to_the_upper_less_the_lower_bound) {
  EXPECT_EQ(boxOf("0", "-3", "10"), "-3 .. 13");
  EXPECT_EQ(boxOf("0", "2", "10"), "2 .. 8");
  EXPECT_EQ(boxOf("0", "6", "10"), "4 .. 6");
  EXPECT_EQ(boxOf("1", "-0.5", "1"), "-1/2 .. 1:1/2");
  EXPECT_EQ(boxOf("0", "-3/2", "5/2"), "-1 .. 3");
}

TEST(OwnBox, is_the_users_where_the_lower_bound_is_0_or_a_bound_is_missing) {
  EXPECT_EQ(boxOf("0", "0", "10"), "");
  EXPECT_EQ(boxOf("0", "-1/2", "10"), "");
  EXPECT_EQ(boxOf("0", "5", "5"), "");
  EXPECT_EQ(boxOf("0", "-inf", "10"), "");
  EXPECT_EQ(boxOf("0", "-3", "inf"), "");
}

TEST(OwnBox, is_warned_of) {
  const Program p = withBounds("0", "-3", "10");
  ASSERT_EQ(Rewriting(p).warnings().size(), 1U);
  EXPECT_NE(Rewriting(p).warnings()[0].find("x1 within -3 .. 13 instead of -3 .. 10"), std::string::npos);
}

TEST(Warnings, long_lists_are_cut) {
  const Program p = readProgram(
      "[ ] [ ] [ [ 1 1 1 1 1 1 1 ] ] [ 1 ] [ ] [ ] [ ] [ 0 0 0 0 0 0 0 ] [ 1 1 1 1 1 1 1 ]"
      "[ 9 9 9 9 9 9 9 ]");
  const std::string text = Rewriting(p).warnings().at(0);
  EXPECT_NE(text.find("x5 within"), std::string::npos);
  EXPECT_EQ(text.find("x6 within"), std::string::npos);
  EXPECT_NE(text.find(" and 2 more"), std::string::npos);
}

TEST(Warnings, text_that_is_not_read) {
  Program p = withBounds("0", "0", "10");
  EXPECT_TRUE(Rewriting(p).warnings().empty());
  p.trailingText = true;
  EXPECT_EQ(Rewriting(p).warnings(), std::vector<std::string>{"the text behind rx is not read"});
}

}  // namespace
}  // namespace latbox::check
