#include "complete/lattice/short_basis.h"

#include <thread>

#include "market_split.h"

namespace latbox::complete {
namespace {

using testing::marketSplit;

BoxLattice latticeOf(const IntegerProgram& program) {
  return *unreducedLatticeOf(program);
}

Integer longest(const IntegerMatrix& rows) {
  Integer most = 0;
  for (const IntegerVector& row : rows) {
    Integer length = 0;
    for (const Integer& entry : row) length += entry * entry;
    most = std::max(most, length);
  }
  return most;
}

TEST(NewBasis, IsAnotherOneOfTheSameLattice) {
  BoxLattice lattice = latticeOf(marketSplit(6, 50, 1));
  const auto basis = shortBasisOf(lattice);
  ASSERT_TRUE(basis);
  std::set<IntegerMatrix> bases;
  for (unsigned seed = 1; seed <= 5; ++seed) {
    std::mt19937_64 random(seed);
    const auto rows = newBasis(*basis, random);
    ASSERT_TRUE(rows);
    bases.insert(inLattice(*basis, *rows));
    EXPECT_TRUE(takeBasis(lattice, inLattice(*basis, *rows)));
  }
  EXPECT_EQ(bases.size(), 5u);
}

TEST(NewBasis, IsDeterminedByTheRandomNumbers) {
  const auto basis = shortBasisOf(latticeOf(marketSplit(6, 50, 1)));
  std::mt19937_64 random(3);
  std::mt19937_64 again(3);
  EXPECT_EQ(newBasis(*basis, random), newBasis(*basis, again));
}

// libfplll's own pool of threads is one for all: without taking turns this ends in a fault of memory.
TEST(NewBasis, ThreadsMakeTheirsAtOnce) {
  const auto basis = shortBasisOf(latticeOf(marketSplit(8, 70, 1)));
  ASSERT_TRUE(basis);
  constexpr unsigned THREADS = 4;
  constexpr unsigned BASES = 12;
  const auto make = [&basis](unsigned seed) {
    std::mt19937_64 random(seed);
    return newBasis(*basis, random);
  };
  std::vector<std::vector<std::optional<ShortMatrix>>> made(THREADS);
  std::vector<std::thread> threads;
  for (std::vector<std::optional<ShortMatrix>>& mine : made)
    threads.emplace_back([&mine, &make] {
      for (unsigned seed = 0; seed < BASES; ++seed) mine.push_back(make(seed));
    });
  for (std::thread& thread : threads) thread.join();
  for (unsigned seed = 0; seed < BASES; ++seed)
    for (const auto& mine : made) EXPECT_EQ(mine[seed], make(seed)) << seed;
}

// As short as those of the other reduction, or nearly so.
TEST(NewBasis, IsReduced) {
  const IntegerProgram program = marketSplit(6, 50, 1);
  const auto basis = shortBasisOf(latticeOf(program));
  std::mt19937_64 random(1);
  EXPECT_LE(longest(inLattice(*basis, *newBasis(*basis, random))), 2 * longest(boxLatticeOf(program)->basis));
}

// In a cube the widths of the box count: rows are told in coordinates of the lattice all the same.
TEST(ShortBasis, BoxesOfAnyWidths) {
  IntegerProgram program = marketSplit(4, 36, 2);
  for (std::size_t j = 0; j < program.box.size(); ++j)
    program.box[j] = testing::rangeOf(0, 1 + static_cast<long>(j % 7));
  BoxLattice lattice = latticeOf(program);
  const auto basis = shortBasisOf(lattice);
  ASSERT_TRUE(basis);
  for (std::size_t j = 0; j + 1 < lattice.coordinates(); ++j) {
    const bool isWider = lattice.high[j] - lattice.low[j] > lattice.high[j + 1] - lattice.low[j + 1];
    if (isWider) {
      EXPECT_LT(basis->multipliers[j], basis->multipliers[j + 1]) << j;
    }
  }
  EXPECT_EQ(inLattice(*basis, basis->rows), lattice.basis);
  std::mt19937_64 random(1);
  const auto rows = newBasis(*basis, random);
  ASSERT_TRUE(rows);
  EXPECT_TRUE(takeBasis(lattice, inLattice(*basis, *rows)));
}

TEST(ShortBasis, NoneOfLongNumbers) {
  BoxLattice lattice = latticeOf(marketSplit(3, 20, 1));
  lattice.basis[2][5] = Integer(1) << 70;
  EXPECT_FALSE(shortBasisOf(lattice));
  lattice = latticeOf(marketSplit(3, 20, 1));
  lattice.high[0] = Integer(1) << 70;
  EXPECT_FALSE(shortBasisOf(lattice));
}

}  // namespace
}  // namespace latbox::complete
