// The way between the precisions.
#include "lattice/support.h"

#include <limits>

#include "lib/exceptions.h"

namespace latbox::testing {

class ConvertTest : public ::testing::Test {
 public:
  Lattice<dbl_t, dbl_t> standard, back;
  Lattice<QQ, dbl_t> extended;

  void SetUp() override {
    setBasis(standard, matrixOf<dbl_t>(knapsackRows(5, 1000, 2)));
    standard.lll(1, 3, 3);
  }
  void expectLost() {
    try {
      back.convertFrom(extended);
      FAIL() << "no exception";
    } catch (const PrecisionException& e) {
      EXPECT_STREQ(e.what(), "Precision lost during conversion");
    }
  }
};

TEST_F(ConvertTest, EveryMemberCrossesBothWays) {
  standard.setScale(2, 3);
  standard.setTranslation(1, 0.5L);
  standard.stepAverage[1] = 0.25L;
  standard.stepCount[1] = 4;
  standard.savedSeconds = 77;
  standard.latFile = "a.lat";
  standard.R = 12;
  standard.lbnd[1] = -infinity<dbl_t>();
  standard.lbndSaved = standard.lbnd;
  standard.symmetricBounds = true;
  standard.normBound = infinity<dbl_t>();
  standard.generatedTu = true;
  standard.generatedLx = vectorOf<dbl_t>({1, 2});
  standard.generatedRx = vectorOf<dbl_t>({3, 4});
  standard.generatedLrtu = SerializablePair<dbl_t, dbl_t>(-7, infinity<dbl_t>());
  standard.c = vectorOf<dbl_t>({1, 1, 2, 3, 5, 8});
  standard.setBlended(true);
  standard.enumBound = 6.5L;
  standard.params.beta.set(9);
  standard.mainVars[MainMutexVariable::inputLoaded].set("here");
  standard.interval_tt = 250;
  standard.updateGso(1, 2);
  HeuristicVector<dbl_t, dbl_t> h(vectorOf<dbl_t>({1, 2, 3, 4, 5, 6}));
  h.secondsUntilDiscovered = 5;
  h.deviation.kind = KIND_INHOMOGENEOUS;
  h.deviation.tn = 1.5L;
  h.targetNorm = 8;
  h.combinedTarget = 3;
  standard.bestSlack = h;
  standard.bestInhomogeneous = h;
  standard.inhomogeneousVectors.limit = 6;
  standard.inhomogeneousVectors.append(h);
  standard.solutions.append(TargetVector<dbl_t>(vectorOf<dbl_t>({1, 0, 0, 0, 0, 1})));
  standard.solutions[1].slackNorm = 2;

  extended.convertFrom(standard);
  back.convertFrom(extended);

  EXPECT_TRUE(extended.B == exact(standard.B));
  EXPECT_TRUE(back.B == standard.B);
  EXPECT_TRUE(back.B_save == standard.B_save);
  EXPECT_TRUE(back.TT[1] == standard.TT[1]);
  EXPECT_TRUE(back.mu == standard.mu);
  EXPECT_TRUE(back.bstarSq == standard.bstarSq);
  EXPECT_EQ(back.status[1], standard.status[1]);
  EXPECT_EQ(back.bNormSq[2], standard.B[2] * standard.B[2]);
  EXPECT_TRUE(back.scaleFactor == standard.scaleFactor);
  EXPECT_TRUE(back.translation == standard.translation);
  EXPECT_EQ(back.stepAverage[1], 0.25L);
  EXPECT_EQ(back.stepCount[1], 4);
  EXPECT_EQ(back.inhomScaled, standard.inhomScaled);
  EXPECT_EQ(back.savedSeconds, 77);
  EXPECT_EQ(back.latFile, "a.lat");
  EXPECT_EQ(back.R, 12);
  EXPECT_EQ(back.lbnd[1], -infinity<dbl_t>());
  EXPECT_TRUE(back.lbndSaved == standard.lbndSaved);
  EXPECT_TRUE(back.symmetricBounds);
  EXPECT_TRUE(back.generatedTu);
  EXPECT_TRUE(back.generatedLx == standard.generatedLx);
  EXPECT_TRUE(back.generatedRx == standard.generatedRx);
  EXPECT_EQ(back.generatedLrtu.left, -7);
  EXPECT_EQ(back.generatedLrtu.right, infinity<dbl_t>());
  EXPECT_TRUE(back.c == standard.c);
  EXPECT_TRUE(back.blended);
  EXPECT_EQ(back.enumBound, 6.5L);
  EXPECT_EQ(back.checkMode, CHECK_MODE_FINAL);
  EXPECT_EQ(back.normBound, infinity<dbl_t>());
  EXPECT_EQ(back.params.beta.get(), 9);
  EXPECT_EQ(back.mainVars[MainMutexVariable::inputLoaded].get(), "here");
  EXPECT_EQ(back.interval_tt, 250);
  EXPECT_TRUE(back.bestSlack == h);
  EXPECT_EQ(back.bestSlack.secondsUntilDiscovered, 5);
  EXPECT_EQ(back.bestSlack.targetNorm, 8);
  EXPECT_EQ(back.bestSlack.slackNorm, infinity<dbl_t>());
  EXPECT_EQ(back.bestSlack.combinedTarget, 3);
  EXPECT_EQ(back.bestInhomogeneous.deviation.tn, 1.5L);
  EXPECT_EQ(back.inhomogeneousVectors.count, 1);
  EXPECT_EQ(back.inhomogeneousVectors.limit, 6);
  EXPECT_EQ(back.inhomogeneousVectors.head->value.deviation.kind, 2);
  ASSERT_EQ(back.solutions.MN, 1);
  EXPECT_EQ(back.solutions[1].slackNorm, 2);
  // And the reduction goes on as it would have.
  standard.lll(1, 0, 0);
  back.lll(1, 0, 0);
  EXPECT_TRUE(back.B == standard.B);
}

TEST_F(ConvertTest, AThirdKeepsTheRunInExtendedPrecision) {
  extended.convertFrom(standard);
  rows(extended).B[1][1] = QQ(1) / QQ(3);
  expectLost();
}

TEST_F(ConvertTest, AThirdInAKeptVectorToo) {
  extended.convertFrom(standard);
  extended.solutions.append(TargetVector<QQ>(vectorOf<QQ>({1, 0})));
  extended.solutions[1][1] = QQ(1) / QQ(3);
  expectLost();
}

// The way up shows 17 digits; what it would change of a find is refused.
TEST_F(ConvertTest, KeptVectorsCrossUpUnchangedOrNotAtAll) {
  const auto lost = [](dbl_t HeuristicVector<dbl_t, dbl_t>::*norm, dbl_t entry, dbl_t value) {
    Lattice<dbl_t, dbl_t> source;
    setBasis(source, matrixOf<dbl_t>({{1, 0}, {0, 1}}));
    source.bestSlack = HeuristicVector<dbl_t, dbl_t>(vectorOf<dbl_t>({1, 1}));
    source.bestSlack[1] = entry;
    source.bestSlack.*norm = value;
    Lattice<QQ, dbl_t> target;
    try {
      target.convertFrom(source);
      return std::string();
    } catch (const PrecisionException& e) {
      return std::string(e.what());
    }
  };
  using Kept = HeuristicVector<dbl_t, dbl_t>;
  const dbl_t tooLong = 1234567890123456789.0L;
  EXPECT_EQ(lost(&Kept::targetNorm, 1, 1.0L / 3), "");
  EXPECT_EQ(lost(&Kept::targetNorm, tooLong, 1), "Precision lost during conversion");
  EXPECT_EQ(lost(&Kept::targetNorm, 1, tooLong), "Precision lost during conversion");
  EXPECT_EQ(lost(&Kept::slackNorm, 1, tooLong), "Precision lost during conversion");
}

TEST_F(ConvertTest, ASolutionCrossesUpUnchangedOrNotAtAll) {
  standard.solutions.append(TargetVector<dbl_t>(vectorOf<dbl_t>({1, 0, 0, 0, 0, 1})));
  for (dbl_t* norm : {&standard.solutions[1].targetNorm, &standard.solutions[1].slackNorm}) {
    const dbl_t before = *norm;
    *norm = 1234567890123456789.0L;
    EXPECT_THROW(extended.convertFrom(standard), PrecisionException);
    *norm = before;
  }
  EXPECT_NO_THROW(extended.convertFrom(standard));
}

TEST_F(ConvertTest, ValuesThatCanBeComputedAgainAreNoReasonToStay) {
  extended.convertFrom(standard);
  extended.updateGso(1, 0);
  extended.bNormSq[1] = QQ(1) / QQ(3);
  extended.normBound = QQ(1) / QQ(3);
  extended.enumCoeffs[1] = QQ(1) / QQ(3);
  extended.stages[1].u = QQ(1) / QQ(3);
  back.convertFrom(extended);
  EXPECT_EQ(back.bNormSq[1], back.B[1] * back.B[1]);
  EXPECT_EQ(back.enumCoeffs[1], 0);
}

TEST_F(ConvertTest, CachesOfTheBasisBeforeGo) {
  setBasis(back, matrixOf<dbl_t>({{2, 0, 0, 0, 0, 0}}));
  Vector<dbl_t> x;
  EXPECT_TRUE(back.isMember(back.B[1]));
  EXPECT_TRUE(back.coordinates(back.B[1], x, false));
  extended.convertFrom(standard);
  back.convertFrom(extended);
  EXPECT_TRUE(back.isMember(back.B[1]));
  ASSERT_TRUE(back.coordinates(back.B[2], x, false));
  EXPECT_TRUE(x == vectorOf<dbl_t>({0, 1, 0, 0, 0}));
}

TEST_F(ConvertTest, FactorisationsAreMadeAgain) {
  standard.gsoByFull(1, 0, true);
  extended.convertFrom(standard);
  EXPECT_EQ(extended.status[1] & STATUS_FULL, STATUS_GSO);
  EXPECT_EQ(extended.gsoByFull(1, 0, true), 0);
}

}  // namespace latbox::testing
