// Division of ZZ: Donald E. Knuth, The Art of Computer Programming, volume 2, section 4.3.1, algorithm D, in
// the base of the limbs.
#include <algorithm>
#include <utility>

#include "numbers/zz.h"

namespace latbox {

namespace {

constexpr long long BASE = ZZ::BASE;

// w = w - factor * y on the limbs 1 to y.MN + 1; returns true if the result is negative, in which case w
// holds it modulo BASE^(y.MN + 1).
bool subtractLimbMultiple(ZZ& w, const ZZ& y, long long factor) {
  long long borrow = 0;
  for (long i = 1; i <= y.MN; ++i) {
    const long long product = factor * y[i] + borrow;
    long long limb = w[i] - product % BASE;
    borrow = product / BASE;
    if (limb < 0) {
      limb += BASE;
      ++borrow;
    }
    w[i] = limb;
  }
  const long long top = w[y.MN + 1] - borrow;
  w[y.MN + 1] = top < 0 ? top + BASE : top;
  return top < 0;
}

// w = w + y modulo BASE^(y.MN + 1); returns true if a carry left the top limb, so that a negative w is not
// negative any more.
bool addBack(ZZ& w, const ZZ& y) {
  long long carry = 0;
  for (long i = 1; i <= y.MN; ++i) {
    const long long sum = w[i] + y[i] + carry;
    carry = sum >= BASE;
    w[i] = carry ? sum - BASE : sum;
  }
  const long long top = w[y.MN + 1] + carry;
  w[y.MN + 1] = top >= BASE ? top - BASE : top;
  return top >= BASE;
}

// One quotient limb: w, of y.MN + 1 limbs, becomes w mod y.
long long quotientLimb(ZZ& w, const ZZ& y) {
  const long n = y.MN;
  long long qhat = std::min(BASE - 1, (w[n + 1] * BASE + w[n]) / y[n]);
  bool negative = subtractLimbMultiple(w, y, qhat);
  while (negative) {
    --qhat;
    negative = !addBack(w, y);
  }
  return qhat;
}

}  // namespace

void ZZ::div(const ZZ& a, const ZZ& b, ZZ& q, ZZ& rem) {
  if (b.isZero()) fail("ZZ::div -- division by zero");
  const bool qSign = a.sign == b.sign, remSign = a.sign;
  if (b.MN > 2 || a.MN > 4) {
    if (b.MN > 1)
      divGeneral(a, b, q, rem);
    else
      divideByLimb(a, b, q, rem);
    return;
  }
  const u64 y = b.magnitude64();
  u64 rest;
  if (a.MN <= 2) {
    const u64 x = a.magnitude64();
    rest = x % y;
    if (&q != &rem) rem.setMagnitude(rest, remSign);
    q.setMagnitude(x / y, qSign);
    return;
  }
  const u128 x = a.magnitude128(), quotient = x / y;
  rest = static_cast<u64>(x - quotient * y);
  if (&q != &rem) rem.setMagnitude(rest, remSign);
  q.setMagnitude128(quotient, qSign);
}

// b has one limb: a single pass from the top, without the normalisation.
void ZZ::divideByLimb(const ZZ& a, const ZZ& b, ZZ& q, ZZ& rem) {
  const bool qSign = a.sign == b.sign, remSign = a.sign;
  const u64 divisor = b.magnitude64();
  const long count = a.MN;
  u64 rest = 0;
  // q may be a: each limb is read before its place is written. It may not be rem, which is written last.
  q.Array::resize(count, false);
  for (long i = count; i >= 1; --i) {
    const u64 value = rest * static_cast<u64>(BASE) + static_cast<u64>(a[i]);
    q[i] = static_cast<long long>(value / divisor);
    rest = value % divisor;
  }
  q.trim();
  q.sign = qSign || q.isZero();
  if (&q != &rem) rem.setMagnitude(rest, remSign);
}

void ZZ::divGeneral(const ZZ& a, const ZZ& b, ZZ& q, ZZ& rem) {
  if (b.isZero()) fail("ZZ::div -- division by zero");
  const bool qSign = a.sign == b.sign, remSign = a.sign;
  if (compareMagnitudes(a, b) < 0) {
    if (&q != &rem) {
      rem = a;
      rem.clearNegativeZero();
    }
    q.setSmall(0, true);
    return;
  }
  ZZ x(abs(a)), y(abs(b));
  const long long d = BASE / (y[y.MN] + 1);
  mul(x, ZZ(d), x);
  mul(y, ZZ(d), y);
  const auto appendZero = [&x] {
    x.Array::resize(x.MN + 1, false);
    x[x.MN] = 0;
  };
  if (x.MN == 1) appendZero();
  if ((x[x.MN] * BASE + x[x.MN - 1]) / y[y.MN] >= BASE) appendZero();

  // w starts as the top y.MN limbs of x; x takes the quotient limbs from the top down as it is used up.
  const long length = x.MN - y.MN;
  ZZ w, quotient;
  w.Array::resize(y.MN + 1, false);
  quotient.Array::resize(std::max(length, 1L), false);
  quotient[1] = 0;
  std::copy(x.data + length + 1, x.data + x.MN + 1, w.data + 1);
  for (long k = length; k >= 1; --k) {
    std::move_backward(w.data + 1, w.data + y.MN + 1, w.data + y.MN + 2);
    w[1] = x[k];
    quotient[k] = quotientLimb(w, y);
  }
  w[y.MN + 1] = 0;
  w.trim();
  quotient.trim();
  quotient.sign = qSign || quotient.isZero();
  if (&q != &rem) {
    ZZ unused;
    divideByLimb(w, ZZ(d), rem, unused);
    rem.sign = remSign || rem.isZero();
  }
  q = std::move(quotient);
}

}  // namespace latbox
