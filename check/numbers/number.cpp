#include "check/numbers/number.h"

#include <functional>

namespace latbox::check {
namespace {

constexpr std::string_view DIGITS = "0123456789";
constexpr const char* NO_NUMBER = "is not a number";
constexpr std::size_t EXPONENT_DIGITS = 6;
// So many digits fit a machine word, whichever they are.
constexpr std::size_t WORD_DIGITS = 18;

bool isDigits(std::string_view text) {
  return !text.empty() && text.find_first_not_of(DIGITS) == std::string_view::npos;
}

Rational integer(std::string_view text) {
  if (!isDigits(text)) throw MalformedNumber(NO_NUMBER);
  if (text.size() <= WORD_DIGITS) return std::stol(std::string(text));
  return Rational(mpq_class(mpz_class(std::string(text), 10)));
}

Rational quotient(const Rational& numerator, const Rational& denominator) {
  if (denominator == 0) throw MalformedNumber("has the denominator 0");
  return numerator / denominator;
}

Rational fraction(std::string_view text) {
  const std::size_t slash = text.find('/');
  if (slash == std::string_view::npos) throw MalformedNumber("has no proper fraction behind the colon");
  return quotient(integer(text.substr(0, slash)), integer(text.substr(slash + 1)));
}

// The solver refuses a zero in front of the numerator, so here it is refused too.
Rational mixed(std::string_view whole, std::string_view part) {
  const Rational rest = fraction(part);
  if (part.front() == '0' || rest >= 1) throw MalformedNumber("has no proper fraction behind the colon");
  return integer(whole) + rest;
}

Rational decimal(std::string_view whole, std::string_view digits) {
  if (digits.find_first_not_of('0') == std::string_view::npos)
    throw MalformedNumber("has no digit other than zero behind the point");
  const Rational rest = quotient(integer(digits), powerOfTen(static_cast<long>(digits.size())));
  return whole.empty() ? rest : integer(whole) + rest;
}

Rational parseUnsigned(std::string_view text) {
  const std::size_t at = text.find_first_of(".,:/");
  if (at == std::string_view::npos) return integer(text);
  if (text[at] == '/') return fraction(text);
  const std::string_view head = text.substr(0, at);
  const std::string_view tail = text.substr(at + 1);
  return text[at] == ':' ? mixed(head, tail) : decimal(head, tail);
}

// Takes an optional sign off; true for a minus.
bool takeSign(std::string_view& text) {
  if (text.empty() || (text.front() != '-' && text.front() != '+')) return false;
  const bool negative = text.front() == '-';
  text.remove_prefix(1);
  return negative;
}

// Takes "e<exponent>" off; 0 if there is none.
long takeExponent(std::string_view& text) {
  const std::size_t at = text.find_first_of("eE");
  if (at == std::string_view::npos) return 0;
  std::string_view digits = text.substr(at + 1);
  const bool negative = takeSign(digits);
  text = text.substr(0, at);
  if (!isDigits(digits) || text.find_first_of(":/") != std::string_view::npos)
    throw MalformedNumber(NO_NUMBER);
  const long size = digits.size() > EXPONENT_DIGITS ? MAX_EXPONENT + 1 : std::stol(std::string(digits));
  if (size > MAX_EXPONENT) throw MalformedNumber("has an exponent out of all proportion");
  return negative ? -size : size;
}

Rational shifted(const Rational& value, long digits) {
  return digits < 0 ? value / powerOfTen(-digits) : value * powerOfTen(digits);
}

}  // namespace

Number Number::infinity(int sign) {
  Number number;
  number.infinite_ = sign < 0 ? -1 : 1;
  return number;
}

std::uint64_t Number::digest() const {
  if (isFinite()) return value_.digest();
  return std::hash<std::string>()(infinite_ < 0 ? "-inf" : "inf");
}

std::strong_ordering operator<=>(const Number& a, const Number& b) {
  if (a.infinite_ != b.infinite_) return a.infinite_ <=> b.infinite_;
  return a.infinite_ != 0 ? std::strong_ordering::equal : a.value_ <=> b.value_;
}

Rational parseNumber(std::string_view text, bool exponents) {
  const bool negative = takeSign(text);
  const long exponent = exponents ? takeExponent(text) : 0;
  const Rational value = shifted(parseUnsigned(text), exponent);
  return negative ? -value : value;
}

std::string toText(const Rational& number) {
  const mpq_class value = number.exact();
  const mpz_class whole = abs(value.get_num()) / value.get_den();
  const mpz_class rest = abs(value.get_num()) % value.get_den();
  const std::string sign = value < 0 ? "-" : "";
  if (rest == 0) return sign + whole.get_str();
  const std::string part = rest.get_str() + "/" + value.get_den().get_str();
  return sign + (whole == 0 ? part : whole.get_str() + ":" + part);
}

std::string toText(const Number& number) {
  if (number.isFinite()) return toText(number.value());
  return number.infinite() < 0 ? "-inf" : "inf";
}

std::string shown(const Number& number) {
  const std::string text = toText(number);
  if (text.size() <= SHOWN_DIGITS) return text;
  const std::size_t kept = SHOWN_DIGITS / 2;
  return text.substr(0, kept) + "..." + text.substr(text.size() - kept);
}

Rational powerOfTen(long digits) {
  mpz_class power;
  mpz_ui_pow_ui(power.get_mpz_t(), 10, static_cast<unsigned long>(digits));
  return Rational(mpq_class(power));
}

}  // namespace latbox::check
