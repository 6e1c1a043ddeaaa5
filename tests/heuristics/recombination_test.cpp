// Pairwise recombination and the choice of its sample.
#include <algorithm>
#include <array>

#include "driver/small_program.h"
#include "heuristics/random_draw.h"
#include "heuristics/recombination.h"
#include "lib/exceptions.h"
#include "lib/progress.h"
#include "params/statistics.h"
#include "pools.h"
#include "support/rows.h"

namespace latbox::testing {

template <class T>
class SelectRandomTest : public ::testing::Test {
 public:
  Lattice<T, dbl_t> lattice;
  Collection<T> source, destination;

  static HeuristicVector<T, dbl_t> candidate(long i) {
    HeuristicVector<T, dbl_t> h(vectorOf<T>({i, 1}));
    h.deviation.kind = KIND_INHOMOGENEOUS;
    h.deviation.fc = 1000 - i;
    return h;
  }
  void fill(long n) {
    for (long i = 1; i <= n; ++i) source.insert(candidate(i));
  }
  void select(long pairLimit, unsigned seed = 42) {
    std::srand(seed);
    lattice.params.pairLimit.set(pairLimit);
    selectRandom(lattice, source, destination);
  }
};
TYPED_TEST_SUITE(SelectRandomTest, NumberTypes);

TYPED_TEST(SelectRandomTest, EmptySourceChangesNothing) {
  this->destination.limit = 7;
  this->select(10);
  EXPECT_EQ(this->destination.count, 0);
  EXPECT_EQ(this->destination.limit, 7);
}

TYPED_TEST(SelectRandomTest, LimitAboveTheCountTakesAllWithoutADraw) {
  this->fill(6);
  std::srand(42);
  const int first = std::rand();
  this->select(10);
  EXPECT_EQ(std::rand(), first);
  EXPECT_EQ(contents<TypeParam>(this->destination), contents<TypeParam>(this->source));
  EXPECT_EQ(this->destination.limit, 6);
}

TYPED_TEST(SelectRandomTest, TakesAsManyAsTheLimitInOrder) {
  this->fill(50);
  for (const long limit : {1L, 3L, 10L, 26L, 49L, 50L}) {
    this->destination.clear();
    this->select(limit);
    EXPECT_EQ(this->destination.count, limit);
    EXPECT_EQ(this->destination.limit, limit);
    long before = 0;
    for (const auto* node = this->destination.head; node != nullptr; node = node->next) {
      EXPECT_TRUE(node->value[1] > TypeParam(before));
      before = static_cast<long>(toDouble(node->value[1]));
    }
  }
}

TYPED_TEST(SelectRandomTest, LimitBelowOneSelectsNothing) {
  this->fill(5);
  for (const long limit : {0L, -1L, -10L}) {
    this->select(limit);
    EXPECT_EQ(this->destination.count, 0);
  }
}

TYPED_TEST(SelectRandomTest, EachVectorHasItsChance) {
  this->fill(20);
  long seen[21] = {};
  for (unsigned seed = 1; seed <= 200; ++seed) {
    this->destination.clear();
    this->select(5, seed);
    for (const auto* node = this->destination.head; node != nullptr; node = node->next)
      ++seen[static_cast<long>(toDouble(node->value[1]))];
  }
  for (long i = 1; i <= 20; ++i) EXPECT_GT(seen[i], 10) << i;
}

TYPED_TEST(SelectRandomTest, SameSeedSameChoice) {
  this->fill(40);
  this->select(10, 7);
  const auto first = contents<TypeParam>(this->destination);
  this->destination.clear();
  this->select(10, 7);
  EXPECT_EQ(contents<TypeParam>(this->destination), first);
  this->destination.clear();
  this->select(10, 8);
  EXPECT_NE(contents<TypeParam>(this->destination), first);
}

// One draw in 1..step for each vector that is not held yet; each pass accepts more.
TYPED_TEST(SelectRandomTest, DrawsAsThePassesSay) {
  this->fill(9);
  for (unsigned seed = 1; seed <= 20; ++seed) {
    std::srand(seed);
    std::vector<bool> taken(10, false);
    long count = 0;
    for (long step = 3; count < 3; --step)
      for (std::size_t i = 1; i <= 9 && count < 3; ++i)
        if (!taken[i] && rand_eq(1L, step) == 1) {
          taken[i] = true;
          ++count;
        }
    this->destination.clear();
    this->select(3, seed);
    for (const auto* node = this->destination.head; node != nullptr; node = node->next)
      EXPECT_TRUE(taken[static_cast<std::size_t>(toDouble(node->value[1]))]);
    EXPECT_EQ(this->destination.count, 3);
  }
}

TYPED_TEST(SelectRandomTest, FullDestinationStaysAsItIs) {
  this->fill(5);
  this->destination.insert(this->candidate(100));
  this->destination.insert(this->candidate(101));
  this->select(2);
  EXPECT_EQ(contents<TypeParam>(this->destination), (std::vector<std::string>{"[ 100 1 ]", "[ 101 1 ]"}));
}

TYPED_TEST(SelectRandomTest, WhatTheDestinationHoldsIsNotTakenTwice) {
  this->fill(3);
  this->destination.insert(this->candidate(2));
  this->select(3);
  EXPECT_EQ(contents<TypeParam>(this->destination), contents<TypeParam>(this->source));
}

// What is nearly held is drawn for, and refused at the door; what is held exactly is passed over.
TYPED_TEST(SelectRandomTest, NearlyEqualVectorsTakeADraw) {
  using T = TypeParam;
  auto nearly = this->candidate(1);
  nearly[1] += T(1) / T(10000000000L);
  const HeuristicVector<T, dbl_t> vectors[] = {this->candidate(1), nearly, this->candidate(1),
                                               this->candidate(2)};
  for (const auto& v : vectors) this->source.append(v);
  for (unsigned seed = 1; seed <= 20; ++seed) {
    // The first two steps: 2 and 1. In the second no draw is taken from the generator.
    std::srand(seed);
    int held = -1;
    for (int i = 0; i < 3; ++i) {
      const bool exactly = held >= 0 && (i == held || (i + held) % 2 == 0);
      if (!exactly && rand_eq(1L, 2L) == 1 && held < 0) held = i;
    }
    const bool last = rand_eq(1L, 2L) == 1;
    const int next = std::rand();
    this->destination.clear();
    this->select(2, seed);
    EXPECT_EQ(this->destination.count, 2) << seed;
    EXPECT_EQ(std::rand(), next) << seed << (last ? " in one pass" : " in two");
  }
}

// Such vectors never enter the destination twice: without an end after the last pass it would never be full.
TYPED_TEST(SelectRandomTest, DuplicatesEndWithTheLastPass) {
  this->source.append(this->candidate(1));
  this->source.append(this->candidate(1));
  auto nearly = this->candidate(1);
  nearly[1] += TypeParam(1) / TypeParam(10000000000L);
  this->source.append(nearly);
  this->select(3);
  EXPECT_EQ(this->destination.count, 1);
}

// ---

// Each sign pair by itself, each measure anew. Returns the count.
template <class T>
long recombineByDefinition(Lattice<T, dbl_t>& l) {
  Collection<T> homogeneous, inhomogeneous;
  selectRandom(l, l.homogeneousVectors, homogeneous);
  selectRandom(l, l.inhomogeneousVectors, inhomogeneous);
  homogeneous.limit = inhomogeneous.limit = 0;
  const Matrix<T> rows = l.unscaled(l.B);
  for (long i = 1; i <= l.rank; ++i) l.collect(rows[i], &homogeneous, &inhomogeneous);
  long count = 0;
  for (auto* a = homogeneous.head; a != nullptr; a = a->next)
    for (auto* b = inhomogeneous.head; b != nullptr; b = b->next)
      for (const long sa : {-1L, 1L})
        for (const long sb : {-1L, 1L}) {
          const Vector<T> candidate = a->value * T(sa) + b->value * T(sb);
          if (sa == 1) l.checkSolution(candidate, false, NOW, false);
          const auto d = l.computeDeviation(candidate);
          const auto e = l.computeDeviation(-candidate);
          const auto& bound = b->value.deviation;
          if (better(d, bound) || (!l.symmetricBounds && better(e, bound))) ++count;
        }
  return count;
}

template <class T>
class RecombinationTest : public ::testing::Test {
 public:
  RecombinationTest() { statisticsOf<T>() = Statistics(); }
  ~RecombinationTest() override { statisticsOf<T>() = Statistics(); }

