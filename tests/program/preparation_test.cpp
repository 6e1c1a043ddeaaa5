#include <gtest/gtest.h>

#include <memory>

#include "lattice/lattice.h"
#include "program/generation.h"
#include "support/program.h"

namespace latbox {
namespace {

using testing::programOf;
using testing::shown;

template <class T>
class Preparation : public ::testing::Test {};
using Numbers = ::testing::Types<dbl_t, QQ>;
TYPED_TEST_SUITE(Preparation, Numbers);

const char* const TEXT = "[-inf] = [9] [[1 1]][[1 2]][7][[3 -1]][0][inf][0 0][0 2][10 10]";

template <class T>
std::unique_ptr<Lattice<T, dbl_t>> latticeOf(const std::string& text) {
  auto lattice = std::make_unique<Lattice<T, dbl_t>>();
  lattice->program = programOf<T>(text);
  return lattice;
}

TYPED_TEST(Preparation, StageOneWritesTheProgramAndStageTwoTheBasePart) {
  const auto lattice = latticeOf<TypeParam>(TEXT);
  prepare(*lattice, true, false);
  EXPECT_TRUE(lattice->program.prepared);
  EXPECT_TRUE(lattice->prepared);
  EXPECT_EQ(lattice->program.slackCount, 1);
  EXPECT_EQ(lattice->slackCount, 1);
  EXPECT_EQ(shown(lattice->program.bg), "[ 7 0 ]");
  EXPECT_EQ(shown(lattice->program.rx), "[ 10 10 inf ]");
  EXPECT_EQ(shown(lattice->bg), "[ 3 2 ]");  // moved by lx = (0, 2)
  EXPECT_EQ(shown(lattice->rx), "[ 10 8 inf ]");
  EXPECT_EQ(shown(lattice->lx), "[ 0 2 0 ]");
  EXPECT_TRUE(lattice->tu);
  EXPECT_EQ(shown(lattice->program.lrtu), "-9 .. 9");
  EXPECT_EQ(shown(lattice->lrtu), "-11 .. 7");
}

TYPED_TEST(Preparation, APreparedProgramKeepsItsStageOne) {
  const auto lattice = latticeOf<TypeParam>(TEXT);
  prepare(*lattice, true, false);
  const std::string once = shown(lattice->program.Ag) + shown(lattice->Ag) + shown(lattice->bg);
  for (const bool full : {false, true})
    for (const bool force : {false, true}) {
      prepare(*lattice, full, force);
      EXPECT_EQ(shown(lattice->program.Ag) + shown(lattice->Ag) + shown(lattice->bg), once);
      EXPECT_EQ(lattice->program.n(), 3);
    }
}

TYPED_TEST(Preparation, NeitherFullNorForcedSkipsStageOne) {
  const auto lattice = latticeOf<TypeParam>(TEXT);
  prepare(*lattice, false, false);
  EXPECT_FALSE(lattice->program.prepared);
  EXPECT_EQ(lattice->program.n(), 2);
}

// A bounded combined target that has no row yet asks for stage one even so.
TYPED_TEST(Preparation, ABoundTargetWithoutItsRowRunsStageOne) {
  const auto lattice = latticeOf<TypeParam>(TEXT);
  lattice->tu = true;
  prepare(*lattice, false, false);
  EXPECT_TRUE(lattice->program.prepared);
  EXPECT_EQ(shown(lattice->program.atu), "[ 1 1 0 ]");
}

TYPED_TEST(Preparation, ABoundTargetWithItsRowSkipsStageOne) {
  const auto lattice = latticeOf<TypeParam>(TEXT);
  lattice->tu = true;
  lattice->atu = Vector<TypeParam>("[ 1 1 ]");
  prepare(*lattice, false, false);
  EXPECT_FALSE(lattice->program.prepared);
}

TYPED_TEST(Preparation, ForcedStageOneLeavesThresholdsAlone) {
  const auto lattice = latticeOf<TypeParam>(TEXT);
  prepare(*lattice, false, true);
  EXPECT_TRUE(lattice->program.prepared);
  EXPECT_FALSE(lattice->program.tu);
  EXPECT_EQ(shown(lattice->program.lrtu), "-inf .. inf");
}

TYPED_TEST(Preparation, FileNamesStayConsistent) {
  const auto lattice = latticeOf<TypeParam>(TEXT);
  lattice->program.optFile = "p.opt";
  lattice->program.solFile = "p.sol";
  prepare(*lattice, true, false);
  EXPECT_EQ(lattice->optFile, "p.opt");
  EXPECT_EQ(lattice->solFile, "p.sol");
  lattice->optFile = "own.opt";
  prepare(*lattice, true, false);
  EXPECT_EQ(lattice->optFile, "own.opt");
  EXPECT_EQ(lattice->solFile, "p.sol");
}

// Log lines of both stages come at verbosity 2 alone.
TYPED_TEST(Preparation, TellsWhatItDoesAtVerbosity2) {
  for (const long verbosity : {1L, 2L}) {
    const auto lattice = latticeOf<TypeParam>("[][][][][[1 1 1][2 2 2]][3 6][3 6][0 0 0][0 -inf 1][9 4 2]");
    lattice->params.verb.set(verbosity);
    ::testing::internal::CaptureStdout();
    prepare(*lattice, true, false);
    EXPECT_EQ(::testing::internal::GetCapturedStdout(), verbosity == 1
                                                            ? ""
                                                            : "|-> Fake inequation detected and transfered\n"
                                                              "|-> Fake inequation detected and transfered\n"
                                                              "|-> Linear dependencies detected and removed\n"
                                                              "|-> Swapped half-free variable detected\n");
  }
}

}  // namespace
}  // namespace latbox
