#include "complete/solver.h"

#include "complete/closing.h"
#include "complete/least_norm.h"
#include "complete/presolve.h"
#include "support.h"

namespace latbox::complete {
namespace {

class Record : public Finds {
 public:
  void begin() override {}
  void list(const Point& x, const Norms&) override { listed.insert(x); }
  void replace(const Point& x, const Norms& norms) override {
    last = x;
    best = norms;
    ++replaced;
  }

  std::set<Point> listed;
  Point last;
  Norms best;
  std::size_t replaced = 0;
};

struct Solved {
  explicit Solved(const std::string& text, const Task& task = {}) : program(readProgram(text, "p.opt")) {
    outcome = solve(program, task, record, control);
  }

  Program program;
  Record record;
  SearchControl control;
  Outcome outcome;
};

Point pointOf(std::initializer_list<long> values) {
  return Point(values.begin(), values.end());
}

// Minimise 7 x + 11 y + 13 z with 101 x + 103 y + 107 z = 10^11 + 7.
TEST(Solver, GoesDownALongRangeInFewFinds) {
  const Solved solved(
      "[ -inf ] [ [ 7 11 13 ] ] [ [ 101 103 107 ] ] [ 100000000007 ] [ ] [ ] [ ] [ 0 0 0 ] [ 0 0 0 ] "
      "[ 1000000000 1000000000 1000000000 ]");
  EXPECT_EQ(solved.outcome, Outcome::COMPLETE);
  EXPECT_EQ(product(solved.program.equations[0], solved.record.last), 100000000007);
  // x as large as can be, 103 y + 107 z being what is left of it modulo 101.
  Rational best = 7 * Rational(1000000000000);
  for (long y = 0; y <= 101; ++y)
    for (long z = 0; z <= 101; ++z) {
      const long left = 100000000007 - 103 * y - 107 * z;
      if (left % 101 == 0) best = std::min(best, Rational(7 * (left / 101) + 11 * y + 13 * z));
    }
  EXPECT_EQ(solved.record.best.target, best);
  EXPECT_LT(solved.record.replaced, 2500u);
}

// The slack norm too: x + |x + y - 10^9| is 10^9 for many points, and the distance alone is 0 for x = 0 only
// there.
TEST(Solver, GoesDownALongRangeOfTheSlackNorm) {
  const Solved solved(
      "[ -inf 1000000000 ] [ [ 1 0 ] [ 1 1 ] ] [ ] [ ] [ ] [ ] [ ] [ 0 0 ] [ 0 0 ] [ 1000000000 1000 ]");
  EXPECT_EQ(solved.outcome, Outcome::COMPLETE);
  EXPECT_EQ(solved.record.best, (Norms{999999000, 0}));
  EXPECT_EQ(solved.record.last, pointOf({999999000, 1000}));
  EXPECT_LT(solved.record.replaced, 2500u);
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

// The point is the first one in a lattice that is made from the program and the best norms alone.
class CanonicalTest : public ::testing::TestWithParam<const char*> {};

TEST_P(CanonicalTest, ThePointDoesNotDependOnTheWay) {
  const Solved solved(GetParam());
  ASSERT_EQ(solved.outcome, Outcome::COMPLETE);
  const Objective objective(solved.program);
  IntegerProgram bests = integerProgramOf(solved.program);
  ASSERT_TRUE(tighten(bests) && closeByRows(bests));
  for (const Row& row : objective.conditions(objective.valueOf(solved.record.best)))
    bests.rows.push_back(row);
  const Objective slack = objective.slackNorm();
  if (objective.needsSlackNorm())
    for (const Row& row : slack.conditions(slack.valueOf(solved.record.best))) bests.rows.push_back(row);
  ASSERT_TRUE(tighten(bests) && closeByRows(bests));
  auto lattice = boxLatticeOf(bests);
  ASSERT_TRUE(lattice);
  testing::Collector first(1);
  SearchControl control;
  search(*lattice, first, control);
  EXPECT_EQ(latbox::complete::pointOf(solved.program, *first.points.begin()), solved.record.last);
}

INSTANTIATE_TEST_SUITE_P(
    Programs, CanonicalTest,
    ::testing::Values(
        "[ -inf ] [ [ 1 1 1 ] ] [ ] [ ] [ [ 1 1 1 ] ] [ 4 ] [ 9 ] [ 0 0 0 ] [ 0 0 0 ] [ 4 4 4 ]",
        "[ inf ] [ [ 2 3 4 1 ] ] [ ] [ ] [ [ 5 7 8 3 ] ] [ 0 ] [ 40 ] [ 0 0 0 0 ] [ 0 0 0 0 ] [ 5 5 5 5 ]",
        "[ 9 ] [ [ 2 3 4 1 ] ] [ [ 1 1 1 1 ] ] [ 5 ] [ ] [ ] [ ] [ 0 0 0 0 ] [ 0 0 0 0 ] [ 5 5 5 5 ]",
        "[ -inf 9 ] [ [ 1 1 0 0 ] [ 2 3 4 1 ] ] [ ] [ ] [ [ 1 1 1 1 ] ] [ 3 ] [ 7 ] [ 0 0 0 0 ] [ 0 0 0 0 ] "
        "[ 5 5 5 5 ]"));

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
