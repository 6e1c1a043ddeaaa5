// Trimming: the steps of a weight, and the metric bent towards feasibility.
#include <cstdlib>

#include "heuristics/scale_steps.h"
#include "heuristics/trimming.h"
#include "lattice/support.h"
#include "lib/exceptions.h"
#include "lib/progress.h"
#include "params/statistics.h"
#include "program/memory.h"
#include "support/failure.h"
#include "support/lattice.h"

namespace latbox::testing {

template <class T>
class Trimming : public ::testing::Test {
 public:
  using L = Lattice<T, dbl_t>;
  L lattice;

  void SetUp() override {
    std::srand(42);
    setProgressDepth(0);
    setBasis(lattice, matrixOf<T>({{1, 2, 0}, {3, 4, 1}}));
    lattice.params.verb.set(0);
  }

  T weight(long p) const { return lattice.scaleFactor[p]; }
  T magnitude(long p) const { return abs(lattice.scaleFactor[p]); }
  // All weights; the basis keeps its unit coordinates.
  void weights(const std::vector<long>& values) {
    for (std::size_t i = 0; i < values.size(); ++i) lattice.setScale(static_cast<long>(i + 1), T(values[i]));
  }
  std::string trimmed(L& l, long verb = 2) {
    l.params.verb.set(verb);
    ::testing::internal::CaptureStdout();
    trim(l, nullptr);
    return ::testing::internal::GetCapturedStdout();
  }
  static long occurrences(const std::string& text, const std::string& piece) {
    long count = 0;
    for (auto at = text.find(piece); at != std::string::npos; at = text.find(piece, at + 1)) ++count;
    return count;
  }
  // The rows are vectors of the lattice as generated, and generate all of it.
  static void expectSameLattice(L& l) {
    const Matrix<T> U = l.unscaled(l.B);
    for (long i = 1; i <= l.rank; ++i) EXPECT_TRUE(l.isMember(U[i]));
    EXPECT_EQ(gramDeterminant(exact(U)), gramDeterminant(exact(l.B_save)));
  }
};
TYPED_TEST_SUITE(Trimming, NumberTypes);

TYPED_TEST(Trimming, SignIsDrawn) {
  using T = TypeParam;
  int negative = 0;
  for (int k = 0; k < 100; ++k) {
    const T x = randomSign(T(7));
    EXPECT_EQ(abs(x), T(7));
    if (x < T(0)) ++negative;
  }
  EXPECT_GT(negative, 20);
  EXPECT_LT(negative, 80);
}

TYPED_TEST(Trimming, OneDrawPerSign) {
  using T = TypeParam;
  std::srand(5);
  randomSign(T(1));
  const int next = std::rand();
  std::srand(5);
  std::rand();
  EXPECT_EQ(std::rand(), next);
}

TYPED_TEST(Trimming, MeanOfTheSteps) {
  using T = TypeParam;
  this->lattice.noteStep(2, T(1));
  this->lattice.noteStep(2, T(2));
  this->lattice.noteStep(2, T(-9));
  EXPECT_EQ(this->lattice.stepAverage[2], T(-2));
  EXPECT_EQ(this->lattice.stepCount[2], 3);
  EXPECT_EQ(this->lattice.stepCount[1], 0);
}

TYPED_TEST(Trimming, ZeroStepFails) {
  EXPECT_FAILURE(scaleStep(this->lattice, 1, TypeParam(0)), "zero step inconsistency");
}

TYPED_TEST(Trimming, StepMovesTheWeightAwayFromZero) {
  using T = TypeParam;
  const Matrix<T> unit = this->lattice.unscaled(this->lattice.B);
  scaleStep(this->lattice, 1, T(1));
  EXPECT_EQ(this->magnitude(1), T(2));
  EXPECT_EQ(this->lattice.stepAverage[1], T(1));
  EXPECT_EQ(this->lattice.stepCount[1], 1);
  this->weights({-1, 1, 1});
  scaleStep(this->lattice, 1, T(1));
  EXPECT_EQ(this->magnitude(1), T(2));
  EXPECT_EQ(this->lattice.stepAverage[1], T(0));  // the step was -1
  EXPECT_TRUE(this->lattice.unscaled(this->lattice.B) == unit);
  EXPECT_TRUE(this->lattice.B_save == unit);
}

TYPED_TEST(Trimming, WeightIsNeverZero) {
  using T = TypeParam;
  scaleStep(this->lattice, 1, T(-1));
  EXPECT_EQ(this->magnitude(1), T(1));
  EXPECT_EQ(this->lattice.stepAverage[1], T(-2));
  this->weights({-1, 1, 1});
  scaleStep(this->lattice, 1, T(-1));  // outward of -1 that is +1
  EXPECT_EQ(this->magnitude(1), T(1));
  EXPECT_EQ(this->lattice.stepAverage[1], T(0));  // -2 and 2
}

TYPED_TEST(Trimming, SteppedWeightTakesADrawnSign) {
  using T = TypeParam;
  for (unsigned seed = 1; seed <= 20; ++seed) {
    std::srand(seed);
    const T sign = randomSign(T(1));
    this->weights({1, 1, 1});
    std::srand(seed);
    scaleStep(this->lattice, 3, T(1));
    EXPECT_EQ(this->weight(3), sign * T(2));
    EXPECT_EQ(this->lattice.inhomScaled, sign * T(2));
  }
}

TYPED_TEST(Trimming, StepIsCutToTheLimit) {
  using T = TypeParam;
  this->weights({990, 1, 1});
  scaleStep(this->lattice, 1, T(50));
  EXPECT_EQ(this->magnitude(1), T(1000));
  EXPECT_EQ(this->lattice.stepAverage[1], T(10));
  EXPECT_EQ(this->lattice.search.scaleLimit, T(1000));
  this->weights({-990, 1, 1});
  scaleStep(this->lattice, 1, T(50));
  EXPECT_EQ(this->magnitude(1), T(1000));
  EXPECT_EQ(this->lattice.stepAverage[1], T(0));
}

TYPED_TEST(Trimming, AtTheLimitTheOthersFall) {
  using T = TypeParam;
  for (const long sign : {1, -1}) {
    this->weights({3, sign * 1000, 2});
    scaleStep(this->lattice, 2, T(1));
    EXPECT_EQ(this->weight(1), T(2));
    EXPECT_EQ(this->weight(2), T(sign * 1000));
    EXPECT_EQ(this->weight(3), T(1));
    EXPECT_EQ(this->lattice.inhomScaled, T(1));
    EXPECT_EQ(this->lattice.search.scaleLimit, T(1000));
  }
}

// The steps count for the coordinate that was asked for.
TYPED_TEST(Trimming, NormalisationNotesItsStepsAtTheOne) {
  using T = TypeParam;
  this->weights({3, 1000, -4});
  EXPECT_TRUE(normalizeScales(this->lattice, 2));
  EXPECT_EQ(this->weight(1), T(2));
  EXPECT_EQ(this->weight(3), T(-3));
  EXPECT_EQ(this->lattice.inhomScaled, T(-3));
  EXPECT_EQ(this->lattice.stepCount[2], 2);
  EXPECT_EQ(this->lattice.stepAverage[2], T(0));
  EXPECT_EQ(this->lattice.stepCount[1], 0);
}

TYPED_TEST(Trimming, NormalisationNeedsRoomEverywhere) {
  using T = TypeParam;
  for (const long small : {1, -1}) {
    this->weights({7, 1000, small});
    EXPECT_FALSE(normalizeScales(this->lattice, 2));
    EXPECT_EQ(this->weight(1), T(7));
    EXPECT_EQ(this->lattice.stepCount[2], 0);
  }
}

TYPED_TEST(Trimming, LimitGrowsWhereTheOthersAreSmall) {
  using T = TypeParam;
  this->weights({1, 1000, 1});
  scaleStep(this->lattice, 2, T(1));
  EXPECT_EQ(this->magnitude(2), T(1001));
  EXPECT_EQ(this->lattice.search.scaleLimit, T(1001));
  EXPECT_EQ(this->lattice.stepAverage[2], T(1));
}

TYPED_TEST(Trimming, BeyondTheCeilingAllWeightsAreReset) {
  using T = TypeParam;
  this->lattice.setTranslation(1, T(6));
  this->weights({1, 999998, 1});
  this->lattice.search.scaleLimit = T(999998);
  scaleStep(this->lattice, 2, T(1));
  EXPECT_EQ(this->magnitude(2), T(999999));
  EXPECT_EQ(this->lattice.search.scaleLimit, T(999999));
  this->weights({1, 999999, -5});
  this->weights({1, 999999, 1});
  scaleStep(this->lattice, 2, T(1));
  for (long p = 1; p <= 3; ++p) {
    EXPECT_EQ(this->weight(p), T(1));
    EXPECT_EQ(this->lattice.stepCount[p], 0);
  }
  EXPECT_EQ(this->lattice.search.scaleLimit, T(1000));
  EXPECT_EQ(this->lattice.translation[1], T(6));  // stays
}

TYPED_TEST(Trimming, NothingWithoutAnOption) {
  using T = TypeParam;
  this->lattice.params.scale.set(false);
  this->lattice.params.translate.set(false);
  const Matrix<T> before = this->lattice.B;
  EXPECT_EQ(this->trimmed(this->lattice, 1), "");
  EXPECT_EQ(this->trimmed(this->lattice, 2), "|-> Trimming ...\n");
  EXPECT_TRUE(this->lattice.B == before);
  EXPECT_TRUE(this->lattice.unweighted());
  EXPECT_EQ(progressDepth(), 0);
}

TYPED_TEST(Trimming, EmptyLattice) {
  this->lattice.resizeLattice(0, 3);
  this->lattice.params.scale.set(true);
  EXPECT_EQ(this->trimmed(this->lattice), "|-> Trimming ...\n");
  EXPECT_TRUE(this->lattice.unweighted());
}

// With both options off, too; and nothing else changes.
TYPED_TEST(Trimming, NoVectorCarriesTheInhomogeneousCoordinate) {
  using T = TypeParam;
  for (const bool scale : {false, true}) {
    this->SetUp();
    setBasis(this->lattice, matrixOf<T>({{10, 2, 0}, {31, 4, 2}}));
    this->lattice.params.scale.set(scale);
    this->lattice.params.eenum.set(true);
    const std::string text = this->trimmed(this->lattice);
    EXPECT_EQ(text.rfind("|-> Trimming ...\n|    |-> Inhomogenous component scaling\n", 0), 0u) << text;
    EXPECT_EQ(this->occurrences(text, "Scaling ..."), 0);
    EXPECT_EQ(this->occurrences(text, "BKZ enumeration"), 1) << text;  // the reduction
    EXPECT_EQ(this->weight(1), T(1));
    EXPECT_EQ(this->weight(2), T(1));
    EXPECT_EQ(this->magnitude(3), T(2));
    EXPECT_EQ(abs(this->lattice.inhomScaled), T(2));
    this->expectSameLattice(this->lattice);
  }
}

TYPED_TEST(Trimming, ScalingRaisesTheWeightsThatAreOut) {
  using T = TypeParam;
  auto l = latticeOf<T>(SMALL);  // row 1 is (-8 -4 -4 1): its first coordinate is out
  l->params.scale.set(true);
  l->params.translate.set(false);
  l->params.eenum.set(true);
  l->params.sol.set(0);
  const std::string text = this->trimmed(*l);
  EXPECT_EQ(text.rfind("|-> Trimming ...\n|    |-> Scaling ... 1\n", 0), 0u) << text;
  EXPECT_EQ(this->occurrences(text, "BKZ enumeration"), 1) << text;
  EXPECT_EQ(abs(l->scaleFactor[1]), T(2));
  for (long p = 2; p <= 4; ++p) EXPECT_EQ(l->scaleFactor[p], T(1));
  this->expectSameLattice(*l);
}

TYPED_TEST(Trimming, CoordinatesInTheOrderOfTheirDeviations) {
  using T = TypeParam;
  auto& l = this->lattice;
  setBasis(l, matrixOf<T>({{5, -9, 7, 1}}));
  l.params.scale.set(true);
  l.params.eenum.set(true);
  l.lbnd[4] = l.ubnd[4] = T(1);
  const std::string text = this->trimmed(l);
  EXPECT_NE(text.find("Scaling ... 2 3 1\n"), std::string::npos);
  EXPECT_EQ(this->occurrences(text, "BKZ enumeration"), 1) << text;  // once, behind the last of them
}

// The vector is measured with the sign of inhomBase: as it stands it would deviate in the last coordinate.
TYPED_TEST(Trimming, NegativeCarrierIsTurned) {
  using T = TypeParam;
  auto& l = this->lattice;
  setBasis(l, matrixOf<T>({{5, -9, -1}}));
  l.params.scale.set(true);
  l.params.eenum.set(false);
  l.lbnd = vectorOf<T>({-9, 0, 1});
  l.ubnd = vectorOf<T>({-5, 8, 1});
  EXPECT_NE(this->trimmed(l).find("Scaling ... 2\n"), std::string::npos);
}

TYPED_TEST(Trimming, SignOfTheInhomogeneousBaseIsThePositiveOne) {
  using T = TypeParam;
  auto& l = this->lattice;
  setBasis(l, matrixOf<T>({{5, -9, -1}}));
  l.inhomBase = l.inhomScaled = T(-1);
  l.params.scale.set(true);
  l.params.eenum.set(false);
  l.lbnd = vectorOf<T>({5, -8, -1});
  l.ubnd = vectorOf<T>({9, 0, -1});
  EXPECT_NE(this->trimmed(l).find("Scaling ... 2\n"), std::string::npos);
}

// In the second pass the coordinates of the first that are no longer out are raised.
TYPED_TEST(Trimming, PreviousCoordinatesThatRecovered) {
  using T = TypeParam;
  auto& l = this->lattice;
  setBasis(l, matrixOf<T>({{5, -9, 7, 1}}));
  l.params.scale.set(true);
  l.params.eenum.set(false);
  l.lbnd = vectorOf<T>({0, 0, 0, 1});
  l.ubnd = vectorOf<T>({9, 9, 9, 1});
  Set<long> previous;
  for (const long p : {3, 2, 1}) previous.append(p);
  l.params.verb.set(2);
  ::testing::internal::CaptureStdout();
  trim(l, &previous);
  const std::string text = ::testing::internal::GetCapturedStdout();
  EXPECT_EQ(text.rfind("|-> Scaling ... 3 1\n", 0), 0u) << text;
  EXPECT_EQ(this->occurrences(text, "Trimming"), 0);
  EXPECT_EQ(this->occurrences(text, "Scaling"), 1);
  EXPECT_EQ(abs(l.scaleFactor[3]), T(2));
  EXPECT_EQ(abs(l.scaleFactor[1]), T(2));
  EXPECT_EQ(l.scaleFactor[2], T(1));
}

// Weights go to what recovered, shifts to what is out now.
TYPED_TEST(Trimming, ShiftsGoToWhatIsOut) {
  using T = TypeParam;
  auto& l = this->lattice;
  setBasis(l, matrixOf<T>({{5, -9, -7, 1}}));
  l.params.scale.set(true);
  l.params.translate.set(true);
  l.params.eenum.set(false);
  l.lbnd = vectorOf<T>({-900, 0, 0, 1});
  l.ubnd = vectorOf<T>({900, 9, 9, 1});
  Set<long> previous;
  previous.append(1);
  trim(l, &previous);
  EXPECT_EQ(this->magnitude(1), T(2));
  EXPECT_EQ(this->weight(2), T(1));
  EXPECT_EQ(l.translation[1], T(0));
  EXPECT_EQ(abs(l.translation[2]), T(1));
  EXPECT_EQ(abs(l.translation[3]), T(1));
}

TYPED_TEST(Trimming, WeightedCarrierCarriesItOnce) {
  using T = TypeParam;
  auto& l = this->lattice;
  setBasis(l, matrixOf<T>({{5, -9, 1}}));
  l.lbnd = vectorOf<T>({0, 0, 1});
  l.ubnd = vectorOf<T>({9, 9, 1});
  l.setScale(3, T(-2));
  l.params.scale.set(true);
  l.params.eenum.set(false);
  EXPECT_EQ(this->trimmed(l), "|-> Trimming ...\n|    |-> Scaling ... 2\n");
}

// As many coordinates recovered as there were: there is nothing left to shrink.
TYPED_TEST(Trimming, SetsThatDoNotShrinkEndTheRecursion) {
  using T = TypeParam;
  auto& l = this->lattice;
  setBasis(l, matrixOf<T>({{5, -9, -7, 1}}));
  l.params.scale.set(true);
  l.params.eenum.set(false);
  l.lbnd = vectorOf<T>({0, 0, 0, 1});
  l.ubnd = vectorOf<T>({9, 9, 9, 1});
  Set<long> previous;
  previous.append(1);
  l.params.verb.set(2);
  ::testing::internal::CaptureStdout();
  trim(l, &previous);
  EXPECT_EQ(::testing::internal::GetCapturedStdout(), "|-> Scaling ... 1\n");
}

// One draw for each coordinate that is out, the inhomogeneous one among them.
TYPED_TEST(Trimming, ShiftsTakeADrawForEachCoordinate) {
  using T = TypeParam;
  auto& l = this->lattice;
  setBasis(l, matrixOf<T>({{50, -90, 1}}));  // its last coordinate is out of its bounds too
  l.lbnd[3] = T(71);
  l.ubnd[3] = T(71);
  l.params.scale.set(false);
  l.params.translate.set(true);
  l.params.eenum.set(false);
  Set<long> none;
  for (unsigned seed = 1; seed <= 20; ++seed) {
    std::srand(seed);
    T signs[4];
    for (const int p : {2, 3, 1}) signs[p] = randomSign(T(1));
    l.resetScales(true, true);
    std::srand(seed);
    trim(l, &none);
    EXPECT_EQ(l.translation[1], signs[1]);
    EXPECT_EQ(l.translation[2], signs[2]);
    EXPECT_EQ(l.translation[3], T(0));
  }
}

// Once for the driver, once with the coordinates, once with none.
TYPED_TEST(Trimming, TranslationAloneTakesThreePasses) {
  using T = TypeParam;
  auto& l = this->lattice;
  setBasis(l, matrixOf<T>({{50, -90, 1}}));
  l.params.scale.set(false);
  l.params.translate.set(true);
  l.params.eenum.set(true);
  const std::string text = this->trimmed(l);
  EXPECT_EQ(this->occurrences(text, "Trimming ..."), 1);
  EXPECT_EQ(this->occurrences(text, "Translating ...\n"), 3) << text;
  EXPECT_EQ(this->occurrences(text, "Scaling"), 0);
  EXPECT_EQ(this->occurrences(text, "Component index: 1, Translation value: "), 3) << text;
  EXPECT_EQ(this->occurrences(text, "Component index: 2, Translation value: "), 3);
  // The inhomogeneous coordinate is out of its bounds in this lattice, and yet never shifted.
  EXPECT_EQ(this->occurrences(text, "Component index: 3"), 0);
  EXPECT_EQ(l.translation[3], T(0));
  EXPECT_EQ(this->occurrences(text, "BKZ enumeration"), 3);
  EXPECT_TRUE(l.unscaled(l.B) == matrixOf<T>({{50, -90, 1}}) ||
              l.unscaled(l.B) == matrixOf<T>({{-50, 90, -1}}));
}

TYPED_TEST(Trimming, ShiftsGrowAwayFromZeroUpToTheirLimit) {
  using T = TypeParam;
  auto& l = this->lattice;
  setBasis(l, matrixOf<T>({{50, -90, 30, 1}}));
  l.setTranslation(1, T(-7));
  l.setTranslation(2, T(999998));
  l.setTranslation(3, T(-999999));
  l.params.scale.set(false);
  l.params.translate.set(true);
  l.params.eenum.set(false);
  Set<long> none;
  trim(l, &none);
  EXPECT_EQ(abs(l.translation[1]), T(8));
  EXPECT_EQ(abs(l.translation[2]), T(999999));
  EXPECT_EQ(l.translation[3], T(-999999));  // a million is refused
}

TYPED_TEST(Trimming, GuardOfTheInhomogeneousCoordinate) {
  EXPECT_FAILURE(this->lattice.setTranslation(3, TypeParam(1)),
                 "The inhomogenous component can not get translated!");
}

TYPED_TEST(Trimming, NothingOutOfBoundsWithTargetsFails) {
  using T = TypeParam;
  for (const auto& [scale, translate] : {std::pair(true, false), {false, true}, {false, false}}) {
    auto l = latticeOf<T>(SMALL_TARGET);
    l->params.scale.set(scale);
    l->params.translate.set(translate);
    ASSERT_FALSE(l->generatedTu && isZero(l->program.rtu()));
    l->lbnd = vectorOf<T>(std::vector<long>(static_cast<std::size_t>(l->dim), -1000));
    l->ubnd = vectorOf<T>(std::vector<long>(static_cast<std::size_t>(l->dim), 1000));
    if (!scale && !translate) {
      trim(*l, nullptr);  // asks nothing
      continue;
    }
    EXPECT_FAILURE(trim(*l, nullptr), "At least the target component should deviate ...");
  }
}

// Without targets such a vector is a solution; there is nothing to bend, and the reduction follows.
TYPED_TEST(Trimming, NothingOutOfBoundsWithoutTargets) {
  using T = TypeParam;
  auto& l = this->lattice;
  setBasis(l, matrixOf<T>({{5, 9, 1}}));
  l.lbnd = vectorOf<T>({0, 0, 1});
  l.ubnd = vectorOf<T>({9, 9, 1});
  l.checkMode = CHECK_MODE_EQUATIONS;
  l.params.eenum.set(true);
  l.params.scale.set(true);
  l.params.translate.set(true);
  const std::string text = this->trimmed(l);
  EXPECT_EQ(this->occurrences(text, "Scaling"), 0);
  EXPECT_EQ(this->occurrences(text, "Translating ...\n"), 1);
  EXPECT_EQ(this->occurrences(text, "BKZ enumeration"), 1);
  EXPECT_TRUE(l.unweighted());
}

// A judged vector misses the target by 1 at least, so a minimisation goes on trimming.
TYPED_TEST(Trimming, BoundedTargetIsScaled) {
  using T = TypeParam;
  auto l = latticeOf<T>(SMALL_TARGET);
  l->params.eenum.set(false);
  l->checkSolution(latticeVector(*l, "[ 2 1 ]"), NOW, false);
  regenerateLattice(*l);
  l->params.scale.set(true);
  rows(*l).B[1] = latticeVector(*l, "[ 2 1 ]");
  l->clearStatus();
  EXPECT_NE(this->trimmed(*l).find("Scaling ... 1\n"), std::string::npos);
}

TYPED_TEST(Trimming, SweepReducesWhereEnumerationIsOff) {
  auto l = latticeOf<TypeParam>(SMALL);
  l->params.scale.set(true);
  l->params.eenum.set(false);
  l->params.sol.set(0);
  ASSERT_FALSE(isReduced(exact(l->B)));
  EXPECT_EQ(this->occurrences(this->trimmed(*l), "BKZ enumeration"), 0);
  EXPECT_TRUE(isReduced(exact(l->B)));
}

TYPED_TEST(Trimming, EnumerationReducesWhereItIsSet) {
  auto l = latticeOf<TypeParam>(SMALL);
  l->params.scale.set(true);
  l->params.eenum.set(true);
  l->params.sol.set(0);
  EXPECT_EQ(this->occurrences(this->trimmed(*l), "BKZ enumeration"), 1);
}

// Many passes on a program with equations: the lattice stays, with and without the record of transformations,
// and a run repeats.
TYPED_TEST(Trimming, LatticeStaysTheSame) {
  using T = TypeParam;
  const char* text =
      "[ ] [ ] [ [ 17 23 41 58 66 79 ] ] [ 131 ] [ [ 1 2 3 4 5 6 ] ] [ 3 ] [ 9 ] "
      "[ 0 0 0 0 0 0 ] [ 0 0 0 0 0 0 ] [ 1 1 1 1 1 1 ]";
  for (const bool consistency : {true, false}) {
    std::string first;
    for (int run = 0; run < 2; ++run) {
      auto l = latticeOf<T>(text);
      std::srand(42);
      l->params.consistency.set(consistency);
      l->params.scale.set(true);
      l->params.translate.set(true);
      l->params.sol.set(0);
      for (int pass = 0; pass < 12; ++pass) {
        l->params.eenum.set(pass % 2 == 0);
        trim(*l, nullptr);
        this->expectSameLattice(*l);
      }
      EXPECT_FALSE(l->unweighted());
      const Matrix<T> before = l->B;
      l->checkConsistency(false, true);
      EXPECT_TRUE(l->B == before);
      const std::string state = shown(l->B) + shown<T>(l->scaleFactor) + shown<T>(l->translation);
      if (run == 0) first = state;
      EXPECT_EQ(state, first);
    }
  }
}

TEST(TrimmingOverflow, WeightsBeyondTheGateThrow) {
  Lattice<dbl_t, dbl_t> l;
  setBasis(l, matrixOf<dbl_t>({{900000000, 4, 1}}));
  EXPECT_THROW(scaleStep(l, 1, dbl_t(1)), PrecisionException);
}

}  // namespace latbox::testing
