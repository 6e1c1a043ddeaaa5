// Sieving of the collections.
#include "heuristics/sieving.h"
#include "driver/small_program.h"
#include "lib/exceptions.h"
#include "lib/progress.h"
#include "params/statistics.h"
#include "pools.h"
#include "support/failure.h"

namespace latbox::testing {

template <class T>
using Candidate = HeuristicVector<T, dbl_t>;

// v, measured; with the remainders dropped where the combination is one of the first two.
template <class T>
Candidate<T> measured(Lattice<T, dbl_t>& l, Vector<T> v, bool dropRemainders) {
  for (long i = 1; i <= v.MN && dropRemainders; ++i)
    if (isZero(v[i])) v[i] = T(0);
  Candidate<T> h(v);
  h.deviation = l.computeDeviation(v);
  return h;
}

// The four combinations in their order, each measured anew.
template <class T>
bool reduceByDefinition(Lattice<T, dbl_t>& l, const Vector<T>& v, const Vector<T>& c,
                        const HeuristicDeviation<dbl_t>& bound, Collection<T>& next) {
  std::vector<Candidate<T>> tries{measured<T>(l, v - c, true), measured<T>(l, v + c, true)};
  if (!l.symmetricBounds) {
    tries.push_back(measured<T>(l, -v - c, false));
    tries.push_back(measured<T>(l, -v + c, false));
  }
  for (const auto& t : tries) {
    if (!better(t.deviation, bound)) continue;
    next.insert(t);
    return true;
  }
  return false;
}

// The worst inhomogeneous vector; false when there is none.
template <class T>
bool boundByDefinition(const Collection<T>& pool, HeuristicDeviation<dbl_t>& bound) {
  HeuristicDeviation<dbl_t> best(false);
  best.kind = KIND_INHOMOGENEOUS;
  bound = best;
  for (const auto* v = pool.head; v != nullptr; v = v->next)
    if (v->value.deviation.kind == KIND_INHOMOGENEOUS &&
        (better(bound, v->value.deviation) || sameDeviation(bound, v->value.deviation)))
      bound = v->value.deviation;
  return !sameDeviation(bound, best);
}

template <class T>
void roundsByDefinition(Lattice<T, dbl_t>& l, Collection<T>& pool) {
  Collection<T> next, centres;
  HeuristicDeviation<dbl_t> bound;
  while (boundByDefinition(pool, bound)) {
    next.clear();
    for (const auto* v = pool.head; v != nullptr; v = v->next) {
      bool passed = better(v->value.deviation, bound);
      if (passed) next.insert(v->value);
      for (const auto* c = centres.head; c != nullptr && !passed; c = c->next)
        passed = reduceByDefinition<T>(l, v->value, c->value, bound, next);
      if (!passed) centres.insert(v->value);
    }
    if (next.count == 0) return;
    pool = next;
  }
}

template <class T>
void sieveByDefinition(Lattice<T, dbl_t>& l) {
  Collection<T> pool = l.homogeneousVectors;
  for (const auto* v = l.inhomogeneousVectors.head; v != nullptr; v = v->next) pool.insert(v->value);
  roundsByDefinition(l, pool);
  const Candidate<T>* best = nullptr;
  for (const auto* v = pool.head; v != nullptr; v = v->next) {
    l.checkSolution(v->value, false, NOW, false);
    if (v->value.deviation.kind != KIND_INHOMOGENEOUS) continue;
    if (best == nullptr || better(v->value.deviation, best->deviation)) best = &v->value;
  }
  if (best != nullptr) l.offerInhomogeneous(*best);
}

template <class T>
class SieveTest : public ::testing::Test {
 public:
  SieveTest() { statisticsOf<T>() = Statistics(); }
  ~SieveTest() override { statisticsOf<T>() = Statistics(); }

