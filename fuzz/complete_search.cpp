// A small .opt file the whole way to the verdict of latbox-all: every point that is listed holds and comes
// once; where the box is tiny, trying all its points tells which there are, and which are best. Elsewhere the
// search ends at its first look at the clock, and some points of the box are tried: the verdict `none` must
// not stand beside one that is feasible.
#include <set>

#include "complete/lattice/reduction.h"
#include "complete/program/opt_reader.h"
#include "complete/solving/closing.h"
#include "complete/solving/solver.h"
#include "refusal.h"

namespace latbox::complete {
namespace {

using fuzzing::require;

// What is larger takes its time, and neither the reader nor the search is to blame.
constexpr std::size_t MAX_VARIABLES = 6;
constexpr std::size_t MAX_ROWS = 6;
constexpr std::size_t MAX_LENGTH = 40;
constexpr unsigned long MAX_DIGITS = 6;
constexpr long TINY = 2000;
constexpr unsigned long MAX_POINTS = 200;

bool isShort(const Rational& value) {
  return mpz_sizeinbase(value.get_num_mpz_t(), 10) <= MAX_LENGTH &&
         mpz_sizeinbase(value.get_den_mpz_t(), 10) <= MAX_LENGTH;
}

bool isShort(const Number& number) {
  return !number.finite() || isShort(number.value);
}

template <class Values>
bool areShort(const Values& values) {
  for (const auto& value : values)
    if (!isShort(value)) return false;
  return true;
}

bool isSmall(const Program& p) {
  if (p.variables() > MAX_VARIABLES) return false;
  if (p.targets.size() + p.equations.size() + p.inequations.size() > MAX_ROWS) return false;
  for (const Matrix* rows : {&p.targets, &p.equations, &p.inequations})
    for (const auto& row : *rows)
      if (!areShort(row)) return false;
  for (const auto* side : {&p.wanted, &p.lowerSides, &p.upperSides, &p.lower, &p.upper})
    if (!areShort(*side)) return false;
  for (const unsigned long digits : p.digits)
    if (digits > MAX_DIGITS) return false;
  return areShort(p.sides);
}

class Found : public Finds {
 public:
  explicit Found(const Program& program) : program_(program) {}

  void begin() override { require(points.empty(), "nothing is found before the search"); }
  void list(const Point& x, const Norms& norms) override {
    check(x, norms);
    require(points.insert(x).second, "no point comes twice");
  }
  void replace(const Point& x, const Norms& norms) override {
    check(x, norms);
    require(points.empty() || norms < normsOf(program_, *points.begin()), "a better point");
    points = {x};
  }

  unsigned long count() const override { return points.size(); }

  std::set<Point> points;

 private:
  void check(const Point& x, const Norms& norms) const {
    require(isFeasible(program_, x), "a feasible point");
    require(norms == normsOf(program_, x), "the norms of a point");
  }

