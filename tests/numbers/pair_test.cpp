#include "numbers/pair.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>

#include "numbers/number.h"
#include "support/text.h"

namespace latbox {
namespace {

using testing::textOf;

template <class T>
class PairOf : public ::testing::Test {};
using NumberTypes = ::testing::Types<dbl_t, QQ>;
TYPED_TEST_SUITE(PairOf, NumberTypes);

TYPED_TEST(PairOf, TextForm) {
  const SerializablePair<TypeParam, TypeParam> pair(TypeParam(3), -infinity<TypeParam>());
  EXPECT_EQ(textOf(pair), "(3, -inf)");
  EXPECT_EQ(textOf(SerializablePair<long, TypeParam>(4, TypeParam(7))), "(4, 7)");
}

TYPED_TEST(PairOf, ReadsItsTextForm) {
  for (const char* text : {"(-inf, inf)", " \n( -inf ,inf )", "(-inf,inf)x"}) {
    SerializablePair<TypeParam, TypeParam> pair;
    std::istringstream in(text);
    pair.read(in);
    EXPECT_TRUE(in.good()) << text;
    EXPECT_TRUE(pair.left == -infinity<TypeParam>()) << text;
    EXPECT_TRUE(pair.right == infinity<TypeParam>()) << text;
  }
  SerializablePair<TypeParam, TypeParam> pair;
  std::istringstream in("(1e3, -1/4)");
  pair.read(in);
  EXPECT_TRUE(pair.left == TypeParam(1000));
  EXPECT_TRUE(pair.right * TypeParam(4) == TypeParam(-1));
}

TYPED_TEST(PairOf, DamagedPairsLeaveTheStreamFailed) {
  for (const char* text : {"", "1, 2)", "(1 2)", "(1, 2", "(, 2)", "(1, )", "(1,\n2"}) {
    SerializablePair<TypeParam, TypeParam> pair;
    std::istringstream in(text);
    pair.read(in);
    EXPECT_TRUE(in.fail()) << text;
  }
}

TYPED_TEST(PairOf, OrdersByLeftOrByRight) {
  const Pair<long, TypeParam> a(1, TypeParam(9)), b(2, TypeParam(3));
  EXPECT_TRUE(a < b);
  EXPECT_FALSE(a > b);
  EXPECT_FALSE(a == b);
  const RightOrderPair<long, TypeParam> c(1, TypeParam(9)), d(2, TypeParam(3));
  EXPECT_TRUE(d < c);
  EXPECT_TRUE(c > d);
  EXPECT_TRUE(c == (RightOrderPair<long, TypeParam>(5, TypeParam(9))));
}

}  // namespace
}  // namespace latbox
