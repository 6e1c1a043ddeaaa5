#include "complete/proof/walk.h"

#include <mutex>

#include "small_systems.h"

namespace latbox::complete::proof {
namespace {

using namespace testing;

struct Met {
  WalkCount count;
  std::set<IntegerVector> points;
};

Met meet(const ProofLattice& lattice, const CutVectors& cuts, unsigned threads = 1) {
  Met met;
  std::mutex mutex;
  const Judge judge = [&](const IntegerVector& z) {
    const std::lock_guard lock(mutex);
    EXPECT_TRUE(met.points.insert(z).second) << "a point twice";
    return true;
  };
  met.count = walk(lattice, cuts, judge, {threads, nullptr, 0}).value();
  return met;
}

// The same cuts, too long for doubles.
CutVectors stretched(CutVectors cuts) {
  const Integer factor = Integer(1) << 90;
  for (Integer& entry : cuts.constant) entry *= factor;
  for (Level& level : cuts.levels) {
    for (Integer& entry : level.main) entry *= factor;
    level.divisor *= factor;
    for (IntegerVector& side : level.sides)
      for (Integer& entry : side) entry *= factor;
  }
  return cuts;
}

const std::set<IntegerVector> TWO = {vectorOf({0, 1, 1}), vectorOf({3, 0, 0})};

// As docs/proof.md follows it by hand.
TEST(ProofWalk, ByHand) {
  const Met met = meet(latticeOfTwelve(), cutsOfTwelve());
  EXPECT_EQ(met.points, TWO);
  EXPECT_EQ(met.count.nodes, 7u);
  EXPECT_EQ(met.count.points, 2u);
}

TEST(ProofWalk, LongNumbersGoTheSameWay) {
  EXPECT_TRUE(fitsDouble(latticeOfTwelve(), cutsOfTwelve()));
  EXPECT_FALSE(fitsDouble(latticeOfTwelve(), stretched(cutsOfTwelve())));
  const Met met = meet(latticeOfTwelve(), stretched(cutsOfTwelve()));
  EXPECT_EQ(met.points, TWO);
  EXPECT_EQ(met.count.nodes, 7u);
}

TEST(ProofWalk, SideVectorsRefute) {
  CutVectors cuts = cutsOfTwelve();
  // x2 alone: lambda_1 = 0 has 0 <= x2 <= 2 for two lambda_0 of the four.
  cuts.levels[0].main = vectorOf({-1, 0, 0});
  cuts.levels[0].sides = {vectorOf({0, 1, 0})};
  EXPECT_EQ(meet(latticeOfTwelve(), cuts).points, TWO);
  // Orthogonal to both rows: 4 x1 + 5 x2 + 7 x3 is known, and with another side there is nothing.
  ProofLattice other = latticeOfTwelve();
  other.box.point = vectorOf({9, 9, 9});
  cuts.levels[1].sides = {vectorOf({4, 5, 7})};
  const Met met = meet(other, cuts);
  EXPECT_TRUE(met.points.empty());
}

TEST(ProofWalk, WithoutKernelItIsOneLeaf) {
  ProofLattice lattice;
  lattice.box.fixed = vectorOf({5, 7});
  const Met met = meet(lattice, {});
  EXPECT_EQ(met.points, std::set<IntegerVector>{vectorOf({5, 7})});
  EXPECT_EQ(met.count.nodes, 0u);
}

// A cube of 4^6 points, so that threads have something to share.
ProofLattice cube(std::size_t k) {
  ProofLattice lattice;
  lattice.box.fixed.resize(k);
  for (std::size_t i = 0; i < k; ++i) {
    lattice.box.variables.push_back(i);
    lattice.box.point.emplace_back(0);
    lattice.box.low.emplace_back(0);
    lattice.box.high.emplace_back(3);
    lattice.box.basis.emplace_back(k);
    lattice.box.basis[i][i] = 1;
  }
  lattice.dual = lattice.box.basis;
  return lattice;
}

CutVectors cutsOfCube(std::size_t k) {
  CutVectors cuts;
  cuts.constant.resize(k);
  for (const IntegerVector& row : cube(k).box.basis) cuts.levels.push_back({row, 1, {}});
  return cuts;
}

TEST(ProofWalk, ThreadsMeetTheSame) {
  const Met one = meet(cube(6), cutsOfCube(6));
  const Met three = meet(cube(6), cutsOfCube(6), 3);
  EXPECT_EQ(one.points.size(), 4096u);
  EXPECT_EQ(three.points, one.points);
  EXPECT_EQ(three.count.nodes, one.count.nodes);
}

TEST(ProofWalk, EndsWhenItIsStopped) {
  const std::atomic<bool> stop = true;
  const Judge judge = [](const IntegerVector&) { return true; };
  for (const unsigned threads : {1u, 2u})
    EXPECT_FALSE(walk(cube(20), cutsOfCube(20), judge, {threads, &stop, 0})) << threads;
  EXPECT_FALSE(walk(cube(20), cutsOfCube(20), judge, {1, nullptr, 10000}));
}

}  // namespace
}  // namespace latbox::complete::proof
