#include <gtest/gtest.h>

#include "lib/exceptions.h"
#include "support/failure.h"
#include "support/program.h"

namespace latbox {
namespace {

using testing::MemoryFile;
using testing::readProgram;
using testing::shown;

const char* const EXAMPLE =
    "// minimise x1 + x2 subject to x1 + 2 x2 = 7, 3 x1 - x2 >= 0\n"
    "[ -inf ]\n[ [ 1 1 ] ]\n[ [ 1 2 ] ]\n[ 7 ]\n[ [ 3 -1 ] ]\n[ 0 ]\n[ inf ]\n[ 0 0 ]\n[ 0 0 ]\n[ 10 10 ]\n";

TEST(OptReader, ReadsTheExample) {
  const Tessik<QQ> p = readProgram(EXAMPLE);
  EXPECT_EQ(shown(p.dt), "[ -inf ]");
  EXPECT_EQ(shown(p.kt), "[ -inf ]");
  EXPECT_EQ(shown(p.At), "[ 1 1 ]");
  EXPECT_EQ(shown(p.Ag), "[ 1 2 ]");
  EXPECT_EQ(shown(p.bg), "[ 7 ]");
  EXPECT_EQ(shown(p.Au), "[ 3 -1 ]");
  EXPECT_EQ(shown(p.lu), "[ 0 ]");
  EXPECT_EQ(shown(p.ru), "[ inf ]");
  EXPECT_EQ(shown(p.dx), "[ 0 0 ]");
  EXPECT_EQ(shown(p.lx), "[ 0 0 ]");
  EXPECT_EQ(shown(p.rx), "[ 10 10 ]");
  EXPECT_EQ(shown(p.fx), "00");
  EXPECT_EQ(shown(p.lrtu), "-inf .. inf");
  EXPECT_FALSE(p.tu);
  EXPECT_FALSE(p.allTargetsFinite);
  EXPECT_FALSE(p.prepared);
}

TEST(OptReader, AnEmptyTargetMakesAFeasibilityProblemWhoseSizeComesFromTheEquations) {
  const Tessik<QQ> p = readProgram("[][][[1 2 3]][4][][][][0 0 0][0 0 0][1 1 1]");
  EXPECT_EQ(p.n(), 3);
  EXPECT_EQ(p.dt.MN, 0);
  EXPECT_EQ(p.At.M, 0);
  EXPECT_TRUE(p.allTargetsFinite);
}

TEST(OptReader, SizeComesFromTheInequationsWhereThereIsNothingElse) {
  const Tessik<QQ> p = readProgram("[][][][][[1 2]][0][5][0 0][0 0][1 1]");
  EXPECT_EQ(p.n(), 2);
  EXPECT_EQ(p.Ag.M, 0);
}

TEST(OptReader, ThresholdsFollowTheTargetsBehindAnEqualsSign) {
  const Tessik<QQ> asked = readProgram("[ -inf ] = [ 5 ] [[1]][][][][][][0][0][1]");
  EXPECT_EQ(shown(asked.dt), "[ -inf ]");
  EXPECT_EQ(shown(asked.kt), "[ 5 ]");
  const Tessik<QQ> spread =
      readProgram("[ -inf ] // none\n /* of\n these */ = // but\n[ 5 ] [[1]][][][][][][0][0][1]");
  EXPECT_EQ(shown(spread.kt), "[ 5 ]");
  const Tessik<QQ> copied = readProgram("[ 3 ][[1]][][][][][][0][0][1]");
  EXPECT_EQ(shown(copied.dt), "[ 3 ]");
  EXPECT_EQ(shown(copied.kt), "[ 3 ]");
  EXPECT_TRUE(copied.allTargetsFinite);
}

TEST(OptReader, FreedomFollowsTheBounds) {
  const Tessik<QQ> p = readProgram("[][][[1 1 1 1 1]][4][][][][0 0 0 0 0][0 -inf 0 -inf 3][1 1 inf inf 3]");
  EXPECT_EQ(shown(p.fx), "01230");
}

TEST(OptReader, ReadsEveryFormOfNumber) {
  const Tessik<QQ> p =
      readProgram("[][][[-1/2 1.25 2:1/3 .5]][-0,75][][][][0 0 0 0][-inf -inf 0 0][1 inf 1 1]");
  EXPECT_EQ(shown(p.Ag), "[ -1/2 1:1/4 2:1/3 1/2 ]");
  EXPECT_EQ(shown(p.bg), "[ -3/4 ]");
}

TEST(OptReader, AnInequationWithEqualFiniteSidesPasses) {
  EXPECT_EQ(shown(readProgram("[][][][][[1]][3][3][0][0][9]").lu), "[ 3 ]");
}

// Equal infinite sides are neither crossed nor useless to the reader; the preparation refuses them.
TEST(OptReader, AnInequationWithEqualInfiniteSidesPasses) {
  EXPECT_EQ(shown(readProgram("[][][][][[1]][inf][inf][0][0][9]").lu), "[ inf ]");
}

TEST(OptReader, DigitsAreNotLookedAt) {
  EXPECT_EQ(shown(readProgram("[][][[1 1 1]][4][][][][-3 1/2 inf][0 0 0][1 1 1]").dx), "[ -3 1/2 inf ]");
}

TEST(OptReader, TextBehindTheLastItemIsIgnored) {
  EXPECT_EQ(readProgram(std::string(EXAMPLE) + "[ 1 2 ] and more /* and this is not closed").n(), 2);
}

TEST(OptReader, AnEmptyItemMayNotBeLeftOut) {
  // Without its dt the items shift by one: At is read as an empty item, for what stands there is no matrix.
  EXPECT_FAILURE(readProgram("[ [ 1 1 ] ] [] [] [] [] [] [0 0] [0 0] [1 1]"), "Vector: bad input");
}

TEST(OptReader, ASecondReadStartsFromNothing) {
  const MemoryFile first("[][][[1 1 1 1]][4][[1 1 1 1]][1][2][0 0 0 0][0 -inf 0 0][1 1 inf inf]");
  const MemoryFile second("[ 3 ][[1]][][][][][][0][0][1]");
  Tessik<QQ> p;
  p.optFile = first.path();
  p.solFile = "kept.sol";
  p.readOpt();
  p.prepared = true;
  p.slackCount = 7;
  p.stars.append(Star<QQ>());
  p.optFile = second.path();
  p.readOpt();
  EXPECT_EQ(p.solFile, "kept.sol");
  EXPECT_EQ(p.optFile, second.path());
  EXPECT_FALSE(p.prepared);
  EXPECT_EQ(p.slackCount, 0);
  EXPECT_EQ(p.stars.MN, 0);
  EXPECT_EQ(p.Ag.M, 0);
  EXPECT_EQ(p.Au.M, 0);
  EXPECT_EQ(p.n(), 1);
}

struct Refusal {
  const char* text;
  const char* message;
};

class OptRefusals : public ::testing::TestWithParam<Refusal> {};

TEST_P(OptRefusals, EndsByTheFailurePath) {
  EXPECT_FAILURE(readProgram(GetParam().text), GetParam().message);
}

INSTANTIATE_TEST_SUITE_P(
    Checks, OptRefusals,
    ::testing::Values(
        Refusal{"[ 1 2 ] = [ 1 ] [[1][1]][][][][][][0][0][1]",
                "The dimensions of the target properties (kt, dt) differ (1, 2)"},
        Refusal{"[ 1 2 ] = [[1][1]][][][][][][0][0][1]", "Vector: bad input"},
        Refusal{"[ 1 2 ][[1]][][][][][][0][0][1]",
                "The row count of At (1) differs with the dimension of dt (2)"},
        Refusal{"[][][[1]][1 2][][][][0][0][1]",
                "The row count of Ag (1) differs with the dimension of bg (2)"},
        Refusal{"[][][][][][][][][][]", "Dimension error -- n == 0"},
        Refusal{"[][][][][][][][0][0][1]", "Dimension error -- n == 0"},
        Refusal{"[1][[1 1]][[1]][1][][][][0 0][0 0][1 1]",
                "The column count of Ag (1) is not right ( != 2 )"},
        Refusal{"[1][[1 1]][][][[1 1 1]][0][1][0 0][0 0][1 1]",
                "The column count of Au (3) is not right ( != 2 )"},
        Refusal{"[][][[1 1]][1][[1 1 1]][0][1][0 0][0 0][1 1]",
                "The column count of Ag (2) is not right ( != 3 )"},
        Refusal{"[1][[1 inf]][[1 inf]][1][][][][0 0][0 0][1 1]", "+-inf not allowed in At"},
        Refusal{"[][][[1 -inf]][1][][][][0 0][0 0][1 1]", "+-inf not allowed in Ag"},
        Refusal{"[][][[1 -inf]][-inf][][][][0 0][0 0][1 1]", "+-inf not allowed in bg"},
        Refusal{"[][][[1 inf][1 1]][1 inf][][][][0 0][0 0][1 1]", "+-inf not allowed in Ag"},
        Refusal{"[][][][][[inf 1]][0][1][0 0][0 0][1 1]", "+-inf not allowed in Au"},
        Refusal{"[][][][][[1 1]][0 0][1][0 0][0 0][1 1]",
                "The row count of Au ( 1) differs with the dimension of lu / ru ( 2)"},
        Refusal{"[][][[1]][1][][0][][0][0][1]",
                "The row count of Au ( 0) differs with the dimension of lu / ru ( 1)"},
        Refusal{"[][][][][[1 1]][0][1 2][0 0][0 0][1 1]", "The dimensions of lu (1) and ru (2) differ"},
        Refusal{"[][][][][[1 1]][2][1][0 0][0 0][1 1]", "ru has to be >= lu in each of its components"},
        Refusal{"[][][][][[1 1]][-inf][inf][0 0][0 0][1 1]", "Useless inequation -inf <= ... <= inf found"},
        Refusal{"[][][[1 1]][1][][][][0 0][0 0][1]", "recheck sdim case and the usage of n (eg. in opt2lat)"},
        Refusal{"[][][[1 1]][1][][][][0 0][0 0][]", "recheck sdim case and the usage of n (eg. in opt2lat)"},
        Refusal{"[][][[1 1]][1][][][][0 0][0 0][1 1 1]",
                "The dimension of rx has to be > 0 and < A_{t,u,g}.MN"},
        Refusal{"[][][[1 1]][1][][][][0 0][0][1 1]",
                "The dimensions of the solution properties (lx, rx, dx) differ (1, 2, 2)"},
        Refusal{"[][][[1 1]][1][][][][0 0 0][0 0][1 1]",
                "The dimensions of the solution properties (lx, rx, dx) differ (2, 2, 3)"},
        Refusal{"[][][[1 1]][1][][][][0 0][0 2][1 1]", "rx has to be >= lx in each of its components"},
        Refusal{"[][][[1 1]][1][][][][0 0][0 inf][1 inf]", "rx has to be >= lx in each of its components"},
        Refusal{"[][][[1 1]][1][][][][0 0][0 -inf][1 -inf]", "rx has to be >= lx in each of its components"},
        // Text forms.
        Refusal{"", "Matrix: bad stream"}, Refusal{"   \n// nothing but a comment\n", "Matrix: bad stream"},
        Refusal{"[ -inf ]", "The row count of At (0) differs with the dimension of dt (1)"},
        Refusal{"[ ]", "Matrix: bad stream"}, Refusal{"[ 1 ", "Vector: bad input"},
        Refusal{"[ 1 x ]", "Vector: bad input"}, Refusal{"[ ixf ]", "Vector: bad input2"},
        Refusal{"[ inx ]", "Vector: bad input3"}, Refusal{"[ 1 / 2 ]", "QQ: division by zero1"},
        Refusal{"[ 5.0 ]", "QQ: parse error1"}, Refusal{"[ 1/0 ]", "QQ: division by zero1"},
        Refusal{"[ 1e3 ]", "Vector: bad input"}, Refusal{"[][][ 1 ]", "Matrix: bad input"},
        Refusal{"[][][ [ 1 ] [ 1 2 ] ]", "Matrix row dimension mismatch"},
        Refusal{"[][][ [ 1 ]", "Matrix: bad input"}, Refusal{"[ 1 /* open", "Comment is not terminated"},
        Refusal{"/*", "Comment is not terminated"},
        // A row that is too short has no element where one is asked for.
        Refusal{"[][][[1 2][1]][1 1][][][][0 0][0 0][1 1]", "Array: index out of range"}));

// Each text breaks two rules; the one that is met first in the file's order is told.
INSTANTIATE_TEST_SUITE_P(
    Order, OptRefusals,
    ::testing::Values(
        Refusal{"[1] = [1 2][]", "The dimensions of the target properties (kt, dt) differ (2, 1)"},
        Refusal{"[1][] x", "The row count of At (0) differs with the dimension of dt (1)"},
        Refusal{"[][][[1 1]][] x", "The row count of Ag (1) differs with the dimension of bg (0)"},
        Refusal{"[][][][][][0]", "Dimension error -- n == 0"},
        Refusal{"[1][[1 1]][[1]][1][[1]]", "The column count of Ag (1) is not right ( != 2 )"},
        Refusal{"[1][[1 inf]][][][[1]]", "The column count of Au (1) is not right ( != 2 )"},
        Refusal{"[1][[1 inf]][[inf 1]][inf][]", "+-inf not allowed in At"},
        Refusal{"[][][[1 1]][inf][[1 inf]]", "+-inf not allowed in bg"},
        Refusal{"[][][[1 inf]][1][[1 inf]]", "+-inf not allowed in Ag"},
        Refusal{"[][][][][[1 inf]][0 0]", "+-inf not allowed in Au"},
        Refusal{"[][][][][[1 1]][0 0] x",
                "The row count of Au ( 1) differs with the dimension of lu / ru ( 2)"},
        Refusal{"[][][[1]][1][][][0]", "The dimensions of lu (0) and ru (1) differ"},
        Refusal{"[][][][][[1][1]][2 -inf][1 inf][0 0]", "ru has to be >= lu in each of its components"},
        Refusal{"[][][][][[1][1]][-inf 2][inf 1][0 0]", "Useless inequation -inf <= ... <= inf found"},
        Refusal{"[][][[1 1]][1][][][][0][0][1]", "recheck sdim case and the usage of n (eg. in opt2lat)"},
        Refusal{"[][][[1 1]][1][][][][0][0][1 1 1]", "The dimension of rx has to be > 0 and < A_{t,u,g}.MN"},
        Refusal{"[][][[1 1]][1][][][][0][2 2][1 1]",
                "The dimensions of the solution properties (lx, rx, dx) differ (2, 2, 1)"}));

TEST(OptReader, AnItemMissingAtTheEndIsReportedByTheNextRead) {
  // Everything up to lx stands; rx is missing and empty.
  EXPECT_FAILURE(readProgram("[][][[1 1]][1][][][][0 0][0 0]"),
                 "recheck sdim case and the usage of n (eg. in opt2lat)");
  EXPECT_THROW(
      {
        try {
          readProgram("[][][[1 1]][1][][][][0 0]");
        } catch (const ReadException& e) {
          EXPECT_STREQ(e.what(), "Vector: bad stream");
          throw;
        }
      },
      ReadException);
}

TEST(OptReader, WhatCannotBeOpenedIsNamed) {
  Tessik<QQ> p;
  p.optFile = "no/such/file.opt";
  EXPECT_FAILURE(p.readOpt(), "Could not read opt file: no/such/file.opt");
  p.optFile = "/";
  EXPECT_FAILURE(p.readOpt(), "Could not read opt file: /");
}

TEST(OptReader, BinaryJunkIsRefused) {
  std::string junk;
  for (int i = 0; i < 100000; ++i) junk += static_cast<char>((i * 7919 + i / 256) % 256);
  EXPECT_FAILURE(readProgram("\x7f"
                             "ELF" +
                             junk),
                 "Dimension error -- n == 0");
  EXPECT_FAILURE(readProgram("[\x01" + junk), "Vector: bad input");
}

// Every cut of a sound file but the last ends by the failure path or by the exception, never in a hang.
TEST(OptReader, EveryTruncationIsRefused) {
  const std::string whole = "[-inf]=[3][[1 1]][[1 2]][7][[3 -1]][0][inf][0 0][0 0][1 10]";
  ASSERT_EQ(readProgram(whole).n(), 2);
  for (std::size_t length = 0; length < whole.size(); ++length)
    EXPECT_EXIT(
        {
          try {
            readProgram(whole.substr(0, length));
          } catch (const ReadException&) {
            std::exit(1);
          }
        },
        ::testing::ExitedWithCode(1), "")
        << "length " << length;
}

}  // namespace
}  // namespace latbox
