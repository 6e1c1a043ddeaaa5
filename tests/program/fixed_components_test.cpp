#include "support/lattice.h"

namespace latbox {
namespace {

// 5841713.2 - 6 * 973501 = 707.2, times 5: the lower side is 3536, and nothing above it.
constexpr const char* CANCELLED =
    "[ ] [ ] [ ] [ ] [ [ 0.2 6 ] ] [ 5841713.2 ] [ 5841719.2 ] [ 0 0 ] [ 0 973501 ] [ 9999 973501 ]";

TEST(FixedComponentsExact, SideIsTheRoundedDifference) {
  auto l = testing::preparedLattice<QQ>(CANCELLED);
  EXPECT_EQ(testing::shown(l->lu), "[ 3536 ]");
  EXPECT_EQ(testing::shown(l->ru), "[ 3566 ]");
}

// Symptom: the side became 3537, solutions of the file were dropped, and points were cut off.
TEST(FixedComponentsStandard, DifferenceOfLargeFractionsAsksForExactArithmetic) {
  testing::expectPrecisionException([] { testing::preparedLattice<dbl_t>(CANCELLED); }, "lu overflow");
  testing::expectPrecisionException(
      [] {
        testing::preparedLattice<dbl_t>(
            "[ ] [ ] [ [ 0.2 6 ] ] [ 5841713.2 ] [ ] [ ] [ ] [ 0 0 ] [ 0 973501 ] [ 9999 973501 ]");
      },
      "bg overflow");
}

TEST(FixedComponentsStandard, WholeSharesAndSmallOnesStay) {
  const std::string rows = "[ ] [ ] [ ] [ ] [ [ 1 6 ] ] ";
  auto whole =
      testing::preparedLattice<dbl_t>(rows + "[ 5841713 ] [ 5841719 ] [ 0 0 ] [ 0 973501 ] [ 9999 973501 ]");
  EXPECT_EQ(testing::shown(whole->lu), "[ 707 ]");
  auto small = testing::preparedLattice<dbl_t>(rows + "[ 10.5 ] [ 20.5 ] [ 0 0 ] [ 0 0.2 ] [ 9999 0.2 ]");
  EXPECT_EQ(testing::shown(small->lu), "[ 10 ]");
  EXPECT_EQ(testing::shown(small->ru), "[ 19 ]");
}

}  // namespace
}  // namespace latbox
