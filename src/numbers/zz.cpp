#include "numbers/zz.h"

namespace latbox {

namespace {

constexpr u64 UBASE = static_cast<u64>(ZZ::BASE);

const ZZ& zzZero() {
  static const ZZ zero(0);
  return zero;
}

const ZZ& zzOne() {
  static const ZZ one(1);
  return one;
}

}  // namespace

ZZ::ZZ(long long value) : Array() {
  const u64 bits = static_cast<u64>(value);
  setMagnitude(value < 0 ? 0 - bits : bits, value >= 0);
}

void ZZ::setMagnitude128(u128 magnitude, bool nonNegative) {
  constexpr u128 TWO_LIMBS = static_cast<u128>(UBASE) * UBASE;
  if (magnitude < TWO_LIMBS) {
    setMagnitude(static_cast<u64>(magnitude), nonNegative);
    return;
  }
  long count = 0;
  Array::resize(5, false);  // 2^128 has 39 digits
  while (magnitude != 0) {
    const u64 low = static_cast<u64>(magnitude % TWO_LIMBS);
    magnitude /= TWO_LIMBS;
    data[++count] = static_cast<long long>(low % UBASE);
    if (count < 5) data[++count] = static_cast<long long>(low / UBASE);
  }
  MN = count;
  trim();
  sign = nonNegative;
}

bool ZZ::isZero() const {
  for (long i = MN; i >= 1; --i)
    if (data[i] != 0) return false;
  return true;
}

long ZZ::compare(const ZZ& a, const ZZ& b) {
  if (&a == &b) return 0;
  if (a.isZero() && b.isZero()) return 0;
  if (a.sign != b.sign) return a.sign ? 1 : -1;
  const long forward = a.sign ? 1 : -1;
  if (a.MN != b.MN) return a.MN > b.MN ? forward : -forward;
  for (long i = a.MN; i >= 1; --i) {
    const long long x = a[i], y = b[i];
    if (x != y) return x > y ? forward : -forward;
  }
  return 0;
}

// r = |a| + |b|, positive. `r` may be an operand: each limb is read before its place is written.
void ZZ::addMagnitudes(const ZZ& a, const ZZ& b, ZZ& r) {
  const ZZ& longer = a.MN >= b.MN ? a : b;
  const ZZ& shorter = a.MN >= b.MN ? b : a;
  const long common = shorter.MN, all = longer.MN;
  r.Array::resize(all, false);
  long long carry = 0;
  for (long i = 1; i <= common; ++i) {
    const long long sum = longer[i] + shorter.data[i] + carry;
    carry = sum >= BASE;
    r[i] = carry ? sum - BASE : sum;
  }
  for (long i = common + 1; i <= all; ++i) {
    const long long sum = longer[i] + carry;
    carry = sum >= BASE;
    r[i] = carry ? sum - BASE : sum;
  }
  if (carry) {
    r.Array::resize(all + 1, false);
    r[all + 1] = 1;
  }
  r.sign = true;
}

// r = |a| - |b| for |a| >= |b|, positive. `r` may be an operand.
void ZZ::subMagnitudes(const ZZ& a, const ZZ& b, ZZ& r) {
  const long common = b.MN, all = a.MN;
  r.Array::resize(all, false);
  long long borrow = 0;
  for (long i = 1; i <= common; ++i) {
    const long long difference = a[i] - b.data[i] - borrow;
    borrow = difference < 0;
    r[i] = borrow ? difference + BASE : difference;
  }
  for (long i = common + 1; i <= all; ++i) {
    const long long difference = a[i] - borrow;
    borrow = difference < 0;
    r[i] = borrow ? difference + BASE : difference;
  }
  r.trim();
  r.sign = true;
}

void ZZ::add(const ZZ& a, const ZZ& b, ZZ& r) {
  if (a.MN == 1 && b.MN == 1) {
    const long long sum = (a.sign ? a.data[1] : -a.data[1]) + (b.sign ? b.data[1] : -b.data[1]);
    r.setMagnitude(static_cast<u64>(sum < 0 ? -sum : sum), sum >= 0);
    return;
  }
  addGeneral(a, b, r);
}

void ZZ::sub(const ZZ& a, const ZZ& b, ZZ& r) {
  if (a.MN == 1 && b.MN == 1) {
    const long long difference = (a.sign ? a.data[1] : -a.data[1]) - (b.sign ? b.data[1] : -b.data[1]);
    r.setMagnitude(static_cast<u64>(difference < 0 ? -difference : difference), difference >= 0);
    return;
  }
  subGeneral(a, b, r);
}

void ZZ::addGeneral(const ZZ& a, const ZZ& b, ZZ& r) {
  addSigned(a, b, b.sign, r);
}
void ZZ::subGeneral(const ZZ& a, const ZZ& b, ZZ& r) {
  addSigned(a, b, !b.sign, r);
}

// r = a + (bSign ? |b| : -|b|): mixed signs are a subtraction of magnitudes.
void ZZ::addSigned(const ZZ& a, const ZZ& b, bool bSign, ZZ& r) {
  if (b.isZero()) {
    r = a;
    r.clearNegativeZero();
    return;
  }
  if (a.isZero()) {
    r = b;
    r.sign = bSign;
    return;
  }
  const bool aSign = a.sign;
  if (aSign == bSign) {
    addMagnitudes(a, b, r);
    r.sign = aSign;
    return;
  }
  const long order = compareMagnitudes(a, b);
  if (order >= 0)
    subMagnitudes(a, b, r);
  else
    subMagnitudes(b, a, r);
  r.sign = order == 0 || (order > 0 ? aSign : bSign);
}

long ZZ::compareMagnitudes(const ZZ& a, const ZZ& b) {
  if (a.MN != b.MN) return a.MN > b.MN ? 1 : -1;
  for (long i = a.MN; i >= 1; --i)
    if (a.data[i] != b.data[i]) return a.data[i] > b.data[i] ? 1 : -1;
  return 0;
}

void ZZ::clearNegativeZero() {
  if (isZero()) setSmall(0, true);
}

ZZ operator+(const ZZ& a, const ZZ& b) {
  ZZ r;
  ZZ::add(a, b, r);
  return r;
}

ZZ operator-(const ZZ& a, const ZZ& b) {
  ZZ r;
  ZZ::sub(a, b, r);
  return r;
}

ZZ operator*(const ZZ& a, const ZZ& b) {
  ZZ r;
  ZZ::mul(a, b, r);
  return r;
}

ZZ operator/(const ZZ& a, const ZZ& b) {
  ZZ q, rem;
  ZZ::div(a, b, q, rem);
  return q;
}

ZZ operator%(const ZZ& a, const ZZ& b) {
  ZZ q, rem;
  ZZ::div(a, b, q, rem);
  return rem;
}

ZZ operator-(const ZZ& a) {
  ZZ r(a);
  r.sign = !a.sign || a.isZero();
  return r;
}

ZZ operator^(const ZZ& base, const ZZ& exponent) {
  if (exponent < zzZero()) fail("[ ZZ::operator ^ ] Exponent < 0 ");
  ZZ r(zzOne()), b(base), e(exponent), rest;
  while (!e.isZero()) {
    if (e[1] & 1) ZZ::mul(r, b, r);
    ZZ::div(e, ZZ(2), e, rest);
    if (!e.isZero()) ZZ::mul(b, b, b);  // the square after the last bit would be thrown away
  }
  return r;
}

ZZ abs(const ZZ& a) {
  ZZ r(a);
  r.sign = true;
  return r;
}

}  // namespace latbox
