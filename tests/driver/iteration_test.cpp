// Which steps an iteration has, in which order, and what switches each of them.
#include <gtest/gtest.h>

#include <sstream>
#include <vector>

#include "driver/iterate.h"
#include "driver/ladder.h"
#include "driver/run_state.h"
#include "lib/os/clock.h"
#include "small_program.h"

namespace latbox {
namespace {

using latbox::testing::SmallRun;

constexpr const char* CHECK = "Lattice consistency checking / fixing ...";
constexpr const char* REDUCTION = "BKZ enumeration ( beta = 3, deep = 0 ) ... ";
constexpr const char* TRIMMING = "Trimming ...";
constexpr const char* END_OF_COUNT = "Restart / termination handling ...";

struct Switch {
  Param<bool> Params::*option;
  const char* line;  // what its step prints begins so
};
// In the order of the steps.
const std::vector<Switch> SWITCHES = {
    {&Params::pair, "Pairwise recombination ... "},  {&Params::sieve, "Sieving ( "},
    {&Params::sample, "Random Sampling ( k = "},     {&Params::reinsert, "Inserting solution vector ("},
    {&Params::variate, "Shuffling base vectors ( "},
};

// The program has a known solution and stalls, so that each step that is switched on has something to do.
class Iteration : public ::testing::Test {
 protected:
  Iteration() {
    statisticsStandard() = statisticsExtended() = Statistics();
    lattice_.params.sol.set(0);
    lattice_.checkSolution(Vector<dbl_t>("[ 0 -2 -2 1 ]"), foundAfter(17), false);
    lattice_.finishEnabled = true;
    // The end of count parks the run under a front end, where otherwise it would end the process.
    lattice_.params.iters.set(1);
    lattice_.params.gui.set(true);
    for (const Switch& option : SWITCHES) (lattice_.params.*option.option).set(false);
    statisticsStandard().noPrimaryImprovement = 2;
  }
  ~Iteration() override { statisticsStandard() = statisticsExtended() = Statistics(); }

  // What one iteration prints.
  std::string output() {
    lattice_.params.verb.set(2);
    std::srand(2);  // the first draw is 1: the stall shuffles
    ::testing::internal::CaptureStdout();
    iterate(run_.y);
    return ::testing::internal::GetCapturedStdout();
  }
  // The steps that an iteration announces.
  std::vector<std::string> steps() {
    std::vector<std::string> result;
    std::istringstream lines(output());
    for (std::string line; std::getline(lines, line);)
      if (line.starts_with("|-> ")) result.push_back(line.substr(4));
    return result;
  }

