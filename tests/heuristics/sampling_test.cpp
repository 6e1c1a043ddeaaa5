// Random sampling: its estimates against a direct computation, its draws, and what it does to the basis.
#include "heuristics/sampling.h"

#include <cmath>
#include <cstdlib>
#include <utility>
#include <vector>

#include "heuristics/random_draw.h"
#include "heuristics/sample_bounds.h"
#include "lattice/support.h"
#include "lib/exceptions.h"
#include "lib/os/clock.h"
#include "lib/progress.h"
#include "params/statistics.h"
#include "support/lattice.h"

namespace latbox::testing {

void expectNear(dbl_t actual, dbl_t expected, dbl_t error) {
  EXPECT_LE(std::fabs(actual - expected), error) << actual << " and " << expected;
}

template <class T>
class Sampled {
 public:
  Lattice<T, dbl_t> lattice;

  // A basis of rank n in which the last row alone carries the inhomogeneous coordinate. Its sweeps have next
  // to no budget, so that they leave it far from reduced.
  void makeRawLattice(long n, unsigned long long seed) {
    Rows rows = knapsackRows(n, 100000, seed);
    for (std::size_t i = 0; i < rows.size(); ++i) rows[i].push_back(i + 1 == rows.size() ? 1 : 0);
    setBasis(lattice, matrixOf<T>(rows));
    lattice.params.verb.set(0);
    lattice.interval_tt = 1;
  }

  // The same, reduced.
  void makeLattice(long n, unsigned long long seed) {
    makeRawLattice(n, seed);
    reduceFully(lattice);
    ASSERT_TRUE(lattice.updateGso(1, 0));
  }

  std::string sampled(unsigned seed) {
    std::srand(seed);
    ::testing::internal::CaptureStdout();
    randomSampling(lattice);
    return ::testing::internal::GetCapturedStdout();
  }

