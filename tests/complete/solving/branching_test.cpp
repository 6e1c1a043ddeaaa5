#include "complete/solving/branching.h"

#include "journal_run.h"

namespace latbox::complete {
namespace {

using testing::Finder;
using testing::rangeOf;

// Twelve variables from 0 to 3 with this sum.
IntegerProgram programOf(long sum) {
  IntegerProgram program;
  program.box.assign(12, rangeOf(0, 3));
  program.rows.push_back(testing::rowOf({1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1}, sum, sum));
  return program;
}

// 2 x1 + ... + 2 x30 + y = 31 with y even: none, which no linear program says.
IntegerProgram parity() {
  IntegerProgram program;
  program.box.assign(30, rangeOf(0, 1));
  Row row;
  row.a.assign(30, 2);
  row.range = rangeOf(31, 31);
  program.rows.push_back(row);
  return program;
}

struct TestRun : testing::JournalRun {
  using JournalRun::JournalRun;

  bool search(const IntegerProgram& program, Visitor& visitor, unsigned long effort) {
    const bool complete =
        searchByBranching(journal, keyOf(program), program, IntegerVector(), visitor, effort);
    journal.save();
    return complete;
  }
};

constexpr unsigned long ENOUGH = 100'000'000;

TEST(Branching, FindsAPointOrProvesThatThereIsNone) {
  TestRun run;
  Finder finder;
  EXPECT_FALSE(run.search(programOf(17), finder, ENOUGH));
  ASSERT_TRUE(finder.point);
  Integer sum = 0;
  for (const Integer& value : *finder.point) sum += value;
  EXPECT_EQ(sum, 17);
  EXPECT_EQ(finder.visits, 1);
  Finder none;
  EXPECT_TRUE(run.search(programOf(37), none, ENOUGH));
  EXPECT_FALSE(none.point);
  EXPECT_GT(run.control.nodes, 0u);
}

TEST(Branching, LeavesOpenWhatTakesMoreThanItsEffort) {
  TestRun run;
  Finder finder;
  EXPECT_FALSE(run.search(parity(), finder, 1'000'000));
  EXPECT_FALSE(finder.point);
  EXPECT_EQ(run.saved.searches.size(), 4u);
}

// Has never enough.
class Counter : public Visitor {
 public:
  Next visit(const IntegerVector&) override {
    ++visits;
    return Next::GO_ON;
  }

  int visits = 0;
};

TEST(Branching, GoesOnBehindPointsThatAreNotEnough) {
  TestRun run;
  Counter counter;
  EXPECT_FALSE(run.search(programOf(17), counter, 1'000'000));
  EXPECT_GT(counter.visits, 10);
  EXPECT_EQ(run.saved.searches.size(), 4u);
}

TEST(Branching, DoesNotTellTheShareOfTheSearchBefore) {
  TestRun run;
  run.control.done = 0.5;
  Finder finder;
  run.search(programOf(17), finder, ENOUGH);
  EXPECT_LT(run.control.done, 0);
}

TEST(Branching, LeavesOpenWhatHasNoEnds) {
  TestRun run;
  Finder finder;
  IntegerProgram open = programOf(17);
  open.box[0].high.reset();
  EXPECT_FALSE(run.search(open, finder, ENOUGH));
  EXPECT_FALSE(finder.point);
}

TEST(Branching, AStopIsNoAnswer) {
  TestRun run;
  run.control.stop = true;
  Finder finder;
  EXPECT_FALSE(run.search(programOf(37), finder, ENOUGH));
  EXPECT_TRUE(run.saved.searches.empty());
  run.control.stop = false;
  run.control.known = true;
  EXPECT_FALSE(run.search(programOf(37), finder, ENOUGH));
}

// A run that goes on is told what was found and what was not, and does nothing again.
TEST(Branching, IsTakenFromTheJournal) {
  TestRun first;
  Finder finder;
  first.search(parity(), finder, 1'000'000);
  first.search(programOf(17), finder, ENOUGH);
  Finder none;
  ASSERT_TRUE(first.search(programOf(37), none, ENOUGH));
  TestRun second(first.saved);
  Finder again;
  EXPECT_FALSE(second.search(parity(), again, 1'000'000));
  EXPECT_FALSE(again.point);
  EXPECT_FALSE(second.search(programOf(17), again, ENOUGH));
  EXPECT_EQ(again.point, finder.point);
  EXPECT_TRUE(second.search(programOf(37), none, ENOUGH));
  EXPECT_EQ(second.control.nodes, 0u);
}

TEST(Efforts, GrowWithTheProgramAndHaveAnEnd) {
  IntegerProgram program = programOf(17);
  // Twelve variables, and an equation is no coordinate.
  EXPECT_EQ(effortOfReduction(program), 12u * 12 * 12 * 12);
  program.box[0] = rangeOf(1, 1);
  EXPECT_EQ(effortOfReduction(program), 11u * 11 * 11 * 11);
  program.rows[0].range = rangeOf(16, 17);
  EXPECT_EQ(effortOfReduction(program), 11u * 11 * 12 * 12);
  const unsigned long small = effortOfSearch(program);
  program.box.insert(program.box.end(), 10, rangeOf(0, 1));
  EXPECT_NEAR(static_cast<double>(effortOfSearch(program)), 2.0 * static_cast<double>(small), 10);
  program.box.insert(program.box.end(), 5000, rangeOf(0, 1));
  EXPECT_EQ(effortOfSearch(program), 20'000'000'000u);
  EXPECT_EQ(effortOfReduction(program), 20'000'000'000u);
}

}  // namespace
}  // namespace latbox::complete