  SmallRun run_;
  Lattice<dbl_t, dbl_t>& lattice_ = run_.y.standard;
};

using Steps = std::vector<std::string>;

TEST_F(Iteration, WithAllSwitchesOffItChecksReducesTrimsAndReports) {
  EXPECT_EQ(steps(), (Steps{CHECK, REDUCTION, TRIMMING, END_OF_COUNT}));
}

TEST_F(Iteration, WithoutEnumerationASweepReduces) {
  lattice_.params.eenum.set(false);
  EXPECT_EQ(steps(), (Steps{CHECK, TRIMMING, END_OF_COUNT}));
  EXPECT_EQ(lattice_.status[1] & STATUS_SWEPT, STATUS_SWEPT);
}

TEST_F(Iteration, EachSwitchAddsItsStep) {
  for (const Switch& chosen : SWITCHES) {
    statisticsStandard().iterations = 0;
    statisticsStandard().noPrimaryImprovement = 2;
    setRunState(run_.y, RUN_RUNNING);
    (lattice_.params.*chosen.option).set(true);
    const Steps found = steps();
    (lattice_.params.*chosen.option).set(false);
    ASSERT_EQ(found.size(), 5U) << chosen.line;
    EXPECT_EQ(found[0], CHECK);
    EXPECT_TRUE(found[1].starts_with(chosen.line)) << found[1];
    EXPECT_EQ(found[2], REDUCTION);
  }
}

TEST_F(Iteration, AllSwitchesOnStandInTheirOrder) {
  for (const Switch& option : SWITCHES) (lattice_.params.*option.option).set(true);
  const Steps found = steps();
  ASSERT_EQ(found.size(), SWITCHES.size() + 4);
  for (std::size_t i = 0; i < SWITCHES.size(); ++i)
    EXPECT_TRUE(found[i + 1].starts_with(SWITCHES[i].line)) << found[i + 1];
  EXPECT_EQ(Steps(found.end() - 3, found.end()), (Steps{REDUCTION, TRIMMING, END_OF_COUNT}));
}

TEST_F(Iteration, SortingComesBeforeShuffling) {
  lattice_.params.variate.set(true);
  statisticsStandard().noPrimaryImprovement = lattice_.rank + 1;
  const Steps found = steps();
  ASSERT_EQ(found.size(), 6U);
  EXPECT_EQ(found[1], "Heuristic Sorting ... ");
  EXPECT_EQ(found[2], "Shuffling base vectors ( 4 shuffle(s) ) ...");
}

TEST_F(Iteration, TheFirstDoesNotVary) {
  lattice_.params.variate.set(true);
  statisticsStandard().noPrimaryImprovement = 0;
  EXPECT_EQ(steps(), (Steps{CHECK, REDUCTION, TRIMMING, END_OF_COUNT}));
}

// The .lat file, which the check writes, holds the time: the first look at the clock of an iteration.
TEST_F(Iteration, WhatIsInHandIsWrittenBeforeTheCheck) {
  static std::string atTheCheck;
  static const testing::TemporaryFolder* folder;
  atTheCheck.clear();
  folder = &run_.folder;
  lattice_.writeEnabled = true;
  setClock([] {
    if (atTheCheck.empty()) atTheCheck = folder->read("small.sol") + "|";
    return 0L;
  });
  steps();
  setClock(nullptr);
  EXPECT_TRUE(atTheCheck.starts_with("[ 1 1 ] | 0 | [ ] | 0 | 17 | ")) << atTheCheck;
}

TEST_F(Iteration, TheReportStandsBeforeTheEndOfCount) {
  const std::string text = output();
  const std::size_t report = text.find("- Some statistics -");
  ASSERT_NE(report, std::string::npos) << text;
  EXPECT_LT(text.find(TRIMMING), report);
  EXPECT_LT(report, text.find(END_OF_COUNT));
  EXPECT_EQ(text.find("\nTotal iterations: 1\n"), text.rfind("\nTotal iterations: "));
}

TEST_F(Iteration, EndOfCountParksTheRunUnderAFrontEnd) {
  output();
  EXPECT_EQ(runState(run_.y), RUN_STOPPED);
  EXPECT_EQ(statisticsStandard().iterations, 2);
}

// The first iteration meets a better near-solution, the second, which begins with the improved count, none.
TEST_F(Iteration, ItsProgressIsCountedAgainstItsBeginning) {
  Statistics& statistics = statisticsStandard();
  statistics.inhomogeneousImprovements = 5;
  output();
  EXPECT_EQ(statistics.inhomogeneousImprovements, 6);
  EXPECT_EQ(statistics.noPrimaryImprovement, 0);
  statistics.iterations = 0;
  setRunState(run_.y, RUN_RUNNING);
  output();
  EXPECT_EQ(statistics.inhomogeneousImprovements, 6);
  EXPECT_EQ(statistics.noPrimaryImprovement, 1);
}

TEST_F(Iteration, EachPrecisionCountsOnItsOwnSide) {
  switchToExtended(run_.y);
  run_.y.extended.R = QQ(1) / QQ(3);
  run_.y.extended.params.verb.set(0);
  ::testing::internal::CaptureStdout();
  iterate(run_.y);
  ::testing::internal::GetCapturedStdout();
  EXPECT_TRUE(run_.y.extendedActive);
  EXPECT_EQ(statisticsExtended().iterations, 2);
  EXPECT_EQ(statisticsStandard().iterations, 0);
}

}  // namespace
}  // namespace latbox
