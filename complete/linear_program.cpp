#include "complete/linear_program.h"

#include <algorithm>

namespace latbox::complete {

LinearProgram::LinearProgram(const IntegerProgram& program) {
  substitute(program);
  for (const Row& row : program.rows) {
    if (row.range.high) addRow(row.a, 1, *row.range.high);
    if (row.range.low) addRow(row.a, -1, Integer(-*row.range.low));
  }
  addUpperBounds(program);
  for (std::size_t j = 0; j < columns_; ++j) nonbasic_.push_back(j);
  for (std::size_t i = 0; i < dictionary_.size(); ++i) basic_.push_back(columns_ + i);
  makeFeasible();
}

void LinearProgram::substitute(const IntegerProgram& program) {
  for (const Range& range : program.box) {
    Substitution s;
    s.first = columns_++;
    if (range.low)
      s.shift = *range.low;
    else if (range.high)
      s = {*range.high, -1, s.first, {}};
    else
      s.second = columns_++;
    substitutions_.push_back(s);
  }
}

// sign * (a z) <= side, as slack = side - ...
void LinearProgram::addRow(const IntegerVector& a, int sign, const Integer& side) {
  std::vector<Rational> row(columns_ + 1);
  row.back() = side;
  for (std::size_t j = 0; j < a.size(); ++j) {
    if (a[j] == 0) continue;
    const Substitution& s = substitutions_[j];
    row.back() -= sign * a[j] * s.shift;
    row[s.first] = -sign * s.sign * a[j];
    if (s.second) row[*s.second] = sign * a[j];
  }
  dictionary_.push_back(std::move(row));
}

void LinearProgram::addUpperBounds(const IntegerProgram& program) {
  for (std::size_t j = 0; j < program.box.size(); ++j) {
    if (!program.box[j].isFinite()) continue;
    std::vector<Rational> row(columns_ + 1);
    row[substitutions_[j].first] = -1;
    row.back() = Rational(Integer(*program.box[j].high - *program.box[j].low));
    dictionary_.push_back(std::move(row));
  }
}

// An auxiliary variable is added to every row; the least value that it can have is 0 if and only if all rows
// can be kept.
void LinearProgram::makeFeasible() {
  std::size_t worst = 0;
  for (std::size_t i = 0; i < dictionary_.size(); ++i)
    if (dictionary_[i].back() < dictionary_[worst].back()) worst = i;
  if (dictionary_.empty() || dictionary_[worst].back() >= 0) return;
  const std::size_t auxiliary = columns_ + dictionary_.size();
  for (std::vector<Rational>& row : dictionary_) row.insert(row.end() - 1, Rational(1));
  nonbasic_.push_back(auxiliary);
  std::vector<Rational> objective(nonbasic_.size() + 1);
  objective[nonbasic_.size() - 1] = -1;
  dictionary_.push_back(std::move(objective));
  pivot(worst, nonbasic_.size() - 1);
  maximise();
  feasible_ = dictionary_.back().back() == 0;
  dictionary_.pop_back();
  if (feasible_) removeAuxiliary(auxiliary);
}

void LinearProgram::removeAuxiliary(std::size_t auxiliary) {
  const auto basic = std::find(basic_.begin(), basic_.end(), auxiliary);
  if (basic != basic_.end()) {
    // Its value is 0: any column takes its place.
    const auto row = static_cast<std::size_t>(basic - basic_.begin());
    std::size_t column = 0;
    while (column < nonbasic_.size() && dictionary_[row][column] == 0) ++column;
    if (column == nonbasic_.size()) {
      dictionary_.erase(dictionary_.begin() + static_cast<std::ptrdiff_t>(row));
      basic_.erase(basic);
      return;
    }
    pivot(row, column);
  }
  const auto at = std::find(nonbasic_.begin(), nonbasic_.end(), auxiliary) - nonbasic_.begin();
  nonbasic_.erase(nonbasic_.begin() + at);
  for (std::vector<Rational>& row : dictionary_) row.erase(row.begin() + at);
}

std::optional<std::size_t> LinearProgram::entering() const {
  std::optional<std::size_t> best;
  for (std::size_t c = 0; c < nonbasic_.size(); ++c)
    if (dictionary_.back()[c] > 0 && (!best || nonbasic_[c] < nonbasic_[*best])) best = c;
  return best;
}

// The row that bounds the column first; among equals the one of the least variable.
std::optional<std::size_t> LinearProgram::leaving(std::size_t column) const {
  std::optional<std::size_t> best;
  Rational least;
  for (std::size_t i = 0; i < basic_.size(); ++i) {
    if (dictionary_[i][column] >= 0) continue;
    const Rational ratio = dictionary_[i].back() / -dictionary_[i][column];
    if (best && (ratio > least || (ratio == least && basic_[i] > basic_[*best]))) continue;
    best = i;
    least = ratio;
  }
  return best;
}

bool LinearProgram::maximise() {
  while (const auto column = entering()) {
    const auto row = leaving(*column);
    if (!row) return false;
    pivot(*row, *column);
  }
  return true;
}

void LinearProgram::pivot(std::size_t row, std::size_t column) {
  std::vector<Rational>& solved = dictionary_[row];
  const Rational scale = -1 / solved[column];
  solved[column] = -1;
  for (Rational& entry : solved) entry *= scale;
  for (std::size_t i = 0; i < dictionary_.size(); ++i) {
    const Rational factor = dictionary_[i][column];
    if (i == row || factor == 0) continue;
    dictionary_[i][column] = 0;
    for (std::size_t j = 0; j < solved.size(); ++j)
      if (solved[j] != 0) dictionary_[i][j] += factor * solved[j];
  }
  std::swap(basic_[row], nonbasic_[column]);
}

LinearOptimum LinearProgram::greatest(std::size_t j, int sign) {
  const Substitution& s = substitutions_[j];
  std::vector<Rational> objective(nonbasic_.size() + 1);
  objective.back() = sign * s.shift;
  const auto add = [&](std::size_t variable, int factor) {
    for (std::size_t c = 0; c < nonbasic_.size(); ++c)
      if (nonbasic_[c] == variable) objective[c] += factor;
    for (std::size_t i = 0; i < basic_.size(); ++i)
      for (std::size_t c = 0; basic_[i] == variable && c < objective.size(); ++c)
        objective[c] += factor * dictionary_[i][c];
  };
  add(s.first, sign * s.sign);
  if (s.second) add(*s.second, -sign);
  dictionary_.push_back(std::move(objective));
  const bool bounded = maximise();
  LinearOptimum optimum{bounded ? LinearOptimum::OPTIMAL : LinearOptimum::UNBOUNDED,
                        dictionary_.back().back()};
  dictionary_.pop_back();
  return optimum;
}

}  // namespace latbox::complete
