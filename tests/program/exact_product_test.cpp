#include "program/exact_product.h"
#include "lib/exceptions.h"

#include "support/program.h"

namespace latbox {
namespace {

template <class T>
class ExactProduct : public ::testing::Test {};
using NumberTypes = ::testing::Types<dbl_t, QQ>;
TYPED_TEST_SUITE(ExactProduct, NumberTypes);

TYPED_TEST(ExactProduct, SumOfProducts) {
  using V = Vector<TypeParam>;
  EXPECT_EQ(exactProduct(V("[ ]"), V("[ ]")), TypeParam(0));
  EXPECT_EQ(exactProduct(V("[ 2 -3 1/2 ]"), V("[ 5 7 9 ]")), TypeParam(-13) / TypeParam(2));
  EXPECT_EQ(testing::shown(exactProduct(Matrix<TypeParam>("[ [ 1 2 ] [ 3 4 ] ]"), V("[ 10 1 ]"))),
            "[ 12 34 ]");
}

TYPED_TEST(ExactProduct, WholePartialSumsMayBeLarge) {
  using V = Vector<TypeParam>;
  EXPECT_EQ(exactProduct(V("[ 999999999999999 -999999999999998 ]"), V("[ 1000 1000 ]")), TypeParam(1000));
}

// Beyond 2^64 the two products would lose their last digits, and the difference with them.
TEST(ExactProductStandard, LargePartialSumsAskForExactArithmetic) {
  using V = Vector<dbl_t>;
  const V row("[ 1234567890123457 -1234567890123456 ]"), x("[ 1000003 1000003 ]");
  EXPECT_NE(row * x, 1000003);
  EXPECT_THROW(exactProduct(row, x), FatalPrecisionException);
}

TEST(ExactProductStandard, PlacesBehindThePointAskForExactArithmetic) {
  using V = Vector<dbl_t>;
  const V row("[ 123456789012 -123456789011 ]");
  testing::expectPrecisionException([&] { exactProduct(row, V("[ 0.7 0.7 ]")); }, "sum overflow");
  EXPECT_EQ(exactProduct(row, V("[ 7 7 ]")), 7);
}

TEST(ExactProductExact, NothingIsTooLarge) {
  using V = Vector<QQ>;
  EXPECT_EQ(exactProduct(V("[ 1234567890123457 -1234567890123456 ]"), V("[ 1000003 1000003 ]")), QQ(1000003));
}

}  // namespace
}  // namespace latbox
