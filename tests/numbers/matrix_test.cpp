#include "numbers/matrix.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>

#include "numbers/number.h"
#include "support/failure.h"
#include "support/text.h"

namespace latbox {
namespace {

using testing::textOf;

template <class T>
class MatrixOf : public ::testing::Test {};
using NumberTypes = ::testing::Types<dbl_t, QQ>;
TYPED_TEST_SUITE(MatrixOf, NumberTypes);

TYPED_TEST(MatrixOf, AcceptList) {
  const struct {
    const char* text;
    long M, N;
    const char* written;
  } cases[] = {
      {"[]", 0, 0, "[\n]"},
      {"[ // none\n ]", 0, 0, "[\n]"},
      {"", 0, 0, "[\n]"},
      {"x", 0, 0, "[\n]"},
      {"[[]]", 0, 0, "[\n]"},
      {"[[][]]", 0, 0, "[\n]"},
      {"[[1 2][3 4]]", 2, 2, "[\n[ 1 2 ]\n[ 3 4 ]\n]"},
      {" [ /* a */ [1] // b\n [2] ] ", 2, 1, "[\n[ 1 ]\n[ 2 ]\n]"},
      {"[[1 2 3][4]]", 2, 3, "[\n[ 1 2 3 ]\n[ 4 ]\n]"},
      {"[[1 2][]]", 2, 2, "[\n[ 1 2 ]\n[ ]\n]"},
      {"[[][1 2]]", 2, 2, "[\n[ ]\n[ 1 2 ]\n]"},
  };
  for (const auto& c : cases) {
    const Matrix<TypeParam> m(c.text);
    EXPECT_EQ(m.M, c.M) << c.text;
    EXPECT_EQ(m.MN, c.M) << c.text;
    EXPECT_EQ(m.N, c.N) << c.text;
    EXPECT_EQ(textOf(m), c.written) << c.text;
  }
}

TYPED_TEST(MatrixOf, RejectList) {
  const struct {
    const char* text;
    const char* message;
  } cases[] = {
      {"[[1 2][3 4 5]]", "Matrix row dimension mismatch"},
      {"[[1][2][3 4]]", "Matrix row dimension mismatch"},
      {"[ 1 2 ]", "Matrix: bad input"},
      {"[", "Matrix: bad input"},
      {"[[1 2]", "Matrix: bad input"},
      {"[[1 2] x]", "Matrix: bad input"},
      {"[[1 2", "Vector: bad input"},
      {"[[1 x]]", "Vector: bad input"},
      {"[[1] /* ]", "Comment is not terminated"},
  };
  for (const auto& c : cases) EXPECT_FAILURE(Matrix<TypeParam>(c.text), c.message) << c.text;
}

TYPED_TEST(MatrixOf, AFailedStreamFails) {
  std::istringstream in("[[1]]");
  in.setstate(std::ios::failbit);
  Matrix<TypeParam> m;
  EXPECT_FAILURE(m.read(in), "Matrix: bad stream");
}

TYPED_TEST(MatrixOf, AMissingMatrixAtTheEndIsReportedByTheNextRead) {
  std::istringstream in(" ");
  Matrix<TypeParam> m("[[1]]");
  m.read(in);
  EXPECT_EQ(m.M, 0);
  EXPECT_TRUE(in.fail());
  EXPECT_FAILURE(m.read(in), "Matrix: bad stream");
}

TYPED_TEST(MatrixOf, WhatIsNoMatrixStaysInTheStream) {
  std::istringstream in(" =5");
  Matrix<TypeParam> m;
  m.read(in);
  EXPECT_EQ(in.get(), '=');
}

// A short row shows no stale elements of an earlier reading.
TYPED_TEST(MatrixOf, ReadingTwiceShowsNothingOfTheFirst) {
  Matrix<TypeParam> m("[[1 2 3][4 5 6]]");
  std::istringstream in("[[7 8][9]]");
  m.read(in);
  EXPECT_EQ(textOf(m), "[\n[ 7 8 ]\n[ 9 ]\n]");
}

TYPED_TEST(MatrixOf, ResizeGivesEveryRowItsColumns) {
  Matrix<TypeParam> m;
  m.resize(2, 3);
  EXPECT_EQ(m.M, 2);
  EXPECT_EQ(m.N, 3);
  EXPECT_EQ(m.rows[2].MN, 3);
  EXPECT_EQ(m[0].MN, 3);
  EXPECT_EQ(m.rows, m.data);
  m.resize(500, 4);
  EXPECT_EQ(m.rows, m.data);
  EXPECT_EQ(m[500].MN, 4);
  EXPECT_FAILURE(m.resize(-1, 2), "Matrix: invalid size");
  EXPECT_FAILURE(m.resize(2, -1), "Matrix: invalid size");
}

// Nothing is cleared: who gains a row or a column writes its zeros.
TYPED_TEST(MatrixOf, ResizeClearsNothing) {
  Matrix<TypeParam> m("[[1 2][3 4]]");
  m.resize(1, 1);
  m.resize(2, 2);
  EXPECT_EQ(textOf(m), "[\n[ 1 2 ]\n[ 3 4 ]\n]");
  m.resizeZero(2, 2);
  EXPECT_EQ(textOf(m), "[\n[ 0 0 ]\n[ 0 0 ]\n]");
}

TYPED_TEST(MatrixOf, NotEmptyNeedsRowsAndColumns) {
  Matrix<TypeParam> m;
  EXPECT_FALSE(m.notEmpty());
  m.resize(2, 0);
  EXPECT_FALSE(m.notEmpty());
  m.resize(2, 1);
  EXPECT_TRUE(m.notEmpty());
  m.clear();
  EXPECT_EQ(m.N, 0);
  EXPECT_FALSE(m.notEmpty());
}

TYPED_TEST(MatrixOf, AliasesBelongToTheCopy) {
  Matrix<TypeParam> source("[[1 2][3 4]]");
  Matrix<TypeParam> copy(source);
  source.resize(1, 2);
  EXPECT_EQ(copy.M, 2);
  EXPECT_EQ(&copy.M, &copy.MN);
  EXPECT_EQ(copy.rows, copy.data);
  Matrix<TypeParam> assigned("[[9]]");
  assigned = copy;
  copy.rows[1][1] = TypeParam(7);
  EXPECT_TRUE(assigned.rows[1][1] == TypeParam(1));
  EXPECT_EQ(&assigned.M, &assigned.MN);
  EXPECT_EQ(assigned.N, 2);
  Matrix<TypeParam> moved(std::move(assigned));
  EXPECT_EQ(moved.M, 2);
  EXPECT_EQ(moved.N, 2);
  EXPECT_EQ(&moved.M, &moved.MN);
  EXPECT_EQ(assigned.M, 0);
  EXPECT_EQ(assigned.N, 0);
  moved.extra = true;
  assigned = std::move(moved);
  EXPECT_EQ(assigned.rows[2][2] * TypeParam(1), TypeParam(4));
  EXPECT_TRUE(assigned.extra);
}

TYPED_TEST(MatrixOf, AssignmentReusesTheStorageOfTheRows) {
  const Matrix<TypeParam> source("[[1 2][3 4]]");
  Matrix<TypeParam> target(5, 7);
  const TypeParam* storage = target.rows[2].data;
  target = source;
  EXPECT_EQ(target.rows[2].data, storage);
  EXPECT_EQ(textOf(target), textOf(source));
}

TYPED_TEST(MatrixOf, AppendSetsTheColumnsOfAnEmptyMatrix) {
  Matrix<TypeParam> m;
  m.append(Vector<TypeParam>("[1 2]"));
  EXPECT_EQ(m.N, 2);
  m.append(Vector<TypeParam>("[3 4]"));
  EXPECT_EQ(m.M, 2);
  EXPECT_EQ(textOf(m), "[\n[ 1 2 ]\n[ 3 4 ]\n]");
  EXPECT_FAILURE(m.append(Vector<TypeParam>("[1]")), "Matrix row dimension mismatch");
}

TYPED_TEST(MatrixOf, RowsComeAndGoLikeElements) {
  Matrix<TypeParam> m("[[1 2][3 4]]");
  m.removeComponent(1);
  EXPECT_EQ(m.M, 1);
  EXPECT_EQ(m.N, 2);
  EXPECT_EQ(textOf(m), "[\n[ 3 4 ]\n]");
}

TYPED_TEST(MatrixOf, Products) {
  const Matrix<TypeParam> A("[[1 2 3][4 5 6]]"), B("[[1 0][2 1][0 3]]");
  EXPECT_EQ(textOf(A * Vector<TypeParam>("[1 1 1]")), "[ 6 15 ]");
  EXPECT_EQ(textOf(Vector<TypeParam>("[1 2]") * A), "[ 9 12 15 ]");
  EXPECT_EQ(textOf(A * B), "[\n[ 5 11 ]\n[ 14 23 ]\n]");
  Matrix<TypeParam> C(A);
  C *= B;
  EXPECT_EQ(textOf(C), "[\n[ 5 11 ]\n[ 14 23 ]\n]");
  C *= C;
  EXPECT_EQ(textOf(C), "[\n[ 179 308 ]\n[ 392 683 ]\n]");
  EXPECT_EQ(textOf(A.transposed()), "[\n[ 1 4 ]\n[ 2 5 ]\n[ 3 6 ]\n]");
  EXPECT_EQ(textOf(Matrix<TypeParam>::unit(2) * A), textOf(A));
}

// A zero coefficient skips its row: an infinity there does not count.
TYPED_TEST(MatrixOf, VectorTimesMatrixSkipsExactZeros) {
  const Matrix<TypeParam> A("[[1 2][inf inf]]");
  EXPECT_EQ(textOf(Vector<TypeParam>("[3 0]") * A), "[ 3 6 ]");
}

TYPED_TEST(MatrixOf, DimensionMismatches) {
  Matrix<TypeParam> A("[[1 2 3][4 5 6]]");
  const Vector<TypeParam> two("[1 2]"), three("[1 2 3]");
  EXPECT_FAILURE(A * two, "Matrix: mat-vec multiplication dimension mismatch");
  EXPECT_FAILURE(three * A, "vector-matrix dimension mismatch");
  EXPECT_FAILURE(A * A, "Matrix: dimension mismatch6");
  EXPECT_FAILURE(A *= A, "Matrix: dimension mismatch3");
  EXPECT_FAILURE(A.swapRows(1, 3), "Matrix: row swap index out of range");
  EXPECT_FAILURE(A.swapRows(-1, 1), "Matrix: row swap index out of range");
  EXPECT_FAILURE(A.determinant(), "Matrix: a non-quadratic matrix determinant is not defined");
}

TYPED_TEST(MatrixOf, SwapRowsExchangesStorage) {
  Matrix<TypeParam> m("[[1 2][3 4]]");
  m[0][1] = TypeParam(8);
  const TypeParam* second = m.rows[2].data;
  m.swapRows(1, 2);
  EXPECT_EQ(m.rows[1].data, second);
  EXPECT_EQ(textOf(m), "[\n[ 3 4 ]\n[ 1 2 ]\n]");
  m.swapRows(0, 2);
  EXPECT_TRUE(m[2][1] == TypeParam(8));
  m.swapRows(1, 1);
  EXPECT_EQ(textOf(m[1]), "[ 3 4 ]");
}

// A determinant with an entry below the tolerance came out wrong in exact numbers.
TEST(ExactMatrix, DeterminantKeepsEntriesBelowTheTolerance) {
  Matrix<QQ> m("[[1 1][1/10000000000 1]]");
  EXPECT_EQ(m.determinant(), QQ("9999999999/10000000000"));
}

TYPED_TEST(MatrixOf, Determinants) {
  const struct {
    const char* text;
    long value;
  } cases[] = {
      {"[]", 0},
      {"[[5]]", 5},
      {"[[0]]", 0},
      {"[[1 2][3 4]]", -2},
      {"[[0 1][1 0]]", -1},
      {"[[1 2][2 4]]", 0},
      {"[[0 0 1][1 0 0][0 1 0]]", 1},
      {"[[2 0 0][0 3 0][0 0 -4]]", -24},
      {"[[0 2 1][3 -1 4][5 6 7]]", 21},
  };
  for (const auto& c : cases) {
    const TypeParam value = Matrix<TypeParam>(c.text).determinant();
    EXPECT_TRUE(isZero(TypeParam(value - TypeParam(c.value)))) << c.text;
  }
}

TYPED_TEST(MatrixOf, EqualityLooksAtShapeAndRows) {
  const Matrix<TypeParam> a("[[1 2][3 4]]");
  EXPECT_TRUE(a == Matrix<TypeParam>("[[1 2][3 4]]"));
  EXPECT_TRUE(a != Matrix<TypeParam>("[[1 2][3 5]]"));
  EXPECT_TRUE(a != Matrix<TypeParam>("[[1 2]]"));
  EXPECT_TRUE(a != Matrix<TypeParam>("[[1 2][3]]"));
}

TYPED_TEST(MatrixOf, ConvertsToTheOtherType) {
  Matrix<TypeParam> target("[[9 9 9]]");
  target.assignConverted(Matrix<QQ>("[[1 2][3 4]]"), [](const QQ& x) { return fromExact<TypeParam>(x); });
  EXPECT_EQ(target.M, 2);
  EXPECT_EQ(target.N, 2);
  EXPECT_EQ(textOf(target), "[\n[ 1 2 ]\n[ 3 4 ]\n]");
}

TYPED_TEST(MatrixOf, ReadersAreLinear) {
  std::string text = "[";
  constexpr long COUNT = 50'000;
  for (long i = 0; i < COUNT; ++i) text += "[1 2]\n";
  const Matrix<TypeParam> m(text + "]");
  EXPECT_EQ(m.M, COUNT);
  EXPECT_TRUE(m[COUNT][2] == TypeParam(2));
}

TYPED_TEST(MatrixOf, ArraysHoldMatricesByValue) {
  SerializableArray<Matrix<TypeParam>> levels;
  levels.append(Matrix<TypeParam>("[[1]]"));
  levels.append(Matrix<TypeParam>("[[2 3]]"));
  levels.swap(1, 2);
  const SerializableArray<Matrix<TypeParam>> copy(levels);
  levels[1].rows[1][1] = TypeParam(5);
  EXPECT_EQ(textOf(copy.data[1]), "[\n[ 2 3 ]\n]");
  EXPECT_EQ(&copy.data[1].M, &copy.data[1].MN);
}

}  // namespace
}  // namespace latbox
