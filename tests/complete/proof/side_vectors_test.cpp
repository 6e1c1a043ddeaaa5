#include "complete/proof/side_vectors.h"

#include "complete/lattice/elimination.h"
#include "small_systems.h"

namespace latbox::complete::proof {
namespace {

using namespace testing;

// A knapsack whose tree has 10^10 nodes without them.
TEST(SideVectors, MakeAKnapsackSmall) {
  Derivation derivation(madeOf(std::vector<Range>(6, {Integer(0), {}}),
                               {rowOf({12137, 24269, 36405, 36407, 48545, 60683}, 58925134, 58925134)}));
  auto lattice = latticeOf(derivation);
  ASSERT_TRUE(lattice);
  CutVectors cuts = cutVectorsOf(*lattice);
  const Judge judge = [](const IntegerVector&) { return true; };
  EXPECT_FALSE(walk(*lattice, cuts, judge, {1, nullptr, 300'000}));
  addSideVectors(*lattice, cuts, false);
  const auto count = walk(*lattice, cuts, judge, {1, nullptr, 10'000});
  ASSERT_TRUE(count);
  EXPECT_EQ(count->points, 0u);
  for (std::size_t t = 0; t < cuts.levels.size(); ++t)
    for (const IntegerVector& side : cuts.levels[t].sides)
      for (std::size_t i = 0; i < t; ++i) EXPECT_EQ(innerProduct(side, lattice->box.basis[i]), 0);
}

}  // namespace
}  // namespace latbox::complete::proof
