// Sorting and shuffling of the basis.
#include <algorithm>
#include <cstdlib>

#include "heuristics/random_draw.h"
#include "heuristics/variation.h"
#include "lattice/support.h"
#include "lib/progress.h"
#include "params/statistics.h"
#include "support/lattice.h"

namespace latbox::testing {

template <class T>
class VariationTest : public ::testing::Test {
 public:
  LatticePointer<T> lattice = latticeOf<T>(
      "[ ] [ ] [ ] [ ] [ [ 3 5 7 2 ] [ 1 -4 2 6 ] ] [ 4 1 ] [ 9 6 ] [ 0 0 0 0 ] [ 0 0 0 0 ] [ 4 4 4 4 ]");

  VariationTest() {
    statisticsOf<T>() = Statistics();
    lattice->writeEnabled = lattice->finishEnabled = false;
    lattice->params.verb.set(2);
  }
  ~VariationTest() override { statisticsOf<T>() = Statistics(); }

  template <class Step>
  std::string output(Step&& step) {
    ::testing::internal::CaptureStdout();
    step();
    return ::testing::internal::GetCapturedStdout();
  }

  // The same rows, each as often as before.
  void expectPermuted(const Matrix<T>& before) {
    std::vector<bool> used(static_cast<std::size_t>(before.M) + 1, false);
    for (long i = 1; i <= before.M; ++i) {
      long j = 1;
      while (j <= before.M && (used[static_cast<std::size_t>(j)] || !(lattice->B[i] == before[j]))) ++j;
      ASSERT_LE(j, before.M) << "row " << i;
      used[static_cast<std::size_t>(j)] = true;
    }
  }
};
TYPED_TEST_SUITE(VariationTest, NumberTypes);

TYPED_TEST(VariationTest, ShuffleOfOnePrintsItsLineAndChangesNothing) {
  for (const long count : {1L, 0L, -3L}) {
    const Matrix<TypeParam> before = this->lattice->B;
    std::srand(5);
    const int first = std::rand();
    std::srand(5);
    EXPECT_EQ(this->output([&] { shuffleBase(*this->lattice, count); }),
              "|-> Shuffling base vectors ( " + std::to_string(count) + " shuffle(s) ) ...\n");
    EXPECT_TRUE(this->lattice->B == before);
    EXPECT_EQ(std::rand(), first);
  }
  EXPECT_EQ(progressDepth(), 0);
}

TYPED_TEST(VariationTest, ShuffleExchangesWhatItDraws) {
  const Matrix<TypeParam> before = this->lattice->B;
  Matrix<TypeParam> expected = before;
  std::srand(8);
  for (int n = 1; n < 6; ++n) {
    const long a = rand_eq(1L, this->lattice->rank);
    const long b = rand_eq(1L, this->lattice->rank);
    if (a != b) expected.swapRows(a, b);
  }
  std::srand(8);
  EXPECT_EQ(this->output([&] { shuffleBase(*this->lattice, 6); }),
            "|-> Shuffling base vectors ( 6 shuffle(s) ) ...\n");
  EXPECT_TRUE(this->lattice->B == expected);
  EXPECT_FALSE(this->lattice->B == before);
  this->expectPermuted(before);
}

TYPED_TEST(VariationTest, ShuffleKeepsTheTransformationAndInvalidates) {
  this->lattice->params.consistency.set(true);
  this->lattice->updateGso(1, 0);
  std::srand(8);
  this->output([&] { shuffleBase(*this->lattice, 20); });
  EXPECT_TRUE(this->lattice->TT[this->lattice->TT.MN] * this->lattice->B_save ==
              this->lattice->unscaled(this->lattice->B));
  EXPECT_EQ(this->lattice->status[this->lattice->rank], 0);
}

TYPED_TEST(VariationTest, ShuffleIsSilentBelowVerbosityTwo) {
  this->lattice->params.verb.set(1);
  EXPECT_EQ(this->output([&] { shuffleBase(*this->lattice, 3); }), "");
}

TYPED_TEST(VariationTest, ShuffleOfAnEmptyBasisChangesNothing) {
  this->lattice->resizeLattice(0, 3);
  EXPECT_EQ(this->output([&] { shuffleBase(*this->lattice, 3); }),
            "|-> Shuffling base vectors ( 3 shuffle(s) ) ...\n");
}

TYPED_TEST(VariationTest, SortBringsTheBestToTheFront) {
  const Matrix<TypeParam> before = this->lattice->B;
  this->lattice->params.consistency.set(true);
  EXPECT_EQ(this->output([&] { heuristicSort(*this->lattice); }), "|-> Heuristic Sorting ... \n");
  this->expectPermuted(before);
  // An inhomogeneous vector is better than any homogeneous one, and homogeneous ones are first of all short.
  const Matrix<TypeParam>& B = this->lattice->B;
  const long dim = this->lattice->dim;
  for (long i = 1; i < this->lattice->rank; ++i) {
    const bool homogeneous = isZero(B[i][dim]);
    EXPECT_TRUE(!homogeneous || isZero(B[i + 1][dim]));
    EXPECT_TRUE(!homogeneous || B[i] * B[i] <= B[i + 1] * B[i + 1]);
  }
  EXPECT_FALSE(isZero(B[1][dim]));
  EXPECT_TRUE(this->lattice->TT[this->lattice->TT.MN] * this->lattice->B_save == B);
}

TYPED_TEST(VariationTest, SortMeasuresUnscaledRows) {
  this->output([&] { heuristicSort(*this->lattice); });
  const Matrix<TypeParam> sorted = this->lattice->B;
  this->lattice->swapBase(2, this->lattice->rank, false);
  this->lattice->clearStatus();
  for (long p = 1; p < this->lattice->dim; ++p) this->lattice->setScale(p, TypeParam(p % 2 == 0 ? 16 : 1));
  this->output([&] { heuristicSort(*this->lattice); });
  EXPECT_TRUE(this->lattice->unscaled(this->lattice->B) == sorted);
}

TYPED_TEST(VariationTest, NothingIsVariedWithoutAStall) {
  const Matrix<TypeParam> before = this->lattice->B;
  std::srand(5);
  const int first = std::rand();
  std::srand(5);
  EXPECT_EQ(this->output([&] { variateBase(*this->lattice); }), "");
  EXPECT_EQ(std::rand(), first);
  EXPECT_TRUE(this->lattice->B == before);
}

TYPED_TEST(VariationTest, SortingNeedsAStallLongerThanTheRank) {
  const long rank = this->lattice->rank;
  std::srand(1);
  statisticsOf<TypeParam>().noPrimaryImprovement = rank;
  EXPECT_EQ(this->output([&] { variateBase(*this->lattice); }).find("Heuristic Sorting"), std::string::npos);
  statisticsOf<TypeParam>().noPrimaryImprovement = rank + 1;
  EXPECT_TRUE(this->output([&] { variateBase(*this->lattice); }).starts_with("|-> Heuristic Sorting ... \n"));
}

TYPED_TEST(VariationTest, OneDrawDecidesOnShuffling) {
  statisticsOf<TypeParam>().noPrimaryImprovement = 2;
  int shuffled = 0;
  for (unsigned seed = 1; seed <= 40; ++seed) {
    std::srand(seed);
    const bool expected = rand_eq(0L, 1L) != 0;
    std::srand(seed);
    const std::string text = this->output([&] { variateBase(*this->lattice); });
    EXPECT_EQ(text, expected ? "|-> Shuffling base vectors ( 2 shuffle(s) ) ...\n" : "");
    shuffled += expected ? 1 : 0;
  }
  EXPECT_GT(shuffled, 5);
  EXPECT_LT(shuffled, 35);
}

}  // namespace latbox::testing
