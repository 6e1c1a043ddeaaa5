#include <gtest/gtest.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>

#include "driver/events.h"
#include "driver/run_state.h"
#include "lib/exceptions.h"
#include "lib/progress.h"
#include "program/memory.h"
#include "small_program.h"

namespace latbox {
namespace {

using latbox::testing::SmallRun;
using Standard = Lattice<dbl_t, dbl_t>;

// For death tests, which look at standard error alone.
void showOutputAsError() {
  dup2(STDERR_FILENO, STDOUT_FILENO);
}

class Restart : public ::testing::Test {
 protected:
  Restart() {
    statisticsStandard() = Statistics();
    lattice_.params.sol.set(0);
  }
  ~Restart() override { statisticsStandard() = Statistics(); }

  SmallRun run_;
  Standard& lattice_ = run_.y.standard;

  // x = (1, 1)
  void findSolution() {
    lattice_.finishEnabled = false;
    lattice_.checkSolution(Vector<dbl_t>("[ 0 -2 -2 1 ]"), foundAfter(17), false);
    ASSERT_EQ(lattice_.solutions.MN, 1);
  }
};

TEST_F(Restart, OnlyWritesWhileFinishingIsOff) {
  findSolution();
  lattice_.writeEnabled = true;
  const Matrix<dbl_t> before = lattice_.B;
  ::testing::internal::CaptureStdout();
  restartHandling(lattice_, false);
  restartHandling(lattice_, true);
  EXPECT_EQ(::testing::internal::GetCapturedStdout(), "");
  EXPECT_EQ(lattice_.B, before);
  EXPECT_TRUE(run_.folder.read("small.sol").starts_with("[ 1 1 ] | 0 | [ ] | 0 | 17 | "));
}

TEST_F(Restart, WritesNothingWhileWritingIsOff) {
  findSolution();
  restartHandling(lattice_, true);
  EXPECT_FALSE(run_.folder.has("small.sol"));
}

TEST_F(Restart, RegeneratesAndThrows) {
  lattice_.finishEnabled = true;
  lattice_.writeEnabled = true;
  lattice_.lll(1, 0, 0);
  statisticsStandard().noPrimaryImprovement = 5;
  try {
    restartHandling(lattice_, false);
    FAIL() << "the driver would go on with a lattice that is gone";
  } catch (const RestartException& exception) {
    EXPECT_STREQ(exception.what(), "Lattice was regenerated");
  }
  EXPECT_TRUE(lattice_.writeEnabled);
  EXPECT_TRUE(lattice_.finishEnabled);
  EXPECT_EQ(lattice_.rank, 3);
  // The sweep met the first near-solution: the iteration that ends here counts, and counts as progress.
  EXPECT_EQ(statisticsStandard().noPrimaryImprovement, 0);
}

TEST_F(Restart, PrintsItsLevelsAtVerb2) {
  lattice_.finishEnabled = true;
  lattice_.params.verb.set(2);
  ::testing::internal::CaptureStdout();
  EXPECT_THROW(restartHandling(lattice_, false), RestartException);
  const std::string text = ::testing::internal::GetCapturedStdout();
  EXPECT_TRUE(text.starts_with("|-> Restart / termination handling ...\n")) << text;
  EXPECT_NE(text.find("\n|    |-> Regenerating lattice ...\n"), std::string::npos) << text;
  EXPECT_EQ(progressDepth(), 0);
}

// What is in hand is written and checked before and after, and at verb 2 the summary stands between.
TEST_F(Restart, ChecksTheLatticeBeforeAndAfter) {
  findSolution();
  lattice_.finishEnabled = lattice_.writeEnabled = true;
  lattice_.params.verb.set(2);
  ::testing::internal::CaptureStdout();
  EXPECT_THROW(restartHandling(lattice_, false), RestartException);
  EXPECT_EQ(::testing::internal::GetCapturedStdout(),
            "|-> Restart / termination handling ...\n"
            "|    |-> Lattice consistency checking / fixing ...\n"
            "\nSolutions found: 1\n\n{ The first solution/s was/were found after: 17 sec(s) }\n\n"
            "|    |-> Regenerating lattice ...\n"
            "|    |    |-> Optimization program: Targets = 0, Equations = 0, Inequations = 1, Variables = 2\n"
            "|    |-> Lattice consistency checking / fixing ...\n");
}

TEST_F(Restart, TheBestNearSolutionSurvivesWithItsTime) {
  const Vector<dbl_t> nearly("[ 8 0 0 1 ]");  // x = (2, 2)
  lattice_.params.pair.set(false);
  lattice_.checkSolution(nearly, foundAfter(17), false);
  ASSERT_EQ(static_cast<const Vector<dbl_t>&>(lattice_.bestInhomogeneous), nearly);
  const long long improvements = statisticsStandard().inhomogeneousImprovements;
  regenerateLattice(lattice_);
  ASSERT_EQ(lattice_.bestInhomogeneous.MN, 4);
  EXPECT_EQ(static_cast<const Vector<dbl_t>&>(lattice_.bestInhomogeneous), nearly);
  EXPECT_EQ(lattice_.bestInhomogeneous.secondsUntilDiscovered, 17);
  EXPECT_EQ(statisticsStandard().inhomogeneousImprovements, improvements);
}

TEST_F(Restart, CollectedInhomogeneousVectorsSurvive) {
  const Vector<dbl_t> nearly("[ 8 0 0 1 ]");
  lattice_.params.pair.set(false);
  HeuristicVector<dbl_t, dbl_t> collected(nearly);
  collected.secondsUntilDiscovered = 17;
  lattice_.inhomogeneousVectors.append(collected);
  regenerateLattice(lattice_);
  ASSERT_EQ(lattice_.inhomogeneousVectors.count, 1);
  const auto& kept = lattice_.inhomogeneousVectors.head->value;
  EXPECT_EQ(static_cast<const Vector<dbl_t>&>(kept), nearly);
  EXPECT_EQ(kept.secondsUntilDiscovered, 17);
}

TEST_F(Restart, SolutionsSurviveWithTheirTimes) {
  findSolution();
  regenerateLattice(lattice_);
  ASSERT_EQ(lattice_.solutions.MN, 1);
  EXPECT_EQ(lattice_.solutions[1].secondsUntilDiscovered, 17);
  EXPECT_EQ(static_cast<const Vector<dbl_t>&>(lattice_.solutions[1]), Vector<dbl_t>("[ 0 -2 -2 1 ]"));
  EXPECT_FALSE(lattice_.search.reinserting);
}

TEST_F(Restart, SolutionsSurviveAWiderBox) {
  findSolution();
  lattice_.program.rx[1] = 9;
  regenerateLattice(lattice_);
  ASSERT_EQ(lattice_.solutions.MN, 1);
  Vector<dbl_t> x;
  EXPECT_EQ(lattice_.lat2opt(lattice_.solutions[1], x, false), 1);
  EXPECT_EQ(x, Vector<dbl_t>("[ 1 1 ]"));
}

TEST_F(Restart, StarsInHandSurvive) {
  Star<dbl_t> star{Vector<dbl_t>("[ 1 2 ]")};
  star.secondsUntilDiscovered = 23;
  lattice_.program.stars.append(star);
  regenerateLattice(lattice_);
  ASSERT_EQ(lattice_.program.stars.MN, 1);
  EXPECT_EQ(lattice_.program.stars[1].secondsUntilDiscovered, 23);
}

TEST_F(Restart, ALossOfPrecisionPutsTheFlagsBack) {
  lattice_.finishEnabled = true;
  lattice_.writeEnabled = true;
  lattice_.program.rx[1] = 999999999989.0L;
  lattice_.program.rx[2] = 999999999961.0L;
  EXPECT_THROW(regenerateLattice(lattice_), PrecisionException);
  EXPECT_TRUE(lattice_.writeEnabled);
  EXPECT_TRUE(lattice_.finishEnabled);
}

TEST_F(Restart, TheNewLatticeIsWrittenAtOnce) {
  std::filesystem::remove(run_.folder.path("small.lat"));
  regenerateLattice(lattice_);
  EXPECT_FALSE(run_.folder.has("small.lat"));
  lattice_.writeEnabled = true;
  lattice_.program.rx[1] = 9;
  regenerateLattice(lattice_);
  EXPECT_NE(run_.folder.read("small.lat").find("[ 9 4 ]\n"), std::string::npos);
}

TEST_F(Restart, UnderAFrontEndTheEndParksTheRun) {
  lattice_.finishEnabled = true;
  lattice_.params.gui.set(true);
  ::testing::internal::CaptureStdout();
  restartHandling(lattice_, true);
  EXPECT_EQ(::testing::internal::GetCapturedStdout(), "\n");
  EXPECT_EQ(runState(run_.y), RUN_STOPPED);
}

TEST_F(Restart, CollectionsAreEmptied) {
  lattice_.homogeneousVectors.append(HeuristicVector<dbl_t, dbl_t>(Vector<dbl_t>("[ 4 2 0 0 ]")));
  lattice_.bestSlack = HeuristicVector<dbl_t, dbl_t>(Vector<dbl_t>("[ 1 2 ]"));
  lattice_.bestSlack.clear();
  regenerateLattice(lattice_);
  EXPECT_EQ(lattice_.homogeneousVectors.count, 0);
  EXPECT_EQ(lattice_.bestSlack.MN, 0);
}

using RestartDeathTest = Restart;

TEST_F(RestartDeathTest, TerminationPrintsTheSummaryAndRaises) {
  findSolution();
  lattice_.finishEnabled = true;
  EXPECT_EXIT(
      {
        showOutputAsError();
        restartHandling(lattice_, true);
      },
      ::testing::KilledBySignal(SIGTERM),
      "^\nSolutions found: 1\n\n\\{ The first solution/s was/were found after: 17 sec\\(s\\) \\}\n\n$");
}

TEST_F(RestartDeathTest, TerminationWithoutASummaryPrintsALineEnd) {
  lattice_.finishEnabled = true;
  EXPECT_EXIT(
      {
        showOutputAsError();
        restartHandling(lattice_, true);
      },
      ::testing::KilledBySignal(SIGTERM), "^\n$");
}

TEST_F(RestartDeathTest, ARestartAtTheLastIterationEndsTheRun) {
  lattice_.finishEnabled = true;
  lattice_.params.iters.set(3);
  statisticsStandard().iterations = 3;
  EXPECT_EXIT(
      {
        showOutputAsError();
        restartHandling(lattice_, false);
      },
      ::testing::KilledBySignal(SIGTERM), "^$");
}

}  // namespace
}  // namespace latbox
