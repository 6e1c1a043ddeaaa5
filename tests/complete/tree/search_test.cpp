#include "complete/tree/search.h"

#include <random>

#include "complete/lattice/elimination.h"
#include "complete/lattice/gram_schmidt.h"
#include "complete/lattice/row_multipliers.h"
#include "complete/tree/cuts.h"
#include "support.h"

namespace latbox::complete {
namespace {

using testing::Collector;
using testing::rangeOf;

class RandomProgram {
 public:
  explicit RandomProgram(unsigned seed) : random_(seed) {
    const long n = draw(2, 6);
    for (long j = 0; j < n; ++j) {
      const long low = draw(-3, 3);
      program.box.push_back(rangeOf(low, low + draw(1, 4)));
    }
    for (long i = draw(0, 2); i > 0; --i) addRow(0);
    for (long i = draw(0, 2); i > 0; --i) addRow(draw(1, 6));
  }

  // By trying all.
  std::set<IntegerVector> points() const {
    std::set<IntegerVector> found;
    IntegerVector z(program.box.size());
    tryAll(z, 0, found);
    return found;
  }

  IntegerProgram program;

 private:
  long draw(long low, long high) {
    return low + static_cast<long>(random_() % static_cast<unsigned long>(high - low + 1));
  }

  void addRow(long width) {
    Row row;
    for (std::size_t j = 0; j < program.box.size(); ++j) row.a.emplace_back(draw(-9, 9));
    const Integer low = draw(-10, 10);
    row.range = {low, Integer(low + width)};
    program.rows.push_back(row);
  }

  void tryAll(IntegerVector& z, std::size_t j, std::set<IntegerVector>& found) const {
    if (j == z.size()) {
      for (const Row& row : program.rows) {
        const Integer value = innerProduct(row.a, z);
        if (value < *row.range.low || value > *row.range.high) return;
      }
      found.insert(z);
      return;
    }
    for (z[j] = *program.box[j].low; z[j] <= *program.box[j].high; ++z[j]) tryAll(z, j + 1, found);
  }

