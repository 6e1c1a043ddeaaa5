// The check of candidates sees every vector that reduction touches: one that fails must not cost an
// allocation.
#include "support/allocations.h"
#include "support/lattice.h"

namespace latbox {
namespace {

template <class T>
class CheckAllocation : public ::testing::Test {};
using NumberTypes = ::testing::Types<dbl_t, QQ>;
TYPED_TEST_SUITE(CheckAllocation, NumberTypes);

TYPED_TEST(CheckAllocation, VectorsThatFail) {
  using T = TypeParam;
  auto l = testing::latticeOf<T>(testing::SMALL);
  for (const bool weighted : {false, true}) {
    if (weighted) l->setScale(1, T(3));
    const Vector<T> rows[] = {Vector<T>("[ 3 2 0 0 ]"), Vector<T>("[ 90 1 4 1 ]"),
                              Vector<T>("[ 90 -4 -4 -1 ]")};
    for (const bool collecting : {false, true}) {
      l->params.pair.set(collecting);
      for (const auto& row : rows) l->checkSolution(row, true, NOW, false, Membership::byConstruction);
      const long before = allocations;
      for (int k = 0; k < 100; ++k)
        for (const auto& row : rows)
          ASSERT_EQ(l->checkSolution(row, true, NOW, false, Membership::byConstruction), 0U);
      EXPECT_EQ(allocations, before);
    }
  }
}

}  // namespace
}  // namespace latbox