  // Every row is a member, and the determinant is that of the basis as generated.
  void expectSameLattice() {
    for (long i = 1; i <= lattice.rank; ++i) {
      Vector<T> unit;
      lattice.unscaledVector(lattice.B[i], unit);
      EXPECT_TRUE(lattice.isMember(unit));
    }
    EXPECT_EQ(gramDeterminant(exact(lattice.unscaled(lattice.B))), gramDeterminant(exact(lattice.B_save)));
  }
};

template <class T>
class SamplingTest : public ::testing::Test, public Sampled<T> {
 public:
  SamplingTest() { statisticsOf<T>() = Statistics(); }
  ~SamplingTest() override { statisticsOf<T>() = Statistics(); }
};
TYPED_TEST_SUITE(SamplingTest, NumberTypes);

// The definitions, summed plainly.
dbl_t plainLength(const std::vector<dbl_t>& a, long j, long u, long m, dbl_t x) {
  const auto at = [&](long t) { return a[static_cast<std::size_t>(t)]; };
  dbl_t narrow = 0;
  dbl_t wide = 0;
  for (long t = 1; t < j; ++t) narrow += std::pow(x, static_cast<dbl_t>(j - t)) * at(t);
  for (long t = j; t <= m - u - 1; ++t) narrow += at(t);
  for (long t = std::max(m - u, 1L); t <= m - 1; ++t) wide += at(t);
  return narrow / 12 + wide / 3 + at(m);
}

// The unrounded value that sampleBits rounds down, by bisection.
dbl_t plainBits(const std::vector<dbl_t>& a, long j, long u, long m, dbl_t target) {
  if (plainLength(a, j, u, m, 1) <= target) return -1;
  if (plainLength(a, j, u, m, 0) >= target) return static_cast<dbl_t>(-m);
  dbl_t low = 0;
  dbl_t high = 1;
  for (int i = 0; i < 200; ++i) {
    const dbl_t x = (low + high) / 2;
    (plainLength(a, j, u, m, x) > target ? high : low) = x;
  }
  return static_cast<dbl_t>(j * (j - 1)) / 4 * std::log2(low) - 1;
}

std::vector<dbl_t> sortedLengths(const Vector<dbl_t>& r, long u, long k, long m) {
  std::vector<dbl_t> a(static_cast<std::size_t>(m + 1), 0);
  for (long t = k; t <= m; ++t) a[static_cast<std::size_t>(t)] = r[t];
  for (long p = k; p < m - u; ++p)
    for (long q = p + 1; q < m - u; ++q)
      if (a[static_cast<std::size_t>(q)] > a[static_cast<std::size_t>(p)])
        std::swap(a[static_cast<std::size_t>(q)], a[static_cast<std::size_t>(p)]);
  return a;
}

dbl_t plainEstimate(const Vector<dbl_t>& r, long u, long k, long m, dbl_t target) {
  const std::vector<dbl_t> a = sortedLengths(r, u, k, m);
  dbl_t e = plainBits(a, k, u, m, target);
  for (long j = k + 1; j <= m - u; ++j) e = std::max(e, plainBits(a, j, u, m, target));
  return e;
}

template <class T>
Vector<T> converted(const std::vector<dbl_t>& a) {
  Vector<T> v(static_cast<long>(a.size()) - 1);
  for (long t = 1; t <= v.MN; ++t) v[t] = fromDouble<T>(a[static_cast<std::size_t>(t)]);
  return v;
}

// Lengths 1..m that fall off at random.
std::vector<dbl_t> randomLengths(Draws& draw, long m) {
  std::vector<dbl_t> a(static_cast<std::size_t>(m + 1), 0);
  for (long t = 1; t <= m; ++t) a[static_cast<std::size_t>(t)] = static_cast<dbl_t>(draw.next(1, 2000)) / 8;
  return a;
}

TYPED_TEST(SamplingTest, LengthIsTheSumOfItsDefinition) {
  Draws draw(1);
  for (int i = 0; i < 100; ++i) {
    const long m = draw.next(1, 20);
    const long u = draw.next(0, m - 1);
    const long j = draw.next(1, std::max(m - u, 1L));
    const std::vector<dbl_t> a = randomLengths(draw, m);
    const dbl_t x = static_cast<dbl_t>(draw.next(0, 64)) / 64;
    const dbl_t expected = plainLength(a, j, u, m, x);
    expectNear(toDouble(sampleLength(converted<TypeParam>(a), j, u, m, fromDouble<TypeParam>(x))), expected,
               1e-12L * expected);
  }
}

TYPED_TEST(SamplingTest, BitsAreOneBelowNothingWhenAllAreExpectedToReachIt) {
  const Vector<TypeParam> a = vectorOf<TypeParam>({12, 12, 12, 1});
  EXPECT_EQ(sampleBits(a, 3, 0, 4, TypeParam(5)), TypeParam(-1));  // 3 * 12 / 12 + 1
}

TYPED_TEST(SamplingTest, BitsAreMinusMWhenNoFallOffReachesIt) {
  const Vector<TypeParam> a = vectorOf<TypeParam>({12, 12, 12, 7});
  EXPECT_EQ(sampleBits(a, 3, 0, 4, TypeParam(5)), TypeParam(-4));
}

TYPED_TEST(SamplingTest, BitsOfAFallOffThatIsKnown) {
  // x * 120 / 12 + 1 = 6 at x = 1/2; 2 * 1 / 4 * (-1) - 1 = -1.5
  EXPECT_EQ(sampleBits(vectorOf<TypeParam>({120, 1}), 2, 0, 2, TypeParam(6)), TypeParam(-2));
}

TYPED_TEST(SamplingTest, BitsAgreeWithBisection) {
  Draws draw(2);
  int compared = 0;
  for (int i = 0; i < 60; ++i) {
    const long m = draw.next(4, 16);
    const long u = draw.next(0, 2);
    const long j = draw.next(2, m - u);
    const std::vector<dbl_t> a = randomLengths(draw, m);
    const dbl_t target = static_cast<dbl_t>(draw.next(50, 900));
    const dbl_t expected = plainBits(a, j, u, m, target);
    if (std::fabs(expected - std::round(expected)) < 1e-4L && expected < -1) continue;
    EXPECT_EQ(sampleBits(converted<TypeParam>(a), j, u, m, fromDouble<TypeParam>(target)),
              fromDouble<TypeParam>(std::floor(expected)));
    ++compared;
  }
  EXPECT_GT(compared, 40);
}

// From 1 itself the method of false position would take a step for every multiple of the target there.
TYPED_TEST(SamplingTest, BitsOfVeryUnevenLengthsComeSoon) {
  std::vector<dbl_t> a(13, 1e-6L);
  a[1] = a[2] = a[3] = 1e12L;
  const dbl_t expected = plainBits(a, 12, 0, 12, 2);
  EXPECT_EQ(sampleBits(converted<TypeParam>(a), 12, 0, 12, TypeParam(2)),
            fromDouble<TypeParam>(std::floor(expected)));
}

TYPED_TEST(SamplingTest, EstimateIsTheBestOfAllPositions) {
  Draws draw(3);
  int telling = 0;
  for (int i = 0; i < 40; ++i) {
    const bool interior = i % 2 == 1;
    const long m = draw.next(interior ? 6 : 2, 14);
    const long k = draw.next(1, interior ? 2 : m - 1);
    const long u = draw.next(0, interior ? 2 : m - 1);
    setBasis(this->lattice, Matrix<TypeParam>::unit(m));
    const std::vector<dbl_t> r = randomLengths(draw, m);
    for (long t = 1; t <= m; ++t) this->lattice.bstarSq[t] = r[static_cast<std::size_t>(t)];
    dbl_t target = 3 * r[static_cast<std::size_t>(k)];
    if (interior) {
      // Between what does not fall off at all and what does: the order of the lengths tells.
      const std::vector<dbl_t> a = sortedLengths(this->lattice.bstarSq, u, k, m);
      const dbl_t least = plainLength(a, m - u, u, m, 0);
      target = least + (plainLength(a, m - u, u, m, 1) - least) * 3 / 4;
    }
    const dbl_t expected = plainEstimate(this->lattice.bstarSq, u, k, m, target);
    const bool tells = expected < -1 && expected != static_cast<dbl_t>(-m);
    if (tells && std::fabs(expected - std::round(expected)) < 1e-4L) continue;
    if (tells) ++telling;
    EXPECT_EQ(sampleEstimate(this->lattice, u, k, m, fromDouble<TypeParam>(target)),
              fromDouble<TypeParam>(std::floor(expected)))
        << "m " << m << " k " << k << " u " << u;
  }
  EXPECT_GT(telling, 8);
}

// Only where everything in front of the wide range falls off can the target be reached.
TYPED_TEST(SamplingTest, EstimateLooksAtTheLastPositionToo) {
  setBasis(this->lattice, Matrix<TypeParam>::unit(4));
  for (const auto& [t, length] : {std::pair(1L, 12), {2L, 12}, {3L, 3}, {4L, 1}})
    this->lattice.bstarSq[t] = length;
  EXPECT_EQ(sampleEstimate(this->lattice, 1, 1, 4, fromDouble<TypeParam>(2.9L)), TypeParam(-3));
}

TYPED_TEST(SamplingTest, FreeBoundIsTheFirstThatIsEnough) {
  Draws draw(4);
  for (int i = 0; i < 20; ++i) {
    const long m = draw.next(2, 14);
    const long k = draw.next(1, m);
    setBasis(this->lattice, Matrix<TypeParam>::unit(m));
    for (long t = 1; t <= m; ++t)
      this->lattice.bstarSq[t] = static_cast<dbl_t>(draw.next(90, 110) * (t < 3 ? 40 : 1)) / (t == m ? 9 : 1);
    const dbl_t target = (1 - EPS) * this->lattice.bstarSq[k];
    long expected = k;
    while (expected < m &&
           -std::floor(plainEstimate(this->lattice.bstarSq, expected, k, m, target)) > expected)
      ++expected;
    EXPECT_EQ(freeBound(this->lattice, k, m), expected);
  }
}

TYPED_TEST(SamplingTest, FreeBoundOfTheLastPositionIsThePosition) {
  this->makeLattice(4, 1);
  EXPECT_EQ(freeBound(this->lattice, 3, 3), 3);
  EXPECT_EQ(freeBound(this->lattice, 1, 1), 1);
}

// A third of 3 and 2 make 3, which is not below what a sample has to beat.
TYPED_TEST(SamplingTest, FreeBoundAsksForLessThanTheLengthItself) {
  setBasis(this->lattice, Matrix<TypeParam>::unit(2));
  this->lattice.bstarSq[1] = 3;
  this->lattice.bstarSq[2] = 2;
  EXPECT_EQ(freeBound(this->lattice, 1, 2), 2);
  this->lattice.bstarSq[2] = 1.99L;
  EXPECT_EQ(freeBound(this->lattice, 1, 2), 1);
}

// The steps as they stand, one after the other. The position that a sample took, 0 without one.
template <class T>
long sampleByDefinition(Lattice<T, dbl_t>& l) {
  long m = 1;
  while (m <= l.rank && !isZero(T(abs(l.B[m][l.dim]) - abs(l.inhomScaled)))) ++m;
  if (m > l.rank) return 0;
  const long k = rand_eq(1L, m);
  l.lll(1, m, 0);
  EXPECT_TRUE(l.updateGso(1, m));
  const long u = std::min(freeBound(l, k, m), m - 1);
  const auto limit = static_cast<dbl_t>(l.params.sampleLimit.get());
  for (dbl_t n = std::min(std::pow(2.0L, static_cast<dbl_t>(u)), limit); n >= 1; --n) {
    Vector<T> v = l.B[m], coordinates = Vector<T>::zeros(l.rank);
    Vector<dbl_t> mu = l.mu[m];
    coordinates[m] = T(1);
    for (long j = m - 1; j >= k; --j) {
      const dbl_t reach = j >= m - u ? 1 : 0.5L;
      const T c = rand_eq(T(std::lround(mu[j] - reach)), T(std::lround(mu[j] + reach)));
      v -= l.B[j] * c;
      coordinates[j] -= c;
      for (long i = 1; i <= j; ++i) mu[i] -= toDouble(c) * l.mu[j][i];
    }
    l.checkSolution(v, true, NOW, false);
    dbl_t p = toDouble(T(v * v));
    for (long i = 1; i <= m; ++i) {
      if (p < (1 - EPS) * l.bstarSq[i]) {
        l.insertCombination(coordinates, i, m);
        return i;
      }
      p -= mu[i] * mu[i] * l.bstarSq[i];
    }
  }
  return 0;
}

TYPED_TEST(SamplingTest, AgreesWithTheDefinition) {
  using T = TypeParam;
  // A first vector that no sample can beat, so that they enter behind it.
  Rows rows = knapsackRows(13, 100000, 9);
  for (auto& row : rows) {
    row.insert(row.begin(), 0);
    row.push_back(&row == &rows.back() ? 1 : 0);
  }
  rows.insert(rows.begin(), std::vector<long>(rows[0].size(), 0));
  rows[0][0] = 1;
  long behind = 0;
  for (unsigned seed = 1; seed <= 60; ++seed) {
    setBasis(this->lattice, matrixOf<T>(rows));
    this->lattice.interval_tt = 40 * (seed % 4);
    this->lattice.params.sampleLimit.set(seed % 3 == 0 ? 3 : 1000);
    this->lattice.params.verb.set(2);
    Lattice<T, dbl_t> expected(this->lattice);
    expected.params.verb.set(0);
    std::srand(seed);
    const long position = sampleByDefinition(expected);
    const int next = std::rand();
    const std::string text = this->sampled(seed);
    EXPECT_EQ(std::rand(), next);
    ASSERT_TRUE(this->lattice.B == expected.B);
    const std::string line = "|    |-> Replacing base vector (idx = " + std::to_string(position) + ")\n";
    EXPECT_EQ(text.find(line) != std::string::npos, position != 0) << text;
    if (position > 1) ++behind;
  }
  EXPECT_GT(behind, 10);
}

// 2 to the power of u is more than a word holds there.
TYPED_TEST(SamplingTest, WideRangesTakeTheLimit) {
  using T = TypeParam;
  Rows rows(70, std::vector<long>(71, 0));
  for (std::size_t i = 0; i < rows.size(); ++i) rows[i][i] = 1;
  rows.back().back() = 1;
  setBasis(this->lattice, matrixOf<T>(rows));
  this->lattice.params.sampleLimit.set(100);
  for (unsigned seed = 1; seed <= 3; ++seed) {
    std::srand(seed);
    sampleByDefinition(this->lattice);
    const int next = std::rand();
    this->lattice.params.verb.set(2);
    EXPECT_NE(this->sampled(seed).find(", u = 69 )"), std::string::npos);
    EXPECT_EQ(std::rand(), next);
  }
}

// Shorter than the first vector, but by less than the tolerance tells.
TYPED_TEST(SamplingTest, GainWithinTheToleranceIsNone) {
  setBasis(this->lattice, matrixOf<TypeParam>({{100000, 0, 0, 0, 0, 0}, {0, 99999, 445, 44, 6, 1}}));
  for (unsigned seed = 1; seed <= 20; ++seed) this->sampled(seed);
  EXPECT_EQ(statisticsOf<TypeParam>().samplingBasisExtensions, 0);
  EXPECT_EQ(this->lattice.B[1][1], TypeParam(100000));
}

// An hour passes at each look at the clock.
TYPED_TEST(SamplingTest, ItsSweepReportsNothing) {
  this->makeLattice(6, 3);
  this->lattice.clearStatus();
  this->lattice.params.verb.set(2);
  static long hours;
  hours = 0;
  setClock([]() -> long { return 3600 * ++hours; });
  const std::string text = this->sampled(3);
  setClock(nullptr);
  EXPECT_NE(text.find("Random Sampling"), std::string::npos);
  EXPECT_EQ(text.find("interval_tt"), std::string::npos) << text;
}

TYPED_TEST(SamplingTest, SampleIsTheCombinationThatItNames) {
  this->makeLattice(9, 5);
  Sample<TypeParam> s;
  for (unsigned seed = 1; seed <= 30; ++seed) {
    std::srand(seed);
    sampleVector(this->lattice, s, 3, 8, 2);
    EXPECT_TRUE(s.coordinates * this->lattice.B == s.vector);
    ASSERT_EQ(s.coordinates.MN, 9);
    EXPECT_EQ(s.coordinates[8], TypeParam(1));
    EXPECT_EQ(s.coordinates[9], TypeParam(0));
    EXPECT_EQ(s.coordinates[1], TypeParam(0));
    EXPECT_EQ(s.coordinates[2], TypeParam(0));
    for (long i = 1; i <= 9; ++i) {
      dbl_t mu = 0;
      for (long t = i; t <= 9; ++t) mu += toDouble(s.coordinates[t]) * this->lattice.mu[t][i];
      expectNear(s.mu[i], mu, 1e-12L);
    }
    for (long j = 6; j <= 7; ++j) EXPECT_LE(std::fabs(s.mu[j]), 1.5L);
    for (long j = 3; j <= 5; ++j) EXPECT_LE(std::fabs(s.mu[j]), 1.0L);
  }
}

TYPED_TEST(SamplingTest, FirstStageNeverGoesBelowK) {
  this->makeLattice(9, 5);
  Sample<TypeParam> s;
  for (unsigned seed = 1; seed <= 20; ++seed) {
    std::srand(seed);
    sampleVector(this->lattice, s, 6, 8, 7);
    for (long i = 1; i <= 5; ++i) EXPECT_EQ(s.coordinates[i], TypeParam(0));
  }
}

TYPED_TEST(SamplingTest, SampleOfTheFirstVectorIsIt) {
  this->makeLattice(5, 2);
  Sample<TypeParam> s;
  sampleVector(this->lattice, s, 1, 1, 0);
  EXPECT_TRUE(s.vector == this->lattice.B[1]);
}

TYPED_TEST(SamplingTest, BothTypesDrawTheSame) {
  this->makeLattice(9, 5);
  Sampled<QQ> other;
  other.makeLattice(9, 5);
  Sample<TypeParam> s;
  Sample<QQ> t;
  std::srand(4);
  sampleVector(this->lattice, s, 1, 9, 4);
  std::srand(4);
  sampleVector(other.lattice, t, 1, 9, 4);
  for (long i = 1; i <= 9; ++i) EXPECT_EQ(QQ(s.coordinates[i]), t.coordinates[i]);
}

TYPED_TEST(SamplingTest, InhomogeneousVectorInFrontGivesOneSample) {
  setBasis(this->lattice, matrixOf<TypeParam>({{1, 0, 1}, {0, 3, 0}}));
  this->lattice.params.verb.set(2);
  const Matrix<TypeParam> before = this->lattice.B;
  EXPECT_EQ(this->sampled(1), "|-> Random Sampling ( k = 1, m = 1, u = 0 ) ... \n");
  EXPECT_TRUE(this->lattice.B == before);
  EXPECT_EQ(statisticsOf<TypeParam>().samplingBasisExtensions, 0);
}

TYPED_TEST(SamplingTest, NothingHappensWithoutTheFullInhomogeneousValue) {
  setBasis(this->lattice, matrixOf<TypeParam>({{5, 1, 0}, {3, 1, 2}}));
  this->lattice.params.verb.set(2);
  const Matrix<TypeParam> before = this->lattice.B;
  std::srand(6);
  const int first = std::rand();
  EXPECT_EQ(this->sampled(6), "");
  EXPECT_EQ(std::rand(), first);
  EXPECT_TRUE(this->lattice.B == before);
}

TYPED_TEST(SamplingTest, NegativeAndWeightedValuesAreFull) {
  setBasis(this->lattice, matrixOf<TypeParam>({{4, 0, 0}, {1, 3, -1}}));
  this->lattice.setScale(3, TypeParam(2));
  this->lattice.params.verb.set(2);
  const std::string text = this->sampled(2);
  EXPECT_NE(text.find(", m = 2, "), std::string::npos) << text;
}

TYPED_TEST(SamplingTest, LimitOfZeroOpensAndClosesItsLevel) {
  this->makeLattice(8, 3);
  this->lattice.params.verb.set(2);
  this->lattice.params.sampleLimit.set(0);
  const Matrix<TypeParam> before = this->lattice.B;
  const int depth = progressDepth();
  EXPECT_TRUE(this->sampled(3).starts_with("|-> Random Sampling ( k = "));
  EXPECT_EQ(progressDepth(), depth);
  EXPECT_TRUE(this->lattice.B == before);
}

// A single find ends the call.
TYPED_TEST(SamplingTest, ShorterSampleEntersTheBasis) {
  this->makeRawLattice(14, 9);
  this->lattice.params.verb.set(2);
  long long extensions = 0;
  for (unsigned seed = 1; seed <= 40; ++seed) {
    const std::string text = this->sampled(seed);
    const long long now = statisticsOf<TypeParam>().samplingBasisExtensions;
    const std::size_t line = text.find("|    |-> Replacing base vector (idx = ");
    EXPECT_EQ(line != std::string::npos, now == extensions + 1) << text;
    EXPECT_LE(now, extensions + 1);
    extensions = now;
    this->expectSameLattice();
  }
  EXPECT_GT(extensions, 0);
}

TYPED_TEST(SamplingTest, InsertionKeepsTheTransformation) {
  this->makeRawLattice(14, 9);
  this->lattice.params.consistency.set(true);
  for (unsigned seed = 1; seed <= 20; ++seed) this->sampled(seed);
  EXPECT_GT(statisticsOf<TypeParam>().samplingBasisExtensions, 0);
  EXPECT_TRUE(this->lattice.TT[this->lattice.TT.MN] * this->lattice.B_save == this->lattice.B);
}

TYPED_TEST(SamplingTest, SameSeedSameBasis) {
  this->makeRawLattice(12, 4);
  Sampled<TypeParam> other;
  other.makeRawLattice(12, 4);
  for (unsigned seed = 1; seed <= 10; ++seed) {
    this->sampled(seed);
    other.sampled(seed);
  }
  EXPECT_TRUE(this->lattice.B == other.lattice.B);
}

TYPED_TEST(SamplingTest, FeasibleSamplesAreCounted) {
  const auto lattice = latticeOf<TypeParam>(SMALL);
  lattice->writeEnabled = lattice->finishEnabled = false;
  lattice->params.sol.set(0);
  lattice->swapBase(1, lattice->rank, false);
  std::srand(1);
  for (int i = 0; i < 10; ++i) randomSampling(*lattice);
  EXPECT_GT(statisticsOf<TypeParam>().samplingCollections, 0);
}

TYPED_TEST(SamplingTest, SamplesAreJudgedInUnitCoordinates) {
  const auto lattice = latticeOf<TypeParam>(SMALL);
  lattice->params.sol.set(0);
  lattice->setScale(lattice->dim, TypeParam(2));
  lattice->swapBase(1, lattice->rank, false);
  std::srand(1);
  for (int i = 0; i < 10; ++i) randomSampling(*lattice);
  EXPECT_GT(statisticsOf<TypeParam>().samplingCollections, 0);
}

// What is feasible counts, though it is no better than what is known.
TYPED_TEST(SamplingTest, FeasibleSamplesWithAWorseTargetAreCounted) {
  const auto lattice = latticeOf<TypeParam>(SMALL_TARGET);
  lattice->params.sol.set(0);
  lattice->checkSolution(latticeVector(*lattice, "[ 0 3 ]"), NOW, false);  // the optimum
  const std::string best = shown<TypeParam>(lattice->bestSlack);
  lattice->swapBase(1, lattice->rank, false);
  std::srand(1);
  for (int i = 0; i < 10; ++i) randomSampling(*lattice);
  EXPECT_GT(statisticsOf<TypeParam>().samplingCollections, 0);
  EXPECT_EQ(shown<TypeParam>(lattice->bestSlack), best);
}

TEST(Sampling, LossOfPrecisionPassesAndTheSweepSpeaksAgain) {
  // Size reduction of the second row lets an entry that was 0 grow beyond 10^9.
  Rows rows(2, std::vector<long>(23, 1));
  rows[0][20] = -10;
  rows[1].assign(23, 900000000);
  rows[1][20] = 0;
  rows[0][21] = rows[1][21] = rows[0][22] = 0;
  rows[1][22] = 1;
  Lattice<dbl_t, dbl_t> lattice;
  setBasis(lattice, matrixOf<dbl_t>(rows));
  std::srand(1);
  EXPECT_THROW(randomSampling(lattice), PrecisionException);
}

}  // namespace latbox::testing
