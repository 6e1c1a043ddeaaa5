#include "complete/solving/solver.h"

#include <random>

#include "complete/program/presolve.h"
#include "complete/solving/branching.h"
#include "complete/solving/closing.h"
#include "complete/solving/least_norm.h"
#include "journal_run.h"

namespace latbox::complete {
namespace {

class Record : public Finds {
 public:
  void begin() override {}
  void list(const Point& x, const Norms&) override { listed.insert(x); }
  unsigned long count() const override { return listed.size(); }
  void replace(const Point& x, const Norms& norms) override {
    exchanged += replaced > 0 && norms == best ? 1 : 0;
    last = x;
    best = norms;
    ++replaced;
  }

  std::set<Point> listed;
  Point last;
  Norms best;
  std::size_t replaced = 0;
  // For one that is as good.
  std::size_t exchanged = 0;
};

struct Solved {
  explicit Solved(const std::string& text, const Task& task = {}) : program(readProgram(text, "p.opt")) {
    Journal journal(control);
    outcome = solve(program, task, record, journal);
  }

  Program program;
  Record record;
  SearchControl control;
  Outcome outcome;
};

Point pointOf(std::initializer_list<long> values) {
  return Point(values.begin(), values.end());
}

// Maximise 7 x + 11 y on a line of about 10^10 points.
TEST(Solver, GoesDownALongRangeInFewFinds) {
  const Solved solved(
      "[ inf ] [ [ 7 11 ] ] [ [ 101 103 ] ] [ 1000000000007 ] [ ] [ ] [ ] [ 0 0 ] [ 0 0 ] "
      "[ 1000000000000 1000000000000 ]");
  EXPECT_EQ(solved.outcome, Outcome::COMPLETE);
  // 11 / 103 is more than 7 / 101: x is the least number that leaves a multiple of 103.
  long x = 0;
  while ((1000000000007 - 101 * x) % 103 != 0) ++x;
  EXPECT_EQ(solved.record.last, pointOf({x, (1000000000007 - 101 * x) / 103}));
  EXPECT_LT(solved.record.replaced, 2500u);
}

// x + |x - 10^9| is 10^9 for all x; the distance alone is 0 for the last one.
TEST(Solver, GoesDownALongRangeOfTheSlackNorm) {
  const Solved solved("[ -inf 1000000000 ] [ [ 1 ] [ 1 ] ] [ ] [ ] [ ] [ ] [ ] [ 0 ] [ 0 ] [ 1000000000 ]");
  EXPECT_EQ(solved.outcome, Outcome::COMPLETE);
  EXPECT_EQ(solved.record.best, (Norms{1000000000, 0}));
  EXPECT_LT(solved.record.replaced, 2500u);
}

// A bound on one variable is heard during a search, though it is no row that tells more than a range does.
TEST(Solver, GoesDownTheRangeOfAVariable) {
  const Solved solved(
      "[ -inf ] [ [ 1 0 0 ] ] [ ] [ ] [ [ 1 2 2 ] ] [ 7 ] [ inf ] [ 0 0 0 ] [ 0 0 0 ] [ 1000000000 1 1 ]");
  EXPECT_EQ(solved.outcome, Outcome::COMPLETE);
  EXPECT_EQ(solved.record.last, pointOf({3, 1, 1}));
  EXPECT_LT(solved.record.replaced, 2500u);
}

// The last search for a better value has one value left, which is then no row of the lattice any more. Its
// first point is the best, and the 10^9 others, which differ in the last variable, are not looked at.
TEST(Solver, KnowsAValueThatAllPointsHave) {
  for (long least = 1500; least < 20000; least += 1000) {
    const Solved solved("[ -inf ] [ [ 1 0 0 0 ] ] [ [ 1 -1000 -1000 0 ] ] [ 0 ] [ ] [ ] [ ] [ 0 0 0 0 ] [ " +
                        std::to_string(least) + " 0 0 0 ] [ 1000000 500 500 1000000000 ]");
    EXPECT_EQ(solved.outcome, Outcome::COMPLETE);
    EXPECT_EQ(solved.record.best, (Norms{least + 500, 0}));
    EXPECT_LT(solved.control.nodes, 1000000u);
  }
}

TEST(Solver, AWantedValueThatIsReachedIsTheOptimumOfAnOpenProgram) {
  const char* const open = " ] ] [ ] [ ] [ ] [ ] [ ] [ 0 0 ] [ 0 0 ] [ inf inf ]";
  const Solved reached(std::string("[ 1 ] [ [ 1 -3") + open);
  EXPECT_EQ(reached.outcome, Outcome::COMPLETE);
  EXPECT_EQ(reached.record.best, (Norms{0, 0}));
  // An odd number is at least 1 away.
  const Solved odd(std::string("[ 1 ] [ [ 2 -4") + open);
  EXPECT_EQ(odd.outcome, Outcome::COMPLETE);
  EXPECT_EQ(odd.record.best, (Norms{1, 1}));
  // x + |x - y - 3|: the least target norm is 0.
  const Solved both(std::string("[ -inf 3 ] [ [ 1 0 ] [ -1 1") + open);
  EXPECT_EQ(both.outcome, Outcome::COMPLETE);
  EXPECT_EQ(both.record.last, pointOf({0, 3}));
}

TEST(Solver, NamesWhatIsOpenWhereBetterPointsMayBeAnywhere) {
  const std::string message = "these variables need finite bounds: x1, x2";
  const auto solveOpen = [](const std::string& targets, const Task& task) {
    return testing::refusal(
        [&] { Solved(targets + " [ [ 3 -5 ] ] [ 7 ] [ ] [ ] [ ] [ 0 0 ] [ 0 0 ] [ inf inf ]", task); });
  };
  EXPECT_EQ(solveOpen("[ inf ] [ [ 1 1 ] ]", {}), message);
  Task ties;
  ties.ties = true;
  EXPECT_EQ(solveOpen("[ 1 ] [ [ 6 -10 ] ]", ties), message);
  EXPECT_EQ(solveOpen("[ 1 ] [ [ 6 -10 ] ]", {}), "");
}

// The first point of a search that is made from the program and the best norms alone.
Point firstOfBests(const Program& program, const Norms& best) {
  const Objective objective(program);
  IntegerProgram bests = integerProgramOf(program);
  EXPECT_TRUE(tighten(bests) && closeByRows(bests));
  std::vector<Objective> norms = {objective};
  if (objective.needsSlackNorm()) norms.push_back(objective.slackNorm());
  for (const Objective& norm : norms) {
    const Integer value = norm.valueOf(best);
    for (const Row& row : norm.rows(value, value)) bests.rows.push_back(row);
  }
  EXPECT_TRUE(tighten(bests) && closeByRows(bests));
  testing::Collector first(1);
  SearchControl control;
  Journal journal(control);
  searchByBranching(journal, "", bests, objective.linear().coefficients, first, effortOfReduction(bests));
  if (first.points.empty()) {
    auto lattice = boxLatticeOf(bests);
    search(*lattice, first, control);
  }
  return latbox::complete::pointOf(program, *first.points.begin());
}

// Short targets and long rows: several best points, and now and then the way brings another one first.
std::string programWithTies(unsigned seed) {
  std::mt19937 random(seed);
  const auto list = [&random](unsigned long most) {
    std::string text = "[";
    for (int j = 0; j < 6; ++j) text += " " + std::to_string(1 + random() % most);
    return text + " ]";
  };
  const std::string targets =
      seed % 2 == 0 ? "[ inf ] [ " + list(3) + " ]" : "[ inf 9 ] [ " + list(2) + list(3) + " ]";
  const std::string rows = "[ " + list(30) + list(30) + " ] [ 90 80 ] [ 151 161 ]";
  return targets + " [ ] [ ] " + rows + " [ 0 0 0 0 0 0 ] [ 0 0 0 0 0 0 ] [ 6 6 6 6 6 6 ]";
}

TEST(Solver, ThePointDoesNotDependOnTheWay) {
  std::size_t exchanged = 0;
  for (unsigned seed = 0; seed < 40; ++seed) {
    const Solved solved(programWithTies(seed));
    if (solved.outcome == Outcome::NONE) continue;
    EXPECT_EQ(solved.record.last, firstOfBests(solved.program, solved.record.best)) << seed;
    exchanged += solved.record.exchanged;
  }
  EXPECT_GT(exchanged, 3u);
}

// A run that is stopped by a limit, and goes on from what another has written down.
struct Resumed : testing::JournalRun {
  Resumed(const std::string& text, unsigned long limit, const Checkpoint& past)
      : JournalRun(past), program(readProgram(text, "p.opt")) {
    Task task;
    task.limit = limit;
    outcome = solve(program, task, record, journal);
    journal.save();
  }

