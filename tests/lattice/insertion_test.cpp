// The three ways in which a combination of basis vectors enters the basis.
#include "lattice/support.h"

#include "lib/exceptions.h"
#include "params/statistics.h"
#include "support/failure.h"
#include "support/lattice.h"

namespace latbox::testing {

template <class T>
class InsertionTest : public ::testing::Test {
 public:
  InsertionTest() { statisticsOf<T>() = Statistics(); }

  void start(const Rows& rows) {
    raw = matrixOf<T>(rows);
    setBasis(lattice, raw);
    lattice.params.consistency.set(true);
  }
  // sum of x[i] * b_i over the present basis.
  Vector<T> combination(const Vector<T>& x) {
    Vector<T> v(lattice.dim);
    v.setZero();
    for (long i = 1; i <= x.MN; ++i)
      for (long p = 1; p <= lattice.dim; ++p) v[p] += x[i] * lattice.B[i][p];
    return v;
  }
  // The same lattice as at the start, and the transformation tells how.
  void expectSameLattice() {
    EXPECT_TRUE(lattice.TT[lattice.TT.MN] * lattice.B_save == lattice.unscaled(lattice.B));
    EXPECT_EQ(gramDeterminant(exact(lattice.B)), gramDeterminant(exact(raw)));
    const QQ d = exact(lattice.TT[lattice.TT.MN]).determinant();
    EXPECT_EQ(abs(d), QQ(1));
  }
  void expectRow(long i, const Vector<T>& wanted) { EXPECT_EQ(shown(lattice.B[i]), shown(wanted)); }

