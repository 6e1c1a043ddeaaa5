#include "complete/linear/relaxation.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "complete/linear/row_operations.h"

namespace latbox::complete {
namespace {

// A row this far outside of the box counts as inside.
constexpr double TOLERANCE = 1e-9;
// Entries below this are taken for rounding where a pivot is asked for.
constexpr double SMALLEST_PIVOT = 1e-7;
// Steps between two dictionaries made from the basis itself.
constexpr unsigned LONGEST_CHAIN = 1000;
// Of a run without a basis: less than a second for the largest dictionaries.
constexpr std::size_t FEW_STEPS = 100;

}  // namespace

Relaxation::Relaxation(const std::vector<std::vector<double>>& basis, Dictionary dictionary, int sign)
    : basis_(&basis),
      dictionary_(std::move(dictionary)),
      sign_(sign),
      mostSteps_(2 * dictionary_.columns.size() + 20),
      atHigh_(dictionary_.columns.size()),
      displacements_(dictionary_.stride),
      values_(dictionary_.rows.size() + 1) {
  candidates_.reserve(atHigh_.size());
  weights_.coordinates.reserve(atHigh_.size() + 1);
  weights_.entries.reserve(atHigh_.size() + 1);
}

Relaxation::Relaxation(Dictionary dictionary) : Relaxation({}, dictionary, 1) {
  basis_ = nullptr;
  origin_ = std::move(dictionary);
  mostSteps_ = FEW_STEPS;
}

bool Relaxation::makeDictionary() {
  if (!basis_) {
    dictionary_ = *origin_;
  } else {
    DictionaryBuilder builder(*basis_, dictionary_.columns);
    for (std::size_t c = 0; c < dictionary_.columns.size(); ++c) {
      work_ += 2 * basis_->front().size() * dictionary_.stride;
      if (!builder.addLevel()) return false;
    }
    dictionary_ = builder.dictionary(sign_);
  }
  steps_ = 0;
  isStale_ = false;
  isUntold_ = true;
  return true;
}

void Relaxation::placeColumns(const std::vector<double>& partial, const RealBox& box) {
  const double* d = dictionary_.objective();
  for (std::size_t c = 0; c < atHigh_.size(); ++c) {
    if (d[c] != 0) atHigh_[c] = d[c] > 0;
    const std::size_t j = dictionary_.columns[c];
    displacements_[c] = (atHigh_[c] != 0 ? box.high[j] : box.low[j]) - partial[j];
  }
}

void Relaxation::evaluate() {
  multiply({dictionary_.entries.data(), values_.size(), dictionary_.stride}, displacements_.data(),
           values_.data());
  work_ += dictionary_.entries.size();
}

// The row that is farthest out, and by how much: positive above, negative below.
std::size_t Relaxation::farthestOut(const std::vector<double>& partial, const RealBox& box,
                                    double& gap) const {
  std::size_t farthest = dictionary_.rows.size();
  gap = 0;
  double most = TOLERANCE;
  for (std::size_t r = 0; r < dictionary_.rows.size(); ++r) {
    const std::size_t j = dictionary_.rows[r];
    const double value = values_[r] + partial[j];
    const double above = value - box.high[j];
    const double below = box.low[j] - value;
    if (above <= most && below <= most) continue;
    farthest = r;
    most = std::max(above, below);
    gap = above > below ? above : -below;
  }
  return farthest;
}

// The column for which row r is exchanged. Columns that let the objective fall less and cannot close the gap
// go to their other ends. False: no column is left, and a gap remains.
bool Relaxation::chooseColumn(std::size_t r, const RealBox& box, double gap, std::size_t& chosen) {
  listCandidates(r, box, gap > 0 ? -1 : 1);
  double open = std::fabs(gap);
  // Of equals, the one with the largest pivot.
  const auto isLater = [](const Candidate& a, const Candidate& b) {
    return a.loss > b.loss || (a.loss == b.loss && a.gain < b.gain);
  };
  std::make_heap(candidates_.begin(), candidates_.end(), isLater);
  for (; !candidates_.empty(); candidates_.pop_back()) {
    std::pop_heap(candidates_.begin(), candidates_.end(), isLater);
    const Candidate& best = candidates_.back();
    chosen = best.column;
    const std::size_t j = dictionary_.columns[chosen];
    const double width = box.high[j] - box.low[j];
    open -= best.gain * width;
    if (open <= TOLERANCE) return true;
    displacements_[chosen] += atHigh_[chosen] != 0 ? -width : width;
    atHigh_[chosen] ^= 1;
  }
  return false;
}

// The columns that move row r in the direction when they leave their ends.
void Relaxation::listCandidates(std::size_t r, const RealBox& box, double direction) {
  candidates_.clear();
  forCandidates(r, box, direction, [&](const Candidate& candidate) { candidates_.push_back(candidate); });
}

template <class Take>
void Relaxation::forCandidates(std::size_t r, const RealBox& box, double direction, Take take) const {
  const double* a = dictionary_.row(r);
  const double* d = dictionary_.objective();
  for (std::size_t c = 0; c < atHigh_.size(); ++c) {
    const double gain = direction * (atHigh_[c] != 0 ? -a[c] : a[c]);
    const std::size_t j = dictionary_.columns[c];
    if (gain > SMALLEST_PIVOT && box.low[j] < box.high[j]) take(Candidate{std::fabs(d[c]) / gain, gain, c});
  }
}

Relaxation::Step Relaxation::step(const std::vector<double>& partial, const RealBox& box) {
  double gap = 0;
  const std::size_t r = farthestOut(partial, box, gap);
  if (r == dictionary_.rows.size()) return Step::DONE;
  const bool above = gap > 0;
  std::size_t column = 0;
  if (!chooseColumn(r, box, gap, column)) {
    tellRow(r, above ? -1 : 1);
    return Step::EMPTY;
  }
  exchange(dictionary_, r, column);
  const std::size_t j = dictionary_.columns[column];
  atHigh_[column] = above;
  displacements_[column] = (above ? box.high[j] : box.low[j]) - partial[j];
  isUntold_ = true;
  ++steps_;
  work_ += dictionary_.entries.size();
  evaluate();
  return Step::TAKEN;
}

void Relaxation::tellObjective() {
  const double* d = dictionary_.objective();
  weights_.coordinates.assign(dictionary_.columns.begin(), dictionary_.columns.end());
  weights_.entries.assign(d, d + atHigh_.size());
}

// direction * (sum_j A_rj (u_j - p_j) - (u_r - p_r)) is 0.
void Relaxation::tellRow(std::size_t r, double direction) {
  weights_.coordinates.assign(dictionary_.columns.begin(), dictionary_.columns.end());
  weights_.entries.clear();
  for (std::size_t c = 0; c < atHigh_.size(); ++c)
    weights_.entries.push_back(direction * dictionary_.row(r)[c]);
  weights_.coordinates.push_back(dictionary_.rows[r]);
  weights_.entries.push_back(-direction);
}

void Relaxation::takePoint(std::vector<double>& moves) const {
  for (std::size_t c = 0; c < dictionary_.columns.size(); ++c)
    moves[dictionary_.columns[c]] = displacements_[c];
  for (std::size_t r = 0; r < dictionary_.rows.size(); ++r) moves[dictionary_.rows[r]] = values_[r];
}

double Relaxation::lossOf(std::size_t r, const RealBox& box, double direction) const {
  double least = std::numeric_limits<double>::infinity();
  forCandidates(r, box, direction,
                [&](const Candidate& candidate) { least = std::min(least, candidate.loss); });
  return least;
}

Relaxation::Outcome Relaxation::run(const std::vector<double>& partial, const RealBox& box, double enough) {
  if ((isStale_ || steps_ > LONGEST_CHAIN) && !makeDictionary()) return Outcome::FAILED;
  placeColumns(partial, box);
  evaluate();
  hasEnded_ = false;
  for (std::size_t steps = 0; steps < mostSteps_ && !hasEnded_ && values_.back() >= enough; ++steps) {
    const Step taken = step(partial, box);
    if (taken == Step::EMPTY) return Outcome::EMPTY;
    hasEnded_ = taken == Step::DONE;
  }
  isChanged_ = isUntold_;
  isUntold_ = false;
  tellObjective();
  return Outcome::BOUND;
}

}  // namespace latbox::complete
