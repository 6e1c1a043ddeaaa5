#include "complete/solving/solver.h"

#include <mutex>
#include <stdexcept>

#include "complete/program/presolve.h"
#include "complete/program/verification.h"
#include "complete/program/window.h"
#include "complete/solving/branching.h"
#include "complete/solving/closing.h"
#include "complete/solving/least_norm.h"
#include "complete/solving/preparation.h"
#include "complete/tree/estimate.h"
#include "complete/tree/first_point.h"

namespace latbox::complete {
namespace {

// Every point is wanted, up to a number of them.
class Listing : public Visitor {
 public:
  Listing(const Program& program, Finds& finds, unsigned long limit)
      : program_(program), verification_(program), finds_(finds), limit_(limit) {}

  Next visit(const IntegerVector& z) override {
    // The numbers of the thread's last point have memory already, which would take longer to get than all
    // else.
    static thread_local Point x;
    verification_.takePoint(x, z);
    const Norms norms = normsOf(program_, x);
    if (!isWanted(x, norms)) return Next::GO_ON;
    std::unique_lock lock(mutex_, std::defer_lock);
    if (limit_ != 0) lock.lock();
    if (isInterrupted()) return Next::REFUSED;
    finds_.list(x, norms);
    return isInterrupted() ? Next::STOP : Next::GO_ON;
  }

  // The number of points is reached.
  bool isInterrupted() const override { return limit_ != 0 && finds_.count() >= limit_; }

 protected:
  virtual bool isWanted(const Point&, const Norms&) const { return true; }

 private:
  const Program& program_;
  Verification verification_;
  Finds& finds_;
  unsigned long limit_;
  // Counts and lists at once, where the count matters.
  std::mutex mutex_;
};

struct Best {
  Point x;
  Norms norms;
};

// The points as good as the best one, which is listed already.
class TieListing : public Listing {
 public:
  TieListing(const Program& program, Finds& finds, unsigned long limit, const Best& best)
      : Listing(program, finds, limit), best_(best) {}

 protected:
  bool isWanted(const Point& x, const Norms& norms) const override {
    return norms == best_.norms && x != best_.x;
  }

 private:
  const Best& best_;
};

// One point is wanted, and then the search ends.
class Finding : public Visitor {
 public:
  std::optional<IntegerVector> held() const override { return held_; }

  void begin() { hasFound_ = false; }
  bool hasFound() const { return hasFound_; }

 protected:
  Next take(const IntegerVector& z) {
    held_ = z;
    hasFound_ = true;
    return Next::STOP;
  }

 private:
  std::optional<IntegerVector> held_;
  bool hasFound_ = false;
};

// Whether there is a point at all.
class Witness : public Finding {
 public:
  Next visit(const IntegerVector& z) override { return take(z); }
};

// A better point, by a window on one norm. The search ends with it: in a lattice that is made for the new
// limit the box has another form, and variables are fixed that the old one left free.
class Improving : public Finding {
 public:
  Improving(const Program& program, Finds& finds)
      : program_(program), verification_(program), finds_(finds) {}

  Next visit(const IntegerVector& z) override {
    Point x = verification_.pointOf(z);
    Norms norms = normsOf(program_, x);
    const std::lock_guard lock(mutex_);
    if (best_ && !(norms < best_->norms)) return Next::GO_ON;
    finds_.replace(x, norms);
    best_ = Best{std::move(x), std::move(norms)};
    if (objective_) window_.improve(objective_->valueOf(best_->norms));
    return take(z);
  }

  // A point that others have found.
  void accept(Point x) {
    if (!isFeasible(program_, x)) throw std::logic_error("a known point is no point of the program");
    Norms norms = normsOf(program_, x);
    finds_.replace(x, norms);
    best_ = Best{std::move(x), std::move(norms)};
    if (objective_) window_.improve(objective_->valueOf(best_->norms));
  }

  const std::optional<Best>& best() const { return best_; }
  Window& window() { return window_; }

  // From here on the values of this norm count. Requires a point.
  void descend(const Objective& objective) {
    objective_ = &objective;
    window_ = {};
    window_.improve(objective.valueOf(best_->norms));
  }

 private:
  const Program& program_;
  Verification verification_;
  Finds& finds_;
  const Objective* objective_ = nullptr;
  std::mutex mutex_;
  std::optional<Best> best_;
  Window window_;
};

// The first point with the best norms, whatever point brought them. For one thread.
class Canonical : public Finding {
 public:
  Canonical(const Program& program, const Norms& norms)
      : program_(program), verification_(program), norms_(norms) {}

