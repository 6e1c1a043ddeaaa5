// Re-insertion of remembered vectors.
#include "heuristics/reinsertion.h"
#include "driver/ladder.h"

#include <string>

#include "driver/reinsert.h"
#include "lattice/support.h"
#include "lib/exceptions.h"
#include "lib/progress.h"
#include "params/statistics.h"

namespace latbox::testing {

template <class T>
class ReinsertionTest : public ::testing::Test {
 public:
  Lattice<T, dbl_t> lattice;

  ReinsertionTest() { reset(); }
  ~ReinsertionTest() override { reset(); }

  void basis(const Rows& rows) {
    setBasis(lattice, matrixOf<T>(rows));
    lattice.params.verb.set(2);
  }
  void insert(const std::vector<long>& v) { insertVector(lattice, vectorOf<T>(v)); }
  void expectBasis(const Rows& rows) { EXPECT_TRUE(lattice.B == matrixOf<T>(rows)) << lattice.B; }
  void remember(const std::vector<long>& v) {
    TargetVector<T> solution;
    solution = vectorOf<T>(v);
    lattice.solutions.append(solution);
  }
  std::string reinserted() {
    ::testing::internal::CaptureStdout();
    reinsertBest(lattice);
    return ::testing::internal::GetCapturedStdout();
  }

