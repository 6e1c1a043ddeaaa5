// Exact coordinates by each way of finding them.
#include "lattice/support.h"

#include "lib/exceptions.h"

namespace latbox::testing {

template <class T>
class CoordSolverTest : public ::testing::Test {
 public:
  CoordSolver<T> solver;
  Vector<T> x;
  using Which = typename CoordSolver<T>::Which;

  bool solve(const Matrix<T>& rows, const Vector<T>& v) {
    return solver.coordinates(Which::saved, rows, v, x);
  }
  void expectRoundTrip(const Matrix<T>& rows, const Vector<T>& wanted) {
    ASSERT_TRUE(solve(rows, wanted * rows));
    EXPECT_TRUE(x == wanted);
  }
};
TYPED_TEST_SUITE(CoordSolverTest, NumberTypes);

inline Rows generatedRows() {
  return {{-8, -4, -4, 1}, {4, 2, 0, 0}, {4, 0, 2, 0}};
}
inline Rows denseRows() {
  return {{3, 1, -2, 0, 5}, {7, 4, 1, 1, -3}, {-2, 8, 6, 0, 1}, {1, 1, 1, 9, 2}};
}

TYPED_TEST(CoordSolverTest, RowsAsGenerated) {
  const auto rows = matrixOf<TypeParam>(generatedRows());
  this->expectRoundTrip(rows, vectorOf<TypeParam>({1, 1, 1}));
  this->expectRoundTrip(rows, vectorOf<TypeParam>({-2, 0, 100000}));
  this->expectRoundTrip(rows, vectorOf<TypeParam>({0, 0, 0}));
  EXPECT_FALSE(this->solve(rows, vectorOf<TypeParam>({0, 1, 0, 0})));  // half a row
  EXPECT_FALSE(this->solve(rows, vectorOf<TypeParam>({1, 0, 0, 0})));  // not even a rational combination
  EXPECT_FALSE(
      this->solve(rows, vectorOf<TypeParam>({4, 2, 2, 0})));  // right where it is solved, wrong elsewhere
}

TYPED_TEST(CoordSolverTest, DenseRows) {
  const auto rows = matrixOf<TypeParam>(denseRows());
  this->expectRoundTrip(rows, vectorOf<TypeParam>({1, -1, 2, 5}));
  this->expectRoundTrip(rows, vectorOf<TypeParam>({12345, -999, 0, 77}));
  EXPECT_FALSE(this->solve(rows, vectorOf<TypeParam>({1, 0, 0, 0, 0})));
}

TYPED_TEST(CoordSolverTest, RationalCoordinatesAreNone) {
  const auto rows = matrixOf<TypeParam>({{2, 2, 4}, {2, -2, 6}});
  EXPECT_FALSE(this->solve(rows, vectorOf<TypeParam>({2, 0, 5})));  // half the sum
  EXPECT_TRUE(this->solve(rows, vectorOf<TypeParam>({4, 0, 10})));
}

// The last coordinate is a small difference of products that a long double rounds: such a sum decides
// nothing.
TYPED_TEST(CoordSolverTest, ProductsBeyondTheMantissa) {
  const auto rows = matrixOf<TypeParam>({{1, 0, 1000000007}, {0, 1, -1000000006}});
  for (long x = 30000000001; x < 30000000100; x += 2)
    ASSERT_TRUE(this->solve(rows, vectorOf<TypeParam>({x, x, x}))) << x;
  EXPECT_FALSE(this->solve(rows, vectorOf<TypeParam>({30000000001, 30000000001, 30000000002})));
}

TYPED_TEST(CoordSolverTest, SquareAndSingleRows) {
  this->expectRoundTrip(matrixOf<TypeParam>({{2, 1}, {1, 3}}), vectorOf<TypeParam>({5, -7}));
  this->solver.clear();
  this->expectRoundTrip(matrixOf<TypeParam>({{2, 4, 6}}), vectorOf<TypeParam>({-3}));
}

TYPED_TEST(CoordSolverTest, EmptyBasisHoldsNothingButTheEmptySum) {
  Matrix<TypeParam> none;
  none.resize(0, 2);
  EXPECT_TRUE(this->solve(none, vectorOf<TypeParam>({0, 0})));
  EXPECT_FALSE(this->solve(none, vectorOf<TypeParam>({0, 1})));
}

TYPED_TEST(CoordSolverTest, WrongDimensionAndInfinityAreNoMembers) {
  const auto rows = matrixOf<TypeParam>(denseRows());
  EXPECT_FALSE(this->solve(rows, vectorOf<TypeParam>({1, 0, 0})));
  auto v = vectorOf<TypeParam>({3, 1, -2, 0, 5});
  v[2] = infinity<TypeParam>();
  EXPECT_FALSE(this->solve(rows, v));
}

TYPED_TEST(CoordSolverTest, CachesAreKeptPerMatrix) {
  using Which = typename CoordSolver<TypeParam>::Which;
  const auto saved = matrixOf<TypeParam>({{1, 0}, {0, 1}});
  const auto current = matrixOf<TypeParam>({{1, 1}, {0, 1}});
  const auto v = vectorOf<TypeParam>({1, 0});
  auto& s = this->solver;
  s.coordinates(Which::saved, saved, v, this->x);
  s.coordinates(Which::current, current, v, this->x);
  EXPECT_TRUE(this->x == vectorOf<TypeParam>({1, -1}));
  // Rows that are passed later are not looked at while the cache is valid.
  s.coordinates(Which::current, saved, v, this->x);
  EXPECT_TRUE(this->x == vectorOf<TypeParam>({1, -1}));
  s.currentBecomesSaved();
  s.coordinates(Which::saved, saved, v, this->x);
  EXPECT_TRUE(this->x == vectorOf<TypeParam>({1, -1}));
  s.dropCurrent();
  s.coordinates(Which::current, saved, v, this->x);
  EXPECT_TRUE(this->x == v);
  s.savedBecomesCurrent();
  s.coordinates(Which::current, saved, v, this->x);
  EXPECT_TRUE(this->x == vectorOf<TypeParam>({1, -1}));
  s.dropCurrent();
  s.currentBecomesSaved();  // there is none, so the saved one goes too
  s.coordinates(Which::saved, saved, v, this->x);
  EXPECT_TRUE(this->x == v);
  CoordSolver<TypeParam> copy(s);
  copy.coordinates(Which::saved, current, v, this->x);
  EXPECT_TRUE(this->x == vectorOf<TypeParam>({1, -1}));
}

TYPED_TEST(CoordSolverTest, ResultMayBeTheVector) {
  const auto rows = matrixOf<TypeParam>(denseRows());
  Vector<TypeParam> v = vectorOf<TypeParam>({1, -1, 2, 5}) * rows;
  ASSERT_TRUE(this->solve(rows, v));
  ASSERT_TRUE(this->solver.coordinates(CoordSolver<TypeParam>::Which::saved, rows, v, v));
  EXPECT_TRUE(v == vectorOf<TypeParam>({1, -1, 2, 5}));
}

TYPED_TEST(CoordSolverTest, RandomCombinationsComeBack) {
  Draws draw(11);
  for (int round = 0; round < 20; ++round) {
    const long n = draw.next(1, 9);
    Rows rows(static_cast<std::size_t>(n), std::vector<long>(static_cast<std::size_t>(n + 3), 0));
    for (auto& row : rows)
      for (auto& entry : row) entry = draw.next(-50, 50);
    const auto matrix = matrixOf<TypeParam>(rows);
    if (gramDeterminant(exact(matrix)) == QQ(0)) continue;
    Vector<TypeParam> wanted(n);
    for (long i = 1; i <= n; ++i) wanted[i] = TypeParam(draw.next(-100000, 100000));
    this->solver.clear();
    this->expectRoundTrip(matrix, wanted);
    Vector<TypeParam> near = wanted * matrix;
    near[1] += TypeParam(1);
    // A neighbour has coordinates only if the unit vector has.
    Vector<TypeParam> unit = Vector<TypeParam>::zeros(n + 3);
    unit[1] = TypeParam(1);
    EXPECT_EQ(this->solve(matrix, near), this->solve(matrix, unit));
  }
}

TEST(CoordSolverFractions, MultipliersThatRoundStillConfirm) {
  const dbl_t third = 4.0L / 3.0L;
  Matrix<dbl_t> rows = matrixOf<dbl_t>(generatedRows());
  for (long i = 1; i <= 3; ++i) rows[i][1] *= third;
  CoordSolver<dbl_t> solver;
  Vector<dbl_t> x;
  Vector<dbl_t> v = vectorOf<dbl_t>({3, -5, 7}) * rows;
  v[1] += 1e-15L;  // rounding of many row operations
  EXPECT_TRUE(solver.coordinates(CoordSolver<dbl_t>::Which::saved, rows, v, x));
  EXPECT_TRUE(x == vectorOf<dbl_t>({3, -5, 7}));
  v[1] += 0.1L;
  EXPECT_FALSE(solver.coordinates(CoordSolver<dbl_t>::Which::saved, rows, v, x));
}

TEST(CoordSolverFractions, ExactFractions) {
  Matrix<QQ> rows = matrixOf<QQ>(denseRows());
  for (long i = 1; i <= 4; ++i) rows[i][1] = rows[i][1] * (QQ(4) / QQ(3));
  CoordSolver<QQ> solver;
  Vector<QQ> x;
  const Vector<QQ> v = vectorOf<QQ>({3, -5, 7, 11}) * rows;
  EXPECT_TRUE(solver.coordinates(CoordSolver<QQ>::Which::saved, rows, v, x));
  EXPECT_TRUE(x == vectorOf<QQ>({3, -5, 7, 11}));
}

// Rows that generate all of Z^4; the first unit vector has coordinates of 27 digits.
inline Rows steepRows() {
  constexpr long q = 30000;
  return {{1, q, 0, 0}, {q, q * q + 1, q, 0}, {0, q, q * q + 1, q}, {0, 0, q, q * q + 1}};
}

// A member whose coordinates a long double can't hold counted as foreign, and a solution was lost with it.
TEST(CoordSolverHuge, StandardPrecisionLeavesThemToTheExactType) {
  CoordSolver<dbl_t> solver;
  Vector<dbl_t> x;
  const Matrix<dbl_t> rows = matrixOf<dbl_t>(steepRows());
  using Which = CoordSolver<dbl_t>::Which;
  try {
    solver.coordinates(Which::saved, rows, vectorOf<dbl_t>({1, 0, 0, 0}), x);
    FAIL() << "no exception";
  } catch (const PrecisionException& e) {
    EXPECT_STREQ(e.what(), "transformation coord error");
  }
  EXPECT_TRUE(solver.coordinates(Which::saved, rows, vectorOf<dbl_t>({0, 0, 0, 1}), x));
  CoordSolver<QQ> exactSolver;
  Vector<QQ> y;
  const Matrix<QQ> exactRows = matrixOf<QQ>(steepRows());
  ASSERT_TRUE(
      exactSolver.coordinates(CoordSolver<QQ>::Which::saved, exactRows, vectorOf<QQ>({1, 0, 0, 0}), y));
  EXPECT_TRUE(y * exactRows == vectorOf<QQ>({1, 0, 0, 0}));
}

// Beyond what one prime, three primes and a long double can hold.
TEST(CoordSolverHuge, ExactTypeFindsThem) {
  Matrix<QQ> rows = matrixOf<QQ>({{2, 3, 1}, {1, 5, 4}});
  CoordSolver<QQ> solver;
  Vector<QQ> x, wanted(2);
  for (const long digits : {15, 25, 50, 80}) {
    wanted[1] = powerOfTen<QQ>(digits) + QQ(7);
    wanted[2] = QQ(0) - powerOfTen<QQ>(digits) - QQ(3);
    EXPECT_TRUE(solver.coordinates(CoordSolver<QQ>::Which::saved, rows, wanted * rows, x)) << digits;
    EXPECT_TRUE(x == wanted) << digits;
  }
}

}  // namespace latbox::testing