  Next visit(const IntegerVector& z) override {
    Point x = verification_.pointOf(z);
    if (normsOf(program_, x) != norms_) return Next::GO_ON;
    point_ = std::move(x);
    return take(z);
  }

  const Point& point() const { return point_; }

 private:
  const Program& program_;
  Verification verification_;
  const Norms& norms_;
  Point point_;
};

// Holds back the points of the growing boxes until it is certain that the program can be searched: a run that
// ends with a usage error leaves the files as they are.
class HeldFinds : public Finds {
 public:
  explicit HeldFinds(Finds& next) : next_(next) {}

  void begin() override { release(); }
  void list(const Point& x, const Norms& norms) override { next_.list(x, norms); }
  void prove(const Rational& least) override { next_.prove(least); }
  unsigned long count() const override { return next_.count(); }
  void replace(const Point& x, const Norms& norms) override {
    if (released_)
      next_.replace(x, norms);
    else
      held_ = {x, norms};
  }
  void release() {
    if (released_) return;
    released_ = true;
    next_.begin();
    if (held_) next_.replace(held_->first, held_->second);
  }

 private:
  Finds& next_;
  bool released_ = false;
  std::optional<std::pair<Point, Norms>> held_;
};

class Solver {
 public:
  Solver(const Program& program, const Task& task, Finds& finds, Journal& journal)
      : program_(program),
        task_(task),
        finds_(finds),
        journal_(journal),
        control_(journal.control()),
        objective_(program),
        whole_(withRows(integerProgramOf(program), task.beside)) {}

  Outcome result() {
    // A program without points is told at once, whatever its bounds.
    if (!tighten(whole_) || !closeByRows(whole_)) return Outcome::NONE;
    const bool optimum = objective_.exists() && !task_.all;
    if (task_.known && (!optimum || task_.first)) task_.known->end();
    if (!optimum) requireBounds(whole_);
    const bool open = !openVariables(whole_).empty();
    if (!open) finds_.release();
    if (!optimum || (task_.first && !open)) return listAll();
    const Outcome outcome = findBest();
    finds_.release();
    return outcome;
  }

 private:
  // Of the search: nothing if there is nothing to search.
  std::optional<bool> searchThrough(const IntegerProgram& program, Visitor& visitor) {
    const auto prepare = [&](const IntegerMatrix& basis) -> std::optional<BoxLattice> {
      auto prepared = preparedLatticeOf(program, basis);
      if (!prepared) return std::nullopt;
      constexpr double MOMENTS = 1e7;
      if (control_.announce && prepared->nodes > MOMENTS)
        control_.announce(prepared->nodes, expectedPoints(prepared->lattice),
                          prepared->lattice.coordinates());
      return std::move(prepared->lattice);
    };
    return journal_.searchThrough(complete::keyOf(program), prepare, visitor);
  }

  // The same for a search that ends at its first find, mostly early. Choosing among bases by the size of the
  // whole tree would take longer than most of these searches: that is done where the tree of the first basis
  // turns out not to be small.
  std::optional<bool> findIn(const IntegerProgram& program, Finding& finding) {
    finding.begin();
    const auto isOver = [&] { return finding.hasFound() || control_.isOver(); };
    bool complete = branch(program, finding, effortOfReduction(program));
    if (complete || isOver()) return complete;
    const auto prepare = [&](const IntegerMatrix&) { return boxLatticeOf(program); };
    SearchSettings trial;
    trial.trial = SMALL_TREE;
    const auto small = journal_.searchThrough(complete::keyOf(program), prepare, finding, trial);
    if (small.value_or(true) || isOver()) return small;
    complete = branchLong(program, finding);
    if (complete || isOver()) return complete;
    return searchThrough(program, finding);
  }

  // True: the visitor has seen all points.
  bool branch(const IntegerProgram& program, Visitor& visitor, unsigned long effort) {
    const IntegerVector& goal = objective_.linear().coefficients;
    return searchByBranching(journal_, complete::keyOf(program), program, goal, visitor, effort);
  }

  // Where that has led to nothing some times, it will not the next time.
  bool branchLong(const IntegerProgram& program, Finding& finding) {
    constexpr unsigned MOST = 3;
    if (failures_ == MOST) return false;
    const bool complete = branch(program, finding, effortOfSearch(program));
    if (!complete && !finding.hasFound()) ++failures_;
    return complete;
  }

