#include "support/lattice.h"

namespace latbox {
namespace {

template <class T>
class FixedComponents : public ::testing::Test {};
using NumberTypes = ::testing::Types<dbl_t, QQ>;
TYPED_TEST_SUITE(FixedComponents, NumberTypes);

// 5841713.2 - 6 * 973501 = 707.2, times 5: the lower side is 3536, and nothing above it.
// Symptom: the side became 3537, solutions of the file were dropped, and points were cut off.
TYPED_TEST(FixedComponents, LargeSharesLeaveTheSideWhole) {
  auto l = testing::preparedLattice<TypeParam>(
      "[ ] [ ] [ ] [ ] [ [ 0.2 6 ] ] [ 5841713.2 ] [ 5841719.2 ] [ 0 0 ] [ 0 973501 ] [ 9999 973501 ]");
  EXPECT_EQ(testing::shown(l->lu), "[ 3536 ]");
  EXPECT_EQ(testing::shown(l->ru), "[ 3566 ]");
}

}  // namespace
}  // namespace latbox
