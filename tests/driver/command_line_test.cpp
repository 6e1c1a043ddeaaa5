#include "driver/command_line.h"
#include "driver/ladder.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <string>
#include <vector>

#include "driver/program_name.h"
#include "support/failure.h"

namespace latbox {
namespace {

void parse(YLattice<dbl_t>& y, std::vector<std::string> arguments) {
  arguments.insert(arguments.begin(), "latbox");
  std::vector<char*> pointers;
  for (std::string& argument : arguments) pointers.push_back(argument.data());
  pointers.push_back(nullptr);
  parseCommandLine(static_cast<int>(arguments.size()), pointers.data(), y);
}

std::string requested(YLattice<dbl_t>& y) {
  return y.live([](auto& lattice) { return lattice.mainVars[MainMutexVariable::inputRequested].get(); });
}

std::string textOf(YLattice<dbl_t>& y, const std::string& key) {
  return y.live([&key](auto& lattice) { return lattice.params.find(key).value.get(); });
}

// For death tests, which look at standard error alone.
void showOutputAsError() {
  dup2(STDERR_FILENO, STDOUT_FILENO);
}

TEST(WithoutExtension, DropsEverythingFromTheLastPoint) {
  const std::vector<std::pair<std::string, std::string>> cases = {
      {"x.opt", "x"},
      {"x", "x"},
      {"a.b.opt", "a.b"},
      {"dir.d/prob", "dir"},
      {"dir.d/prob.opt", "dir.d/prob"},
      {".opt", ""},
      {"./x", ""},
      {"./x.lat", "./x"},
      {"x.", "x"},
      {"../x", "."},
  };
  for (const auto& [path, expected] : cases) EXPECT_EQ(withoutExtension(path), expected) << path;
}

TEST(ProgramName, IsTheLastComponent) {
  setProgramName("/usr/bin/solver");
  EXPECT_EQ(programName(), "solver");
  setProgramName("solver2");
  EXPECT_EQ(programName(), "solver2");
  setProgramName("dir/");
  EXPECT_EQ(programName(), "");
}

TEST(CommandLine, WithoutArgumentsNothingIsRequested) {
  YLattice<dbl_t> y;
  parse(y, {});
  EXPECT_EQ(requested(y), "");
  EXPECT_FALSE(y.extendedActive);
}

TEST(CommandLine, InputLosesItsExtensionAndTheLastOneCounts) {
  YLattice<dbl_t> y;
  parse(y, {"first.opt", "--verb=1", "dir/second.opt"});
  EXPECT_EQ(requested(y), "dir/second");
}

TEST(CommandLine, AnyNumberOfDashesBeginsAnOption) {
  for (const char* option : {"-verb=2", "--verb=2", "---verb=2"}) {
    YLattice<dbl_t> y;
    parse(y, {option, "file.opt"});
    EXPECT_EQ(y.standard.params.verb.get(), 2) << option;
    EXPECT_EQ(requested(y), "file") << option;
  }
}

TEST(CommandLine, ValuesAreNotChecked) {
  YLattice<dbl_t> y;
  parse(y, {"--sol=", "--beta=x", "--eprune=a=b", "--pair=true", "--help=0", "--iters=inf", "x.opt"});
  EXPECT_EQ(y.standard.params.sol.get(), 0);
  EXPECT_EQ(textOf(y, "sol"), "");
  EXPECT_EQ(y.standard.params.beta.get(), 0);
  EXPECT_EQ(textOf(y, "eprune"), "a=b");
  EXPECT_FALSE(y.standard.params.pair.get());
  EXPECT_EQ(y.standard.params.iters.get(), std::numeric_limits<long>::min());
}

// It is put back as the number that it was read as.
TEST(CommandLine, VerbLosesItsText) {
  for (const char* option : {"--verb=", "--verb=x"}) {
    YLattice<dbl_t> y;
    parse(y, {option, "x.opt"});
    EXPECT_EQ(y.standard.params.verb.get(), 0) << option;
    EXPECT_EQ(textOf(y, "verb"), "0") << option;
  }
}

struct BlockTimeCase {
  std::vector<std::string> arguments;
  long blockTime;
};

TEST(CommandLine, BlockTimeIsBoundedByTheRunTime) {
  const std::vector<BlockTimeCase> cases = {{{"--rtime=10", "--btime=100"}, 10},
                                            {{"--rtime=10", "--btime=5"}, 5},
                                            {{"--rtime=10"}, 10},
                                            {{"--btime=100"}, 100},
                                            {{"--btime=10", "--rtime=10"}, 10},
                                            {{"--btime=11", "--rtime=10"}, 10},
                                            {{"--rtime=-1"}, -1},
                                            {{"--rtime=0", "--btime=3"}, 3}};
  for (const BlockTimeCase& row : cases) {
    YLattice<dbl_t> y;
    parse(y, row.arguments);
    EXPECT_EQ(y.standard.params.btime.get(), row.blockTime) << row.arguments.front();
  }
}

TEST(CommandLine, ConversionAtTheStartIsSilent) {
  YLattice<dbl_t> y;
  ::testing::internal::CaptureStdout();
  parse(y, {"--verb=2", "x.opt"});
  EXPECT_EQ(::testing::internal::GetCapturedStdout(), "");
  EXPECT_EQ(y.standard.params.verb.get(), 2);
  EXPECT_EQ(textOf(y, "verb"), "2");
}

TEST(CommandLine, ANormThatStandardPrecisionCannotHoldKeepsTheRunExtended) {
  YLattice<dbl_t> y;
  parse(y, {"--snorm=1/3", "--verb=1", "x.opt"});
  EXPECT_TRUE(y.extendedActive);
  EXPECT_EQ(y.extended.params.snorm.get(), QQ("1/3"));
  EXPECT_EQ(y.extended.params.verb.get(), 1);
  EXPECT_EQ(requested(y), "x");
}

TEST(CommandLine, NormsReachStandardPrecision) {
  YLattice<dbl_t> y;
  parse(y, {"--snorm=2.5", "--tnorm=inf", "x.opt"});
  EXPECT_FALSE(y.extendedActive);
  EXPECT_EQ(y.standard.params.snorm.get(), 2.5L);
  EXPECT_EQ(y.standard.params.tnorm.get(), std::numeric_limits<dbl_t>::infinity());
}

struct RejectCase {
  const char* argument;
  const char* message;
};

using CommandLineDeathTest = ::testing::Test;

TEST(CommandLineDeathTest, RefusesWithItsMessage) {
  const RejectCase cases[] = {
      {"--help", "Malformed parameter: help"},
      {"-", "Malformed parameter: "},
      {"---", "Malformed parameter: "},
      {"--verb 2", "Malformed parameter: verb 2"},
      {"--nosuch=1", "No such parameter: nosuch"},
      {"--gui=1", "No such parameter: gui"},
      {"--=1", "No such parameter: "},
      {"--Verb=1", "No such parameter: Verb"},
      {"--verb =1", "No such parameter: verb "},
      {"--snorm=5.0", "QQ: parse error1"},
  };
  for (const RejectCase& row : cases) {
    EXPECT_FAILURE(
        {
          YLattice<dbl_t> y;
          parse(y, {row.argument});
        },
        row.message);
  }
}

TEST(CommandLineDeathTest, EmptyInputPrintsTheShortUsage) {
  setProgramName("bin/latbox");
  EXPECT_EXIT(
      {
        showOutputAsError();
        YLattice<dbl_t> y;
        parse(y, {"--verb=2", "", "--nosuch=1"});
      },
      ::testing::ExitedWithCode(0),
      "^Usage: latbox --help=0 --verb=2 --consistency=0 .*--snorm=-1 --tnorm=-inf "
      "file\\.opt\\|file\\.lat\n$");
}

TEST(CommandLineDeathTest, HelpPrintsTheTable) {
  setProgramName("latbox");
  EXPECT_EXIT(
      {
        showOutputAsError();
        YLattice<dbl_t> y;
        parse(y, {"--help=1"});
      },
      ::testing::ExitedWithCode(0),
      "^Usage: latbox \\[options\\] file\\.opt\\|file\\.lat\n\nOptions:\n"
      "  --help \\| Display this help information\\. \\[ Default: 0 \\]\n  --verb \\| .*"
      "  --tnorm \\| [^\n]* \\[ Default: -inf \\]\n\n$");
}

TEST(SetParameter, KeepsBothStandardSidesEqual) {
  YLattice<dbl_t> y;
  EXPECT_TRUE(setParameter(y, "beta", "31", OnBadNumber::failure));
  EXPECT_EQ(y.standard.params.beta.get(), 31);
  EXPECT_EQ(y.standardBackup.params.beta.get(), 31);
  EXPECT_EQ(y.extended.params.beta.get(), 20);
}

TEST(SetParameter, ReachesTheExtendedSideAlone) {
  YLattice<dbl_t> y;
  switchToExtended(y);
  EXPECT_TRUE(setParameter(y, "beta", "31", OnBadNumber::failure));
  EXPECT_EQ(y.extended.params.beta.get(), 31);
  EXPECT_EQ(y.standard.params.beta.get(), 20);
}

TEST(SetParameter, KnowsNoOtherKeys) {
  YLattice<dbl_t> y;
  EXPECT_FALSE(setParameter(y, "nosuch", "1", OnBadNumber::zero));
  EXPECT_FALSE(setParameter(y, "", "1", OnBadNumber::zero));
}

}  // namespace
}  // namespace latbox
