// The vector that carries the inhomogeneous coordinate once.
#include "program/extraction.h"
#include "lattice/support.h"

#include "lib/exceptions.h"

namespace latbox::testing {

template <class T>
class ExtractionTest : public ::testing::Test {
 public:
  Lattice<T, dbl_t> lattice;

  Vector<T> extractFrom(const Rows& rows, long base) {
    setBasis(lattice, matrixOf<T>(rows));
    lattice.inhomBase = lattice.inhomScaled = T(base);
    return extractInhom(lattice);
  }
};
TYPED_TEST_SUITE(ExtractionTest, NumberTypes);

TYPED_TEST(ExtractionTest, VectorThatCarriesItIsTaken) {
  EXPECT_TRUE(this->extractFrom({{1, 2, 0}, {3, 4, 1}, {5, 6, 7}}, 1) == vectorOf<TypeParam>({3, 4, 1}));
  EXPECT_TRUE(this->extractFrom({{1, 2, 0}, {3, 4, -1}, {5, 6, 7}}, 1) == vectorOf<TypeParam>({3, 4, -1}));
}

TYPED_TEST(ExtractionTest, EuclideanStepsOnTheColumn) {
  // 4 is chosen, 6 is reduced to 2, and 2 ends it.
  EXPECT_TRUE(this->extractFrom({{1, 0, 6}, {0, 1, 4}}, 2) == vectorOf<TypeParam>({1, -1, 2}));
  EXPECT_TRUE(this->extractFrom({{1, 0, 6}, {0, 1, 10}, {0, 0, 15}}, 1)[3] == TypeParam(1));
}

TYPED_TEST(ExtractionTest, NegativeValuesKeepTheirSign) {
  // floor(7 / -3) is -3: the remainder has the sign of the pivot.
  EXPECT_TRUE(this->extractFrom({{1, 0, 7}, {0, 1, -3}}, 2) == vectorOf<TypeParam>({1, 3, -2}));
}

TYPED_TEST(ExtractionTest, FirstOfEqualValuesIsChosen) {
  EXPECT_TRUE(this->extractFrom({{1, 0, 0, 4}, {0, 1, 0, -4}, {0, 0, 1, 6}}, 2) ==
              vectorOf<TypeParam>({-1, 0, 1, 2}));
}

// Each new choice is judged: the row itself is no solution, and what is left of it is.
TYPED_TEST(ExtractionTest, VectorThatIsMetOnTheWayBecomesASolution) {
  auto& l = this->lattice;
  setBasis(l, matrixOf<TypeParam>({{9, 0, 6}, {5, 1, 4}}));
  l.inhomBase = l.inhomScaled = TypeParam(2);
  l.lbnd = vectorOf<TypeParam>({-4, -4, 2});
  l.ubnd = vectorOf<TypeParam>({4, 4, 2});
  l.params.sol.set(0);
  EXPECT_TRUE(extractInhom(l) == vectorOf<TypeParam>({4, -1, 2}));
  ASSERT_EQ(l.solutions.MN, 1);
  EXPECT_TRUE(l.solutions[1] == vectorOf<TypeParam>({4, -1, 2}));
}

TYPED_TEST(ExtractionTest, ColumnOfZerosGivesTheEmptyVector) {
  EXPECT_EQ(this->extractFrom({{1, 0, 0}, {0, 1, 0}}, 1).MN, 0);
}

TYPED_TEST(ExtractionTest, OtherDivisorGivesTheEmptyVector) {
  EXPECT_EQ(this->extractFrom({{1, 0, 2}}, 1).MN, 0);
  EXPECT_EQ(this->extractFrom({{1, 0, 6}, {0, 1, 4}}, 1).MN, 0);
  EXPECT_EQ(this->extractFrom({{1, 0, 1}, {0, 1, 1}}, 2).MN, 0);  // the divisor 1 is not the base 2
}

TYPED_TEST(ExtractionTest, EmptyLatticeGivesTheEmptyVector) {
  this->lattice.resizeLattice(0, 3);
  this->lattice.checkMode = CHECK_MODE_FINAL;
  EXPECT_EQ(extractInhom(this->lattice).MN, 0);
}

TYPED_TEST(ExtractionTest, WeightsAreTakenOffAndTheBasisStays) {
  setBasis(this->lattice, matrixOf<TypeParam>({{1, 2, 0}, {3, 4, 1}}));
  this->lattice.setScale(3, TypeParam(5));
  this->lattice.setTranslation(1, TypeParam(9));
  const Matrix<TypeParam> before = this->lattice.B;
  EXPECT_TRUE(extractInhom(this->lattice) == vectorOf<TypeParam>({3, 4, 1}));
  EXPECT_TRUE(this->lattice.B == before);
}

TYPED_TEST(ExtractionTest, EquationLatticeLooksAtTheKernelOnly) {
  setBasis(this->lattice, matrixOf<TypeParam>({{0, 1, 2}, {0, 1, 3}, {5, 0, 1}}));
  this->lattice.Ag = matrixOf<TypeParam>({{5}});
  this->lattice.checkMode = CHECK_MODE_EQUATIONS;
  EXPECT_TRUE(extractInhom(this->lattice) == vectorOf<TypeParam>({0, 0, 1}));
  this->lattice.checkMode = CHECK_MODE_FINAL;
  EXPECT_TRUE(extractInhom(this->lattice) == vectorOf<TypeParam>({5, 0, 1}));
}

TYPED_TEST(ExtractionTest, ProgressLineAboveVerbosityOne) {
  for (const long verb : {0, 1, 2}) {
    this->lattice.params.verb.set(verb);
    ::testing::internal::CaptureStdout();
    this->extractFrom({{1, 2, 1}}, 1);
    EXPECT_EQ(::testing::internal::GetCapturedStdout(),
              verb > 1 ? "|-> Extracting current inhomogenous vector ...\n" : "");
  }
}

TEST(ExtractionOverflow, ValuesBeyondTheGateThrow) {
  Lattice<dbl_t, dbl_t> l;
  setBasis(l, matrixOf<dbl_t>({{0, 600000001}, {900000000, 4}}));
  EXPECT_THROW(extractInhom(l), PrecisionException);
}

}  // namespace latbox::testing