  Program program;
  Record record;
  Outcome outcome;
};

// Matrices of three ones in three rows and columns. That there is one is known at once, by no lattice.
TEST(Solver, AListGoesOnWhereItWasStopped) {
  const std::string permutations =
      "[ ] [ ] [ [ 1 1 1 0 0 0 0 0 0 ] [ 0 0 0 1 1 1 0 0 0 ] [ 0 0 0 0 0 0 1 1 1 ] [ 1 0 0 1 0 0 1 0 0 ] "
      "[ 0 1 0 0 1 0 0 1 0 ] ] [ 1 1 1 1 1 ] [ ] [ ] [ ] [ 0 0 0 0 0 0 0 0 0 ] [ 0 0 0 0 0 0 0 0 0 ] "
      "[ 1 1 1 1 1 1 1 1 1 ]";
  Checkpoint past;
  std::set<Point> listed;
  std::size_t points = 0;
  for (int run = 0; run < 6; ++run) {
    const Resumed resumed(permutations, 1, past);
    EXPECT_EQ(resumed.outcome, Outcome::STOPPED);
    EXPECT_EQ(resumed.rewinds, 0);
    points += resumed.record.listed.size();
    listed.insert(resumed.record.listed.begin(), resumed.record.listed.end());
    past = resumed.saved;
    ASSERT_EQ(past.searches.size(), 1u);
  }
  EXPECT_EQ(points, 6u);
  EXPECT_EQ(listed.size(), 6u);
}

// With two distances each pattern of signs alone allows far less than the sum of both.
TEST(LeastNorm, KnowsThatDistancesAddUp) {
  const Program program =
      readProgram("[ 0 3 ] [ [ 1 1 ] [ 1 1 ] ] [ ] [ ] [ ] [ ] [ ] [ 0 0 ] [ 0 0 ] [ 9 9 ]", "p.opt");
  IntegerProgram whole = integerProgramOf(program);
  ASSERT_TRUE(tighten(whole));
  EXPECT_EQ(leastNorm(whole, Objective(program)), Integer(3));
  for (Range& range : whole.box) range.high.reset();
  EXPECT_EQ(leastNorm(whole, Objective(program)), Integer(3));
}

TEST(LeastNorm, IsUnknownWhereNothingBoundsIt) {
  const Program program =
      readProgram("[ inf ] [ [ 1 1 ] ] [ ] [ ] [ ] [ ] [ ] [ 0 0 ] [ 0 0 ] [ inf 9 ]", "p.opt");
  EXPECT_EQ(leastNorm(integerProgramOf(program), Objective(program)), std::nullopt);
}

}  // namespace
}  // namespace latbox::complete
