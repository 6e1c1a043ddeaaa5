// The order of near-solutions.
#include "lattice/heuristic_vector.h"

#include <gtest/gtest.h>

#include <limits>
#include <sstream>

#include "lib/set.h"
#include "numbers/number.h"
#include "support/failure.h"

namespace latbox::testing {

using Deviation = HeuristicDeviation<dbl_t>;

Deviation infeasible(long fc, dbl_t fm, dbl_t tn, dbl_t len, unsigned char kind = 2) {
  Deviation d;
  d.fc = fc;
  d.fm = fm;
  d.tn = tn;
  d.len = len;
  d.kind = kind;
  return d;
}

Deviation feasible(dbl_t fs, dbl_t len, unsigned char kind = 2) {
  Deviation d(false);
  d.fs = fs;
  d.len = len;
  d.kind = kind;
  return d;
}

void expectOrder(const Deviation& best, const Deviation& worst) {
  EXPECT_TRUE(better(best, worst));
  EXPECT_FALSE(better(worst, best));
  EXPECT_FALSE(sameDeviation(best, worst));
}

void expectSame(const Deviation& a, const Deviation& b) {
  EXPECT_FALSE(better(a, b));
  EXPECT_FALSE(better(b, a));
  EXPECT_TRUE(sameDeviation(a, b));
}

TEST(HeuristicDeviationTest, DefaultIsTheWorstRecord) {
  for (const Deviation& d : {Deviation(), Deviation(true)}) {
    const dbl_t infinite = std::numeric_limits<dbl_t>::infinity();
    EXPECT_FALSE(d.f);
    EXPECT_EQ(d.fs, infinite);
    EXPECT_EQ(d.fm, infinite);
    EXPECT_EQ(d.fc, std::numeric_limits<long>::max());
    EXPECT_EQ(d.tn, infinite);
    EXPECT_EQ(d.worstIndex, 0);
    EXPECT_EQ(d.len, infinite);
    EXPECT_EQ(d.kind, 0);
  }
}

TEST(HeuristicDeviationTest, BestRecord) {
  const Deviation d(false);
  EXPECT_TRUE(d.f);
  EXPECT_EQ(d.fs, 0);
  EXPECT_EQ(d.fm, 0);
  EXPECT_EQ(d.fc, 0);
  EXPECT_EQ(d.tn, 0);
  EXPECT_EQ(d.len, 0);
  EXPECT_EQ(d.kind, 0);
}

TEST(HeuristicDeviationTest, ObjectIsNotBetterThanItself) {
  const Deviation d = infeasible(1, 2, 3, 4);
  EXPECT_FALSE(better(d, d));
  EXPECT_TRUE(sameDeviation(d, d));
  const Deviation copy = d;
  EXPECT_FALSE(better(d, copy));
  EXPECT_TRUE(sameDeviation(d, copy));
}

TEST(HeuristicDeviationTest, OneMissingKindFails) {
  const Deviation none, known = infeasible(1, 1, 1, 1, 1);
  EXPECT_FAILURE(better(none, known), "Heuristic deviation is not initialized!");
  EXPECT_FAILURE(better(known, none), "Heuristic deviation is not initialized!");
  EXPECT_FAILURE(sameDeviation(none, known), "Heuristic deviation is not initialized!");
}

TEST(HeuristicDeviationTest, TwoMissingKindsCompareByTheRest) {
  const Deviation worst, best(false);
  expectOrder(best, worst);
  const Deviation other;
  expectSame(worst, other);
}

TEST(HeuristicDeviationTest, InhomogeneousBeatsHomogeneous) {
  expectOrder(infeasible(90, 100, 1000, 1e6L, 2), feasible(0, 1, 1));
}

TEST(HeuristicDeviationTest, HomogeneousVectorsAreFirstOfAllShort) {
  expectOrder(infeasible(9, 9, 9, 1, 1), feasible(0, 2, 1));
  // Of equal length the rest decides.
  expectOrder(feasible(0, 2, 1), infeasible(9, 9, 9, 2, 1));
  expectOrder(infeasible(3, 9, 9, 2, 1), infeasible(4, 1, 1, 2, 1));
}

TEST(HeuristicDeviationTest, FeasibleBeatsInfeasible) {
  expectOrder(feasible(1e9L, 1e9L), infeasible(1, 1e-3L, 1e-3L, 1));
  // Without targets no vector is called feasible, whatever it misses.
  expectOrder(feasible(1e9L, 1e9L), infeasible(0, 0, 0, 1));
}

TEST(HeuristicDeviationTest, TargetEndsTheComparisonOfFeasibleVectors) {
  expectOrder(feasible(1, 100), feasible(2, 1));
  expectSame(feasible(1, 100), feasible(1 + EPS / 2, 1));
}

TEST(HeuristicDeviationTest, InfeasibleOrder) {
  expectOrder(infeasible(1, 100, 100, 100), infeasible(2, 1, 1, 1));
  expectOrder(infeasible(2, 1, 100, 100), infeasible(2, 2, 1, 1));
  expectOrder(infeasible(2, 2, 1, 100), infeasible(2, 2, 2, 1));
  expectOrder(infeasible(2, 2, 2, 1), infeasible(2, 2, 2, 2));
  expectSame(infeasible(2, 2, 2, 2), infeasible(2, 2 + EPS / 2, 2 - EPS / 2, 2 + EPS / 2));
}

TEST(HeuristicDeviationTest, InfiniteValuesBeatNothing) {
  const dbl_t infinite = std::numeric_limits<dbl_t>::infinity();
  expectSame(infeasible(2, infinite, infinite, infinite), infeasible(2, infinite, infinite, infinite));
  expectOrder(infeasible(2, 1e18L, infinite, infinite), infeasible(2, infinite, 1, 1));
}

TEST(HeuristicDeviationTest, TextForm) {
  std::ostringstream text;
  text << infeasible(3, 2.5L, 7, 11);
  EXPECT_EQ(text.str(), "[len,f,fs,fm,fc,tn] = 11 0 inf 2.5 3 7");
}

template <class T>
class HeuristicVectorTest : public ::testing::Test {};
using Types = ::testing::Types<dbl_t, QQ>;
TYPED_TEST_SUITE(HeuristicVectorTest, Types);

template <class T>
Vector<T> two(long a, long b) {
  Vector<T> v(2);
  v[1] = T(a);
  v[2] = T(b);
  return v;
}

template <class T>
HeuristicVector<T, dbl_t> measured(long a, dbl_t len) {
  HeuristicVector<T, dbl_t> h(two<T>(a, 0));
  h.deviation = infeasible(1, 1, 1, len, 1);
  return h;
}

TYPED_TEST(HeuristicVectorTest, FreshAndCleared) {
  HeuristicVector<TypeParam, dbl_t> h;
  const auto expectFresh = [&h] {
    EXPECT_EQ(h.MN, 0);
    EXPECT_EQ(h.secondsUntilDiscovered, -1);
    EXPECT_EQ(h.deviation.kind, 0);
    EXPECT_TRUE(isInfinite(h.targetNorm));
    EXPECT_TRUE(isInfinite(h.slackNorm));
  };
  expectFresh();
  h = measured<TypeParam>(1, 2);
  h.secondsUntilDiscovered = 8;
  h.targetNorm = h.slackNorm = TypeParam(1);
  h.clear();
  expectFresh();
}

TYPED_TEST(HeuristicVectorTest, ElementsAreTakenAndTheRestIsLeft) {
  auto h = measured<TypeParam>(1, 2);
  h.secondsUntilDiscovered = 8;
  h.targetNorm = TypeParam(5);
  h = two<TypeParam>(6, 7);
  EXPECT_EQ(h[2], TypeParam(7));
  EXPECT_EQ(h.secondsUntilDiscovered, 8);
  EXPECT_EQ(h.targetNorm, TypeParam(5));
  EXPECT_EQ(h.deviation.kind, 1);
}

TYPED_TEST(HeuristicVectorTest, OrderIsThatOfTheDeviations) {
  const auto shortOne = measured<TypeParam>(1, 1), longOne = measured<TypeParam>(2, 2);
  EXPECT_TRUE(shortOne < longOne);
  EXPECT_FALSE(longOne < shortOne);
  EXPECT_TRUE(better(shortOne, longOne));
  EXPECT_TRUE(shortOne.better(longOne));
  EXPECT_FALSE(longOne.better(shortOne));
}

TYPED_TEST(HeuristicVectorTest, FullCollectionKeepsTheBest) {
  SortedSet<HeuristicVector<TypeParam, dbl_t>> set;
  set.limit = 2;
  EXPECT_TRUE(set.insert(measured<TypeParam>(1, 3)));
  EXPECT_TRUE(set.insert(measured<TypeParam>(2, 2)));
  EXPECT_FALSE(set.insert(measured<TypeParam>(2, 2)));
  EXPECT_TRUE(set.insert(measured<TypeParam>(3, 1)));
  EXPECT_FALSE(set.insert(measured<TypeParam>(4, 9)));
  EXPECT_EQ(set.count, 2);
  EXPECT_EQ(set.head->value.deviation.len, 2);
  EXPECT_EQ(set.tail->value.deviation.len, 1);
}

}  // namespace latbox::testing
