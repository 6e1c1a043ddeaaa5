#include "check/proof/system.h"

#include <gtest/gtest.h>

#include "proof_support.h"

namespace latbox::check::proof {
namespace {

// x1 whole, x2 in tenths, x3 whole although its digits are negative.
constexpr const char* OPT = R"([ -inf inf 3 5/2 ] [ [ 1 1 0 ] [ 0 1/4 0 ] [ 1 0 -1 ] [ 0 1 1 ] ]
[ [ 1/2 1/3 0 ] [ 2 0 4 ] ] [ 5/7 6 ]
[ [ 1 0 0 ] [ 0 1 0 ] [ 1 1 1 ] ] [ -1/2 inf -inf ] [ 7/2 inf 2 ]
[ 0 1 -3 ] [ -1/2 0.04 -inf ] [ 7/2 0.96 inf ]
)";

Integers ends(const Range& range) {
  return {range.low.value_or(-999), range.high.value_or(999)};
}

TEST(ProofSystem, variables) {
  const System system = systemOf(readProgram(OPT));
  EXPECT_EQ(ends(system.variables[0]), (Integers{0, 3}));
  EXPECT_EQ(ends(system.variables[1]), (Integers{1, 9}));
  EXPECT_EQ(ends(system.variables[2]), (Integers{-999, 999}));
}

TEST(ProofSystem, rows) {
  const System system = systemOf(readProgram(OPT));
  ASSERT_EQ(system.rows.size(), 5U);
  // z1 / 2 + z2 / 30 = 5/7: times 30, and 150/7 is no whole number.
  EXPECT_EQ(system.rows[0].coefficients, (Integers{15, 1, 0}));
  EXPECT_EQ(ends(system.rows[0].range), (Integers{22, 21}));
  EXPECT_TRUE(system.rows[0].range.isEmpty());
  EXPECT_EQ(system.rows[1].coefficients, (Integers{2, 0, 4}));
  EXPECT_EQ(ends(system.rows[1].range), (Integers{6, 6}));
  EXPECT_EQ(ends(system.rows[2].range), (Integers{0, 3}));
  // Kept by nothing.
  EXPECT_EQ(system.rows[3].coefficients, (Integers{0, 0, 0}));
  EXPECT_EQ(ends(system.rows[3].range), (Integers{1, 0}));
  EXPECT_EQ(system.rows[4].coefficients, (Integers{10, 1, 10}));
  EXPECT_EQ(ends(system.rows[4].range), (Integers{-999, 20}));
}

TEST(ProofSystem, the_unit_of_norms) {
  // 1/10, 1/40 and 5/2.
  EXPECT_EQ(unitOf(readProgram(OPT)), 40);
  EXPECT_EQ(unitOf(readProgram("[ 1/3 ] [ [ 2 ] ] [ ] [ ] [ ] [ ] [ ] [ 0 ] [ 0 ] [ 1 ]")), 3);
  EXPECT_TRUE(hasLinear(readProgram(OPT)));
  EXPECT_FALSE(hasLinear(readProgram("[ 1/3 -inf ] [ [ 2 ] [ 0 ] ] [ ] [ ] [ ] [ ] [ ] [ 0 ] [ 0 ] [ 1 ]")));
}

// L = 40 x1 + (4 - 1) z2, E1 = 40 x1 - 40 x3 - 120, E2 = 4 z2 + 40 z3 - 100.
SystemRow row(Objective kind, const Integers& signs, Goal goal) {
  Verdict verdict;
  verdict.target = mpq_class(9, 4);
  verdict.slack = mpq_class(1, 2);
  return rowOf(readProgram(OPT), {kind, {7, signs}}, goal, verdict);
}

TEST(ProofSystem, rows_of_norms) {
  const SystemRow linear = row(Objective::NORM, {0, 0}, Goal::BETTER);
  EXPECT_EQ(linear.coefficients, (Integers{40, 3, 0}));
  EXPECT_EQ(ends(linear.range), (Integers{-999, 89}));
  const SystemRow all = row(Objective::NORM, {1, -1}, Goal::BETTER);
  EXPECT_EQ(all.coefficients, (Integers{80, -1, -80}));
  EXPECT_EQ(ends(all.range), (Integers{-999, 89 + 120 - 100}));
  EXPECT_EQ(ends(row(Objective::NORM, {1, -1}, Goal::SLACK).range), (Integers{-999, 90 + 120 - 100}));
  EXPECT_EQ(ends(row(Objective::NORM, {1, -1}, Goal::EQUAL).range), (Integers{-999, 90 + 120 - 100}));
}

TEST(ProofSystem, rows_of_distances) {
  const SystemRow slack = row(Objective::DISTANCE, {-1, 1}, Goal::SLACK);
  EXPECT_EQ(slack.coefficients, (Integers{-40, 4, 80}));
  EXPECT_EQ(ends(slack.range), (Integers{-999, 19 - 120 + 100}));
  EXPECT_EQ(ends(row(Objective::DISTANCE, {-1, 1}, Goal::EQUAL).range), (Integers{-999, 20 - 120 + 100}));
}

TEST(ProofSystem, linear_rows) {
  const SystemRow slack = row(Objective::LINEAR, {}, Goal::SLACK);
  EXPECT_EQ(slack.coefficients, (Integers{40, 3, 0}));
  EXPECT_EQ(ends(slack.range), (Integers{71, 999}));
  EXPECT_EQ(ends(row(Objective::LINEAR, {}, Goal::EQUAL).range), (Integers{70, 70}));
}

std::string refusal(Objective kind, const Integers& signs, Goal goal) {
  try {
    row(kind, signs, goal);
  } catch (const Refused& refused) {
    return refused.what();
  }
  return "";
}

TEST(ProofSystem, rows_that_nothing_needs_to_keep) {
  EXPECT_EQ(refusal(Objective::NORM, {0, 0}, Goal::POINTS), "line 7: not a row of a search points");
  EXPECT_EQ(refusal(Objective::DISTANCE, {0, 0}, Goal::BETTER), "line 7: not a row of a search better");
  EXPECT_EQ(refusal(Objective::LINEAR, {}, Goal::BETTER), "line 7: not a row of a search better");
  EXPECT_EQ(refusal(Objective::NORM, {0}, Goal::BETTER), "line 7: too few signs");
  EXPECT_EQ(refusal(Objective::NORM, {0, 1, 0}, Goal::BETTER), "line 7: too many signs");
  EXPECT_EQ(refusal(Objective::NORM, {0, 2}, Goal::BETTER), "line 7: a sign is not -1, 0 or 1");
  EXPECT_EQ(refusal(Objective::DISTANCE, {-2, 0}, Goal::EQUAL), "line 7: a sign is not -1, 0 or 1");
}

std::string norms(const std::vector<Rational>& x) {
  const std::string opt = R"([ -inf inf 3 ] [ [ 1 1 ] [ 0 1/4 ] [ 1 -1 ] ]
[ [ 1 2 ] ] [ 4 ] [ [ 1 0 ] ] [ 1 ] [ 3 ] [ 0 1 ] [ 0 0 ] [ 9 9 ])";
  const auto found = normsOf(readProgram(opt), x);
  return found ? check::toText(found->target) + " " + check::toText(found->slack) : "not feasible";
}

