#include "numbers/number.h"

#include <cmath>
#include <cstdio>
#include <istream>
#include <limits>
#include <ostream>

#include "lib/exceptions.h"
#include "lib/modular.h"

namespace latbox {

bool isZero(const QQ& x) {
  return !x.isInf && x.ganze.isZero() && (x.zaehler.isZero() || abs(x) <= qqEps());
}

bool precisionCheckLarge(dbl_t x) {
  const dbl_t magnitude = x < 0 ? -x : x;
  if (magnitude == infinity<dbl_t>()) return false;
  if (magnitude > 1e18L)
    throw FatalPrecisionException(
        "Uncorrectable precision overflow detected - probably more overflow / precision checks are needed "
        "...");
  return true;
}

void throwPrecision(const char* text) {
  throw PrecisionException(text);
}

template <>
dbl_t infinity<dbl_t>() {
  return std::numeric_limits<dbl_t>::infinity();
}

template <>
QQ infinity<QQ>() {
  return qqInfinity();
}

dbl_t abs(dbl_t x) {
  return std::fabs(x);
}
dbl_t floor(dbl_t x) {
  return std::floor(x);
}
dbl_t ceil(dbl_t x) {
  return std::ceil(x);
}
dbl_t roundFar(dbl_t x) {
  return std::round(x);
}
dbl_t log2(dbl_t x) {
  return std::log2(x);
}
dbl_t log(dbl_t x) {
  return std::log(x);
}
dbl_t pow(dbl_t x, dbl_t y) {
  return std::pow(x, y);
}
dbl_t sqrt(dbl_t x) {
  return std::sqrt(x);
}

QQ sqrt(const QQ& x) {
  QQ r;
  root(r, x, ZZ(2));
  return r;
}

bool isInteger(dbl_t x) {
  return std::isfinite(x) && std::trunc(x) == x;
}

dbl_t gcd(dbl_t a, dbl_t b) {
  dbl_t x = abs(a), y = abs(b);
  while (y != 0) {
    const dbl_t rest = std::fmod(x, y);  // exact
    x = y;
    y = rest;
  }
  return x;
}

QQ gcd(const QQ& a, const QQ& b) {
  if (a.isWhole() && b.isWhole()) return QQ(gcd(a.ganze, b.ganze));
  const ZZ x = a.ganze * a.nenner + a.zaehler, y = b.ganze * b.nenner + b.zaehler;
  return QQ(gcd(x * b.nenner, y * a.nenner), a.nenner * b.nenner);
}

dbl_t lcm(dbl_t a, dbl_t b) {
  return a == 0 || b == 0 ? 0 : abs(a) / gcd(a, b) * abs(b);
}

QQ lcm(const QQ& a, const QQ& b) {
  return a.isExactZero() || b.isExactZero() ? QQ() : abs(a) / gcd(a, b) * abs(b);
}

dbl_t denominatorOf(dbl_t x) {
  return isInfinite(x) || isInteger(x) ? 1 : toDouble(denominator(QQ(x)));
}
QQ denominatorOf(const QQ& x) {
  return denominator(x);
}

template <>
QQ powerOfTen<QQ>(long n) {
  ZZ power(1);
  power.decimal_lshift(n < 0 ? -n : n);
  return n < 0 ? QQ(ZZ(1), power) : QQ(power);
}

namespace {

// The magnitude modulo p.
u64 residueOf(const ZZ& a, u64 p) {
  u64 residue = 0;
  for (long i = a.MN; i >= 1; --i)
    residue = static_cast<u64>(
        (static_cast<u128>(residue) * static_cast<u64>(ZZ::BASE) + static_cast<u64>(a.data[i])) % p);
  return residue;
}

}  // namespace

bool modulo(dbl_t x, unsigned long long p, unsigned long long& residue) {
  if (!(x <= 1e18L && x >= -1e18L)) return false;
  const long long whole = static_cast<long long>(x);
  if (static_cast<dbl_t>(whole) != x) return false;
  const u64 magnitude = static_cast<u64>(whole < 0 ? -whole : whole);
  // The primes in use lie above 10^18: most calls need no division.
  const u64 rest = magnitude < p ? magnitude : magnitude % p;
  residue = whole < 0 && rest != 0 ? p - rest : rest;
  return true;
}

bool modulo(const QQ& x, unsigned long long p, unsigned long long& residue) {
  if (x.isInf) return false;
  u64 rest = residueOf(x.ganze, p);
  if (!x.isWhole()) {
    const u64 n = residueOf(x.nenner, p);
    if (n == 0) return false;
    const u64 fraction = multiplyModuloAny(residueOf(x.zaehler, p), powerModuloAny(n, p - 2, p), p);
    rest = (rest + fraction) % p;
  }
  residue = x.sign || rest == 0 ? rest : p - rest;
  return true;
}

std::ostream& setFullPrecision(std::ostream& stream) {
  stream.unsetf(std::ios::fixed | std::ios::scientific);
  stream.precision(ZZ_DIGITS - 1);
  return stream;
}

std::string toText(dbl_t x) {
  char buffer[48];
  const int length = std::snprintf(buffer, sizeof buffer, "%.*Lg", ZZ_DIGITS - 1, x);
  return std::string(buffer, static_cast<std::size_t>(length));
}

template <>
QQ parseText<QQ>(const std::string& text) {
  return QQ(text);
}

template <>
dbl_t parseText<dbl_t>(const std::string& text) {
  return toDouble(QQ(text));
}

std::istream& readNumber(std::istream& stream, dbl_t& x) {
  QQ exact;
  if (readNumber(stream, exact)) x = toDouble(exact);
  return stream;
}

}  // namespace latbox
