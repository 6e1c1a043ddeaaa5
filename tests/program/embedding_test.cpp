#include "lib/exceptions.h"
#include "program/generation.h"
#include "support/failure.h"
#include "support/lattice.h"

namespace latbox {
namespace {

using testing::latticeOf;
using testing::latticeVector;
using testing::preparedLattice;
using testing::shown;

template <class T>
class Embedding : public ::testing::Test {};
using NumberTypes = ::testing::Types<dbl_t, QQ>;
TYPED_TEST_SUITE(Embedding, NumberTypes);

TYPED_TEST(Embedding, PointsOfTheSmallExample) {
  auto l = latticeOf<TypeParam>(testing::SMALL);
  EXPECT_EQ(shown(latticeVector(*l, "[ 1 1 ]")), "[ 0 -2 -2 1 ]");
  EXPECT_EQ(shown(latticeVector(*l, "[ 4 4 ]")), "[ 24 4 4 1 ]");
}

TYPED_TEST(Embedding, UninitialisedCheckVectorsFail) {
  using T = TypeParam;
  Lattice<T, dbl_t> l;
  Vector<T> v("[ 1 ]"), w;
  EXPECT_FAILURE(l.lat2opt(v, w, true), "lat2opt called with uninitialized check vectors!");
  EXPECT_FAILURE(l.opt2lat(v, w, false), "opt2lat called with uninitialized check vectors!");
}

TYPED_TEST(Embedding, VectorsThatAreNoneFail) {
  using T = TypeParam;
  auto l = latticeOf<T>(testing::SMALL);
  Vector<T> x;
  EXPECT_FAILURE(l->lat2opt(Vector<T>(), x, true), "lat_vec == 0");
  EXPECT_FAILURE(l->lat2opt(Vector<T>("[ 1 2 3 ]"), x, true), "lat_vec doesn't match lattice dimension");
  EXPECT_FAILURE(l->opt2lat(Vector<T>("[ 1 ]"), x, false), "lat_vec doesn't match lattice dimension");
  EXPECT_FALSE(l->tryOpt2lat(Vector<T>("[ 1 2 3 ]"), x, false));
}

TYPED_TEST(Embedding, ResultTellsTheInhomogeneousCoordinate) {
  using T = TypeParam;
  auto l = latticeOf<T>(testing::SMALL);
  Vector<T> x;
  EXPECT_EQ(l->lat2opt(Vector<T>("[ 0 -2 -2 1 ]"), x, true), 1);
  EXPECT_EQ(shown(x), "[ 1 1 ]");
  EXPECT_EQ(l->lat2opt(Vector<T>("[ 0 2 2 -1 ]"), x, true), 1);
  EXPECT_EQ(shown(x), "[ 1 1 ]");
  EXPECT_EQ(l->lat2opt(Vector<T>("[ 4 2 0 0 ]"), x, true), -1);
  EXPECT_EQ(l->lat2opt(Vector<T>("[ 4 2 0 2 ]"), x, true), -1);
}

// Digits, a fixed variable in the middle, a swapped one, a shifted one.
constexpr const char* MIXED =
    "[ ] [ ] [ ] [ ] [ [ 10 1 1 1 ] ] [ -40 ] [ 60 ] [ 1 0 0 0 ] [ 0 7 -inf -3 ] [ 2.5 7 5 6 ]";

TYPED_TEST(Embedding, EveryKindOfVariable) {
  using T = TypeParam;
  auto l = latticeOf<T>(MIXED);
  ASSERT_EQ(l->n(), 3);
  const Vector<T> v = latticeVector(*l, "[ 1.5 7 -4 2 ]");
  EXPECT_TRUE(l->isMember(v));
  Vector<T> x;
  EXPECT_EQ(l->lat2opt(v, x, true), 1);
  EXPECT_EQ(x, Vector<T>("[ 1.5 7 -4 2 ]"));
}

TYPED_TEST(Embedding, RandomRoundTrips) {
  using T = TypeParam;
  auto l = latticeOf<T>(MIXED);
  testing::Draws draws(3);
  for (int k = 0; k < 500; ++k) {
    Vector<T> x(4L), back, v;
    x[1] = T(draws.next(-30, 60)) / T(10);
    x[2] = T(7);
    x[3] = T(draws.next(-90, 5));
    x[4] = T(draws.next(-3, 6));
    ASSERT_TRUE(l->tryOpt2lat(x, v, false));
    ASSERT_TRUE(l->isMember(v));
    ASSERT_EQ(l->lat2opt(v, back, false), 1);
    ASSERT_EQ(back, x);
    Vector<T> again;
    l->opt2lat(back, again, false);
    ASSERT_EQ(again, v);
    ASSERT_EQ(l->lat2opt(-v, back, false), 1);
    ASSERT_EQ(back, x);
  }
}

// Rows of the lattice added to a vector: what comes back is the same vector, in lattice coordinates.
TYPED_TEST(Embedding, LatticeVectorsComeBack) {
  using T = TypeParam;
  auto l =
      latticeOf<T>("[ ] [ ] [ [ 3 5 7 ] ] [ 38 ] [ [ 1 1 1 ] ] [ 4 ] [ 9 ] [ 0 0 0 ] [ 0 0 0 ] [ 10 9 8 ]");
  const Vector<T> base = latticeVector(*l, "[ 6 4 0 ]");
  testing::Draws draws(11);
  for (int k = 0; k < 300; ++k) {
    Vector<T> v = base, x, back;
    for (long i = 1; i <= l->rank; ++i) {
      const T& last = l->B_save[i][l->dim];
      if (isZero(last)) v.addMultiple(T(draws.next(-3, 3)), l->B_save[i]);
    }
    ASSERT_EQ(l->lat2opt(v, x, true), 1);
    l->opt2lat(x, back, false);
    ASSERT_EQ(back, v);
  }
}

constexpr const char* HALF_INFINITE =
    "[ ] [ ] [ [ 1 1 1 ] ] [ 6 ] [ [ 1 -1 0 ] [ 2 0 -1 ] ] [ 0 1 ] [ inf inf ] [ 0 0 0 ] [ 0 0 0 ] [ 5 5 5 ]";

TYPED_TEST(Embedding, SlacksFollowFromTheirEquations) {
  using T = TypeParam;
  auto l = latticeOf<T>(HALF_INFINITE);
  ASSERT_EQ(l->slackCount, 2);
  const Vector<T> v = latticeVector(*l, "[ 3 1 2 ]");
  EXPECT_TRUE(l->isMember(v));
  Vector<T> all, users;
  EXPECT_EQ(l->lat2opt(v, all, true), 1);
  EXPECT_EQ(shown(users), "[ ]");
  EXPECT_EQ(l->lat2opt(v, users, false), 1);
  EXPECT_EQ(shown(users), "[ 3 1 2 ]");
  ASSERT_EQ(all.MN, 5);
  // x1 - x2 - s = 0 and 2 x1 - x3 - s = 1.
  EXPECT_EQ(all[4] + all[5], T(5));
}

TYPED_TEST(Embedding, NegativeSlack) {
  using T = TypeParam;
  auto l = latticeOf<T>(HALF_INFINITE);
  Vector<T> v;
  EXPECT_FALSE(l->tryOpt2lat(Vector<T>("[ 1 3 2 ]"), v, false));
  EXPECT_FAILURE(l->opt2lat(Vector<T>("[ 1 3 2 ]"), v, false),
                 "slack variable insonsistency, s should be >= 0");
}

// The rows of the equations change places: the slack finds its own all the same.
TYPED_TEST(Embedding, SlackEquationIsFoundByItsEntry) {
  using T = TypeParam;
  auto l = latticeOf<T>(HALF_INFINITE);
  const Vector<T> before = latticeVector(*l, "[ 3 1 2 ]");
  l->Ag.swapRows(1, l->Ag.M);
  l->bg.swap(1, l->Ag.M);
  EXPECT_EQ(latticeVector(*l, "[ 3 1 2 ]"), before);
}

// x1 / 2 >= 1/4 becomes 2 x1 - 4 s = 1, which no integer slack meets.
TYPED_TEST(Embedding, FractionalSlack) {
  using T = TypeParam;
  auto l = preparedLattice<T>("[ ] [ ] [ ] [ ] [ [ 1/2 1 ] ] [ 0 ] [ inf ] [ 0 0 ] [ 0 0 ] [ 5 5 ]");
  generateLattice(*l, true);
  Vector<T> v;
  EXPECT_TRUE(l->tryOpt2lat(Vector<T>("[ 2 1 ]"), v, false));
  EXPECT_TRUE(l->isMember(v));
  EXPECT_FALSE(l->tryOpt2lat(Vector<T>("[ 1 1 ]"), v, false));
  l->opt2lat(Vector<T>("[ 1 1 ]"), v, false);  // the failure is that of a negative slack alone
  EXPECT_FALSE(l->isMember(v));
}

TYPED_TEST(Embedding, DeviationPairTakesTheSide) {
  using T = TypeParam;
  auto l = latticeOf<T>("[ 3 ] [ [ 1 2 ] ] [ ] [ ] [ ] [ ] [ ] [ 0 0 ] [ 0 0 ] [ 4 4 ]");
  ASSERT_EQ(l->deviationCount, 2);
  Vector<T> x;
  EXPECT_EQ(l->lat2opt(latticeVector(*l, "[ 4 2 ]"), x, true), 1);
  EXPECT_EQ(shown(x), "[ 4 2 0 5 ]");
  EXPECT_EQ(l->lat2opt(latticeVector(*l, "[ 0 1 ]"), x, true), 1);
  EXPECT_EQ(shown(x), "[ 0 1 1 0 ]");
}

TYPED_TEST(Embedding, EquationLatticeHoldsResiduals) {
  using T = TypeParam;
  auto l = preparedLattice<T>("[ ] [ ] [ [ 1 2 ] ] [ 7 ] [ ] [ ] [ ] [ 0 0 ] [ 0 0 ] [ 10 10 ]");
  generateLattice(*l, true);
  EXPECT_EQ(shown(latticeVector(*l, "[ 3 2 ]")), "[ 0 -4 -6 1 ]");
  EXPECT_EQ(shown(latticeVector(*l, "[ 4 2 ]")), "[ 1 -2 -6 1 ]");
}

TYPED_TEST(Embedding, TransformedTakesTheWeights) {
  using T = TypeParam;
  auto l = latticeOf<T>(testing::SMALL);
  l->setScale(1, T(3));
  l->setTranslation(2, T(5));
  Vector<T> weighted, unit;
  l->opt2lat(Vector<T>("[ 2 1 ]"), weighted, true);
  l->unscaledVector(weighted, unit);
  EXPECT_EQ(unit, latticeVector(*l, "[ 2 1 ]"));
  EXPECT_NE(weighted, unit);
}

TYPED_TEST(Embedding, NoNegativeZeros) {
  auto l = latticeOf<TypeParam>("[ ] [ ] [ ] [ ] [ [ 1 1 ] ] [ -1 ] [ 3 ] [ 0 0 ] [ -inf 0 ] [ 0 4 ]");
  Vector<TypeParam> x;
  EXPECT_EQ(l->lat2opt(latticeVector(*l, "[ 0 0 ]"), x, true), 1);
  EXPECT_EQ(shown(x), "[ 0 0 ]");
}

// A star of a program in which the variable was fixed otherwise, or not at all.
TYPED_TEST(Embedding, AnotherValueOfAFixedVariableDoesNotFit) {
  using T = TypeParam;
  auto l = latticeOf<T>(MIXED);
  Vector<T> v;
  EXPECT_TRUE(l->tryOpt2lat(Vector<T>("[ 1.5 7 -4 2 ]"), v, false));
  EXPECT_FALSE(l->tryOpt2lat(Vector<T>("[ 1.5 8 -4 2 ]"), v, false));
  EXPECT_FALSE(l->tryOpt2lat(Vector<T>("[ 1.5 inf -4 2 ]"), v, false));
}

// Symptom: a point with 16:59157142857142823/118314285714285716 in place of 16.5, a digit off its grid.
TEST(EmbeddingAcross, RoundedMultipliersGiveWholeVariables) {
  const char* program = "[ ] [ ] [ ] [ ] [ [ 1 1 ] ] [ 0 ] [ 6 ] [ 1 0 ] [ -2 0 ] [ 3.1 4 ]";
  auto standard = latticeOf<dbl_t>(program);
  Lattice<QQ, dbl_t> extended;
  extended.convertFrom(*standard);
  Vector<QQ> v;
  v.assignConverted(latticeVector(*standard, "[ 0.7 3 ]"), [](dbl_t x) { return QQ(x); });
  Vector<QQ> x;
  EXPECT_EQ(extended.lat2opt(v, x, true), 1);
  EXPECT_EQ(shown(x), "[ 7/10 3 ]");
}

// Each of the terms of the row is more than standard precision holds; what is left of them is small.
TEST(EmbeddingStandard, LargeTermsThatCancelAskForExactArithmetic) {
  auto l = latticeOf<dbl_t>(testing::SMALL);
  Vector<dbl_t> v;
  EXPECT_THROW(l->opt2lat(Vector<dbl_t>("[ 4000000000000000001 -4000000000000000000 ]"), v, false),
               FatalPrecisionException);
  auto slacked = latticeOf<dbl_t>(HALF_INFINITE);
  slacked->Ag *= 1e17L;
  slacked->bg *= 1e17L;
  EXPECT_THROW(slacked->opt2lat(Vector<dbl_t>("[ 30 30 30 ]"), v, false), FatalPrecisionException);
}

TEST(EmbeddingStandard, OverflowTexts) {
  auto l = latticeOf<dbl_t>("[ ] [ ] [ ] [ ] [ [ 1 1 ] ] [ 1 ] [ 3 ] [ 0 0 ] [ 0 0 ] [ 4 inf ]");
  Vector<dbl_t> v;
  testing::expectPrecisionException([&] { l->opt2lat(Vector<dbl_t>("[ 0 800000000 ]"), v, false); },
                                    "lat_vec overflow");
  testing::expectPrecisionException([&] { l->lat2opt(Vector<dbl_t>("[ 0 0 9000000000 1 ]"), v, false); },
                                    "opt_vec overflow1");
}

}  // namespace
}  // namespace latbox