TEST(ProofSystem, norms_of_points) {
  // 3 + 1/2, less 1/8, and 1/2 away from 3.
  EXPECT_EQ(norms({3, Rational(mpq_class(1, 2))}), "3:7/8 1/2");
  EXPECT_EQ(norms({2, 1}), "4:3/4 2");
  EXPECT_EQ(norms({4, 0}), "not feasible");
  EXPECT_EQ(norms({0, 2}), "not feasible");
  EXPECT_EQ(norms({2, 2}), "not feasible");
  EXPECT_EQ(norms({Rational(mpq_class(3, 2)), Rational(mpq_class(5, 4))}), "not feasible");
  EXPECT_EQ(norms({3, Rational(mpq_class(1, 3))}), "not feasible");
}

TEST(ProofSystem, what_counts) {
  const Norms verdict{5, 2};
  const auto shown = [&](Goal goal) {
    std::string text;
    for (const Norms& norms : {Norms{4, 3}, Norms{5, 1}, Norms{5, 2}, Norms{5, 3}, Norms{6, 1}})
      text += counts(goal, norms, verdict) ? '1' : '0';
    return text;
  };
  EXPECT_EQ(shown(Goal::POINTS), "11111");
  EXPECT_EQ(shown(Goal::BETTER), "10000");
  EXPECT_EQ(shown(Goal::SLACK), "01000");
  EXPECT_EQ(shown(Goal::EQUAL), "00100");
}

}  // namespace
}  // namespace latbox::check::proof
