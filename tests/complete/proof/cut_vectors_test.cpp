#include "complete/proof/cut_vectors.h"

#include "complete/lattice/elimination.h"
#include "complete/proof/walk.h"
#include "small_systems.h"

namespace latbox::complete::proof {
namespace {

using namespace testing;

void expectOrthogonal(const ProofLattice& lattice, const CutVectors& cuts) {
  const IntegerMatrix& basis = lattice.box.basis;
  for (const IntegerVector& row : basis) EXPECT_EQ(innerProduct(cuts.constant, row), 0);
  for (std::size_t t = 0; t < lattice.rank(); ++t) {
    for (std::size_t i = 0; i < t; ++i) EXPECT_EQ(innerProduct(cuts.levels[t].main, basis[i]), 0);
    EXPECT_GT(innerProduct(cuts.levels[t].main, basis[t]), 0);
    EXPECT_GT(cuts.levels[t].divisor, 0);
  }
}

TEST(CutVectors, AreOrthogonal) {
  ProofLattice lattice = latticeOfTwelve();
  const CutVectors cuts = cutVectorsOf(lattice);
  expectOrthogonal(lattice, cuts);
  EXPECT_TRUE(fitsDouble(lattice, cuts));
}

// Short boxes beside wide ones, and coefficients of many digits.
TEST(CutVectors, AreOrthogonalWhateverTheNumbers) {
  Integer large = 1;
  for (int i = 0; i < 40; ++i) large *= 10;
  System system = madeOf({rangeOf(0, 1), rangeOf(0, 1000000), rangeOf(-5, 700), rangeOf(0, 3)},
                         {rowOf({3, 1, 7, 2}, 1000, 2000)});
  system.rows.push_back({large + 7, large / 3, Integer(5 - large), large / 7});
  system.ranges.push_back({Integer(-large), Integer(large * 1000)});
  Derivation derivation(system);
  auto lattice = latticeOf(derivation);
  ASSERT_TRUE(lattice);
  expectOrthogonal(*lattice, cutVectorsOf(*lattice));
}

TEST(NearestPlane, LeavesTheShortestOfAClass) {
  const IntegerMatrix rows = {vectorOf({10, 0}), vectorOf({3, 10})};
  const NearestPlane plane(rows, vectorOf({1, 1}));
  IntegerVector vector = vectorOf({1000000007, -123456789});
  plane.reduce(vector, 1);
  EXPECT_LE(abs(vector[0]), 5);
  EXPECT_LE(abs(vector[1]), 5);
  IntegerVector half = vectorOf({37, 0});
  plane.reduce(half, 2);
  EXPECT_EQ(half, vectorOf({-3, 0}));
}

}  // namespace
}  // namespace latbox::complete::proof
