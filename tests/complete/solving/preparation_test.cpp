#include "complete/solving/preparation.h"

#include "complete/tree/cuts.h"
#include "support.h"

namespace latbox::complete {
namespace {

using testing::rangeOf;

// A subset sum whose point is far from the centre, so that estimates move it.
IntegerProgram subsetSum() {
  IntegerProgram program;
  Row row;
  Integer side = 0;
  for (long j = 0; j < 12; ++j) {
    program.box.push_back(rangeOf(0, 3));
    row.a.emplace_back(1009 + 7919 * j * j % 5003);
    side += row.a.back() * (j % 4);
  }
  row.range = {side, side};
  program.rows.push_back(row);
  return program;
}

// What was left of a search belongs to a point and a basis.
TEST(Preparation, BringsTheSameLatticeByABasisThatWasMadeBefore) {
  const auto first = preparedLatticeOf(subsetSum());
  ASSERT_TRUE(first);
  ASSERT_GT(first->nodes, 0);
  BoxLattice moved = first->lattice;
  ASSERT_TRUE(cutTablesOf<double>(moved, 53));
  ASSERT_NE(moved.point, first->lattice.point) << "the search moves the point, or this test says nothing";
  const auto again = preparedLatticeOf(subsetSum(), first->lattice.basis);
  ASSERT_TRUE(again);
  EXPECT_EQ(again->lattice.point, first->lattice.point);
  EXPECT_EQ(again->lattice.basis, first->lattice.basis);
}

}  // namespace
}  // namespace latbox::complete