 private:
  static void reset() { statisticsOf<T>() = Statistics(); }
};
TYPED_TEST_SUITE(ReinsertionTest, NumberTypes);

TYPED_TEST(ReinsertionTest, MultipleOfTheOnlyVectorChangesNothing) {
  this->basis({{2, 3, 1}});
  this->insert({4, 6, 2});
  this->expectBasis({{2, 3, 1}});
}

TYPED_TEST(ReinsertionTest, VectorThatIsNoneOfTheLatticeChangesNothing) {
  this->basis({{2, 0, 0}, {9, 5, 0}});
  this->insert({1, 0, 0});
  this->insert({0, 0, 1});
  this->expectBasis({{2, 0, 0}, {9, 5, 0}});
}

TYPED_TEST(ReinsertionTest, BasisVectorAndZeroChangeNothing) {
  this->basis({{2, 0, 0}, {9, 5, 0}});
  this->lattice.updateGso(1, 0);
  const short before = this->lattice.status[2];
  this->insert({9, 5, 0});
  this->insert({-2, 0, 0});
  this->insert({0, 0, 0});
  this->expectBasis({{2, 0, 0}, {9, 5, 0}});
  EXPECT_EQ(this->lattice.status[2], before);
}

TYPED_TEST(ReinsertionTest, ShorterVectorWithNoGreaterOrthogonalPartTakesThePosition) {
  this->basis({{1, 0, 0}, {7, 5, 0}, {0, 0, 9}});
  this->insert({0, 5, 0});
  this->expectBasis({{1, 0, 0}, {0, 5, 0}, {0, 0, 9}});
  EXPECT_EQ(statisticsOf<TypeParam>().basisSubstitutionsNontrivial, 1);
}

TYPED_TEST(ReinsertionTest, VectorAsLongWithASmallerOrthogonalPartTakesThePosition) {
  // As long as the second vector, and orthogonal to the first with 25 of its 74.
  this->basis({{1, 0, 0}, {7, 5, 0}, {0, 0, 9}});
  this->insert({-7, 5, 0});
  this->expectBasis({{1, 0, 0}, {-7, 5, 0}, {0, 0, 9}});
}

TYPED_TEST(ReinsertionTest, FirstLongerVectorIsTheFallback) {
  // Shorter than the second vector alone, but with the greater orthogonal part there.
  this->basis({{1, 0, 0}, {10, 1, 0}, {0, 0, 5}});
  this->insert({0, 1, 5});
  this->expectBasis({{1, 0, 0}, {0, 1, 5}, {10, 1, 0}});
}

TYPED_TEST(ReinsertionTest, SumOfTwoBasisVectorsIsNoTrivialOne) {
  this->basis({{1, 0, 0}, {1, 5, 0}, {0, 0, 9}});
  this->insert({0, 5, 0});
  this->expectBasis({{1, 0, 0}, {0, 5, 0}, {0, 0, 9}});
}

TYPED_TEST(ReinsertionTest, FirstOfTwoFallbacksIsTaken) {
  // The third vector is longer too, and its orthogonal part the smaller as well.
  this->basis({{1, 0, 0, 0}, {10, 1, 0, 0}, {11, 0, 1, 0}, {0, 0, 0, 5}});
  this->insert({0, 1, 1, 5});
  this->expectBasis({{1, 0, 0, 0}, {0, 1, 1, 5}, {10, 1, 0, 0}, {11, 0, 1, 0}});
}

TYPED_TEST(ReinsertionTest, VectorLongerThanAllChangesNothing) {
  this->basis({{1, 0, 0}, {0, 5, 0}, {0, 0, 9}});
  this->insert({0, 5, 9});
  this->expectBasis({{1, 0, 0}, {0, 5, 0}, {0, 0, 9}});
}

TYPED_TEST(ReinsertionTest, GeneralCombinationGivesTheSameLattice) {
  // No coefficient is a unit: 2 b1 + 3 b2 is far shorter than either.
  this->basis({{300, 1, 0}, {-200, 0, 1}});
  this->insert({0, 2, 3});
  EXPECT_EQ(abs(this->lattice.B[1][2]), TypeParam(2));
  EXPECT_EQ(gramDeterminant(exact(this->lattice.B)), gramDeterminant(exact(this->lattice.B_save)));
  for (long i = 1; i <= 2; ++i) EXPECT_TRUE(this->lattice.isMember(this->lattice.B[i]));
  EXPECT_EQ(statisticsOf<TypeParam>().nontrivialBasisExtensions, 1);
}

// The first two vectors are nearly parallel, so that the cheap orthogonalisation takes them for dependent and
// knows nothing of the third.
TYPED_TEST(ReinsertionTest, StableOrthogonalisationWhereTheCheapOneFails) {
  Draws draw(1);
  bool tried = false;
  for (int i = 0; i < 1000 && !tried; ++i) {
    const long x = draw.next(300000000, 400000000), y = draw.next(300000000, 400000000);
    // One step aside of a third of the length along the first.
    const Rows rows{{x, y, 0}, {x / 3 + draw.next(-1, 1), y / 3 + draw.next(-1, 1), 0}, {x, y, 900000000}};
    this->basis(rows);
    if (this->lattice.updateGso(1, 0)) continue;
    if (this->lattice.gsoByReduced(1, 0, false) != 0) continue;
    tried = true;
    this->basis(rows);  // without what has been computed
    this->insert({0, 0, 900000000});
    this->expectBasis({rows[0], rows[1], {0, 0, 900000000}});
  }
  EXPECT_TRUE(tried);
}

TYPED_TEST(ReinsertionTest, CoordinatesAreTakenInUnitAndLengthsInWeightedCoordinates) {
  this->basis({{1, 0, 0}, {7, 5, 0}, {0, 0, 9}});
  this->lattice.setScale(2, TypeParam(100));
  this->insert({0, 500, 0});
  this->expectBasis({{1, 0, 0}, {0, 500, 0}, {0, 0, 9}});
  this->insert({0, 5, 0});  // not the weighted form of a lattice vector
  this->expectBasis({{1, 0, 0}, {0, 500, 0}, {0, 0, 9}});
}

// A hundredfold of its second coordinate would be another vector of the lattice.
TYPED_TEST(ReinsertionTest, WeightsAreTakenOffOnce) {
  this->basis({{1, 0, 0}, {70, 5, 0}, {0, 0, 9}});
  this->lattice.setScale(2, TypeParam(100));
  this->insert({0, 500, 9});
  this->expectBasis({{1, 0, 0}, {0, 500, 9}, {70, 500, 0}});
}

TYPED_TEST(ReinsertionTest, CoordinatesAreThoseInTheBasisAsItStands) {
  this->basis({{1, 0, 0}, {0, 0, 9}, {7, 5, 0}});
  this->lattice.swapBase(2, 3, false);
  this->insert({0, 5, 0});
  this->expectBasis({{1, 0, 0}, {0, 5, 0}, {0, 0, 9}});
}

TYPED_TEST(ReinsertionTest, TransformationStaysInStep) {
  this->basis({{300, 1, 0}, {-200, 0, 1}});
  this->lattice.params.consistency.set(true);
  this->insert({0, 2, 3});
  EXPECT_TRUE(this->lattice.TT[this->lattice.TT.MN] * this->lattice.B_save == this->lattice.B);
}

TYPED_TEST(ReinsertionTest, SolutionsComeInTurnAndWrap) {
  this->basis({{1, 0, 0}, {7, 5, 0}, {40, 0, 9}});
  statisticsOf<TypeParam>().solutionsFound = 1;
  this->remember({0, 5, 0});
  this->remember({40, 0, 9});
  this->remember({0, 0, 9});
  EXPECT_EQ(this->reinserted(), "|-> Inserting solution vector (1) ...\n");
  this->expectBasis({{1, 0, 0}, {0, 5, 0}, {40, 0, 9}});
  EXPECT_EQ(this->reinserted(), "|-> Inserting solution vector (2) ...\n");
  EXPECT_EQ(this->reinserted(), "|-> Inserting solution vector (3) ...\n");
  this->expectBasis({{1, 0, 0}, {0, 5, 0}, {0, 0, 9}});
  EXPECT_EQ(this->reinserted(), "|-> Inserting solution vector (1) ...\n");
  EXPECT_EQ(progressDepth(), 0);
}

// A change of precision neither resets the turn nor shares it, and a step that is taken back keeps it.
TEST(ReinsertionTurn, EachNumberTypeHasItsOwn) {
  YLattice<dbl_t> y;
  setBasis(y.standard, matrixOf<dbl_t>({{1, 0}, {0, 1}}));
  y.standard.search.reinsertIndex = 2;
  y.extended.search.reinsertIndex = 5;
  switchToExtended(y);
  EXPECT_EQ(y.extended.search.reinsertIndex, 5);
  useStandardPrecision(y);
  EXPECT_EQ(y.standard.search.reinsertIndex, 2);
  y.standardBackup = y.standard;
  y.standard.search.reinsertIndex = 3;
  y.standard = y.standardBackup;
  EXPECT_EQ(y.standard.search.reinsertIndex, 3);
}

TYPED_TEST(ReinsertionTest, RememberedVectorsAreWeighted) {
  this->basis({{1, 0, 0}, {7, 5, 0}, {40, 0, 9}});
  this->lattice.setScale(2, TypeParam(3));
  statisticsOf<TypeParam>().solutionsFound = 1;
  this->remember({0, 5, 0});
  this->reinserted();
  this->expectBasis({{1, 0, 0}, {0, 15, 0}, {40, 0, 9}});
}

TYPED_TEST(ReinsertionTest, TotalsChooseAndNotWhatIsStored) {
  this->basis({{1, 0, 0}, {7, 5, 0}, {40, 0, 9}});
  Statistics& totals = statisticsOf<TypeParam>();
  this->lattice.bestSlack = vectorOf<TypeParam>({0, 5, 0});
  this->lattice.bestInhomogeneous = vectorOf<TypeParam>({0, 0, 9});
  EXPECT_EQ(this->reinserted(), "");
  totals.inhomogeneousImprovements = 1;
  totals.targetImprovements = 1;
  totals.solutionsFound = 1;
  EXPECT_EQ(this->reinserted(), "");  // solutions were found, but none is stored
  totals.solutionsFound = 0;
  EXPECT_EQ(this->reinserted(), "|-> Inserting best slack vector ... \n");
  this->expectBasis({{1, 0, 0}, {0, 5, 0}, {40, 0, 9}});
  this->lattice.bestSlack.clear();
  EXPECT_EQ(this->reinserted(), "");
  totals.targetImprovements = 0;
  EXPECT_EQ(this->reinserted(), "|-> Inserting best inhomogenous vector ... \n");
  this->expectBasis({{1, 0, 0}, {0, 5, 0}, {0, 0, 9}});
  this->lattice.bestInhomogeneous.clear();
  EXPECT_EQ(this->reinserted(), "");
}

TYPED_TEST(ReinsertionTest, SilentBelowVerbosityTwo) {
  this->basis({{1, 0, 0}, {7, 5, 0}, {40, 0, 9}});
  this->lattice.params.verb.set(1);
  statisticsOf<TypeParam>().solutionsFound = 1;
  this->remember({0, 5, 0});
  EXPECT_EQ(this->reinserted(), "");
  this->expectBasis({{1, 0, 0}, {0, 5, 0}, {40, 0, 9}});
}

// The sum of the rows is shorter than the third, but the way to it leaves the range of standard precision.
class ReinsertLadder : public ::testing::Test {
 protected:
  ReinsertLadder() {
    statisticsStandard() = Statistics();
    setBasis(y_.standard, matrixOf<dbl_t>({{600000000, 0, 0}, {-600000000, 1, 0}, {600000000, -1, 7}}));
    y_.standard.params.verb.set(0);
    TargetVector<dbl_t> solution;
    solution = vectorOf<dbl_t>({600000000, 0, 7});
    y_.standard.solutions.append(solution);
    statisticsStandard().solutionsFound = 1;
  }
  ~ReinsertLadder() override { statisticsStandard() = statisticsExtended() = Statistics(); }

