// Exact rationals of any length.
//
// Nearly all numbers of nearly all files are short: these are two machine words, and every operation on them
// that would overflow is left to GMP, as all else is. So a short number needs no memory of its own, and files
// of millions of them are read and judged several times as fast as by GMP alone.
#pragma once

#include <gmpxx.h>

#include <compare>
#include <cstdint>
#include <memory>

namespace latbox::check {

class Rational {
 public:
  Rational() = default;
  // Implicit: a whole number is a rational.
  Rational(long whole) : numerator_(whole) {}
  // Requires: lowest terms, in which GMP's own operations leave a rational.
  explicit Rational(const mpq_class& value);

  bool isWhole() const { return isShort() ? denominator_ == 1 : long_->get_den() == 1; }
  // Whether it is whole and fits a machine word, and that word.
  bool isWord() const { return isShort() && denominator_ == 1; }
  long word() const { return numerator_; }
  // The value in GMP's form.
  mpq_class exact() const;
  // A function of the value. Few other values have the same one.
  std::uint64_t digest() const;

  friend Rational operator+(const Rational& a, const Rational& b);
  friend Rational operator-(const Rational& a, const Rational& b) { return a + -b; }
  friend Rational operator*(const Rational& a, const Rational& b);
  // Requires: b is not 0.
  friend Rational operator/(const Rational& a, const Rational& b);
  Rational operator-() const;
  Rational& operator+=(const Rational& b) { return *this = *this + b; }

  friend bool operator==(const Rational& a, const Rational& b) {
    if (!a.isShort() || !b.isShort()) return a.long_ && b.long_ && *a.long_ == *b.long_;
    return a.numerator_ == b.numerator_ && a.denominator_ == b.denominator_;
  }
  friend std::strong_ordering operator<=>(const Rational& a, const Rational& b) {
    return a.isWord() && b.isWord() ? a.numerator_ <=> b.numerator_ : compare(a, b);
  }

 private:
  bool isShort() const { return !long_; }
  static std::strong_ordering compare(const Rational& a, const Rational& b);
  // Requires: denominator > 0.
  static Rational inLowestTerms(long numerator, long denominator);

  // In lowest terms, the denominator above 0.
  long numerator_ = 0;
  long denominator_ = 1;
  // The value if these do not fit it, and only then: each value has one form. Shared, for it never changes.
  std::shared_ptr<const mpq_class> long_;
};

Rational abs(const Rational& value);

}  // namespace latbox::check
