#include "program/memory.h"
#include "lib/exceptions.h"
#include "params/statistics.h"
#include "program/generation.h"
#include "support/failure.h"
#include "support/lattice.h"

namespace latbox {
namespace {

using testing::latticeOf;
using testing::latticeVector;
using testing::shown;

template <class T>
class Reinstate : public ::testing::Test {
 protected:
  using L = Lattice<T, dbl_t>;
  using Collection = SortedSet<HeuristicVector<T, dbl_t>>;

  void SetUp() override { statisticsOf<T>() = Statistics(); }

  static Star<T> star(const Vector<T>& v, long time) {
    Star<T> s;
    s = v;
    s.secondsUntilDiscovered = time;
    return s;
  }
  static void reinstate(L& l, const std::vector<Star<T>>& vectors, int mode) {
    latbox::reinstate(l, ConversionArray<Star<T>>(), vectors, Collection(), Collection(), mode);
  }
};
using NumberTypes = ::testing::Types<dbl_t, QQ>;
TYPED_TEST_SUITE(Reinstate, NumberTypes);

TYPED_TEST(Reinstate, RecordsAreAppendedFieldByField) {
  using T = TypeParam;
  auto l = latticeOf<T>(testing::SMALL);
  ConversionArray<Star<T>> records;
  Star<T> s = this->star(Vector<T>("[ 2 1 ]"), 8);
  s.parameters = "--a=1";
  s.version = "1.0";
  s.targetNorm = T(4);
  records.append(s);
  reinstate(*l, records, {}, typename TestFixture::Collection(), typename TestFixture::Collection(), 3);
  ASSERT_EQ(l->program.stars.MN, 1);
  const Star<T>& kept = l->program.stars[1];
  EXPECT_EQ(shown<T>(kept), "[ 2 1 ]");
  EXPECT_EQ(kept.secondsUntilDiscovered, 8);
  EXPECT_EQ(kept.parameters, "--a=1");
  EXPECT_EQ(kept.version, "1.0");
  EXPECT_EQ(kept.targetNorm, T(4));
  EXPECT_EQ(l->solutions.MN, 0);
}

TYPED_TEST(Reinstate, ProgramCoordinates) {
  using T = TypeParam;
  auto l = latticeOf<T>(testing::SMALL);
  l->setScale(1, T(3));
  this->reinstate(*l, {this->star(Vector<T>("[ 2 1 ]"), 0), this->star(Vector<T>("[ 1 1 ]"), -1)}, 3);
  ASSERT_EQ(l->solutions.MN, 2);
  EXPECT_EQ(shown<T>(l->solutions[1]), "[ 4 0 -2 1 ]");
  EXPECT_EQ(l->solutions[1].secondsUntilDiscovered, 0);
  EXPECT_EQ(l->solutions[2].secondsUntilDiscovered, -1);
}

TYPED_TEST(Reinstate, CoefficientsOfTheBasis) {
  using T = TypeParam;
  auto l = latticeOf<T>(testing::SMALL);
  l->setScale(2, T(4));
  this->reinstate(*l, {this->star(Vector<T>("[ 1 2 1 ]"), 5), this->star(Vector<T>("[ 1 1 ]"), 6)}, 2);
  ASSERT_EQ(l->solutions.MN, 2);
  EXPECT_EQ(shown<T>(l->solutions[1]), shown(latticeVector(*l, "[ 2 1 ]")));
  EXPECT_EQ(shown<T>(l->solutions[2]), shown(latticeVector(*l, "[ 1 0 ]")));
}

TYPED_TEST(Reinstate, VectorsAsTheyAre) {
  using T = TypeParam;
  auto l = latticeOf<T>(testing::SMALL);
  this->reinstate(*l, {this->star(Vector<T>("[ 0 -2 -2 1 ]"), 5)}, 1);
  EXPECT_EQ(l->solutions.MN, 1);
}

// What does not fit the lattice any more is dropped without a word.
TYPED_TEST(Reinstate, VectorsThatDoNotFit) {
  using T = TypeParam;
  auto l = latticeOf<T>("[ ] [ ] [ ] [ ] [ [ 1 1 ] ] [ 3 ] [ inf ] [ 0 0 ] [ 0 0 ] [ 4 4 ]");
  this->reinstate(*l,
                  {this->star(Vector<T>("[ 1 1 ]"), 5), this->star(Vector<T>("[ 1 1 1 ]"), 5),
                   this->star(Vector<T>("[ 9 9 ]"), 5), this->star(Vector<T>("[ 2 2 ]"), 5)},
                  3);
  EXPECT_EQ(l->solutions.MN, 1);
  this->reinstate(*l, {this->star(Vector<T>("[ 1 1 ]"), 5)}, 1);
  EXPECT_EQ(l->solutions.MN, 1);
}

TYPED_TEST(Reinstate, NothingCountsAsAFind) {
  using T = TypeParam;
  auto l = latticeOf<T>(testing::SMALL_TARGET);
  this->reinstate(*l, {this->star(Vector<T>("[ 2 1 ]"), 5)}, 3);
  EXPECT_EQ(l->bestSlack.targetNorm, T(1));
  EXPECT_EQ(l->bestSlack.secondsUntilDiscovered, 5);
  EXPECT_EQ(statisticsOf<T>().targetImprovements, 0);
  EXPECT_EQ(statisticsOf<T>().solutionsFound, 0);
  EXPECT_FALSE(l->search.reinserting);
}

// A kept vector that betters the target is known already: no restart follows.
TYPED_TEST(Reinstate, TargetOfAKeptVectorRestartsNothing) {
  using T = TypeParam;
  auto l = latticeOf<T>(testing::SMALL_TARGET);
  l->params.sol.set(0);
  l->finishEnabled = true;
  EXPECT_NO_THROW(this->reinstate(*l, {this->star(Vector<T>("[ 2 1 ]"), 5)}, 3));
  EXPECT_EQ(l->bestSlack.targetNorm, T(1));
}

// The collections come back in the form that the mode tells, each vector in that of its kind and with its
// time; what the lattice does not hold any more is left out.
TYPED_TEST(Reinstate, CollectedVectors) {
  using T = TypeParam;
  for (const int mode : {1, 2}) {
    auto l = latticeOf<T>(testing::SMALL);
    l->emptyCollections();
    const Vector<T> point = latticeVector(*l, "[ 2 1 ]");
    const Vector<T> difference = point - latticeVector(*l, "[ 1 1 ]");
    Vector<T> foreign = point;
    foreign[1] += T(1);
    typename TestFixture::Collection homogeneous, inhomogeneous;
    const auto keep = [&](auto& set, const Vector<T>& v, long seconds) {
      HeuristicVector<T, dbl_t> h;
      h = v;
      if (mode == 2) l->coordinates(v, h, false);
      h.secondsUntilDiscovered = seconds;
      set.append(h);
    };
    keep(homogeneous, difference, 7);
    keep(inhomogeneous, point, 9);
    if (mode == 1) keep(inhomogeneous, foreign, 11);
    reinstate(*l, ConversionArray<Star<T>>(), {}, homogeneous, inhomogeneous, mode);
    ASSERT_EQ(l->homogeneousVectors.count, 1) << mode;
    EXPECT_EQ(shown<T>(l->homogeneousVectors.head->value), shown(difference));
    EXPECT_EQ(l->homogeneousVectors.head->value.secondsUntilDiscovered, 7);
    ASSERT_EQ(l->inhomogeneousVectors.count, 1) << mode;
    EXPECT_EQ(shown<T>(l->inhomogeneousVectors.head->value), shown(point));
    EXPECT_EQ(l->inhomogeneousVectors.head->value.secondsUntilDiscovered, 9);
    EXPECT_EQ(l->solutions.MN, 0);
  }
}

TYPED_TEST(Reinstate, FlagComesBackWhenAnExceptionFlies) {
  using T = TypeParam;
  auto l = latticeOf<T>("[ ] [ ] [ ] [ ] [ [ 1 1 ] ] [ 1 ] [ 3 ] [ 0 0 ] [ 0 0 ] [ 4 inf ]");
  l->params.sol.set(0);
  l->finishEnabled = true;
  EXPECT_THROW(this->reinstate(*l, {this->star(Vector<T>("[ 1 2 ]"), 5)}, 3), RestartException);
  EXPECT_FALSE(l->search.reinserting);
}

// A solution survives the regeneration of its lattice, with its time.
TYPED_TEST(Reinstate, RegeneratedLatticeRemembers) {
  using T = TypeParam;
  auto l = latticeOf<T>("[ ] [ ] [ ] [ ] [ [ 1 1 ] ] [ 1 ] [ 3 ] [ 0 0 ] [ 0 0 ] [ 4 inf ]");
  l->params.sol.set(0);
  l->checkSolution(latticeVector(*l, "[ 1 2 ]"), foundAfter(4), false);
  l->checkSolution(latticeVector(*l, "[ 1 1 ]"), foundAfter(6), false);
  regenerateLattice(*l);
  ASSERT_EQ(l->solutions.MN, 2);
  EXPECT_EQ(l->solutions[1].secondsUntilDiscovered, 4);
  EXPECT_EQ(l->solutions[2].secondsUntilDiscovered, 6);
  EXPECT_FALSE(programAhead(*l));
}

// The best vector with an inhomogeneous coordinate, by its point of the program.
template <class T>
std::string bestPoint(const Lattice<T, dbl_t>& l) {
  if (!l.bestInhomogeneous.notEmpty()) return "none";
  Vector<T> x;
  EXPECT_EQ(l.lat2opt(l.bestInhomogeneous, x, false), 1);
  return shown(x);
}

// One row is bounded on one side, so that it becomes an equation with a slack; the second variable has no
// upper bound, the third none at all, and a find moves the bounds that they work with.
constexpr const char* ONE_SIDED =
    "[ ] [ ] [ ] [ ] [ [ 1 1 0 ] [ 1 1 1 ] ] [ 3 -2 ] [ inf 5 ] [ 0 0 0 ] [ 0 0 -inf ] [ 4 inf inf ]";

// A vector in unit coordinates that stands for the point, and breaks the one-sided row by so much.
template <class T>
Vector<T> nearMiss(const Lattice<T, dbl_t>& l, const char* feasible, const Vector<T>& step, long times) {
  Vector<T> v = latticeVector(l, feasible);
  for (long k = 0; k < times; ++k) v = v + step;
  return v;
}

TYPED_TEST(Reinstate, TheBestNearMissIsKnownInTheNewLattice) {
  using T = TypeParam;
  auto l = latticeOf<T>(ONE_SIDED);
  l->params.sol.set(0);
  l->params.pair.set(false);
  l->forgetFinds();
  const Vector<T> step = latticeVector(*l, "[ 3 1 0 ]") - latticeVector(*l, "[ 4 1 0 ]");
  const Vector<T> v = nearMiss<T>(*l, "[ 4 1 0 ]", step, 3);  // (1, 1, 0): the row's value is 2, not 3
  ASSERT_TRUE(l->isMember(v));
  ASSERT_EQ(l->checkSolution(v, foundAfter(17), false) & CHECK_FEASIBLE, 0u);
  ASSERT_EQ(bestPoint(*l), "[ 1 1 0 ]");
  const Vector<T> before = l->bestInhomogeneous;
  // The bounds move, so that the new lattice has other coordinates for the same point.
  l->checkSolution(latticeVector(*l, "[ 2 7 -6 ]"), foundAfter(20), false);
  regenerateLattice(*l);
  EXPECT_EQ(bestPoint(*l), "[ 1 1 0 ]");
  EXPECT_EQ(l->bestInhomogeneous.secondsUntilDiscovered, 17);
  EXPECT_EQ(l->bestInhomogeneous.MN, l->dim);
  EXPECT_NE(shown<T>(l->bestInhomogeneous), shown(before));
  EXPECT_TRUE(l->isMember(l->bestInhomogeneous));
}

// The way through the lattice of the equations has improvements of its own, with a known vector or without.
TYPED_TEST(Reinstate, AKnownNearMissIsNoImprovement) {
  using T = TypeParam;
  const auto improvements = [](bool known) {
    auto l = latticeOf<T>(ONE_SIDED);
    l->params.pair.set(false);
    l->forgetFinds();
    const Vector<T> step = latticeVector(*l, "[ 3 1 0 ]") - latticeVector(*l, "[ 4 1 0 ]");
    if (known) l->checkSolution(nearMiss<T>(*l, "[ 4 1 0 ]", step, 3), foundAfter(17), false);
    const long long before = statisticsOf<T>().inhomogeneousImprovements;
    regenerateLattice(*l);
    EXPECT_EQ(bestPoint(*l) == "[ 1 1 0 ]", known);
    return statisticsOf<T>().inhomogeneousImprovements - before;
  };
  EXPECT_EQ(improvements(true), improvements(false));
}

// It is measured anew: what is better in the new lattice takes its place, what is worse does not.
TYPED_TEST(Reinstate, TheBestNearMissIsMeasuredAnew) {
  using T = TypeParam;
  auto l = latticeOf<T>(ONE_SIDED);
  l->params.sol.set(0);
  l->params.pair.set(false);
  l->forgetFinds();
  const Vector<T> step = latticeVector(*l, "[ 3 1 0 ]") - latticeVector(*l, "[ 4 1 0 ]");
  l->checkSolution(nearMiss<T>(*l, "[ 4 1 0 ]", step, 3), foundAfter(17), false);
  regenerateLattice(*l);
  ASSERT_EQ(bestPoint(*l), "[ 1 1 0 ]");
  const auto measure = l->computeDeviation(l->bestInhomogeneous);
  EXPECT_FALSE(better(measure, l->bestInhomogeneous.deviation));
  EXPECT_FALSE(better(l->bestInhomogeneous.deviation, measure));
  const Vector<T> again = latticeVector(*l, "[ 3 1 0 ]") - latticeVector(*l, "[ 4 1 0 ]");
  l->checkSolution(nearMiss<T>(*l, "[ 4 1 0 ]", again, 5), foundAfter(20), false);
  EXPECT_EQ(bestPoint(*l), "[ 1 1 0 ]");
}

// A vector of a lattice that is gone and that the new one does not hold: its slack would be a fraction, or a
// variable that is fixed by now has another value.
TYPED_TEST(Reinstate, ANearMissThatIsNoVectorOfTheNewLatticeIsDropped) {
  using T = TypeParam;
  auto l = latticeOf<T>(testing::SMALL);
  l->params.pair.set(false);
  l->forgetFinds();
  l->checkSolution(latticeVector(*l, "[ 4 0 ]"), foundAfter(17), false);
  ASSERT_EQ(bestPoint(*l), "[ 4 0 ]");
  l->program.lx[2] = l->program.rx[2] = T(1);
  regenerateLattice(*l);
  EXPECT_NE(bestPoint(*l), "[ 4 0 ]");
  EXPECT_TRUE(!l->bestInhomogeneous.notEmpty() || l->isMember(l->bestInhomogeneous));
}

}  // namespace
}  // namespace latbox