  const Program& program_;
};

// Calls `visit` for each choice of one of the values of every variable.
template <class Visit>
void eachChoice(const std::vector<IntegerVector>& values, IntegerVector& z, Visit&& visit) {
  const std::size_t j = z.size();
  if (j == values.size()) return visit(z);
  for (const Integer& value : values[j]) {
    z.push_back(value);
    eachChoice(values, z, visit);
    z.pop_back();
  }
}

std::set<Point> feasibleOf(const Program& program, const std::vector<IntegerVector>& values) {
  std::set<Point> found;
  IntegerVector z;
  eachChoice(values, z, [&](const IntegerVector& chosen) {
    const Point x = pointOf(program, chosen);
    if (isFeasible(program, x)) found.insert(x);
  });
  return found;
}

bool isTiny(const std::vector<Range>& box) {
  Integer volume = 1;
  for (const Range& range : box) {
    if (!range.isFinite()) return false;
    if (!range.isEmpty()) volume *= *range.high - *range.low + 1;
  }
  return volume <= TINY;
}

std::vector<IntegerVector> allValues(const std::vector<Range>& box) {
  std::vector<IntegerVector> values(box.size());
  for (std::size_t j = 0; j < box.size(); ++j)
    for (Integer value = *box[j].low; value <= *box[j].high; ++value) values[j].push_back(value);
  return values;
}

// The ends of each range and two values between them, or some about 0 where it is open.
std::vector<IntegerVector> someValues(const std::vector<Range>& box) {
  std::vector<IntegerVector> values;
  for (const Range& range : box) {
    const Integer low = range.low ? *range.low : range.high ? Integer(*range.high - 2) : Integer(-1);
    const Integer high = range.high ? *range.high : Integer(low + 2);
    std::set<Integer> some;
    for (const Integer& value : {low, Integer(low + 1), floorOf(Integer(low + high), Integer(2)), high})
      if (value >= low && value <= high) some.insert(value);
    values.emplace_back(some.begin(), some.end());
  }
  return values;
}

void requireAll(const Program& program, const std::set<Point>& truth) {
  Found found(program);
  SearchControl control;
  Journal journal(control);
  Task task;
  task.all = true;
  const Outcome outcome = solve(program, task, found, journal);
  require(found.points == truth, "all points");
  require(outcome == (truth.empty() ? Outcome::NONE : Outcome::COMPLETE), "the outcome of all points");
}

std::set<Point> bestOf(const Program& program, const std::set<Point>& points) {
  std::set<Point> best;
  for (const Point& x : points) {
    if (!best.empty() && normsOf(program, x) < normsOf(program, *best.begin())) best.clear();
    if (best.empty() || normsOf(program, x) == normsOf(program, *best.begin())) best.insert(x);
  }
  return best;
}

void requireBest(const Program& program, const std::set<Point>& truth) {
  Found found(program);
  SearchControl control;
  Journal journal(control);
  Task task;
  task.ties = true;
  const Outcome outcome = solve(program, task, found, journal);
  require(found.points == bestOf(program, truth), "the best points");
  require(outcome == (truth.empty() ? Outcome::NONE : Outcome::COMPLETE), "the outcome of the best points");
}

// A search that is told to stop beforehand ends soon.
void requireNoContradiction(const Program& program, const Task& task, bool hasPoint) {
  Found found(program);
  SearchControl control;
  Journal journal(control);
  control.stop = true;
  Outcome outcome = Outcome::STOPPED;
  try {
    outcome = solve(program, task, found, journal);
  } catch (const BadInput&) {
    require(!openVariables(integerProgramOf(program)).empty(), "bounds are asked for where some are missing");
    return;
  } catch (const ReductionFailure&) {
    // Long numbers may be too much for the library: the run ends with status 1, and no verdict.
    return;
  }
  require(outcome != Outcome::NONE || (found.points.empty() && !hasPoint), "no point where there is one");
  require(outcome != Outcome::COMPLETE || !found.points.empty(), "points of a search that has them all");
}

void judge(const Program& program) {
  const IntegerProgram whole = integerProgramOf(program);
  if (isTiny(whole.box)) {
    const std::set<Point> truth = feasibleOf(program, allValues(whole.box));
    requireAll(program, truth);
    if (!program.targets.empty()) requireBest(program, truth);
    return;
  }
  const bool hasPoint = !feasibleOf(program, someValues(whole.box)).empty();
  Task listing;
  listing.all = true;
  listing.limit = MAX_POINTS;
  requireNoContradiction(program, listing, hasPoint);
  if (!program.targets.empty()) requireNoContradiction(program, Task(), hasPoint);
}

}  // namespace
}  // namespace latbox::complete

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  using namespace latbox::complete;
  Program program;
  try {
    program = readProgram(latbox::fuzzing::textOf(bytes, size), "input");
  } catch (const BadInput&) {
    return 0;
  }
  if (isSmall(program)) judge(program);
  return 0;
}
