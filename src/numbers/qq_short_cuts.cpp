// Short cuts of QQ for integers of any size, for parts of at most two limbs and for reduced fractions; the
// last stand in qq_reduced.cpp. Each gives exactly the object that the algorithm in qq.cpp gives, since
// canonical form is unique; the tests hold one against the other.
//
// They are the rule and not the exception: most numbers of a run in extended precision are integers or small
// fractions, and the general algorithms take 5 to 50 times as long on these, most of it on divisions and
// greatest common divisors that cancel nothing.
#include <utility>

#include "numbers/qq.h"

namespace latbox {

namespace {

__extension__ typedef __int128 i128;

bool oneLimb(const ZZ& a) {
  return a.MN == 1;
}
bool zeroLimb(const ZZ& a) {
  return a.MN == 1 && a.data[1] == 0;
}

// `a` with a sign, for at most two limbs.
long long signedSmall(const ZZ& a, bool nonNegative) {
  const long long value = static_cast<long long>(a.magnitude64());
  return nonNegative ? value : -value;
}

u64 gcdOfDenominators(u64 a, u64 b) {
  if (a == b) return a;
  return a == 1 || b == 1 ? 1 : gcd64(a, b);
}

// 64-bit division where both fit: the 128-bit one is a library call.
void divideWide(u128 a, u128 b, u128& quotient, u128& rest) {
  if ((a >> 64) == 0 && (b >> 64) == 0) {
    const u64 x = static_cast<u64>(a), y = static_cast<u64>(b);
    quotient = x / y;
    rest = x % y;
  } else {
    quotient = a / b;
    rest = a - quotient * b;
  }
}

}  // namespace

// Finite and reduced, each part below 10^18.
bool QQ::smallParts() const {
  return !isInf && !unreduced_ && ganze.fitsTwoLimbs() && nenner.fitsTwoLimbs();
}

// ganze * nenner + zaehler, if it lies below 2^63.
bool QQ::smallNumerator(u64& numerator) const {
  const u128 value = static_cast<u128>(ganze.magnitude64()) * nenner.magnitude64() + zaehler.magnitude64();
  numerator = static_cast<u64>(value);
  return (value >> 63) == 0;
}

// Sets numerator / denominator, which are coprime.
void QQ::setSmall(u128 numerator, u128 denominator, bool nonNegative) {
  isInf = unreduced_ = false;
  sign = nonNegative || numerator == 0;
  if (denominator == 1) {
    ganze.setMagnitude128(numerator, true);
    setInteger();
    return;
  }
  u128 quotient, rest;
  divideWide(numerator, denominator, quotient, rest);
  ganze.setMagnitude128(quotient, true);
  zaehler.setMagnitude128(rest, true);
  nenner.setMagnitude128(denominator, true);
}

void QQ::addIntegers(QQ& r, const QQ& a, const QQ& b, bool bSign) {
  const bool aSign = a.sign;
  bool resultSign = aSign;
  if (aSign == bSign) {
    ZZ::add(a.ganze, b.ganze, r.ganze);
  } else {
    ZZ::sub(a.ganze, b.ganze, r.ganze);
    if (!r.ganze.sign) {
      r.ganze.sign = true;
      resultSign = bSign;
    }
  }
  r.sign = resultSign || r.ganze.isZero();
  if (&r != &a && &r != &b) r.setInteger();  // an operand is an integer already
}

// With d = gcd(n1, n2), the sum over n1 n2 / d can only be reduced by a divisor of d (Knuth, volume 2,
// section 4.5.1), so that no greatest common divisor beyond 64 bits is needed. `Wide` holds n1 n2 and twice a
// numerator.
template <class Wide>
void QQ::addSmall(QQ& r, const QQ& a, const QQ& b, bool bSign) {
  const u64 n1 = a.nenner.magnitude64(), n2 = b.nenner.magnitude64();
  const u64 d = gcdOfDenominators(n1, n2);
  const Wide t1 = static_cast<Wide>(a.zaehler.magnitude64()) * static_cast<Wide>(n2 / d);
  const Wide t2 = static_cast<Wide>(b.zaehler.magnitude64()) * static_cast<Wide>(n1 / d);
  Wide fraction = (a.sign ? t1 : -t1) + (bSign ? t2 : -t2);
  Wide n = static_cast<Wide>(n1 / d) * static_cast<Wide>(n2);
  long long whole = signedSmall(a.ganze, a.sign) + signedSmall(b.ganze, bSign);
  if (fraction == 0) {
    n = 1;
  } else if (d > 1) {
    const Wide magnitude = fraction < 0 ? -fraction : fraction;
    const Wide e = static_cast<Wide>(gcd64(d, static_cast<u64>(magnitude % static_cast<Wide>(d))));
    fraction /= e;
    n /= e;
  }
  // |fraction| < 2 n: one step brings it below n, another gives it the sign of the whole part.
  const int carry = fraction >= n ? 1 : (fraction <= -n ? -1 : 0);
  whole += carry;
  fraction -= carry * n;
  const int borrow = whole > 0 && fraction < 0 ? 1 : (whole < 0 && fraction > 0 ? -1 : 0);
  whole -= borrow;
  fraction += borrow * n;
  r.isInf = r.unreduced_ = false;
  r.sign = whole >= 0 && fraction >= 0;
  r.ganze.setMagnitude(static_cast<u64>(whole < 0 ? -whole : whole), true);
  r.zaehler.setMagnitude128(static_cast<u128>(fraction < 0 ? -fraction : fraction), true);
  r.nenner.setMagnitude128(static_cast<u128>(fraction == 0 ? 1 : n), true);
}

bool QQ::addFast(QQ& r, const QQ& a, const QQ& b, bool bSign) {
  if (a.isInf || b.isInf || a.unreduced_ || b.unreduced_) return false;
  if (zeroLimb(a.zaehler) && zeroLimb(b.zaehler)) {
    addIntegers(r, a, b, bSign);
    return true;
  }
  if (!a.smallParts() || !b.smallParts())
    addReduced(r, a, b, bSign);
  else if (oneLimb(a.nenner) && oneLimb(b.nenner))
    addSmall<long long>(r, a, b, bSign);
  else
    addSmall<i128>(r, a, b, bSign);
  return true;
}

bool QQ::mulFast(QQ& r, const QQ& a, const QQ& b) {
  if (a.isInf || b.isInf || a.unreduced_ || b.unreduced_) return false;
  const bool resultSign = a.sign == b.sign;
  if (zeroLimb(a.zaehler) && zeroLimb(b.zaehler)) {
    ZZ::mul(a.ganze, b.ganze, r.ganze);
    r.sign = resultSign || r.ganze.isZero();
    if (&r != &a && &r != &b) r.setInteger();
    return true;
  }
  if (roundProducts()) return false;
  u64 x, y;
  if (!a.smallParts() || !b.smallParts() || !a.smallNumerator(x) || !b.smallNumerator(y)) {
    mulReduced(r, a, b);
    return true;
  }
  const u64 n1 = a.nenner.magnitude64(), n2 = b.nenner.magnitude64();
  const u64 g = n2 == 1 ? 1 : gcd64(x, n2), h = n1 == 1 ? 1 : gcd64(y, n1);
  r.setSmall(static_cast<u128>(x / g) * (y / h), static_cast<u128>(n1 / h) * (n2 / g), resultSign);
  return true;
}

bool QQ::divideFast(QQ& r, const QQ& a, const QQ& b) {
  if (a.isInf || b.isInf || a.unreduced_ || b.unreduced_ || b.isExactZero()) return false;
  u64 x, y;
  if (!a.smallParts() || !b.smallParts() || !a.smallNumerator(x) || !b.smallNumerator(y)) {
    divideReduced(r, a, b);
    return true;
  }
  const bool resultSign = a.sign == b.sign;
  const u64 n1 = a.nenner.magnitude64(), n2 = b.nenner.magnitude64();
  const u64 g = gcd64(x, y), h = gcdOfDenominators(n1, n2);
  r.setSmall(static_cast<u128>(x / g) * (n2 / h), static_cast<u128>(n1 / h) * (y / g), resultSign);
  return true;
}

long QQ::compare(const QQ& a, const QQ& b) {
  if (a.isInf || b.isInf || a.sign != b.sign) return compareGeneral(a, b);
  const long forward = a.sign ? 1 : -1;
  const long c = ZZ::compare(a.ganze, b.ganze);
  if (c != 0) return c * forward;
  if (!a.nenner.fitsTwoLimbs() || !b.nenner.fitsTwoLimbs())
    return ZZ::compare(a.zaehler * b.nenner, b.zaehler * a.nenner) * forward;
  const u128 left = static_cast<u128>(a.zaehler.magnitude64()) * b.nenner.magnitude64();
  const u128 right = static_cast<u128>(b.zaehler.magnitude64()) * a.nenner.magnitude64();
  if (left == right) return 0;
  return left > right ? forward : -forward;
}

}  // namespace latbox
