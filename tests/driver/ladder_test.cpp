#include <gtest/gtest.h>

#include <atomic>
#include <string>
#include <thread>

#include "driver/command_line.h"
#include "driver/ladder.h"
#include "driver/run_state.h"
#include "driver/ylattice.h"
#include "lib/exceptions.h"
#include "lib/progress.h"
#include "small_program.h"
#include "support/rows.h"

namespace latbox {
namespace {

using latbox::testing::SmallRun;

template <class T>
constexpr bool isStandard = std::is_same_v<T, dbl_t>;

// A step that goes half its way in standard precision before it loses precision.
struct FailsInStandard {
  template <class T, class F>
  void operator()(Lattice<T, F>& lattice) const {
    lattice.R = lattice.R * T(3);
    lattice.swapBase(1, 2, false);
    ++statisticsOf<T>().deepInsertions;
    if constexpr (isStandard<T>) {
      lattice.R = T(-1);
      throw PrecisionException("lost");
    }
    testing::rows(lattice).B[1][1] += T(1);
  }
};

template <class A, class B>
void expectSameMathematics(const A& a, const B& b) {
  EXPECT_EQ(a.R, b.R);
  EXPECT_EQ(a.B, b.B);
  EXPECT_EQ(a.B_save, b.B_save);
  EXPECT_EQ(a.c, b.c);
  EXPECT_EQ(a.rank, b.rank);
  EXPECT_EQ(a.dim, b.dim);
  EXPECT_EQ(a.lbnd, b.lbnd);
  EXPECT_EQ(a.interval_tt, b.interval_tt);
}

TEST(OneStep, RepeatsExactlyWhatFailed) {
  SmallRun failing, exact;
  oneStep(failing.y, FailsInStandard());
  EXPECT_FALSE(failing.y.extendedActive);
  switchToExtended(exact.y);
  FailsInStandard()(exact.y.extended);
  useStandardPrecision(exact.y);
  expectSameMathematics(failing.y.standard, exact.y.standard);
  EXPECT_EQ(failing.y.standard.R, 12);
}

TEST(OneStep, FatalLossIsRepeatedToo) {
  SmallRun run;
  int calls = 0;
  oneStep(run.y, [&calls]<class T, class F>(Lattice<T, F>&) {
    ++calls;
    if (isStandard<T>) throw FatalPrecisionException();
  });
  EXPECT_EQ(calls, 2);
  EXPECT_FALSE(run.y.extendedActive);
}

TEST(OneStep, SuccessInStandardIsAll) {
  SmallRun run;
  int calls = 0;
  oneStep(run.y, [&calls]<class T, class F>(Lattice<T, F>& lattice) {
    ++calls;
    EXPECT_TRUE(isStandard<T>);
    lattice.R = T(5);
  });
  EXPECT_EQ(calls, 1);
  EXPECT_EQ(run.y.standard.R, 5);
}

TEST(OneStep, ComesBackAfterEachExtendedStep) {
  SmallRun run;
  switchToExtended(run.y);
  oneStep(run.y, []<class T, class F>(Lattice<T, F>& lattice) {
    EXPECT_FALSE(isStandard<T>);
    lattice.R = T(6);
  });
  EXPECT_FALSE(run.y.extendedActive);
  EXPECT_EQ(run.y.standard.R, 6);
}

TEST(OneStep, SecondLossEndsTheRun) {
  SmallRun run;
  EXPECT_THROW(oneStep(run.y, [](auto&) { throw PrecisionException("twice"); }), PrecisionException);
  EXPECT_TRUE(run.y.extendedActive);
}

TEST(OneStep, RestartPasses) {
  SmallRun run;
  EXPECT_THROW(oneStep(run.y,
                       [](auto& lattice) {
                         lattice.R = lattice.R + lattice.R;
                         throw RestartException();
                       }),
               RestartException);
  EXPECT_EQ(run.y.standard.R, 8);
  EXPECT_FALSE(run.y.extendedActive);
}

TEST(OneStep, PutsTheDepthBack) {
  SmallRun run;
  const int before = progressDepth();
  oneStep(run.y, []<class T, class F>(Lattice<T, F>&) {
    if (!isStandard<T>) return;
    progressEnter();
    progressEnter();
    throw PrecisionException();
  });
  EXPECT_EQ(progressDepth(), before);
}

// A command that arrives while a step runs must not be undone with the step.
TEST(OneStep, KeepsWhatTheConsoleWroteMeanwhile) {
  SmallRun run;
  oneStep(run.y, [&run]<class T, class F>(Lattice<T, F>&) {
    if (!isStandard<T>) return;
    setRunState(run.y, RUN_STOPPED);
    run.y.standard.params.beta.set(33);
    throw PrecisionException();
  });
  EXPECT_EQ(runState(run.y), RUN_STOPPED);
  EXPECT_EQ(run.y.standard.params.beta.get(), 33);
}

TEST(OneStep, StatisticsOfAFailedStepStay) {
  SmallRun run;
  const long long before = statisticsStandard().deepInsertions;
  oneStep(run.y, FailsInStandard());
  EXPECT_EQ(statisticsStandard().deepInsertions, before + 2);
}

TEST(SwitchToExtended, TakesEverythingAlong) {
  SmallRun run;
  run.y.standard.params.beta.set(7);
  run.y.standard.mainVars[MainMutexVariable::runState].set("stopped");
  statisticsStandard().targetImprovements = 99;
  switchToExtended(run.y);
  EXPECT_TRUE(run.y.extendedActive);
  EXPECT_EQ(run.y.extended.R, QQ(4));
  EXPECT_EQ(run.y.extended.B, Matrix<QQ>("[[-8 -4 -4 1]\n[4 2 0 0]\n[4 0 2 0]]"));
  EXPECT_EQ(run.y.extended.params.beta.get(), 7);
  EXPECT_EQ(run.y.extended.mainVars[MainMutexVariable::runState].get(), "stopped");
  EXPECT_EQ(run.y.extended.optFile, run.folder.path("small.opt"));
  EXPECT_EQ(run.y.extended.program.n(), 2);
  EXPECT_EQ(statisticsExtended().targetImprovements, 99);
  statisticsStandard() = Statistics();
}

TEST(UseStandardPrecision, StaysForAThird) {
  SmallRun run;
  switchToExtended(run.y);
  run.y.extended.R = QQ("1/3");
  try {
    useStandardPrecision(run.y);
    FAIL() << "1/3 has no exact standard form";
  } catch (const PrecisionException& exception) {
    EXPECT_STREQ(exception.what(), "Precision lost during conversion");
  }
  EXPECT_TRUE(run.y.extendedActive);
  oneStep(run.y, [](auto&) {});
  EXPECT_TRUE(run.y.extendedActive);
  EXPECT_EQ(run.y.extended.R, QQ("1/3"));
  oneStep(run.y, []<class T, class F>(Lattice<T, F>& lattice) { lattice.R = T(2); });
  EXPECT_FALSE(run.y.extendedActive);
  EXPECT_EQ(run.y.standard.R, 2);
}

TEST(UseStandardPrecision, StaysForAThirdInAnyExactMember) {
  using Spoil = void (*)(Lattice<QQ, dbl_t>&);
  const Spoil spoilers[] = {
      [](Lattice<QQ, dbl_t>& lattice) { testing::rows(lattice).B[2][1] = QQ("1/3"); },
      [](Lattice<QQ, dbl_t>& lattice) { testing::rows(lattice).B_save[2][1] = QQ("1/3"); },
      [](Lattice<QQ, dbl_t>& lattice) { lattice.c[1] = QQ("4/3"); },
      [](Lattice<QQ, dbl_t>& lattice) { lattice.lbnd[1] = QQ("1/3"); },
      [](Lattice<QQ, dbl_t>& lattice) { lattice.program.Au[1][1] = QQ("1/3"); },
      [](Lattice<QQ, dbl_t>& lattice) { lattice.Au[1][1] = QQ("1/3"); },
      [](Lattice<QQ, dbl_t>& lattice) { lattice.params.snorm.set(QQ("1/3")); },
      [](Lattice<QQ, dbl_t>& lattice) { lattice.scaleFactor[1] = QQ("1/3"); },
  };
  for (const Spoil spoil : spoilers) {
    SmallRun run;
    switchToExtended(run.y);
    spoil(run.y.extended);
    EXPECT_THROW(useStandardPrecision(run.y), PrecisionException) << "member " << &spoil - spoilers;
    EXPECT_TRUE(run.y.extendedActive);
  }
}

// A find that the exact side would not show as it is. The side that is live knows nothing of the attempt.
TEST(SwitchToExtended, AFailureLeavesStandardPrecisionLive) {
  SmallRun run;
  Star<dbl_t> star{Vector<dbl_t>("[ 1 1 ]")};
  star.targetNorm = 1234567890123456789.0L;
  run.y.standard.program.stars.append(star);
  const long long before = statisticsExtended().deepInsertions;
  statisticsStandard().deepInsertions = before + 5;
  try {
    oneStep(run.y, [](auto&) { throw PrecisionException("lost"); });
    FAIL() << "no exception";
  } catch (const PrecisionException& exception) {
    EXPECT_STREQ(exception.what(), "Precision lost during conversion");
  }
  EXPECT_FALSE(run.y.extendedActive);
  EXPECT_EQ(statisticsExtended().deepInsertions, before);
  statisticsStandard() = Statistics();
}

TEST(Ladder, PrintsItsLinesAboveVerb1) {
  SmallRun run;
  for (const long verb : {0L, 1L, 2L}) {
    run.y.standard.params.verb.set(verb);
    ::testing::internal::CaptureStdout();
    switchToExtended(run.y);
    switchToExtended(run.y);
    useStandardPrecision(run.y);
    useStandardPrecision(run.y);
    EXPECT_EQ(::testing::internal::GetCapturedStdout(),
              verb < 2 ? "" : "|-> Switching to extended precision\n|-> Using standard precision\n");
  }
}

// The console's thread sets a value while the solver's changes sides: it must not be left behind.
TEST(Ladder, ASettingThatComesInTheMiddleOfAConversionStays) {
  YLattice<dbl_t> y;
  y.standard.resizeLattice(60, 60);
  for (long round = 1; round <= 200; ++round) {
    std::atomic<bool> begun{false};
    std::thread console([&] {
      while (!begun) std::this_thread::yield();
      ASSERT_TRUE(setParameter(y, "rtime", std::to_string(round), OnBadNumber::zero));
    });
    begun = true;
    if (y.extendedActive)
      useStandardPrecision(y);
    else
      switchToExtended(y);
    console.join();
    ASSERT_EQ(y.live([](auto& lattice) { return lattice.params.rtime.get(); }), round);
  }
}

TEST(RunState, ReachesAllSides) {
  YLattice<dbl_t> y;
  setRunState(y, "running");
  EXPECT_EQ(y.standard.mainVars[MainMutexVariable::runState].get(), "running");
  EXPECT_EQ(y.standardBackup.mainVars[MainMutexVariable::runState].get(), "running");
  EXPECT_EQ(y.extended.mainVars[MainMutexVariable::runState].get(), "running");
}

}  // namespace
}  // namespace latbox
