#include "numbers/vector.h"

#include <gtest/gtest.h>

#include <limits>
#include <sstream>
#include <string>

#include "lib/exceptions.h"
#include "numbers/number.h"
#include "support/failure.h"
#include "support/text.h"

namespace latbox {
namespace {

using testing::textOf;

template <class T>
class VectorOf : public ::testing::Test {};
using NumberTypes = ::testing::Types<dbl_t, QQ>;
TYPED_TEST_SUITE(VectorOf, NumberTypes);

TYPED_TEST(VectorOf, AcceptList) {
  const struct {
    const char* text;
    const char* written;
  } cases[] = {
      {"[]", "[ ]"},
      {"[ ]", "[ ]"},
      {"[\n]", "[ ]"},
      {"[ /* none */ ]", "[ ]"},
      {"", "[ ]"},
      {"1 2", "[ ]"},
      {"(1)", "[ ]"},
      {"[1]", "[ 1 ]"},
      {"[ 1 2 3 ]", "[ 1 2 3 ]"},
      {"  // note\n[1]", "[ 1 ]"},
      {"[ 1 /* two */ 2 // three\n 3 ]", "[ 1 2 3 ]"},
      {"[-1 - 2]", "[ -1 -2 ]"},
      {"[-0]", "[ 0 ]"},
      {"[+5]", "[ 5 ]"},
      {"[inf -inf]", "[ inf -inf ]"},
      {"[infinf]", "[ inf inf ]"},
  };
  for (const auto& c : cases) EXPECT_EQ(textOf(Vector<TypeParam>(c.text)), c.written) << c.text;
}

TYPED_TEST(VectorOf, ReadsFractionsAndDecimalsInEitherType) {
  const Vector<TypeParam> v("[ 1.5 -1/4 2:1/2 -3,25 .5 ]");
  ASSERT_EQ(v.MN, 5);
  const long expected[] = {150, -25, 250, -325, 50};
  for (long i = 1; i <= 5; ++i) EXPECT_TRUE(v[i] * TypeParam(100) == TypeParam(expected[i - 1])) << i;
}

TYPED_TEST(VectorOf, ReadsThreeElementsWithInfinities) {
  const Vector<TypeParam> v("[ -inf inf 1.5 ]");
  ASSERT_EQ(v.MN, 3);
  EXPECT_TRUE(v[1] == -infinity<TypeParam>());
  EXPECT_TRUE(v[2] == infinity<TypeParam>());
  EXPECT_TRUE(v[3] * TypeParam(2) == TypeParam(3));
}

TYPED_TEST(VectorOf, RejectList) {
  const struct {
    const char* text;
    const char* message;
  } cases[] = {
      {"[ inx ]", "Vector: bad input3"},       {"[ ixf ]", "Vector: bad input2"},
      {"[ i ]", "Vector: bad input2"},         {"[ -ix ]", "Vector: bad input2"},
      {"[ in", "Vector: bad input3"},          {"[", "Vector: bad input"},
      {"[ 1 2", "Vector: bad input"},          {"[ 1 2 -", "Vector: bad input"},
      {"[ x ]", "Vector: bad input"},          {"[ 1 ( ]", "Vector: bad input"},
      {"[ infinity ]", "Vector: bad input3"},  {"[ 1 // ]", "Vector: bad input"},
      {"[ /* ]", "Comment is not terminated"}, {"[ 1/0 ]", "QQ: division by zero1"},
      {"[ 5.0 ]", "QQ: parse error1"},         {"[ / 2 ]", "QQ: division by zero1"},
  };
  for (const auto& c : cases) EXPECT_FAILURE(Vector<TypeParam>(c.text), c.message) << c.text;
}

TYPED_TEST(VectorOf, AFailedStreamThrows) {
  std::istringstream in("[ 1 ]");
  in.setstate(std::ios::failbit);
  Vector<TypeParam> v("[ 7 ]");
  try {
    v.read(in);
    FAIL();
  } catch (const ReadException& caught) {
    EXPECT_STREQ(caught.what(), "Vector: bad stream");
  }
  EXPECT_EQ(v.MN, 0);
}

TYPED_TEST(VectorOf, AMissingVectorAtTheEndIsReportedByTheNextRead) {
  std::istringstream in("  // nothing left");
  Vector<TypeParam> v("[ 7 ]");
  EXPECT_NO_THROW(v.read(in));
  EXPECT_EQ(v.MN, 0);
  EXPECT_TRUE(in.fail());
  EXPECT_THROW(v.read(in), ReadException);
}

TYPED_TEST(VectorOf, WhatIsNoVectorStaysInTheStream) {
  std::istringstream in(" =5");
  Vector<TypeParam> v;
  v.read(in);
  EXPECT_TRUE(in.good());
  EXPECT_EQ(in.get(), '=');
}

TYPED_TEST(VectorOf, ANullPointerGivesTheEmptyVector) {
  const char* none = nullptr;
  EXPECT_EQ(Vector<TypeParam>(none).MN, 0);
}

TYPED_TEST(VectorOf, ReadersAreLinear) {
  std::string text = "[";
  constexpr long COUNT = 200'000;
  for (long i = 0; i < COUNT; ++i) text += " 1";
  const Vector<TypeParam> v(text + "]");
  EXPECT_EQ(v.MN, COUNT);
  EXPECT_TRUE(v[COUNT] == TypeParam(1));
}

TYPED_TEST(VectorOf, Arithmetic) {
  const Vector<TypeParam> a("[1 2 3]"), b("[4 6 9]");
  EXPECT_EQ(textOf(a + b), "[ 5 8 12 ]");
  EXPECT_EQ(textOf(b - a), "[ 3 4 6 ]");
  EXPECT_EQ(textOf(-a), "[ -1 -2 -3 ]");
  EXPECT_EQ(textOf(a * TypeParam(3)), "[ 3 6 9 ]");
  EXPECT_EQ(textOf(TypeParam(3) * a), "[ 3 6 9 ]");
  EXPECT_EQ(textOf(b / TypeParam(2)), textOf(Vector<TypeParam>("[2 3 9/2]")));
  EXPECT_TRUE(a * b == TypeParam(43));
  Vector<TypeParam> c(a);
  c *= b;
  EXPECT_EQ(textOf(c), "[ 4 12 27 ]");
  c /= b;
  EXPECT_EQ(textOf(c), "[ 1 2 3 ]");
  c += b;
  c -= a;
  EXPECT_EQ(textOf(c), "[ 4 6 9 ]");
  c.subtractMultiple(TypeParam(2), a);
  EXPECT_EQ(textOf(c), "[ 2 2 3 ]");
  c.addMultiple(TypeParam(2), a, 3);
  EXPECT_EQ(textOf(c), "[ 2 2 9 ]");
}

TYPED_TEST(VectorOf, OperandsMayBeTheVectorItself) {
  Vector<TypeParam> v("[2 3]");
  v += v;
  EXPECT_EQ(textOf(v), "[ 4 6 ]");
  v *= v[1];
  EXPECT_EQ(textOf(v), "[ 16 24 ]");
  v /= v[1];
  EXPECT_EQ(textOf(v), textOf(Vector<TypeParam>("[1 3/2]")));
  v -= v;
  EXPECT_EQ(textOf(v), "[ 0 0 ]");
}

TYPED_TEST(VectorOf, DimensionMismatches) {
  Vector<TypeParam> a("[1 2]"), b("[1 2 3]");
  EXPECT_FAILURE(a += b, "Vector: dimension mismatch1");
  EXPECT_FAILURE(a -= b, "Vector: dimension mismatch2");
  EXPECT_FAILURE(a *= b, "Vector: dimension mismatch3");
  EXPECT_FAILURE(a /= b, "Vector: dimension mismatch4");
  EXPECT_FAILURE(a + b, "Vector: dimension mismatch5");
  EXPECT_FAILURE(a - b, "Vector: dimension mismatch6");
  EXPECT_FAILURE(a * b, "Vector: dimension mismatch8");
  EXPECT_FAILURE((void)(a == b), "Vector: dimension mismatch9");
  EXPECT_FAILURE((void)(a >= b), "Vector: dimension mismatch10");
  EXPECT_FAILURE((void)(a <= b), "Vector: dimension mismatch11");
  EXPECT_FAILURE(a.print(0, 1), "Vector: dimension mismatch12");
  EXPECT_FAILURE(a.print(2, 1), "Vector: dimension mismatch12");
  EXPECT_FAILURE(a.print(1, 3), "Vector: dimension mismatch12");
}

TYPED_TEST(VectorOf, EqualityIsTolerantAndOrderIsNot) {
  const TypeParam tiny = TypeParam(5) / TypeParam(10'000'000'000L);
  Vector<TypeParam> a("[1]"), b("[1]");
  b[1] += tiny;
  EXPECT_TRUE(a == b);
  EXPECT_FALSE(a != b);
  EXPECT_TRUE(a <= b);
  EXPECT_FALSE(b <= a);
  EXPECT_TRUE(b >= a);
  EXPECT_FALSE(a >= b);
  b[1] += TypeParam(1);
  EXPECT_TRUE(a != b);
}

TYPED_TEST(VectorOf, InfinitiesCompareBeforeTheyAreSubtracted) {
  const Vector<TypeParam> plus("[inf]"), minus("[-inf]"), finite("[3]");
  EXPECT_TRUE(plus == Vector<TypeParam>("[inf]"));
  EXPECT_FALSE(plus == minus);
  EXPECT_FALSE(plus == finite);
  EXPECT_FALSE(finite == minus);
  EXPECT_TRUE(minus <= finite && finite <= plus);
}

TEST(VectorOfDouble, AVectorEqualsItselfWithoutATest) {
  Vector<dbl_t> v("[1]");
  v[1] = std::numeric_limits<dbl_t>::quiet_NaN();
  EXPECT_TRUE(v == v);
  EXPECT_FALSE(v == Vector<dbl_t>(v));
}

TYPED_TEST(VectorOf, PrintsARange) {
  const Vector<TypeParam> v("[1 2 3 4]");
  ::testing::internal::CaptureStdout();
  v.print(2, 3);
  EXPECT_EQ(::testing::internal::GetCapturedStdout(), "( 2 3 )\n");
}

TYPED_TEST(VectorOf, ACopyCarriesDelimitersAndFlags) {
  Vector<TypeParam> v("[1 2]");
  v.delimiters = ", ";
  v.skipAll = false;
  v.extra = true;
  v.converted = true;
  const Vector<TypeParam> copy(v);
  EXPECT_EQ(copy.delimiters, ", ");
  EXPECT_FALSE(copy.skipAll);
  EXPECT_TRUE(copy.extra);
  EXPECT_TRUE(copy.converted);
  Vector<TypeParam> assigned;
  assigned = v;
  EXPECT_EQ(assigned.delimiters, ", ");
  EXPECT_EQ(textOf(assigned), "[ 1 2 ]");
}

TYPED_TEST(VectorOf, WritesRoundTripAtFullPrecision) {
  Vector<TypeParam> v("[ 1/3 -123456789.125 0 inf ]");
  std::ostringstream out;
  setFullPrecision(out);
  out << v;
  EXPECT_TRUE(Vector<TypeParam>(out.str()) == v) << out.str();
}

TYPED_TEST(VectorOf, EmptyDotProductIsZero) {
  EXPECT_TRUE(Vector<TypeParam>() * Vector<TypeParam>() == TypeParam(0));
}

TEST(VectorOfDouble, ReadsExponents) {
  const Vector<dbl_t> v("[ 1e+20 -2.5e-3 1E3 ]");
  EXPECT_EQ(v[1], 1e20L);
  EXPECT_EQ(v[2], -2.5e-3L);
  EXPECT_EQ(v[3], 1000);
}

// The user's program has no exponents; what standard precision wrote has.
TEST(VectorOfExact, ReadsExponentsOnlyWhereTheStreamAllowsThem) {
  EXPECT_FAILURE(Vector<QQ>("[ 1e3 ]"), "Vector: bad input");
  std::istringstream in("[ 1.5e+3 -1e-2 ]");
  acceptExponents(in);
  Vector<QQ> v;
  v.read(in);
  ASSERT_EQ(v.MN, 2);
  EXPECT_TRUE(v[1] == QQ(1500));
  EXPECT_TRUE(v[2] == QQ("-1/100"));
}

// "1e999999999" would build a number of a gigabyte.
TEST(VectorOfDouble, AbsurdExponentsAreRefused) {
  EXPECT_FAILURE(Vector<dbl_t>("[ 1e999999999 ]"), "Vector: bad input");
  EXPECT_FAILURE(Vector<dbl_t>("[ 1e1/3 ]"), "Vector: bad input");
  EXPECT_FAILURE(Vector<dbl_t>("[ 1e ]"), "Vector: bad input");
}

TEST(VectorOfLong, ReadsAndWrites) {
  EXPECT_EQ(textOf(Vector<long>("[ 1 -2 - 3 ]")), "[ 1 -2 -3 ]");
  EXPECT_FAILURE(Vector<long>("[ 1.5 ]"), "Vector: bad input");
  EXPECT_FAILURE(Vector<long>("[ 99999999999999999999 ]"), "Vector: bad input");
}

// A long has no infinity; both signs give the smallest value, as the conversion of the machine does.
TEST(VectorOfLong, InfinityIsTheSmallestLong) {
  const Vector<long> v("[ inf -inf ]");
  EXPECT_EQ(v[1], std::numeric_limits<long>::min());
  EXPECT_EQ(v[2], std::numeric_limits<long>::min());
}

// Rounding goes through double: a known narrowing of the value.
TEST(VectorOfDouble, RoundsAtDoubleWidth) {
  const Vector<dbl_t> v = round(Vector<dbl_t>("[ 1.5 -2.5 2.4 9007199254740993 ]"));
  EXPECT_EQ(v[1], 2);
  EXPECT_EQ(v[2], -3);
  EXPECT_EQ(v[3], 2);
  EXPECT_EQ(v[4], 9007199254740992.0L);
}

TEST(Vector, ConvertsToTheOtherType) {
  Vector<dbl_t> target;
  target.assignConverted(Vector<QQ>("[1/2 3]"), [](const QQ& x) { return toDouble(x); });
  EXPECT_EQ(textOf(target), "[ 0.5 3 ]");
}

}  // namespace
}  // namespace latbox
