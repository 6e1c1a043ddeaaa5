// Runs under a clock that jumps about.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>

#include "driver/iterate.h"
#include "driver/signals.h"
#include "driver/timer.h"
#include "lib/exceptions.h"
#include "lib/os/clock.h"
#include "lib/os/signals.h"
#include "small_program.h"

namespace latbox {
namespace {

using latbox::testing::SmallRun;

constexpr const char* TARGET_PROGRAM =
    "[ -inf ]\n[ [ 5 9 4 11 ] ]\n[ ]\n[ ]\n[ [ 3 7 2 8 ] [ 2 4 3 9 ] ]\n[ 30 25 ]\n[ 36 33 ]\n"
    "[ 0 0 0 0 ]\n[ 0 0 0 0 ]\n[ 6 6 6 6 ]\n";

bool contains(const std::string& text, const std::string& expression) {
  const ::testing::Matcher<const std::string&> matcher = ::testing::ContainsRegex(expression);
  return matcher.Matches(text);
}

std::atomic<long> reading;

// Back by up to an hour, ahead by up to a day, and at times not at all.
long jumpingClock() {
  static const long jumps[] = {0, 3600, -3600, 0, 86400, -7200, 1, -1, 0, -3600};
  return 1'000'000 + jumps[reading++ % 10] + 10 * reading;
}

long backwardClock() {
  return 1'000'000 - reading++;
}

[[noreturn]] void runUnder(long (*clock)(), SmallRun& run, const std::string& log) {
  const int file = open(log.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
  dup2(file, STDOUT_FILENO);
  blockTermination();
  setClock(clock);
  statisticsStandard() = statisticsExtended() = Statistics();
  const SignalHandlers handlers(run.y);
  run.y.live([](auto& lattice) {
    auto& params = lattice.params;
    for (auto* option : {&params.pair, &params.sieve, &params.sample, &params.reinsert, &params.variate,
                         &params.scale, &params.translate, &params.deep})
      option->set(true);
    params.sol.set(0);
    params.iters.set(6);
    params.verb.set(2);
    params.btime.set(1);
    lattice.writeEnabled = lattice.finishEnabled = true;
  });
  for (;;) {
    try {
      iterate(run.y);
    } catch (const RestartException&) {
      run.y.live([](auto& lattice) { lattice.updateGso(1, 0); });
    }
  }
}

void checkDurations(const std::string& text) {
  EXPECT_NE(text.find(" -- Program end\n"), std::string::npos) << text;
  EXPECT_FALSE(contains(text, "-[0-9]+ sec")) << text;
}

class ClockDeathTest : public ::testing::TestWithParam<long (*)()> {};

TEST_P(ClockDeathTest, ARunEndsAndReportsNoTimeBelowZero) {
  SmallRun run(TARGET_PROGRAM);
  const std::string log = run.folder.path("log");
  EXPECT_EXIT(runUnder(GetParam(), run, log), ::testing::ExitedWithCode(0), "^$");
  checkDurations(run.folder.read("log"));
  EXPECT_FALSE(contains(run.folder.read("small.sol"), "\\| -[0-9]+ \\| --help"));
  EXPECT_FALSE(contains(run.folder.read("small.lat"), "\n-[0-9]+\n\n//"));
}

INSTANTIATE_TEST_SUITE_P(Clocks, ClockDeathTest, ::testing::Values(&jumpingClock, &backwardClock));

long clockSetBack() {
  static const long times[] = {5000, 1000, 900, 5001};
  return times[std::min(reading++, 3L)];
}

TEST(TimerDeathTest, AClockThatIsSetBackMeanwhileDelaysNothing) {
  SmallRun run;
  run.y.standard.params.rtime.set(1);
  EXPECT_EXIT(
      {
        dup2(STDERR_FILENO, STDOUT_FILENO);
        blockTermination();
        setClock(&clockSetBack);
        statisticsStandard().startTime.set(5000);
        const SignalHandlers handlers(run.y);
        timerBody(run.y);
      },
      ::testing::ExitedWithCode(0), "^\nGot signal: Terminated\n(.|\n)*Total running time: 1 sec");
}

}  // namespace
}  // namespace latbox
