// The steps of an iteration that shake the lattice: their order, and the precision in which they end.
#include "driver/iterate.h"
#include "driver/ladder.h"
#include "lib/progress.h"

#include <gtest/gtest.h>

#include "small_program.h"

namespace latbox {
namespace {

using latbox::testing::SmallRun;

class ShakingSteps : public ::testing::Test {
 protected:
  ShakingSteps() { statisticsStandard() = statisticsExtended() = Statistics(); }
  ~ShakingSteps() override { statisticsStandard() = statisticsExtended() = Statistics(); }

  // One iteration on the live side. Under a front end the end of count parks the run instead of ending it.
  std::string iterateOnce() {
    run_.y.live([](auto& lattice) {
      lattice.finishEnabled = true;
      lattice.params.iters.set(1);
      lattice.params.gui.set(true);
      lattice.params.verb.set(2);
      lattice.params.sol.set(0);
      lattice.params.pair.set(false);
      lattice.params.sieve.set(false);
    });
    ::testing::internal::CaptureStdout();
    iterate(run_.y);
    return ::testing::internal::GetCapturedStdout();
  }
  void choose(bool sample, bool reinsert, bool variate) {
    run_.y.live([=](auto& lattice) {
      lattice.params.sample.set(sample);
      lattice.params.reinsert.set(reinsert);
      lattice.params.variate.set(variate);
    });
  }
  // A solution to re-insert, and a stall.
  void prepareStall() {
    run_.y.standard.finishEnabled = run_.y.standard.writeEnabled = false;
    run_.y.standard.params.sol.set(0);
    run_.y.standard.checkSolution(Vector<dbl_t>("[ 0 -2 -2 1 ]"), foundAfter(17), false);
    statisticsStandard().noPrimaryImprovement = 100;
  }

  SmallRun run_;
};

TEST_F(ShakingSteps, StepsStandInTheirOrder) {
  prepareStall();
  choose(true, true, true);
  std::srand(2);
  const std::string text = iterateOnce();
  const std::size_t sampling = text.find("|-> Random Sampling ( k = ");
  const std::size_t inserting = text.find("|-> Inserting solution vector (");
  const std::size_t sorting = text.find("|-> Heuristic Sorting ... ");
  const std::size_t reduction = text.find("|-> BKZ enumeration");
  ASSERT_NE(reduction, std::string::npos) << text;
  EXPECT_LT(sampling, inserting) << text;
  EXPECT_LT(inserting, sorting);
  EXPECT_LT(sorting, reduction);
}

TEST_F(ShakingSteps, StepsThatAreOffDoNotRun) {
  prepareStall();
  choose(false, false, false);
  const std::string text = iterateOnce();
  for (const char* step : {"Random Sampling", "Inserting", "Heuristic Sorting", "Shuffling"})
    EXPECT_EQ(text.find(step), std::string::npos) << text;
}

TEST_F(ShakingSteps, ReinsertionThatCannotComeBackDoesNotEndTheIteration) {
  prepareStall();
  switchToExtended(run_.y);
  run_.y.extended.R = QQ(1) / QQ(3);
  choose(false, true, false);
  const std::string text = iterateOnce();
  EXPECT_NE(text.find("|-> Inserting solution vector ("), std::string::npos) << text;
  EXPECT_NE(text.find("|-> BKZ enumeration"), std::string::npos) << text;
  EXPECT_TRUE(run_.y.extendedActive);
  EXPECT_EQ(progressDepth(), 0);
}

}  // namespace
}  // namespace latbox
