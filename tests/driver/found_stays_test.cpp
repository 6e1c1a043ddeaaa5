// What a step had found that is taken back: it is judged again behind the exact repetition, and until then
// nothing is written or told.
#include <gtest/gtest.h>

#include <csignal>
#include <functional>

#include "driver/ladder.h"
#include "driver/reinsert.h"
#include "driver/report.h"
#include "driver/run_state.h"
#include "lib/exceptions.h"
#include "lib/scope_value.h"
#include "program/sol_file.h"
#include "small_program.h"

namespace latbox {
namespace {

using latbox::testing::SmallRun;

template <class T>
constexpr bool isStandard = std::is_same_v<T, dbl_t>;

// x1 - x2 is to be minimised; and without a target, where the second variable has no upper bound.
constexpr const char* TARGET_PROGRAM =
    "[ -inf ] [ [ 1 -1 ] ] [ ] [ ] [ [ 1 1 ] ] [ 1 ] [ 3 ] [ 0 0 ] [ 0 0 ] [ 4 4 ]";
constexpr const char* OPEN_PROGRAM = "[ ] [ ] [ ] [ ] [ [ 1 1 ] ] [ 1 ] [ 3 ] [ 0 0 ] [ 0 0 ] [ 4 inf ]";

// The point as a candidate that was found after so many seconds.
template <class T, class F>
unsigned offer(Lattice<T, F>& lattice, const char* point, long seconds) {
  Vector<T> v;
  lattice.opt2lat(Vector<T>(point), v, false);
  return lattice.checkSolution(v, foundAfter(seconds), false);
}

// A run that writes, and ends at no number of solutions.
class FoundStays : public ::testing::Test {
 protected:
  FoundStays() { statisticsStandard() = statisticsExtended() = Statistics(); }
  ~FoundStays() override { statisticsStandard() = statisticsExtended() = Statistics(); }

