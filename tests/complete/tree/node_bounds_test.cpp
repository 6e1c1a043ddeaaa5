#include "complete/tree/node_bounds.h"

#include <cmath>

#include "small_lattice.h"

namespace latbox::complete {
namespace {

using testing::SmallLattice;

TEST(NodeBoundsTest, CutNoPoint) {
  std::size_t points = 0;
  std::size_t sharp = 0;
  for (unsigned seed = 0; seed < 3000; ++seed) {
    SmallLattice random(seed, 1 + seed % 6, 4);
    const auto reach = random.prepare();
    ASSERT_TRUE(reach);
    if (!SmallLattice::isShort(*reach)) continue;
    NodeBounds bounds(random.lattice, *reach);
    ASSERT_EQ(bounds.levels(), reach->size());
    for (const std::vector<double>& lambda : random.points(*reach)) {
      ++points;
      for (std::size_t t = lambda.size(); t-- > 0;)
        for (const int sign : {1, -1}) {
          const double enough = random.draw(0, 1) == 0 ? -INFINITY : sign * lambda[t];
          const double bound = bounds.bound(t, sign, lambda, enough);
          EXPECT_GE(bound, sign * lambda[t]) << seed;
          sharp += bound == sign * lambda[t] ? 1 : 0;
        }
    }
  }
  EXPECT_GT(points, 5000u);
  EXPECT_GT(sharp, 5000u);
}

// All whole points that keep the bounds of every level on the way are the points of the box: at level 0 the
// relaxation is the truth.
class Walk {
 public:
  Walk(NodeBounds& bounds, std::size_t rank) : bounds_(bounds), lambda_(rank) { enter(rank); }

  std::set<std::vector<double>> reached;

 private:
  void enter(std::size_t level) {
    if (level == 0) {
      reached.insert(lambda_);
      return;
    }
    const std::size_t t = level - 1;
    const double most = bounds_.bound(t, 1, lambda_, -INFINITY);
    const double least = -bounds_.bound(t, -1, lambda_, -INFINITY);
    for (double step = least; step <= most; ++step) {
      lambda_[t] = step;
      enter(t);
    }
  }

  NodeBounds& bounds_;
  std::vector<double> lambda_;
};

TEST(NodeBoundsTest, AloneWalkToThePointsAndNothingElse) {
  for (unsigned seed = 0; seed < 1000; ++seed) {
    SmallLattice random(seed, 3, 4);
    const auto reach = *random.prepare();
    if (!SmallLattice::isShort(reach)) continue;
    NodeBounds bounds(random.lattice, reach);
    const auto points = random.points(reach);
    EXPECT_EQ(Walk(bounds, random.lattice.rank()).reached,
              std::set<std::vector<double>>(points.begin(), points.end()))
        << seed;
  }
}

// Long coefficients and wide boxes: fewer bounds, never wrong ones. The points are planted.
TEST(NodeBoundsTest, CutNoPointOfAWideBox) {
  std::size_t known = 0;
  std::size_t sharp = 0;
  std::size_t without = 0;
  for (unsigned seed = 0; seed < 2000; ++seed) {
    const long size = 1l << (2 + seed % 49);
    SmallLattice random(seed, size, 4);
    BoxLattice& lattice = random.lattice;
    std::vector<double> lambda;
    IntegerVector v = lattice.point;
    for (const IntegerVector& row : lattice.basis) {
      lambda.push_back(static_cast<double>(random.draw(-5, 5)));
      for (std::size_t j = 0; j < v.size(); ++j) v[j] += static_cast<long>(lambda.back()) * row[j];
    }
    // The point at an end of each range.
    const long width = 1l << (1 + seed % 45);
    for (std::size_t j = 0; j < v.size(); ++j) {
      const bool above = random.draw(0, 1) == 0;
      lattice.low[j] = above ? Integer(v[j] - width) : v[j];
      lattice.high[j] = above ? v[j] : Integer(v[j] + width);
    }
    const IntegerVector before = lattice.point;
    const auto reach = random.prepare();
    if (!reach || NodeBounds(lattice, *reach).levels() == 0) {
      ++without;
      continue;
    }
    // The preparation has moved the point by rows of the basis; so the multipliers.
    const GramSchmidt gso = gramSchmidtOf(lattice, 256);
    for (std::size_t i = 0; i < lattice.rank(); ++i) {
      Float shift(0, 256);
      for (std::size_t j = 0; j < v.size(); ++j)
        shift += gso.dual[i][j] * 2 * (before[j] - lattice.point[j]) / (lattice.high[j] - lattice.low[j]);
      lambda[i] += std::round(shift.get_d());
    }
    NodeBounds bounds(lattice, *reach);
    for (std::size_t t = lambda.size(); t-- > 0;)
      for (const int sign : {1, -1}) {
        const double bound = bounds.bound(t, sign, lambda, -INFINITY);
        EXPECT_GE(bound, sign * lambda[t]) << seed;
        ++known;
        sharp += bound <= sign * lambda[t] + 1 ? 1 : 0;
      }
  }
  EXPECT_GT(known, 2000u);
  EXPECT_GT(sharp, 1000u);
  EXPECT_GT(without, 50u);
}

TEST(NodeBoundsTest, OfNumbersThatAreTooLongThereAreNone) {
  SmallLattice random(5, 4, 5);
  const auto reach = *random.prepare();
  random.lattice.low[0] = -(Integer(1) << 60);
  EXPECT_EQ(NodeBounds(random.lattice, reach).levels(), 0u);
}

TEST(NodeBoundsTest, OfAVeryLargeRankTheLowerLevelsHaveThem) {
  constexpr std::size_t RANK = 400;
  BoxLattice lattice;
  lattice.point.assign(RANK, 0);
  lattice.low.assign(RANK, 0);
  lattice.high.assign(RANK, 1);
  lattice.basis.assign(RANK, IntegerVector(RANK));
  for (std::size_t i = 0; i < RANK; ++i) lattice.basis[i][i] = 1;
  NodeBounds bounds(lattice, std::vector<double>(RANK, 1));
  EXPECT_GT(bounds.levels(), 100u);
  EXPECT_LT(bounds.levels(), RANK);
  EXPECT_EQ(bounds.bound(bounds.levels() - 1, 1, std::vector<double>(RANK), -INFINITY), 1);
}

}  // namespace
}  // namespace latbox::complete
