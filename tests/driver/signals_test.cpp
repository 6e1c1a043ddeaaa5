#include "driver/signals.h"
#include "driver/events.h"
#include "driver/ladder.h"

#include <gtest/gtest.h>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <iostream>
#include <thread>

#include "driver/report.h"
#include "driver/run_state.h"
#include "lib/os/clock.h"
#include "lib/os/signals.h"
#include "temporary_folder.h"

namespace latbox {
namespace {

using latbox::testing::TemporaryFolder;

// For death tests, which look at standard error alone.
void showOutputAsError() {
  dup2(STDERR_FILENO, STDOUT_FILENO);
}

void addSolution(Lattice<dbl_t, dbl_t>& lattice, const std::string& solFile) {
  TargetVector<dbl_t> solution{Vector<dbl_t>("[ 1 2 ]")};
  solution.secondsUntilDiscovered = 7;
  lattice.solutions.append(solution);
  lattice.solFile = solFile;
  publishSummary(lattice);
}

TEST(FinalReportDeathTest, WithoutResults) {
  EXPECT_EXIT(
      {
        showOutputAsError();
        YLattice<dbl_t> y;
        publishSummary(y.standard);  // another test of this process may have left one
        statisticsStandard().iterations = 12;
        const SignalHandlers handlers(y);
        raise(SIGTERM);
      },
      ::testing::ExitedWithCode(0),
      "^\nGot signal: Terminated\n\n\\*{26} Terminated \\*{26}\n\nTotal iterations: 12\n"
      "Total running time: [0-9]+ sec\\(s\\) -- Program end\n$");
}

TEST(FinalReportDeathTest, NamesTheFileOfTheResults) {
  const TemporaryFolder folder;
  const std::string solFile = folder.write("a.sol", "x");
  EXPECT_EXIT(
      {
        showOutputAsError();
        YLattice<dbl_t> y;
        addSolution(y.standard, solFile);
        const SignalHandlers handlers(y);
        raise(SIGINT);
      },
      ::testing::ExitedWithCode(0),
      "^\nGot signal: Interrupt\n\n\\*{26} Terminated \\*{26}\n\nSolutions found: 1\n\n"
      "\\{ The first solution/s was/were found after: 7 sec\\(s\\) \\}\n"
      "\nThe following file contains the results: \n\n\t" +
          solFile + "\n\nTotal iterations: ");
}

TEST(FinalReportDeathTest, DoesNotNameAFileThatIsNotThere) {
  EXPECT_EXIT(
      {
        showOutputAsError();
        YLattice<dbl_t> y;
        addSolution(y.standard, "/nowhere/a.sol");
        const SignalHandlers handlers(y);
        raise(SIGINT);
      },
      ::testing::ExitedWithCode(0), "found after: 7 sec\\(s\\) \\}\n\nTotal iterations: ");
}

TEST(FinalReportDeathTest, DoesNotNameAFileWithoutASummary) {
  const TemporaryFolder folder;
  const std::string solFile = folder.write("a.sol", "x");
  EXPECT_EXIT(
      {
        showOutputAsError();
        YLattice<dbl_t> y;
        y.standard.solFile = solFile;
        publishSummary(y.standard);
        const SignalHandlers handlers(y);
        raise(SIGTERM);
      },
      ::testing::ExitedWithCode(0), "Terminated \\*{26}\n\nTotal iterations: ");
}

TEST(FinalReportDeathTest, CountsTheIterationsOfTheLiveSide) {
  EXPECT_EXIT(
      {
        showOutputAsError();
        YLattice<dbl_t> y;
        switchToExtended(y);
        statisticsExtended().iterations = 77;
        statisticsStandard().iterations = 11;
        const SignalHandlers handlers(y);
        raise(SIGTERM);
      },
      ::testing::ExitedWithCode(0), "\nTotal iterations: 77\n");
}

TEST(FinalReportDeathTest, TerminateRunReportsThoughTheSignalIsBlocked) {
  EXPECT_EXIT(
      {
        showOutputAsError();
        blockTermination();
        YLattice<dbl_t> y;
        const SignalHandlers handlers(y);
        terminateRun(y.standard);
      },
      ::testing::ExitedWithCode(0), "^\nGot signal: Terminated\n");
}

// The report waits until the file is whole, and what the other thread publishes in the meantime is in it.
TEST(FinalReportDeathTest, WaitsForASectionThatIsHeld) {
  EXPECT_EXIT(
      {
        showOutputAsError();
        blockTermination();
        YLattice<dbl_t> y;
        const SignalHandlers handlers(y);
        std::atomic<bool> inside{false};
        std::thread writer([&] {
          const SignalHold hold;
          inside = true;
          sleepSeconds(1);
          addSolution(y.standard, "/nowhere/a.sol");
        });
        while (!inside) std::this_thread::yield();
        terminateRun(y.standard);
      },
      ::testing::ExitedWithCode(0), "found after: 7 sec");
}

// With the report under way on one thread, the end of the run on another one waits for the end of the
// process.
TEST(FinalReportDeathTest, SecondEndDoesNothingMore) {
  EXPECT_EXIT(
      {
        showOutputAsError();
        blockTermination();
        YLattice<dbl_t> y;
        const SignalHandlers handlers(y);
        std::atomic<bool> inside{false};
        std::thread writer([&] {
          const SignalHold hold;
          inside = true;
          sleepSeconds(1);
        });
        while (!inside) std::this_thread::yield();
        std::thread second([&] {
          terminateRun(y.standard);
          _exit(3);
        });
        terminateRun(y.standard);
        _exit(4);
      },
      ::testing::ExitedWithCode(0), "^\nGot signal: Terminated\n\n[^G]*Program end\n$");
}

TEST(FinalReportDeathTest, LongRunningTime) {
  EXPECT_EXIT(
      {
        showOutputAsError();
        YLattice<dbl_t> y;
        statisticsStandard().startTime.set(1000);
        const SignalHandlers handlers(y);
        setClock([] { return 4661L; });
        raise(SIGTERM);
      },
      ::testing::ExitedWithCode(0),
      "time: 1:01:01 hour\\(s\\):min\\(s\\):sec\\(s\\) == 3661 secs -- Program end\n$");
}

// What the child of the test below does: a solver that nobody reads from, and the end of its run.
[[noreturn]] void endWithFullPipe(const int (&output)[2], int ready) {
  dup2(output[1], STDOUT_FILENO);
  blockTermination();
  YLattice<dbl_t> y;
  const SignalHandlers handlers(y);
  std::thread solver([] {
    for (;;) std::cout << std::string(10000, 'x') << std::flush;
  });
  for (pollfd pipeEnd{output[1], POLLOUT, 0}; poll(&pipeEnd, 1, 0) > 0;) std::this_thread::yield();
  if (write(ready, "r", 1) != 1) _exit(5);
  terminateRun(y.standard);
  _exit(6);
}

std::string readToTheEnd(int file) {
  std::string text;
  char block[4096];
  for (ssize_t count; (count = read(file, block, sizeof block)) > 0;)
    text.append(block, static_cast<std::size_t>(count));
  return text;
}

// Once the solver's output went on behind the report, or into it, when it had been waiting for its reader.
TEST(FinalReport, IsTheLastThatIsPrinted) {
  int output[2], ready[2];
  ASSERT_EQ(pipe(output), 0);
  ASSERT_EQ(pipe(ready), 0);
  const pid_t child = fork();
  if (child == 0) endWithFullPipe(output, ready[1]);
  close(output[1]);
  char mark;
  ASSERT_EQ(read(ready[0], &mark, 1), 1);
  const std::string text = readToTheEnd(output[0]);
  int status = 0;
  waitpid(child, &status, 0);
  EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
  const std::size_t report = text.find_first_not_of('x');
  ASSERT_NE(report, std::string::npos);
  EXPECT_TRUE(text.substr(report).starts_with("\nGot signal: Terminated\n"));
  EXPECT_TRUE(text.ends_with(" -- Program end\n"));
  for (const int file : {output[0], ready[0], ready[1]}) close(file);
}

TEST(SignalHandlers, PreviousOnesComeBack) {
  const auto previousInt = std::signal(SIGINT, SIG_IGN);
  const auto previousTerm = std::signal(SIGTERM, SIG_IGN);
  {
    YLattice<dbl_t> y;
    const SignalHandlers handlers(y);
  }
  EXPECT_EQ(std::signal(SIGTERM, previousTerm), SIG_IGN);
  EXPECT_EQ(std::signal(SIGINT, previousInt), SIG_IGN);
}

TEST(TerminateRun, ParksTheRunUnderAFrontEnd) {
  Lattice<dbl_t, dbl_t> lattice;
  lattice.params.gui.init("", "", true, lattice.params.keys, lattice.params.hash);
  terminateRun(lattice);
  EXPECT_EQ(lattice.mainVars[MainMutexVariable::runState].get(), "stopped");
}

}  // namespace
}  // namespace latbox
