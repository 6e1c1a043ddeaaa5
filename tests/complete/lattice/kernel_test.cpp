#include "complete/lattice/kernel.h"

#include <gtest/gtest.h>

#include "complete/lattice/elimination.h"
#include "support.h"

namespace latbox::complete {
namespace {

using testing::vectorOf;

TEST(Determinant, IsThatOfTheMatrix) {
  EXPECT_EQ(determinant({}), 1);
  EXPECT_EQ(determinant({vectorOf({0, 2}), vectorOf({3, 1})}), -6);
  EXPECT_EQ(determinant({vectorOf({2, 4}), vectorOf({1, 2})}), 0);
  EXPECT_EQ(determinant({vectorOf({2, 0, 1}), vectorOf({1, 3, 2}), vectorOf({1, 1, 4})}), 18);
}

TEST(SolveSquare, SolvesBeyondAZeroPivot) {
  const std::vector<Rational> y = solveSquare({vectorOf({0, 2}), vectorOf({3, 1})}, vectorOf({1, 2}));
  EXPECT_EQ(y[1], Rational(1, 2));
  EXPECT_EQ(y[0], Rational(1, 2));
}

TEST(IndependentRows, DropsWhatFollowsAndFindsContradictions) {
  const IntegerMatrix rows{vectorOf({1, 2, 3}), vectorOf({2, 4, 6}), vectorOf({0, 1, 1})};
  EXPECT_EQ(independentRows(rows, vectorOf({1, 2, 5})).value(), (std::vector<std::size_t>{0, 2}));
  EXPECT_FALSE(independentRows(rows, vectorOf({1, 3, 5})));
}

TEST(WholeSolutions, AreAllOfThem) {
  const IntegerMatrix equations{vectorOf({6, 10, 15})};
  const auto solutions = wholeSolutions(equations, vectorOf({1}), 3);
  ASSERT_TRUE(solutions);
  EXPECT_EQ(innerProduct(equations[0], solutions->point), 1);
  ASSERT_EQ(solutions->basis.size(), 2u);
  // The kernel of coprime a has the determinant |a|.
  EXPECT_EQ(determinant(gram(solutions->basis)), 361);
}

TEST(WholeSolutions, AreNoneWhereDivisibilityForbidsThem) {
  // Each equation has whole solutions; both together have x - y = 1 and x + y even.
  EXPECT_FALSE(wholeSolutions({vectorOf({1, 1, 2}), vectorOf({1, -1, 4})}, vectorOf({0, 1}), 3));
}

TEST(WholeSolutions, TakeLongCoefficients) {
  IntegerMatrix equations{IntegerVector(4)};
  equations[0] = {Integer("123456789012345678901234567891"), Integer("987654321098765432109876543211"),
                  Integer("555555555555555555555555555557"), 1};
  const auto solutions = wholeSolutions(equations, {Integer("1000000000000000000000000000000000")}, 4);
  ASSERT_TRUE(solutions);
  EXPECT_EQ(determinant(gram(solutions->basis)), innerProduct(equations[0], equations[0]));
}

TEST(IsInKernel, OfAllRows) {
  const IntegerMatrix equations{vectorOf({1, 1, 1}), vectorOf({2, 0, -2})};
  EXPECT_TRUE(isInKernel(equations, {vectorOf({1, -2, 1}), vectorOf({-3, 6, -3})}));
  EXPECT_FALSE(isInKernel(equations, {vectorOf({1, -2, 1}), vectorOf({1, -1, 0})}));
  EXPECT_TRUE(isInKernel(equations, {}));
}

TEST(IsSameKernel, TellsASublatticeApart) {
  const IntegerMatrix equations{vectorOf({1, 1, 1})};
  const IntegerMatrix basis{vectorOf({1, -1, 0}), vectorOf({0, 1, -1})};
  EXPECT_TRUE(isSameKernel(equations, basis, {vectorOf({1, 0, -1}), vectorOf({0, 1, -1})}));
  EXPECT_FALSE(isSameKernel(equations, basis, {vectorOf({2, -2, 0}), vectorOf({0, 1, -1})}));
  EXPECT_FALSE(isSameKernel(equations, basis, {vectorOf({1, 0, 0}), vectorOf({0, 1, -1})}));
}

TEST(SplitByKernel, IsUnimodular) {
  const IntegerMatrix equations = {{4, 5, 7, 2}, {1, -1, 3, 6}};
  const Split split = splitByKernel(equations, 4);
  IntegerMatrix all = split.kernel;
  all.insert(all.end(), split.others.begin(), split.others.end());
  EXPECT_EQ(abs(determinant(all)), 1);
  EXPECT_TRUE(isInKernel(equations, split.kernel));
  for (std::size_t i = 0; i < 2; ++i)
    for (std::size_t j = 0; j < 2; ++j)
      EXPECT_EQ(split.images[i][j], innerProduct(equations[i], split.others[j]));
}

TEST(SolveUnimodular, BringsTheInverse) {
  // Of determinant -1, and with 0 where the first pivot would be.
  const IntegerMatrix matrix = {{0, 1, 0}, {1, 7, 3}, {2, 5, 7}};
  const IntegerMatrix unit = {{1, 0, 0}, {0, 1, 0}, {0, 0, 1}};
  ASSERT_EQ(determinant(matrix), -1);
  const IntegerMatrix inverse = solveUnimodular(matrix, unit);
  for (std::size_t i = 0; i < 3; ++i)
    for (std::size_t j = 0; j < 3; ++j) {
      Integer sum = 0;
      for (std::size_t k = 0; k < 3; ++k) sum += matrix[i][k] * inverse[k][j];
      EXPECT_EQ(sum, unit[i][j]);
    }
}

}  // namespace
}  // namespace latbox::complete
