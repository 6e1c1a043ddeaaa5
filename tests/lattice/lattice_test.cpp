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

// A value of its own in each member that is no matter of the basis.
template <class T>
void fillResults(Lattice<T, dbl_t>& l) {
  const HeuristicVector<T, dbl_t> found(vectorOf<T>({1, 2}));
  l.savedSeconds = 77;
  l.latFile = "x.lat";
  l.bestInhomogeneous = l.bestSlack = found;
  l.bestInhomogeneous[1] = T(9);
  l.solutions.append(TargetVector<T>(vectorOf<T>({3, 4})));
  l.homogeneousVectors.append(found);
  l.inhomogeneousVectors.append(found);
  l.inhomogeneousVectors.append(found);
  l.R = T(12);
  l.lbnd = vectorOf<T>({1, 1});
  l.ubnd = vectorOf<T>({2, 2});
  l.lbndSaved = vectorOf<T>({3, 3});
  l.ubndSaved = vectorOf<T>({4, 4});
  l.symmetricBounds = true;
  l.checkMode = 1;
  l.normBound = T(13);
  l.generatedTu = true;
  l.generatedLx = vectorOf<T>({5});
  l.generatedRx = vectorOf<T>({6});
  l.generatedLrtu = SerializablePair<T, T>(T(7), T(8));
  l.interval_tt = 14;
  l.inhomBase = T(15);
  l.inhomScaled = T(16);
  l.c = vectorOf<T>({17, 18});
  l.translation = vectorOf<T>({19, 0});
  l.stepAverage = vectorOf<T>({20, 21});
  l.stepCount[1] = 22;
  l.enumBound = 23;
  l.blended = true;
  l.optFile = "x.opt";
  l.solFile = "x.sol";
  l.dt = vectorOf<T>({24});
  l.program.optFile = "p.opt";
  l.program.kt = vectorOf<T>({25});
  l.program.stars.append(Star<T>(vectorOf<T>({26})));
}

TYPED_TEST(LatticeTest, CopyCarriesEveryMember) {
  using T = TypeParam;
  auto& l = this->lattice;
  const auto& o = this->other;
  setBasis(l, matrixOf<T>({{1, 2}, {3, 4}}));
  l.B_save[1][1] = T(5);
  l.TT[1][1][2] = T(6);
  l.B[0] = vectorOf<T>({27, 28});
  l.updateGso(1, 0);
  fillResults(l);
  this->other.copyFrom(l, true);
  EXPECT_EQ(o.rank, 2);
  EXPECT_EQ(o.dim, 2);
  EXPECT_EQ(o.savedSeconds, 77);
  EXPECT_EQ(o.latFile, "x.lat");
  EXPECT_TRUE(o.bestInhomogeneous == vectorOf<T>({9, 2}));
  EXPECT_TRUE(o.bestSlack == vectorOf<T>({1, 2}));
  ASSERT_EQ(o.solutions.MN, 1);
  EXPECT_TRUE(o.solutions[1] == vectorOf<T>({3, 4}));
  EXPECT_EQ(o.homogeneousVectors.count, 1);
  EXPECT_EQ(o.inhomogeneousVectors.count, 2);
  EXPECT_EQ(o.R, T(12));
  EXPECT_TRUE(o.lbnd == l.lbnd);
  EXPECT_TRUE(o.ubnd == l.ubnd);
  EXPECT_TRUE(o.lbndSaved == l.lbndSaved);
  EXPECT_TRUE(o.ubndSaved == l.ubndSaved);
  EXPECT_TRUE(o.symmetricBounds);
  EXPECT_EQ(o.checkMode, 1);
  EXPECT_EQ(o.normBound, T(13));
  EXPECT_TRUE(o.generatedTu);
  EXPECT_TRUE(o.generatedLx == l.generatedLx);
  EXPECT_TRUE(o.generatedRx == l.generatedRx);
  EXPECT_EQ(o.generatedLrtu.left, T(7));
  EXPECT_EQ(o.generatedLrtu.right, T(8));
  EXPECT_TRUE(o.B == l.B);
  EXPECT_TRUE(o.B[0] == l.B[0]);
  EXPECT_TRUE(o.B_save == l.B_save);
  ASSERT_EQ(o.TT.MN, 1);
  EXPECT_TRUE(o.TT[1] == l.TT[1]);
  EXPECT_TRUE(o.mu == l.mu);
  EXPECT_TRUE(o.bstarSq == l.bstarSq);
  EXPECT_TRUE(o.bNormSq == l.bNormSq);
  ASSERT_EQ(o.status.MN, 2);
  EXPECT_EQ(o.status[2], STATUS_GSO);
  EXPECT_EQ(o.enumCoeffs.MN, 2);
  EXPECT_EQ(o.stages.MN, 3);
  EXPECT_EQ(o.interval_tt, 14);
  EXPECT_EQ(o.inhomBase, T(15));
  EXPECT_EQ(o.inhomScaled, T(16));
  EXPECT_TRUE(o.c == l.c);
  EXPECT_TRUE(o.scaleFactor == l.scaleFactor);
  EXPECT_TRUE(o.translation == l.translation);
  EXPECT_TRUE(o.stepAverage == l.stepAverage);
  EXPECT_EQ(o.stepCount[1], 22);
  EXPECT_EQ(o.enumBound, 23);
  EXPECT_TRUE(o.blended);
  EXPECT_EQ(o.optFile, "x.opt");
  EXPECT_TRUE(o.dt == l.dt);
  EXPECT_EQ(o.program.optFile, "p.opt");
  EXPECT_TRUE(o.program.kt == l.program.kt);
  EXPECT_EQ(o.program.stars.MN, 1);
}

