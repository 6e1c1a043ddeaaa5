#include "lib/progress.h"

#include <gtest/gtest.h>

#include <memory>
#include <stdexcept>
#include <string>

#include "lib/failure.h"
#include "support/failure.h"

namespace latbox {
namespace {

class Progress : public ::testing::Test {
 protected:
  void SetUp() override { progressReset(); }
  void TearDown() override { progressReset(); }
};

TEST_F(Progress, PrefixesFollowTheDepth) {
  EXPECT_EQ(progressEnter(), "|->");
  EXPECT_EQ(progressBreak(), "\n");
  EXPECT_EQ(progressEnter(), "|    |->");
  EXPECT_EQ(progressBreak(), "\n");
  EXPECT_EQ(progressEnter(), "|    |    |->");
  EXPECT_EQ(progressDepth(), 3);
}

TEST_F(Progress, AnOpenLineIsEndedByTheNextLevel) {
  progressEnter();
  EXPECT_EQ(progressEnter(), "\n|    |->");
  EXPECT_EQ(progressLeave(true), "\n");
  EXPECT_EQ(progressLeave(true), "");
}

TEST_F(Progress, ALevelThatWasLeftIsForgotten) {
  progressEnter();
  progressBreak();
  progressLeave(true);
  progressEnter();
  EXPECT_EQ(progressLeave(true), "\n");
}

TEST_F(Progress, LeavingEndsALineThatIsStillOpen) {
  progressEnter();
  EXPECT_EQ(progressLeave(true), "\n");
  EXPECT_EQ(progressDepth(), 0);
}

TEST_F(Progress, LeavingAddsNothingToABrokenLine) {
  progressEnter();
  progressBreak();
  EXPECT_EQ(progressLeave(true), "");
  EXPECT_EQ(progressDepth(), 0);
  progressEnter();
  progressBreak();
  EXPECT_EQ(progressLeave(false), "");
}

// The line was broken once and opened again: only a closing leave keeps silent.
TEST_F(Progress, ClosingKeepsSilentWhereTheLevelHasBrokenItsLine) {
  progressEnter();
  progressBreak();
  progressEnter();  // clears nothing at level 1
  EXPECT_EQ(progressLeave(false), "\n");
  EXPECT_EQ(progressLeave(true), "");
}

TEST_F(Progress, LeavingAtDepthZeroStays) {
  EXPECT_EQ(progressLeave(true), "");
  EXPECT_EQ(progressDepth(), 0);
}

TEST_F(Progress, ResetForgetsEverything) {
  progressEnter();
  progressEnter();
  EXPECT_EQ(progressReset(), "\n");
  EXPECT_EQ(progressDepth(), 0);
  EXPECT_EQ(progressEnter(), "|->");
}

TEST_F(Progress, DepthIsLimited) {
  const auto descend = [](int levels) {
    for (int i = 0; i < levels; ++i) progressEnter();
  };
  EXPECT_FAILURE(descend(128), "Maximum thread depth reached");
  descend(127);
  EXPECT_EQ(progressDepth(), 127);
}

TEST_F(Progress, ScopePrintsAndCloses) {
  ::testing::internal::CaptureStdout();
  {
    const ProgressScope outer(true, "outer ...");
    const ProgressScope inner(true, "inner ...");
    EXPECT_EQ(progressDepth(), 2);
  }
  EXPECT_EQ(::testing::internal::GetCapturedStdout(), "|-> outer ...\n|    |-> inner ...\n");
  EXPECT_EQ(progressDepth(), 0);
}

TEST_F(Progress, InactiveScopeDoesNothing) {
  ::testing::internal::CaptureStdout();
  {
    const ProgressScope scope(false, "quiet");
    EXPECT_EQ(progressDepth(), 0);
  }
  EXPECT_EQ(::testing::internal::GetCapturedStdout(), "");
}

TEST_F(Progress, ScopeLeavesTheDepthAloneOnAThrow) {
  ::testing::internal::CaptureStdout();
  try {
    const ProgressScope scope(true, "step ...");
    throw std::runtime_error("x");
  } catch (const std::runtime_error&) {
  }
  EXPECT_EQ(::testing::internal::GetCapturedStdout(), "|-> step ...\n");
  EXPECT_EQ(progressDepth(), 1);
  setProgressDepth(0);
}

TEST_F(Progress, LineStandsAlone) {
  ::testing::internal::CaptureStdout();
  progressLine(true, "a line");
  progressLine(false, "no line");
  EXPECT_EQ(::testing::internal::GetCapturedStdout(), "|-> a line\n");
  EXPECT_EQ(progressDepth(), 0);
}

// Only the depth is put back behind an abandoned step: the marks of the deeper levels stay.
TEST_F(Progress, LineBehindAnAbandonedLevelEndsAllTheSame) {
  progressEnter();
  progressBreak();
  setProgressDepth(0);
  ::testing::internal::CaptureStdout();
  progressLine(true, "a line");
  EXPECT_EQ(::testing::internal::GetCapturedStdout(), "|-> a line\n");
}

TEST_F(Progress, NothingIsToldWhileMuted) {
  ::testing::internal::CaptureStdout();
  {
    const Mute outer;
    { const Mute inner; }
    const ProgressScope scope(true, "quiet ...");
    EXPECT_EQ(progressDepth(), 0);
    progressLine(true, "a line");
  }
  progressLine(true, "told");
  EXPECT_EQ(::testing::internal::GetCapturedStdout(), "|-> told\n");
  EXPECT_EQ(progressDepth(), 0);
}

TEST_F(Progress, AMuteEndsOnAThrow) {
  try {
    const Mute mute;
    throw std::runtime_error("x");
  } catch (const std::runtime_error&) {
  }
  ::testing::internal::CaptureStdout();
  progressLine(true, "told");
  EXPECT_EQ(::testing::internal::GetCapturedStdout(), "|-> told\n");
}

TEST_F(Progress, AScopeOpenedWhileMutedClosesNothing) {
  ::testing::internal::CaptureStdout();
  {
    const ProgressScope told(true, "told ...");
    auto mute = std::make_unique<Mute>();
    const ProgressScope quiet(true, "quiet ...");
    mute.reset();
    progressLine(true, "a line");
    EXPECT_EQ(progressDepth(), 1);
  }
  EXPECT_EQ(::testing::internal::GetCapturedStdout(), "|-> told ...\n|    |-> a line\n");
  EXPECT_EQ(progressDepth(), 0);
}

TEST_F(Progress, AScopeThatWasToldClosesWhileMuted) {
  ::testing::internal::CaptureStdout();
  auto told = std::make_unique<ProgressScope>(true, "told ...");
  {
    const Mute mute;
    told.reset();
  }
  EXPECT_EQ(progressDepth(), 0);
  progressLine(true, "a line");
  EXPECT_EQ(::testing::internal::GetCapturedStdout(), "|-> told ...\n|-> a line\n");
}

TEST_F(Progress, FailureEndsWithTheTextAndStatusOne) {
  EXPECT_FAILURE(fail("some text"), "some text");
}

TEST_F(Progress, WarningGoesOn) {
  ::testing::internal::CaptureStderr();
  warn("careful");
  EXPECT_EQ(::testing::internal::GetCapturedStderr(), "*** careful\n");
}

}  // namespace
}  // namespace latbox
