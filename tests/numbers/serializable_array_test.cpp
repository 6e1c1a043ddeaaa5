#include "numbers/serializable_array.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>

#include "numbers/matrix.h"
#include "numbers/number.h"
#include "numbers/pair.h"
#include "support/failure.h"
#include "support/text.h"

namespace latbox {
namespace {

using testing::textOf;

template <class A>
A readInto(A array, const std::string& text) {
  std::istringstream in(text);
  array.read(in);
  return array;
}

TEST(Serializable, AppendsABlankWhereTheDelimitersHaveNone) {
  EXPECT_EQ(SerializableArray<long>(",").delimiters, ", ");
  EXPECT_EQ(SerializableArray<long>(" ,").delimiters, " ,");
  EXPECT_EQ(SerializableArray<long>("").delimiters, " ");
}

template <class T>
class SerializableArrayOf : public ::testing::Test {};
using NumberTypes = ::testing::Types<dbl_t, QQ>;
TYPED_TEST_SUITE(SerializableArrayOf, NumberTypes);

TYPED_TEST(SerializableArrayOf, ReadsTheTextOfEitherNumberType) {
  const auto array = readInto(SerializableArray<TypeParam>(), " \n[ 1 -5/4 2:1/2 1.5e3 -inf ]");
  ASSERT_EQ(array.MN, 5);
  EXPECT_TRUE(array.data[2] * TypeParam(4) == TypeParam(-5));
  EXPECT_TRUE(array.data[3] * TypeParam(2) == TypeParam(5));
  EXPECT_TRUE(array.data[4] == TypeParam(1500));
  EXPECT_TRUE(array.data[5] == -infinity<TypeParam>());
}

TYPED_TEST(SerializableArrayOf, RoundTrips) {
  const auto array = readInto(SerializableArray<TypeParam>(","), "[1,2,-3]");
  EXPECT_EQ(textOf(array), "[ 1 2 -3 ]");
  EXPECT_EQ(textOf(readInto(SerializableArray<TypeParam>(), textOf(array))), "[ 1 2 -3 ]");
}

TEST(SerializableArray, WritesBySeparator) {
  SerializableArray<long> blanks, lines("\n");
  EXPECT_EQ(textOf(blanks), "[ ]");
  EXPECT_EQ(textOf(lines), "[\n]");
  for (const long x : {7L, 8L}) {
    blanks.append(x);
    lines.append(x);
  }
  EXPECT_EQ(textOf(blanks), "[ 7 8 ]");
  EXPECT_EQ(textOf(lines), "[\n7\n8\n]");
}

TEST(SerializableArray, EscapesDelimitersInElements) {
  SerializableArray<RightOrderPair<long, dbl_t>> pairs(",");
  pairs.append(RightOrderPair<long, dbl_t>(3, 1.5L));
  EXPECT_EQ(textOf(pairs), "[ (3\\,\\ 1.5) ]");
  const auto back = readInto(SerializableArray<RightOrderPair<long, dbl_t>>(","), textOf(pairs));
  ASSERT_EQ(back.MN, 1);
  EXPECT_EQ(back.data[1].left, 3);
  EXPECT_EQ(back.data[1].right, 1.5L);
}

// "]" is escaped only where it is a delimiter, so it ends the list inside the first matrix: such lists are
// written for the eye.
TEST(SerializableArray, ListsOfMatricesEndAtTheFirstBracket) {
  SerializableArray<Matrix<QQ>> levels("\n");
  levels.append(Matrix<QQ>("[[1 2]]"));
  EXPECT_EQ(textOf(levels), "[\n[\\\n[\\ 1\\ 2\\ ]\\\n]\n]");
  EXPECT_FAILURE(readInto(SerializableArray<Matrix<QQ>>("\n"), textOf(levels)), "Vector: bad input");
}

TEST(SerializableArray, SkipAllTakesRunsAndComments) {
  EXPECT_EQ(textOf(readInto(SerializableArray<long>(","), "[ 1 , 2 /* two */,, 3 ]")), "[ 1 2 3 ]");
}

TEST(SerializableArray, WithoutSkipAllEachDelimiterEndsAnElement) {
  const auto array = readInto(SerializableArray<long>(",", false), "[1,,2]");
  ASSERT_EQ(array.MN, 3);
  EXPECT_EQ(array.data[2], 0);
  EXPECT_EQ(array.data[3], 2);
}

TEST(SerializableArray, AFirstEmptyTextIsIgnored) {
  EXPECT_EQ(readInto(SerializableArray<long>(",", false), "[,1]").MN, 1);
  EXPECT_EQ(readInto(SerializableArray<long>(), "[]").MN, 0);
  EXPECT_EQ(readInto(SerializableArray<long>(), "[ ]").MN, 0);
}

TEST(SerializableArray, RejectList) {
  EXPECT_FAILURE(readInto(SerializableArray<long>(), ""), "SerializableArray: no start found");
  EXPECT_FAILURE(readInto(SerializableArray<long>(), " 1 2"), "SerializableArray: no start found");
  EXPECT_FAILURE(readInto(SerializableArray<long>(), "// note\n[1]"), "SerializableArray: no start found");
  EXPECT_FAILURE(readInto(SerializableArray<long>(), "[ 1 2"), "SerializableArray: bad input");
  EXPECT_FAILURE(readInto(SerializableArray<dbl_t>(), "[ 1e99999 ]"), "Exponent is out of range");
}

TEST(SerializableArray, PrecisionOfTheStreamHolds) {
  SerializableArray<dbl_t> array;
  array.append(0.125L + 1e-10L);
  std::ostringstream out;
  setFullPrecision(out);
  out << array;
  EXPECT_EQ(out.str(), "[ 0.1250000001 ]");
}

}  // namespace
}  // namespace latbox