  Outcome listAll() {
    Listing listing(program_, finds_, task_.first ? 1 : task_.limit);
    // A run that goes on may have them all.
    if (listing.isInterrupted()) return Outcome::STOPPED;
    const bool complete = task_.first ? findFirst(listing) : findAll(listing);
    if (!complete) return Outcome::STOPPED;
    return finds_.count() > 0 ? Outcome::COMPLETE : Outcome::NONE;
  }

  bool findAll(Listing& listing) {
    Witness witness;
    if (branch(whole_, witness, effortOfReduction(whole_))) return true;
    return !control_.stop && searchThrough(whole_, listing).value_or(true);
  }

  // Passes through the likely parts of a large tree, in stages. After each of them the whole search is tried
  // for a part of what they have cost: some trees are small by its linear programs, without which a pass
  // does. True: there is no point.
  bool findFirst(Listing& listing) {
    if (branch(whole_, listing, effortOfReduction(whole_))) return true;
    if (control_.stop || listing.isInterrupted()) return false;
    const auto lattice = unreducedLatticeOf(whole_);
    if (!lattice) return true;
    Passes passes(*lattice, task_.seed);
    const auto isOver = [&] { return control_.stop || listing.isInterrupted(); };
    for (std::size_t stage = 0;; ++stage) {
      if (passes.hasStage(stage)) makePasses(passes, stage, listing);
      if (isOver()) return false;
      if (tryWhole(stage, passes.cost(), listing)) return true;
      if (isOver()) return false;
      if (!passes.hasStage(stage + 1)) return searchThrough(whole_, listing).value_or(true);
    }
  }

  void makePasses(const Passes& passes, std::size_t stage, Listing& listing) {
    const auto make = [&](unsigned long begin, const std::function<void(unsigned long)>& tell) {
      return passes.make(stage, begin, tell, listing, control_);
    };
    journal_.makeParts(keyOf("passes", stage), make, listing);
  }

  // True: to the end.
  bool tryWhole(std::size_t stage, double cost, Listing& listing) {
    constexpr double PART = 0.1;
    SearchSettings trial;
    trial.trial = std::max(SMALL_TREE, static_cast<unsigned long>(PART * cost));
    const auto prepare = [&](const IntegerMatrix&) { return roughLatticeOf(whole_); };
    return journal_.searchThrough(keyOf("trial", stage), prepare, listing, trial).value_or(true);
  }

  // Of what belongs to a stage of passes.
  std::string keyOf(const std::string& what, std::size_t stage) const {
    return digestOf(complete::keyOf(whole_) + " " + what + " " + std::to_string(stage));
  }

  Outcome findBest() {
    Improving improving(program_, finds_);
    if (task_.start) improving.accept(*task_.start);
    if (!task_.start && !findAny(improving)) return control_.stop ? Outcome::STOPPED : Outcome::NONE;
    if (task_.first || (!task_.isLeast && !minimise(improving, objective_, whole_))) return Outcome::STOPPED;
    if (task_.normAlone) return Outcome::COMPLETE;
    const Norms& norms = improving.best()->norms;
    IntegerProgram bests = withValueOf(norms, objective_, whole_);
    if (objective_.needsSlackNorm()) {
      const Objective slack = objective_.slackNorm();
      if (!minimise(improving, slack, bests)) return Outcome::STOPPED;
      bests = withValueOf(norms, slack, bests);
    }
    if (task_.known) {
      // What others have found was not to be foreseen either: the point at hand is as good as the canonical
      // one.
      task_.known->end();
      if (!task_.ties) return Outcome::COMPLETE;
    }
    return task_.ties ? listTies(*improving.best(), bests) : tellCanonical(*improving.best(), bests);
  }

  static IntegerProgram withRows(IntegerProgram program, std::vector<Row> rows) {
    for (Row& row : rows) program.rows.push_back(std::move(row));
    return program;
  }

  // The points that are as good in this norm as one that is the best.
  static IntegerProgram withValueOf(const Norms& best, const Objective& objective,
                                    const IntegerProgram& program) {
    const Integer value = objective.valueOf(best);
    return withRows(program, objective.rows(value, value));
  }

  // False: no point is left.
  static bool close(IntegerProgram& program) { return tighten(program) && closeByRows(program); }

  // False: there is no point, or the search was stopped.
  bool findAny(Improving& improving) {
    if (!takeKnown(improving)) findInGrowingBoxes(whole_, improving);
    takeKnown(improving);
    if (!improving.best() && !control_.stop) requireBounds(whole_);
    return improving.best() && !control_.stop;
  }