  std::mt19937 random_;
};

std::set<IntegerVector> searched(const IntegerProgram& program, unsigned long bits) {
  Collector collector;
  SearchControl control;
  auto lattice = boxLatticeOf(program);
  if (lattice) {
    EXPECT_TRUE(searchWith(bits, *lattice, collector, control));
  }
  return collector.points;
}

TEST(Search, FindsEveryPointInDouble) {
  std::size_t found = 0;
  for (unsigned seed = 0; seed < 400; ++seed) {
    const RandomProgram random(seed);
    const std::set<IntegerVector> truth = random.points();
    EXPECT_EQ(searched(random.program, 53), truth) << seed;
    found += truth.size();
  }
  EXPECT_GT(found, 1000u);
}

TEST(Search, FindsEveryPointInMultiprecision) {
  for (unsigned seed = 400; seed < 500; ++seed) {
    const RandomProgram random(seed);
    EXPECT_EQ(searched(random.program, 256), random.points()) << seed;
  }
}

TEST(Search, TakesCoefficientsThatNoDoubleHolds) {
  const Integer a("1234567890123456789012345678901234567");
  const Integer b("9876543210987654321098765432109876543");
  const Integer c("5555555555555555555555555555555555557");
  IntegerProgram program;
  program.box.assign(3, rangeOf(0, 1000000));
  Row row;
  row.a = {a, b, c};
  const Integer side = a * 123456 + b * 654321 + c * 777777;
  row.range = {side, side};
  program.rows.push_back(row);
  EXPECT_EQ(searched(program, 53), (std::set<IntegerVector>{testing::vectorOf({123456, 654321, 777777})}));
}

// Vectors whose squared lengths no double holds, and boxes whose inverse none holds.
TEST(Search, TakesNumbersBeyondTheRangeOfDouble) {
  for (const unsigned long digits : {160ul, 200ul, 700ul}) {
    IntegerProgram program;
    program.box.assign(3, rangeOf(0, 9));
    Row row;
    Integer side = 0;
    for (const long z : {2, 7, 4}) {
      row.a.push_back(powerOfTen(digits) / (z + 4) + z);
      side += row.a.back() * z;
    }
    row.range = {side, side};
    program.rows.push_back(row);
    EXPECT_TRUE(searched(program, 53).contains(testing::vectorOf({2, 7, 4}))) << digits;
  }
  // In the second one block reduction in double searched without an end.
  for (const unsigned long digits : {40ul, 200ul, 330ul}) {
    const Integer end = powerOfTen(digits);
    IntegerProgram program;
    program.box.assign(3, Range{Integer(-end), end});
    program.rows = {Row{{end + 7, end + 3, 7}, {-end, end}}, testing::rowOf({1, 1, 2}, 2, 9)};
    auto lattice = boxLatticeOf(program);
    ASSERT_TRUE(lattice);
    Collector three(3);
    SearchControl control;
    EXPECT_FALSE(search(*lattice, three, control));
    EXPECT_EQ(three.points.size(), 3u) << digits;
  }
}

// Its only point is the first candidate and the last.
TEST(Search, LeavesNothingBehindTheLastPoint) {
  for (const std::size_t variables : {0u, 1u, 2u}) {
    IntegerProgram program;
    program.box.assign(variables, rangeOf(0, 1));
    auto lattice = boxLatticeOf(program);
    ASSERT_TRUE(lattice);
    ASSERT_EQ(lattice->rank(), variables);
    const std::size_t all = std::size_t{1} << variables;
    Collector enough(all);
    SearchControl control;
    EXPECT_FALSE(search(*lattice, enough, control));
    EXPECT_EQ(enough.points.size(), all);
    Collector more;
    EXPECT_TRUE(search(*lattice, more, control, {control.left.pieces, {}, false}));
    EXPECT_TRUE(more.points.empty()) << variables;
  }
}

// Knapsacks whose relaxation nearly misses all whole points: without its bounds the trees are hopeless.
TEST(Search, UsesLinearBoundsWhereTheyPay) {
  for (const long side : {58925135L, 58925134L}) {
    IntegerProgram program;
    const IntegerVector a = testing::vectorOf({12137, 24269, 36405, 36407, 48545, 60683});
    for (const Integer& entry : a) program.box.push_back(rangeOf(0, Integer(side / entry).get_si()));
    Row row;
    row.a = a;
    row.range = {Integer(side), Integer(side)};
    program.rows.push_back(row);
    auto lattice = boxLatticeOf(program);
    ASSERT_TRUE(lattice);
    Collector collector;
    SearchControl control;
    EXPECT_TRUE(search(*lattice, collector, control));
    EXPECT_EQ(collector.points.size(), side == 58925135 ? 2u : 0u);
    EXPECT_LT(control.nodes, 5000u);
  }
}

// Programs large enough for bounds to come and go during the search, against the search without any.
TEST(Search, FindsEveryPointWhateverTheBoundsDo) {
  for (unsigned seed = 0; seed < 60; ++seed) {
    std::mt19937 random(seed);
    IntegerProgram program;
    Row row;
    long sum = 0;
    for (int j = 0; j < 9; ++j) {
      program.box.push_back(rangeOf(0, 3));
      row.a.emplace_back(static_cast<long>(20 + random() % 30));
      sum += row.a.back().get_si();
    }
    const long side = sum / 2 + static_cast<long>(random() % 50);
    row.range = {Integer(side), Integer(side + static_cast<long>(random() % 2))};
    program.rows.push_back(row);
    EXPECT_EQ(searched(program, 53), searched(program, 256)) << seed;
  }
}

TEST(Search, StopsWhenAsked) {
  IntegerProgram program;
  program.box.assign(6, rangeOf(0, 3));
  auto lattice = boxLatticeOf(program);
  ASSERT_TRUE(lattice);
  SearchControl control;
  Collector three(3);
  EXPECT_FALSE(search(*lattice, three, control));
  EXPECT_EQ(three.points.size(), 3u);
  Collector none;
  control.stop = true;
  EXPECT_FALSE(search(*lattice, none, control));
}

TEST(RowMultipliersTest, BoundsHoldForEveryPoint) {
  std::size_t helped = 0;
  for (unsigned seed = 0; seed < 200; ++seed) {
    const RandomProgram random(seed);
    auto lattice = boxLatticeOf(random.program);
    if (!lattice || lattice->rank() == 0) continue;
    const RowMultipliers rows(*lattice, 256);
    const GramSchmidt gso = gramSchmidtOf(*lattice, 256);
    Collector collector;
    SearchControl control;
    for (std::size_t t = 0; t < lattice->rank(); ++t) {
      const auto bound = rows.bound(gso.vectors[t]);
      if (!bound) continue;
      ++helped;
      BoxLattice copy = *lattice;
      search(copy, collector, control);
      for (const IntegerVector& z : collector.points) {
        Float value(0, 256);
        for (std::size_t j = 0; j < lattice->coordinates(); ++j) {
          const std::size_t n = lattice->variables.size();
          Integer v = 0;
          if (j < n)
            v = z[lattice->variables[j]];
          else
            v = innerProduct(lattice->rows[j - n].a, z);
          const Integer width = lattice->high[j] - lattice->low[j];
          value += gso.vectors[t][j] * Float(Integer(2 * v - lattice->low[j] - lattice->high[j]), 256) /
                   Float(width, 256);
        }
        EXPECT_LE(value, *bound) << seed;
      }
      collector.points.clear();
    }
  }
  EXPECT_GT(helped, 20u);
}

}  // namespace
}  // namespace latbox::complete