  Lattice<T, dbl_t> lattice;
  Matrix<T> raw;
};
TYPED_TEST_SUITE(InsertionTest, NumberTypes);

const Rows FOUR = {{3, 0, 1, 0, 2}, {0, 4, 0, 1, 1}, {1, 0, 5, 0, 3}, {0, 2, 0, 7, 1}};

TYPED_TEST(InsertionTest, TrivialNeedsASingleCoefficient) {
  this->start(FOUR);
  EXPECT_EQ(this->lattice.trivialInsert(vectorOf<TypeParam>({1, 0, 1, 0}), 1, 4), 0);
  EXPECT_TRUE(this->lattice.B == this->raw);
  EXPECT_EQ(statisticsOf<TypeParam>().basisSubstitutionsTrivial, 0);
}

TYPED_TEST(InsertionTest, TrivialLooksAtTheRangeAlone) {
  this->start(FOUR);
  EXPECT_EQ(this->lattice.trivialInsert(vectorOf<TypeParam>({5, 0, 1, 6}), 2, 3), 1);
  this->expectRow(1, this->raw[1]);
  this->expectRow(2, this->raw[3]);
  this->expectRow(3, this->raw[2]);
  this->expectRow(4, this->raw[4]);
  EXPECT_EQ(statisticsOf<TypeParam>().basisSubstitutionsTrivial, 1);
  this->expectSameLattice();
}

TYPED_TEST(InsertionTest, TrivialDropsATrueMultiple) {
  this->start(FOUR);
  for (const long c : {2, -2, 7}) {
    EXPECT_EQ(this->lattice.trivialInsert(vectorOf<TypeParam>({0, 0, c, 0}), 1, 4), -1);
  }
  EXPECT_TRUE(this->lattice.B == this->raw);
  EXPECT_EQ(statisticsOf<TypeParam>().basisSubstitutionsTrivial, 0);
}

TYPED_TEST(InsertionTest, TrivialMovesANegativeUnitWithoutNegation) {
  this->start(FOUR);
  this->lattice.updateGso(1, 0);
  EXPECT_EQ(this->lattice.trivialInsert(vectorOf<TypeParam>({0, 0, 0, -1}), 1, 4), 1);
  this->expectRow(1, this->raw[4]);
  for (long i = 1; i <= 3; ++i) this->expectRow(i + 1, this->raw[i]);
  for (long i = 1; i <= 4; ++i) EXPECT_EQ(this->lattice.status[i], 0);
  this->expectSameLattice();
}

TYPED_TEST(InsertionTest, TrivialAtItsPlaceCountsAndMovesNothing) {
  this->start(FOUR);
  this->lattice.updateGso(1, 0);
  EXPECT_EQ(this->lattice.trivialInsert(vectorOf<TypeParam>({0, 1, 0, 0}), 2, 4), 1);
  EXPECT_TRUE(this->lattice.B == this->raw);
  EXPECT_EQ(this->lattice.status[4], STATUS_GSO);
  EXPECT_EQ(statisticsOf<TypeParam>().basisSubstitutionsTrivial, 1);
}

TYPED_TEST(InsertionTest, TrivialOfZeroTestsTheRank) {
  this->start(FOUR);
  const auto zero = vectorOf<TypeParam>({0, 0, 0, 0});
  EXPECT_EQ(this->lattice.trivialInsert(zero, 1, 4), 0);
  this->start({{1, 0, 2}, {2, 0, 4}});
  EXPECT_FAILURE(this->lattice.trivialInsert(vectorOf<TypeParam>({0, 0}), 1, 2),
                 "lattice rank is too small!");
}

TYPED_TEST(InsertionTest, CombinationOfTwoAndThree) {
  this->start({{1, 0, 5}, {0, 1, 7}});
  auto x = vectorOf<TypeParam>({2, 3});
  this->lattice.insertCombination(x, 1, 2);
  const auto first = this->lattice.B[1];
  const auto wanted = vectorOf<TypeParam>({2, 3, 31});
  EXPECT_EQ(shown(first), shown(wanted));
  this->expectSameLattice();
}

TYPED_TEST(InsertionTest, MultipleOfAPrimitiveVectorInsertsThePrimitiveOne) {
  this->start({{1, 0, 5}, {0, 1, 7}});
  auto x = vectorOf<TypeParam>({4, 6});
  this->lattice.insertCombination(x, 1, 2);
  this->expectRow(1, vectorOf<TypeParam>({2, 3, 31}));
  this->expectSameLattice();
}

TYPED_TEST(InsertionTest, CoefficientsOutsideTheRangeAreLeftAlone) {
  this->start(FOUR);
  auto x = vectorOf<TypeParam>({9, 4, 6, 8});
  this->lattice.insertCombination(x, 2, 3);
  EXPECT_EQ(x[1], TypeParam(9));
  EXPECT_EQ(x[4], TypeParam(8));
  this->expectRow(1, this->raw[1]);
  this->expectRow(4, this->raw[4]);
  // 2 b_2 + 3 b_3
  this->expectRow(2, vectorOf<TypeParam>({3, 8, 15, 2, 11}));
  this->expectSameLattice();
}

TYPED_TEST(InsertionTest, RestOfTheBlockMovesUpInOrder) {
  this->start(FOUR);
  auto x = vectorOf<TypeParam>({2, 0, 1, 0});
  const auto wanted = this->combination(x);
  this->lattice.insertCombination(x, 1, 4);
  this->expectRow(1, wanted);
  this->expectRow(2, this->raw[1]);
  this->expectRow(3, this->raw[2]);
  this->expectRow(4, this->raw[4]);
  this->expectSameLattice();
}

TYPED_TEST(InsertionTest, AllOfStatusIsClear) {
  this->start(FOUR);
  this->lattice.updateGso(1, 0);
  auto x = vectorOf<TypeParam>({0, 0, 2, 3});
  this->lattice.insertCombination(x, 3, 4);
  for (long i = 1; i <= 4; ++i) EXPECT_EQ(this->lattice.status[i], 0) << i;
}

TYPED_TEST(InsertionTest, StagesAndCoefficientsTravelWithTheirRows) {
  this->start(FOUR);
  for (long i = 1; i <= 4; ++i) {
    this->lattice.enumCoeffs[i] = TypeParam(10 * i);
    this->lattice.stages[i].u = TypeParam(i);
  }
  auto x = vectorOf<TypeParam>({1, 1, 1, 1});
  this->lattice.insertCombination(x, 1, 4);
  for (long i = 1; i <= 3; ++i) {
    EXPECT_EQ(this->lattice.enumCoeffs[i + 1], TypeParam(10 * i));
    EXPECT_EQ(this->lattice.stages[i + 1].u, TypeParam(i));
  }
}

TYPED_TEST(InsertionTest, EnumCoeffsThemselvesMayBeInserted) {
  Draws draw(5);
  for (int round = 0; round < 40; ++round) {
    this->start(knapsackRows(5, 1000, static_cast<std::uint64_t>(round)));
    auto& x = this->lattice.enumCoeffs;
    for (long i = 1; i <= 5; ++i) x[i] = TypeParam(draw.next(-6, 6));
    x[3] = TypeParam(7);
    x[2] = TypeParam(5);
    const auto wanted = this->combination(x);
    this->lattice.insertCombination(x, 1, 5);
    this->expectRow(1, wanted);
    this->expectSameLattice();
  }
}

TYPED_TEST(InsertionTest, RandomCombinations) {
  Draws draw(11);
  for (int round = 0; round < 60; ++round) {
    const long n = draw.next(2, 7);
    this->start(knapsackRows(n, 1000, static_cast<std::uint64_t>(100 + round)));
    const long first = draw.next(1, n - 1);
    Vector<TypeParam> x(n);
    x.setZero();
    for (long i = first; i <= n; ++i) x[i] = TypeParam(draw.next(-9, 9));
    x[first] = TypeParam(1);
    const auto wanted = this->combination(x);
    this->lattice.insertCombination(x, first, n);
    this->expectRow(first, wanted);
    for (long i = 1; i < first; ++i) this->expectRow(i, this->raw[i]);
    this->expectSameLattice();
  }
}

TYPED_TEST(InsertionTest, WeightsAndShiftKeepTheTransformation) {
  this->start(FOUR);
  this->lattice.setScale(2, TypeParam(3));
  this->lattice.setTranslation(1, TypeParam(5));
  auto x = vectorOf<TypeParam>({4, -7, 10, 3});
  this->lattice.insertCombination(x, 1, 4);
  EXPECT_TRUE(this->lattice.TT[1] * this->lattice.B_save == this->lattice.unscaled(this->lattice.B));
  auto y = vectorOf<TypeParam>({1, 5, 1, -3});
  this->lattice.replaceCombination(y, 1, 4, 2);
  EXPECT_TRUE(this->lattice.TT[1] * this->lattice.B_save == this->lattice.unscaled(this->lattice.B));
}

TYPED_TEST(InsertionTest, WithoutConsistencyTheTransformationStays) {
  this->start(FOUR);
  this->lattice.params.consistency.set(false);
  const auto before = this->lattice.TT[1];
  auto x = vectorOf<TypeParam>({2, 3, 0, 5});
  this->lattice.insertCombination(x, 1, 4);
  auto y = vectorOf<TypeParam>({1, 5, 1, -3});
  this->lattice.replaceCombination(y, 1, 4, 2);
  EXPECT_TRUE(this->lattice.TT[1] == before);
}

TYPED_TEST(InsertionTest, ZeroVectorFails) {
  this->start(FOUR);
  auto x = vectorOf<TypeParam>({0, 0, 0, 0});
  EXPECT_FAILURE(this->lattice.insertCombination(x, 1, 4), "basis can't insert the zero vector!");
  this->start({{1, 0, 2}, {1, 0, 2}});
  auto y = vectorOf<TypeParam>({1, -1});
  EXPECT_FAILURE(this->lattice.insertCombination(y, 1, 2), "basis can't insert the zero vector!");
}

TYPED_TEST(InsertionTest, TheNewVectorIsACandidate) {
  for (const long weight : {1L, 3L}) {
    auto l = latticeOf<TypeParam>(SMALL);
    for (long p = 1; p <= l->dim; ++p) l->setScale(p, TypeParam(weight));
    Vector<TypeParam> x;
    ASSERT_TRUE(l->coordinates(latticeVector(*l, "[ 1 2 ]"), x, false));
    ASSERT_EQ(l->solutions.MN, 0);
    l->insertCombination(x, 1, l->rank);
    EXPECT_EQ(l->solutions.MN, 1) << weight;  // judged in unit coordinates
  }
}

TEST(InsertionStandard, CoefficientBeyondTheLimitThrowsAndTheBasisStays) {
  Lattice<dbl_t, dbl_t> lattice;
  const auto raw = matrixOf<dbl_t>(FOUR);
  setBasis(lattice, raw);
  auto x = vectorOf<dbl_t>({3, 0, 0, 2});
  x[4] = 2e10L;
  expectPrecisionException([&] { lattice.insertCombination(x, 1, 4); }, "coefficient overflow");
  EXPECT_TRUE(lattice.B == raw);
  x[4] = 2e18L;
  EXPECT_THROW(lattice.insertCombination(x, 1, 4), FatalPrecisionException);
}

TEST(InsertionExtended, LargeCoefficientsAreNoMatter) {
  Lattice<QQ, dbl_t> lattice;
  const auto raw = matrixOf<QQ>(FOUR);
  setBasis(lattice, raw);
  lattice.params.consistency.set(true);
  Vector<QQ> x("[ 100000000000000000000000000000007 1 0 300000000000000000000000000000000000 ]");
  lattice.insertCombination(x, 1, 4);
  EXPECT_TRUE(lattice.TT[1] * lattice.B_save == lattice.B);
  EXPECT_EQ(lattice.B[1][1], QQ("300000000000000000000000000000021"));
  EXPECT_EQ(lattice.B[1][4], QQ("2100000000000000000000000000000000001"));
}

TYPED_TEST(InsertionTest, ReplacementPutsTheVectorAtEveryPosition) {
  for (long pos = 1; pos <= 4; ++pos) {
    for (const long unit : {1L, -1L}) {
      this->start(FOUR);
      this->lattice.updateGso(1, 0);
      const auto x = vectorOf<TypeParam>({2, unit, -3, 0});
      auto argument = x;
      const auto wanted = this->combination(x);
      this->lattice.replaceCombination(argument, 1, 4, pos);
      this->expectRow(pos, wanted);
      this->expectSameLattice();
      // The others keep their order.
      std::vector<long> rest = {1, 3, 4};
      for (long i = 1, r = 0; i <= 4; ++i) {
        if (i == pos) continue;
        this->expectRow(i, this->raw[rest[static_cast<std::size_t>(r++)]]);
      }
      for (long i = std::min(pos, 2L); i <= 4; ++i) EXPECT_EQ(this->lattice.status[i], 0);
      for (long i = 1; i < std::min(pos, 2L); ++i) EXPECT_EQ(this->lattice.status[i], STATUS_GSO);
    }
  }
  EXPECT_EQ(statisticsOf<TypeParam>().basisSubstitutionsNontrivial, 8);
}

// Also where the new row stays at its place and nothing is exchanged.
TYPED_TEST(InsertionTest, ReplacementDropsTheCachedFactorisation) {
  auto& l = this->lattice;
  this->start(FOUR);
  Vector<TypeParam> c;
  ASSERT_TRUE(l.coordinates(this->raw[2], c, false));
  auto x = vectorOf<TypeParam>({2, 1, 0, 0});
  l.replaceCombination(x, 1, 4, 2);
  ASSERT_TRUE(l.coordinates(l.B[2], c, false));
  EXPECT_TRUE(c == vectorOf<TypeParam>({0, 1, 0, 0}));
}

TYPED_TEST(InsertionTest, ReplacementTakesTheLastUnit) {
  this->start(FOUR);
  auto x = vectorOf<TypeParam>({1, 1, 2, 0});
  this->lattice.replaceCombination(x, 1, 4, 2);
  // b_2 is gone and b_1 stays.
  this->expectRow(1, this->raw[1]);
  this->expectRow(3, this->raw[3]);
}

TYPED_TEST(InsertionTest, ReplacementBySingleCoefficientMovesToFirst) {
  this->start(FOUR);
  auto x = vectorOf<TypeParam>({0, 0, -1, 0});
  this->lattice.replaceCombination(x, 1, 4, 4);
  this->expectRow(1, this->raw[3]);
  EXPECT_EQ(statisticsOf<TypeParam>().basisSubstitutionsTrivial, 1);
  EXPECT_EQ(statisticsOf<TypeParam>().basisSubstitutionsNontrivial, 0);
}

TYPED_TEST(InsertionTest, ReplacementByATrueMultipleMovesNothing) {
  this->start(FOUR);
  auto x = vectorOf<TypeParam>({0, 3, 0, 0});
  this->lattice.replaceCombination(x, 1, 4, 3);
  EXPECT_TRUE(this->lattice.B == this->raw);
  EXPECT_EQ(statisticsOf<TypeParam>().nontrivialBasisExtensions, 0);
}

TYPED_TEST(InsertionTest, ReplacementWithoutUnitInsertsAndMovesUp) {
  this->start(FOUR);
  auto x = vectorOf<TypeParam>({0, 2, 3, 5});
  const auto wanted = this->combination(x);
  this->lattice.replaceCombination(x, 2, 4, 4);
  this->expectRow(1, this->raw[1]);
  this->expectRow(4, wanted);
  this->expectSameLattice();
  EXPECT_EQ(statisticsOf<TypeParam>().nontrivialBasisExtensions, 1);
  EXPECT_EQ(statisticsOf<TypeParam>().basisSubstitutionsNontrivial, 0);
}

TYPED_TEST(InsertionTest, RandomReplacements) {
  Draws draw(17);
  for (int round = 0; round < 60; ++round) {
    const long n = draw.next(2, 7);
    this->start(knapsackRows(n, 1000, static_cast<std::uint64_t>(200 + round)));
    Vector<TypeParam> x(n);
    for (long i = 1; i <= n; ++i) x[i] = TypeParam(draw.next(2, 9));
    x[draw.next(1, n)] = TypeParam(draw.next(0, 1) == 0 ? 1 : -1);
    const auto wanted = this->combination(x);
    const long pos = draw.next(1, n);
    this->lattice.replaceCombination(x, 1, n, pos);
    this->expectRow(pos, wanted);
    this->expectSameLattice();
  }
}

}  // namespace latbox::testing
