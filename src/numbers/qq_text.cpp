// The text of QQ: written in a mixed form, read from integers, decimals, fractions, mixed numbers, numbers
// with an exponent and infinities.
#include <cctype>
#include <istream>
#include <ostream>
#include <string_view>
#include <vector>

#include "lib/failure.h"
#include "lib/scanner.h"
#include "numbers/number.h"
#include "numbers/qq.h"

namespace latbox {

namespace {

// What lies beyond these, or is longer than MAX_NUMBER_LENGTH, is no number that a program holds; a solver
// that computes for hours on such an input serves nobody.
constexpr long MAX_EXPONENT = 10000;
constexpr long MAX_EXPONENT_ROOT = 20;  // denominator of a fractional exponent
constexpr int MAX_EXPONENTS = 10;       // exponents of exponents

// One level of a text with a separator: the sign, the integer text, the separator, and how many "0" stand
// directly behind it. What follows is a number text of its own.
struct Level {
  bool sign;
  std::string_view whole;
  char separator;
  long lead;
};

ZZ integerOf(std::string_view text) {
  ZZ value{std::string(text)};
  return value.isZero() ? ZZ(0) : value;  // the empty number and "-0" enter as plain zero
}

ZZ magnitudeOf(std::string_view text) {
  return abs(integerOf(text));
}

std::string_view withoutSpace(std::string_view text) {
  while (!text.empty() && std::isspace(static_cast<unsigned char>(text.front()))) text.remove_prefix(1);
  return text;
}

// Takes the sign off the front; what follows must not be empty.
bool takeSign(std::string_view& text) {
  text = withoutSpace(text);
  bool sign = true;
  if (!text.empty() && (text.front() == '-' || text.front() == '+')) {
    sign = text.front() == '+';
    text.remove_prefix(1);
  }
  if (text.empty()) fail("QQ: parse error1");
  return sign;
}

void setInteger(QQ& q, bool sign, std::string_view text) {
  q = QQ(magnitudeOf(text));
  if (!sign) q.negate();
}

void setInfinity(QQ& q, bool sign, std::string_view text) {
  if (text.size() < 2 || text[1] != 'n') fail("QQ: parse error2");
  if (text.size() < 3 || text[2] != 'f') fail("QQ: parse error3");
  q = QQ(1);
  q.isInf = true;
  q.sign = sign;
}

void setFraction(QQ& q, bool sign, std::string_view numerator, std::string_view denominator) {
  const ZZ num = integerOf(numerator), den = integerOf(denominator);
  if (den.isZero()) fail("QQ: division by zero1");
  q = QQ(num, den);
  if (!sign) q.negate();
}

// Puts the digits behind a point or comma: q holds what was read behind the leading zeros.
void attachDecimals(QQ& q, const Level& level) {
  ZZ f(std::move(q.ganze));
  f.removeTrailingZeros();
  ZZ power(1);
  power.decimal_lshift(level.lead + f.digits());
  q = QQ(f, power);
}

// Puts the fraction behind a colon.
void attachFraction(QQ& q, const Level& level) {
  if (level.lead > 0 || !q.sign) fail("QQ: malformed number1");
  if (!q.ganze.isZero()) fail("QQ: malformed number2");
}

void attach(QQ& q, const Level& level) {
  if (level.separator == ':')
    attachFraction(q, level);
  else
    attachDecimals(q, level);
  q.ganze = magnitudeOf(level.whole);
  q.sign = level.sign;
  q.normalize();
}

// The text behind a separator is a number text again, to any depth; the levels are kept in a list, since a
// recursion would let a long line overflow the stack.
void parsePlain(QQ& q, std::string_view text) {
  std::vector<Level> levels;
  for (;;) {
    const bool sign = takeSign(text);
    const std::size_t at = text.find_first_of(".:,/");
    if (at == std::string_view::npos) {
      if (text.front() == 'i')
        setInfinity(q, sign, text);
      else
        setInteger(q, sign, text);
      break;
    }
    if (text[at] == '/') {
      setFraction(q, sign, text.substr(0, at), text.substr(at + 1));
      break;
    }
    Level level{sign, text.substr(0, at), text[at], 0};
    text.remove_prefix(at + 1);
    while (!text.empty() && text.front() == '0') {
      text.remove_prefix(1);
      ++level.lead;
    }
    levels.push_back(level);
  }
  for (; !levels.empty(); levels.pop_back()) attach(q, levels.back());
}

// The value of a text behind `exponents` others. An exponent is a number text again, at times with one of its
// own.
QQ valueOf(std::string_view text, int exponents) {
  const std::size_t at = text.find_first_of("eE");
  QQ m;
  parsePlain(m, text.substr(0, at));
  if (at == std::string_view::npos) return m;
  if (exponents == MAX_EXPONENTS) fail("QQ: exponent out of range");
  const QQ p = valueOf(text.substr(at + 1), exponents + 1);
  if (!p.isInf && (abs(p) > QQ(MAX_EXPONENT) || p.nenner > ZZ(MAX_EXPONENT_ROOT)))
    fail("QQ: exponent out of range");
  return m * pow(qqTen(), p);
}

// Reads one token; an empty one sets the stream's fail state, and nothing is parsed.
std::istream& readToken(std::istream& stream, QQ& x, bool exponents) {
  std::string token;
  if (stream.good()) {
    skipSpaceAndComments(stream);
    token = takeNumberToken(stream, exponents);
  }
  if (token.empty())
    stream.setstate(std::ios::failbit);
  else
    parse(x, token);
  return stream;
}

}  // namespace

void parse(QQ& q, const std::string& text) {
  if (text.size() > MAX_NUMBER_LENGTH) fail("QQ: number is too long");
  if (text.find_first_of("eE") == std::string::npos)
    parsePlain(q, text);
  else
    parsePlain(q, expandExponent(text));
}

std::string expandExponent(const std::string& text) {
  if (text.find_first_of("eE") == std::string::npos) return text;
  if (text.size() > MAX_NUMBER_LENGTH) fail("QQ: number is too long");
  return toText(valueOf(text, 0));
}

std::string toText(const QQ& x) {
  std::string text(x.sign ? "" : "-");
  if (x.isInf) return text + "inf";
  if (x.isExactZero()) return "0";
  const bool fraction = !x.zaehler.isZero();
  if (!x.ganze.isZero()) text += x.ganze.to_string();
  if (!x.ganze.isZero() && fraction) text += ':';
  if (fraction) {
    text += x.zaehler.to_string();
    if (!x.nenner.isOne()) text.append("/").append(x.nenner.to_string());
  }
  return text;
}

std::ostream& operator<<(std::ostream& stream, const QQ& x) {
  return stream << toText(x);
}

std::istream& operator>>(std::istream& stream, QQ& x) {
  return readToken(stream, x, acceptsExponents(stream));
}

std::istream& readNumber(std::istream& stream, QQ& x) {
  return readToken(stream, x, true);
}

}  // namespace latbox
