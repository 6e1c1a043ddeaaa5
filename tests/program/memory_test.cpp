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

}  // namespace
}  // namespace latbox
