#include "complete/linear/linear_bounds.h"

#include <random>

#include "complete/lattice/elimination.h"
#include "complete/linear/linear_program.h"
#include "complete/program/presolve.h"
#include "support.h"

namespace latbox::complete {
namespace {

using testing::rangeOf;
using testing::rowOf;

constexpr unsigned long ENOUGH = 1'000'000'000;

// Some variables in boxes and some rows; numbers of up to so many digits.
class RandomProgram {
 public:
  RandomProgram(unsigned seed, unsigned long boxDigits, unsigned long digits) : random_(seed) {
    const long n = draw(2, 7);
    const Integer width = powerOfTen(boxDigits);
    for (long j = 0; j < n; ++j) {
      const Integer low = number(width);
      program.box.push_back({low, Integer(low + abs(number(width)) + 1)});
    }
    for (long i = draw(1, 4); i > 0; --i) {
      Row row;
      Integer middle = 0;
      for (const Range& range : program.box) {
        row.a.push_back(number(powerOfTen(digits)));
        // Mostly near a point of the box.
        middle += row.a.back() * (draw(0, 7) == 0 ? *range.high : *range.low);
      }
      const Integer reach = powerOfTen(boxDigits + digits) / 2;
      row.range = {Integer(middle - abs(number(reach))), Integer(middle + abs(number(reach)))};
      program.rows.push_back(row);
    }
  }

  IntegerProgram program;

 private:
  Integer number(const Integer& size) { return Integer(size * draw(-1000, 1000)) / 1000 + draw(-3, 3); }
  long draw(long low, long high) {
    return low + static_cast<long>(random_() % static_cast<unsigned long>(high - low + 1));
  }

  std::mt19937 random_;
};

struct Tally {
  std::size_t asked = 0;
  std::size_t best = 0;
  std::size_t empty = 0;
  std::size_t shownEmpty = 0;
};

// No bound is below the exact one; most reach it.
void compare(const IntegerProgram& program, Tally& tally) {
  LinearProgram exact(program);
  LinearBounds bounds(program, ENOUGH);
  tally.empty += exact.isFeasible() ? 0 : 1;
  tally.shownEmpty += bounds.isEmpty() ? 1 : 0;
  ASSERT_FALSE(bounds.isEmpty() && exact.isFeasible());
  for (std::size_t v = 0; exact.isFeasible() && v < program.box.size() + program.rows.size(); ++v)
    for (const int sign : {1, -1}) {
      const std::size_t n = program.box.size();
      const Range& range = v < n ? program.box[v] : program.rows[v - n].range;
      const Integer own = sign > 0 ? *range.high : Integer(-*range.low);
      const Integer most = floorOf(*exact.greatest(v, sign));
      const Integer proven = bounds.greatest(v, sign).value_or(own);
      EXPECT_GE(proven, most);
      EXPECT_LE(proven, own);
      ++tally.asked;
      tally.best += proven == most ? 1 : 0;
    }
}

TEST(LinearBoundsTest, AreTrueAndMostlyTheBest) {
  Tally tally;
  for (unsigned seed = 0; seed < 600; ++seed)
    compare(RandomProgram(seed, seed % 3, 1 + seed % 4).program, tally);
  EXPECT_GT(tally.asked, 3000u);
  EXPECT_GT(tally.best, tally.asked * 99 / 100);
  EXPECT_GT(tally.empty, 20u);
  EXPECT_GT(tally.shownEmpty, tally.empty * 9 / 10);
}

// Here double is far from the last unit, and the bounds must be true all the same.
TEST(LinearBoundsTest, AreTrueForLongNumbers) {
  Tally tally;
  for (unsigned seed = 0; seed < 300; ++seed)
    compare(RandomProgram(seed, 3 * (seed % 5), 20 + seed % 40).program, tally);
  EXPECT_GT(tally.asked, 1500u);
  EXPECT_GT(tally.best, tally.asked / 2);
}

TEST(LinearBoundsTest, GiveUpWhenTheirEffortIsSpent) {
  const IntegerProgram program{{rangeOf(0, 9), rangeOf(0, 9)}, {rowOf({1, 1}, 0, 4), rowOf({1, -1}, -3, 3)}};
  EXPECT_EQ(LinearBounds(program, ENOUGH).greatest(0, 1), Integer(3));
  EXPECT_EQ(LinearBounds(program, 1).greatest(0, 1), std::nullopt);
}

TEST(NarrowByRelaxation, NarrowsWhatOnlySeveralRowsBound) {
  IntegerProgram program{
      {rangeOf(0, 9), rangeOf(0, 9)},
      {rowOf({1, 1}, std::nullopt, 9), rowOf({1, -1}, 0, std::nullopt), rowOf({1, -4}, 0, 3)}};
  ASSERT_TRUE(tighten(program));
  ASSERT_TRUE(narrowByRelaxation(program));
  EXPECT_EQ(*program.box[0].high, 7);
  EXPECT_EQ(*program.box[1].high, 1);
  for (const Row& row : program.rows) EXPECT_TRUE(row.range.isFinite());
}

TEST(NarrowByRelaxation, FindsContradictions) {
  IntegerProgram program{{rangeOf(0, 9), rangeOf(0, 9), rangeOf(0, 9)},
                         {rowOf({1, 1, 0}, 9, std::nullopt), rowOf({0, 1, 1}, 9, std::nullopt),
                          rowOf({1, 0, 1}, 9, std::nullopt), rowOf({1, 1, 1}, std::nullopt, 13)}};
  ASSERT_TRUE(tighten(program));
  EXPECT_FALSE(narrowByRelaxation(program));
}

// Each point of a small box is kept.
TEST(NarrowByRelaxation, KeepsAllPoints) {
  std::size_t narrowed = 0;
  std::size_t points = 0;
  for (unsigned seed = 0; seed < 400; ++seed) {
    const IntegerProgram before = RandomProgram(seed, 0, 1).program;
    IntegerProgram after = before;
    const bool kept = narrowByRelaxation(after);
    narrowed +=
        !kept || after.box[0].low != before.box[0].low || after.box[0].high != before.box[0].high ? 1 : 0;
    IntegerVector z;
    for (const Range& range : before.box) z.push_back(*range.low);
    while (true) {
      bool isPoint = true;
      for (const Row& row : before.rows) {
        const Integer value = innerProduct(row.a, z);
        isPoint = isPoint && *row.range.low <= value && value <= *row.range.high;
      }
      for (std::size_t j = 0; isPoint && j < z.size(); ++j) {
        ASSERT_TRUE(kept) << seed;
        ASSERT_TRUE(*after.box[j].low <= z[j] && z[j] <= *after.box[j].high) << seed;
      }
      points += isPoint ? 1 : 0;
      std::size_t j = 0;
      while (j < z.size() && z[j] == *before.box[j].high) z[j] = *before.box[j].low, ++j;
      if (j == z.size()) break;
      ++z[j];
    }
  }
  EXPECT_GT(points, 1000u);
  EXPECT_GT(narrowed, 50u);
}

}  // namespace
}  // namespace latbox::complete
