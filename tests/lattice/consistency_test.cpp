// Coordinates through the lattice, and the check and repair of the basis.
#include "lattice/support.h"

#include "lattice/unimodular.h"
#include "lib/exceptions.h"
#include "lib/progress.h"
#include "support/failure.h"

namespace latbox::testing {

template <class T>
class ConsistencyTest : public ::testing::Test {
 public:
  Lattice<T, dbl_t> lattice;
  void SetUp() override { setBasis(lattice, matrixOf<T>({{3, 1, 0}, {1, 4, 1}, {0, 2, 5}})); }
};
TYPED_TEST_SUITE(ConsistencyTest, NumberTypes);

TYPED_TEST(ConsistencyTest, UnimodularChangeStays) {
  auto& l = this->lattice;
  for (const bool kept : {false, true}) {
    this->SetUp();
    l.params.consistency.set(kept);
    l.lll(1, 0, 0);
    const Matrix<TypeParam> before = l.B;
    const short word = l.status[1];
    l.checkConsistency(false, true);
    EXPECT_TRUE(l.B == before);
    EXPECT_EQ(l.status[1], word);
    EXPECT_TRUE(l.TT[1] * l.B_save == l.B);
  }
}

TYPED_TEST(ConsistencyTest, DeterminantOfMinusOneIsAccepted) {
  auto& l = this->lattice;
  l.swapBase(1, 2, false);
  const Matrix<TypeParam> before = l.B;
  l.checkConsistency(false, true);
  EXPECT_TRUE(l.B == before);
  EXPECT_EQ(l.TT[1][1][2], TypeParam(1));
}

TYPED_TEST(ConsistencyTest, WithConsistencyTheTransformationRepairsARow) {
  auto& l = this->lattice;
  l.params.consistency.set(true);
  l.lll(1, 0, 0);
  const Matrix<TypeParam> before = l.B;
  rows(l).B[2][1] += TypeParam(1);
  rows(l).B[0] = vectorOf<TypeParam>({7, 8, 9});
  l.checkConsistency(false, true);
  EXPECT_TRUE(l.B == before);
  EXPECT_TRUE(l.B[0] == vectorOf<TypeParam>({7, 8, 9}));
  for (long i = 1; i <= 3; ++i) EXPECT_EQ(l.status[i], 0);
}

TYPED_TEST(ConsistencyTest, WithoutConsistencyALatticeRowStays) {
  auto& l = this->lattice;
  rows(l).B[2] += l.B[1];
  const Matrix<TypeParam> before = l.B;
  l.checkConsistency(false, true);
  EXPECT_TRUE(l.B == before);
  EXPECT_TRUE(l.TT[1] == matrixOf<TypeParam>({{1, 0, 0}, {1, 1, 0}, {0, 0, 1}}));
}

TYPED_TEST(ConsistencyTest, WithoutConsistencyAForeignRowRestoresTheOrigin) {
  auto& l = this->lattice;
  l.setScale(1, TypeParam(5));
  rows(l).B[2][1] += TypeParam(1);
  setWord(l, 1, STATUS_GSO);
  l.checkConsistency(false, true);
  EXPECT_TRUE(l.unscaled(l.B) == l.B_save);
  EXPECT_TRUE(l.TT[1] == Matrix<TypeParam>::unit(3));
  EXPECT_EQ(l.status[1], 0);
}

TYPED_TEST(ConsistencyTest, BasisOfASublatticeRestoresTheOrigin) {
  auto& l = this->lattice;
  rows(l).B[2] *= TypeParam(2);
  l.checkConsistency(false, true);
  EXPECT_TRUE(l.B == l.B_save);
}

TYPED_TEST(ConsistencyTest, KeptTransformationThatIsNotUnimodularThrows) {
  auto& l = this->lattice;
  l.params.consistency.set(true);
  rows(l).TT[1][2][2] = TypeParam(2);
  try {
    l.checkConsistency(false, true);
    FAIL() << "no exception";
  } catch (const PrecisionException& e) {
    EXPECT_STREQ(e.what(), "unimodular error");
  }
}

TYPED_TEST(ConsistencyTest, NearZerosBecomeZero) {
  auto& l = this->lattice;
  l.params.consistency.set(true);
  rows(l).TT[1][2][1] = TypeParam(1) / TypeParam(2000000000L);
  l.checkConsistency(false, true);
  EXPECT_TRUE(isExactZero(l.TT[1][2][1]));
}

TYPED_TEST(ConsistencyTest, NearZerosOfTheBasisDoNotEnterTheOrigin) {
  auto& l = this->lattice;
  l.params.consistency.set(true);
  rows(l).B_save[1][3] = rows(l).B[1][3] = TypeParam(1) / TypeParam(2000000000L);
  l.checkConsistency(true, true);
  EXPECT_TRUE(isExactZero(l.B_save[1][3]));
}

// A cache of the basis as it was before the repair would find coordinates of another lattice.
TYPED_TEST(ConsistencyTest, CacheOfTheBasisFollowsTheRepair) {
  auto& l = this->lattice;
  for (const bool kept : {false, true}) {
    this->SetUp();
    l.params.consistency.set(kept);
    rows(l).B[2][1] += TypeParam(1);
    Vector<TypeParam> x;
    ASSERT_TRUE(l.coordinates(l.B[2], x, false));
    l.checkConsistency(false, true);
    EXPECT_TRUE(l.B == l.B_save);
    ASSERT_TRUE(l.coordinates(l.B_save[2], x, false)) << kept;
    EXPECT_TRUE(x == vectorOf<TypeParam>({0, 1, 0}));
  }
}

TYPED_TEST(ConsistencyTest, SeveralTransformationsAreRefused) {
  auto& l = this->lattice;
  l.newTransformation(false);
  EXPECT_FAILURE(l.checkConsistency(false, true), "In the non-aardal case TT.MN should always be == 1");
}

TYPED_TEST(ConsistencyTest, RectangularTransformationIsRefused) {
  auto& l = this->lattice;
  l.params.consistency.set(true);
  rows(l).TT[1].resize(2, 3);
  EXPECT_FAILURE(l.checkConsistency(false, true),
                 "Matrix: a non-quadratic matrix determinant is not defined");
}

TYPED_TEST(ConsistencyTest, RebaseMakesTheBasisTheOrigin) {
  auto& l = this->lattice;
  const Matrix<TypeParam> origin = l.B_save;
  l.setScale(2, TypeParam(3));
  l.lll(1, 0, 0);
  const Matrix<TypeParam> basis = l.unscaled(l.B);
  l.checkConsistency(true, true);
  EXPECT_TRUE(l.B_save == basis);
  EXPECT_TRUE(l.unscaled(l.B) == basis);
  ASSERT_EQ(l.TT.MN, 2);
  EXPECT_TRUE(l.TT[2] == Matrix<TypeParam>::unit(3));
  EXPECT_TRUE(l.TT[1] * origin == basis);
  // Nothing has changed since, so the unit matrix is used again.
  l.checkConsistency(true, true);
  EXPECT_EQ(l.TT.MN, 2);
  // The caches follow: coordinates are those of the new origin.
  Vector<TypeParam> x;
  ASSERT_TRUE(l.coordinates(basis[3], x, true));
  EXPECT_TRUE(x == vectorOf<TypeParam>({0, 0, 1}));
}

TEST(ConsistencyOverflow, OriginBeyondTheGateIsRefused) {
  Lattice<dbl_t, dbl_t> l;
  setBasis(l, matrixOf<dbl_t>({{2000000000, 0}, {0, 1}}));
  try {
    l.checkConsistency(true, true);
    FAIL() << "no exception";
  } catch (const FatalPrecisionException&) {
    FAIL() << "fatal";
  } catch (const PrecisionException& e) {
    EXPECT_STREQ(e.what(), "base matrix overflow");
  }
  rows(l).B[1][1] = rows(l).B_save[1][1] = 2e18L;
  rows(l).coordSolver.clear();
  try {
    l.checkConsistency(true, true);
    FAIL() << "no exception";
  } catch (const FatalPrecisionException&) {
    FAIL() << "fatal";
  } catch (const PrecisionException& e) {
    EXPECT_STREQ(e.what(), "base matrix overflow");
  }
}

// Rows that generate all of Z^3, with coefficients of the unit vectors up to 5.5 * 10^14: sums of products do
// not fit the mantissa.
inline Rows scrambledRows() {
  return {{-1131203, 106333120, -113292463}, {-7417863, 697280567, -748082403}, {-19033, 1789102, -1903434}};
}

// A basis that was in order came out as one of another lattice, for the product of transformation and origin
// was rounded.
TEST(ConsistencyOverflow, AProductThatMayBeRoundedIsLeftToExactArithmetic) {
  for (const bool kept : {false, true}) {
    Lattice<dbl_t, dbl_t> l;
    setBasis(l, matrixOf<dbl_t>(scrambledRows()));
    rows(l).B = Matrix<dbl_t>::unit(3);
    for (long i = 1; i <= 3; ++i) ASSERT_TRUE(l.coordinates(l.B[i], rows(l).TT[1][i], true));
    l.params.consistency.set(kept);
    try {
      l.checkConsistency(false, true);
      FAIL() << "no exception";
    } catch (const PrecisionException& e) {
      EXPECT_STREQ(e.what(), "transformation overflow");
    }
    EXPECT_TRUE(l.B == Matrix<dbl_t>::unit(3));
    setProgressDepth(0);
  }
}

TEST(ConsistencyOverflow, SumsBelowTheMantissaAreExact) {
  Lattice<dbl_t, dbl_t> l;
  setBasis(l, matrixOf<dbl_t>({{1, 0}, {0, 1}}));
  l.params.consistency.set(true);
  rows(l).B[1][1] = rows(l).B_save[1][1] = 0x1p62L;
  EXPECT_NO_THROW(l.checkConsistency(false, true));
  rows(l).B[1][1] = rows(l).B_save[1][1] = 0x1p63L;
  EXPECT_THROW(l.checkConsistency(false, true), PrecisionException);
}

// Coordinates that do not fit the type are none that the check could work with.
TEST(ConsistencyOverflow, HugeCoordinatesRestoreTheOrigin) {
  constexpr long q = 30000;
  Lattice<dbl_t, dbl_t> l;
  setBasis(l,
           matrixOf<dbl_t>({{1, q, 0, 0}, {q, q * q + 1, q, 0}, {0, q, q * q + 1, q}, {0, 0, q, q * q + 1}}));
  rows(l).B = Matrix<dbl_t>::unit(4);
  EXPECT_NO_THROW(l.checkConsistency(false, true));
  EXPECT_TRUE(l.B == l.B_save);
  EXPECT_TRUE(l.TT[1] == Matrix<dbl_t>::unit(4));
}

TEST(ConsistencyOverflow, ExactArithmeticHoldsTheProduct) {
  Lattice<QQ, dbl_t> l;
  setBasis(l, matrixOf<QQ>(scrambledRows()));
  rows(l).B = Matrix<QQ>::unit(3);
  l.checkConsistency(false, true);
  EXPECT_TRUE(l.B == Matrix<QQ>::unit(3));
  EXPECT_TRUE(l.TT[1] * l.B_save == l.B);
}

TYPED_TEST(ConsistencyTest, ProgressLineAtVerbosityTwo) {
  auto& l = this->lattice;
  for (const long verb : {0, 1, 2}) {
    l.params.verb.set(verb);
    ::testing::internal::CaptureStdout();
    l.checkConsistency(false, true);
    const std::string text = ::testing::internal::GetCapturedStdout();
    EXPECT_EQ(text, verb == 2 ? "|-> Lattice consistency checking / fixing ...\n" : "");
    EXPECT_EQ(progressDepth(), 0);
  }
}

TYPED_TEST(ConsistencyTest, CoordinatesAgainstEitherBasis) {
  auto& l = this->lattice;
  l.setScale(1, TypeParam(7));
  l.params.consistency.set(true);
  l.lll(1, 0, 0);
  Vector<TypeParam> x;
  const Matrix<TypeParam> U = l.unscaled(l.B);
  ASSERT_TRUE(l.coordinates(U[2] - U[3], x, false));
  EXPECT_TRUE(x == vectorOf<TypeParam>({0, 1, -1}));
  ASSERT_TRUE(l.coordinates(U[2] - U[3], x, false, true));
  EXPECT_TRUE(x * l.B_save == U[2] - U[3]);
  EXPECT_TRUE(l.isMember(l.B_save[1] + l.B_save[2]));
  EXPECT_FALSE(l.isMember(vectorOf<TypeParam>({1, 0, 0})));
}

TYPED_TEST(ConsistencyTest, CacheOfTheBasisFollowsRowOperations) {
  auto& l = this->lattice;
  Vector<TypeParam> x;
  ASSERT_TRUE(l.coordinates(l.B[1], x, false));
  const Vector<TypeParam> first = l.B[1];
  l.swapBase(1, 3, false);
  ASSERT_TRUE(l.coordinates(first, x, false));
  EXPECT_TRUE(x == vectorOf<TypeParam>({0, 0, 1}));
}

TYPED_TEST(ConsistencyTest, TransformationCoordinates) {
  auto& l = this->lattice;
  rows(l).B[2] += l.B[1];
  Vector<TypeParam> x;
  l.transformationCoordinates(l.B_save[2] - l.B_save[3], x, false, false);
  EXPECT_TRUE(x == vectorOf<TypeParam>({0, 1, -1}));
  EXPECT_TRUE(l.TT[1] == Matrix<TypeParam>::unit(3));
  l.transformationCoordinates(l.B_save[1], x, true, false);
  EXPECT_EQ(l.TT[1][2][1], TypeParam(1));
  // The sign by which the inhomogeneous coordinate is positive; zero counts as positive.
  l.transformationCoordinates(-l.B_save[3], x, false, true);
  EXPECT_TRUE(x == vectorOf<TypeParam>({0, 0, 1}));
  l.transformationCoordinates(-l.B_save[1], x, false, true);
  EXPECT_TRUE(x == vectorOf<TypeParam>({-1, 0, 0}));
  const auto expectError = [&](const Vector<TypeParam>& v, bool check) {
    try {
      l.transformationCoordinates(v, x, check, false);
      ADD_FAILURE() << "no exception";
    } catch (const PrecisionException& e) {
      EXPECT_STREQ(e.what(), "transformation coord error");
    }
  };
  expectError(vectorOf<TypeParam>({1, 0, 0}), false);
  rows(l).B[1][1] += TypeParam(1);
  expectError(l.B_save[1], true);
}

TEST(TransformationOverflow, RightHandSideIsChecked) {
  Lattice<dbl_t, dbl_t> l;
  setBasis(l, matrixOf<dbl_t>({{1, 0}, {0, 1}}));
  Vector<dbl_t> x;
  try {
    l.transformationCoordinates(vectorOf<dbl_t>({2000000000, 0}), x, false, false);
    FAIL() << "no exception";
  } catch (const PrecisionException& e) {
    EXPECT_STREQ(e.what(), "rt overflow");
  }
}

TYPED_TEST(ConsistencyTest, NewTransformationAppendsAndWarns) {
  auto& l = this->lattice;
  l.newTransformation(true);
  EXPECT_EQ(l.TT.MN, 1);
  rows(l).TT[1][1][2] = TypeParam(1);
  l.newTransformation(true);
  EXPECT_EQ(l.TT.MN, 2);
  while (l.TT.MN < T_MAT_NBR) l.newTransformation(false);
  ::testing::internal::CaptureStderr();
  l.newTransformation(true);
  EXPECT_EQ(::testing::internal::GetCapturedStderr(), "");
  ::testing::internal::CaptureStderr();
  l.newTransformation(false);
  EXPECT_EQ(::testing::internal::GetCapturedStderr(), "*** TT.MN > T_MAT_NBR\n");
  EXPECT_EQ(l.TT.MN, 21);
  EXPECT_TRUE(l.TT[21] == Matrix<TypeParam>::unit(3));
}

TYPED_TEST(ConsistencyTest, UnimodularIsDecidedExactly) {
  EXPECT_TRUE(isUnimodular(Matrix<TypeParam>::unit(200)));
  Matrix<TypeParam> m = Matrix<TypeParam>::unit(61);
  for (long i = 1; i <= 61; ++i) m[i][i] = TypeParam(2);  // 2^61 is 1 modulo the first prime
  EXPECT_FALSE(isUnimodular(m));
  EXPECT_TRUE(isUnimodular(matrixOf<TypeParam>({{0, 1}, {1, 0}})));
  EXPECT_FALSE(isUnimodular(matrixOf<TypeParam>({{1, 1}, {1, 1}})));
  EXPECT_FALSE(isUnimodular(matrixOf<TypeParam>({{3, 0}, {0, 1}})));
  m = Matrix<TypeParam>::unit(2);
  m[1][2] = TypeParam(1) / TypeParam(2);
  EXPECT_FALSE(isUnimodular(m));  // 1 by value, but not an integer matrix
  // A product of many elementary matrices, whose floating determinant has lost every digit.
  Draws draw(5);
  m = Matrix<TypeParam>::unit(60);
  for (int k = 0; k < 300; ++k) {
    const long i = draw.next(1, 60), j = draw.next(1, 60);
    if (i != j) m[i].addMultiple(TypeParam(draw.next(-1, 1)), m[j]);
  }
  EXPECT_TRUE(isUnimodular(m));
}

}  // namespace latbox::testing
