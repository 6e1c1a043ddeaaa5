#include "complete/proof/derivation.h"

#include "small_systems.h"

namespace latbox::complete::proof {
namespace {

using namespace testing;

using Ends = std::pair<Integer, Integer>;

Derivation twelve() {
  return Derivation(madeOf({{Integer(0), {}}, {Integer(0), {}}, {Integer(0), Integer(3)}},
                           {rowOf({4, 5, 7}, 12, 12), rowOf({1, -1, 0}, {}, 4)}));
}

TEST(Derivation, RoundsInwards) {
  Derivation derivation = twelve();
  EXPECT_TRUE(derivation.take(upper(variable(1), 5, {{0, 1}})));
  EXPECT_EQ(derivation.box()[1].high, Integer(2));
  // 4 x1 >= 12 - 5 * 2 - 7 * 3.
  EXPECT_FALSE(derivation.take(lower(variable(0), 4, {{0, 1}})));
  EXPECT_TRUE(derivation.take(upper(variable(2), 7, {{0, 1}})));
  // 4 x1 >= 12 - 5 * 2 - 7 * 1 = -5.
  EXPECT_EQ(derivation.endOf(lower(variable(0), 4, {{0, 1}})), Integer(-1));
  EXPECT_EQ(derivation.steps().size(), 2u);
}

TEST(Derivation, NeedsAllEnds) {
  Derivation derivation = twelve();
  EXPECT_FALSE(derivation.take(upper(row(1), 1, {})));
  // The lower side of the second row is open.
  EXPECT_FALSE(derivation.take(upper(variable(1), 1, {{1, -1}})));
  EXPECT_TRUE(derivation.steps().empty());
}

TEST(Derivation, CombinesRows) {
  // 2 x1 = (x1 + x2) + (x1 - x2).
  Derivation derivation(madeOf({{}, {}}, {rowOf({1, 1}, 0, 7), rowOf({1, -1}, 0, 8)}));
  EXPECT_TRUE(derivation.take(upper(variable(0), 2, {{0, 1}, {1, 1}})));
  EXPECT_TRUE(derivation.take(lower(variable(0), 2, {{0, 1}, {1, 1}})));
  EXPECT_EQ(endsOf(derivation.box()[0]), Ends(0, 7));
}

TEST(Derivation, ClassesMoveBothEnds) {
  // 2 x1 + 4 x2 + x3 = 9: x3 is odd.
  Derivation derivation(madeOf({rangeOf(0, 9), rangeOf(0, 9), rangeOf(0, 6)}, {rowOf({2, 4, 1}, 9, 9)}));
  EXPECT_FALSE(derivation.take(classOf(variable(2), 1, 4, {{0, 1}})));
  EXPECT_TRUE(derivation.take(classOf(variable(2), 1, 2, {{0, 1}})));
  EXPECT_EQ(endsOf(derivation.box()[2]), Ends(1, 5));
  EXPECT_FALSE(derivation.take(classOf(variable(2), 1, 2, {{0, 1}})));
}

TEST(Derivation, ClassesOfMultiples) {
  // 3 x = 12 modulo 15 with x in 0..9: x = 4 or 9.
  Derivation derivation(madeOf({rangeOf(0, 9), rangeOf(-9, 9)}, {rowOf({3, 15}, 12, 12)}));
  EXPECT_TRUE(derivation.take(classOf(variable(0), 3, 15, {{0, 1}})));
  EXPECT_EQ(endsOf(derivation.box()[0]), Ends(4, 9));
}

TEST(Derivation, FixedVariablesCountAsTheirValues) {
  Derivation derivation(madeOf({rangeOf(1, 1), rangeOf(0, 9)}, {rowOf({1, 6}, 0, 20)}));
  // x1 + 6 x2 = 1 modulo 6.
  EXPECT_TRUE(derivation.take(classOf(row(0), 1, 6, {})));
  EXPECT_EQ(endsOf(derivation.ranges()[0]), Ends(1, 19));
}

TEST(Derivation, Contradictions) {
  // 2 x1 + 4 x2 = 7.
  Derivation odd(madeOf({{}, {}}, {rowOf({2, 4}, 7, 7)}));
  EXPECT_TRUE(odd.take(classOf({}, 2, 2, {{0, 1}})));
  EXPECT_TRUE(odd.isContradiction());
  EXPECT_FALSE(odd.take(upper(variable(0), 1, {})));
  // x1 + x2 = 1 and 2 x1 + 2 x2 = 4.
  Derivation rational(madeOf({{}, {}}, {rowOf({1, 1}, 1, 1), rowOf({2, 2}, 4, 4)}));
  EXPECT_FALSE(rational.take(upper({}, 1, {{0, -2}, {1, 1}})));
  EXPECT_TRUE(rational.take(upper({}, 1, {{0, 2}, {1, -1}})));
  EXPECT_TRUE(rational.isContradiction());
  EXPECT_TRUE(Derivation(madeOf({rangeOf(1, 0)}, {})).isContradiction());
}

TEST(Derivation, DropsWhatNothingRestsOn) {
  Derivation derivation(madeOf({rangeOf(0, 9), rangeOf(0, 9), rangeOf(0, 9)},
                               {rowOf({1, 1, 0}, 0, 7), rowOf({1, 0, 0}, 0, 6), rowOf({0, 1, 1}, 8, 8)}));
  // x1 <= 7, then x1 <= 6: nothing rests on the first. The range of the first row is not asked for.
  EXPECT_TRUE(derivation.take(upper(variable(0), 1, {{0, 1}})));
  EXPECT_TRUE(derivation.take(upper(variable(0), 1, {{1, 1}})));
  EXPECT_TRUE(derivation.take(upper(variable(1), 1, {{2, 1}})));
  EXPECT_FALSE(derivation.take(lower(row(0), 1, {})));
  EXPECT_EQ(derivation.steps().size(), 3u);
  EXPECT_EQ(derivation.stepsFor({1, 2}).size(), 2u);
}

TEST(Derivation, AContradictionRestsOnBothEnds) {
  Derivation derivation(madeOf({{}, {}, rangeOf(0, 9)},
                               {rowOf({1, 0, 0}, {}, 3), rowOf({1, 0, 0}, 4, {}), rowOf({0, 1, 1}, 8, 8)}));
  EXPECT_TRUE(derivation.take(upper(variable(1), 1, {{2, 1}})));
  EXPECT_TRUE(derivation.take(upper(variable(0), 1, {{0, 1}})));
  EXPECT_TRUE(derivation.take(lower(variable(0), 1, {{1, 1}})));
  EXPECT_TRUE(derivation.isContradiction());
  const std::vector<Step> steps = derivation.stepsOfContradiction();
  ASSERT_EQ(steps.size(), 2u);
  EXPECT_EQ(steps.front().kind, Step::Kind::UPPER);
  EXPECT_EQ(steps.front().form.index, 0u);
}

}  // namespace
}  // namespace latbox::complete::proof