  // A better point that others have found takes the place of the best one; false if there is none.
  bool takeKnown(Improving& improving) {
    if (!task_.known) return false;
    const auto& best = improving.best();
    std::optional<Point> x = task_.known->takeBetter(best ? std::optional(best->norms) : std::nullopt);
    if (x) improving.accept(std::move(*x));
    return x.has_value();
  }

  // Brings one norm to its least among the points of a program, by searches for points that are better by a
  // part of what is open. False: stopped. Throws BadInput where open variables leave no end of it.
  bool minimise(Improving& improving, const Objective& objective, const IntegerProgram& program) {
    const bool isTarget = &objective == &objective_;
    improving.descend(objective);
    Window& window = improving.window();
    findLeast(window, objective, program);
    while (!window.isClosed()) {
      if (isTarget && window.least()) finds_.prove(objective.normOf(*window.least()));
      if (takeKnown(improving)) continue;
      const Integer limit = window.limit();
      if (task_.known) task_.known->want(isTarget ? std::optional(objective.normOf(limit)) : std::nullopt);
      IntegerProgram better = withRows(program, objective.rows(limit, window.least()));
      if (!close(better) || isEmpty(better, improving)) window.raise(limit + 1);
      if (control_.stop) return window.isClosed();
    }
    return true;
  }

  // What the relaxation says. Throws BadInput if better points may be anywhere.
  static void findLeast(Window& window, const Objective& objective, const IntegerProgram& program) {
    IntegerProgram better = withRows(program, objective.rows(window.limit()));
    if (!close(better))
      window.raise(window.limit() + 1);
    else if (const auto least = leastNorm(better, objective))
      window.raise(*least);
    else
      requireBounds(better);
  }

  // Whether the program has no better point; if not, one was found, or the search stopped. With open
  // variables there may be a point at a wanted value, behind which there is no better one, and only such a
  // find is an answer.
  bool isEmpty(const IntegerProgram& program, Improving& improving) {
    if (openVariables(program).empty()) {
      finds_.release();
      return findIn(program, improving).value_or(true);
    }
    findInGrowingBoxes(program, improving);
    if (!improving.hasFound() && !control_.isOver()) requireBounds(program);
    return false;
  }

  // Searches boxes that grow in all directions in which the program is open.
  void findInGrowingBoxes(const IntegerProgram& program, Finding& finding) {
    finding.begin();
    for (unsigned long bits = 0; bits <= LARGEST_BOX && !finding.hasFound() && !control_.isOver();
         bits += 2) {
      IntegerProgram boxed = program;
      clip(boxed, Integer(1) << bits);
      findIn(boxed, finding);
      if (openVariables(program).empty()) return;
    }
  }

  Outcome listTies(const Best& best, IntegerProgram bests) {
    TieListing ties(program_, finds_, task_.limit, best);
    closeBests(bests);
    requireBounds(bests);
    finds_.release();
    if (ties.isInterrupted()) return Outcome::STOPPED;
    return searchThrough(bests, ties).value_or(true) ? Outcome::COMPLETE : Outcome::STOPPED;
  }

  // Which of several best points was met first depends on the way there, which threads and resumed runs make
  // different. The point that is told in the end comes from a search that knows nothing of that way.
  Outcome tellCanonical(const Best& best, IntegerProgram bests) {
    closeBests(bests);
    Canonical canonical(program_, best.norms);
    // Nor on how often long branchings have failed on that way.
    failures_ = 0;
    const unsigned threads = std::exchange(control_.threads, 1u);
    findInGrowingBoxes(bests, canonical);
    control_.threads = threads;
    if (!canonical.hasFound() && control_.stop) return Outcome::STOPPED;
    if (!canonical.hasFound()) throw std::logic_error(LOST);
    if (canonical.point() != best.x) finds_.replace(canonical.point(), best.norms);
    return Outcome::COMPLETE;
  }

  static void closeBests(IntegerProgram& bests) {
    if (!close(bests)) throw std::logic_error(LOST);
  }

  static constexpr const char* LOST = "the best point is not found again";
  static constexpr unsigned long LARGEST_BOX = 40;

  const Program& program_;
  const Task& task_;
  HeldFinds finds_;
  Journal& journal_;
  SearchControl& control_;
  Objective objective_;
  IntegerProgram whole_;
  // Of long branchings.
  unsigned failures_ = 0;
};

}  // namespace

Outcome solve(const Program& program, const Task& task, Finds& finds, Journal& journal) {
  return Solver(program, task, finds, journal).result();
}

}  // namespace latbox::complete
