// How far vectors are from feasible: the list of deviations and the measure of a near-solution.
#include "lattice/support.h"
#include "program/memory.h"
#include "support/failure.h"
#include "support/lattice.h"

namespace latbox::testing {
namespace {

template <class T>
std::string listed(const DeviationList<T>& list) {
  std::string text;
  for (long i = 1; i <= list.MN; ++i)
    text += std::to_string(list[i].left) + ":" + toText(list[i].right) + " ";
  return text;
}

using Record = HeuristicDeviation<dbl_t>;

void expectSameRecord(const Record& a, const Record& b) {
  EXPECT_EQ(a.f, b.f);
  EXPECT_EQ(a.fs, b.fs);
  EXPECT_EQ(a.fm, b.fm);
  EXPECT_EQ(a.fc, b.fc);
  EXPECT_EQ(a.tn, b.tn);
  EXPECT_EQ(a.worstIndex, b.worstIndex);
  EXPECT_EQ(a.len, b.len);
  EXPECT_EQ(a.kind, b.kind);
}

// SMALL_TARGET once the point (2, 1) of value 1 has been judged: the combined target must fall to 0 now, and
// is coordinate 1 of the lattice.
template <class T>
LatticePointer<T> improvedLattice() {
  auto l = latticeOf<T>(SMALL_TARGET);
  l->checkSolution(latticeVector(*l, "[ 2 1 ]"), NOW, false);
  regenerateLattice(*l);
  return l;
}

}  // namespace

template <class T>
class Deviation : public ::testing::Test {
 public:
  // Three coordinates before two variables and the inhomogeneous one, with these bounds.
  void boxed(Lattice<T, dbl_t>& l, const std::vector<long>& low, const std::vector<long>& high) {
    const long dim = static_cast<long>(low.size());
    l.resizeLattice(1, dim);
    l.lbnd = vectorOf<T>(low);
    l.ubnd = vectorOf<T>(high);
    l.takeBounds(2);
  }
};
TYPED_TEST_SUITE(Deviation, NumberTypes);

TYPED_TEST(Deviation, ListHoldsWhatMissesLargestFirst) {
  using T = TypeParam;
  Lattice<T, dbl_t> l;
  this->boxed(l, {-1, -2, -3, -4, 1}, {1, 2, 3, 4, 1});
  EXPECT_EQ(listed(l.deviations(vectorOf<T>({-4, 9, 3, -5, 1}), false, false)), "2:7 1:3 4:1 ");
  EXPECT_EQ(listed(l.deviations(vectorOf<T>({1, -2, 3, -4, 1}), false, false)), "");
  EXPECT_EQ(listed(l.deviations(vectorOf<T>({3, 4, 5, 4, 1}), false, false)), "1:2 2:2 3:2 ");
  // The inhomogeneous coordinate is one like the others.
  EXPECT_EQ(listed(l.deviations(vectorOf<T>({0, 0, 0, 0, 0}), false, false)), "5:1 ");
  EXPECT_EQ(listed(l.deviations(vectorOf<T>({0, 0, 0, 0, -1}), true, false)), "5:2 ");
}

TYPED_TEST(Deviation, CrossedBoundsTakeTheGreaterTerm) {
  using T = TypeParam;
  Lattice<T, dbl_t> l;
  this->boxed(l, {3, 1}, {-5, 1});
  EXPECT_EQ(listed(l.deviations(vectorOf<T>({0, 1}), false, false)), "1:5 ");
  EXPECT_EQ(listed(l.deviations(vectorOf<T>({-4, 1}), false, false)), "1:7 ");
}

TYPED_TEST(Deviation, WhatIsZeroByTheToleranceIsCutOff) {
  using T = TypeParam;
  Lattice<T, dbl_t> l;
  this->boxed(l, {0, 0, 1}, {1, 1, 1});
  Vector<T> v = vectorOf<T>({1, 0, 1});
  v[1] += T(1) / powerOfTen<T>(10);
  v[2] -= T(1) / powerOfTen<T>(6);
  const auto list = l.deviations(v, false, false);
  ASSERT_EQ(list.MN, 1);
  EXPECT_EQ(list[1].left, 2);
  EXPECT_EQ(l.computeDeviation(v).fc, 1);
}

TYPED_TEST(Deviation, MissingBoundsOfVariablesAreNeverMissed) {
  using T = TypeParam;
  Lattice<T, dbl_t> l;
  this->boxed(l, {-4, -4, -4, -4, -4, 1}, {4, 4, 4, 4, 4, 1});
  l.fx.resize(4, false);
  l.fx[1] = FreedomDegree::bounded;
  l.fx[2] = FreedomDegree::noLower;
  l.fx[3] = FreedomDegree::noUpper;
  l.fx[4] = FreedomDegree::free;
  EXPECT_EQ(listed(l.deviations(vectorOf<T>({9, 9, 10, 11, 12, 1}), false, false)), "3:6 1:5 2:5 ");
  EXPECT_EQ(listed(l.deviations(vectorOf<T>({-9, -9, -10, -11, -12, 1}), false, false)), "4:7 1:5 2:5 ");
}

TYPED_TEST(Deviation, HalfFreeVariableOfAProgram) {
  using T = TypeParam;
  auto l = latticeOf<T>("[ ] [ ] [ ] [ ] [ [ 1 1 ] ] [ 1 ] [ 3 ] [ 0 0 ] [ 0 0 ] [ 4 inf ]");
  auto d = l->computeDeviation(latticeVector(*l, "[ 0 1000 ]"));
  EXPECT_EQ(d.fc, 1);  // the row alone
  EXPECT_EQ(d.worstIndex, 1);
  EXPECT_EQ(l->computeDeviation(latticeVector(*l, "[ 2 -1 ]")).fc, 1);  // its lower bound
}

TYPED_TEST(Deviation, WeightedVectorsAreUnscaledFirst) {
  using T = TypeParam;
  auto l = latticeOf<T>(SMALL);
  const Vector<T> unit = latticeVector(*l, "[ 5 -2 ]");
  const std::string expected = listed(l->deviations(unit, false, false));
  EXPECT_EQ(expected, "3:4 2:2 ");
  l->setScale(1, T(3));
  l->setScale(4, T(-2));
  l->setTranslation(2, T(5));
  Vector<T> weighted;
  l->rescaledVector(unit, weighted);
  EXPECT_EQ(listed(l->deviations(weighted, false, true)), expected);
  EXPECT_EQ(listed(l->deviations(unit, false, false)), expected);
}

// The bounds of coordinate 1 are both 0 there: read as a box it would deviate whatever the target is.
TYPED_TEST(Deviation, BoundedTargetDeviatesByItsExcess) {
  using T = TypeParam;
  auto l = improvedLattice<T>();
  ASSERT_TRUE(l->generatedTu);
  ASSERT_EQ(l->program.rtu(), T(0));
  EXPECT_EQ(listed(l->deviations(latticeVector(*l, "[ 2 1 ]"), false, false)), "1:1 ");
  EXPECT_EQ(listed(l->deviations(latticeVector(*l, "[ 2 0 ]"), false, false)), "1:2 ");
  EXPECT_EQ(listed(l->deviations(-latticeVector(*l, "[ 0 1 ]"), true, false)).back(), ' ');
  EXPECT_EQ(listed(l->deviations(latticeVector(*l, "[ 1 1 ]"), false, false)), "");
  EXPECT_EQ(listed(l->deviations(latticeVector(*l, "[ 0 3 ]"), false, false)), "");
}

// The value of the combined target of a program with slack and deviation variables takes those into account.
TYPED_TEST(Deviation, ExcessOfATargetThatIsAValue) {
  using T = TypeParam;
  auto l = latticeOf<T>("[ 4 ] [ [ 1 1 ] ] [ ] [ ] [ [ 1 -1 ] ] [ -2 ] [ 2 ] [ 0 0 ] [ 0 0 ] [ 4 4 ]");
  ASSERT_GT(l->deviationCount, 0);
  l->checkSolution(latticeVector(*l, "[ 1 2 ]"), NOW, false);  // 1 from the value
  regenerateLattice(*l);
  ASSERT_TRUE(l->generatedTu);
  ASSERT_EQ(l->program.rtu(), T(0));
  EXPECT_EQ(listed(l->deviations(latticeVector(*l, "[ 1 1 ]"), false, false)), "1:2 ");
  EXPECT_EQ(listed(l->deviations(latticeVector(*l, "[ 2 2 ]"), false, false)), "");
}

// The layout is that of the basis: the program may know of a bound that the basis was generated without.
TYPED_TEST(Deviation, BoundThatCameAfterTheBasisMovesNoCoordinate) {
  using T = TypeParam;
  auto l = latticeOf<T>(SMALL_TARGET);
  const Vector<T> v = latticeVector(*l, "[ 4 2 ]");
  const std::string before = listed(l->deviations(v, false, false));
  const Record measured = l->computeDeviation(v);
  l->checkSolution(latticeVector(*l, "[ 2 1 ]"), NOW, false);
  ASSERT_TRUE(l->program.tu);
  ASSERT_FALSE(l->generatedTu);
  EXPECT_EQ(listed(l->deviations(v, false, false)), before);
  EXPECT_EQ(listed(l->deviations(v, true, false)), before);
  expectSameRecord(l->computeDeviation(v), measured);
}

// The equation lattice has no coordinate for the target.
TYPED_TEST(Deviation, EquationLatticeHasNoTargetCoordinate) {
  using T = TypeParam;
  Lattice<T, dbl_t> l;
  this->boxed(l, {-1, -2, 1}, {1, 2, 1});
  l.generatedTu = true;
  l.checkMode = CHECK_MODE_EQUATIONS;
  EXPECT_EQ(listed(l.deviations(vectorOf<T>({9, 5, 1}), true, false)), "1:8 2:3 ");
  EXPECT_EQ(l.computeDeviation(vectorOf<T>({9, 5, 1})).fc, 2);
  l.checkMode = CHECK_MODE_FINAL;
  EXPECT_EQ(listed(l.deviations(vectorOf<T>({9, 5, 1}), true, false)), "1:3 ");
}

TYPED_TEST(Deviation, SkippedTargetShiftsTheNumbers) {
  using T = TypeParam;
  auto l = improvedLattice<T>();
  const Vector<T> v = latticeVector(*l, "[ 4 2 ]");
  const auto all = l->deviations(v, false, false), skipped = l->deviations(v, true, false);
  ASSERT_EQ(all.MN, 2);
  ASSERT_EQ(skipped.MN, 1);
  const long place = all[1].left == 1 ? 2 : 1;
  EXPECT_EQ(all[place].left, 2);
  EXPECT_EQ(skipped[1].left, 1);
  EXPECT_EQ(skipped[1].right, all[place].right);
  EXPECT_EQ(l->computeDeviation(v).worstIndex, 1);
}

TYPED_TEST(Deviation, UnboundedTargetIsNoCoordinate) {
  using T = TypeParam;
  auto l = latticeOf<T>("[ -inf ] [ [ 1 0 ] ] [ ] [ ] [ [ 1 1 ] ] [ 1 ] [ 3 ] [ 0 0 ] [ 0 0 ] [ inf inf ]");
  ASSERT_FALSE(l->generatedTu);
  EXPECT_EQ(l->deviations(latticeVector(*l, "[ 4 4 ]"), false, false)[1].left, 1);
  EXPECT_EQ(listed(l->deviations(latticeVector(*l, "[ 1 1 ]"), false, false)), "");
}

TYPED_TEST(Deviation, RecordOfAnInfeasibleVector) {
  auto l = latticeOf<TypeParam>(SMALL);
  const Record d = l->computeDeviation(latticeVector(*l, "[ 5 4 ]"));  // 28 6 4 1
  EXPECT_EQ(d.kind, 2);
  EXPECT_FALSE(d.f);
  EXPECT_EQ(d.fs, std::numeric_limits<dbl_t>::infinity());
  EXPECT_EQ(d.fc, 2);
  EXPECT_EQ(d.fm, 24);
  EXPECT_EQ(d.tn, 26);
  EXPECT_EQ(d.worstIndex, 1);
  EXPECT_EQ(d.len, 784 + 36 + 16 + 1);
}

TYPED_TEST(Deviation, KindGoesByTheLastCoordinate) {
  auto l = latticeOf<TypeParam>(SMALL);
  EXPECT_EQ(l->computeDeviation(vectorOf<TypeParam>({4, 2, 0, 0})).kind, 1);
  EXPECT_EQ(l->computeDeviation(vectorOf<TypeParam>({0, 0, 0, 0})).kind, 1);
  EXPECT_EQ(l->computeDeviation(vectorOf<TypeParam>({4, 2, 0, 2})).kind, 2);
  EXPECT_EQ(l->computeDeviation(vectorOf<TypeParam>({4, 2, 0, -1})).kind, 2);
}

// Without targets such a vector is a solution, and not called feasible.
TYPED_TEST(Deviation, NothingMissedWithoutTargets) {
  auto l = latticeOf<TypeParam>(SMALL);
  const Record d = l->computeDeviation(latticeVector(*l, "[ 1 1 ]"));
  EXPECT_FALSE(d.f);
  EXPECT_EQ(d.fc, 0);
  EXPECT_EQ(d.fm, 0);
  EXPECT_EQ(d.tn, 0);
  EXPECT_EQ(d.worstIndex, 0);
  EXPECT_EQ(d.fs, std::numeric_limits<dbl_t>::infinity());
  EXPECT_EQ(d.len, 9);
}

TYPED_TEST(Deviation, FeasibleVectorCarriesItsTargetNorm) {
  auto l = latticeOf<TypeParam>(SMALL_TARGET);
  for (const auto& [point, norm] : {std::pair("[ 1 1 ]", 0), {"[ 3 0 ]", 3}, {"[ 0 2 ]", -2}}) {
    const Record d = l->computeDeviation(latticeVector(*l, point));
    EXPECT_TRUE(d.f);
    EXPECT_EQ(d.fc, 0);
    EXPECT_EQ(d.fs, norm);
  }
  auto improved = improvedLattice<TypeParam>();  // the target's coordinate decides nothing
  EXPECT_EQ(improved->computeDeviation(latticeVector(*improved, "[ 3 0 ]")).fs, 3);
}

TYPED_TEST(Deviation, TargetNormOfAFreshStartNeedsSlacksAndDeviations) {
  auto l =
      latticeOf<TypeParam>("[ 4 ] [ [ 1 1 ] ] [ ] [ ] [ [ 1 -1 ] ] [ -2 ] [ 2 ] [ 0 0 ] [ 0 0 ] [ 4 4 ]");
  const Vector<TypeParam> v = latticeVector(*l, "[ 1 1 ]");
  const Record d = l->computeDeviation(v);
  EXPECT_TRUE(d.f);
  EXPECT_EQ(d.fs, 2);
}

TYPED_TEST(Deviation, NegationOfAFeasibleVector) {
  auto l = latticeOf<TypeParam>(SMALL_TARGET);
  const Vector<TypeParam> v = latticeVector(*l, "[ 0 2 ]");
  Record plus, minus;
  l->computeDeviations(-v, plus, minus);
  EXPECT_FALSE(plus.f);
  EXPECT_TRUE(minus.f);
  EXPECT_EQ(minus.fs, -2);
  expectSameRecord(minus, l->computeDeviation(v));
  expectSameRecord(plus, l->computeDeviation(-v));
}

// A record that was used before holds nothing of the former vector.
TYPED_TEST(Deviation, RecordsAreWrittenWhole) {
  auto l = latticeOf<TypeParam>(SMALL_TARGET);
  Record plus, minus;
  l->computeDeviations(latticeVector(*l, "[ 1 1 ]"), plus, minus);
  l->computeDeviations(latticeVector(*l, "[ 4 4 ]"), plus, minus);
  expectSameRecord(plus, l->computeDeviation(latticeVector(*l, "[ 4 4 ]")));
  expectSameRecord(minus, l->computeDeviation(-latticeVector(*l, "[ 4 4 ]")));
}

// Against the definition, with everything computed apart: one maximum per coordinate.
TYPED_TEST(Deviation, RandomVectorsAgainstTheDefinition) {
  using T = TypeParam;
  Draws draw(7);
  for (int round = 0; round < 300; ++round) {
    const long dim = draw.next(1, 12), variables = draw.next(0, dim - 1);
    Lattice<T, dbl_t> l;
    l.resizeLattice(1, dim);
    l.fx.resize(variables, false);
    Vector<T> v(dim);
    for (long i = 1; i <= dim; ++i) {
      l.lbnd[i] = T(draw.next(-9, 4)) / T(2);
      l.ubnd[i] = l.lbnd[i] + T(draw.next(0, 9));
      v[i] = T(draw.next(-12, 12)) / T(2);
    }
    for (long j = 1; j <= variables; ++j) {
      l.fx[j] = static_cast<FreedomDegree>(draw.next(0, 3));
      if (l.fx[j] == FreedomDegree::free && draw.next(0, 1) == 1) {
        l.lbnd[dim - 1 - variables + j] = -infinity<T>();
        l.ubnd[dim - 1 - variables + j] = infinity<T>();
      }
    }
    l.takeBounds(2);
    for (const int sign : {1, -1}) {
      dbl_t sum = 0, largest = 0, length = 0;
      long count = 0, worst = 0;
      for (long i = 1; i <= dim; ++i) {
        const dbl_t x = sign * toDouble(v[i]);
        const long j = i == dim ? 0 : i - (dim - 1 - variables);
        const int freedom = j >= 1 ? static_cast<int>(l.fx[j]) : 0;
        const dbl_t below = freedom % 2 == 1 ? 0 : toDouble(l.lbnd[i]) - x;
        const dbl_t above = freedom >= 2 ? 0 : x - toDouble(l.ubnd[i]);
        const dbl_t d = std::max(std::max(below, above), static_cast<dbl_t>(0));
        length += x * x;
        if (d <= EPS) continue;
        ++count;
        sum += d;
        if (d > largest) {
          largest = d;
          worst = i;
        }
      }
      Record plus, minus;
      l.computeDeviations(v, plus, minus);
      const Record& measured = sign == 1 ? plus : minus;
      EXPECT_EQ(measured.fc, count);
      EXPECT_EQ(measured.fm, largest);
      EXPECT_EQ(measured.tn, sum);
      EXPECT_EQ(measured.worstIndex, worst);
      EXPECT_EQ(measured.len, length);
      EXPECT_EQ(measured.kind, isZero(v[dim]) ? 1 : 2);
      const Vector<T> signedVector = sign == 1 ? v : -v;
      expectSameRecord(measured, l.computeDeviation(signedVector));
      const auto list = l.deviations(signedVector, true, false);
      EXPECT_EQ(list.MN, count);
      for (long k = 2; k <= list.MN; ++k) EXPECT_FALSE(list[k - 1].right < list[k].right);
    }
  }
}

}  // namespace latbox::testing
