// Exact numbers as the files write them: rationals of any length, and the two infinities.
#pragma once

#include <gmpxx.h>

#include <compare>
#include <cstdint>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>

namespace latbox::check {

// A rational of any length. Nearly all numbers of nearly all files are whole and short: these are machine
// words, and every operation on them that would overflow goes to GMP, as all else does. That makes the
// judging of such files ten times as fast, and a number of theirs costs no memory of its own.
class Rational {
 public:
  Rational() = default;
  // Implicit: a whole number is a rational.
  Rational(long whole) : whole_(whole) {}
  // Requires lowest terms, in which GMP's own operations leave a rational.
  explicit Rational(const mpq_class& value);

  bool isWhole() const { return !long_ || long_->get_den() == 1; }
  // The value in GMP's form.
  mpq_class exact() const { return long_ ? *long_ : mpq_class(whole_); }
  // A function of the value; few other values have the same one.
  std::uint64_t digest() const;

  friend Rational operator+(const Rational& a, const Rational& b) {
    long sum = 0;
    if (areShort(a, b) && !__builtin_add_overflow(a.whole_, b.whole_, &sum)) return sum;
    return Rational(a.exact() + b.exact());
  }
  friend Rational operator-(const Rational& a, const Rational& b) {
    long difference = 0;
    if (areShort(a, b) && !__builtin_sub_overflow(a.whole_, b.whole_, &difference)) return difference;
    return Rational(a.exact() - b.exact());
  }
  friend Rational operator*(const Rational& a, const Rational& b) {
    long product = 0;
    if (areShort(a, b) && !__builtin_mul_overflow(a.whole_, b.whole_, &product)) return product;
    return Rational(a.exact() * b.exact());
  }
  // Requires b != 0.
  friend Rational operator/(const Rational& a, const Rational& b) { return Rational(a.exact() / b.exact()); }
  Rational operator-() const { return 0 - *this; }
  Rational& operator+=(const Rational& b) { return *this = *this + b; }

  friend bool operator==(const Rational& a, const Rational& b) {
    if (areShort(a, b)) return a.whole_ == b.whole_;
    return a.long_ && b.long_ && *a.long_ == *b.long_;
  }
  friend std::strong_ordering operator<=>(const Rational& a, const Rational& b) {
    if (areShort(a, b)) return a.whole_ <=> b.whole_;
    return cmp(a.exact(), b.exact()) <=> 0;
  }

 private:
  static bool areShort(const Rational& a, const Rational& b) { return !a.long_ && !b.long_; }

  long whole_ = 0;
  // What is no short whole number, and never one that is: a value has one form only. It is shared, for it
  // never changes.
  std::shared_ptr<const mpq_class> long_;
};

Rational abs(const Rational& value);

// A rational or an infinity; 0 when nothing is given. -inf < every rational < inf, and each infinity equals
// itself.
class Number {
 public:
  Number() = default;
  // Implicit: a rational is a number.
  Number(Rational value) : value_(std::move(value)) {}
  Number(long value) : value_(value) {}

  // inf for a positive sign, -inf for a negative one.
  static Number infinity(int sign);

  bool isFinite() const { return infinite_ == 0; }
  // 0 if finite, else 1 or -1.
  int infinite() const { return infinite_; }
  // Requires isFinite.
  const Rational& value() const { return value_; }
  // As that of a rational.
  std::uint64_t digest() const;

  friend bool operator==(const Number& a, const Number& b) { return (a <=> b) == 0; }
  friend std::strong_ordering operator<=>(const Number& a, const Number& b);

 private:
  int infinite_ = 0;
  Rational value_;
};

// A text that is no number; what() says why, without the text itself.
class MalformedNumber : public std::invalid_argument {
 public:
  using std::invalid_argument::invalid_argument;
};

// The value of `text`, all of it: an optional sign, then
//     12    1.25 or 1,25 or .5    3/4    2:1/3 (two and a third)
// A point needs a digit other than zero behind it; the part behind a colon is a proper fraction. With
// `exponents` the first two forms may end in e or E and a whole exponent of at most MAX_EXPONENT in size.
// Throws MalformedNumber.
Rational parseNumber(std::string_view text, bool exponents);
inline constexpr long MAX_EXPONENT = 100000;

// The form in which the solver's files show a number in full: 5, -3/4, -2:1/3, inf.
std::string toText(const Rational& value);
std::string toText(const Number& number);

// 10^digits. Requires digits >= 0.
Rational powerOfTen(long digits);

}  // namespace latbox::check
