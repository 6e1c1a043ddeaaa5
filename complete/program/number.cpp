#include "complete/program/number.h"

namespace latbox::complete {
namespace {

// A number longer than this is a mistake, and would take the machine's memory.
constexpr std::size_t LONGEST = 100000;

Integer digits(std::string_view text, const char* complaint) {
  if (text.empty() || text.find_first_not_of("0123456789") != std::string_view::npos)
    throw BadNumber(complaint);
  return Integer(std::string(text), 10);
}

Rational fraction(std::string_view text, std::size_t slash, const char* complaint) {
  const Integer numerator = digits(text.substr(0, slash), complaint);
  const Integer denominator = digits(text.substr(slash + 1), complaint);
  if (denominator == 0) throw BadNumber("has the denominator 0");
  Rational value(numerator, denominator);
  value.canonicalize();
  return value;
}

Rational mixed(std::string_view whole, std::string_view part) {
  const char* complaint = "has no proper fraction behind the colon";
  const std::size_t slash = part.find('/');
  if (slash == std::string_view::npos || part.front() == '0') throw BadNumber(complaint);
  const Rational rest = fraction(part, slash, complaint);
  if (rest >= 1) throw BadNumber(complaint);
  return digits(whole, "is not a number") + rest;
}

Rational decimal(std::string_view whole, std::string_view places) {
  const Integer behind = digits(places, "has no digit other than zero behind the point");
  if (behind == 0) throw BadNumber("has no digit other than zero behind the point");
  Rational value(behind, powerOfTen(places.size()));
  value.canonicalize();
  return whole.empty() ? value : Rational(digits(whole, "is not a number") + value);
}

Rational parseUnsigned(std::string_view text) {
  const std::size_t mark = text.find_first_of(".,:/");
  if (mark == std::string_view::npos) return digits(text, "is not a number");
  if (text[mark] == '/') return fraction(text, mark, "is not a number");
  const std::string_view before = text.substr(0, mark);
  const std::string_view behind = text.substr(mark + 1);
  return text[mark] == ':' ? mixed(before, behind) : decimal(before, behind);
}

}  // namespace

int compare(const Number& a, const Number& b) {
  if (a.infinite != b.infinite) return a.infinite < b.infinite ? -1 : 1;
  if (a.infinite != 0) return 0;
  const int order = cmp(a.value, b.value);
  return order < 0 ? -1 : order > 0;
}

Rational parseRational(std::string_view text) {
  if (text.size() > LONGEST) throw BadNumber("is too long");
  const bool negative = text.starts_with('-');
  if (negative || text.starts_with('+')) text.remove_prefix(1);
  const Rational value = parseUnsigned(text);
  return negative ? Rational(-value) : value;
}

std::string toText(const Rational& value) {
  // Most values are short, and there may be millions of lines of them.
  if (value.get_den() == 1 && value.get_num().fits_slong_p()) return std::to_string(value.get_num().get_si());
  const Integer size = abs(value.get_num());
  const Integer whole = size / value.get_den();
  const Integer rest = size % value.get_den();
  std::string text = value < 0 ? "-" : "";
  if (rest == 0) return text + whole.get_str();
  if (whole != 0) text += whole.get_str() + ":";
  return text + rest.get_str() + "/" + value.get_den().get_str();
}

std::string toText(const Number& number) {
  if (number.finite()) return toText(number.value);
  return number.infinite < 0 ? "-inf" : "inf";
}

Integer powerOfTen(unsigned long digits) {
  Integer power;
  mpz_ui_pow_ui(power.get_mpz_t(), 10, digits);
  return power;
}

Integer floorOf(const Rational& value) {
  return floorOf(value.get_num(), value.get_den());
}

Integer ceilOf(const Rational& value) {
  return ceilOf(value.get_num(), value.get_den());
}

Integer floorOf(const Integer& value, const Integer& divisor) {
  Integer quotient;
  mpz_fdiv_q(quotient.get_mpz_t(), value.get_mpz_t(), divisor.get_mpz_t());
  return quotient;
}

Integer ceilOf(const Integer& value, const Integer& divisor) {
  Integer quotient;
  mpz_cdiv_q(quotient.get_mpz_t(), value.get_mpz_t(), divisor.get_mpz_t());
  return quotient;
}

Integer nearest(const Integer& value, const Integer& divisor) {
  return floorOf(Integer(2 * value + divisor), Integer(2 * divisor));
}

}  // namespace latbox::complete
