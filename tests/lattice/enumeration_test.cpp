// Block enumeration: BKZ and the search for close vectors.
#include "lattice/support.h"

#include <cmath>
#include <functional>

#include "lib/os/clock.h"
#include "lib/progress.h"
#include "params/statistics.h"
#include "support/lattice.h"

namespace latbox::testing {

// A clock that the search reads once per node: counts its calls, and may advance at each.
struct StandInClock {
  static inline long calls = 0;
  static inline long step = 0;                // seconds per call
  static inline long jumpAt = 1'000'000'000;  // from this call on it is a second later
  static long read() {
    ++calls;
    return step * calls + (calls >= jumpAt ? 1 : 0);
  }
  StandInClock() {
    calls = 0;
    step = 0;
    jumpAt = 1'000'000'000;
    setClock(read);
  }
  ~StandInClock() { setClock(nullptr); }
  StandInClock(const StandInClock&) = delete;
  StandInClock& operator=(const StandInClock&) = delete;
};

template <class T>
class EnumerationTest : public ::testing::Test {
 public:
  EnumerationTest() { statisticsOf<T>() = Statistics(); }

  void start(const Rows& rows, long beta, long eprune = 0) {
    raw = matrixOf<T>(rows);
    setBasis(lattice, raw);
    lattice.params.verb.set(0);
    lattice.params.beta.set(beta);
    lattice.params.eprune.set(eprune);
    lattice.params.btime.set(0);
    lattice.params.deep.set(false);
    lattice.params.consistency.set(true);
    keepNoNearSolutions();
  }
  // A near-solution that is kept reads the clock for its stamp; none is better than this one.
  void keepNoNearSolutions() {
    lattice.bestInhomogeneous = lattice.B[1];
    lattice.bestInhomogeneous.deviation = HeuristicDeviation<dbl_t>(false);
    lattice.bestInhomogeneous.deviation.kind = KIND_INHOMOGENEOUS;
  }
  // Keeps the sweeps from touching the basis, so that a block has something to find.
  void markSwept() {
    lattice.updateGso(1, 0);
    for (long i = 1; i <= lattice.rank; ++i) setWord(lattice, i, STATUS_GSO | STATUS_REDUCED | STATUS_SWEPT);
  }
  void expectSameLattice() {
    EXPECT_TRUE(lattice.TT[lattice.TT.MN] * lattice.B_save == lattice.unscaled(lattice.B));
    EXPECT_EQ(gramDeterminant(exact(lattice.B)), gramDeterminant(exact(raw)));
  }
  void expectRow(long i, const std::vector<long>& wanted) {
    EXPECT_EQ(shown(lattice.B[i]), shown(vectorOf<T>(wanted)));
  }

