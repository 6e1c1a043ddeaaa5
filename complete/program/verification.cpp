#include "complete/program/verification.h"

#include <algorithm>
#include <stdexcept>

namespace latbox::complete {
namespace {

bool isBelow(const Integer& value, long limit) {
  return abs(value) < limit;
}

}  // namespace

Verification::Verification(const Program& program) : program_(program), isShort_(listShort()) {}

bool Verification::listShort() {
  for (std::size_t j = 0; j < program_.variables(); ++j) {
    const Number& low = program_.lower[j];
    const Number& high = program_.upper[j];
    if (!low.finite() || !high.finite()) return false;
    const Integer steps = powerOfTen(program_.digits[j]);
    const Integer least = ceilOf(Rational(low.value * steps));
    const Integer most = floorOf(Rational(high.value * steps));
    if (!isBelow(least, LIMIT) || !isBelow(most, LIMIT)) return false;
    box_.emplace_back(least.get_si(), most.get_si());
  }
  for (std::size_t i = 0; i < program_.equations.size(); ++i)
    if (const Number side{0, program_.sides[i]}; !listRow(program_.equations[i], side, side)) return false;
  for (std::size_t i = 0; i < program_.inequations.size(); ++i)
    if (!listRow(program_.inequations[i], program_.lowerSides[i], program_.upperSides[i])) return false;
  return true;
}

// False: a number is too long, or the row is one that nothing keeps.
bool Verification::listRow(const std::vector<Rational>& row, const Number& low, const Number& high) {
  if (low.infinite > 0 || high.infinite < 0) return false;
  const std::vector<Rational> coefficients = perStep(program_, row);
  const Integer scale = commonDenominator(coefficients);
  Condition condition;
  Integer most = 0;
  for (std::size_t j = 0; j < row.size(); ++j) {
    if (coefficients[j] == 0) continue;
    const Integer a = Rational(coefficients[j] * scale).get_num();
    most += abs(a) * std::max(std::labs(box_[j].first), std::labs(box_[j].second));
    if (!isBelow(a, LIMIT)) return false;
    condition.words.push_back({j, a.get_si()});
  }
  if (!isBelow(most, LIMIT)) return false;
  // A side beyond all sums is as good as none, or as one that nothing keeps.
  const Integer least = low.finite() ? ceilOf(Rational(low.value * scale)) : Integer(-LIMIT);
  const Integer greatest = high.finite() ? floorOf(Rational(high.value * scale)) : Integer(LIMIT);
  condition.low = std::clamp<Integer>(least, -LIMIT, LIMIT).get_si();
  condition.high = std::clamp<Integer>(greatest, -LIMIT, LIMIT).get_si();
  conditions_.push_back(std::move(condition));
  return true;
}

bool Verification::keeps(const std::vector<long>& words) const {
  for (std::size_t j = 0; j < words.size(); ++j)
    if (words[j] < box_[j].first || words[j] > box_[j].second) return false;
  for (const Condition& condition : conditions_) {
    long sum = 0;
    for (const Word& word : condition.words) sum += word.coefficient * words[word.variable];
    if (sum < condition.low || sum > condition.high) return false;
  }
  return true;
}

bool Verification::keepsShort(const IntegerVector& z) const {
  std::vector<long> words(z.size());
  for (std::size_t j = 0; j < z.size(); ++j) {
    if (!z[j].fits_slong_p()) return false;
    words[j] = z[j].get_si();
  }
  return keeps(words);
}

Point Verification::pointOf(const IntegerVector& z) const {
  Point x;
  takePoint(x, z);
  return x;
}

void Verification::takePoint(Point& x, const IntegerVector& z) const {
  complete::takePoint(x, program_, z);
  if (!(isShort_ ? keepsShort(z) : isFeasible(program_, x)))
    throw std::logic_error("a point that was found is no point of the program");
}

}  // namespace latbox::complete
