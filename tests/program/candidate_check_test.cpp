#include "program/candidate_check.h"
#include "lib/exceptions.h"
#include "params/statistics.h"
#include "program/generation.h"
#include "program/sol_file.h"
#include "support/failure.h"
#include "support/lattice.h"
#include "support/rows.h"

namespace latbox {
namespace {

using testing::latticeOf;
using testing::latticeVector;
using testing::shown;

template <class T>
class Solutions : public ::testing::Test {
 protected:
  using L = Lattice<T, dbl_t>;
  using H = HeuristicVector<T, dbl_t>;

  void SetUp() override { statisticsOf<T>() = Statistics(); }

  static unsigned check(L& l, const std::string& point, DiscoveryTime time = NOW) {
    return l.checkSolution(latticeVector(l, point), time, false);
  }
  static H judged(const T& target, const T& slack) {
    H h;
    h.targetNorm = target;
    h.slackNorm = slack;
    return h;
  }
};
using NumberTypes = ::testing::Types<dbl_t, QQ>;
TYPED_TEST_SUITE(Solutions, NumberTypes);

TYPED_TEST(Solutions, UnsetCheckVectorsFail) {
  Lattice<TypeParam, dbl_t> l;
  EXPECT_FAILURE(l.checkSolution(Vector<TypeParam>("[ 1 ]"), NOW, false),
                 "checkSolution: You should set the check vectors!");
}

TYPED_TEST(Solutions, EmptyVector) {
  auto l = latticeOf<TypeParam>(testing::SMALL);
  EXPECT_EQ(l->checkSolution(Vector<TypeParam>(), NOW, false), 0U);
}

TYPED_TEST(Solutions, ForeignVector) {
  auto l = latticeOf<TypeParam>(testing::SMALL);
  EXPECT_EQ(l->checkSolution(Vector<TypeParam>("[ 0 -2 -1 1 ]"), NOW, false), CHECK_FOREIGN);
  EXPECT_EQ(l->solutions.MN, 0);
}

TYPED_TEST(Solutions, InfeasibleVector) {
  auto l = latticeOf<TypeParam>(testing::SMALL);
  EXPECT_EQ(this->check(*l, "[ 4 4 ]"), 0U);
  EXPECT_EQ(this->check(*l, "[ 0 0 ]"), 0U);
  EXPECT_EQ(this->check(*l, "[ 5 -3 ]"), 0U);
  EXPECT_EQ(l->solutions.MN, 0);
}

// Its last coordinate is no inhomBase.
TYPED_TEST(Solutions, ZeroAndHomogeneousVectors) {
  using T = TypeParam;
  auto l = latticeOf<T>(testing::SMALL);
  EXPECT_EQ(l->checkSolution(Vector<T>("[ 0 0 0 0 ]"), NOW, false), 0U);
  EXPECT_EQ(l->checkSolution(Vector<T>("[ 0 2 -2 0 ]"), NOW, false), 0U);
  EXPECT_EQ(l->checkSolution(Vector<T>("[ 0 -4 -4 2 ]"), NOW, false), 0U);
  EXPECT_EQ(l->checkSolution(Vector<T>("[ 0 0 0 0 ]"), NOW, false, Membership::byConstruction), 0U);
}

TYPED_TEST(Solutions, NewSolutionThenKnown) {
  auto l = latticeOf<TypeParam>(testing::SMALL);
  l->params.sol.set(0);
  EXPECT_EQ(this->check(*l, "[ 1 1 ]"), CHECK_FEASIBLE | CHECK_LOOKED | CHECK_NEW);
  EXPECT_EQ(this->check(*l, "[ 1 1 ]"), CHECK_FEASIBLE | CHECK_LOOKED);
  EXPECT_EQ(l->solutions.MN, 1);
  EXPECT_EQ(statisticsOf<TypeParam>().solutionsFound, 1);
}

TYPED_TEST(Solutions, NegativeIsJudgedAsItsNegative) {
  auto l = latticeOf<TypeParam>(testing::SMALL);
  l->params.sol.set(0);
  EXPECT_EQ(l->checkSolution(-latticeVector(*l, "[ 1 1 ]"), NOW, false),
            CHECK_FEASIBLE | CHECK_LOOKED | CHECK_NEW);
  EXPECT_EQ(shown<TypeParam>(l->solutions[1]), "[ 0 -2 -2 1 ]");
}

// The limit tells of a duplicate, too; nothing ends while finishEnabled is clear.
TYPED_TEST(Solutions, LimitOfSolutions) {
  auto l = latticeOf<TypeParam>(testing::SMALL);
  l->params.sol.set(2);
  EXPECT_EQ(this->check(*l, "[ 1 1 ]"), CHECK_FEASIBLE | CHECK_LOOKED | CHECK_NEW);
  EXPECT_EQ(this->check(*l, "[ 1 2 ]"), CHECK_FEASIBLE | CHECK_LOOKED | CHECK_LIMIT);
  EXPECT_EQ(this->check(*l, "[ 1 2 ]"), CHECK_FEASIBLE | CHECK_LOOKED | CHECK_LIMIT);
  EXPECT_EQ(l->solutions.MN, 2);
}

TYPED_TEST(Solutions, ScaledFormTakesTheWeightsOff) {
  using T = TypeParam;
  auto l = latticeOf<T>(testing::SMALL);
  l->params.sol.set(0);
  l->setScale(1, T(7));
  l->setScale(4, T(3));
  l->setTranslation(2, T(2));
  Vector<T> weighted;
  l->rescaledVector(latticeVector(*l, "[ 2 1 ]"), weighted);
  EXPECT_EQ(l->checkSolution(weighted, true, NOW, false), CHECK_FEASIBLE | CHECK_LOOKED | CHECK_NEW);
  EXPECT_EQ(l->checkSolution(-weighted, true, NOW, false), CHECK_FEASIBLE | CHECK_LOOKED);
  EXPECT_EQ(l->checkSolution(weighted, true, NOW, false, Membership::byConstruction),
            CHECK_FEASIBLE | CHECK_LOOKED);
  EXPECT_EQ(shown<T>(l->solutions[1]), shown(latticeVector(*l, "[ 2 1 ]")));
}

// A caller may be wrong; what is recorded has taken the real test.
TYPED_TEST(Solutions, FeasibleVectorTakesTheRealTest) {
  using T = TypeParam;
  auto l = latticeOf<T>(testing::SMALL);
  EXPECT_EQ(l->checkSolution(Vector<T>("[ 0 -2 -1 1 ]"), NOW, false, Membership::byConstruction),
            CHECK_FOREIGN);
  EXPECT_EQ(l->solutions.MN, 0);
  EXPECT_EQ(l->checkSolution(Vector<T>("[ 0 -2 -20 1 ]"), NOW, false, Membership::byConstruction), 0U);
}

TYPED_TEST(Solutions, ARowOfTheBasisMayBePassed) {
  using T = TypeParam;
  auto l = latticeOf<T>(testing::SMALL);
  l->params.sol.set(0);
  testing::rows(*l).B[1] += l->B[2];
  testing::rows(*l).TT[1][1] += l->TT[1][2];
  testing::rows(*l).B[1] += l->B[3];
  testing::rows(*l).TT[1][1] += l->TT[1][3];
  EXPECT_EQ(l->checkSolution(l->B[1], true, NOW, false, Membership::byConstruction),
            CHECK_FEASIBLE | CHECK_LOOKED | CHECK_NEW);
  EXPECT_EQ(shown<T>(l->solutions[1]), "[ 0 -2 -2 1 ]");
}

TYPED_TEST(Solutions, KnownTimes) {
  auto l = latticeOf<TypeParam>(testing::SMALL);
  l->params.sol.set(0);
  this->check(*l, "[ 1 1 ]", foundAfter(77));
  this->check(*l, "[ 1 2 ]", foundAfter(0));
  this->check(*l, "[ 2 1 ]", foundAfter(-1));
  EXPECT_EQ(l->solutions[1].secondsUntilDiscovered, 77);
  EXPECT_EQ(l->solutions[2].secondsUntilDiscovered, 0);
  EXPECT_EQ(l->solutions[3].secondsUntilDiscovered, -1);
}

TYPED_TEST(Solutions, BenchmarkAndReinsertionDoNotCount) {
  using T = TypeParam;
  auto l = latticeOf<T>(testing::SMALL);
  l->params.sol.set(0);
  l->params.bench.set(1.0F);
  this->check(*l, "[ 1 1 ]");
  l->params.bench.set(0.0F);
  l->search.reinserting = true;
  this->check(*l, "[ 1 2 ]");
  l->search.reinserting = false;
  EXPECT_EQ(l->solutions.MN, 2);
  EXPECT_EQ(statisticsOf<T>().solutionsFound, 0);
}

// In dbl_t the multiplier 4/3 is rounded: the corner must stay inside the box.
TYPED_TEST(Solutions, CornersWithAThirdAsMultiplier) {
  auto l = latticeOf<TypeParam>("[ ] [ ] [ ] [ ] [ [ 1 1 ] ] [ 0 ] [ 6 ] [ 0 0 ] [ 0 0 ] [ 3 4 ]");
  l->params.sol.set(0);
  EXPECT_EQ(this->check(*l, "[ 3 3 ]"), CHECK_FEASIBLE | CHECK_LOOKED | CHECK_NEW);
  EXPECT_EQ(this->check(*l, "[ 0 0 ]"), CHECK_FEASIBLE | CHECK_LOOKED | CHECK_NEW);
  EXPECT_EQ(this->check(*l, "[ 2 4 ]"), CHECK_FEASIBLE | CHECK_LOOKED | CHECK_NEW);
}

TYPED_TEST(Solutions, FreeVariablesGainBounds) {
  using T = TypeParam;
  auto l = latticeOf<T>("[ ] [ ] [ ] [ ] [ [ 1 1 1 ] ] [ -9 ] [ 9 ] [ 0 0 0 ] [ 0 -inf 0 ] [ 4 inf inf ]");
  l->params.sol.set(0);
  const unsigned widened = CHECK_FEASIBLE | CHECK_LOOKED | CHECK_BOUND | CHECK_NEW;
  EXPECT_EQ(this->check(*l, "[ 1 -5 2 ]"), widened);
  EXPECT_EQ(shown(l->program.lx), "[ 0 -5 0 ]");
  EXPECT_EQ(shown(l->program.rx), "[ 4 -5 2 ]");
  EXPECT_TRUE(programAhead(*l));
  EXPECT_EQ(this->check(*l, "[ 1 -5 1 ]"),
            CHECK_FEASIBLE | CHECK_LOOKED | CHECK_NEW);  // inside the bounds as they are now
  EXPECT_EQ(this->check(*l, "[ 1 3 1 ]"), widened);
  EXPECT_EQ(shown(l->program.rx), "[ 4 3 2 ]");
}

TYPED_TEST(Solutions, FreeVariableNeverFailsItsBounds) {
  auto l = latticeOf<TypeParam>("[ ] [ ] [ ] [ ] [ [ 1 1 ] ] [ 0 ] [ 9 ] [ 0 0 ] [ -inf -inf ] [ inf inf ]");
  l->params.sol.set(0);
  EXPECT_TRUE(this->check(*l, "[ -70000 70001 ]") & CHECK_FEASIBLE);
}

TYPED_TEST(Solutions, HalfFreeVariableKeepsItsBound) {
  auto l = latticeOf<TypeParam>("[ ] [ ] [ ] [ ] [ [ 1 1 ] ] [ 0 ] [ 9 ] [ 0 0 ] [ 0 0 ] [ inf 5 ]");
  l->params.sol.set(0);
  EXPECT_EQ(this->check(*l, "[ -1 3 ]"), 0U);
  EXPECT_TRUE(this->check(*l, "[ 8 1 ]") & CHECK_FEASIBLE);
}

TYPED_TEST(Solutions, BetterTargets) {
  using T = TypeParam;
  auto l = latticeOf<T>(testing::SMALL_TARGET);
  const unsigned better = CHECK_FEASIBLE | CHECK_LOOKED | CHECK_BOUND;
  EXPECT_EQ(this->check(*l, "[ 2 1 ]"), better);
  EXPECT_EQ(l->bestSlack.targetNorm, T(1));
  EXPECT_EQ(l->bestSlack.slackNorm, T(0));
  EXPECT_EQ(l->bestSlack.combinedTarget, T(1));
  EXPECT_TRUE(l->program.tu);
  EXPECT_EQ(l->program.rtu(), T(0));
  EXPECT_FALSE(l->tu);
  EXPECT_EQ(this->check(*l, "[ 3 0 ]"), CHECK_FEASIBLE);                 // worse
  EXPECT_EQ(this->check(*l, "[ 2 1 ]"), CHECK_FEASIBLE);                 // the best itself
  EXPECT_EQ(this->check(*l, "[ 1 0 ]"), CHECK_FEASIBLE | CHECK_LOOKED);  // as good
  EXPECT_EQ(this->check(*l, "[ 0 3 ]"), better);
  EXPECT_EQ(l->program.rtu(), T(-4));
  EXPECT_EQ(statisticsOf<T>().targetImprovements, 2);
  EXPECT_EQ(l->solutions.MN, 0);  // without tnorm and with a target to minimise none is a solution
}

TYPED_TEST(Solutions, MaximisedTargetIsNegated) {
  using T = TypeParam;
  auto l = latticeOf<T>("[ inf ] [ [ 1 -1 ] ] [ ] [ ] [ [ 1 1 ] ] [ 1 ] [ 3 ] [ 0 0 ] [ 0 0 ] [ 4 4 ]");
  this->check(*l, "[ 2 1 ]");
  EXPECT_EQ(l->bestSlack.targetNorm, T(-1));
  EXPECT_EQ(this->check(*l, "[ 1 2 ]"), CHECK_FEASIBLE);
  EXPECT_EQ(this->check(*l, "[ 3 0 ]"), CHECK_FEASIBLE | CHECK_LOOKED | CHECK_BOUND);
}

TYPED_TEST(Solutions, ReachedTargetIsASolution) {
  using T = TypeParam;
  auto l = latticeOf<T>("[ 3 ] [ [ 1 2 ] ] [ ] [ ] [ ] [ ] [ ] [ 0 0 ] [ 0 0 ] [ 4 4 ]");
  l->params.sol.set(0);
  l->bestSlack.clear();  // what the preparation came across
  l->solutions.clear();
  EXPECT_EQ(this->check(*l, "[ 4 2 ]"), CHECK_FEASIBLE | CHECK_LOOKED | CHECK_BOUND);
  EXPECT_EQ(l->bestSlack.slackNorm, T(5));
  EXPECT_EQ(l->solutions.MN, 0);
  EXPECT_EQ(this->check(*l, "[ 1 1 ]"), CHECK_FEASIBLE | CHECK_LOOKED | CHECK_NEW | CHECK_BOUND);
  EXPECT_EQ(l->solutions.MN, 1);
  EXPECT_EQ(l->solutions[1].slackNorm, T(0));
}

// The combined target is coordinate 1 and bounds nothing.
TYPED_TEST(Solutions, TargetCoordinateIsNotTested) {
  using T = TypeParam;
  auto l = latticeOf<T>(testing::SMALL_TARGET);
  l->params.snorm.set(T(0));
  l->params.sol.set(0);
  this->check(*l, "[ 2 1 ]");
  prepare(*l, false, false);
  prepareLattice(*l);
  ASSERT_TRUE(l->generatedTu);
  EXPECT_TRUE(this->check(*l, "[ 1 0 ]") & CHECK_FEASIBLE);
  EXPECT_EQ(this->check(*l, "[ 4 4 ]"), 0U);
}

TYPED_TEST(Solutions, RestoredVectorMovesNothing) {
  using T = TypeParam;
  auto l = latticeOf<T>(testing::SMALL_TARGET);
  const Vector<T> v = latticeVector(*l, "[ 2 1 ]");
  EXPECT_EQ(l->checkSolution(v, NOW, true), CHECK_FEASIBLE | CHECK_LOOKED);
  EXPECT_EQ(l->bestSlack.targetNorm, T(1));
}

TYPED_TEST(Solutions, WorseBestBetweenBackupAndRestoreFails) {
  using T = TypeParam;
  auto l = latticeOf<T>(testing::SMALL_TARGET);
  this->check(*l, "[ 2 1 ]");
  l->program.rtu() = T(9);
  l->program.ltu() = T(-9);
  EXPECT_FAILURE(l->checkSolution(latticeVector(*l, "[ 1 0 ]"), NOW, true),
                 "This case should not happen between a backup / restore!");
}

TYPED_TEST(Solutions, IsSolutionTable) {
  using T = TypeParam;
  auto l = latticeOf<T>(testing::SMALL_TARGET);
  const T unset = -infinity<T>();
  struct Row {
    T snorm, tnorm, target, slack;
    bool expected;
  };
  const Row rows[] = {
      {T(-1), unset, T(5), T(0), false},  // the defaults: -1 counts as set
      {T(0), unset, T(5), T(0), true},   {T(2), unset, T(5), T(3), false}, {T(3), unset, T(5), T(3), true},
      {T(3), T(5), T(5), T(3), true},    {T(3), T(4), T(5), T(3), false},  {T(2), T(5), T(5), T(3), false},
      {unset, T(5), T(5), T(9), true},   {unset, T(4), T(5), T(0), false}, {unset, unset, T(-9), T(0), false},
  };
  for (const Row& row : rows) {
    l->params.snorm.set(row.snorm);
    l->params.tnorm.set(row.tnorm);
    EXPECT_EQ(CandidateCheck(*l).isSolution(this->judged(row.target, row.slack)), row.expected)
        << row.snorm << ' ' << row.tnorm;
  }
  l->params.snorm.set(T(-1));
  l->params.tnorm.set(unset);
  l->program.allTargetsFinite = true;
  EXPECT_TRUE(CandidateCheck(*l).isSolution(this->judged(T(5), T(0))));
  EXPECT_FALSE(CandidateCheck(*l).isSolution(this->judged(T(5), T(1))));
  auto feasibility = latticeOf<T>(testing::SMALL);
  EXPECT_TRUE(CandidateCheck(*feasibility).isSolution(this->judged(infinity<T>(), infinity<T>())));
}

TYPED_TEST(Solutions, EquationLatticeRecordsNothing) {
  using T = TypeParam;
  auto l = testing::preparedLattice<T>("[ ] [ ] [ [ 1 2 ] ] [ 7 ] [ ] [ ] [ ] [ 0 0 ] [ 0 0 ] [ 10 10 ]");
  generateLattice(*l, true);
  EXPECT_EQ(this->check(*l, "[ 3 2 ]"), CHECK_FEASIBLE);
  EXPECT_EQ(this->check(*l, "[ 4 2 ]"), 0U);
  EXPECT_EQ(l->solutions.MN, 0);
}

TYPED_TEST(Solutions, EquationLatticeWidensBounds) {
  using T = TypeParam;
  auto l = testing::preparedLattice<T>("[ ] [ ] [ [ 1 2 ] ] [ 7 ] [ ] [ ] [ ] [ 0 0 ] [ 0 0 ] [ 10 inf ]");
  generateLattice(*l, true);
  EXPECT_EQ(this->check(*l, "[ 3 2 ]"), CHECK_FEASIBLE | CHECK_BOUND);
  EXPECT_EQ(l->program.rx[2], T(2));
}

// A bound that moves regenerates the lattice as soon as the run may finish.
TYPED_TEST(Solutions, BetterTargetRegenerates) {
  using T = TypeParam;
  auto l = latticeOf<T>(testing::SMALL_TARGET);
  l->finishEnabled = true;
  EXPECT_THROW(this->check(*l, "[ 2 1 ]"), RestartException);
  EXPECT_TRUE(l->generatedTu);
  EXPECT_EQ(l->dim, 5);
  EXPECT_FALSE(programAhead(*l));
  EXPECT_EQ(l->bestSlack, latticeVector(*l, "[ 2 1 ]"));
}

TYPED_TEST(Solutions, GraphicalFrontEndIsTold) {
  auto l = latticeOf<TypeParam>(testing::SMALL);
  l->params.sol.set(0);
  l->params.gui.set(true);
  this->check(*l, "[ 1 1 ]");
  this->check(*l, "[ 1 2 ]");
  EXPECT_EQ(l->mainVars[MainMutexVariable::reserved6].get(), "2");
  sol2star(*l);
  this->check(*l, "[ 2 1 ]");
  EXPECT_EQ(l->mainVars[MainMutexVariable::reserved6].get(), "3");
  EXPECT_EQ(l->mainVars[MainMutexVariable::reserved7].get(), starReport(*l));
  EXPECT_NE(starReport(*l).find("x = [ 1 1 ]"), std::string::npos);
  EXPECT_NE(starReport(*l).find("x = [ 1 2 ]"), std::string::npos);
}

// Symptom: a line of the .sol file with a target value that was 61 off, for the two terms were rounded.
TEST(SolutionsStandard, LargeTargetsThatCancelAskForExactArithmetic) {
  const char* program =
      "[ inf ] [ [ 1234567890123457 -1234567890123456 ] ] [ ] [ ] [ [ 1 -1 ] ] [ -1 ] [ 0 ] [ 0 0 ] [ 0 0 ] "
      "[ 1000003 1000003 ]";
  auto exact = latticeOf<QQ>(program);
  auto standard = std::make_unique<Lattice<dbl_t, dbl_t>>();
  standard->convertFrom(*exact);
  EXPECT_THROW(standard->checkSolution(latticeVector(*standard, "[ 1000003 1000003 ]"), NOW, false),
               FatalPrecisionException);
  EXPECT_FALSE(standard->bestSlack.notEmpty());
  exact->checkSolution(latticeVector(*exact, "[ 1000003 1000003 ]"), NOW, false);
  EXPECT_EQ(exact->bestSlack.targetNorm, QQ(-1000003));
}

}  // namespace
}  // namespace latbox