  // A small lattice with these vectors in its collections.
  static LatticePointer<T> smallWith(const Rows& vectors) {
    auto lattice = latticeOf<T>(SMALL);
    lattice->params.sol.set(0);
    lattice->params.pair.set(false);
    for (const auto& v : vectors) lattice->collect(vectorOf<T>(v), nullptr, nullptr);
    return lattice;
  }
};
TYPED_TEST_SUITE(SieveTest, NumberTypes);

TYPED_TEST(SieveTest, AgreesWithTheDefinition) {
  using T = TypeParam;
  long changed = 0;
  for (unsigned long long seed = 1; seed <= 16; ++seed) {
    auto lattice = pooledLattice<T>(seed, 30);
    lattice->symmetricBounds = seed % 2 == 0;
    const auto before = contents<T>(lattice->inhomogeneousVectors);
    Lattice<T, dbl_t> expected(*lattice);
    sieveByDefinition(expected);
    sieve(*lattice);
    expectSameResults(*lattice, expected);
    if (contents<T>(lattice->inhomogeneousVectors) != before) ++changed;
  }
  EXPECT_GT(changed, 0);
}

TYPED_TEST(SieveTest, Repeats) {
  auto first = pooledLattice<TypeParam>(5, 60);
  Lattice<TypeParam, dbl_t> second(*first);
  for (int i = 0; i < 3; ++i) {
    sieve(*first);
    sieve(second);
  }
  expectSameResults(*first, second);
}

TYPED_TEST(SieveTest, CollectionsStayInOrderWithinTheirLimits) {
  auto lattice = pooledLattice<TypeParam>(3, 60);
  lattice->params.collectLimit.set(15);
  sieve(*lattice);
  expectInOrder(*lattice, lattice->homogeneousVectors, 1);
  expectInOrder(*lattice, lattice->inhomogeneousVectors, 2);
}

TYPED_TEST(SieveTest, EmptyCollections) {
  auto lattice = this->smallWith({});
  EXPECT_EQ(printedAt(*lattice, 2, [&] { sieve(*lattice); }), "|-> Sieving ( 0 vectors ) ...\n");
  EXPECT_EQ(lattice->solutions.MN, 0);
  EXPECT_EQ(lattice->bestInhomogeneous.MN, 0);
}

TYPED_TEST(SieveTest, HomogeneousVectorsAloneGoThroughTheCheck) {
  auto lattice = this->smallWith({{4, 2, 0, 0}, {4, 0, 2, 0}});
  const auto before = contents<TypeParam>(lattice->homogeneousVectors);
  // The check offers them to the collections again, which have lost them meanwhile only in this test.
  Lattice<TypeParam, dbl_t> other(*lattice);
  other.params.sieve.set(true);
  sieve(other);
  EXPECT_EQ(contents<TypeParam>(other.homogeneousVectors), before);
  EXPECT_EQ(other.inhomogeneousVectors.count, 0);
  EXPECT_EQ(other.bestInhomogeneous.MN, 0);
  EXPECT_EQ(other.solutions.MN, 0);
}

// Homogeneous vectors that stand among the inhomogeneous ones find their place by the check.
TYPED_TEST(SieveTest, EachVectorOfThePoolIsChecked) {
  auto lattice = this->smallWith({});
  for (const auto& row : Rows{{4, 2, 0, 0}, {0, 2, -2, 0}}) {
    Candidate<TypeParam> v(vectorOf<TypeParam>(row));
    v.deviation = lattice->computeDeviation(v);
    lattice->inhomogeneousVectors.append(v);
  }
  lattice->params.sieve.set(true);
  sieve(*lattice);
  EXPECT_EQ(contents<TypeParam>(lattice->homogeneousVectors),
            (std::vector<std::string>{"[ 4 2 0 0 ]", "[ 0 2 -2 0 ]"}));
}

TYPED_TEST(SieveTest, OneInhomogeneousVectorIsChecked) {
  auto lattice = this->smallWith({{0, -2, -2, 1}});
  sieve(*lattice);
  ASSERT_EQ(lattice->solutions.MN, 1);
  EXPECT_TRUE(lattice->solutions[1] == vectorOf<TypeParam>({0, -2, -2, 1}));
}

// The homogeneous vector is the first centre: a step towards it leaves no violation, and a second one is
// shorter still.
TYPED_TEST(SieveTest, CentreLeadsToASolution) {
  for (const Rows& pool : {Rows{{4, 0, 2, 0}, {-8, -4, -4, 1}}, Rows{{-4, 0, -2, 0}, {-8, -4, -4, 1}}}) {
    auto lattice = this->smallWith(pool);
    sieve(*lattice);
    ASSERT_EQ(lattice->solutions.MN, 1);
    EXPECT_EQ(shown<TypeParam>(lattice->solutions[1]), "[ 0 -4 0 1 ]");
  }
}

// With symmetric bounds v - c and v + c alone are tried, and that ends elsewhere.
TYPED_TEST(SieveTest, NegatedCombinationsNeedBoundsThatAreNotSymmetric) {
  using T = TypeParam;
  int different = 0;
  for (unsigned long long seed = 1; seed <= 30; ++seed) {
    auto lattice = pooledLattice<T>(seed, 15);
    Lattice<T, dbl_t> symmetric(*lattice);
    lattice->symmetricBounds = false;
    symmetric.symmetricBounds = true;
    Lattice<T, dbl_t> expected(symmetric);
    sieve(*lattice);
    sieve(symmetric);
    sieveByDefinition(expected);
    expectSameResults(symmetric, expected);
    if (contents<T>(symmetric.inhomogeneousVectors) != contents<T>(lattice->inhomogeneousVectors))
      ++different;
  }
  EXPECT_GT(different, 0);
}

// The sum or the difference is zero, which is homogeneous and beats nothing.
TYPED_TEST(SieveTest, VectorsThatAreEqualUpToSignLeaveNoZeroVector) {
  auto lattice = this->smallWith({{-8, -4, -4, 1}, {8, 4, 4, -1}});
  ASSERT_EQ(lattice->inhomogeneousVectors.count, 2);
  lattice->params.sieve.set(true);
  sieve(*lattice);
  EXPECT_EQ(lattice->homogeneousVectors.count, 0);
  EXPECT_EQ(lattice->solutions.MN, 0);
}

// Both negated combinations of the first round are feasible; the one that comes first leads elsewhere.
TYPED_TEST(SieveTest, DifferenceIsNegatedAfterTheSum) {
  auto lattice = this->smallWith({{0, 2, -2, 0}, {-4, 0, 2, -1}});
  sieve(*lattice);
  ASSERT_EQ(lattice->solutions.MN, 1);
  EXPECT_EQ(shown<TypeParam>(lattice->solutions[1]), "[ 4 -2 0 1 ]");
}

TYPED_TEST(SieveTest, RemaindersAreDropped) {
  using T = TypeParam;
  auto lattice = this->smallWith({{-8, -4, -4, 1}});
  Vector<T> v = vectorOf<T>({4, 0, 2, 0});
  v[1] += T(1) / powerOfTen<T>(11);
  lattice->collect(v, nullptr, nullptr);
  sieve(*lattice);
  ASSERT_EQ(lattice->solutions.MN, 1);
  EXPECT_EQ(shown<T>(lattice->solutions[1]), "[ 0 -4 0 1 ]");
  EXPECT_TRUE(isExactZero(lattice->solutions[1][1]));
}

TYPED_TEST(SieveTest, FirstOfEqualVectorsIsTheBest) {
  for (const Rows& pool : {Rows{{4, -2, 0, 1}, {4, 0, -2, 1}}, Rows{{4, 0, -2, 1}, {4, -2, 0, 1}}}) {
    auto lattice = this->smallWith(pool);
    sieve(*lattice);
    EXPECT_TRUE(lattice->bestInhomogeneous == vectorOf<TypeParam>(pool[0]));
  }
}

// Of records that are the same by the tolerance the last one is the bound, though the first be a little
// worse.
TYPED_TEST(SieveTest, BoundIsTheLastOfTheWorst) {
  auto lattice = this->smallWith({});
  dbl_t largest = 0.5L;
  for (const auto& row : Rows{{4, -2, 0, 1}, {4, 0, -2, 1}, {0, -2, -2, 1}}) {
    Candidate<TypeParam> v(vectorOf<TypeParam>(row));
    v.deviation.kind = KIND_INHOMOGENEOUS;
    v.deviation.fc = 1;
    v.deviation.fm = largest;
    lattice->inhomogeneousVectors.append(v);
    largest -= 0.6L * EPS;
  }
  ASSERT_TRUE(lattice->inhomogeneousVectors.tail->value.better(lattice->inhomogeneousVectors.head->value));
  sieve(*lattice);  // nothing beats the bound: the pool stays as it is
  EXPECT_EQ(lattice->solutions.MN, 3);
}

TYPED_TEST(SieveTest, PoolHasTheLimitOfTheCollections) {
  auto lattice = pooledLattice<TypeParam>(4, 60);
  lattice->params.pair.set(false);
  const long both = lattice->homogeneousVectors.count + lattice->inhomogeneousVectors.count;
  lattice->homogeneousVectors.limit = both;
  EXPECT_EQ(printedAt(*lattice, 2, [&] { sieve(*lattice); }),
            "|-> Sieving ( " + std::to_string(both) + " vectors ) ...\n");
  lattice->homogeneousVectors.limit = both - 5;
  EXPECT_EQ(printedAt(*lattice, 2, [&] { sieve(*lattice); }),
            "|-> Sieving ( " + std::to_string(both - 5) + " vectors ) ...\n");
  EXPECT_EQ(progressDepth(), 0);
}

TYPED_TEST(SieveTest, NoProgressLineAtVerbosityOne) {
  auto lattice = pooledLattice<TypeParam>(4, 20);
  for (const long verb : {0, 1}) EXPECT_EQ(printedAt(*lattice, verb, [&] { sieve(*lattice); }), "");
}

TYPED_TEST(SieveTest, BestOfThePoolIsOffered) {
  auto lattice = this->smallWith({{-8, -4, -4, 1}, {-12, -6, -4, 1}});
  lattice->bestInhomogeneous.clear();
  sieve(*lattice);
  EXPECT_EQ(shown<TypeParam>(lattice->bestInhomogeneous), "[ -8 -4 -4 1 ]");
}

// The rounds read the collections: the worst vectors in them stay, and nothing of the basis moves.
TYPED_TEST(SieveTest, BasisAndCollectionsAreLeftAlone) {
  auto lattice = pooledLattice<TypeParam>(6, 40);
  lattice->params.pair.set(false);
  const auto homogeneous = contents<TypeParam>(lattice->homogeneousVectors);
  const auto inhomogeneous = contents<TypeParam>(lattice->inhomogeneousVectors);
  const Matrix<TypeParam> basis = lattice->B;
  sieve(*lattice);
  EXPECT_EQ(contents<TypeParam>(lattice->homogeneousVectors), homogeneous);
  EXPECT_EQ(contents<TypeParam>(lattice->inhomogeneousVectors), inhomogeneous);
  EXPECT_TRUE(lattice->B == basis);
}

TEST(SieveDeathTest, VectorThatWasNotMeasured) {
  auto lattice = latticeOf<dbl_t>(SMALL);
  lattice->params.pair.set(false);
  lattice->collect(vectorOf<dbl_t>({-4, -2, -4, 1}), nullptr, nullptr);
  lattice->inhomogeneousVectors.append(HeuristicVector<dbl_t, dbl_t>(vectorOf<dbl_t>({-4, -4, -2, 1})));
  EXPECT_FAILURE(sieve(*lattice), "Heuristic deviation is not initialized!");
}

// A new target regenerates the lattice under the pool.
TEST(SieveRestart, LeavesTheLatticeReadyForTheNextRun) {
  statisticsStandard() = Statistics();
  SmallRun run(SMALL_TARGET);
  auto& lattice = run.y.standard;
  lattice.params.sol.set(0);
  lattice.params.verb.set(0);
  lattice.params.pair.set(false);
  lattice.finishEnabled = lattice.writeEnabled = true;
  lattice.collect(latticeVector(lattice, "[ 1 1 ]"), nullptr, nullptr);
  ASSERT_EQ(lattice.inhomogeneousVectors.count, 1);
  EXPECT_THROW(sieve(lattice), RestartException);
  EXPECT_TRUE(lattice.finishEnabled);
  EXPECT_TRUE(lattice.writeEnabled);
  EXPECT_FALSE(lattice.search.reinserting);
  EXPECT_TRUE(lattice.bestSlack.notEmpty());
  expectInOrder(lattice, lattice.inhomogeneousVectors, 2);
  lattice.emptyCollections();
  EXPECT_NO_THROW(sieve(lattice));
  statisticsStandard() = Statistics();
}

}  // namespace latbox::testing
