// The two collections of good vectors and the best inhomogeneous vector.
#include "driver/report.h"
#include "lattice/support.h"
#include "params/statistics.h"
#include "program/memory.h"
#include "support/failure.h"
#include "support/lattice.h"

namespace latbox::testing {

// One equation with many solutions near by.
inline constexpr const char* KNAPSACK =
    "[ ] [ ] [ [ 3 5 7 11 13 17 ] ] [ 41 ] [ ] [ ] [ ] "
    "[ 0 0 0 0 0 0 ] [ 0 0 0 0 0 0 ] [ 3 3 3 3 3 3 ]";

template <class T>
class Collections : public ::testing::Test {
 public:
  using L = Lattice<T, dbl_t>;
  using H = HeuristicVector<T, dbl_t>;
  using Collection = SortedSet<H>;

  void SetUp() override { statisticsOf<T>() = Statistics(); }

  static void collectPoint(L& l, const std::string& point) { l.collect(latticeVector(l, point)); }

  // A homogeneous vector of this length in the one coordinate that is free for it.
  static Vector<T> homogeneous(const L& l, long length) {
    Vector<T> v = Vector<T>::zeros(l.dim);
    v[2] = T(length);
    return v;
  }
  // From worst to best, none twice, each of its kind, measured, in the lattice and within the limit.
  static void expectSound(L& l, const Collection& set, int kind) {
    EXPECT_LE(set.count, set.limit);
    long count = 0;
    for (auto* node = set.head; node != nullptr; node = node->next, ++count) {
      EXPECT_EQ(node->value.deviation.kind, kind);
      EXPECT_EQ(isZero(node->value[l.dim]), kind == 1);
      EXPECT_TRUE(l.isMember(node->value));
      EXPECT_FALSE(node->value * node->value > l.normBound);
      EXPECT_TRUE(sameDeviation(node->value.deviation, l.computeDeviation(node->value)));
      if (node->next == nullptr) continue;
      EXPECT_FALSE(node->value.better(node->next->value));
    }
    EXPECT_EQ(count, set.count);
  }
};
TYPED_TEST_SUITE(Collections, NumberTypes);

TYPED_TEST(Collections, FreshOnesHaveTheLimitOfTheOption) {
  Lattice<TypeParam, dbl_t> l;
  EXPECT_EQ(l.homogeneousVectors.limit, 100);
  EXPECT_EQ(l.inhomogeneousVectors.limit, 100);
}

TYPED_TEST(Collections, EachKindHasItsSet) {
  using T = TypeParam;
  auto l = latticeOf<T>(SMALL);
  this->collectPoint(*l, "[ 4 0 ]");
  l->collect(vectorOf<T>({4, 2, 0, 0}));
  l->collect(vectorOf<T>({4, -2, 0, -2}));
  ASSERT_EQ(l->homogeneousVectors.count, 1);
  EXPECT_EQ(shown<T>(l->homogeneousVectors.head->value), "[ 4 2 0 0 ]");
  EXPECT_EQ(l->homogeneousVectors.head->value.deviation.kind, 1);
  EXPECT_EQ(l->inhomogeneousVectors.count, 2);
}

TYPED_TEST(Collections, StampedWithTheRunTime) {
  auto l = latticeOf<TypeParam>(SMALL);
  statisticsOf<TypeParam>().discoveryStart -= 1000;
  this->collectPoint(*l, "[ 4 0 ]");
  EXPECT_GE(l->inhomogeneousVectors.head->value.secondsUntilDiscovered, 1000);
  EXPECT_LE(l->inhomogeneousVectors.head->value.secondsUntilDiscovered, 1100);
  l->collect(latticeVector(*l, "[ 3 1 ]"), nullptr, nullptr, foundAfter(0));
  EXPECT_EQ(l->inhomogeneousVectors.tail->value.secondsUntilDiscovered, 0);
}

TYPED_TEST(Collections, EqualVectorsEnterOnce) {
  auto l = latticeOf<TypeParam>(SMALL);
  for (int k = 0; k < 3; ++k) this->collectPoint(*l, "[ 4 0 ]");
  EXPECT_EQ(l->inhomogeneousVectors.count, 1);
}

TYPED_TEST(Collections, TooLongAVectorIsRefused) {
  auto l = latticeOf<TypeParam>(SMALL);  // 3 * (16 + 16 + 16 + 1)
  ASSERT_EQ(l->normBound, TypeParam(147));
  this->collectPoint(*l, "[ 4 4 ]");
  EXPECT_EQ(l->inhomogeneousVectors.count, 0);
  l->normBound = TypeParam(8);  // below a feasible one
  this->collectPoint(*l, "[ 1 1 ]");
  EXPECT_EQ(l->inhomogeneousVectors.count, 0);
  l->normBound = TypeParam(9);
  this->collectPoint(*l, "[ 1 1 ]");
  EXPECT_EQ(l->inhomogeneousVectors.count, 1);
}

TYPED_TEST(Collections, UnboundedLatticeTakesEveryLength) {
  using T = TypeParam;
  auto l = latticeOf<T>("[ ] [ ] [ ] [ ] [ [ 1 1 ] ] [ 1 ] [ 3 ] [ 0 0 ] [ 0 0 ] [ 4 inf ]");
  ASSERT_TRUE(isInfinite(l->normBound));
  this->collectPoint(*l, "[ 0 100000 ]");
  EXPECT_EQ(l->inhomogeneousVectors.count, 1);
}

TYPED_TEST(Collections, HundredAndFirstPushesOutTheWorst) {
  auto l = latticeOf<TypeParam>(SMALL);
  l->normBound = infinity<TypeParam>();
  for (long length = 101; length >= 2; --length) l->collect(this->homogeneous(*l, length));
  EXPECT_EQ(l->homogeneousVectors.count, 100);
  EXPECT_EQ(l->homogeneousVectors.head->value[2], TypeParam(101));
  l->collect(this->homogeneous(*l, 1));
  EXPECT_EQ(l->homogeneousVectors.count, 100);
  EXPECT_EQ(l->homogeneousVectors.head->value[2], TypeParam(100));
  EXPECT_EQ(l->homogeneousVectors.tail->value[2], TypeParam(1));
  l->collect(this->homogeneous(*l, 500));  // worse than all
  EXPECT_EQ(l->homogeneousVectors.head->value[2], TypeParam(100));
}

// As good as the worst of a full set: it enters behind that one, which then leaves.
TYPED_TEST(Collections, EquallyGoodAsTheWorstTakesItsPlace) {
  using T = TypeParam;
  auto l = latticeOf<T>(SMALL);
  l->params.collectLimit.set(1);
  l->collect(vectorOf<T>({0, 3, 0, 0}));
  l->collect(vectorOf<T>({0, 0, 3, 0}));
  ASSERT_EQ(l->homogeneousVectors.count, 1);
  EXPECT_EQ(shown<T>(l->homogeneousVectors.head->value), "[ 0 0 3 0 ]");
}

TYPED_TEST(Collections, ChangedLimitTakesEffectAtTheNextInsertion) {
  auto l = latticeOf<TypeParam>(SMALL);
  for (long length = 9; length >= 1; --length) l->collect(this->homogeneous(*l, length));
  l->params.collectLimit.set(3);
  EXPECT_EQ(l->homogeneousVectors.count, 9);
  l->collect(this->homogeneous(*l, 10));
  EXPECT_EQ(l->homogeneousVectors.count, 3);
  EXPECT_EQ(l->homogeneousVectors.head->value[2], TypeParam(3));
  l->params.collectLimit.set(5);
  l->collect(this->homogeneous(*l, 10));
  EXPECT_EQ(l->homogeneousVectors.count, 4);
}

TYPED_TEST(Collections, OddLimits) {
  auto l = latticeOf<TypeParam>(SMALL);
  l->normBound = infinity<TypeParam>();
  l->params.collectLimit.set(0);  // none
  for (long length = 1; length <= 150; ++length) l->collect(this->homogeneous(*l, length));
  EXPECT_EQ(l->homogeneousVectors.count, 150);
  l->params.collectLimit.set(-1);
  l->collect(this->homogeneous(*l, 1));
  EXPECT_EQ(l->homogeneousVectors.count, 1);
}

TYPED_TEST(Collections, GivenSetsStandInForTheOwnOnes) {
  using T = TypeParam;
  auto l = latticeOf<T>(SMALL);
  typename TestFixture::Collection a, b;
  l->params.collectLimit.set(1);
  for (long length = 1; length <= 5; ++length) l->collect(this->homogeneous(*l, length), &a, &b);
  l->collect(latticeVector(*l, "[ 4 0 ]"), &a, &b);
  EXPECT_EQ(a.count, 5);  // the limit of the option is not theirs
  EXPECT_EQ(a.limit, 0);
  EXPECT_EQ(b.count, 1);
  EXPECT_EQ(l->homogeneousVectors.count + l->inhomogeneousVectors.count, 0);
  l->collect(latticeVector(*l, "[ 3 0 ]"), &a, nullptr);
  EXPECT_EQ(l->inhomogeneousVectors.count, 1);
}

TYPED_TEST(Collections, IfBetter) {
  using T = TypeParam;
  auto l = latticeOf<T>(SMALL);
  typename TestFixture::Collection set;
  typename TestFixture::H zero(vectorOf<T>({0, 0, 0, 0})), v(latticeVector(*l, "[ 3 1 ]"));
  HeuristicDeviation<dbl_t> bound(true);
  bound.kind = KIND_INHOMOGENEOUS;
  EXPECT_FALSE(l->collectIfBetter(bound, zero, set));
  EXPECT_EQ(zero.deviation.kind, 0);  // not even measured
  EXPECT_TRUE(l->collectIfBetter(bound, v, set));
  EXPECT_EQ(v.deviation.kind, 2);
  EXPECT_EQ(v.deviation.fc, 1);
  EXPECT_GE(v.secondsUntilDiscovered, 0);
  EXPECT_TRUE(l->collectIfBetter(bound, v, set));  // it beats the bound, though the set has it
  EXPECT_EQ(set.count, 1);
  bound = v.deviation;
  EXPECT_FALSE(l->collectIfBetter(bound, v, set));
}

TYPED_TEST(Collections, UnmeasuredBoundFails) {
  using T = TypeParam;
  auto l = latticeOf<T>(SMALL);
  typename TestFixture::Collection set;
  typename TestFixture::H v(latticeVector(*l, "[ 3 1 ]"));
  EXPECT_FAILURE(l->collectIfBetter(HeuristicDeviation<dbl_t>(), v, set),
                 "Heuristic deviation is not initialized!");
}

TYPED_TEST(Collections, CheckOffersEveryLatticeVectorWithPairOrSieve) {
  using T = TypeParam;
  for (const auto& [pair, sieve] : {std::pair(false, false), {true, false}, {false, true}}) {
    auto l = latticeOf<T>(SMALL);
    l->params.pair.set(pair);
    l->params.sieve.set(sieve);
    l->params.sol.set(0);
    l->checkSolution(vectorOf<T>({4, 2, 0, 0}), NOW, false);
    l->checkSolution(latticeVector(*l, "[ 3 1 ]"), NOW, false);
    l->checkSolution(-latticeVector(*l, "[ 1 1 ]"), NOW, false);
    l->checkSolution(vectorOf<T>({4, 2, 1, 0}), NOW, false);  // not of the lattice
    EXPECT_EQ(l->homogeneousVectors.count, pair || sieve ? 1 : 0);
    EXPECT_EQ(l->inhomogeneousVectors.count, pair || sieve ? 2 : 0);
    if (!pair && !sieve) continue;
    EXPECT_EQ(shown<T>(l->inhomogeneousVectors.tail->value), "[ 0 -2 -2 1 ]");  // with the sign of inhomBase
  }
}

TYPED_TEST(Collections, BestInhomogeneousVectorIsKept) {
  using T = TypeParam;
  auto l = latticeOf<T>(SMALL);
  const auto& best = l->bestInhomogeneous;
  auto& count = statisticsOf<T>().inhomogeneousImprovements;
  l->offerInhomogeneous(latticeVector(*l, "[ 4 4 ]"), foundAfter(7));
  EXPECT_EQ(shown<T>(best), shown<T>(latticeVector(*l, "[ 4 4 ]")));
  EXPECT_EQ(best.secondsUntilDiscovered, 7);
  EXPECT_EQ(best.deviation.kind, 2);
  EXPECT_EQ(count, 1);
  l->offerInhomogeneous(latticeVector(*l, "[ 5 4 ]"));  // worse
  l->offerInhomogeneous(latticeVector(*l, "[ 4 4 ]"));  // no better
  EXPECT_EQ(count, 1);
  EXPECT_EQ(best.secondsUntilDiscovered, 7);
  l->offerInhomogeneous(latticeVector(*l, "[ 3 1 ]"));
  EXPECT_EQ(shown<T>(best), shown<T>(latticeVector(*l, "[ 3 1 ]")));
  EXPECT_NE(best.secondsUntilDiscovered, 7);
  EXPECT_EQ(best.deviation.fm, 4);
  EXPECT_EQ(count, 2);
}

// Its bounds are those of the vector with the positive sign.
TYPED_TEST(Collections, NegativeOfAnInhomogeneousVector) {
  using T = TypeParam;
  auto l = latticeOf<T>(SMALL);
  const Vector<T> v = latticeVector(*l, "[ 3 1 ]");
  l->offerInhomogeneous(-v);
  EXPECT_EQ(shown<T>(l->bestInhomogeneous), shown<T>(v));
  EXPECT_EQ(l->bestInhomogeneous.deviation.fc, 1);
}

TYPED_TEST(Collections, OtherMultiplesAreNoInhomogeneousVectors) {
  auto l = latticeOf<TypeParam>(SMALL);
  for (const long last : {0, 2, -2}) l->offerInhomogeneous(vectorOf<TypeParam>({0, 0, 0, last}));
  EXPECT_EQ(l->bestInhomogeneous.MN, 0);
}

TYPED_TEST(Collections, ImprovementsThatDoNotCount) {
  using T = TypeParam;
  for (const bool bench : {false, true}) {
    auto l = latticeOf<T>(SMALL);
    statisticsOf<T>() = Statistics();
    l->search.reinserting = !bench;
    if (bench) l->params.bench.set(0.5F);
    l->offerInhomogeneous(latticeVector(*l, "[ 3 1 ]"));
    EXPECT_EQ(l->bestInhomogeneous.MN, 4);
    EXPECT_EQ(statisticsOf<T>().inhomogeneousImprovements, 0);
  }
}

TYPED_TEST(Collections, NearMissOfTheCheckIsOffered) {
  using T = TypeParam;
  auto l = latticeOf<T>(SMALL);
  l->params.pair.set(false);
  l->checkSolution(vectorOf<T>({4, 2, 0, 0}), NOW, false);
  l->checkSolution(latticeVector(*l, "[ 1 1 ]"), NOW, false);  // feasible: no near miss
  EXPECT_EQ(l->bestInhomogeneous.MN, 0);
  l->checkSolution(-latticeVector(*l, "[ 3 1 ]"), foundAfter(3), false);
  EXPECT_EQ(shown<T>(l->bestInhomogeneous), shown<T>(latticeVector(*l, "[ 3 1 ]")));
  EXPECT_EQ(l->bestInhomogeneous.secondsUntilDiscovered, 3);
}

TYPED_TEST(Collections, ReportShowsTheBestInhomogeneousVector) {
  using T = TypeParam;
  auto l = latticeOf<T>(SMALL);
  l->params.verb.set(2);
  EXPECT_EQ(iterationReport(*l).find("Best inhomogenous vector"), std::string::npos);
  l->checkSolution(latticeVector(*l, "[ 3 1 ]"), foundAfter(3), false);
  const std::string text = iterationReport(*l);
  EXPECT_NE(text.find("Best inhomogenous vector: \n[ 8 2 -2 1 ] -- { 3 sec(s) } -- "
                      "{ [len,f,fs,fm,fc,tn] = 73 0 inf 4 1 4 }\n\n"),
            std::string::npos)
      << text;
  EXPECT_NE(text.find("\nInhomogenous improvements: 1\n"), std::string::npos);
}

TYPED_TEST(Collections, ChangesOfWeightLeaveThemAlone) {
  using T = TypeParam;
  auto l = latticeOf<T>(SMALL);
  this->collectPoint(*l, "[ 4 0 ]");
  l->collect(vectorOf<T>({4, 2, 0, 0}));
  l->setScale(1, T(3));
  l->setTranslation(2, T(1));
  EXPECT_EQ(l->homogeneousVectors.count, 1);
  EXPECT_EQ(l->inhomogeneousVectors.count, 1);
  this->expectSound(*l, l->inhomogeneousVectors, 2);
  l->resetScales(true, true);
  EXPECT_EQ(l->homogeneousVectors.count, 1);
}

TYPED_TEST(Collections, RegenerationCarriesTheInhomogeneousOnes) {
  using T = TypeParam;
  auto l = latticeOf<T>(SMALL_TARGET);
  l->collect(latticeVector(*l, "[ 2 2 ]"), nullptr, nullptr, foundAfter(5));
  l->collect(this->homogeneous(*l, 2));
  l->offerInhomogeneous(latticeVector(*l, "[ 4 1 ]"), foundAfter(6));
  l->checkSolution(latticeVector(*l, "[ 2 1 ]"), foundAfter(8), false);
  const long improvements = statisticsOf<T>().inhomogeneousImprovements;
  l->params.collectLimit.set(7);
  regenerateLattice(*l);
  EXPECT_EQ(l->homogeneousVectors.count, 0);  // by design
  this->expectSound(*l, l->inhomogeneousVectors, 2);
  EXPECT_EQ(l->inhomogeneousVectors.limit, 7);
  bool carried = false;
  for (auto* node = l->inhomogeneousVectors.head; node != nullptr; node = node->next)
    if (node->value == latticeVector(*l, "[ 2 2 ]")) carried = node->value.secondsUntilDiscovered == 5;
  EXPECT_TRUE(carried);
  EXPECT_EQ(shown<T>(l->bestInhomogeneous), shown<T>(latticeVector(*l, "[ 4 1 ]")));
  EXPECT_EQ(l->bestInhomogeneous.secondsUntilDiscovered, 6);
  EXPECT_EQ(statisticsOf<T>().inhomogeneousImprovements, improvements);
}

// Regression: a point that misses an equation came back as a member of the collections.
TYPED_TEST(Collections, WhatIsNotInTheLatticeDoesNotComeBack) {
  using T = TypeParam;
  auto l = latticeOf<T>("[ ] [ ] [ [ 1 1 1 ] ] [ 3 ] [ ] [ ] [ ] [ 0 0 0 ] [ 0 0 0 ] [ 2 2 2 ]");
  l->emptyCollections();
  typename TestFixture::Collection homogeneous, kept;
  for (const char* point : {"[ 1 1 1 ]", "[ 1 1 0 ]", "[ 3 1 -1 ]"})
    kept.append(typename TestFixture::H(Vector<T>(point)));
  l->normBound = T(100000);
  reinstate(*l, ConversionArray<Star<T>>(), {}, homogeneous, kept, 3);
  EXPECT_EQ(l->inhomogeneousVectors.count, 2);
  this->expectSound(*l, l->inhomogeneousVectors, 2);
}

TYPED_TEST(Collections, SearchFillsThemSoundly) {
  using T = TypeParam;
  auto l = latticeOf<T>(KNAPSACK);
  l->params.pair.set(true);
  l->params.sol.set(0);
  l->params.collectLimit.set(20);
  for (const long scale : {1, 3}) {
    l->setScale(1, T(scale));
    l->enumerate(nullptr);
    EXPECT_GT(l->homogeneousVectors.count, 1);
    EXPECT_GT(l->inhomogeneousVectors.count, 0);
    this->expectSound(*l, l->homogeneousVectors, 1);
    this->expectSound(*l, l->inhomogeneousVectors, 2);
  }
}

TEST(CollectionsLadder, ConvertWithThePrecision) {
  auto l = latticeOf<dbl_t>(KNAPSACK);
  l->params.pair.set(true);
  l->params.sol.set(0);
  l->enumerate(nullptr);
  Lattice<QQ, dbl_t> extended;
  extended.convertFrom(*l);
  ASSERT_EQ(extended.inhomogeneousVectors.count, l->inhomogeneousVectors.count);
  ASSERT_EQ(extended.homogeneousVectors.count, l->homogeneousVectors.count);
  Collections<QQ>::expectSound(extended, extended.inhomogeneousVectors, 2);
  Collections<QQ>::expectSound(extended, extended.homogeneousVectors, 1);
}

}  // namespace latbox::testing
