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
  EXPECT_EQ(l.checkMode, CHECK_MODE_NONE);
  EXPECT_FALSE(l.blended);
}

TYPED_TEST(LatticeTest, ResizingWritesZerosAndUnitWeights) {
  auto& l = this->lattice;
  setBasis(l, matrixOf<TypeParam>({{1, 2}, {3, 4}}));
  l.setTranslation(1, TypeParam(3));
  l.setScale(2, TypeParam(8));
  setWord(l, 1, STATUS_GSO);
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
  l.enterBasis(matrixOf<TypeParam>({{1, 0, 2}, {0, 1, 4}}));
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
    for (long i = 1; i <= 4; ++i) setWord(l, i, i % 2 == 1 ? STATUS_DEPENDENT : STATUS_LQ);
  };
  fill();
  l.invalidateFrom(2);
  EXPECT_EQ(l.status[1], STATUS_DEPENDENT);
  for (long i = 2; i <= 4; ++i) EXPECT_EQ(l.status[i], 0);
  fill();
  l.setBlended(true);
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
  kept.deviation.kind = KIND_HOMOGENEOUS;
  l.homogeneousVectors.insert(kept);
  this->other = l;
  const Matrix<TypeParam> before = l.B;
  rows(l).B[1][1] = TypeParam(999);
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

// The state is copied as a whole; what stays is what is no state.
TYPED_TEST(LatticeTest, CopyTakesTheStateAndLeavesTheSearch) {
  using T = TypeParam;
  auto& l = this->lattice;
  setBasis(l, matrixOf<T>({{1, 2}, {3, 4}}));
  rows(l).TT[1][1][2] = T(6);
  rows(l).B[0] = vectorOf<T>({27, 28});
  l.latFile = "x.lat";
  l.optFile = "x.opt";
  l.program.kt = vectorOf<T>({25});
  l.R = T(12);
  l.stepCount[1] = 22;
  l.enumBound = 23;
  l.setBlended(true);
  l.solutions.append(TargetVector<T>(vectorOf<T>({3, 4})));
  l.inhomogeneousVectors.append(HeuristicVector<T, dbl_t>(vectorOf<T>({1, 2})));
  l.search.reinsertIndex = 3;
  this->other.search.scaleLimit = T(77);
  const auto output = this->other.output;
  this->other.copyFrom(l, true);
  const auto& o = this->other;
  EXPECT_EQ(o.latFile + o.optFile, "x.latx.opt");
  EXPECT_TRUE(o.program.kt == l.program.kt);
  EXPECT_TRUE(o.B == l.B);
  EXPECT_TRUE(o.B[0] == l.B[0]);
  EXPECT_TRUE(o.TT[1] == l.TT[1]);
  EXPECT_EQ(o.R, T(12));
  EXPECT_EQ(o.stepCount[1], 22);
  EXPECT_EQ(o.enumBound, 23);
  EXPECT_TRUE(o.blended);
  EXPECT_EQ(o.solutions.MN, 1);
  EXPECT_EQ(o.inhomogeneousVectors.count, 1);
  EXPECT_EQ(o.events, l.events);
  EXPECT_EQ(o.search.reinsertIndex, 0);
  EXPECT_EQ(o.search.scaleLimit, T(77));
  EXPECT_EQ(o.output, output);
}

// The views of the rows must be those of the copy, and stay so when the source is gone.
TYPED_TEST(LatticeTest, ACopyShowsItsOwnRows) {
  using T = TypeParam;
  Lattice<T, dbl_t> copy;
  {
    Lattice<T, dbl_t> source;
    setBasis(source, matrixOf<T>({{1, 2}, {3, 4}}));
    Lattice<T, dbl_t> constructed(source);
    source.swapBase(1, 2, false);
    EXPECT_EQ(constructed.B[1][1], T(1));
    copy = constructed;
  }
  EXPECT_EQ(copy.rank, 2);
  EXPECT_EQ(copy.B[2][2], T(4));
  EXPECT_EQ(copy.B_save[2][1], T(3));
  EXPECT_EQ(copy.TT.MN, 1);
  EXPECT_EQ(copy.status.MN, 2);
}

// The words and the transformation follow each operation on rows by themselves.
TYPED_TEST(LatticeTest, OperationsOnRowsKeepMarksAndTransformation) {
  using T = TypeParam;
  auto& l = this->lattice;
  setBasis(l, matrixOf<T>(knapsackRows(5, 100, 3)));
  l.params.consistency.set(true);
  const Vector<T> x = vectorOf<T>({2, -1, 0, 3, 0});
  const auto inStep = [&](long lowest) {
    for (long i = 1; i < lowest; ++i) EXPECT_EQ(l.status[i], STATUS_GSO) << i;
    for (long i = std::max(lowest, 1L); i <= 5; ++i) EXPECT_EQ(l.status[i], 0) << i;
    EXPECT_TRUE(l.TT[1] * l.B_save == l.B);
    Vector<T> coordinates;
    EXPECT_TRUE(l.coordinates(l.B[2], coordinates, false));
    EXPECT_TRUE(coordinates == vectorOf<T>({0, 1, 0, 0, 0}));
    l.clearStatus();
    EXPECT_TRUE(l.updateGso(1, 0));
  };
  inStep(0);
  l.subtract(3, T(2), 1);
  inStep(3);
  static_cast<Basis<T>&>(l).swap(4, 2);
  inStep(2);
  l.replace(2, x, 1, 4);
  inStep(2);
  l.combine(x, 1, 4);
  l.recordCombined(x, 1, 4);
  inStep(6);
  static_cast<Basis<T>&>(l).swap(2, 0);
  inStep(0);
}

TYPED_TEST(LatticeTest, ReinitialisedObjectIsAsNewButForItsParameters) {
  using T = TypeParam;
  auto& l = this->lattice;
  setBasis(l, matrixOf<T>({{1, 2}, {3, 4}}));
  l.latFile = l.optFile = l.program.optFile = "x";
  l.inhomBase = T(15);
  l.interval_tt = 14;
  l.bestSlack = HeuristicVector<T, dbl_t>(vectorOf<T>({1, 2}));
  l.solutions.append(TargetVector<T>(vectorOf<T>({3, 4})));
  l.params.beta.set(17);
  l.mainVars[MainMutexVariable::inputLoaded].set("here");
  l.reinitialise();
  EXPECT_EQ(l.rank + l.dim, 0);
  EXPECT_EQ(l.B.M + l.B_save.M + l.TT.MN + l.mu.M + l.status.MN + l.lbnd.MN + l.scaleFactor.MN, 0);
  EXPECT_EQ(l.latFile + l.optFile + l.program.optFile, "");
  EXPECT_EQ(l.bestSlack.MN + l.solutions.MN, 0);
  EXPECT_EQ(l.checkMode, CHECK_MODE_NONE);
  EXPECT_TRUE(l.generatedLrtu.left == -infinity<T>());
  EXPECT_TRUE(l.generatedLrtu.right == infinity<T>());
  EXPECT_EQ(l.interval_tt, 100);
  EXPECT_EQ(l.inhomBase, T(1));
  EXPECT_EQ(l.homogeneousVectors.limit, 100);
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
