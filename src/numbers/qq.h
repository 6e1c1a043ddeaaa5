// QQ: an exact rational as a mixed number, the number type of extended precision.
//
// The value is (sign ? 1 : -1) * (ganze + zaehler / nenner). Canonical form, which every operation returns
// but roundDigits: the three parts carry `sign` true, 0 <= zaehler < nenner, gcd(zaehler, nenner) = 1, zero
// has `sign` true, an infinity has `isInf` true and the parts 1, 0, 1. Infinities are ordinary values: bounds
// of a program are often infinite.
#pragma once

#include <iosfwd>
#include <string>

#include "lib/constants.h"
#include "numbers/zz.h"

namespace latbox {

class QQ {
 public:
  bool isInf = false;
  bool sign = true;  // false for a negative value
  ZZ ganze;          // integer part, a magnitude
  ZZ zaehler;        // numerator of the fractional part, a magnitude
  ZZ nenner;         // denominator of the fractional part, a magnitude, never zero

  QQ() : nenner(1) {}
  QQ(const QQ&) = default;
  QQ& operator=(const QQ&) = default;
  // The source becomes zero, so that what stays behind in an array is a number.
  QQ(QQ&& other) noexcept;
  QQ& operator=(QQ&& other) noexcept;
  QQ(int value) : QQ(static_cast<long long>(value)) {}
  QQ(long value) : QQ(static_cast<long long>(value)) {}
  QQ(long long value);
  QQ(const ZZ& value);
  // Through decimal text of 17 significant digits: 0.1 becomes 1/10 and not the binary expansion. A value for
  // which isZero holds becomes 0.
  QQ(dbl_t value);
  QQ(double value) : QQ(static_cast<dbl_t>(value)) {}
  // num / den, normalised; den is not zero.
  QQ(const ZZ& num, const ZZ& den);
  // See parse.
  QQ(const char* text);
  QQ(const std::string& text);

  // Brings the object into canonical form and returns it. Fails with "A ganze / zaehler / nenner sign has
  // been set, though it should not be used" when a part is negative.
  QQ& normalize();

  // `r` may be the same object as an operand. Adding opposite infinities fails with "INF - INF is not
  // defined", multiplying an infinity by zero with "qq: INF * 0 is not defined!" or "qq: 0 * INF is not
  // defined!", dividing infinities with "QQ: +-INF / +-INF is not defined". Division by zero throws
  // PrecisionException with "QQ: division by zero3" and leaves `r` unchanged: a zero pivot in exact code is
  // recovered from.
  static void add(QQ& r, const QQ& a, const QQ& b);
  static void sub(QQ& r, const QQ& a, const QQ& b);
  static void mul(QQ& r, const QQ& a, const QQ& b);
  static void divide(QQ& r, const QQ& a, const QQ& b);
  // r += a * b and r -= a * b, as mul and then add.
  static void addmul(QQ& r, const QQ& a, const QQ& b);
  static void submul(QQ& r, const QQ& a, const QQ& b);
  // -1, 0 or +1; exact.
  static long compare(const QQ& a, const QQ& b);

  QQ& operator+=(const QQ& b);
  QQ& operator-=(const QQ& b);
  QQ& operator*=(const QQ& b);
  QQ& operator/=(const QQ& b);
  // Flips the sign in place; zero stays positive.
  void negate();

  // Sets the value of two coprime magnitudes, denominator not zero, without looking for a common divisor.
  void setReduced(ZZ numerator, ZZ denominator, bool nonNegative);

  bool isExactZero() const { return !isInf && ganze.isZero() && zaehler.isZero(); }
  // Finite and without a fraction.
  bool isWhole() const { return !isInf && zaehler.isZero(); }

  // The process-wide switch under which multiplication rounds its partial products to 18 digits of the
  // denominator. Clear by default; the solver thread alone may set it.
  static void setRoundProducts(bool round);
  static bool roundProducts();

  // The algorithms without their short cuts for small parts; tests hold one against the other. `r` is no
  // operand.
  static void addGeneral(QQ& r, const QQ& a, const QQ& b);
  static void subGeneral(QQ& r, const QQ& a, const QQ& b);
  static void mulGeneral(QQ& r, const QQ& a, const QQ& b);
  static void divideGeneral(QQ& r, const QQ& a, const QQ& b);
  static long compareGeneral(const QQ& a, const QQ& b);

 private:
  friend void roundDigits(QQ& x, unsigned n);
  // Set by roundDigits until the next normalize: the short cuts rest on reduced fractions.
  bool unreduced_ = false;

