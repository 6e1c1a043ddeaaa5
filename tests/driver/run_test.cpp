#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <csignal>

#include "driver/end_on_exception.h"
#include "driver/iterate.h"
#include "driver/ladder.h"
#include "driver/program_name.h"
#include "driver/run_state.h"
#include "driver/signals.h"
#include "driver/timer.h"
#include "lib/exceptions.h"
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

// The whole of what a run prints, for what it must not print. Its clock may act at a chosen moment, for it is
// looked at on the solver thread when something is found or written.
class WholeRunDeathTest : public ::testing::Test {
 protected:
  // Both corners of the box are better and better targets: already the trivial solutions restart.
  static constexpr const char* RESTARTS =
      "[ -inf ]\n[ [ 1 1 ] ]\n[ ]\n[ ]\n[ [ 1 1 ] ]\n[ 0 ]\n[ 9 ]\n[ 0 0 ]\n[ 0 0 ]\n[ 4 4 ]\n";
  static inline YLattice<dbl_t>* watched = nullptr;

  // Asked until it is true, and no more: the final report looks at the clock as well, where nothing may be
  // allocated.
  static bool loaded() {
    static bool known = false;
    return known = known || !mainValue(*watched, MainMutexVariable::inputLoaded).empty();
  }
  static void setVerb(long verb) {
    watched->live([verb](auto& lattice) { lattice.params.verb.set(verb); });
  }

  std::string output(const char* program, long verb, long (*clock)() = nullptr) {
    folder_.write("small.opt", program);
    EXPECT_EXIT(run(verb, clock), ::testing::ExitedWithCode(0), "^$");
    return folder_.read("out");
  }

 private:
  [[noreturn]] void run(long verb, long (*clock)()) {
    dup2(creat(folder_.path("out").c_str(), 0600), STDOUT_FILENO);
    alarm(60);  // a run that hangs is the failure
    blockTermination();
    YLattice<dbl_t> y;
    watched = &y;
    const SignalHandlers handlers(y);
    setMainValue(y, MainMutexVariable::inputRequested, folder_.path("small"));
    y.standard.params.verb.set(verb);
    y.standard.params.sol.set(0);
    y.standard.params.iters.set(2);
    if (clock != nullptr) setClock(clock);
    myMain(y);
  }

  TemporaryFolder folder_;
};

bool contains(const std::string& text, const char* part) {
  return text.find(part) != std::string::npos;
}

TEST_F(WholeRunDeathTest, ARestartOutOfTheTrivialSolutionsLandsAtTheSizes) {
  const std::string text = output(RESTARTS, 2);
  const std::size_t trivial = text.find("|-> Checking trivial solutions ...\n");
  const std::size_t restart =
      text.find(" ==> Re-Looping ...\n\nLattice dimension: M = 3, N = 5\nLattice rank = 3\n");
  ASSERT_NE(trivial, std::string::npos) << text;
  ASSERT_NE(restart, std::string::npos) << text;
  EXPECT_LT(trivial, restart);
  EXPECT_LT(restart, text.find("Lattice dimension"));
  EXPECT_EQ(text.find("Checking trivial solutions", trivial + 5), std::string::npos);
  EXPECT_TRUE(contains(text, "|    |-> Lattice was regenerated ==> Re-Looping ...\n"));
}

TEST_F(WholeRunDeathTest, OnlyVerb2ReportsTheSizes) {
  for (const long verb : {0L, 1L, 3L}) {
    const std::string text = output(RESTARTS, verb);
    for (const char* line :
         {"Lattice dimension", "Lattice rank", "Integer-linear dependencies", "Re-Looping"})
      EXPECT_FALSE(contains(text, line)) << verb << text;
  }
}

TEST_F(WholeRunDeathTest, AVerbThatIsLoweredMeanwhileStillReportsTheSizes) {
  const std::string text = output(RESTARTS, 2, [] {
    if (loaded()) setVerb(0);
    return 0L;
  });
  for (const char* line : {"Re-Looping", "Lattice dimension", "Lattice rank", "Integer-linear dependencies"})
    EXPECT_TRUE(contains(text, line)) << text;
  EXPECT_FALSE(contains(text, "BKZ enumeration")) << text;
}

TEST_F(WholeRunDeathTest, AVerbThatIsRaisedMeanwhileDoesNotReportTheSizes) {
  const std::string text = output(RESTARTS, 0, [] {
    if (loaded()) setVerb(2);
    return 0L;
  });
  for (const char* line : {"Re-Looping", "Lattice dimension", "Lattice rank", "Integer-linear dependencies"})
    EXPECT_FALSE(contains(text, line)) << text;
  EXPECT_TRUE(contains(text, "BKZ enumeration")) << text;
}

TEST_F(WholeRunDeathTest, AStopDuringTheLoadIsOverByItsEnd) {
  const std::string text = output(SMALL_PROGRAM, 0, [] {
    if (!loaded()) setRunState(*watched, RUN_STOPPED);
    return 0L;
  });
  EXPECT_TRUE(contains(text, "\nTotal iterations: 2\n")) << text;
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
