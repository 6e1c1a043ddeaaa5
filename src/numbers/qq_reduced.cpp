// Sums, products and quotients of reduced fractions of any size: Knuth, The Art of Computer Programming,
// volume 2, section 4.5.1. Greatest common divisors are taken of the operands' parts, crosswise, and never of
// a result, which is twice as long. The objects are those of the algorithms in qq.cpp, since canonical form
// is unique; those expand a product into four sums, with some ten greatest common divisors on the way.
#include <utility>

#include "numbers/qq.h"

namespace latbox {

namespace {

ZZ withSign(ZZ a, bool nonNegative) {
  a.sign = nonNegative || a.isZero();
  return a;
}

ZZ quotient(const ZZ& a, const ZZ& b) {
  return b.isOne() ? a : a / b;
}

ZZ gcdOf(const ZZ& a, const ZZ& b) {
  return a.isOne() || b.isOne() ? ZZ(1) : gcd(a, b);
}

// ganze * nenner + zaehler.
ZZ improper(const QQ& x) {
  return x.zaehler.isZero() ? x.ganze : x.ganze * x.nenner + x.zaehler;
}

}  // namespace

// Sets numerator / denominator, magnitudes that are coprime.
void QQ::setReduced(ZZ numerator, ZZ denominator, bool nonNegative) {
  isInf = unreduced_ = false;
  sign = nonNegative || numerator.isZero();
  if (denominator.isOne()) {
    ganze = std::move(numerator);
    return setInteger();
  }
  ZZ::div(numerator, denominator, ganze, zaehler);
  nenner = std::move(denominator);
}

// Sets whole + fraction / n, with |fraction| < 2 n and of either sign: one step brings the fraction below n,
// another gives it the sign of the whole part.
void QQ::settle(ZZ whole, ZZ fraction, ZZ n) {
  const ZZ one(1);
  if (abs(fraction) >= n) {
    const bool up = fraction.sign;
    whole = up ? whole + one : whole - one;
    fraction = up ? fraction - n : fraction + n;
  }
  if (!whole.isZero() && !fraction.isZero() && whole.sign != fraction.sign) {
    const bool up = whole.sign;
    whole = up ? whole - one : whole + one;
    fraction = up ? fraction + n : fraction - n;
  }
  isInf = unreduced_ = false;
  sign = whole.sign && fraction.sign;
  ganze = std::move(whole);
  zaehler = std::move(fraction);
  nenner = std::move(n);
  ganze.sign = zaehler.sign = true;
  if (zaehler.isZero()) setInteger();
}

void QQ::addReduced(QQ& r, const QQ& a, const QQ& b, bool bSign) {
  const ZZ d = gcdOf(a.nenner, b.nenner);
  const ZZ first = quotient(b.nenner, d), second = quotient(a.nenner, d);
  ZZ fraction = withSign(a.zaehler * first, a.sign) + withSign(b.zaehler * second, bSign);
  ZZ n = second * b.nenner;
  // The sum over n can only be reduced by a divisor of d.
  const ZZ e = gcdOf(d, fraction);
  if (!e.isOne() && !fraction.isZero()) {
    fraction = fraction / e;
    n = n / e;
  }
  ZZ whole = withSign(a.ganze, a.sign) + withSign(b.ganze, bSign);
  r.settle(std::move(whole), std::move(fraction), std::move(n));
}

void QQ::mulReduced(QQ& r, const QQ& a, const QQ& b) {
  const bool sign = a.sign == b.sign;
  const ZZ x = improper(a), y = improper(b);
  const ZZ g = gcdOf(b.nenner, x), h = gcdOf(a.nenner, y);
  r.setReduced(quotient(x, g) * quotient(y, h), quotient(a.nenner, h) * quotient(b.nenner, g), sign);
}

// b is not zero.
void QQ::divideReduced(QQ& r, const QQ& a, const QQ& b) {
  const bool sign = a.sign == b.sign;
  const ZZ x = improper(a), y = improper(b);
  const ZZ g = gcdOf(x, y), h = gcdOf(a.nenner, b.nenner);
  r.setReduced(quotient(x, g) * quotient(b.nenner, h), quotient(a.nenner, h) * quotient(y, g), sign);
}

}  // namespace latbox