  static void prepare(SmallRun& run) {
    auto& l = run.y.standard;
    l.writeEnabled = l.finishEnabled = true;
    l.params.sol.set(0);
    l.params.iters.set(-1);
    statisticsStandard() = statisticsExtended() = Statistics();
  }
  // The points of the .sol file.
  static std::string written(const SmallRun& run) {
    if (!run.folder.has("small.sol")) return "";
    std::istringstream lines(run.folder.read("small.sol"));
    std::string points, line;
    while (std::getline(lines, line)) points += line.substr(0, line.find(" |"));
    return points;
  }
  static std::string standardSolutions(const SmallRun& run) {
    std::ostringstream text;
    const auto& l = run.y.standard;
    for (long i = 1; i <= l.solutions.MN; ++i) {
      Vector<dbl_t> x;
      EXPECT_EQ(l.lat2opt(l.solutions[i], x, false), 1);
      text << x << '@' << l.solutions[i].secondsUntilDiscovered << ' ';
    }
    return text.str();
  }
};

TEST_F(FoundStays, WhereTheRepetitionFindsNothing) {
  SmallRun run;
  prepare(run);
  oneStep(run.y, []<class T, class F>(Lattice<T, F>& l) {
    if (!isStandard<T>) return;
    EXPECT_EQ(offer(l, "[ 1 1 ]", 17) & CHECK_NEW, CHECK_NEW);
    throw PrecisionException("lost");
  });
  EXPECT_FALSE(run.y.extendedActive);
  EXPECT_EQ(standardSolutions(run), "[ 1 1 ]@17 ");
  EXPECT_EQ(statisticsStandard().solutionsFound, 1);
  EXPECT_EQ(written(run), "[ 1 1 ]");
  EXPECT_NE(publishedSummary().text.find("Solutions found: 1\n"), std::string::npos);
  EXPECT_TRUE(run.y.extended.search.pending.empty());
  EXPECT_FALSE(run.y.output->held);
}

// The repetition stands where the failed step stood, so that it does not know what that one had found; and it
// writes and tells nothing, for it knows less than the file, until it finds something itself: it may go on
// for hours then, and all of both has to be told.
TEST_F(FoundStays, TheRepetitionStartsWithoutItAndTellsAllWithItsFirstFind) {
  SmallRun run;
  prepare(run);
  std::string inFile, summary;
  oneStep(run.y, [&]<class T, class F>(Lattice<T, F>& l) {
    if (isStandard<T>) {
      offer(l, "[ 1 1 ]", 17);
      inFile = run.folder.read("small.sol");
      summary = publishedSummary().text;
      throw PrecisionException("lost");
    }
    EXPECT_EQ(l.solutions.MN, 0);
    EXPECT_EQ(l.program.stars.MN, 0);
    EXPECT_EQ(statisticsExtended().solutionsFound, 0);
    writeSolFile(l, false);
    publishSummary(l);
    EXPECT_EQ(run.folder.read("small.sol"), inFile);
    EXPECT_EQ(publishedSummary().text, summary);
    EXPECT_EQ(offer(l, "[ 2 1 ]", 18) & CHECK_NEW, CHECK_NEW);
    EXPECT_EQ(written(run), "[ 1 1 ][ 2 1 ]");
    EXPECT_NE(publishedSummary().text.find("Solutions found: 2\n"), std::string::npos);
  });
  EXPECT_EQ(standardSolutions(run), "[ 2 1 ]@18 [ 1 1 ]@17 ");
  EXPECT_EQ(written(run), "[ 1 1 ][ 2 1 ]");
  EXPECT_EQ(statisticsStandard().solutionsFound, 2);
  EXPECT_NE(publishedSummary().text.find("Solutions found: 2\n"), std::string::npos);
}

TEST_F(FoundStays, WhatTheRepetitionFindsAgainCountsOnce) {
  SmallRun run;
  prepare(run);
  oneStep(run.y, []<class T, class F>(Lattice<T, F>& l) {
    offer(l, "[ 1 1 ]", isStandard<T> ? 17 : 18);
    if (isStandard<T>) throw PrecisionException("lost");
  });
  EXPECT_EQ(standardSolutions(run), "[ 1 1 ]@18 ");
  EXPECT_EQ(statisticsStandard().solutionsFound, 1);
  EXPECT_EQ(written(run), "[ 1 1 ]");
}

// Other statistics stay: they count what was done, not what is known.
TEST_F(FoundStays, OnlyTheCountsOfFindsGoBack) {
  SmallRun run;
  prepare(run);
  statisticsStandard().solutionsFound = 4;
  oneStep(run.y, []<class T, class F>(Lattice<T, F>& l) {
    if (!isStandard<T>) {
      EXPECT_EQ(statisticsExtended().solutionsFound, 4);
      EXPECT_EQ(statisticsExtended().targetImprovements, 0);
      EXPECT_EQ(statisticsExtended().inhomogeneousImprovements, 0);
      EXPECT_EQ(statisticsExtended().samplingCollections, 3);
      return;
    }
    statisticsStandard().samplingCollections = 3;
    statisticsStandard().targetImprovements = 2;
    statisticsStandard().inhomogeneousImprovements = 1;
    offer(l, "[ 1 1 ]", 17);
    throw PrecisionException("lost");
  });
  EXPECT_EQ(statisticsStandard().samplingCollections, 3);
  EXPECT_EQ(statisticsStandard().targetImprovements, 0);
  EXPECT_EQ(statisticsStandard().solutionsFound, 5);
}

TEST_F(FoundStays, ABetterTarget) {
  SmallRun run(TARGET_PROGRAM);
  prepare(run);
  {
    const ScopeValue unfinished(run.y.standard.finishEnabled, false);
    offer(run.y.standard, "[ 2 1 ]", 5);
  }
  ASSERT_EQ(run.y.standard.bestSlack.targetNorm, 1);
  const dbl_t bound = run.y.standard.program.rtu();
  try {
    oneStep(run.y, [bound]<class T, class F>(Lattice<T, F>& l) {
      if (isStandard<T>) {
        const ScopeValue unfinished(l.finishEnabled, false);
        EXPECT_EQ(offer(l, "[ 1 2 ]", 17) & CHECK_BOUND, CHECK_BOUND);
        throw PrecisionException("lost");
      }
      EXPECT_EQ(l.bestSlack.targetNorm, T(1));
      EXPECT_EQ(l.program.rtu(), T(bound));
      EXPECT_EQ(statisticsExtended().targetImprovements, 1);
    });
    FAIL() << "the improvement regenerates the lattice";
  } catch (const RestartException&) {
  }
  oneStep(run.y, [](auto&) {});
  const auto& l = run.y.standard;
  EXPECT_EQ(l.bestSlack.targetNorm, -1);
  EXPECT_EQ(l.bestSlack.secondsUntilDiscovered, 17);
  EXPECT_EQ(statisticsStandard().targetImprovements, 2);
  EXPECT_LT(l.program.rtu(), bound);
  EXPECT_EQ(written(run).substr(0, 7), "[ 1 2 ]");
  EXPECT_NE(publishedSummary().text.find("T(bestTarget) = -1,"), std::string::npos);
}

// One find of the failed step that is worse than what the repetition found: it betters nothing any more.
TEST_F(FoundStays, TheRepetitionsBetterTargetStays) {
  SmallRun run(TARGET_PROGRAM);
  prepare(run);
  EXPECT_THROW(oneStep(run.y,
                       []<class T, class F>(Lattice<T, F>& l) {
                         {
                           const ScopeValue unfinished(l.finishEnabled, false);
                           offer(l, isStandard<T> ? "[ 2 1 ]" : "[ 0 3 ]", isStandard<T> ? 17 : 18);
                         }
                         if (isStandard<T>) throw PrecisionException("lost");
                         restartHandling(l, false);
                       }),
               RestartException);
  oneStep(run.y, [](auto&) {});
  EXPECT_EQ(run.y.standard.bestSlack.targetNorm, -3);
  EXPECT_EQ(run.y.standard.bestSlack.secondsUntilDiscovered, 18);
  EXPECT_EQ(statisticsStandard().targetImprovements, 1);
  EXPECT_EQ(written(run).substr(0, 7), "[ 0 3 ]");
}

// The bound is where it was while the repetition runs, and moves once more when the find is judged.
TEST_F(FoundStays, ABoundMovesOnceMore) {
  SmallRun run(OPEN_PROGRAM);
  prepare(run);
  const dbl_t bound = run.y.standard.program.rx[2];
  EXPECT_THROW(oneStep(run.y,
                       [bound]<class T, class F>(Lattice<T, F>& l) {
                         if (!isStandard<T>) {
                           EXPECT_EQ(l.program.rx[2], T(bound));
                           EXPECT_EQ(l.solutions.MN, 0);
                           return;
                         }
                         const ScopeValue unfinished(l.finishEnabled, false);
                         EXPECT_EQ(offer(l, "[ 1 2 ]", 17) & CHECK_BOUND, CHECK_BOUND);
                         EXPECT_NE(l.program.rx[2], T(bound));
                         throw PrecisionException("lost");
                       }),
               RestartException);
  oneStep(run.y, [](auto&) {});
  EXPECT_EQ(run.y.standard.program.rx[2], 2);
  EXPECT_EQ(run.y.standard.generatedRx[2], 2);
  EXPECT_EQ(standardSolutions(run), "[ 1 2 ]@17 ");
  EXPECT_EQ(statisticsStandard().solutionsFound, 1);
  EXPECT_EQ(written(run), "[ 1 2 ]");
}

// The regeneration must not come before the judgement: what waits would be judged in a lattice of which the
// bound tells otherwise.
TEST_F(FoundStays, WhereTheRepetitionRegeneratesTheLattice) {
  SmallRun run;
  prepare(run);
  EXPECT_THROW(oneStep(run.y,
                       []<class T, class F>(Lattice<T, F>& l) {
                         if (!isStandard<T>) restartHandling(l, false);
                         offer(l, "[ 1 1 ]", 17);
                         throw PrecisionException("lost");
                       }),
               RestartException);
  EXPECT_FALSE(run.y.output->held);
  EXPECT_TRUE(run.y.extended.search.pending.empty());
  oneStep(run.y, [](auto&) {});
  EXPECT_EQ(standardSolutions(run), "[ 1 1 ]@17 ");
  EXPECT_EQ(statisticsStandard().solutionsFound, 1);
  EXPECT_EQ(written(run), "[ 1 1 ]");
  EXPECT_NE(publishedSummary().text.find("Solutions found: 1\n"), std::string::npos);
}

// Two steps that fail one after the other, the second behind a first whose find stands.
TEST_F(FoundStays, OfTwoStepsBoth) {
  SmallRun run;
  prepare(run);
  for (const char* point : {"[ 1 1 ]", "[ 2 1 ]"})
    oneStep(run.y, [point]<class T, class F>(Lattice<T, F>& l) {
      if (!isStandard<T>) return;
      offer(l, point, 17);
      throw PrecisionException("lost");
    });
  EXPECT_EQ(standardSolutions(run), "[ 1 1 ]@17 [ 2 1 ]@17 ");
  EXPECT_EQ(statisticsStandard().solutionsFound, 2);
  EXPECT_EQ(written(run), "[ 1 1 ][ 2 1 ]");
}

// Nothing waits behind a step that found nothing, so that its repetition writes as ever.
TEST_F(FoundStays, AStepWithoutAFindHoldsNothing) {
  SmallRun run;
  prepare(run);
  offer(run.y.standard, "[ 2 1 ]", 3);
  oneStep(run.y, [&run]<class T, class F>(Lattice<T, F>& l) {
    if (isStandard<T>) throw PrecisionException("lost");
    offer(l, "[ 1 1 ]", 17);
    EXPECT_EQ(written(run), "[ 2 1 ][ 1 1 ]");
  });
  EXPECT_EQ(standardSolutions(run), "[ 2 1 ]@3 [ 1 1 ]@17 ");
  EXPECT_EQ(statisticsStandard().solutionsFound, 2);
}

// A step of the past is no business of the one that fails.
TEST_F(FoundStays, FindsOfAStepThatWentWellAreNotJudgedAgain) {
  SmallRun run;
  prepare(run);
  oneStep(run.y, [](auto& l) { offer(l, "[ 2 1 ]", 3); });
  oneStep(run.y, []<class T, class F>(Lattice<T, F>&) {
    if (isStandard<T>) throw PrecisionException("lost");
  });
  EXPECT_EQ(standardSolutions(run), "[ 2 1 ]@3 ");
  oneStep(run.y, []<class T, class F>(Lattice<T, F>& l) {
    if (!isStandard<T>) {
      l.solutions.clear();
      return;
    }
    throw PrecisionException("lost");
  });
  EXPECT_EQ(standardSolutions(run), "");
}

// With one solution wanted, the find that is judged again ends the run; under a front end it parks it.
TEST_F(FoundStays, TheLimitIsReachedByTheFindThatIsJudgedAgain) {
  SmallRun run;
  prepare(run);
  run.y.standard.params.sol.set(1);
  run.y.standard.params.gui.set(true);
  ::testing::internal::CaptureStdout();
  oneStep(run.y, []<class T, class F>(Lattice<T, F>& l) {
    if (!isStandard<T>) return;
    const ScopeValue unfinished(l.finishEnabled, false);
    EXPECT_EQ(offer(l, "[ 1 1 ]", 17) & CHECK_LIMIT, CHECK_LIMIT);
    throw PrecisionException("lost");
  });
  EXPECT_NE(::testing::internal::GetCapturedStdout().find("\nSolutions found: 1\n"), std::string::npos);
  EXPECT_EQ(runState(run.y), RUN_STOPPED);
  EXPECT_EQ(standardSolutions(run), "[ 1 1 ]@17 ");
  EXPECT_EQ(written(run), "[ 1 1 ]");
}

// The exact step moves a bound and would go on with the new lattice, but the find that waited is the last one
// wanted.
TEST_F(FoundStays, TheLimitIsReachedOnTheWayToARegeneration) {
  SmallRun run(OPEN_PROGRAM);
  prepare(run);
  run.y.standard.params.sol.set(2);
  run.y.standard.params.gui.set(true);
  ::testing::internal::CaptureStdout();
  oneStep(run.y, []<class T, class F>(Lattice<T, F>& l) {
    const ScopeValue unfinished(l.finishEnabled, false);
    offer(l, isStandard<T> ? "[ 1 1 ]" : "[ 1 2 ]", 17);
    if (isStandard<T>) throw PrecisionException("lost");
    l.finishEnabled = true;
    restartHandling(l, false);
  });
  ::testing::internal::GetCapturedStdout();
  EXPECT_EQ(runState(run.y), RUN_STOPPED);
  EXPECT_EQ(run.y.standard.solutions.MN, 2);
}

// A line that stood in the file stays, also where the repetition has found something better before.
TEST_F(FoundStays, WhatIsNoLongerTheBestStaysInTheFile) {
  SmallRun run(TARGET_PROGRAM);
  prepare(run);
  try {
    oneStep(run.y, []<class T, class F>(Lattice<T, F>& l) {
      const ScopeValue unfinished(l.finishEnabled, false);
      offer(l, isStandard<T> ? "[ 2 1 ]" : "[ 0 3 ]", 17);
      if (isStandard<T>) throw PrecisionException("lost");
    });
  } catch (const RestartException&) {
  }
  oneStep(run.y, [](auto&) {});
  run.y.standard.output->sol = {};
  writeSolFile(run.y.standard, false);
  EXPECT_EQ(written(run), "[ 0 3 ][ 2 1 ]");
}

// The exact journal is nobody's matter: it must not grow for a week.
TEST_F(FoundStays, TheExactSideKeepsNoJournal) {
  SmallRun run;
  prepare(run);
  switchToExtended(run.y);
  oneStep(run.y, [](auto& l) { offer(l, "[ 1 1 ]", 17); });
  EXPECT_TRUE(run.y.extended.search.journal.empty());
}

// Loses precision as soon as a solution is recorded, and finds another one before.
class LosesPrecision : public SearchEvents<dbl_t, dbl_t> {
 public:
  explicit LosesPrecision(SearchEvents<dbl_t, dbl_t>& next) : next_(next) {}
  void found(Lattice<dbl_t, dbl_t>& l) override {
    next_.found(l);
    if (++finds == 1) offer(l, "[ 2 1 ]", 17);
    throw PrecisionException("lost");
  }
  void boundMoved(Lattice<dbl_t, dbl_t>& l) override { next_.boundMoved(l); }
  void limitReached(Lattice<dbl_t, dbl_t>& l) override { next_.limitReached(l); }
  int finds = 0;

