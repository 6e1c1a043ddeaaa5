// Exact numbers: whole numbers, rationals, and the text forms that the files know.
#pragma once

#include <gmpxx.h>

#include <stdexcept>
#include <string>
#include <string_view>

namespace latbox::complete {

using Integer = mpz_class;
using Rational = mpq_class;

// A rational, or one of the infinities: sign 1 or -1, and then the value means nothing.
struct Number {
  int infinite = 0;
  Rational value;

  bool finite() const { return infinite == 0; }
};

// -1, 0 or 1 as a is less than, equal to or greater than b; an infinity equals itself.
int compare(const Number& a, const Number& b);

// A text that is no number; what() says why, without the text itself.
class BadNumber : public std::invalid_argument {
 public:
  using std::invalid_argument::invalid_argument;
};

// All of `text` as a finite number: 12, -1.25, 1,25, .5, 3/4, 2:1/3. Throws BadNumber.
Rational parseRational(std::string_view text);

// 5, -3/4, -2:1/3: the form of the .sol file that loses nothing.
std::string toText(const Rational& value);
std::string toText(const Number& number);

Integer powerOfTen(unsigned long digits);
// The whole number at or below, at or above.
Integer floorOf(const Rational& value);
Integer ceilOf(const Rational& value);
// The same of a quotient; requires divisor > 0.
Integer floorOf(const Integer& value, const Integer& divisor);
Integer ceilOf(const Integer& value, const Integer& divisor);
// The nearest whole number to value / divisor; requires divisor > 0.
Integer nearest(const Integer& value, const Integer& divisor);

}  // namespace latbox::complete
