#include "check/judging/judge.h"

#include <gtest/gtest.h>

#include "support.h"

namespace latbox::check {
namespace {

using testing::replaced;
using Texts = std::vector<std::string>;

// Two targets, and x2 in tenths.
constexpr const char* OPT = R"([ -inf inf ] [ [ 1 1 ] [ 1/2 0 ] ]
[ [ 1 2 ] ] [ 7 ]
[ [ 3 -1 ] ] [ 0 ] [ inf ]
[ 0 1 ] [ 0 0 ] [ 10 10 ]
)";
constexpr const char* GOOD = "[ 3 2 ] | 3:1/2 | [ 5 1:1/2 ] | 0 | 4 | --verb=0 | 2.2.2";

Judgement judged(const std::string& opt, const std::string& line) {
  const Program program = readProgram(opt);
  return judge(program, Rewriting(program), readSolution(line, 1).value());
}

Texts faults(const std::string& opt, const std::string& line) {
  return judged(opt, line).faults;
}

TEST(Judge, a_solution_that_holds) {
  const Judgement judgement = judged(OPT, GOOD);
  EXPECT_EQ(judgement.faults, Texts{});
  EXPECT_EQ(judgement.notes, Texts{});
}

struct Lie {
  const char* old;
  const char* with;
  Texts faults;
};

TEST(Judge, every_lie_about_the_figures_is_found) {
  const std::initializer_list<Lie> lies = {
      {"[ 5 1:1/2 ]", "[ 6 1:1/2 ]", {"value of target 1: claimed 6, exactly 5"}},
      {"[ 5 1:1/2 ]", "[ 5 2:1/2 ]", {"value of target 2: claimed 2:1/2, exactly 1:1/2"}},
      {"[ 5 1:1/2 ]", "[ 5 inf ]", {"value of target 2: claimed inf, exactly 1:1/2"}},
      {"[ 5 1:1/2 ]", "[ 5 ]", {"1 target values, not 2"}},
      {"| 3:1/2 |", "| 4:1/2 |", {"target norm: claimed 4:1/2, exactly 3:1/2"}},
      {"| 3:1/2 |", "| -inf |", {"target norm: claimed -inf, exactly 3:1/2"}},
      {"| 0 |", "| 1 |", {"slack norm: claimed 1, exactly 0"}}};
  for (const Lie& lie : lies) EXPECT_EQ(faults(OPT, replaced(GOOD, lie.old, lie.with)), lie.faults);
}

TEST(Judge, a_point_of_another_dimension_is_not_judged_further) {
  EXPECT_EQ(faults(OPT, "[ 3 ] | 9 | [ ] | 9 | 0 | p"), Texts{"x has 1 components, not 2"});
  EXPECT_EQ(faults(OPT, "[ 3 2 1 ] | 9 | [ ] | 9 | 0 | p"), Texts{"x has 3 components, not 2"});
  EXPECT_EQ(faults(OPT, "[ 3 inf ] | 9 | [ ] | 9 | 0 | p"), Texts{"x2 is infinite"});
}

// One row or bound at a time, in a program without targets. The first point holds, the others are wrong by
// one step.
struct Condition {
  const char* opt;
  const char* good;
  const char* bad;
  const char* fault;
};

TEST(Judge, every_condition_has_a_point_that_keeps_it_and_one_that_breaks_it_by_one) {
  const std::initializer_list<Condition> conditions = {
      {"[ ] [ ] [ [ 3 5 ] ] [ 14 ] [ ] [ ] [ ] [ 0 0 ] [ 0 0 ] [ 4 4 ]", "3 1", "4 1",
       "equation 1 gives 17, not 14"},
      {"[ ] [ ] [ [ 0 0 ] [ 1/3 1 ] ] [ 0 2 ] [ ] [ ] [ ] [ 0 0 ] [ 0 0 ] [ 4 4 ]", "3 1", "4 1",
       "equation 2 gives 2:1/3, not 2"},
      {"[ ] [ ] [ ] [ ] [ [ 1 1 ] ] [ 3 ] [ 5 ] [ 0 0 ] [ 0 0 ] [ 4 4 ]", "2 1", "1 1",
       "inequation 1 gives 2, outside 3 .. 5"},
      {"[ ] [ ] [ ] [ ] [ [ 1 1 ] ] [ 3 ] [ 5 ] [ 0 0 ] [ 0 0 ] [ 4 4 ]", "4 1", "4 2",
       "inequation 1 gives 6, outside 3 .. 5"},
      {"[ ] [ ] [ ] [ ] [ [ 1 1 ] ] [ -inf ] [ 5 ] [ 0 0 ] [ 0 0 ] [ 4 4 ]", "4 1", "4 2",
       "inequation 1 gives 6, outside -inf .. 5"},
      {"[ ] [ ] [ ] [ ] [ [ 1 1 ] ] [ 3 ] [ inf ] [ 0 0 ] [ 0 0 ] [ 4 4 ]", "2 1", "1 1",
       "inequation 1 gives 2, outside 3 .. inf"},
      {"[ ] [ ] [ [ 0 0 ] ] [ 0 ] [ ] [ ] [ ] [ 0 0 ] [ 0 0 ] [ 4 4 ]", "4 0", "5 0",
       "x1 = 5 is outside 0 .. 4"},
      {"[ ] [ ] [ [ 0 0 ] ] [ 0 ] [ ] [ ] [ ] [ 0 0 ] [ 0 0 ] [ 4 4 ]", "0 0", "0 -1",
       "x2 = -1 is outside 0 .. 4"},
      {"[ ] [ ] [ [ 0 0 ] ] [ 0 ] [ ] [ ] [ ] [ 0 0 ] [ -inf 0 ] [ 4 inf ]", "-99 99", "-99 -1",
       "x2 = -1 is outside 0 .. inf"},
      {"[ ] [ ] [ [ 0 0 ] ] [ 0 ] [ ] [ ] [ ] [ 0 2 ] [ 0 0 ] [ 4 4 ]", "1 1.01", "1 1.001",
       "x2 = 1:1/1000 is off its grid of 2 digits"},
      {"[ ] [ ] [ [ 0 0 ] ] [ 0 ] [ ] [ ] [ ] [ 0 2 ] [ 0 0 ] [ 4 4 ]", "1 1", "1/2 1",
       "x1 = 1/2 is off its grid of 0 digits"}};
  for (const Condition& c : conditions) {
    EXPECT_EQ(faults(c.opt, std::string("[ ") + c.good + " ] | 0 | [ ] | 0 | 0 | p"), Texts{}) << c.good;
    EXPECT_EQ(faults(c.opt, std::string("[ ") + c.bad + " ] | 0 | [ ] | 0 | 0 | p"), Texts{c.fault});
  }
}

TEST(Judge, all_faults_are_told) {
  EXPECT_EQ(faults(OPT, "[ 11 -1 ] | 4:1/2 | [ 10 5:1/2 ] | 1 | 0 | p"),
            (Texts{"x1 = 11 is outside 0 .. 10", "x2 = -1 is outside 0 .. 10", "equation 1 gives 9, not 7",
                   "slack norm: claimed 1, exactly 0"}));
}

TEST(Judge, long_numbers_are_exact) {
  const std::string big(60, '9');
  const std::string opt = "[ -inf ] [ [ " + big + " ] ] [ ] [ ] [ ] [ ] [ ] [ 0 ] [ 0 ] [ 1 ]";
  EXPECT_EQ(faults(opt, "[ 1 ] | " + big + " | [ " + big + " ] | 0 | 0 | p"), Texts{});
  const std::string other = big.substr(1) + "8";
  EXPECT_EQ(faults(opt, "[ 1 ] | " + big + " | [ 9" + other + " ] | 0 | 0 | p").size(), 1U);
}

TEST(Judge, without_targets_the_norms_are_0) {
  const std::string opt = "[ ] [ ] [ [ 1 ] ] [ 1 ] [ ] [ ] [ ] [ 0 ] [ 0 ] [ 1 ]";
  EXPECT_EQ(faults(opt, "[ 1 ] | 0 | [ ] | 0 | 0 | p"), Texts{});
  EXPECT_EQ(faults(opt, "[ 1 ] | 1 | [ ] | 0 | 0 | p"), Texts{"target norm: claimed 1, exactly 0"});
  EXPECT_EQ(faults(opt, "[ 1 ] | 0 | [ 0 ] | 0 | 0 | p"), Texts{"1 target values, not 0"});
}

constexpr const char* VALUE = "[ 7 ] [ [ 2 3 ] ] [ ] [ ] [ ] [ ] [ ] [ 0 0 ] [ 0 0 ] [ 4 4 ]";

TEST(TargetsWithAValue, show_their_distance) {
  EXPECT_EQ(faults(VALUE, "[ 1 1 ] | 2 | [ 2 ] | 2 | 0 | p"), Texts{});
  EXPECT_EQ(faults(VALUE, "[ 2 2 ] | 3 | [ 3 ] | 3 | 0 | p"), Texts{});
  EXPECT_EQ(faults(VALUE, "[ 1 1 ] | 3 | [ 3 ] | 2 | 0 | p"),
            (Texts{"distance from target 1: claimed 3, exactly 2", "target norm: claimed 3, exactly 2"}));
  EXPECT_EQ(faults(VALUE, "[ 1 1 ] | 0 | [ 0 ] | 2 | 0 | p"),
            (Texts{"distance from target 1: claimed 0, exactly 2", "target norm: claimed 0, exactly 2"}));
  EXPECT_EQ(faults(VALUE, "[ 1 1 ] | 2 | [ 2 ] | 3 | 0 | p"), Texts{"slack norm: claimed 3, exactly 2"});
}

TEST(TargetsWithAValue, may_be_claimed_too_far_by_an_even_number) {
  const Judgement judgement = judged(VALUE, "[ 1 1 ] | 6 | [ 6 ] | 2 | 0 | p");
  EXPECT_EQ(judgement.faults, Texts{});
  EXPECT_EQ(judgement.notes, Texts{"distance from target 1: 2, claimed with both deviations above 0 as 6"});
  // The norm follows the value that is claimed, and no other.
  EXPECT_EQ(faults(VALUE, "[ 1 1 ] | 2 | [ 6 ] | 2 | 0 | p"), Texts{"target norm: claimed 2, exactly 6"});
}

TEST(TargetsWithAValue, stand_behind_the_others) {
  const std::string opt = "[ 7 inf ] [ [ 2 3 ] [ 1 0 ] ] [ ] [ ] [ ] [ ] [ ] [ 0 0 ] [ 0 0 ] [ 4 4 ]";
  // The rows that the slack norm is taken from: the only one is that of target 1.
  EXPECT_EQ(faults(opt, "[ 1 1 ] | 1 | [ 1 2 ] | 2 | 0 | p"), Texts{});
  EXPECT_EQ(faults(opt, "[ 1 1 ] | 1 | [ 2 1 ] | 2 | 0 | p").size(), 2U);
}

TEST(TargetsWithAValue, the_slack_norm_of_other_rows_has_a_note) {
  const std::string opt = "[ 7 ] [ [ 2 3 ] ] [ [ 1 1 ] ] [ 2 ] [ ] [ ] [ ] [ 0 0 ] [ 0 0 ] [ 4 4 ]";
  EXPECT_EQ(judged(opt, "[ 1 1 ] | 2 | [ 2 ] | 2 | 0 | p").notes, Texts{});
  const Judgement taken = judged(opt, "[ 1 1 ] | 2 | [ 2 ] | 0 | 0 | p");
  EXPECT_EQ(taken.faults, Texts{});
  EXPECT_EQ(taken.notes, Texts{"slack norm 0 is what the solver takes from other rows; the distance is 2"});
  EXPECT_EQ(faults(opt, "[ 1 1 ] | 2 | [ 2 ] | 1 | 0 | p"), Texts{"slack norm: claimed 1, exactly 2"});
}

// Symptom: 0.99999999999884494 was called wrong where the row gave 1.
TEST(TargetsWithAValue, the_slack_norm_of_other_rows_may_be_rounded) {
  const std::string opt = "[ 7 ] [ [ 2 3 ] ] [ [ 0.1 0.2 ] ] [ 1.3 ] [ ] [ ] [ ] [ 0 0 ] [ 0 0 ] [ 4 4 ]";
  const Judgement taken = judged(opt, "[ 1 1 ] | 2 | [ 2 ] | 0.99999999999884494 | 0 | p");
  EXPECT_EQ(taken.faults, Texts{"equation 1 gives 3/10, not 1:3/10"});
  EXPECT_EQ(taken.notes, Texts{"slack norm 1 is what the solver takes from other rows; the distance is 2"});
  EXPECT_EQ(faults(opt, "[ 1 1 ] | 2 | [ 2 ] | 0.9999 | 0 | p").size(), 2U);
}

TEST(Rounding, holds_with_a_note_where_terms_are_no_whole_numbers) {
  const std::string opt = "[ -inf ] [ [ 1/3 ] ] [ ] [ ] [ ] [ ] [ ] [ 0 ] [ 0 ] [ 9 ]";
  const Judgement judgement = judged(opt, "[ 1 ] | 0.33333333333333333 | [ 1/3 ] | 0 | 0 | p");
  EXPECT_EQ(judgement.faults, Texts{});
  ASSERT_EQ(judgement.notes.size(), 1U);
  EXPECT_TRUE(judgement.notes[0].ends_with(", a rounding"));
  EXPECT_EQ(faults(opt, "[ 1 ] | 0.3333333 | [ 1/3 ] | 0 | 0 | p").size(), 1U);
}

TEST(Rounding, is_no_excuse_for_whole_numbers) {
  const std::string opt = "[ -inf ] [ [ 100000000000000000000 ] ] [ ] [ ] [ ] [ ] [ ] [ 0 ] [ 0 ] [ 9 ]";
  EXPECT_EQ(faults(opt, "[ 1 ] | 100000000000000000001 | [ 100000000000000000000 ] | 0 | 0 | p").size(), 1U);
}

TEST(Rounding, is_never_above_a_billionth) {
  const std::string opt = "[ -inf ] [ [ 1000000000000000:1/2 ] ] [ ] [ ] [ ] [ ] [ ] [ 0 ] [ 0 ] [ 9 ]";
  const std::string value = "[ 1000000000000000:1/2 ] | 0 | 0 | p";
  EXPECT_EQ(faults(opt, "[ 1 ] | 1000000000000000.500000001 | " + value), Texts{});
  EXPECT_EQ(faults(opt, "[ 1 ] | 1000000000000000.500000002 | " + value).size(), 1U);
}

TEST(Reasons, a_lower_bound_that_is_not_0) {
  const std::string opt = "[ ] [ ] [ [ 0 ] ] [ 0 ] [ ] [ ] [ ] [ 0 ] [ -3 ] [ 10 ]";
  EXPECT_EQ(faults(opt, "[ 10 ] | 0 | [ ] | 0 | 0 | p"), Texts{});
  EXPECT_EQ(
      faults(opt, "[ 13 ] | 0 | [ ] | 0 | 0 | p"),
      Texts{
          "x1 = 13 is outside -3 .. 10 (its lower bound is not 0, so the solver searches within -3 .. 13)"});
  EXPECT_EQ(faults(opt, "[ 14 ] | 0 | [ ] | 0 | 0 | p"), Texts{"x1 = 14 is outside -3 .. 10"});
}

TEST(Reasons, a_row_that_was_replaced) {
  const std::string opt = "[ ] [ ] [ [ 1 1 ] ] [ 4 ] [ [ 1 0 ] ] [ 1 ] [ 1 ] [ 0 0 ] [ 0 0 ] [ 4 4 ]";
  EXPECT_EQ(faults(opt, "[ 1 3 ] | 0 | [ ] | 0 | 0 | p"), Texts{});
  EXPECT_EQ(
      faults(opt, "[ 1 2 ] | 0 | [ ] | 0 | 0 | p"),
      Texts{"equation 1 gives 3, not 4 (inequation 1, with equal sides, took its place in the solver)"});
  const std::string two = "[ ] [ ] [ ] [ ] [ [ 1 2 ] [ 2 1 ] ] [ 5 4 ] [ 5 4 ] [ 0 0 ] [ 0 0 ] [ 4 4 ]";
  EXPECT_EQ(
      faults(two, "[ 2 0 ] | 0 | [ ] | 0 | 0 | p"),
      Texts{"inequation 1 gives 2, outside 5 .. 5 (inequation 2, with equal sides, took its place in the "
            "solver)"});
}

TEST(Reasons, a_fixed_variable_off_its_grid) {
  const std::string opt = "[ ] [ ] [ [ 0 ] ] [ 0 ] [ ] [ ] [ ] [ 0 ] [ 1/2 ] [ 1/2 ]";
  EXPECT_EQ(
      faults(opt, "[ 1/2 ] | 0 | [ ] | 0 | 0 | p"),
      Texts{"x1 = 1/2 is off its grid of 0 digits (it is fixed, and the solver takes fixed variables as they "
            "are)"});
}

}  // namespace
}  // namespace latbox::check
