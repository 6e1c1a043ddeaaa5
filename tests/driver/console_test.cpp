#include "driver/console.h"
#include "driver/ladder.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <string>
#include <vector>

#include "driver/command_line.h"
#include "driver/run_state.h"

namespace latbox {
namespace {

struct Answers {
  std::string out;
  std::string err;
};

Answers answersTo(YLattice<dbl_t>& y, const std::string& line) {
  ::testing::internal::CaptureStdout();
  ::testing::internal::CaptureStderr();
  actOnLine(y, line);
  Answers answers;
  answers.out = ::testing::internal::GetCapturedStdout();
  answers.err = ::testing::internal::GetCapturedStderr();
  return answers;
}

struct LineCase {
  std::string line;
  std::string out;
  std::string err;
};

TEST(Console, AnswersAsTheTableSays) {
  const std::vector<LineCase> cases = {
      {"STATUS", "> Status: waiting\n", ""},
      {"STOP", "> Status: stopped\n", ""},
      {"STATUS", "> Status: stopped\n", ""},
      {"RUN", "> Status: running\n", ""},
      {"  STOP  ", "> Status: stopped\n", ""},
      {"\t\f\v RUN \r", "> Status: running\n", ""},
      {"status", "", ""},
      {"Stop", "", ""},
      {"STOP NOW", "", ""},
      {"STATUSSTATUS", "", ""},
      {"", "", ""},
      {"   ", "", ""},
      {"SET", "", ""},
      {"SET ", "", ""},
      {"SET verb", "", ""},
      {"SETverb=2", "", ""},
      {"set verb=2", "", ""},
      {"SET verb=2", "> Setting: verb = 2\n", ""},
      {"SET\tverb=1", "> Setting: verb = 1\n", ""},
      {"SET \t  verb=0", "> Setting: verb = 0\n", ""},
      {"SET beta=", "> Setting: beta = \n", ""},
      {"SET beta= 7", "> Setting: beta =  7\n", ""},
      {"SET beta=x", "> Setting: beta = x\n", ""},
      {"SET snorm=5.0", "> Setting: snorm = 5.0\n", ""},
      {"SET a=b=c", "", "\n*** No such setting: a=b\n"},
      {"SET verb =2", "", "\n*** No such setting: verb \n"},
      {"SET =2", "", "\n*** No such setting: \n"},
      {"SET gui=1", "", "\n*** No such setting: gui\n"},
      {"SET verb=1\rRUN", "", ""},
      {"SET \v verb=1", "", "\n*** No such setting: \v verb\n"},
  };
  YLattice<dbl_t> y;
  for (const LineCase& row : cases) {
    const Answers answers = answersTo(y, row.line);
    EXPECT_EQ(answers.out, row.out) << row.line;
    EXPECT_EQ(answers.err, row.err) << row.line;
  }
}

TEST(Console, SetReachesBothStandardSides) {
  YLattice<dbl_t> y;
  answersTo(y, "SET verb=2");
  EXPECT_EQ(y.standard.params.verb.get(), 2);
  EXPECT_EQ(y.standardBackup.params.verb.get(), 2);
}

TEST(Console, NumberThatDoesNotReadIsZeroAndTheRunGoesOn) {
  YLattice<dbl_t> y;
  switchToExtended(y);
  for (const char* bad : {"5.0", "5.", "1/0", "inx", "1:7/3", "x"}) {
    y.extended.params.snorm.set(QQ(3));
    answersTo(y, std::string("SET snorm=") + bad);
    EXPECT_EQ(y.extended.params.snorm.get(), QQ(0)) << bad;
  }
}

TEST(Console, SettingRtimeReachesItsGuardedValue) {
  YLattice<dbl_t> y;
  answersTo(y, "SET rtime=17");
  EXPECT_EQ(y.standard.params.rtime.get(), 17);
}

TEST(Console, HelpPrintsTheOptionTable) {
  YLattice<dbl_t> y;
  const std::string text = answersTo(y, "HELP").out;
  EXPECT_EQ(text, liveOptionTable(y) + "\n");
  EXPECT_TRUE(text.starts_with("  --help | Display this help information. [ Default: 0 ]\n"));
  EXPECT_TRUE(text.ends_with(" [ Default: -inf ]\n\n"));
}

// A change of precision, and a step that is taken back, may fall between any two commands.
TEST(Console, StopAndRunReachAllSides) {
  YLattice<dbl_t> y;
  answersTo(y, "STOP");
  EXPECT_EQ(y.standard.mainVars[MainMutexVariable::runState].get(), "stopped");
  EXPECT_EQ(y.standardBackup.mainVars[MainMutexVariable::runState].get(), "stopped");
  EXPECT_EQ(y.extended.mainVars[MainMutexVariable::runState].get(), "stopped");
  switchToExtended(y);
  EXPECT_EQ(answersTo(y, "STATUS").out, "> Status: stopped\n");
  answersTo(y, "RUN");
  useStandardPrecision(y);
  EXPECT_EQ(answersTo(y, "STATUS").out, "> Status: running\n");
}

TEST(Console, LinesOfAnyLengthDoNoHarm) {
  YLattice<dbl_t> y;
  const std::string key(500000, 'k');
  EXPECT_EQ(answersTo(y, "SET " + key + "=1").err, "\n*** No such setting: " + key + "\n");
  EXPECT_EQ(answersTo(y, std::string(500000, ' ') + "STATUS").out, "> Status: waiting\n");
  EXPECT_EQ(answersTo(y, "SET snorm=" + std::string(500000, '1') + "x").err, "");
}

TEST(Console, ServesUntilTheInputEnds) {
  int ends[2];
  ASSERT_EQ(pipe(ends), 0);
  const std::string commands = "STOP\nnonsense\nSTATUS";
  ASSERT_EQ(write(ends[1], commands.data(), commands.size()), static_cast<ssize_t>(commands.size()));
  close(ends[1]);
  YLattice<dbl_t> y;
  LineInput input(ends[0]);
  ::testing::internal::CaptureStdout();
  serveConsole(y, input);
  EXPECT_EQ(::testing::internal::GetCapturedStdout(), "> Status: stopped\n> Status: stopped\n");
  close(ends[0]);
}

}  // namespace
}  // namespace latbox