  Lattice<T, dbl_t> lattice;
  Matrix<T> raw;
};
TYPED_TEST_SUITE(EnumerationTest, NumberTypes);

const Rows STEPS = {{3, 0, 0}, {0, 2, 0}, {0, 0, 1}};
const Rows IDENTITY = {{1, 0, 0}, {0, 1, 0}, {0, 0, 1}};

// All combinations with coefficients -range..range, but for zero.
void forAllCombinations(const Matrix<dbl_t>& B, long range,
                        const std::function<void(const Vector<dbl_t>&)>& visit) {
  Vector<dbl_t> v(B.N);
  v.setZero();
  const std::function<void(long)> extend = [&](long i) {
    if (i == 0) {
      visit(v);
      return;
    }
    const Vector<dbl_t> before = v;
    for (long p = 1; p <= B.N; ++p) v[p] -= static_cast<dbl_t>(range) * B[i][p];
    for (long c = -range; c <= range; ++c) {
      extend(i - 1);
      for (long p = 1; p <= B.N; ++p) v[p] += B[i][p];
    }
    v = before;
  };
  extend(B.M);
}

template <class T>
Matrix<dbl_t> plain(const Matrix<T>& m) {
  Matrix<dbl_t> result;
  result.assignConverted(m, [](const T& x) { return toDouble(x); });
  return result;
}

// Squared length of a shortest non-zero vector, from a reduced basis.
template <class T>
dbl_t shortestSquare(const Matrix<T>& reduced, long range) {
  dbl_t best = INFINITY;
  forAllCombinations(plain(reduced), range, [&](const Vector<dbl_t>& v) {
    const dbl_t square = v * v;
    if (square > 0.5L && square < best) best = square;
  });
  return best;
}

// Rows with small entries everywhere: the reduced basis is seldom the shortest.
Rows denseRows(long n, std::uint64_t seed) {
  Draws draw(seed);
  Rows rows(static_cast<std::size_t>(n), std::vector<long>(static_cast<std::size_t>(n)));
  for (auto& row : rows)
    for (long& x : row) x = draw.next(-60, 60);
  return rows;
}

TYPED_TEST(EnumerationTest, WholeLatticeBlockFindsAShortestVector) {
  for (long n = 3; n <= 8; ++n) {
    for (std::uint64_t seed = 1; seed <= 3; ++seed) {
      for (const bool dense : {true, false}) {
        this->start(dense ? denseRows(n, 10 * seed) : knapsackRows(n, 1000, seed), n);
        this->lattice.enumerate(nullptr);
        this->expectSameLattice();
        const QQ found = exact(this->lattice.B)[1] * exact(this->lattice.B)[1];
        EXPECT_EQ(toDouble(found), shortestSquare(this->lattice.B, n > 6 ? 1 : 2)) << n << " " << seed;
      }
    }
  }
}

// Squared length of a shortest vector of the lattice projected orthogonal to the first j - 1 rows, over the
// rows j..k: computed from an exact orthogonalisation.
dbl_t shortestProjected(const Matrix<QQ>& B, long j, long k) {
  Matrix<QQ> star = B;
  Matrix<QQ> projected(k - j + 1, B.N);
  for (long i = 1; i <= k; ++i) {
    if (i >= j) projected[i - j + 1] = B[i];
    for (long l = 1; l < i; ++l) {
      const QQ mu = (B[i] * star[l]) / (star[l] * star[l]);
      star[i] -= star[l] * mu;
      if (i >= j && l < j) projected[i - j + 1] -= star[l] * mu;
    }
  }
  dbl_t best = INFINITY;
  Matrix<dbl_t> rows = plain(projected);
  forAllCombinations(rows, 2, [&](const Vector<dbl_t>& v) {
    const dbl_t square = v * v;
    if (square > 1e-6L && square < best) best = square;
  });
  return best;
}

bool isBlockReduced(const Matrix<QQ>& B, long beta) {
  for (long j = 1; j < B.M; ++j) {
    const long k = std::min(j + beta - 1, B.M);
    if (shortestProjected(B, j, k) < (1 - 2e-9L) * shortestProjected(B, j, j)) return false;
  }
  return true;
}

TYPED_TEST(EnumerationTest, ResultIsBlockReduced) {
  for (std::uint64_t seed = 1; seed <= 4; ++seed) {
    this->start(denseRows(9, seed), 4);
    EXPECT_FALSE(isBlockReduced(exact(this->raw), 4));
    this->lattice.enumerate(nullptr);
    EXPECT_TRUE(isBlockReduced(exact(this->lattice.B), 4)) << seed;
    EXPECT_TRUE(isReduced(exact(this->lattice.B))) << seed;
    this->expectSameLattice();
  }
}

TYPED_TEST(EnumerationTest, PrunedRunsKeepTheLattice) {
  for (long eprune = -1; eprune <= 4; ++eprune) {
    for (const bool deep : {false, true}) {
      this->start(denseRows(10, 3), 6, eprune);
      this->lattice.params.deep.set(deep);
      this->lattice.enumerate(nullptr);
      this->expectSameLattice();
    }
  }
}

TEST(EnumerationBothTypes, SameReducedBasisOnIntegers) {
  for (const long n : {6, 11, 16}) {
    for (const long eprune : {0, 1, 2, 3}) {
      Lattice<dbl_t, dbl_t> fast;
      Lattice<QQ, dbl_t> slow;
      const auto prepare = [&](auto& lattice, const auto& basis) {
        setBasis(lattice, basis);
        lattice.params.verb.set(0);
        lattice.params.beta.set(8);
        lattice.params.eprune.set(eprune);
        lattice.enumerate(nullptr);
      };
      const Rows rows = knapsackRows(n, 3000000, static_cast<std::uint64_t>(n));
      prepare(fast, matrixOf<dbl_t>(rows));
      prepare(slow, matrixOf<QQ>(rows));
      EXPECT_TRUE(exact(fast.B) == slow.B) << n << " eprune " << eprune;
    }
  }
}

TYPED_TEST(EnumerationTest, RunsRepeat) {
  this->start(denseRows(12, 8), 6);
  this->lattice.enumerate(nullptr);
  const auto once = this->lattice.B;
  this->start(denseRows(12, 8), 6);
  this->lattice.enumerate(nullptr);
  EXPECT_TRUE(this->lattice.B == once);
}

// The clock is read by the sweep, at the start of run and block, and once per node.
constexpr long READS_BEFORE_THE_NODES = 3;

TYPED_TEST(EnumerationTest, BetaAboveTheRankIsTheRankAndOneBlock) {
  for (const long beta : {3L, 4L, 1000L}) {
    this->start(IDENTITY, beta);
    const StandInClock clock;
    this->lattice.enumerate(nullptr);
    // Each of the three stages fails at its first node.
    EXPECT_EQ(clock.calls, READS_BEFORE_THE_NODES + 3) << beta;
  }
}

TYPED_TEST(EnumerationTest, WholeLatticeBlockEndsTheRunAfterAFindToo) {
  this->start(STEPS, 1000);
  this->markSwept();
  this->lattice.enumerate(nullptr);
  // No sweep follows the insertion.
  this->expectRow(1, {0, 0, 1});
  this->expectRow(2, {3, 0, 0});
  this->expectRow(3, {0, 2, 0});
}

TYPED_TEST(EnumerationTest, SmallBlocksDoTheSweepsAlone) {
  const Rows rows = knapsackRows(8, 100000, 4);
  this->start(rows, 2);
  do this->lattice.lll(1, 0, 0);
  while (this->lattice.sweepSkipped != 0);
  const auto swept = this->lattice.B;
  for (const long beta : {2L, 1L, 0L, -3L}) {
    this->start(rows, beta);
    this->lattice.interval_tt = 100;
    this->lattice.enumerate(nullptr);
    EXPECT_TRUE(this->lattice.B == swept) << beta;
  }
  this->start(STEPS, 2);
  this->markSwept();
  const auto target = vectorOf<TypeParam>({1, 1, 1});
  this->lattice.enumerate(&target);
  EXPECT_TRUE(this->lattice.B == this->raw);
}

TYPED_TEST(EnumerationTest, RankOneAndRankZero) {
  this->start({{5, 2}}, 20);
  this->lattice.enumerate(nullptr);
  this->expectRow(1, {5, 2});
  const auto target = vectorOf<TypeParam>({5, 1});
  this->lattice.enumerate(&target);
  this->expectRow(1, {5, 2});
  this->lattice.resizeLattice(0, 0);
  this->lattice.enumerate(nullptr);
  EXPECT_EQ(this->lattice.rank, 0);
}

TYPED_TEST(EnumerationTest, FirstSweepIsRepeatedWhilePositionsWereSkipped) {
  this->start(knapsackRows(8, 1000000, 4), 2);
  this->lattice.interval_tt = 1;
  this->lattice.enumerate(nullptr);
  EXPECT_EQ(this->lattice.sweepSkipped, 0);
  EXPECT_TRUE(isReduced(exact(this->lattice.B)));
}

TYPED_TEST(EnumerationTest, FirstSweepThatTheTimeEndedIsNotRepeated) {
  this->start(STEPS, 2);
  this->lattice.interval_tt = 1;
  this->lattice.params.btime.set(3);
  StandInClock clock;
  clock.step = 1;
  this->lattice.enumerate(nullptr);
  // The sweep reads the clock at its start and at each of three positions, the second of which it skips.
  EXPECT_EQ(clock.calls, 1 + 3 + 1);
  EXPECT_TRUE(this->lattice.sweepStopped);
  EXPECT_EQ(this->lattice.sweepSkipped, 1);
}

// Less than one in a thousand million is no gain, and such a vector does not enter.
TYPED_TEST(EnumerationTest, GainWithinTheToleranceIsNoFind) {
  const Rows rows = {{100000, 0, 0, 0, 0, 0, 0}, {0, 99999, 447, 13, 4, 2, 0}, {0, 0, 0, 0, 0, 0, 200000}};
  this->start(rows, 3);
  this->markSwept();
  this->lattice.enumerate(nullptr);
  EXPECT_EQ(this->lattice.enumBound, 9999999999.0L);
  EXPECT_TRUE(this->lattice.B == this->raw);
}

TYPED_TEST(EnumerationTest, FoundBasisVectorMovesAndNoNewOneArises) {
  this->start(STEPS, 3);
  this->markSwept();
  this->lattice.enumerate(nullptr);
  EXPECT_EQ(statisticsOf<TypeParam>().basisSubstitutionsTrivial, 1);
  EXPECT_EQ(statisticsOf<TypeParam>().nontrivialBasisExtensions, 0);
  this->expectSameLattice();
}

TYPED_TEST(EnumerationTest, FoundCombinationIsCounted) {
  // b_1 - b_2 is shorter than either.
  this->start({{10, 1, 0}, {10, 0, 1}, {0, 0, 9}}, 3);
  this->markSwept();
  this->lattice.enumerate(nullptr);
  EXPECT_EQ(statisticsOf<TypeParam>().nontrivialBasisExtensions, 1);
  EXPECT_EQ(this->lattice.B[1] * this->lattice.B[1], TypeParam(2));
  this->expectSameLattice();
}

template <class T>
void expectMinimumIsCandidate(long weight) {
  auto l = latticeOf<T>(SMALL);
  l->params.eprune.set(0);
  for (long p = 1; p <= l->dim; ++p) l->setScale(p, T(weight));
  // A solution hides behind a first vector that is far too long, and no sweep looks at any row.
  Vector<T> x;
  ASSERT_TRUE(l->coordinates(latticeVector(*l, "[ 1 1 ]"), x, false));
  l->insertCombination(x, 1, l->rank);
  l->solutions.resize(0, false);
  for (long i = 2; i <= l->rank; ++i) rows(*l).B[i] += l->B[1] * T(50);
  for (long i = 1; i < l->rank; ++i) l->swapBase(i, i + 1, false);
  l->updateGso(1, 0);
  for (long i = 1; i <= l->rank; ++i) setWord(*l, i, STATUS_GSO | STATUS_REDUCED | STATUS_SWEPT);
  l->enumerate(nullptr);
  EXPECT_GE(l->solutions.MN, 1) << weight;
}

TYPED_TEST(EnumerationTest, BlockMinimumIsACandidateAtOnce) {
  expectMinimumIsCandidate<TypeParam>(1);
  expectMinimumIsCandidate<TypeParam>(3);  // judged in unit coordinates
}

TYPED_TEST(EnumerationTest, BlockTimeEndsTheSearchAndWhatWasFoundIsInserted) {
  std::string firsts;
  for (long jump = READS_BEFORE_THE_NODES + 1; jump <= READS_BEFORE_THE_NODES + 9; ++jump) {
    this->start(STEPS, 3);
    this->markSwept();
    this->lattice.params.btime.set(1);
    StandInClock clock;
    clock.jumpAt = jump;
    this->lattice.enumerate(nullptr);
    for (long p = 1; p <= 3; ++p)
      if (!isExactZero(this->lattice.B[1][p])) firsts += std::to_string(p);
    EXPECT_LE(clock.calls, jump);
    this->expectSameLattice();
  }
  // (3,0,0) until (0,2,0) is met at the third node, that until (0,0,1).
  EXPECT_EQ(firsts, "111222223");
}

TYPED_TEST(EnumerationTest, TimedOutBlocksCountAsBlocksWithoutAFind) {
  this->start(denseRows(8, 2), 4);
  this->lattice.params.btime.set(1);
  StandInClock clock;
  clock.step = 1;
  this->lattice.enumerate(nullptr);
  this->expectSameLattice();
}

TYPED_TEST(EnumerationTest, DependentPositionEndsTheSearch) {
  for (const Rows& rows : {Rows{{3, 0, 0, 0}, {0, 2, 0, 0}, {3, 2, 0, 0}, {0, 0, 0, 1}},
                           Rows{{0, 0, 0}, {1, 0, 5}, {2, 0, 10}, {0, 7, 1}},
                           Rows{{0, 0, 0}, {0, 0, 0}, {0, 0, 0}, {0, 0, 0}}}) {
    for (const long beta : {3L, 4L}) {
      this->start(rows, beta);
      ::testing::internal::CaptureStdout();
      this->lattice.enumerate(nullptr);
      const auto target = vectorOf<TypeParam>(std::vector<long>(rows[0].size(), 1));
      this->lattice.enumerate(&target);
      EXPECT_EQ(::testing::internal::GetCapturedStdout(), "");
      EXPECT_TRUE(this->lattice.TT[1] * this->lattice.B_save == this->lattice.B);
    }
  }
}

TYPED_TEST(EnumerationTest, ProgressLines) {
  this->start(IDENTITY, 20);
  this->lattice.params.verb.set(2);
  this->markSwept();
  const auto target = vectorOf<TypeParam>({0, 0, 0});
  ::testing::internal::CaptureStdout();
  this->lattice.enumerate(nullptr);
  this->lattice.params.deep.set(true);
  this->lattice.enumerate(nullptr);
  this->lattice.enumerate(&target);
  this->lattice.params.verb.set(1);
  this->lattice.enumerate(nullptr);
  EXPECT_EQ(::testing::internal::GetCapturedStdout(),
            "|-> BKZ enumeration ( beta = 3, deep = 0 ) ... \n"
            "|-> BKZ enumeration ( beta = 3, deep = 1 ) ... \n"
            "|-> CVP enumeration ( beta = 3, deep = 1 ) ... \n");
  EXPECT_EQ(progressDepth(), 0);
}

TYPED_TEST(EnumerationTest, HourlyLineTellsStageAndBlockEnd) {
  this->start(IDENTITY, 3);
  this->lattice.params.verb.set(2);
  this->markSwept();
  StandInClock clock;
  clock.step = 1800;
  ::testing::internal::CaptureStdout();
  this->lattice.enumerate(nullptr);
  // Start of the run, start of the block, and then a node each.
  EXPECT_EQ(::testing::internal::GetCapturedStdout(),
            "|-> BKZ enumeration ( beta = 3, deep = 0 ) ... \n"
            "|    |-> 1/3 \n"
            "|    |-> 3/3 \n");
  this->lattice.params.verb.set(1);
  ::testing::internal::CaptureStdout();
  this->lattice.enumerate(nullptr);
  EXPECT_EQ(::testing::internal::GetCapturedStdout(), "");
}

TYPED_TEST(EnumerationTest, CloseVectorIsFoundAndInserted) {
  this->start({{10, 0, 0}, {0, 10, 0}, {0, 0, 10}}, 3);
  const auto target = vectorOf<TypeParam>({9, 8, -1});
  this->lattice.enumerate(&target);
  this->expectRow(1, {10, 10, 0});
  EXPECT_NEAR(static_cast<double>(this->lattice.enumBound), 6.0, 1e-12);
  this->expectSameLattice();
}

TYPED_TEST(EnumerationTest, CoordinatesOfTheTargetAreThoseOfTheGramSchmidtVectors) {
  // The target is b_1 + b_2 of a basis whose vectors are neither orthogonal nor of length one.
  this->start({{4, 0, 0}, {-1, 5, 0}, {0, 0, 20}}, 3);
  const auto target = vectorOf<TypeParam>({3, 5, 0});
  this->lattice.enumerate(&target);
  this->expectRow(1, {3, 5, 0});
  EXPECT_NEAR(static_cast<double>(this->lattice.enumBound), 0.0, 1e-12);
}

TYPED_TEST(EnumerationTest, ZeroOrATrueMultipleIsNoFindForACloseVector) {
  for (const long beta : {3L, 4L}) {
    for (const auto& target : {std::vector<long>{1, 0, 1, 0}, std::vector<long>{21, 0, 0, 0}}) {
      this->start({{10, 0, 0, 0}, {0, 10, 0, 0}, {0, 0, 10, 0}, {0, 0, 0, 10}}, beta);
      const auto vector = vectorOf<TypeParam>(target);
      this->lattice.enumerate(&vector);
      EXPECT_TRUE(this->lattice.B == this->raw);
    }
  }
}

TYPED_TEST(EnumerationTest, CloseVectorBoundIsADistanceThatALatticeVectorHas) {
  Draws draw(23);
  int improved = 0;
  for (std::uint64_t seed = 1; seed <= 12; ++seed) {
    this->start(denseRows(4, seed), 4);
    reduceFully(this->lattice);
    const Matrix<dbl_t> before = plain(this->lattice.B);
    Vector<TypeParam> target(4);
    for (long p = 1; p <= 4; ++p) target[p] = TypeParam(draw.next(-40, 40));
    Vector<dbl_t> t(4);
    for (long p = 1; p <= 4; ++p) t[p] = toDouble(target[p]);
    this->lattice.enumerate(&target);
    const dbl_t bound = this->lattice.enumBound;
    dbl_t closest = INFINITY;
    bool attained = false;
    forAllCombinations(before, 4, [&](const Vector<dbl_t>& v) {
      const dbl_t distance = (t - v) * (t - v);
      closest = std::min(closest, distance);
      attained = attained || std::fabs(distance - bound) < 1e-6L;
    });
    EXPECT_TRUE(attained) << seed;
    EXPECT_GE(bound, closest - 1e-6L);
    EXPECT_LE(bound, t * t + 1e-6L);
    if (bound < t * t - 1e-6L) ++improved;
    this->expectSameLattice();
  }
  EXPECT_GT(improved, 0);
}

TYPED_TEST(EnumerationTest, CloseVectorRunsWithSmallBlocksEnd) {
  Draws draw(29);
  for (std::uint64_t seed = 1; seed <= 6; ++seed) {
    this->start(denseRows(8, seed), 3);
    reduceFully(this->lattice);
    Vector<TypeParam> target(8);
    for (long p = 1; p <= 8; ++p) target[p] = TypeParam(draw.next(-90, 90));
    this->lattice.enumerate(&target);
    this->expectSameLattice();
  }
}

class PruningTest : public ::testing::Test {
 public:
  PruningTest() { tree.reserve(40); }
  std::vector<double> factors(long eprune, long j, long k, long beta) {
    tree.computeFactors(eprune, j, k, beta);
    std::vector<double> result;
    for (long t = j; t <= k; ++t) result.push_back(static_cast<double>(tree.factor.data()[t]));
    return result;
  }
  EnumerationTree<dbl_t> tree;
};

TEST_F(PruningTest, LevelZeroAndBelowCutNothing) {
  for (const long eprune : {0L, -1L, -100L})
    for (const double f : factors(eprune, 1, 20, 20)) EXPECT_EQ(f, 1.0);
}

TEST_F(PruningTest, LevelOneIsAStraightLine) {
  const auto f = factors(1, 1, 20, 20);
  for (int t = 1; t <= 20; ++t) EXPECT_DOUBLE_EQ(f[static_cast<std::size_t>(t - 1)], (21 - t) / 20.0);
}

TEST_F(PruningTest, LevelTwoIsAStepInTheMiddle) {
  const auto f = factors(2, 1, 20, 20);
  for (int t = 1; t <= 20; ++t)
    EXPECT_DOUBLE_EQ(f[static_cast<std::size_t>(t - 1)], t > 10 ? 0.499999999 : 1.0);
  // (5 + 9) / 2 = 7, and (5 + 8) / 2 truncates to 6.
  EXPECT_DOUBLE_EQ(factors(2, 5, 9, 5)[2], 1.0);
  EXPECT_DOUBLE_EQ(factors(2, 5, 8, 4)[2], 0.499999999);
}

TEST_F(PruningTest, LevelThreeIsTwoLines) {
  const auto f = factors(3, 1, 20, 20);
  EXPECT_DOUBLE_EQ(f[19], 0.999999998 / 20);                          // t = 20, d = 0
  EXPECT_DOUBLE_EQ(f[10], 0.999999998 * 10 / 20);                     // t = 11, d = 9
  EXPECT_DOUBLE_EQ(f[9], 0.500000001 * 21 / 20 + (0.999999998 - 1));  // t = 10, d = 10
  EXPECT_DOUBLE_EQ(f[0], 0.500000001 * 39 / 20 + (0.999999998 - 1));  // t = 1, d = 19
  EXPECT_EQ(factors(4, 1, 20, 20), f);
  EXPECT_EQ(factors(100, 1, 20, 20), f);
}

TEST_F(PruningTest, ShortLastBlocksUseTheEffectiveBlockSize) {
  const auto f = factors(1, 15, 20, 20);
  EXPECT_DOUBLE_EQ(f[0], 6 / 20.0);
  EXPECT_DOUBLE_EQ(f[5], 1 / 20.0);
}

TEST_F(PruningTest, LimitIsTheShareOfTheBound) {
  factors(2, 1, 20, 20);
  tree.setBound(10, 1, 20);
  EXPECT_DOUBLE_EQ(static_cast<double>(tree.limit[10]), 10.0);
  EXPECT_DOUBLE_EQ(static_cast<double>(tree.limit[11]), 4.99999999);
}

TEST_F(PruningTest, ZigzagBelowAndAtTheHighestStage) {
  tree.reset(1, 3);
  TreeNode<dbl_t>& node = tree.nodes[2];
  node.v = 5;
  node.sign = -1;
  std::vector<long> visited;
  for (int step = 0; step < 5; ++step) {
    EXPECT_TRUE(tree.enumNext(2, 3));
    visited.push_back(static_cast<long>(tree.u[2]));
  }
  EXPECT_EQ(visited, (std::vector<long>{4, 6, 3, 7, 2}));
  node = TreeNode<dbl_t>();
  node.v = 5;
  visited.clear();
  for (int step = 0; step < 3; ++step) {
    EXPECT_TRUE(tree.enumNext(2, 2));
    visited.push_back(static_cast<long>(tree.u[2]));
  }
  EXPECT_EQ(visited, (std::vector<long>{6, 7, 8}));
}

TEST_F(PruningTest, DescentRoundsTheLatticePartOnly) {
  tree.reset(1, 3);
  Matrix<dbl_t> mu(3, 3);
  mu[2][1] = 0.4L;
  mu[3][1] = -0.9L;
  mu[3][2] = 0.25L;
  tree.loadCoefficients(mu, 1, 3);
  tree.u[2] = 1;
  tree.u[3] = 2;
  tree.descend(2, 3, nullptr);
  EXPECT_NEAR(static_cast<double>(tree.nodes[1].y), -1.4, 1e-15);
  EXPECT_EQ(tree.u[1], 1);
  EXPECT_EQ(tree.nodes[1].sign, 1);
  const dbl_t shift[] = {0, 0.9L, 0, 0};
  tree.descend(2, 3, shift);
  EXPECT_NEAR(static_cast<double>(tree.nodes[1].y), -2.3, 1e-15);
  EXPECT_EQ(tree.u[1], 1);
  // Above the highest stage nothing counts; half goes away from zero, and then the way leads back.
  tree.u[2] = 1.25L;
  tree.descend(2, 2, nullptr);
  EXPECT_EQ(tree.u[1], roundNearest(-1.25L * 0.4L));
  EXPECT_EQ(tree.nodes[1].sign, tree.u[1] <= -tree.nodes[1].y ? 1 : -1);
}

}  // namespace latbox::testing
