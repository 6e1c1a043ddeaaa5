#include "complete/linear/box_relaxation.h"

#include <cmath>

#include "complete/linear/linear_program.h"
#include "small_programs.h"

namespace latbox::complete {
namespace {

using testing::rangeOf;
using testing::rowOf;

constexpr double TOLERANCE = 1e-6;

bool never() {
  return false;
}

IntegerProgram partOf(IntegerProgram program, const std::vector<WordRange>& box) {
  for (std::size_t j = 0; j < box.size(); ++j) program.box[j] = rangeOf(box[j].low, box[j].high);
  return program;
}

bool isRationallyEmpty(const IntegerProgram& program) {
  return !LinearProgram(program).isFeasible();
}

// A program, its goal, and parts of its box.
struct Instance {
  explicit Instance(testing::SmallPrograms& programs)
      : program(programs.next()), words(*wordProgramOf(program)) {
    for (std::size_t j = 0; j < program.box.size(); ++j)
      goal.push_back(static_cast<double>(programs.draw(-3, 3)));
  }

  std::vector<WordRange> part(testing::SmallPrograms& programs) const {
    std::vector<WordRange> box = words.box;
    for (WordRange& range : box) {
      if (programs.draw(0, 1) == 0) continue;
      range.low = programs.draw(range.low, range.high);
      range.high = programs.draw(range.low, range.high);
    }
    return box;
  }

  // The least value of the goal in a part, by rationals. Requires that there is one.
  double least(const std::vector<WordRange>& box) const {
    IntegerProgram own = partOf(program, box);
    Row row;
    for (const double count : goal) row.a.emplace_back(count);
    own.rows.push_back(row);
    LinearProgram exact(own);
    return -exact.greatest(own.box.size() + own.rows.size() - 1, -1)->get_d();
  }

  bool isNearPoint(const std::vector<double>& values, const std::vector<WordRange>& box) const {
    bool isNear = true;
    const auto keeps = [](const WordRange& range, double value, double scale) {
      return value > static_cast<double>(range.low) - TOLERANCE * scale &&
             value < static_cast<double>(range.high) + TOLERANCE * scale;
    };
    for (std::size_t j = 0; j < box.size(); ++j) isNear = isNear && keeps(box[j], values[j], 10);
    for (const WordRow& row : words.rows) {
      double value = 0;
      for (const auto& [j, count] : row.terms) value += static_cast<double>(count) * values[j];
      isNear = isNear && keeps(row.range, value, 100);
    }
    return isNear;
  }

