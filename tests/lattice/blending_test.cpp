// Blending: dependent vectors are moved out of the way, and the recursion that does it ends.
#include "lattice/support.h"
#include "params/statistics.h"

namespace latbox::testing {

template <class T>
class BlendingTest : public ::testing::Test {
 public:
  Lattice<T, dbl_t> lattice;

  // The rows, and their numbers in enumCoeffs, which go along with every exchange.
  void basis(const Rows& rows) {
    setBasis(lattice, matrixOf<T>(rows));
    lattice.params.consistency.set(true);
    for (long i = 1; i <= lattice.rank; ++i) lattice.enumCoeffs[i] = T(i);
  }
  void expectNumbers(const std::vector<long>& numbers) {
    EXPECT_TRUE(lattice.enumCoeffs == vectorOf<T>(numbers)) << lattice.enumCoeffs;
    EXPECT_TRUE(lattice.TT[1] * lattice.B_save == lattice.B);
  }
  bool step(long k, long m) {
    bool guarded = false;
    return lattice.lllStep(k, m, guarded);
  }
};
TYPED_TEST_SUITE(BlendingTest, NumberTypes);

// At position 1 no word of a dependent vector is kept, so that the zero vectors go round and round: a step
// and `rank` repetitions of it, each of which moves one of them to the end.
TYPED_TEST(BlendingTest, ZeroVectorsInACircleEndAtTheDepthOfTheRank) {
  this->basis({{0, 0}, {0, 0}, {0, 0}, {0, 0}});
  EXPECT_FALSE(this->step(1, 4));
  this->expectNumbers({2, 3, 4, 1});
}

TYPED_TEST(BlendingTest, SweepOverNothingButZeroVectorsEnds) {
  for (const std::size_t rank : {1U, 2U, 3U, 60U}) {
    this->basis(Rows(rank, std::vector<long>(2, 0)));
    EXPECT_EQ(this->lattice.lll(1, 0, 0), 1);
    EXPECT_TRUE(this->lattice.sweepStopped);
    EXPECT_FALSE(this->lattice.blended);
  }
}

// The deepest recursion that gets anywhere: every vector but the last is in the way.
TYPED_TEST(BlendingTest, LastIndependentVectorIsReached) {
  this->basis({{0, 0}, {0, 0}, {0, 0}, {0, 0}, {5, 1}});
  EXPECT_TRUE(this->step(1, 5));
  EXPECT_EQ(this->lattice.B[1][1], TypeParam(5));
  this->expectNumbers({5, 1, 2, 3, 4});
}

// Behind position 1 the words are kept, and each vector is parked in front of those that went before.
TYPED_TEST(BlendingTest, ParkedVectorsAreNotMovedAgain) {
  this->basis({{1, 0}, {2, 0}, {3, 0}, {4, 0}, {5, 1}});
  EXPECT_TRUE(this->step(1, 5));
  EXPECT_TRUE(this->step(2, 5));
  this->expectNumbers({1, 5, 4, 3, 2});
  for (long i = 3; i <= 5; ++i) EXPECT_EQ(this->lattice.status[i], STATUS_DEPENDENT);
}

// A dependent vector that is no zero goes where it gains, with `deep` or without; all positions from there on
// are reduced in size, and what depends then is parked.
TYPED_TEST(BlendingTest, DependentVectorGoesInFrontWhereItGains) {
  this->basis({{1, 0, 0, 0}, {0, 10, 0, 0}, {0, 0, 10, 0}, {0, 1, 1, 0}, {0, 0, 0, 7}});
  const long long before = statisticsOf<TypeParam>().deepInsertions;
  for (long k = 1; k <= 4; ++k) EXPECT_TRUE(this->step(k, 5));
  EXPECT_EQ(statisticsOf<TypeParam>().deepInsertions, before + 1);
  this->expectNumbers({1, 4, 2, 5, 3});
  EXPECT_TRUE(this->lattice.B[2] == vectorOf<TypeParam>({0, 1, 1, 0}));
  EXPECT_TRUE(this->lattice.B[3] == vectorOf<TypeParam>({0, 5, -5, 0}));
  EXPECT_EQ(this->lattice.status[5], STATUS_DEPENDENT);
}

TYPED_TEST(BlendingTest, NoRoomToParkEndsTheStep) {
  this->basis({{1, 0}, {2, 0}, {3, 0}});
  EXPECT_TRUE(this->step(1, 3));
  EXPECT_FALSE(this->step(2, 3));
  this->expectNumbers({1, 3, 2});
  this->basis({{1, 0}, {2, 0}, {5, 1}});
  EXPECT_TRUE(this->step(1, 3));
  EXPECT_FALSE(this->step(2, 2));  // the range ends in front of the independent one
  this->expectNumbers({1, 2, 3});
}

}  // namespace latbox::testing
