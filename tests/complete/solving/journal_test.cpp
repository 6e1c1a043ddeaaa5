#include "complete/solving/journal.h"

#include "journal_run.h"

namespace latbox::complete {
namespace {

using testing::Finder;
using testing::rangeOf;

// sum = value within 0..3, six variables.
IntegerProgram programOf(long sum) {
  IntegerProgram program;
  program.box.assign(6, rangeOf(0, 3));
  program.rows.push_back(testing::rowOf({1, 1, 1, 1, 1, 1}, sum, sum));
  return program;
}

// Lists points, up to a number of them in this run.
class Lister : public Visitor {
 public:
  Next visit(const IntegerVector& z) override {
    if (isInterrupted()) return Next::REFUSED;
    points.insert(z);
    ++now;
    return isInterrupted() ? Next::STOP : Next::GO_ON;
  }
  bool isInterrupted() const override { return most != 0 && now >= most; }

  std::multiset<IntegerVector> points;
  std::size_t now = 0;
  std::size_t most = 0;
};

struct TestRun : testing::JournalRun {
  using JournalRun::JournalRun;

  std::optional<bool> search(long sum, Visitor& visitor, unsigned long trial = 0) {
    SearchSettings settings;
    settings.trial = trial;
    const IntegerProgram program = programOf(sum);
    const auto prepare = [&](const IntegerMatrix& basis) {
      ++prepared;
      auto lattice = boxLatticeOf(program);
      if (lattice && !basis.empty()) takeBasis(*lattice, basis);
      return lattice;
    };
    return journal.searchThrough(keyOf(program), prepare, visitor, settings);
  }