  IntegerProgram program;
  WordProgram words;
  std::vector<double> goal;
};

TEST(BoxRelaxation, AgreesWithTheExactOneInAllPartsOfTheBox) {
  testing::SmallPrograms programs(5);
  std::size_t empty = 0;
  std::size_t points = 0;
  std::size_t undecided = 0;
  for (int i = 0; i < 300; ++i) {
    const Instance instance(programs);
    BoxRelaxation relaxation(instance.words, instance.goal, 1);
    for (int k = 0; k < 10; ++k) {
      const auto box = instance.part(programs);
      const bool isEmpty = isRationallyEmpty(partOf(instance.program, box));
      switch (relaxation.run(box, never)) {
        case BoxRelaxation::Outcome::EMPTY:
          EXPECT_TRUE(isEmpty);
          ++empty;
          break;
        case BoxRelaxation::Outcome::POINT: {
          EXPECT_FALSE(isEmpty);
          EXPECT_TRUE(instance.isNearPoint(relaxation.values(), box));
          double value = 0;
          for (std::size_t j = 0; j < box.size(); ++j) value += instance.goal[j] * relaxation.values()[j];
          EXPECT_NEAR(value, isEmpty ? value : instance.least(box), 0.5);
          ++points;
          break;
        }
        case BoxRelaxation::Outcome::UNDECIDED:
          ++undecided;
          break;
      }
    }
  }
  EXPECT_GT(empty, 300u);
  EXPECT_GT(points, 300u);
  EXPECT_LT(undecided, 10u);
}

// After a thousand steps the dictionary is made anew.
TEST(BoxRelaxation, StaysRightThroughThousandsOfParts) {
  testing::SmallPrograms programs(6);
  std::optional<Instance> instance;
  do instance.emplace(programs);
  while (instance->program.box.size() < 4 || instance->program.rows.size() < 4 ||
         testing::pointsOf(instance->program).empty());
  BoxRelaxation relaxation(instance->words, instance->goal, 1);
  for (int k = 0; k < 3000; ++k) {
    const auto box = instance->part(programs);
    const auto outcome = relaxation.run(box, never);
    const bool isEmpty = isRationallyEmpty(partOf(instance->program, box));
    EXPECT_EQ(outcome, isEmpty ? BoxRelaxation::Outcome::EMPTY : BoxRelaxation::Outcome::POINT);
  }
}

// A variable that cannot go to a whole value on one side.
TEST(BoxRelaxation, AnInfiniteLossIsAnEmptyHalf) {
  testing::SmallPrograms programs(7);
  std::size_t infinite = 0;
  std::size_t finite = 0;
  for (int i = 0; i < 2000; ++i) {
    const Instance instance(programs);
    BoxRelaxation relaxation(instance.words, instance.goal, 1);
    if (relaxation.run(instance.words.box, never) != BoxRelaxation::Outcome::POINT) continue;
    for (std::size_t j = 0; j < instance.goal.size(); ++j) {
      const double value = relaxation.values()[j];
      if (std::fabs(value - std::round(value)) < 1e-4) continue;
      for (const bool isUp : {false, true}) {
        const double loss = isUp ? relaxation.lossUp(j) : relaxation.lossDown(j);
        EXPECT_GE(loss, 0);
        (std::isinf(loss) ? infinite : finite) += 1;
        if (!std::isinf(loss)) continue;
        std::vector<WordRange> half = instance.words.box;
        (isUp ? half[j].low : half[j].high) = std::llround(isUp ? std::ceil(value) : std::floor(value));
        EXPECT_TRUE(half[j].isEmpty() || isRationallyEmpty(partOf(instance.program, half)));
      }
    }
  }
  EXPECT_GT(infinite, 20u);
  EXPECT_GT(finite, 200u);
}

// 10^8 (x - y) + u + v = 25 with x = y: what doubles take for a contradiction is none.
TEST(BoxRelaxation, AContradictionOfDoublesIsUndecided) {
  const auto words = wordProgramOf({{rangeOf(0, 40), rangeOf(0, 40), rangeOf(0, 25), rangeOf(0, 25)},
                                    {rowOf({100'000'000, -100'000'000, 1, 1}, 25, 25)}});
  BoxRelaxation relaxation(*words, {0, 0, 1, 1}, 1);
  EXPECT_EQ(relaxation.run({{7, 7}, {7, 7}, {0, 25}, {0, 25}}, never), BoxRelaxation::Outcome::UNDECIDED);
}

TEST(BoxRelaxation, IsUndecidedWhenItIsToEnd) {
  const auto words = wordProgramOf({{rangeOf(0, 3), rangeOf(0, 3)}, {rowOf({1, 1}, 3, 3)}});
  BoxRelaxation relaxation(*words, {1, 1}, 1);
  EXPECT_EQ(relaxation.run(words->box, [] { return true; }), BoxRelaxation::Outcome::UNDECIDED);
  EXPECT_EQ(relaxation.run(words->box, never), BoxRelaxation::Outcome::POINT);
}

// 30 by 30: more steps than one run of the simplex method has.
TEST(BoxRelaxation, BringsAnAssignmentToItsEnd) {
  constexpr std::size_t SIZE = 30;
  IntegerProgram program;
  program.box.assign(SIZE * SIZE, rangeOf(0, 1));
  for (std::size_t i = 0; i < 2 * SIZE; ++i) {
    Row row;
    row.range = rangeOf(1, 1);
    for (std::size_t j = 0; j < SIZE * SIZE; ++j)
      row.a.emplace_back((i < SIZE ? j / SIZE == i : j % SIZE == i - SIZE) ? 1 : 0);
    program.rows.push_back(row);
  }
  std::vector<double> goal;
  for (std::size_t j = 0; j < SIZE * SIZE; ++j) goal.push_back(static_cast<double>(j * j % 101));
  const auto words = wordProgramOf(program);
  BoxRelaxation relaxation(*words, goal, 1);
  ASSERT_EQ(relaxation.run(words->box, never), BoxRelaxation::Outcome::POINT);
  // The vertices are whole.
  for (const double value : relaxation.values()) EXPECT_NEAR(value, std::round(value), TOLERANCE);
}

TEST(BoxRelaxation, WithoutVariablesOrRows) {
  const auto fixed = wordProgramOf({{rangeOf(3, 3)}, {rowOf({2}, 6, 6)}});
  BoxRelaxation none(*fixed, {1}, 1);
  ASSERT_EQ(none.run(fixed->box, never), BoxRelaxation::Outcome::POINT);
  EXPECT_EQ(none.values()[0], 3);
  const auto free = wordProgramOf({{rangeOf(-2, 5)}, {}});
  BoxRelaxation rowless(*free, {-1}, 1);
  ASSERT_EQ(rowless.run(free->box, never), BoxRelaxation::Outcome::POINT);
  EXPECT_EQ(rowless.values()[0], 5);
}

// x + y = 3 in 0..3 with equal weights: which end comes out is drawn.
TEST(BoxRelaxation, SeedsBringOtherPoints) {
  const auto words = wordProgramOf({{rangeOf(0, 3), rangeOf(0, 3)}, {rowOf({1, 1}, 3, 3)}});
  std::set<double> values;
  for (unsigned seed = 1; seed <= 20; ++seed) {
    BoxRelaxation relaxation(*words, {1, 1}, seed);
    ASSERT_EQ(relaxation.run(words->box, never), BoxRelaxation::Outcome::POINT);
    values.insert(relaxation.values()[0]);
  }
  EXPECT_EQ(values, (std::set<double>{0, 3}));
}

}  // namespace
}  // namespace latbox::complete
