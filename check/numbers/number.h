// Numbers as the files write them: rationals and the two infinities.
#pragma once

#include <compare>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <string_view>

#include "check/numbers/rational.h"

namespace latbox::check {

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

  friend bool operator==(const Number& a, const Number& b) = default;
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
// The same for messages: what is longer than SHOWN_DIGITS loses its middle, for a few characters of a file
// (1e99999) can make a number of any length.
std::string shown(const Number& number);
inline constexpr std::size_t SHOWN_DIGITS = 200;

// 10^digits. Requires digits >= 0.
Rational powerOfTen(long digits);

}  // namespace latbox::check
