#include "complete/relaxation.h"

#include <algorithm>
#include <cmath>

#include "complete/hot_loops.h"

namespace latbox::complete {
namespace {

// A row this far outside of the box counts as inside.
constexpr double TOLERANCE = 1e-9;
// Entries below this are taken for rounding where a pivot is asked for.
constexpr double SMALLEST_PIVOT = 1e-7;
// Steps between two dictionaries made from the basis itself.
constexpr unsigned LONGEST_CHAIN = 1000;

// The variable of a row and that of a column change places.
void exchangeIn(Rows rows, std::size_t r, std::size_t column) {
  double* pivot = rows.entries + r * rows.stride;
  const double inverse = 1 / pivot[column];
  for (std::size_t c = 0; c < rows.stride; ++c) pivot[c] *= -inverse;
  pivot[column] = inverse;
  eliminate(rows, r, column);
}

}  // namespace

Relaxation::Relaxation(const std::vector<std::vector<double>>& basis, std::size_t level, int sign)
    : basis_(basis), level_(level), sign_(sign), stride_((level + WIDTH) / WIDTH * WIDTH) {}

// Gauss-Jordan elimination: from u_j - p_j = sum lambda_i K_ij, in which the lambda_i are the columns, to a
// dictionary. Which coordinates become columns is chosen by the largest pivots, or stays as it was.
bool Relaxation::makeDictionary() {
  const std::size_t count = basis_.front().size();
  std::vector<double> table((count + 1) * stride_);
  for (std::size_t i = 0; i <= level_; ++i)
    for (std::size_t j = 0; j < count; ++j) table[j * stride_ + i] = basis_[i][j];
  table[count * stride_ + level_] = sign_;
  std::vector<char> isOpen(count, columns_.empty());
  for (const std::size_t j : columns_) isOpen[j] = true;
  columns_.clear();
  for (std::size_t i = 0; i <= level_; ++i) {
    std::size_t chosen = count;
    double largest = 0;
    for (std::size_t j = 0; j < count; ++j) {
      const double size = std::fabs(table[j * stride_ + i]);
      if (isOpen[j] == 0 || !(size > largest)) continue;
      largest = size;
      chosen = j;
    }
    if (chosen == count) {
      entries_.clear();
      return false;
    }
    isOpen[chosen] = false;
    columns_.push_back(chosen);
    // The row becomes that of lambda_i, which nobody asks for.
    exchangeIn({table.data(), count + 1, stride_}, chosen, i);
  }
  takeOver(table);
  return true;
}

void Relaxation::takeOver(const std::vector<double>& table) {
  const std::size_t count = basis_.front().size();
  std::vector<char> isColumn(count + 1);
  for (const std::size_t j : columns_) isColumn[j] = true;
  rows_.clear();
  entries_.clear();
  for (std::size_t j = 0; j <= count; ++j) {
    if (isColumn[j] != 0) continue;
    if (j < count) rows_.push_back(j);
    const auto from = table.begin() + static_cast<std::ptrdiff_t>(j * stride_);
    entries_.insert(entries_.end(), from, from + static_cast<std::ptrdiff_t>(stride_));
  }
  atHigh_.assign(columnCount(), 0);
  displacements_.assign(stride_, 0);
  values_.assign(rows_.size() + 1, 0);
  candidates_.reserve(columnCount());
  weights_.coordinates.reserve(columnCount() + 1);
  weights_.entries.reserve(columnCount() + 1);
  steps_ = 0;
  isStale_ = false;
  isUntold_ = true;
  work_ += columnCount() * table.size();
}

void Relaxation::placeColumns(const std::vector<double>& partial, const RealBox& box) {
  const double* d = objective();
  for (std::size_t c = 0; c < columnCount(); ++c) {
    if (d[c] != 0) atHigh_[c] = d[c] > 0;
    const std::size_t j = columns_[c];
    displacements_[c] = (atHigh_[c] != 0 ? box.high[j] : box.low[j]) - partial[j];
  }
}

void Relaxation::evaluate() {
  multiply({entries_.data(), values_.size(), stride_}, displacements_.data(), values_.data());
  work_ += entries_.size();
}

// The row that is farthest out, and by how much: positive above, negative below.
std::size_t Relaxation::farthestOut(const std::vector<double>& partial, const RealBox& box,
                                    double& gap) const {
  std::size_t farthest = rows_.size();
  gap = 0;
  double most = TOLERANCE;
  for (std::size_t r = 0; r < rows_.size(); ++r) {
    const std::size_t j = rows_[r];
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
    const std::size_t j = columns_[chosen];
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
  const double* a = row(r);
  const double* d = objective();
  candidates_.clear();
  for (std::size_t c = 0; c < columnCount(); ++c) {
    const double gain = direction * (atHigh_[c] != 0 ? -a[c] : a[c]);
    const std::size_t j = columns_[c];
    if (gain > SMALLEST_PIVOT && box.low[j] < box.high[j])
      candidates_.push_back({std::fabs(d[c]) / gain, gain, c});
  }
}

void Relaxation::exchange(std::size_t r, std::size_t column, bool toHigh) {
  exchangeIn({entries_.data(), values_.size(), stride_}, r, column);
  std::swap(rows_[r], columns_[column]);
  atHigh_[column] = toHigh;
  isUntold_ = true;
  ++steps_;
  work_ += entries_.size();
}

Relaxation::Step Relaxation::step(const std::vector<double>& partial, const RealBox& box) {
  double gap = 0;
  const std::size_t r = farthestOut(partial, box, gap);
  if (r == rows_.size()) return Step::DONE;
  const bool above = gap > 0;
  std::size_t column = 0;
  if (!chooseColumn(r, box, gap, column)) {
    tellRow(r, above ? -1 : 1);
    return Step::EMPTY;
  }
  exchange(r, column, above);
  const std::size_t j = columns_[column];
  displacements_[column] = (above ? box.high[j] : box.low[j]) - partial[j];
  evaluate();
  return Step::TAKEN;
}

void Relaxation::tellObjective() {
  weights_.coordinates.assign(columns_.begin(), columns_.end());
  weights_.entries.assign(objective(), objective() + columnCount());
}

// direction * (sum_j A_rj (u_j - p_j) - (u_r - p_r)) is 0.
void Relaxation::tellRow(std::size_t r, double direction) {
  weights_.coordinates.assign(columns_.begin(), columns_.end());
  weights_.entries.clear();
  for (std::size_t c = 0; c < columnCount(); ++c) weights_.entries.push_back(direction * row(r)[c]);
  weights_.coordinates.push_back(rows_[r]);
  weights_.entries.push_back(-direction);
}

Relaxation::Outcome Relaxation::run(const std::vector<double>& partial, const RealBox& box, double enough) {
  if ((entries_.empty() || isStale_ || steps_ > LONGEST_CHAIN) && !makeDictionary()) return Outcome::FAILED;
  placeColumns(partial, box);
  evaluate();
  const std::size_t mostSteps = 2 * columnCount() + 20;
  for (std::size_t steps = 0; steps < mostSteps && values_.back() >= enough; ++steps) {
    const Step taken = step(partial, box);
    if (taken == Step::EMPTY) return Outcome::EMPTY;
    if (taken == Step::DONE) break;
  }
  isChanged_ = isUntold_;
  isUntold_ = false;
  tellObjective();
  return Outcome::BOUND;
}

}  // namespace latbox::complete