  YLattice<dbl_t> y_;
};

TEST_F(ReinsertLadder, LossOfPrecisionIsRepeatedExactly) {
  EXPECT_THROW(reinsertBest(y_.standard), PrecisionException);
  rows(y_.standard).B = y_.standard.B_save;
  y_.standard.clearStatus();
  y_.standard.search.reinsertIndex = 0;
  reinsert(y_);
  EXPECT_FALSE(y_.extendedActive);
  EXPECT_TRUE(y_.standard.B == matrixOf<dbl_t>({{600000000, 0, 0}, {-600000000, 1, 0}, {600000000, 0, 7}}));
  EXPECT_EQ(statisticsStandard().basisSubstitutionsNontrivial, 1);
}

// The step that lost precision had opened a level.
TEST_F(ReinsertLadder, LevelsOfTheLostStepAreClosed) {
  y_.standard.params.verb.set(2);
  ::testing::internal::CaptureStdout();
  reinsert(y_);
  EXPECT_EQ(::testing::internal::GetCapturedStdout(),
            "|-> Inserting solution vector (1) ...\n"
            "|-> Switching to extended precision\n"
            "|-> Inserting solution vector (1) ...\n"
            "|-> Using standard precision\n");
  EXPECT_EQ(progressDepth(), 0);
}

// The row operation that lost precision left the transformation behind the basis.
TEST_F(ReinsertLadder, HalfAStepIsTakenBack) {
  y_.standard.params.consistency.set(true);
  reinsert(y_);
  EXPECT_FALSE(y_.extendedActive);
  EXPECT_EQ(y_.standard.B[3][2], 0);
  EXPECT_TRUE(y_.standard.TT[1] * y_.standard.B_save == y_.standard.B);
}

TEST_F(ReinsertLadder, StepBackIsTriedAndItsFailureToldToTheCaller) {
  switchToExtended(y_);
  y_.extended.R = QQ(1) / QQ(3);
  EXPECT_THROW(reinsert(y_), PrecisionException);
  EXPECT_TRUE(y_.extendedActive);
  EXPECT_TRUE(y_.extended.B == matrixOf<QQ>({{600000000, 0, 0}, {-600000000, 1, 0}, {600000000, 0, 7}}));
}

TEST_F(ReinsertLadder, ExactSideComesBackWhenItCan) {
  switchToExtended(y_);
  reinsert(y_);
  EXPECT_FALSE(y_.extendedActive);
  EXPECT_EQ(y_.standard.B[3][2], 0);
}

}  // namespace latbox::testing
