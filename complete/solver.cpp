#include "complete/solver.h"

#include <stdexcept>

#include "complete/closing.h"
#include "complete/preparation.h"
#include "complete/presolve.h"

namespace latbox::complete {
namespace {

// A point of the lattice as one of the program, or the proof that this program is wrong.
Point verified(const Program& program, const IntegerVector& z) {
  Point x = pointOf(program, z);
  if (!isFeasible(program, x)) throw std::logic_error("a point that was found is no point of the program");
  return x;
}

// Every point is wanted, up to a number of them.
class Listing : public Visitor {
 public:
  Listing(const Program& program, Finds& finds, unsigned long limit, unsigned long already = 0)
      : program_(program), finds_(finds), limit_(limit), count_(already) {}

  Next visit(const IntegerVector& z) override {
    const Point x = verified(program_, z);
    const Norms norms = normsOf(program_, x);
    if (!isWanted(x, norms)) return Next::GO_ON;
    finds_.list(x, norms);
    ++count_;
    return isReached() ? Next::STOP : Next::GO_ON;
  }

  Integer limit() const override { return 0; }
  unsigned long count() const { return count_; }
  bool isReached() const { return limit_ != 0 && count_ >= limit_; }

 protected:
  virtual bool isWanted(const Point&, const Norms&) const { return true; }

 private:
  const Program& program_;
  Finds& finds_;
  unsigned long limit_;
  unsigned long count_;
};

struct Best {
  Point x;
  Norms norms;
};

// The points as good as the best one, which is listed already.
class TieListing : public Listing {
 public:
  TieListing(const Program& program, Finds& finds, unsigned long limit, const Best& best)
      : Listing(program, finds, limit, 1), best_(best) {}

 protected:
  bool isWanted(const Point& x, const Norms& norms) const override {
    return norms == best_.norms && x != best_.x;
  }

 private:
  const Best& best_;
};

// Better points only. The search stops for new bounds when they leave less than half of what it began with: a
// lattice made for them has a box of another form.
class Improving : public Visitor {
 public:
  Improving(const Program& program, const Objective& objective, Finds& finds)
      : program_(program), objective_(objective), finds_(finds) {}

  Next visit(const IntegerVector& z) override {
    Point x = verified(program_, z);
    Norms norms = normsOf(program_, x);
    if (best_ && !(norms < best_->norms)) return Next::GO_ON;
    finds_.replace(x, norms);
    best_ = Best{std::move(x), std::move(norms)};
    isStale_ = first_ || 2 * (limit() - least_) < begin_ - least_;
    return isStale_ ? Next::STOP : Next::LIMIT;
  }

  Integer limit() const override {
    return objective_.needsSlackNorm() ? objective_.asGood(best_->norms) : objective_.better(best_->norms);
  }

  const std::optional<Best>& best() const { return best_; }
  bool isStale() const { return isStale_; }

  void beginSearch(const BoxLattice& lattice) {
    isStale_ = false;
    first_ = !best_;
    if (first_) return;
    begin_ = limit();
    least_ = leastOf(lattice);
  }

 private:
  // The least target norm that the ranges of the rows leave; a sum of sizes is at least 0.
  static Integer leastOf(const BoxLattice& lattice) {
    Integer least = 0;
    bool known = false;
    for (std::size_t r = 0; r < lattice.rows.size(); ++r) {
      const Row& row = lattice.rows[r];
      if (row.kind != RowKind::TARGET) continue;
      const Integer low = row.divisor * lattice.low[lattice.variables.size() + r] + row.offset;
      least = known ? std::max(least, low) : low;
      known = true;
    }
    return least;
  }

  const Program& program_;
  const Objective& objective_;
  Finds& finds_;
  std::optional<Best> best_;
  bool isStale_ = false;
  bool first_ = true;
  Integer begin_ = 0;
  Integer least_ = 0;
};

// Holds back the points of the growing boxes until it is certain that the program can be searched: a run that
// ends with a usage error leaves the files as they are.
class HeldFinds : public Finds {
 public:
  explicit HeldFinds(Finds& next) : next_(next) {}

