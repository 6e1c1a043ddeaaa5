#include "check/numbers/row.h"

#include <algorithm>
#include <utility>

namespace latbox::check {
namespace {

Rational commonDenominator(const std::vector<Rational>& values) {
  mpz_class common = 1;
  for (const Rational& value : values)
    if (!value.isWhole()) common = lcm(common, value.exact().get_den());
  return Rational(mpq_class(common));
}

}  // namespace

Scaled::Scaled(std::vector<Rational> values)
    : values_(std::move(values)), denominator_(commonDenominator(values_)) {
  words_.reserve(values_.size());
  for (const Rational& value : values_) {
    const Rational whole = value * denominator_;
    if (!whole.isWord()) break;
    words_.push_back(whole.word());
  }
  if (words_.size() == values_.size()) return;
  for (const Rational& value : values_) longs_.push_back((value * denominator_).exact().get_num());
}

Row::Row(std::vector<Rational> coefficients) : coefficients_(std::move(coefficients)) {
  for (std::size_t j = 0; j < size(); ++j)
    if (coefficients_[j] != 0) places_.push_back(j);
}

Rational Row::times(const Scaled& x) const {
  const auto word = sumInWords(x);
  const Rational total = word ? Rational(*word) : Rational(mpq_class(sum(x)));
  if (isWhole() && x.isWhole()) return total;
  return total / (coefficients_.denominator() * x.denominator());
}

std::optional<long> Row::sumInWords(const Scaled& x) const {
  if (!coefficients_.fit() || !x.fit()) return std::nullopt;
  long total = 0;
  bool overflows = false;
  for (const std::size_t j : places_) {
    long term = 0;
    overflows |= __builtin_mul_overflow(coefficients_.words()[j], x.words()[j], &term);
    overflows |= __builtin_add_overflow(total, term, &total);
  }
  return overflows ? std::nullopt : std::optional(total);
}

mpz_class Row::sum(const Scaled& x) const {
  mpz_class total;
  for (const std::size_t j : places_) total += coefficients_.whole(j) * x.whole(j);
  return total;
}

}  // namespace latbox::check