  int prepared = 0;
};

std::size_t pointsOf(long sum) {
  TestRun run;
  Lister lister;
  EXPECT_EQ(run.search(sum, lister), true);
  return lister.points.size();
}

TEST(Journal, TakesWhatIsDoneInsteadOfSearching) {
  TestRun first;
  Finder finder;
  EXPECT_EQ(first.search(100, finder), std::nullopt);
  EXPECT_EQ(first.search(5, finder), false);
  Lister lister;
  EXPECT_EQ(first.search(2, lister), true);
  first.journal.save();

  TestRun second(first.saved);
  Finder again;
  EXPECT_EQ(second.search(100, again), std::nullopt);
  EXPECT_EQ(again.visits, 0);
  EXPECT_EQ(second.search(5, again), false);
  EXPECT_EQ(again.point, finder.point);
  EXPECT_EQ(again.visits, 1);
  EXPECT_EQ(second.search(2, lister), true);
  EXPECT_EQ(second.prepared, 0);
  EXPECT_EQ(second.lives, 0);
  EXPECT_EQ(second.control.nodes, 0u);
  // Behind that it searches.
  EXPECT_EQ(second.search(3, again), false);
  EXPECT_EQ(second.lives, 1);
  EXPECT_EQ(second.rewinds, 0);
}

TEST(Journal, GoesOnInTheSearchThatWasOpen) {
  Checkpoint past;
  std::multiset<IntegerVector> points;
  int runs = 0;
  for (bool complete = false; !complete; ++runs) {
    TestRun run(past);
    Lister lister;
    lister.most = 7;
    complete = *run.search(9, lister);
    EXPECT_EQ(run.rewinds, 0);
    points.insert(lister.points.begin(), lister.points.end());
    run.journal.save();
    past = run.saved;
  }
  EXPECT_GT(runs, 10);
  EXPECT_EQ(points.size(), pointsOf(9));
  EXPECT_EQ(std::set<IntegerVector>(points.begin(), points.end()).size(), points.size());
}

// What it had was written over with nothing when it was stopped before it had come to the search.
TEST(Journal, ARunThatEndsAtOnceLosesNothing) {
  TestRun first;
  Finder finder;
  first.search(5, finder);
  Lister lister;
  lister.most = 7;
  EXPECT_EQ(first.search(9, lister), false);
  first.journal.save();

  TestRun second(first.saved);
  second.journal.save();
  EXPECT_EQ(textOf(second.saved), textOf(first.saved));
  second.search(5, finder);
  second.journal.save();
  EXPECT_EQ(textOf(second.saved), textOf(first.saved));
}

TEST(Journal, AnotherWayGivesUpWhatWasFound) {
  TestRun first;
  Finder finder;
  first.search(5, finder);
  Lister lister;
  lister.most = 7;
  first.search(9, lister);
  first.journal.save();
  // Another search at the place of the first one, and of the open one.
  for (const long sum : {6, 5}) {
    TestRun second(first.saved);
    second.file = {8, 800};
    Finder other;
    EXPECT_EQ(second.search(sum, other), false);
    Lister all;
    EXPECT_EQ(second.search(10, all), true);
    EXPECT_EQ(all.points.size(), pointsOf(10));
    EXPECT_EQ(second.rewinds, 1);
    EXPECT_EQ(second.file.count, 0u);
    second.journal.save();
    EXPECT_EQ(second.saved.searches.size(), 2u);
    EXPECT_FALSE(second.saved.open);
  }
}

TEST(Journal, AnotherLatticeIsSearchedFromItsBeginning) {
  TestRun first;
  first.file = {3, 30};
  Lister lister;
  lister.most = 7;
  first.search(9, lister);
  first.file = {10, 100};
  first.journal.save();
  Checkpoint past = first.saved;
  past.open->lattice = "another";
  TestRun second(past);
  second.file = {10, 100};
  Lister all;
  EXPECT_EQ(second.search(9, all), true);
  EXPECT_EQ(all.points.size(), pointsOf(9));
  EXPECT_EQ(second.file.count, 3u);
}

// Else its point would be found again, or another one in its place.
TEST(Journal, AFindThatComesWithTheStopIsWrittenDown) {
  class StoppingFinder : public Finder {
   public:
    explicit StoppingFinder(SearchControl& control) : control_(control) {}
    Next visit(const IntegerVector& z) override {
      control_.stop = true;
      return Finder::visit(z);
    }

   private:
    SearchControl& control_;
  };
  TestRun first;
  StoppingFinder finder(first.control);
  EXPECT_EQ(first.search(5, finder), false);
  first.journal.save();
  ASSERT_EQ(first.saved.searches.size(), 1u);
  EXPECT_EQ(first.saved.searches[0].end, SearchEnd::STOPPED);
  EXPECT_EQ(first.saved.searches[0].point, finder.point);
  EXPECT_FALSE(first.saved.open);
}

TEST(Journal, AnInterruptedTrialIsBegunAnew) {
  TestRun first;
  Lister lister;
  lister.most = 7;
  EXPECT_EQ(first.search(9, lister, 1000), false);
  first.journal.save();
  EXPECT_TRUE(first.saved.searches.empty());
  EXPECT_FALSE(first.saved.open);
}

TEST(Journal, GoesOnWithThePartsThatAreNotMade) {
  Checkpoint past;
  std::vector<unsigned long> made;
  Lister lister;
  const auto makeOne = [&](TestRun& run) {
    return run.journal.makeParts(
        "parts",
        [&](unsigned long begin, const std::function<void(unsigned long)>& tell) {
          made.push_back(begin);
          tell(begin + 1);
          // Stopped after one part of five.
          run.control.stop = true;
          return begin + 1 == 5;
        },
        lister);
  };
  for (bool complete = false; !complete;) {
    TestRun run(past);
    complete = makeOne(run);
    run.journal.save();
    past = run.saved;
    ASSERT_LE(made.size(), 5u);
  }
  EXPECT_EQ(made, (std::vector<unsigned long>{0, 1, 2, 3, 4}));
  // All are made: the next run takes that as it is, and goes on behind it.
  TestRun last(past);
  EXPECT_TRUE(makeOne(last));
  EXPECT_EQ(made.size(), 5u);
  EXPECT_EQ(last.search(2, lister), true);
  EXPECT_EQ(last.rewinds, 0);
}

TEST(Journal, SavesBetweenPartsToo) {
  TestRun run;
  run.control.keepEvery = 1e-9;
  Lister lister;
  run.journal.makeParts(
      "parts",
      [&](unsigned long, const std::function<void(unsigned long)>& tell) {
        tell(3);
        return false;
      },
      lister);
  ASSERT_TRUE(run.saved.open);
  ASSERT_EQ(run.saved.open->frontier.pieces.size(), 1u);
  EXPECT_EQ(run.saved.open->frontier.pieces[0][0].chosen, 3);
}

TEST(Journal, SavesBetweenShortSearchesToo) {
  TestRun run;
  run.control.keepEvery = 1e-9;
  Finder finder;
  for (const long sum : {3, 4, 5}) run.search(sum, finder);
  EXPECT_EQ(run.saved.searches.size(), 2u);
}

TEST(Journal, SavesBetweenSearchesInPartsToo) {
  TestRun run;
  run.control.keepEvery = 1e-9;
  Finder finder;
  for (const char* key : {"1", "2", "3"})
    run.journal.makeParts(
        key, [](unsigned long, const auto&) { return true; }, finder);
  EXPECT_EQ(run.saved.searches.size(), 2u);
}

TEST(Keys, TellProgramsApart) {
  std::set<std::string> keys;
  for (long sum = 0; sum < 10; ++sum) keys.insert(keyOf(programOf(sum)));
  IntegerProgram other = programOf(0);
  other.rows[0].a[0] += 1;
  keys.insert(keyOf(other));
  other.box[0].high.reset();
  keys.insert(keyOf(other));
  EXPECT_EQ(keys.size(), 12u);
}

}  // namespace
}  // namespace latbox::complete
