#include <gtest/gtest.h>
#include <unistd.h>

#include <csignal>

#include "driver/end_on_exception.h"
#include "driver/iterate.h"
#include "driver/program_name.h"
#include "driver/run_state.h"
#include "driver/signals.h"
#include "driver/timer.h"
#include "lib/os/clock.h"
#include "lib/os/signals.h"
#include "small_program.h"
#include "support/failure.h"

namespace latbox {
namespace {

using latbox::testing::SMALL_PROGRAM;
using latbox::testing::SmallRun;
using latbox::testing::TemporaryFolder;

// For death tests, which look at standard error alone.
void showOutputAsError() {
  dup2(STDERR_FILENO, STDOUT_FILENO);
}

TEST(Iterate, LeavesWhenStoppedAndCountsTheIteration) {
  SmallRun run;
  statisticsStandard() = Statistics();
  setRunState(run.y, RUN_STOPPED);
  const Matrix<dbl_t> before = run.y.standard.B;
  iterate(run.y);
  EXPECT_EQ(statisticsStandard().iterations, 1);
  EXPECT_EQ(run.y.standard.B, before);
}

TEST(Iterate, LeavesWhenAnotherInputIsAskedFor) {
  SmallRun run;
  statisticsStandard() = Statistics();
  setMainValue(run.y, MainMutexVariable::inputRequested, "other");
  iterate(run.y);
  EXPECT_EQ(statisticsStandard().iterations, 1);
}

TEST(FirstReduction, IsRepeatedUntilNothingWasSkipped) {
  SmallRun run;
  run.y.standard.interval_tt = 1;
  run.y.standard.params.beta.set(2);
  run.y.standard.enumerate(nullptr);
  const Matrix<dbl_t> reduced = run.y.standard.B;
  const long budget = run.y.standard.interval_tt;
  run.y.standard.lll(1, 0, 0);
  EXPECT_EQ(run.y.standard.B, reduced);
  EXPECT_EQ(run.y.standard.interval_tt, budget - 1);
}

TEST(IterateDeathTest, CountReachedPrintsTheReportBeforeTheEnd) {
  SmallRun run;
  statisticsStandard() = Statistics();
  run.y.standard.params.iters.set(1);
  run.y.standard.params.sol.set(0);
  run.y.standard.params.verb.set(1);
  run.y.standard.finishEnabled = true;
  EXPECT_EXIT(
      {
        showOutputAsError();
        blockTermination();
        const SignalHandlers handlers(run.y);
        iterate(run.y);
      },
      ::testing::ExitedWithCode(0),
      "Some statistics .*\n\nTotal iterations: 1\n(.|\n)*Got signal: Terminated\n(.|\n)*Total iterations: 1\n"
      "(.|\n)*Program end\n$");
}

TEST(TimerDeathTest, EndsTheRunWhenTheTimeIsUp) {
  SmallRun run;
  run.y.standard.params.rtime.set(1);
  EXPECT_EXIT(
      {
        showOutputAsError();
        blockTermination();
        statisticsStandard().startTime.set(1);
        const SignalHandlers handlers(run.y);
        timerBody(run.y);
      },
      ::testing::ExitedWithCode(0), "^\nGot signal: Terminated\n");
}

// One second later with each look.
long tickingClock() {
  static long time = 1009;
  return ++time;
}

// The report, at the second look, tells how long the timer has waited.
TEST(TimerDeathTest, TheFullTimeIsEnough) {
  for (const long limit : {10L, 0L, -5L}) {
    SmallRun run;
    run.y.standard.params.rtime.set(limit);
    EXPECT_EXIT(
        {
          showOutputAsError();
          blockTermination();
          statisticsStandard().startTime.set(1000);
          const SignalHandlers handlers(run.y);
          setClock(tickingClock);
          timerBody(run.y);
        },
        ::testing::ExitedWithCode(0), "Total running time: 11 sec\\(s\\) -- Program end\n$");
  }
}

TEST(TimerDeathTest, LooksAtTheLiveSide) {
  SmallRun run;
  EXPECT_EXIT(
      {
        showOutputAsError();
        blockTermination();
        switchToExtended(run.y);
        run.y.standard.params.rtime.set(1000000);
        run.y.extended.params.rtime.set(10);
        statisticsStandard().startTime.set(1009);
        statisticsExtended().startTime.set(1000);
        const SignalHandlers handlers(run.y);
        setClock(tickingClock);
        timerBody(run.y);
      },
      ::testing::ExitedWithCode(0), "Total running time: 2 sec\\(s\\) -- Program end\n$");
}

TEST(MyMainDeathTest, WithoutInputPrintsTheShortUsage) {
  setProgramName("latbox");
  EXPECT_EXIT(
      {
        showOutputAsError();
        YLattice<dbl_t> y;
        myMain(y);
      },
      ::testing::ExitedWithCode(0), "^Usage: latbox --help=0 [^\n]* file\\.opt\\|file\\.lat\n$");
}

TEST(MyMainDeathTest, AnEmptyLineComesFirstUnlessVerbIs0) {
  setProgramName("latbox");
  EXPECT_EXIT(
      {
        showOutputAsError();
        YLattice<dbl_t> y;
        y.standard.params.verb.set(1);
        myMain(y);
      },
      ::testing::ExitedWithCode(0), "^\nUsage: latbox ");
}

TEST(MyMainDeathTest, FrontEndAndTimerDoNotGoTogether) {
  EXPECT_FAILURE(
      {
        YLattice<dbl_t> y;
        y.standard.params.gui.init("", "", true, y.standard.params.keys, y.standard.params.hash);
        y.standard.params.rtime.set(5);
        setMainValue(y, MainMutexVariable::inputRequested, "x");
        myMain(y);
      },
      "The GUI and RTIME parameter don't go well together right now ...");
}

TEST(MyMainDeathTest, NoIterationsOnlyPrepareTheFiles) {
  const TemporaryFolder folder;
  folder.write("small.opt", SMALL_PROGRAM);
  EXPECT_EXIT(
      {
        showOutputAsError();
        YLattice<dbl_t> y;
        y.standard.params.iters.set(0);
        setMainValue(y, MainMutexVariable::inputRequested, folder.path("small"));
        myMain(y);
      },
      ::testing::ExitedWithCode(0), "^$");
  EXPECT_TRUE(folder.has("small.lat"));
  EXPECT_FALSE(folder.has("small.sol"));
}

TEST(MyMainDeathTest, MissingFileIsAFailure) {
  EXPECT_FAILURE(
      {
        YLattice<dbl_t> y;
        setMainValue(y, MainMutexVariable::inputRequested, "/nowhere/x");
        myMain(y);
      },
      "Could not read opt file: /nowhere/x.opt");
}

TEST(MyMainDeathTest, SolvesTheSmallProgram) {
  const TemporaryFolder folder;
  folder.write("small.opt", SMALL_PROGRAM);
  EXPECT_EXIT(
      {
        showOutputAsError();
        blockTermination();
        YLattice<dbl_t> y;
        const SignalHandlers handlers(y);
        setMainValue(y, MainMutexVariable::inputRequested, folder.path("small"));
        y.standard.params.verb.set(2);
        myMain(y);
      },
      ::testing::ExitedWithCode(0),
      "\nLattice dimension: M = 3, N = 4\nLattice rank = 3\nInteger-linear dependencies: 0\n\n(.|\n)*"
      "Solutions found: 1\n(.|\n)*Program end\n$");
  EXPECT_TRUE(folder.has("small.sol"));
}

TEST(EndOnExceptionDeathTest, EveryExceptionIsAFailure) {
  EXPECT_FAILURE(endOnException([] { throw ReadException("Vector: bad stream"); }), "Vector: bad stream");
  EXPECT_FAILURE(endOnException([] { throw FatalPrecisionException(); }), "Fatal precision exception");
  EXPECT_FAILURE(endOnException([] { throw std::bad_alloc(); }), "Out of memory");
  EXPECT_FAILURE(endOnException([] { throw std::bad_array_new_length(); }), "Out of memory");
  EXPECT_FAILURE(endOnException([] { throw std::length_error("long"); }), "Out of memory");
  EXPECT_FAILURE(endOnException([] { throw std::runtime_error("other"); }), "other");
}

}  // namespace
}  // namespace latbox