  static long counted() { return static_cast<long>(statisticsOf<T>().pairwiseCollections); }
  static void run(Lattice<T, dbl_t>& lattice, unsigned seed = 42) {
    std::srand(seed);
    pairwiseRecombination(lattice);
  }
};
TYPED_TEST_SUITE(RecombinationTest, NumberTypes);

TYPED_TEST(RecombinationTest, AgreesWithTheDefinition) {
  using T = TypeParam;
  long total = 0;
  for (unsigned long long seed = 1; seed <= 12; ++seed) {
    auto lattice = pooledLattice<T>(seed, 25);
    lattice->symmetricBounds = seed % 2 == 0;
    lattice->params.pairLimit.set(std::array{3L, 10L, 1L}[seed % 3]);
    Lattice<T, dbl_t> expected(*lattice);
    std::srand(42);
    const long count = recombineByDefinition(expected);
    const long before = this->counted();
    this->run(*lattice);
    EXPECT_EQ(this->counted() - before, count) << seed;
    expectSameResults(*lattice, expected);
    total += count;
  }
  EXPECT_GT(total, 0);
}

TYPED_TEST(RecombinationTest, CollectionsStayInOrderWithinTheirLimits) {
  auto lattice = pooledLattice<TypeParam>(3, 40);
  lattice->params.collectLimit.set(12);
  this->run(*lattice);
  EXPECT_EQ(lattice->inhomogeneousVectors.count, 12);
  expectInOrder(*lattice, lattice->homogeneousVectors, 1);
  expectInOrder(*lattice, lattice->inhomogeneousVectors, 2);
}

TYPED_TEST(RecombinationTest, Repeats) {
  auto first = pooledLattice<TypeParam>(5, 60);
  Lattice<TypeParam, dbl_t> second(*first);
  for (int i = 0; i < 3; ++i) {
    this->run(*first);
    this->run(second);
  }
  expectSameResults(*first, second);
}

// Neither row is feasible: (0, 0) misses the row of the program, and the others carry no point.
TYPED_TEST(RecombinationTest, FindsSolutionsAsSums) {
  using T = TypeParam;
  auto lattice = latticeOf<T>(SMALL);
  lattice->params.sol.set(0);
  rows(*lattice).B = matrixOf<T>({{-8, -4, -4, 1}, {4, 2, 0, 0}, {4, 0, 2, 0}});
  this->run(*lattice);
  std::vector<std::string> found;
  for (long i = 1; i <= lattice->solutions.MN; ++i) found.push_back(shown<T>(lattice->solutions[i]));
  std::sort(found.begin(), found.end());
  EXPECT_EQ(found, (std::vector<std::string>{"[ -4 -2 -4 1 ]", "[ -4 -4 -2 1 ]"}));
  EXPECT_EQ(this->counted(), 4);  // each sum under both signs
}

// What a collection holds reaches further than the basis alone.
TYPED_TEST(RecombinationTest, CollectedVectorsTakePart) {
  using T = TypeParam;
  auto lattice = latticeOf<T>(SMALL);
  lattice->params.sol.set(0);
  rows(*lattice).B = matrixOf<T>({{-8, -4, -4, 1}, {4, 2, 0, 0}, {4, 0, 2, 0}});
  lattice->params.pair.set(false);
  lattice->collect(vectorOf<T>({8, 2, 2, 0}), nullptr, nullptr);
  this->run(*lattice);
  EXPECT_EQ(lattice->solutions.MN, 3);
  EXPECT_TRUE(lattice->solutions[1] == vectorOf<T>({0, -2, -2, 1}) ||
              lattice->solutions[2] == vectorOf<T>({0, -2, -2, 1}) ||
              lattice->solutions[3] == vectorOf<T>({0, -2, -2, 1}));
}

TYPED_TEST(RecombinationTest, EmptyPoolFormsNoCandidate) {
  using T = TypeParam;
  for (const long last : {0L, 1L}) {
    Lattice<T, dbl_t> lattice;
    setBasis(lattice, matrixOf<T>({{1, 0, last}, {0, 1, last}}));
    lattice.normBound = T(100);
    lattice.params.pair.set(true);
    this->run(lattice);
    EXPECT_EQ(this->counted(), 0);
    EXPECT_EQ(lattice.homogeneousVectors.count, 0);
    EXPECT_EQ(lattice.inhomogeneousVectors.count, 0);
  }
}

TYPED_TEST(RecombinationTest, TooLongRowsOfTheBasisStayOut) {
  using T = TypeParam;
  Lattice<T, dbl_t> lattice;
  setBasis(lattice, matrixOf<T>({{1, 0, 0}, {0, 10, 1}}));
  lattice.params.pair.set(true);
  lattice.normBound = T(100);  // the second row has 101
  this->run(lattice);
  EXPECT_EQ(lattice.inhomogeneousVectors.count, 0);
  lattice.normBound = T(102);
  this->run(lattice);
  EXPECT_EQ(lattice.inhomogeneousVectors.count, 2);
}

TYPED_TEST(RecombinationTest, TrimmingIsUndone) {
  auto plain = pooledLattice<TypeParam>(7, 30);
  Lattice<TypeParam, dbl_t> trimmed(*plain);
  trimmed.setScale(2, TypeParam(3));
  trimmed.setScale(trimmed.dim, TypeParam(2));
  trimmed.setTranslation(1, TypeParam(5));
  this->run(*plain);
  const long count = this->counted();
  this->run(trimmed);
  EXPECT_EQ(this->counted(), 2 * count);
  expectSameResults(*plain, trimmed);
}

TYPED_TEST(RecombinationTest, BasisIsLeftAlone) {
  auto lattice = pooledLattice<TypeParam>(9, 30);
  const Matrix<TypeParam> before = lattice->B;
  this->run(*lattice);
  EXPECT_TRUE(lattice->B == before);
}

TYPED_TEST(RecombinationTest, LimitOfZeroRecombinesTheBasis) {
  auto lattice = pooledLattice<TypeParam>(11, 30);
  auto bare = pooledLattice<TypeParam>(11, 30);
  bare->emptyCollections();
  lattice->params.pairLimit.set(0);
  this->run(*lattice);
  const long count = this->counted();
  this->run(*bare);
  EXPECT_EQ(this->counted(), 2 * count);
}

TYPED_TEST(RecombinationTest, ProgressLineAboveVerbosityOne) {
  auto lattice = pooledLattice<TypeParam>(1, 10);
  for (const long verb : {0, 1, 2}) {
    EXPECT_EQ(printedAt(*lattice, verb, [&] { this->run(*lattice); }),
              verb > 1 ? "|-> Pairwise recombination ... \n" : "");
  }
  EXPECT_EQ(progressDepth(), 0);
}

TYPED_TEST(RecombinationTest, ProgressLineStandsBeforeTheLookAtThePools) {
  Lattice<TypeParam, dbl_t> empty;
  EXPECT_EQ(printedAt(empty, 2, [&] { pairwiseRecombination(empty); }), "|-> Pairwise recombination ... \n");
  EXPECT_EQ(progressDepth(), 0);
}

// A new target regenerates the lattice in the middle of the pools.
TEST(RecombinationRestart, LeavesTheLatticeReadyForTheNextRun) {
  statisticsStandard() = Statistics();
  const SmallRun run(SMALL_TARGET);
  Lattice<dbl_t, dbl_t>& lattice = const_cast<SmallRun&>(run).y.standard;
  lattice.params.sol.set(0);
  lattice.params.verb.set(0);
  lattice.params.pair.set(true);
  lattice.finishEnabled = true;
  lattice.writeEnabled = true;
  int restarts = 0;
  for (int i = 0; i < 20; ++i) {
    try {
      lattice.lll(1, 0, 0);
      pairwiseRecombination(lattice);
    } catch (const RestartException&) {
      ++restarts;
    }
    EXPECT_TRUE(lattice.finishEnabled);
    EXPECT_TRUE(lattice.writeEnabled);
    EXPECT_FALSE(lattice.search.reinserting);
    expectInOrder(lattice, lattice.homogeneousVectors, 1);
    expectInOrder(lattice, lattice.inhomogeneousVectors, 2);
  }
  EXPECT_GT(restarts, 0);
  statisticsStandard() = Statistics();
}

}  // namespace latbox::testing
