// The weight map and the rule for a weight or a shift.
#include "lattice/support.h"

#include "lib/exceptions.h"
#include "support/failure.h"

namespace latbox::testing {

template <class T>
class WeightsTest : public ::testing::Test {
 public:
  Lattice<T, dbl_t> lattice;
  void SetUp() override { setBasis(lattice, matrixOf<T>({{1, 2, 1}, {3, 4, 0}, {0, 5, -2}})); }
  void markAll() {
    for (long i = 1; i <= lattice.rank; ++i) setWord(lattice, i, STATUS_GSO);
  }
};
TYPED_TEST_SUITE(WeightsTest, NumberTypes);

TYPED_TEST(WeightsTest, MapIsScaleThenShareOfTheTranslation) {
  auto& l = this->lattice;
  l.setScale(1, TypeParam(10));
  l.setScale(3, TypeParam(7));
  l.setTranslation(2, TypeParam(100));
  // The shift goes with the inhomogeneous coordinate: once, not at all, and minus twice.
  EXPECT_TRUE(l.B == matrixOf<TypeParam>({{10, 102, 7}, {30, 4, 0}, {0, -195, -14}}));
  EXPECT_TRUE(l.unscaled(l.B) == l.B_save);
  EXPECT_TRUE(l.rescaled(l.B_save) == l.B);
  EXPECT_EQ(l.inhomScaled, TypeParam(7));
  EXPECT_FALSE(l.unweighted());
}

TYPED_TEST(WeightsTest, VectorsMapInPlace) {
  auto& l = this->lattice;
  l.setScale(1, TypeParam(-4));
  l.setTranslation(1, TypeParam(3));
  Vector<TypeParam> v = vectorOf<TypeParam>({2, 5, 2});
  l.rescaledVector(v, v);
  EXPECT_TRUE(v == vectorOf<TypeParam>({-2, 5, 2}));
  l.unscaledVector(v, v);
  EXPECT_TRUE(v == vectorOf<TypeParam>({2, 5, 2}));
}

TYPED_TEST(WeightsTest, SameWeightChangesNothing) {
  this->markAll();
  this->lattice.setScale(2, TypeParam(1));
  for (long i = 1; i <= 3; ++i) EXPECT_EQ(this->lattice.status[i], STATUS_GSO);
}

TYPED_TEST(WeightsTest, ChangeOfWeightVoidsTheStatus) {
  this->markAll();
  setWord(this->lattice, 2, STATUS_DEPENDENT);
  this->lattice.setScale(2, TypeParam(2));
  for (long i = 1; i <= 3; ++i) EXPECT_EQ(this->lattice.status[i], 0);
  this->markAll();
  this->lattice.setTranslation(1, TypeParam(2));
  for (long i = 1; i <= 3; ++i) EXPECT_EQ(this->lattice.status[i], 0);
}

// The rows do not fit the number type under the new weight: nothing has changed then, the marks included.
TEST(WeightsOverflow, AWeightThatDoesNotFitChangesNothing) {
  Lattice<dbl_t, dbl_t> l;
  setBasis(l, matrixOf<dbl_t>({{1, 2000, 3}, {0, 1, 1}}));
  const Matrix<dbl_t> before = l.B;
  l.updateGso(1, 0);
  EXPECT_THROW(l.setScale(2, 1e9L), PrecisionException);
  EXPECT_EQ(l.scaleFactor[2], 1);
  EXPECT_TRUE(l.B == before);
  EXPECT_EQ(l.status[1], STATUS_GSO);
  EXPECT_THROW(l.setTranslation(1, 1e9L), PrecisionException);
  EXPECT_TRUE(l.unweighted());
}

TYPED_TEST(WeightsTest, FirstTranslationBringsTheZeros) {
  EXPECT_EQ(this->lattice.translation.MN, 0);
  this->lattice.setTranslation(2, TypeParam(5));
  EXPECT_TRUE(this->lattice.translation == vectorOf<TypeParam>({0, 5, 0}));
}

TYPED_TEST(WeightsTest, InhomogeneousCoordinateIsNotTranslated) {
  EXPECT_FAILURE(this->lattice.setTranslation(3, TypeParam(1)),
                 "The inhomogenous component can not get translated!");
}

TYPED_TEST(WeightsTest, OriginAndTransformationsStay) {
  auto& l = this->lattice;
  const Matrix<TypeParam> saved = l.B_save;
  l.setScale(1, TypeParam(9));
  EXPECT_TRUE(l.B_save == saved);
  EXPECT_TRUE(l.TT[1] == Matrix<TypeParam>::unit(3));
}

TYPED_TEST(WeightsTest, ScratchRowSurvivesAWeight) {
  rows(this->lattice).B[0] = vectorOf<TypeParam>({7, 7, 7});
  this->lattice.setScale(1, TypeParam(9));
  EXPECT_EQ(this->lattice.B[0][1], TypeParam(7));
}

TYPED_TEST(WeightsTest, ResetPutsWeightsAndLimitBack) {
  auto& l = this->lattice;
  l.setScale(1, TypeParam(10));
  l.setScale(3, TypeParam(3));
  l.setTranslation(2, TypeParam(4));
  l.stepAverage[1] = TypeParam(5);
  l.stepCount[1] = 2;
  l.search.scaleLimit = TypeParam(5000);
  l.resetScales(true, false);
  EXPECT_TRUE(l.scaleFactor == vectorOf<TypeParam>({1, 1, 1}));
  EXPECT_EQ(l.inhomScaled, l.inhomBase);
  EXPECT_EQ(l.stepAverage[1], TypeParam(0));
  EXPECT_EQ(l.stepCount[1], 0);
  EXPECT_EQ(l.search.scaleLimit, TypeParam(1000));
  EXPECT_EQ(l.translation[2], TypeParam(4));
  EXPECT_EQ(l.B[1][2], TypeParam(6));
  l.setScale(1, TypeParam(2));
  l.resetScales(false, true);
  EXPECT_EQ(l.translation.MN, 0);
  EXPECT_EQ(l.scaleFactor[1], TypeParam(2));
  l.resetScales(true, true);
  EXPECT_TRUE(l.B == l.B_save);
  EXPECT_TRUE(l.unweighted());
}

TYPED_TEST(WeightsTest, ResetVoidsTheStatus) {
  this->markAll();
  this->lattice.resetScales(false, false);
  for (long i = 1; i <= 3; ++i) EXPECT_EQ(this->lattice.status[i], 0);
}

TYPED_TEST(WeightsTest, NegativeWeightIsAWeight) {
  this->lattice.setScale(2, TypeParam(-3));
  EXPECT_EQ(this->lattice.B[2][2], TypeParam(-12));
  EXPECT_TRUE(this->lattice.unscaled(this->lattice.B) == this->lattice.B_save);
}

TEST(WeightsOverflow, WeightBeyondTheGateThrows) {
  Lattice<dbl_t, dbl_t> l;
  setBasis(l, matrixOf<dbl_t>({{1, 20000}, {0, 1}}));
  EXPECT_THROW(l.setScale(2, dbl_t(100000)), PrecisionException);
}

}  // namespace latbox::testing
