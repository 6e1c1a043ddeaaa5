// The number layer: the operations in which dbl_t and QQ differ, as overloads for both, so that the templates
// above are written once and ask no type.
#pragma once

#include <cmath>
#include <iosfwd>
#include <string>

#include "lib/constants.h"
#include "numbers/qq.h"

namespace latbox {

// |x| <= EPS. The one tolerance test; plain comparison of two QQ is exact. Infinities are not zero.
inline bool isZero(dbl_t x) {
  return x <= EPS && x >= -EPS;
}
bool isZero(const QQ& x);

// x == 0 exactly, without building a second operand.
inline bool isExactZero(dbl_t x) {
  return x == 0;
}
inline bool isExactZero(const QQ& x) {
  return x.isExactZero();
}

// -1, 0 or +1, exact; 0 for a NaN.
inline int signOf(dbl_t x) {
  return x > 0 ? 1 : (x < 0 ? -1 : 0);
}
inline int signOf(const QQ& x) {
  return x.isExactZero() ? 0 : (x.sign ? 1 : -1);
}

// True if the finite value has left the range that dbl_t code works in: 10^9 < |x| <= 10^18. Beyond 10^18 it
// throws FatalPrecisionException: integer exactness is lost there. Infinities pass. QQ never overflows.
bool precisionCheckLarge(dbl_t x);  // its part for |x| > 10^9
inline bool precisionCheck(dbl_t x) {
  return (x > 1e9L || x < -1e9L) && precisionCheckLarge(x);  // NaN passes
}
inline bool precisionCheck(const QQ&) {
  return false;
}

// Throws PrecisionException with `text` if precisionCheck(x).
[[noreturn]] void throwPrecision(const char* text);
inline void checkPrecision(dbl_t x, const char* text) {
  if (precisionCheck(x)) throwPrecision(text);
}
inline void checkPrecision(const QQ&, const char*) {}

inline bool isInfinite(dbl_t x) {
  return std::isinf(x);
}
inline bool isInfinite(const QQ& x) {
  return x.isInf;
}
template <class T>
bool isPlusInfinity(const T& x) {
  return isInfinite(x) && signOf(x) > 0;
}
template <class T>
bool isMinusInfinity(const T& x) {
  return isInfinite(x) && signOf(x) < 0;
}
template <class T>
T infinity();
template <>
dbl_t infinity<dbl_t>();
template <>
QQ infinity<QQ>();

// -x without the negative zero of floating point, which would show as "-0" in files and messages.
template <class T>
T negated(const T& x) {
  return isExactZero(x) ? T(0) : -x;
}

dbl_t abs(dbl_t x);
dbl_t floor(dbl_t x);
dbl_t ceil(dbl_t x);
// Half away from zero; an infinity stays.
dbl_t roundFar(dbl_t x);  // its part for |x| >= 2^62, infinities and NaN
inline dbl_t roundNearest(dbl_t x) {
  // A sum beyond 2^63 has no room for a fraction, so the addition rounds, to even; ties are put right after.
  // Inline, for the library's function costs an enumeration more than the rest of a node.
  constexpr dbl_t BIG = 0x1.8p63L;
  if (!(x < 0x1p62L && x > -0x1p62L)) [[unlikely]]
    return roundFar(x);
  dbl_t r = (x + BIG) - BIG;
  const dbl_t left = x - r;
  if (left == 0.5L && x > 0) [[unlikely]]
    r += 1;
  if (left == -0.5L && x < 0) [[unlikely]]
    r -= 1;
  return r;
}
dbl_t log2(dbl_t x);
dbl_t log(dbl_t x);
dbl_t pow(dbl_t x, dbl_t y);
// Square root. For QQ within EPS; x >= 0.
dbl_t sqrt(dbl_t x);
QQ sqrt(const QQ& x);

// Finite and whole, exactly.
bool isInteger(dbl_t x);
inline bool isInteger(const QQ& x) {
  return x.isWhole();
}

// Greatest common divisor, non-negative; finite arguments. dbl_t: whole numbers, by Euclid's algorithm,
// exact. QQ: gcd(a/b, c/d) = gcd(a d, c b) / (b d), which for integers is the usual one. gcd(0, x) = |x|.
dbl_t gcd(dbl_t a, dbl_t b);
QQ gcd(const QQ& a, const QQ& b);
// |a b| / gcd(a, b); 0 if either is 0.
dbl_t lcm(dbl_t a, dbl_t b);
QQ lcm(const QQ& a, const QQ& b);

// The denominator of the value, 1 for whole numbers and infinities. dbl_t: that of the QQ it converts to.
dbl_t denominatorOf(dbl_t x);
QQ denominatorOf(const QQ& x);

// Conversions. A dbl_t goes to QQ through its 17-digit text, see qq.h.
inline dbl_t toDouble(dbl_t x) {
  return x;
}
inline dbl_t toDoubleStrict(dbl_t x, bool) {
  return x;
}
template <class T>
T fromDouble(dbl_t x);
template <>
inline dbl_t fromDouble<dbl_t>(dbl_t x) {
  return x;
}
template <>
inline QQ fromDouble<QQ>(dbl_t x) {
  return QQ(x);
}
// The value of a QQ in either type: itself, or toDouble.
template <class T>
T fromExact(const QQ& x);
template <>
inline dbl_t fromExact<dbl_t>(const QQ& x) {
  return toDouble(x);
}
template <>
inline QQ fromExact<QQ>(const QQ& x) {
  return x;
}
// True if the strict conversion succeeds and its result converts back to `x` exactly; infinities pass. `out`
// is set only then.
bool convertStrict(const QQ& x, dbl_t& out);

// 10^n, for any n.
template <class T>
T powerOfTen(long n);
template <>
dbl_t powerOfTen<dbl_t>(long n);
template <>
QQ powerOfTen<QQ>(long n);

// The residue in 0 .. p - 1 of x modulo the prime p < 2^62, for exact tests by modular arithmetic. A fraction
// gives numerator times inverse denominator. False, and `residue` unset, where there is none: x infinite or
// its denominator divisible by p; dbl_t: also a fraction or |x| > 10^18.
bool modulo(dbl_t x, unsigned long long p, unsigned long long& residue);
bool modulo(const QQ& x, unsigned long long p, unsigned long long& residue);

// Clears `fixed` and `scientific` and sets 17 significant digits: what every writer of numbers that must
// survive a round trip applies.
std::ostream& setFullPrecision(std::ostream& stream);

// dbl_t: 17 significant digits, "inf", "-inf". QQ: its written form.
std::string toText(dbl_t x);
// Reads what QQ's parse reads (and fails as it does), then converts.
template <class T>
T parseText(const std::string& text);
template <>
dbl_t parseText<dbl_t>(const std::string& text);
template <>
QQ parseText<QQ>(const std::string& text);

// One element of a text that the system wrote itself, in either precision: skips white space and comments,
// takes one token, exponent included, and converts. An empty token sets the stream's fail state.
std::istream& readNumber(std::istream& stream, dbl_t& x);
std::istream& readNumber(std::istream& stream, QQ& x);

}  // namespace latbox
