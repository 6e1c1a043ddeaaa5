#include "complete/linear/word_program.h"

#include "small_programs.h"

namespace latbox::complete {
namespace {

using testing::rangeOf;
using testing::rowOf;

IntegerProgram integersOf(const WordProgram& words) {
  IntegerProgram program;
  for (const WordRange& range : words.box) program.box.push_back(rangeOf(range.low, range.high));
  for (const WordRow& row : words.rows) {
    program.rows.push_back({IntegerVector(words.box.size()), rangeOf(row.range.low, row.range.high)});
    for (const auto& [j, count] : row.terms) program.rows.back().a[j] = count;
  }
  return program;
}

TEST(WordProgram, HasTheSamePoints) {
  testing::SmallPrograms programs(1);
  std::size_t empty = 0;
  for (int i = 0; i < 2000; ++i) {
    const IntegerProgram program = programs.next();
    const auto words = wordProgramOf(program);
    ASSERT_TRUE(words);
    const auto points = testing::pointsOf(program);
    EXPECT_EQ(testing::pointsOf(integersOf(*words)), points);
    empty += points.empty() ? 1 : 0;
  }
  EXPECT_GT(empty, 200u);
  EXPECT_LT(empty, 1800u);
}

TEST(WordProgram, LeavesOutZerosAndBringsSidesToWhatTheRowCanBe) {
  const auto words = wordProgramOf({{rangeOf(-1, 2), rangeOf(0, 3)}, {rowOf({0, 5}, std::nullopt, 99)}});
  ASSERT_TRUE(words);
  ASSERT_EQ(words->rows[0].terms.size(), 1u);
  EXPECT_EQ(words->rows[0].terms[0].variable, 1u);
  EXPECT_EQ(words->rows[0].range.low, 0);
  EXPECT_EQ(words->rows[0].range.high, 15);
}

TEST(WordProgram, ASideThatNothingReachesIsAnEmptyRange) {
  for (const Row& row :
       {rowOf({1, 1}, 7, std::nullopt), rowOf({1, 1}, std::nullopt, -2), rowOf({1, 1}, 9, 8)}) {
    const auto words = wordProgramOf({{rangeOf(0, 3), rangeOf(-1, 3)}, {row}});
    ASSERT_TRUE(words);
    EXPECT_TRUE(words->rows[0].range.isEmpty());
  }
}

TEST(WordProgram, RefusesWhatDoesNotFit) {
  const Integer end = MOST_SIZE;
  const Integer longer = end + 1;
  const auto withVariable = [](Range range, const Integer& a) {
    IntegerProgram program;
    program.box.push_back(std::move(range));
    program.rows.push_back({{a}, {Integer(0), std::nullopt}});
    return program;
  };
  EXPECT_TRUE(wordProgramOf(withVariable({Integer(-end), end}, end)));
  EXPECT_FALSE(wordProgramOf(withVariable({Integer(0), longer}, 1)));
  EXPECT_FALSE(wordProgramOf(withVariable({Integer(-longer), Integer(0)}, 1)));
  EXPECT_FALSE(wordProgramOf(withVariable({Integer(0), end}, longer)));
  EXPECT_FALSE(wordProgramOf(withVariable({Integer(0), std::nullopt}, 1)));
  EXPECT_FALSE(wordProgramOf(withVariable({std::nullopt, Integer(0)}, 1)));
  // Each term fits, their sum does not.
  IntegerProgram program = withVariable({Integer(0), end}, end);
  program.box.push_back(program.box[0]);
  program.rows[0].a.push_back(1);
  EXPECT_FALSE(wordProgramOf(program));
  IntegerProgram many;
  many.box.assign(MOST_COUNT + 1, rangeOf(0, 1));
  EXPECT_FALSE(wordProgramOf(many));
  many.box.pop_back();
  EXPECT_TRUE(wordProgramOf(many));
}

TEST(WordProgram, ASideBeyondAllWordsIsOneThatNothingReaches) {
  IntegerProgram program{{rangeOf(0, 3)}, {rowOf({1}, 0, std::nullopt)}};
  program.rows[0].range.low = powerOfTen(40);
  auto words = wordProgramOf(program);
  ASSERT_TRUE(words);
  EXPECT_TRUE(words->rows[0].range.isEmpty());
  program.rows[0].range.low = -powerOfTen(40);
  words = wordProgramOf(program);
  ASSERT_TRUE(words);
  EXPECT_EQ(words->rows[0].range.low, 0);
}

// 3 x + 2 y <= 4 for 0, 1: with x = 0 there is room for 2 more; so 1 x + 2 y <= 2, and then x + y <= 1.
TEST(Strengthen, ShrinksWhatLeavesRoom) {
  auto words = wordProgramOf({{rangeOf(0, 1), rangeOf(0, 1)}, {rowOf({3, 2}, std::nullopt, 4)}});
  strengthen(*words);
  EXPECT_EQ(words->rows[0].terms[0].count, 1);
  EXPECT_EQ(words->rows[0].terms[1].count, 1);
  EXPECT_EQ(words->rows[0].range.high, 1);
}

TEST(Strengthen, LeavesEquationsAndTwoSidesAlone) {
  auto words = wordProgramOf({{rangeOf(0, 1), rangeOf(0, 1)}, {rowOf({3, 2}, 3, 3), rowOf({3, 2}, 1, 4)}});
  strengthen(*words);
  for (const WordRow& row : words->rows) EXPECT_EQ(row.terms[0].count, 3);
}

TEST(Strengthen, KeepsThePointsAndShrinksAlone) {
  testing::SmallPrograms programs(2);
  std::size_t changed = 0;
  for (int i = 0; i < 2000; ++i) {
    const IntegerProgram program = programs.next();
    auto words = wordProgramOf(program);
    const WordProgram before = *words;
    strengthen(*words);
    ASSERT_EQ(testing::pointsOf(integersOf(*words)), testing::pointsOf(program)) << i;
    for (std::size_t r = 0; r < before.rows.size(); ++r)
      for (std::size_t t = 0; t < before.rows[r].terms.size(); ++t) {
        const auto old = before.rows[r].terms[t].count;
        const auto now = words->rows[r].terms[t].count;
        EXPECT_LE(std::abs(now), std::abs(old));
        changed += now != old ? 1 : 0;
      }
  }
  EXPECT_GT(changed, 300u);
}

TEST(IsContradiction, NeverWhereThereIsAPoint) {
  testing::SmallPrograms programs(3);
  std::size_t proven = 0;
  for (int i = 0; i < 5000; ++i) {
    const IntegerProgram program = programs.next();
    const auto words = wordProgramOf(program);
    std::vector<std::int64_t> y;
    for (std::size_t r = 0; r < words->rows.size(); ++r) y.push_back(programs.draw(-3, 3));
    if (!isContradiction(*words, words->box, y)) continue;
    ++proven;
    EXPECT_TRUE(testing::pointsOf(program).empty());
  }
  EXPECT_GT(proven, 100u);
}

// x + y <= 1 and x - y <= 0, while 2 x >= 3: their sum says it. All sums at their greatest stay exact.
TEST(IsContradiction, ByTheRightMultipliersAlone) {
  const auto words = wordProgramOf(
      {{rangeOf(0, 5), rangeOf(0, 5)},
       {rowOf({1, 1}, std::nullopt, 1), rowOf({1, -1}, std::nullopt, 0), rowOf({2, 0}, 3, std::nullopt)}});
  EXPECT_TRUE(isContradiction(*words, words->box, {MOST_MULTIPLIER, MOST_MULTIPLIER, -MOST_MULTIPLIER}));
  EXPECT_TRUE(isContradiction(*words, words->box, {1, 1, -1}));
  EXPECT_FALSE(isContradiction(*words, words->box, {1, 1, 0}));
  EXPECT_FALSE(isContradiction(*words, words->box, {-1, -1, 1}));
  EXPECT_FALSE(isContradiction(*words, words->box, {0, 0, 0}));
  // In a part of the box the first row alone.
  EXPECT_TRUE(isContradiction(*words, {{2, 5}, {0, 5}}, {1, 0, 0}));
}

TEST(IsContradiction, WithTheLongestNumbersThereAre) {
  const Integer end = MOST_SIZE;
  IntegerProgram program{{{Integer(-end), end}}, {}};
  for (std::size_t i = 0; i < 1000; ++i) program.rows.push_back({{end}, {Integer(end * end), std::nullopt}});
  auto words = wordProgramOf(program);
  ASSERT_TRUE(words);
  const std::vector<std::int64_t> y(1000, -MOST_MULTIPLIER);
  EXPECT_FALSE(isContradiction(*words, words->box, y));
  EXPECT_TRUE(isContradiction(*words, {{-MOST_SIZE, MOST_SIZE - 1}}, y));
}

}  // namespace
}  // namespace latbox::complete