  void begin() override { release(); }
  void list(const Point& x, const Norms& norms) override { next_.list(x, norms); }
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
  Solver(const Program& program, const Task& task, Finds& finds, SearchControl& control)
      : program_(program),
        task_(task),
        finds_(finds),
        control_(control),
        objective_(program),
        whole_(integerProgramOf(program)) {}

  Outcome result() {
    // A program without points is told at once, whatever its bounds.
    if (!tighten(whole_) || !closeByRows(whole_)) return Outcome::NONE;
    const bool optimum = objective_.exists() && !task_.all;
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
    auto prepared = preparedLatticeOf(program);
    if (!prepared) return std::nullopt;
    return search(prepared->lattice, visitor, control_);
  }

  Outcome listAll() {
    Listing listing(program_, finds_, task_.first ? 1 : task_.limit);
    if (!searchThrough(whole_, listing).value_or(true)) return Outcome::STOPPED;
    return listing.count() > 0 ? Outcome::COMPLETE : Outcome::NONE;
  }

  Outcome findBest() {
    Improving improving(program_, objective_, finds_);
    if (!openVariables(whole_).empty()) {
      if (!findInGrowingBoxes(improving)) return Outcome::STOPPED;
      if (task_.first) return Outcome::STOPPED;
    }
    while (true) {
      IntegerProgram bounded = whole_;
      if (improving.best() && !addTargets(bounded, improving.limit())) break;
      finds_.release();
      auto lattice = boxLatticeOf(bounded);
      if (!lattice) break;
      improving.beginSearch(*lattice);
      if (search(*lattice, improving, control_)) break;
      if (!improving.isStale() || control_.stop) return Outcome::STOPPED;
    }
    finds_.release();
    if (!improving.best()) return Outcome::NONE;
    return task_.ties ? listTies(*improving.best()) : Outcome::COMPLETE;
  }

  // Adds the rows of the bound and closes what they close. False: no point is left.
  bool addTargets(IntegerProgram& program, const Integer& limit) const {
    for (Row& row : objective_.rows(limit)) program.rows.push_back(std::move(row));
    if (!tighten(program) || !closeByRows(program)) return false;
    requireBounds(program);
    return true;
  }

  // Any point: its target norm may bound what the rows leave open. False: stopped.
  bool findInGrowingBoxes(Improving& improving) {
    for (unsigned long bits = 0; bits <= LARGEST_BOX; bits += 2) {
      IntegerProgram boxed = whole_;
      clip(boxed, Integer(1) << bits);
      auto lattice = boxLatticeOf(boxed);
      if (!lattice) continue;
      improving.beginSearch(*lattice);
      search(*lattice, improving, control_);
      if (improving.best()) return !control_.stop;
      if (control_.stop) return false;
    }
    requireBounds(whole_);
    return true;
  }

  Outcome listTies(const Best& best) {
    TieListing ties(program_, finds_, task_.limit, best);
    if (ties.isReached()) return Outcome::STOPPED;
    IntegerProgram bounded = whole_;
    if (!addTargets(bounded, objective_.asGood(best.norms))) return Outcome::COMPLETE;
    return searchThrough(bounded, ties).value_or(true) ? Outcome::COMPLETE : Outcome::STOPPED;
  }

  static constexpr unsigned long LARGEST_BOX = 40;

  const Program& program_;
  const Task& task_;
  HeldFinds finds_;
  SearchControl& control_;
  Objective objective_;
  IntegerProgram whole_;
};

}  // namespace

Outcome solve(const Program& program, const Task& task, Finds& finds, SearchControl& control) {
  return Solver(program, task, finds, control).result();
}

}  // namespace latbox::complete
