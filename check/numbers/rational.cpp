#include "check/numbers/rational.h"

#include <functional>
#include <limits>
#include <numeric>
#include <string>

namespace latbox::check {
namespace {

bool fits(const mpq_class& value) {
  return value.get_num().fits_slong_p() && value.get_den().fits_slong_p();
}

unsigned long magnitude(long value) {
  return value < 0 ? -static_cast<unsigned long>(value) : static_cast<unsigned long>(value);
}

}  // namespace

Rational::Rational(const mpq_class& value) {
  if (fits(value)) {
    numerator_ = value.get_num().get_si();
    denominator_ = value.get_den().get_si();
  } else {
    long_ = std::make_shared<const mpq_class>(value);
  }
}

Rational Rational::inLowestTerms(long numerator, long denominator) {
  if (denominator == 1) return numerator;
  const auto common = static_cast<long>(std::gcd(magnitude(numerator), magnitude(denominator)));
  Rational value = numerator / common;
  value.denominator_ = denominator / common;
  return value;
}

mpq_class Rational::exact() const {
  return isShort() ? mpq_class(numerator_, denominator_) : *long_;
}

std::uint64_t Rational::digest() const {
  if (!isShort()) return std::hash<std::string>()(long_->get_str(16));
  return static_cast<std::uint64_t>(numerator_) + (magnitude(denominator_) - 1) * 0x9e3779b97f4a7c15;
}

Rational operator+(const Rational& a, const Rational& b) {
  long left = 0;
  long right = 0;
  long sum = 0;
  long denominator = 0;
  const bool inWords = a.isShort() && b.isShort() &&
                       !__builtin_mul_overflow(a.numerator_, b.denominator_, &left) &&
                       !__builtin_mul_overflow(b.numerator_, a.denominator_, &right) &&
                       !__builtin_add_overflow(left, right, &sum) &&
                       !__builtin_mul_overflow(a.denominator_, b.denominator_, &denominator);
  return inWords ? Rational::inLowestTerms(sum, denominator) : Rational(a.exact() + b.exact());
}

Rational operator*(const Rational& a, const Rational& b) {
  long numerator = 0;
  long denominator = 0;
  const bool inWords = a.isShort() && b.isShort() &&
                       !__builtin_mul_overflow(a.numerator_, b.numerator_, &numerator) &&
                       !__builtin_mul_overflow(a.denominator_, b.denominator_, &denominator);
  return inWords ? Rational::inLowestTerms(numerator, denominator) : Rational(a.exact() * b.exact());
}

Rational operator/(const Rational& a, const Rational& b) {
  long numerator = 0;
  long denominator = 0;
  const bool inWords = a.isShort() && b.isShort() && b.numerator_ > 0 &&
                       !__builtin_mul_overflow(a.numerator_, b.denominator_, &numerator) &&
                       !__builtin_mul_overflow(a.denominator_, b.numerator_, &denominator);
  return inWords ? Rational::inLowestTerms(numerator, denominator) : Rational(a.exact() / b.exact());
}

std::strong_ordering Rational::compare(const Rational& a, const Rational& b) {
  long left = 0;
  long right = 0;
  const bool inWords = a.isShort() && b.isShort() &&
                       !__builtin_mul_overflow(a.numerator_, b.denominator_, &left) &&
                       !__builtin_mul_overflow(b.numerator_, a.denominator_, &right);
  return inWords ? left <=> right : cmp(a.exact(), b.exact()) <=> 0;
}

Rational Rational::operator-() const {
  if (!isShort() || numerator_ == std::numeric_limits<long>::min()) return Rational(-exact());
  Rational value = -numerator_;
  value.denominator_ = denominator_;
  return value;
}

Rational abs(const Rational& value) {
  return value < 0 ? -value : value;
}

}  // namespace latbox::check