 private:
  SearchEvents<dbl_t, dbl_t>& next_;
};

// Re-insertion has a ladder of its own. The remembered vector, (1, 1), is twice the first row and three times
// the second: such a combination is judged on its way into the basis.
TEST_F(FoundStays, InTheLadderOfReinsertion) {
  SmallRun run;
  prepare(run);
  auto& l = run.y.standard;
  l.enterBasis(Matrix<dbl_t>("[[12 2 -4 2]\n[-8 -2 2 -1]\n[4 0 2 0]]"));
  l.bestInhomogeneous = Vector<dbl_t>("[ 0 -2 -2 1 ]");
  statisticsStandard().inhomogeneousImprovements = 1;
  LosesPrecision events(*l.events);
  l.events = &events;
  reinsert(run.y);
  EXPECT_EQ(events.finds, 2);
  EXPECT_FALSE(run.y.extendedActive);
  ASSERT_EQ(l.solutions.MN, 2);
  EXPECT_EQ(static_cast<const Vector<dbl_t>&>(l.solutions[1]), Vector<dbl_t>("[ 0 -2 -2 1 ]"));
  EXPECT_EQ(static_cast<const Vector<dbl_t>&>(l.solutions[2]), Vector<dbl_t>("[ 4 0 -2 1 ]"));
  EXPECT_EQ(l.solutions[2].secondsUntilDiscovered, 17);
  EXPECT_EQ(statisticsStandard().solutionsFound, 2);
  EXPECT_EQ(l.B[1], Vector<dbl_t>("[ 0 -2 -2 1 ]"));
  EXPECT_NE(written(run).find("[ 2 1 ]"), std::string::npos);
  EXPECT_FALSE(run.y.output->held);
}

}  // namespace
}  // namespace latbox