TYPED_TEST(LatticeTest, ReinitialisedObjectKeepsParametersAndVariablesAlone) {
  using T = TypeParam;
  auto& l = this->lattice;
  setBasis(l, matrixOf<T>({{1, 2}, {3, 4}}));
  fillResults(l);
  l.params.beta.set(17);
  l.mainVars[MainMutexVariable::inputLoaded].set("here");
  l.reinitialise();
  EXPECT_EQ(l.rank, 0);
  EXPECT_EQ(l.dim, 0);
  EXPECT_EQ(l.B.M + l.B_save.M + l.TT.MN + l.mu.M + l.status.MN, 0);
  EXPECT_EQ(l.savedSeconds, 0);
  EXPECT_EQ(l.latFile + l.optFile + l.solFile + l.program.optFile, "");
  EXPECT_EQ(l.bestInhomogeneous.MN + l.bestSlack.MN + l.solutions.MN, 0);
  EXPECT_EQ(l.homogeneousVectors.count + l.inhomogeneousVectors.count, 0);
  EXPECT_EQ(l.R, T(0));
  EXPECT_EQ(l.lbnd.MN + l.ubnd.MN + l.lbndSaved.MN + l.ubndSaved.MN, 0);
  EXPECT_FALSE(l.symmetricBounds);
  EXPECT_EQ(l.checkMode, 0);
  EXPECT_EQ(l.normBound, T(0));
  EXPECT_FALSE(l.generatedTu);
  EXPECT_EQ(l.generatedLx.MN + l.generatedRx.MN, 0);
  EXPECT_TRUE(l.generatedLrtu.left == -infinity<T>());
  EXPECT_TRUE(l.generatedLrtu.right == infinity<T>());
  EXPECT_EQ(l.interval_tt, 100);
  EXPECT_EQ(l.inhomBase, T(1));
  EXPECT_EQ(l.inhomScaled, T(1));
  EXPECT_EQ(l.c.MN + l.scaleFactor.MN + l.translation.MN + l.stepAverage.MN + l.stepCount.MN, 0);
  EXPECT_EQ(l.enumBound, 0);
  EXPECT_FALSE(l.blended);
  EXPECT_EQ(l.dt.MN + l.program.kt.MN + l.program.stars.MN, 0);
  EXPECT_EQ(l.params.beta.get(), 17);
  EXPECT_EQ(l.mainVars[MainMutexVariable::inputLoaded].get(), "here");
}

TEST(LatticeStatus, WordsHaveTheirValues) {
  EXPECT_EQ(STATUS_DEPENDENT, 1);
  EXPECT_EQ(STATUS_GSO, 0x02);
  EXPECT_EQ(STATUS_FULL, 0x0e);
  EXPECT_EQ(STATUS_LQ, 0x16);
  EXPECT_EQ(STATUS_REDUCED, 0x20);
  EXPECT_EQ(STATUS_SWEPT, 0x40);
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
