// The kernel of the equations, and the transformations that lead there.
#include "lattice/support.h"
#include "program/extraction.h"

#include "lib/exceptions.h"

namespace latbox::testing {

// The equation lattice of Ag x = bg with variables 0..1: e equation coordinates, the variables, the last one.
template <class T>
void setEquations(Lattice<T, dbl_t>& l, const Rows& equations, const std::vector<long>& right) {
  const long e = static_cast<long>(equations.size());
  const long n = static_cast<long>(equations[0].size());
  Matrix<T> basis(n + 1, e + n + 1);
  for (long i = 1; i <= e; ++i) {
    basis[1][i] = T(-right[static_cast<std::size_t>(i - 1)]);
    for (long j = 1; j <= n; ++j)
      basis[j + 1][i] = T(equations[static_cast<std::size_t>(i - 1)][static_cast<std::size_t>(j - 1)]);
  }
  for (long j = 1; j <= n; ++j) {
    basis[1][e + j] = T(-1);
    basis[j + 1][e + j] = T(2);
  }
  basis[1][e + n + 1] = T(1);
  setBasis(l, basis);
  l.Ag = matrixOf<T>(equations);
  l.bg = vectorOf<T>(right);
  l.checkMode = CHECK_MODE_EQUATIONS;
}

template <class T>
Matrix<T> product(const SerializableArray<Matrix<T>>& TT, Matrix<T> B) {
  for (long k = 1; k <= TT.MN; ++k) B = TT[k] * B;
  return B;
}

template <class T>
class KernelTest : public ::testing::Test {
 public:
  Lattice<T, dbl_t> lattice;
};
TYPED_TEST_SUITE(KernelTest, NumberTypes);

inline Rows someEquations(long e, long n, std::uint64_t seed, long size) {
  Draws draw(seed);
  Rows rows(static_cast<std::size_t>(e), std::vector<long>(static_cast<std::size_t>(n), 0));
  for (auto& row : rows)
    for (auto& entry : row) entry = draw.next(0, size);
  return rows;
}

TYPED_TEST(KernelTest, ProductOfTheTransformationsGivesTheKernelInFront) {
  auto& l = this->lattice;
  for (const bool kept : {false, true}) {
    for (const long e : {1, 2, 3}) {
      const Rows equations = someEquations(e, 9, 17 + static_cast<std::uint64_t>(e), 99);
      std::vector<long> right;
      for (const auto& row : equations) right.push_back(row[0] + row[3] + row[4]);
      setEquations(l, equations, right);
      l.params.consistency.set(kept);
      l.params.verb.set(0);
      const Matrix<TypeParam> origin = l.B_save;
      const auto TT = l.kernelReduce();
      const Matrix<TypeParam> kernel = product(TT, origin);
      EXPECT_TRUE(kernel == l.unscaled(l.B)) << e << kept;
      for (long i = 1; i <= l.rank; ++i) {
        bool zero = true;
        for (long j = 1; j <= e; ++j) zero = zero && isExactZero(kernel[i][j]);
        EXPECT_EQ(zero, i <= l.rank - e) << "row " << i;
      }
      EXPECT_EQ(gramDeterminant(exact(origin)), gramDeterminant(exact(kernel)));
      EXPECT_TRUE(l.unweighted());
      EXPECT_EQ(l.rank, 10);
      EXPECT_TRUE(l.TT[l.TT.MN] * l.B_save == kernel);
      // The particular solution stands among the kernel rows.
      const Vector<TypeParam> particular = extractInhom(l);
      ASSERT_EQ(particular.MN, l.dim);
      EXPECT_EQ(abs(particular[l.dim]), TypeParam(1));
      for (long j = 1; j <= e; ++j) EXPECT_TRUE(isExactZero(particular[j]));
    }
  }
}

// The steps as they are told, on a lattice that keeps its transformation in step with every operation.
template <class T>
void reduceToKernelPlainly(Lattice<T, dbl_t>& l) {
  const long e = l.Ag.M;
  long m = l.rank;
  T scale(10 * e);
  for (;; scale *= T(10)) {
    for (long i = 1; i <= e; ++i) l.setScale(i, scale);
    l.sortBasis(m);
    l.lll(1, m, m);
    l.sortBasis(m);
    l.checkConsistency(true, true);
    for (long row = 1; row <= m;) {
      bool kernel = true;
      for (long i = 1; i <= e; ++i) kernel = kernel && abs(l.B[row][i]) <= T(EPS);
      for (long t = row; kernel && t < m; ++t) l.swapBase(t, t + 1, t > row);
      kernel ? --m : ++row;
    }
    if (m == e) break;
  }
  for (long i = 1; i <= l.rank - e; ++i) l.swapBase(i, l.rank - i + 1, i > 1);
  for (long i = 1; i <= e; ++i) l.setScale(i, T(1));
}

TYPED_TEST(KernelTest, AgreesWithTheStepsAsTheyAreTold) {
  for (const long e : {1, 2, 3, 4}) {
    const Rows equations = someEquations(e, 11, 31 + static_cast<std::uint64_t>(e), 40);
    const std::vector<long> right(static_cast<std::size_t>(e), 90);
    Lattice<TypeParam, dbl_t> plain;
    for (auto* l : {&plain, &this->lattice}) {
      setEquations(*l, equations, right);
      l->params.consistency.set(true);
      l->params.verb.set(0);
      l->interval_tt = 20;  // so that sweeps leave something to the next, heavier weight
    }
    reduceToKernelPlainly(plain);
    const auto TT = this->lattice.kernelReduce();
    EXPECT_TRUE(this->lattice.B == plain.B) << e;
    EXPECT_EQ(this->lattice.interval_tt, plain.interval_tt);
    ASSERT_EQ(TT.MN, plain.TT.MN);
    for (long i = 1; i <= TT.MN; ++i) EXPECT_TRUE(TT[i] == plain.TT[i]);
  }
}

TYPED_TEST(KernelTest, SameKernelWithAndWithoutConsistency) {
  Lattice<TypeParam, dbl_t> other;
  const Rows equations = someEquations(2, 8, 4, 50);
  setEquations(this->lattice, equations, {60, 70});
  setEquations(other, equations, {60, 70});
  other.params.consistency.set(true);
  this->lattice.kernelReduce();
  other.kernelReduce();
  EXPECT_TRUE(this->lattice.B == other.B);
}

TYPED_TEST(KernelTest, ParametersOfTheGivenLatticeStay) {
  setEquations(this->lattice, {{3, 5, 7}}, {8});
  this->lattice.params.verb.set(2);
  this->lattice.params.beta.set(11);
  ::testing::internal::CaptureStdout();
  this->lattice.kernelReduce();
  EXPECT_EQ(::testing::internal::GetCapturedStdout(), "");  // the work lattice is silent
  EXPECT_EQ(this->lattice.params.verb.get(), 2);
  EXPECT_EQ(this->lattice.params.beta.get(), 11);
}

TYPED_TEST(KernelTest, FormerWeightsComeBack) {
  setEquations(this->lattice, {{3, 5, 7}}, {8});
  this->lattice.setScale(1, TypeParam(6));
  this->lattice.setScale(3, TypeParam(2));
  this->lattice.kernelReduce();
  EXPECT_EQ(this->lattice.scaleFactor[1], TypeParam(6));
  EXPECT_EQ(this->lattice.scaleFactor[3], TypeParam(2));
}

TYPED_TEST(KernelTest, NoRowIsLeftOverWhenNothingIsInTheKernel) {
  auto& l = this->lattice;
  setEquations(l, {{1}, {0}}, {0, 1});  // two independent equations, two rows
  const auto TT = l.kernelReduce();
  EXPECT_EQ(l.rank, 2);
  EXPECT_TRUE(product(TT, l.B_save) == l.B);
  EXPECT_EQ(extractInhom(l).MN, 0);
}

TYPED_TEST(KernelTest, UnsolvableEquationHasNoParticularSolution) {
  setEquations(this->lattice, {{2}}, {1});
  this->lattice.kernelReduce();
  EXPECT_EQ(extractInhom(this->lattice).MN, 0);
}

TEST(KernelBothTypes, SameKernel) {
  Lattice<dbl_t, dbl_t> fast;
  Lattice<QQ, dbl_t> slow;
  const Rows equations = someEquations(3, 14, 9, 99);
  setEquations(fast, equations, {300, 310, 320});
  setEquations(slow, equations, {300, 310, 320});
  fast.kernelReduce();
  slow.kernelReduce();
  EXPECT_TRUE(exact(fast.B) == slow.B);
}

}  // namespace latbox::testing