  void setInfinity(bool nonNegative);
  void setZero();
  void setInteger();
  void setSmall(u128 numerator, u128 denominator, bool nonNegative);
  bool smallParts() const;
  bool smallNumerator(u64& numerator) const;
  void multiplySign(const QQ& infinite, bool otherSign);
  static void addIntegers(QQ& r, const QQ& a, const QQ& b, bool bSign);
  template <class Wide>
  static void addSmall(QQ& r, const QQ& a, const QQ& b, bool bSign);
  void settle(ZZ whole, ZZ fraction, ZZ n);
  static void addReduced(QQ& r, const QQ& a, const QQ& b, bool bSign);
  static void mulReduced(QQ& r, const QQ& a, const QQ& b);
  static void divideReduced(QQ& r, const QQ& a, const QQ& b);
  // The short cuts: true if they applied. `r` may be an operand; `bSign` stands for the sign of b.
  static bool addFast(QQ& r, const QQ& a, const QQ& b, bool bSign);
  static bool mulFast(QQ& r, const QQ& a, const QQ& b);
  static bool divideFast(QQ& r, const QQ& a, const QQ& b);
};

QQ operator+(const QQ& a, const QQ& b);
QQ operator-(const QQ& a, const QQ& b);
QQ operator*(const QQ& a, const QQ& b);
QQ operator/(const QQ& a, const QQ& b);
QQ operator-(const QQ& a);

inline bool operator==(const QQ& a, const QQ& b) {
  return QQ::compare(a, b) == 0;
}
inline bool operator!=(const QQ& a, const QQ& b) {
  return QQ::compare(a, b) != 0;
}
inline bool operator<(const QQ& a, const QQ& b) {
  return QQ::compare(a, b) < 0;
}
inline bool operator<=(const QQ& a, const QQ& b) {
  return QQ::compare(a, b) <= 0;
}
inline bool operator>(const QQ& a, const QQ& b) {
  return QQ::compare(a, b) > 0;
}
inline bool operator>=(const QQ& a, const QQ& b) {
  return QQ::compare(a, b) >= 0;
}

QQ abs(const QQ& x);
// Integers as QQ; an infinity stays as it is. Halves round away from zero.
QQ floor(const QQ& x);
QQ ceil(const QQ& x);
QQ roundNearest(const QQ& x);
// The part with the sign of the value folded in; zero stays positive.
ZZ signedGanze(const QQ& x);
ZZ signedZaehler(const QQ& x);
// `nenner` as QQ, and one for an infinity.
QQ denominator(const QQ& x);

// Through decimal text up to the first digit beyond 18 significant ones, those of the fraction counted by
// ZZ::significantLength: toDouble cuts there silently, toDoubleStrict with `strict` throws PrecisionException
// with "QQ is not representable as dbl_t". An infinity gives the signed infinity, and so does a value beyond
// the range of dbl_t.
dbl_t toDouble(const QQ& x);
dbl_t toDoubleStrict(const QQ& x, bool strict);
// The same without the short cut for integers of at most 18 digits.
dbl_t toDoubleByText(const QQ& x, bool strict);

// Gives up exactness on purpose: cuts the fraction, in place, to at most n digits in its denominator, by
// dropping as many decimal digits from both parts. Does not reduce: a later normalize does.
void roundDigits(QQ& x, unsigned n);

// The two numerators over the least common denominator n. The results are three objects, the operands finite:
// fails with "QQ: The ZZs have the same address" and "a_z, b_z can not be set to ZZ::INF -- isInf is logic
// only available in QQ class".
void commonDenominator(ZZ& aZ, ZZ& bZ, ZZ& n, const QQ& a, const QQ& b);

// Shared constants, made at first use.
const QQ& qqZero();
const QQ& qqOne();
const QQ& qqTwo();
const QQ& qqTen();
const QQ& qqHalf();
const QQ& qqEps();
const QQ& qqInfinity();

// The written form: "-2:1/3", "5", "3/4", "0", "inf", "-inf". Exact, without a decimal point.
std::ostream& operator<<(std::ostream& stream, const QQ& x);
// Skips white space and comments, takes the characters from '+' to ':' and parses them. An empty token sets
// the stream's fail state, and nothing is parsed.
std::istream& operator>>(std::istream& stream, QQ& x);

inline constexpr std::size_t MAX_NUMBER_LENGTH = 100000;

// Reads an integer, decimal, fraction, mixed number, any of them with an exponent, or an infinity.
// Fails with "QQ: parse error1" (empty; also "5." and "5.0": no digit but 0 behind the point), "QQ: parse
// error2", "QQ: parse error3", "QQ: division by zero1", "QQ: malformed number1", "QQ: malformed number2".
// Beyond all reason it fails with "QQ: number is too long" (more than MAX_NUMBER_LENGTH characters) and "QQ:
// exponent out of range" (10,000, or a root beyond the 20th).
void parse(QQ& q, const std::string& text);
// The text without its exponent: as it stands if there is none, otherwise the written form of the value.
std::string expandExponent(const std::string& text);
std::string toText(const QQ& x);

// To about 10^-18. Fails with "log2(x), x <= 0 is not implemented / defined".
QQ log2(const ZZ& x);
// inf for inf; fails with "log2(-inf) is not implemented / defined".
QQ log2(const QQ& x);
// Natural logarithm. inf for inf; fails with "log(-inf) is not implemented / defined".
QQ log(const QQ& x);
// r = the n-th root of x, within EPS. `r` may be `x`. Fails with "QQ: zero-th roots are not defined",
// "QQ: complex roots are not implemented" and "QQ: division by zero" (zero with a negative n).
void root(QQ& r, const QQ& x, const ZZ& n);
// Exact for an integer y, as precise as root otherwise.
QQ pow(const QQ& x, const QQ& y);

}  // namespace latbox
