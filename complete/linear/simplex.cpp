#include "complete/linear/simplex.h"

#include <cmath>
#include <limits>
#include <utility>

namespace latbox::complete {
namespace {

// What counts as more than 0. Callers scale a program for double, so that its numbers are about 1.
bool isPositive(double value) {
  return value > 1e-9;
}

bool isPositive(const Rational& value) {
  return value > 0;
}

double magnitude(double value) {
  return std::fabs(value);
}

Rational magnitude(const Rational& value) {
  return abs(value);
}

}  // namespace

template <class R>
Simplex<R>::Simplex(std::vector<std::vector<R>> rows, std::vector<Bounds<R>> bounds, unsigned long effort)
    : dictionary_(std::move(rows)),
      bounds_(std::move(bounds)),
      effort_(effort == 0 ? std::numeric_limits<unsigned long>::max() : effort) {
  const std::size_t columns = bounds_.size() - dictionary_.size();
  for (std::size_t v = 0; v < bounds_.size(); ++v) {
    (v < columns ? nonbasic_ : basic_).push_back(v);
    places_.push_back(v < columns ? dictionary_.size() + v : v - columns);
    values_.push_back(v < columns ? bounds_[v].low.value_or(bounds_[v].high.value_or(R(0))) : R(0));
  }
  for (std::size_t i = 0; i < dictionary_.size(); ++i)
    for (std::size_t j = 0; j < columns; ++j) values_[columns + i] += dictionary_[i][j] * values_[j];
}

// 1: the variable is below its bounds, -1: above.
template <class R>
std::optional<int> Simplex<R>::wrongSide(std::size_t variable) const {
  const auto& [low, high] = bounds_[variable];
  if (low && isPositive(*low - values_[variable])) return 1;
  if (high && isPositive(values_[variable] - *high)) return -1;
  return std::nullopt;
}

// Nothing is held to a bound that it breaks.
template <class R>
void Simplex<R>::holdBounds() {
  low_.assign(bounds_.size(), nullptr);
  high_.assign(bounds_.size(), nullptr);
  for (std::size_t v = 0; v < bounds_.size(); ++v) {
    const std::optional<int> wrong = wrongSide(v);
    if (bounds_[v].low && wrong != 1) low_[v] = &*bounds_[v].low;
    if (bounds_[v].high && wrong != -1) high_[v] = &*bounds_[v].high;
  }
}

// What is within its bounds stays there, so that each turn saves one more; rounding may undo that.
template <class R>
typename Simplex<R>::End Simplex<R>::makeFeasible() {
  for (std::size_t turns = 2 * dictionary_.size() + 1; turns > 0; --turns) {
    const std::optional<std::size_t> v = firstWrong();
    if (!v) return End::OPTIMAL;
    const int direction = *wrongSide(*v);
    holdBounds();
    // The bound that it breaks is where it may stop.
    if (direction > 0)
      high_[*v] = &*bounds_[*v].low;
    else
      low_[*v] = &*bounds_[*v].high;
    if (push(*v, direction) == End::GIVEN_UP) return End::GIVEN_UP;
    if (wrongSide(*v)) return End::INFEASIBLE;
  }
  return End::GIVEN_UP;
}

template <class R>
std::optional<std::size_t> Simplex<R>::firstWrong() const {
  for (std::size_t v = 0; v < bounds_.size(); ++v)
    if (wrongSide(v)) return v;
  return std::nullopt;
}

template <class R>
typename Simplex<R>::End Simplex<R>::maximise(std::size_t variable, int sign) {
  holdBounds();
  return push(variable, sign);
}

template <class R>
typename Simplex<R>::End Simplex<R>::push(std::size_t variable, int sign) {
  asked_ = variable;
  sign_ = sign;
  std::size_t stalls = 0;
  while (work_ < effort_) {
    const bool byNumber = stalls > bounds_.size();
    const std::optional<Move> move = entering(byNumber);
    if (!move) return End::OPTIMAL;
    const Block block = firstBlock(*move, byNumber);
    if (!block.end) return End::UNBOUNDED;
    stalls = isPositive(block.step) ? 0 : stalls + 1;
    carryOut(*move, block);
  }
  return End::GIVEN_UP;
}

// What raises the variable that was asked for, most for a step of 1.
template <class R>
std::optional<typename Simplex<R>::Move> Simplex<R>::entering(bool byNumber) const {
  if (isNonbasic(asked_)) {
    if (!canMove(asked_, sign_)) return std::nullopt;
    return Move{columnOf(asked_), sign_};
  }
  const std::vector<R>& row = dictionary_[places_[asked_]];
  std::optional<Move> best;
  for (std::size_t c = 0; c < row.size(); ++c) {
    if (!isPositive(magnitude(row[c]))) continue;
    const int direction = row[c] > 0 ? sign_ : -sign_;
    if (!canMove(nonbasic_[c], direction)) continue;
    if (best && byNumber && nonbasic_[c] > nonbasic_[best->column]) continue;
    if (best && !byNumber && magnitude(row[c]) <= magnitude(row[best->column])) continue;
    best = Move{c, direction};
  }
  return best;
}

template <class R>
bool Simplex<R>::canMove(std::size_t variable, int direction) const {
  const R* end = direction > 0 ? high_[variable] : low_[variable];
  return !end || (direction > 0 ? values_[variable] < *end : values_[variable] > *end);
}

template <class R>
typename Simplex<R>::Block Simplex<R>::firstBlock(const Move& move, bool byNumber) const {
  const std::size_t moved = nonbasic_[move.column];
  Block best;
  R bestRate(1);
  best.end = move.direction > 0 ? high_[moved] : low_[moved];
  if (best.end) best.step = magnitude(R(*best.end - values_[moved]));
  for (std::size_t i = 0; i < dictionary_.size(); ++i) {
    const R rate = dictionary_[i][move.column] * move.direction;
    if (!isPositive(magnitude(rate))) continue;
    Block block{R(0), i, rate > 0 ? high_[basic_[i]] : low_[basic_[i]]};
    if (!block.end) continue;
    block.step = (*block.end - values_[basic_[i]]) / rate;
    if (block.step < 0) block.step = 0;
    if (best.end && !isEarlier(block, rate, best, bestRate, byNumber)) continue;
    best = block;
    bestRate = rate;
  }
  return best;
}

// Among equals the greatest divisor, which is good for rounding, or the least variable, which ends for sure.
template <class R>
bool Simplex<R>::isEarlier(const Block& candidate, const R& rate, const Block& best, const R& bestRate,
                           bool byNumber) const {
  if (isPositive(best.step - candidate.step)) return true;
  if (isPositive(candidate.step - best.step)) return false;
  if (!best.row) return false;
  return byNumber ? basic_[*candidate.row] < basic_[*best.row] : magnitude(rate) > magnitude(bestRate);
}

template <class R>
void Simplex<R>::carryOut(const Move& move, const Block& block) {
  const std::size_t moved = nonbasic_[move.column];
  const R step = block.step * move.direction;
  for (std::size_t i = 0; i < dictionary_.size(); ++i)
    if (dictionary_[i][move.column] != 0) values_[basic_[i]] += dictionary_[i][move.column] * step;
  values_[moved] += step;
  values_[block.row ? basic_[*block.row] : moved] = *block.end;
  if (block.row) pivot(*block.row, move.column);
  work_ += dictionary_.size();
}

template <class R>
void Simplex<R>::pivot(std::size_t row, std::size_t column) {
  std::vector<R>& solved = dictionary_[row];
  const R divisor = solved[column];
  for (R& entry : solved) entry /= -divisor;
  solved[column] = R(1) / divisor;
  for (std::size_t i = 0; i < dictionary_.size(); ++i) {
    const R factor = dictionary_[i][column];
    if (i == row || factor == 0) continue;
    dictionary_[i][column] = 0;
    for (std::size_t c = 0; c < solved.size(); ++c)
      if (solved[c] != 0) dictionary_[i][c] += factor * solved[c];
  }
  std::swap(basic_[row], nonbasic_[column]);
  places_[basic_[row]] = row;
  places_[nonbasic_[column]] = dictionary_.size() + column;
  work_ += dictionary_.size() * solved.size();
}

template <class R>
std::vector<R> Simplex<R>::multipliers() const {
  const std::size_t columns = nonbasic_.size();
  std::vector<R> y(dictionary_.size());
  const auto set = [&](std::size_t variable, const R& count) {
    if (variable >= columns) y[variable - columns] = count * sign_;
  };
  if (isNonbasic(asked_))
    set(asked_, R(1));
  else
    for (std::size_t c = 0; c < columns; ++c) set(nonbasic_[c], dictionary_[places_[asked_]][c]);
  return y;
}

template class Simplex<double>;
template class Simplex<Rational>;

}  // namespace latbox::complete
