// The product of a row of coefficients and a point: the sum that nearly all of a judgement is made of.
//
// Both are whole numbers over one denominator, so that a product is a sum of whole numbers and a single
// division, whatever fractions there are. It goes over the places where the row is not 0, in machine words
// where all numbers fit and no step overflows, else by GMP.
#pragma once

#include <optional>
#include <vector>

#include "check/numbers/rational.h"

namespace latbox::check {

// Rationals, also as whole numbers over their common denominator.
class Scaled {
 public:
  explicit Scaled(std::vector<Rational> values);

  std::size_t size() const { return values_.size(); }
  const Rational& operator[](std::size_t j) const { return values_[j]; }
  bool isWhole() const { return denominator_ == 1; }

  const Rational& denominator() const { return denominator_; }
  // Value j times the denominator.
  mpz_class whole(std::size_t j) const { return fit() ? mpz_class(words_[j]) : longs_[j]; }
  // Whether all of these fit machine words, and the words.
  bool fit() const { return longs_.empty(); }
  const std::vector<long>& words() const { return words_; }

 private:
  std::vector<Rational> values_;
  Rational denominator_ = 1;
  std::vector<long> words_;
  std::vector<mpz_class> longs_;
};

class Row {
 public:
  explicit Row(std::vector<Rational> coefficients);

  std::size_t size() const { return coefficients_.size(); }
  const Rational& operator[](std::size_t j) const { return coefficients_[j]; }
  bool isWhole() const { return coefficients_.isWhole(); }

  // The row times x, exactly.
  // Requires: x has the row's size.
  Rational times(const Scaled& x) const;

 private:
  // Nothing if it does not fit, or something on the way to it.
  std::optional<long> sumInWords(const Scaled& x) const;
  mpz_class sum(const Scaled& x) const;

  Scaled coefficients_;
  // Where they are not 0.
  std::vector<std::size_t> places_;
};

}  // namespace latbox::check
