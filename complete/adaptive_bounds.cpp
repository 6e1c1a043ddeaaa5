#include "complete/adaptive_bounds.h"

#include <algorithm>

namespace latbox::complete {
namespace {

constexpr double INFINITE = std::numeric_limits<double>::infinity();
constexpr unsigned long NEVER = std::numeric_limits<unsigned long>::max();
// Multiplications, a millisecond's worth, that all levels together may spend at first unpaid; and the part of
// the work of the search that they may spend later.
constexpr double FIRST_ALLOWANCE = 1e6;
constexpr double ALLOWED_PART = 0.01;
// What a candidate costs beside its multiplications, in such.
constexpr unsigned long BESIDE = 30;
// The recent past is so many bounds long, up to twice that.
constexpr double RECENT = 64;
// The first exclusions of a level are tried, and later one of so many.
constexpr double FIRST_TRIALS = 4;
constexpr unsigned BETWEEN_TRIALS = 32;
// A trial ends when it has cost so many times what would pay.
constexpr double CONVINCING = 4;

}  // namespace

AdaptiveBounds::AdaptiveBounds(const BoxLattice& lattice, const std::vector<double>& reach)
    : bounds_(lattice, reach),
      levels_(lattice.rank()),
      trial_{lattice.rank() + 1, 0, NEVER},
      candidateWork_(lattice.coordinates() + lattice.rank() / 2 + BESIDE) {
  review();
}

void AdaptiveBounds::review() {
  if (!bounds_.exist()) return;
  allowance_ =
      (FIRST_ALLOWANCE + ALLOWED_PART * static_cast<double>(work_)) / static_cast<double>(levels_.size());
  for (std::size_t t = 0; t < levels_.size(); ++t) decide(t);
}

const AdaptiveBounds::Range* AdaptiveBounds::ask(std::size_t t, const std::vector<double>& lambda) {
  Level& level = levels_[t];
  if (!level.isKnown) {
    const unsigned long before = bounds_.work();
    level.range = rangeAt(t, lambda);
    level.isKnown = true;
    charge(t, bounds_.work() - before);
  }
  if (lambda[t] >= level.range.least && lambda[t] <= level.range.greatest) return nullptr;
  ++level.cuts;
  return beginTrial(t) ? nullptr : &level.range;
}

// The second bound ends as soon as it says that nothing is left.
AdaptiveBounds::Range AdaptiveBounds::rangeAt(std::size_t t, const std::vector<double>& lambda) {
  const Range empty = {INFINITE, -INFINITE};
  const double greatest = bounds_.bound(t, 1, lambda, -INFINITE);
  if (greatest == -INFINITE) return empty;
  const double least = -bounds_.bound(t, -1, lambda, -greatest);
  return least > greatest ? empty : Range{least, greatest};
}

void AdaptiveBounds::charge(std::size_t t, unsigned long work) {
  Level& level = levels_[t];
  const auto cost = static_cast<double>(work);
  work_ += work;
  if (!pays(level)) level.unpaid += cost;
  level.cost += cost;
  if (++level.bounds >= 2 * RECENT)
    for (double* count : {&level.bounds, &level.cost, &level.cuts, &level.trials, &level.trialCost})
      *count /= 2;
  decide(t);
}

// One trial at a time, so that each tells what its level saves while the levels below do as they do. A leaf
// is not worth one.
bool AdaptiveBounds::beginTrial(std::size_t t) {
  Level& level = levels_[t];
  if (t == 0 || trial_.end != NEVER) return false;
  if (level.trials >= FIRST_TRIALS && level.untilTrial > 0) {
    --level.untilTrial;
    return false;
  }
  level.untilTrial = BETWEEN_TRIALS;
  trial_ = {t, work_, work_ + static_cast<unsigned long>(CONVINCING * level.cost / level.cuts)};
  return true;
}

std::size_t AdaptiveBounds::endTrial(std::size_t t) {
  Level& level = levels_[trial_.level];
  ++level.trials;
  level.trialCost += static_cast<double>(work_ - trial_.begin);
  decide(trial_.level);
  t = std::max(t, trial_.level);
  cancelTrial();
  return t;
}

void AdaptiveBounds::cancelTrial() {
  trial_ = {levels_.size() + 1, 0, NEVER};
}

bool AdaptiveBounds::pays(const Level& level) const {
  const double saving =
      level.trials > 0 ? level.trialCost / level.trials : static_cast<double>(candidateWork_);
  return level.cuts * saving > level.cost;
}

void AdaptiveBounds::decide(std::size_t t) {
  Level& level = levels_[t];
  const double expected =
      level.bounds > 0 ? level.cost / level.bounds : static_cast<double>(bounds_.firstWork(t));
  level.isOn = pays(level) || level.unpaid + expected <= allowance_;
}

}  // namespace latbox::complete
