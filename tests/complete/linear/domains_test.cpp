#include "complete/linear/domains.h"

#include "small_programs.h"

namespace latbox::complete {
namespace {

using testing::rangeOf;
using testing::rowOf;

bool isIn(const IntegerVector& z, const std::vector<WordRange>& box) {
  for (std::size_t j = 0; j < z.size(); ++j)
    if (z[j] < Integer(box[j].low) || z[j] > Integer(box[j].high)) return false;
  return true;
}

TEST(Domains, NarrowByActivities) {
  const auto words =
      wordProgramOf({{rangeOf(0, 9), rangeOf(0, 9)}, {rowOf({2, 3}, std::nullopt, 7), rowOf({1, -1}, 1, 9)}});
  Domains domains(*words);
  ASSERT_TRUE(domains.propagate());
  EXPECT_EQ(domains.box()[0].low, 1);
  EXPECT_EQ(domains.box()[0].high, 3);
  EXPECT_EQ(domains.box()[1].high, 1);
}

// Ways down and back up: each leaves the points of its box, and what was there before comes back.
TEST(Domains, KeepThePointsAndGoBack) {
  testing::SmallPrograms programs(4);
  std::size_t refuted = 0;
  for (int i = 0; i < 3000; ++i) {
    const IntegerProgram program = programs.next();
    const auto points = testing::pointsOf(program);
    const auto words = wordProgramOf(program);
    Domains domains(*words);
    std::vector<std::pair<Domains::Mark, std::vector<WordRange>>> way;
    std::vector<WordRange> chosen = words->box;
    while (true) {
      const bool isPossible = domains.propagate();
      refuted += isPossible ? 0 : 1;
      for (const IntegerVector& z : points)
        EXPECT_TRUE(!isIn(z, chosen) || (isPossible && isIn(z, domains.box())));
      if (!isPossible) break;
      const auto j = static_cast<std::size_t>(programs.draw(0, static_cast<long>(chosen.size()) - 1));
      const WordRange own = domains.box()[j];
      if (own.isFixed()) break;
      way.emplace_back(domains.mark(), domains.box());
      const WordRange part{own.low, programs.draw(own.low, own.high - 1)};
      chosen[j] = part;
      domains.narrow(j, part);
    }
    for (; !way.empty(); way.pop_back()) {
      domains.goBack(way.back().first);
      EXPECT_EQ(domains.box(), way.back().second);
    }
  }
  EXPECT_GT(refuted, 300u);
}

TEST(Domains, ARefutedNodeLeavesNothingBehind) {
  const auto words =
      wordProgramOf({{rangeOf(0, 1), rangeOf(0, 1)}, {rowOf({1, 1}, 1, 1), rowOf({1, -1}, 0, 1)}});
  Domains domains(*words);
  ASSERT_TRUE(domains.propagate());
  const Domains::Mark mark = domains.mark();
  domains.narrow(0, {0, 0});
  EXPECT_FALSE(domains.propagate());
  domains.goBack(mark);
  domains.narrow(0, {1, 1});
  ASSERT_TRUE(domains.propagate());
  EXPECT_EQ(domains.box()[1].high, 0);
}

TEST(Domains, AnEmptyRangeOfARowIsFound) {
  const auto words = wordProgramOf({{rangeOf(0, 1)}, {rowOf({1}, 2, std::nullopt)}});
  EXPECT_FALSE(Domains(*words).propagate());
}

// 2 x = 2 y + 1 moves the ends of both by one step a visit, without end but for the limit.
TEST(Domains, CreepingEnds) {
  const auto words = wordProgramOf({{rangeOf(0, MOST_SIZE), rangeOf(0, MOST_SIZE)}, {rowOf({2, -2}, 1, 1)}});
  Domains domains(*words);
  EXPECT_TRUE(domains.propagate());
  EXPECT_LT(domains.work(), 1000u);
}

}  // namespace
}  // namespace latbox::complete
