#include "complete/tree/adaptive_bounds.h"

#include <algorithm>

namespace latbox::complete {
namespace {

constexpr double INFINITE = std::numeric_limits<double>::infinity();
// Multiplications, a fraction of a millisecond's worth, that all levels together may spend at first unpaid;
// and the part of the work of the search that they may spend later.
constexpr double FIRST_ALLOWANCE = 2e5;
constexpr double ALLOWED_PART = 0.005;
// What a candidate costs beside its multiplications, in such.
constexpr double BESIDE = 30;
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
      states_(lattice.rank(), State::OFF),
      candidateWork_(static_cast<double>(lattice.coordinates()) + static_cast<double>(lattice.rank()) / 2 +
                     BESIDE) {
  review(0);
}

void AdaptiveBounds::review(unsigned long candidates) {
  work_ += static_cast<double>(candidates) * candidateWork_;
  allowance_ = (FIRST_ALLOWANCE + ALLOWED_PART * work_) / static_cast<double>(levels_.size());
  for (std::size_t t = 0; t < bounds_.levels(); ++t) decide(t);
}

const AdaptiveBounds::Range* AdaptiveBounds::ask(std::size_t t, const std::vector<double>& lambda) {
  Level& level = levels_[t];
  if (states_[t] == State::WANTED) {
    const auto before = static_cast<double>(bounds_.work());
    level.range = rangeAt(t, lambda);
    states_[t] = State::KNOWN;
    charge(t, static_cast<double>(bounds_.work()) - before);
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

void AdaptiveBounds::charge(std::size_t t, double cost) {
  Level& level = levels_[t];
  work_ += cost;
  trial_.work += cost;
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
  if (t == 0 || trial_.isRunning) return false;
  if (level.trials >= FIRST_TRIALS && level.untilTrial > 0) {
    --level.untilTrial;
    return false;
  }
  level.untilTrial = BETWEEN_TRIALS;
  trial_ = {true, t, 0, CONVINCING * level.cost / level.cuts};
  return true;
}

std::size_t AdaptiveBounds::endTrial(std::size_t t) {
  Level& level = levels_[trial_.level];
  ++level.trials;
  level.trialCost += trial_.work;
  trial_.isRunning = false;
  decide(trial_.level);
  return std::max(t, trial_.level);
}

unsigned long AdaptiveBounds::trialCandidates() const {
  if (!trial_.isRunning) return std::numeric_limits<unsigned long>::max() / 2;
  return static_cast<unsigned long>(std::max(0.0, (trial_.limit - trial_.work) / candidateWork_)) + 1;
}

bool AdaptiveBounds::pays(const Level& level) const {
  const double saving = level.trials > 0 ? level.trialCost / level.trials : candidateWork_;
  return level.cuts * saving > level.cost;
}

void AdaptiveBounds::decide(std::size_t t) {
  Level& level = levels_[t];
  const double expected =
      level.bounds > 0 ? level.cost / level.bounds : static_cast<double>(bounds_.firstWork(t));
  level.isOn = pays(level) || level.unpaid + expected <= allowance_;
}

}  // namespace latbox::complete
