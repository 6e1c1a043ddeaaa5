// The object: fresh state, sizes, copies, status words, stages.
#include "lattice/support.h"

namespace latbox::testing {

template <class T>
class LatticeTest : public ::testing::Test {
 public:
  Lattice<T, dbl_t> lattice;
  Lattice<T, dbl_t> other;
};
TYPED_TEST_SUITE(LatticeTest, NumberTypes);

TYPED_TEST(LatticeTest, FreshObjectIsEmpty) {
  const auto& l = this->lattice;
  EXPECT_EQ(l.rank, 0);
  EXPECT_EQ(l.dim, 0);
  EXPECT_EQ(l.interval_tt, 100);
  EXPECT_EQ(l.c.MN, 0);
  EXPECT_EQ(l.TT.MN, 0);
  EXPECT_EQ(l.inhomBase, TypeParam(1));
  EXPECT_EQ(l.checkMode, 0);
  EXPECT_FALSE(l.blended);
}

TYPED_TEST(LatticeTest, ResizingWritesZerosAndUnitWeights) {
  auto& l = this->lattice;
  setBasis(l, matrixOf<TypeParam>({{1, 2}, {3, 4}}));
  l.setTranslation(1, TypeParam(3));
  l.setScale(2, TypeParam(8));
  l.status[1] = STATUS_GSO;
  l.mu[2][1] = 5;
  l.resizeLattice(3, 4);
  EXPECT_EQ(l.rank, 3);
  EXPECT_EQ(l.dim, 4);
  EXPECT_TRUE(l.B == Matrix<TypeParam>::zeros(3, 4));
  EXPECT_TRUE(l.B_save == Matrix<TypeParam>::zeros(3, 4));
  EXPECT_EQ(l.B[0].MN, 4);
  EXPECT_TRUE(l.mu == Matrix<dbl_t>::zeros(3, 3));
  EXPECT_TRUE(l.scaleFactor == vectorOf<TypeParam>({1, 1, 1, 1}));
  EXPECT_EQ(l.inhomScaled, TypeParam(1));
  EXPECT_EQ(l.translation.MN, 0);
  EXPECT_EQ(l.TT.MN, 0);
  EXPECT_EQ(l.stages.MN, 4);
  EXPECT_EQ(l.stepCount.MN, 4);
  for (long i = 1; i <= 3; ++i) EXPECT_EQ(l.status[i], 0);
}

TYPED_TEST(LatticeTest, WorkDataShrinkWithTheRank) {
  auto& l = this->lattice;
  setBasis(l, matrixOf<TypeParam>({{1, 0, 2}, {0, 1, 4}, {0, 0, 3}}));
  l.gsoByFull(1, 0, true);
  l.resizeWork(2);
  EXPECT_EQ(l.rank, 2);
  EXPECT_EQ(l.mu.M, 2);
  EXPECT_EQ(l.status.MN, 2);
  EXPECT_EQ(l.stages.MN, 3);
  EXPECT_EQ(l.lqReflections.MN, 0);
  EXPECT_EQ(l.status[1], 0);
}

TYPED_TEST(LatticeTest, InvalidationKeepsDependentWordsWhileBlended) {
  auto& l = this->lattice;
  l.resizeLattice(4, 4);
  const auto fill = [&l] {
    for (long i = 1; i <= 4; ++i) l.status[i] = i % 2 == 1 ? STATUS_DEPENDENT : STATUS_LQ;
  };
  fill();
  l.invalidateFrom(2);
  EXPECT_EQ(l.status[1], STATUS_DEPENDENT);
  for (long i = 2; i <= 4; ++i) EXPECT_EQ(l.status[i], 0);
  fill();
  l.blended = true;
  l.invalidateFrom(0);
  EXPECT_EQ(l.status[1], 0);
  EXPECT_EQ(l.status[2], 0);
  EXPECT_EQ(l.status[3], STATUS_DEPENDENT);
  EXPECT_EQ(l.status[4], 0);
}

TYPED_TEST(LatticeTest, CopyIsDeepAndCarriesParametersAndVariables) {
  auto& l = this->lattice;
  setBasis(l, matrixOf<TypeParam>(knapsackRows(5, 1000, 1)));
  l.params.beta.set(17);
  l.mainVars[MainMutexVariable::inputLoaded].set("here");
  l.lll(1, 0, 0);
  HeuristicVector<TypeParam, dbl_t> kept(vectorOf<TypeParam>({1, 2, 3, 4, 5, 6}));
  kept.deviation.kind = 1;
  l.homogeneousVectors.insert(kept);
  this->other = l;
  const Matrix<TypeParam> before = l.B;
  l.B[1][1] = TypeParam(999);
  l.scaleFactor[1] = TypeParam(3);
  l.program.lx.resizeZero(2);
  EXPECT_TRUE(this->other.B == before);
  EXPECT_EQ(this->other.scaleFactor[1], TypeParam(1));
  EXPECT_EQ(this->other.params.beta.get(), 17);
  EXPECT_EQ(this->other.mainVars[MainMutexVariable::inputLoaded].get(), "here");
  EXPECT_EQ(this->other.homogeneousVectors.count, 1);
  EXPECT_EQ(this->other.interval_tt, l.interval_tt);
  EXPECT_EQ(this->other.program.lx.MN, 0);
}

TYPED_TEST(LatticeTest, CopyFromLeavesVariablesAndOnRequestParameters) {
  auto& l = this->lattice;
  setBasis(l, matrixOf<TypeParam>({{1, 2}, {3, 4}}));
  l.params.beta.set(17);
  l.mainVars[MainMutexVariable::inputLoaded].set("here");
  this->other.copyFrom(l, true);
  EXPECT_TRUE(this->other.B == l.B);
  EXPECT_EQ(this->other.params.beta.get(), 20);
  this->other.copyFrom(l, false);
  EXPECT_EQ(this->other.params.beta.get(), 17);
  EXPECT_EQ(this->other.mainVars[MainMutexVariable::inputLoaded].get(), "");
}

TYPED_TEST(LatticeTest, CopyGoesOnLikeItsSource) {
  auto& l = this->lattice;
  setBasis(l, matrixOf<TypeParam>(knapsackRows(8, 100000, 5)));
  l.lll(1, 4, 4);
  this->other = l;
  l.lll(2, 0, 0);
  this->other.lll(2, 0, 0);
  EXPECT_TRUE(this->other.B == l.B);
  EXPECT_TRUE(this->other.mu == l.mu);
}

// What the words mark valid has to be enough for a resume.
TYPED_TEST(LatticeTest, CopiedFactorisationsResume) {
  auto& l = this->lattice;
  for (const bool full : {false, true}) {
    setBasis(l, matrixOf<TypeParam>(knapsackRows(7, 50, 5)));
    const auto factorise = [full](Lattice<TypeParam, dbl_t>& x, long last) {
      return full ? x.gsoByFull(1, last, true) : x.gsoByReduced(1, last, true);
    };
    factorise(l, 4);
    this->other = l;
    factorise(this->other, 7);
    factorise(l, 7);
    EXPECT_TRUE(this->other.mu == l.mu);
    EXPECT_TRUE(this->other.bstarSq == l.bstarSq);
  }
}

TYPED_TEST(LatticeTest, ReinitialisedObjectKeepsParametersAndVariables) {
  auto& l = this->lattice;
  setBasis(l, matrixOf<TypeParam>({{1, 2}, {3, 4}}));
  l.params.beta.set(17);
  l.latFile = "x.lat";
  l.mainVars[MainMutexVariable::inputLoaded].set("here");
  l.reinitialise();
  EXPECT_EQ(l.rank, 0);
  EXPECT_EQ(l.B.M, 0);
  EXPECT_EQ(l.checkMode, 0);
  EXPECT_EQ(l.latFile, "");
  EXPECT_EQ(l.params.beta.get(), 17);
  EXPECT_EQ(l.mainVars[MainMutexVariable::inputLoaded].get(), "here");
}

TYPED_TEST(LatticeTest, StageExchangesAllButItsWorkVector) {
  Stage<TypeParam, dbl_t> a, b;
  EXPECT_EQ(a.sign, TypeParam(1));
  a.w.resizeZero(3);
  a.c = 1;
  a.y = 2;
  a.v = TypeParam(3);
  a.u = TypeParam(4);
  a.delta = TypeParam(5);
  a.sign = TypeParam(-1);
  a.swap(b);
  EXPECT_EQ(a.w.MN, 3);
  EXPECT_EQ(b.w.MN, 0);
  EXPECT_EQ(b.c, 1);
  EXPECT_EQ(b.y, 2);
  EXPECT_EQ(b.v, TypeParam(3));
  EXPECT_EQ(b.u, TypeParam(4));
  EXPECT_EQ(b.delta, TypeParam(5));
  EXPECT_EQ(b.sign, TypeParam(-1));
  EXPECT_EQ(a.sign, TypeParam(1));
  b.reset();
  EXPECT_EQ(b.c, 0);
  EXPECT_EQ(b.u, TypeParam(0));
  EXPECT_EQ(b.sign, TypeParam(1));
}

}  // namespace latbox::testing
