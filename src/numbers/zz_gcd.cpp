// Greatest common divisor of ZZ: Euclid's algorithm, with D. H. Lehmer's steps on the leading limbs while the
// numbers are long (Knuth, The Art of Computer Programming, volume 2, section 4.5.2, algorithm L), and
// Stein's binary algorithm on machine words at the end.
//
// The reduction of fractions spends its time here. Plain Euclid takes a long division per step, which made a
// sum of fractions of 100 digits sixteen times as slow.
#include <bit>
#include <utility>

#include "numbers/zz.h"

namespace latbox {

namespace {

constexpr u64 BASE = static_cast<u64>(ZZ::BASE);

// What fits ZZ::magnitude128.
constexpr long WORD_LIMBS = 4;

int trailingZeros(u64 x) {
  return std::countr_zero(x);
}
int trailingZeros(u128 x) {
  const u64 low = static_cast<u64>(x);
  return low != 0 ? std::countr_zero(low) : 64 + std::countr_zero(static_cast<u64>(x >> 64));
}

// Stein's algorithm; a and b are not zero.
template <class Word>
Word binaryGcd(Word a, Word b) {
  const int shift = trailingZeros(a | b);
  a >>= trailingZeros(a);
  b >>= trailingZeros(b);
  while (a != b) {
    const Word difference = a > b ? a - b : b - a;
    b = a > b ? b : a;
    a = difference >> trailingZeros(difference);
  }
  return a << shift;
}

u128 gcd128(u128 a, u128 b) {
  if (b == 0) return a;
  a %= b;
  if (a == 0) return b;
  if ((a >> 64) == 0) return gcd64(static_cast<u64>(a), static_cast<u64>(b % a));
  return binaryGcd(a, b);
}

// The limbs n, n - 1, n - 2 of a.
u128 leadingLimbs(const ZZ& a, long n) {
  u128 value = 0;
  for (long i = n; i > n - 3; --i) value = value * BASE + static_cast<u64>(i <= a.MN ? a[i] : 0);
  return value;
}

// The product of several steps of Euclid's algorithm: (x, y) becomes (a x + b y, c x + d y).
struct Cofactors {
  long long a = 1, b = 0, c = 0, d = 1;
};

// The steps that the leading 62 bits decide for certain. The cofactors stay within 31 bits, so that their
// products with limbs, and sums of two, fit 64 bits.
Cofactors leadingSteps(const ZZ& longer, const ZZ& shorter) {
  constexpr long long LIMIT = 1LL << 31;
  const u128 top = leadingLimbs(longer, longer.MN);
  const int width = 128 - (top >> 64 != 0 ? std::countl_zero(static_cast<u64>(top >> 64))
                                          : 64 + std::countl_zero(static_cast<u64>(top)));
  const int drop = width > 62 ? width - 62 : 0;
  long long x = static_cast<long long>(top >> drop);
  long long y = static_cast<long long>(leadingLimbs(shorter, longer.MN) >> drop);
  Cofactors k;
  while (y + k.c != 0 && y + k.d != 0) {
    const long long q = (x + k.a) / (y + k.c);
    if (q >= LIMIT || q != (x + k.b) / (y + k.d)) break;
    const Cofactors next{k.c, k.d, k.a - q * k.c, k.b - q * k.d};
    if (next.c >= LIMIT || next.c <= -LIMIT || next.d >= LIMIT || next.d <= -LIMIT) break;
    k = next;
    x = std::exchange(y, x - q * y);
  }
  return k;
}

// (x, y) = (a x + b y, c x + d y), both of which are non-negative.
void apply(const Cofactors& k, ZZ& x, ZZ& y) {
  const long n = x.MN, m = y.MN;
  const auto floorDivide = [](long long value) {
    const long long q = value / ZZ::BASE;
    return q - (q * ZZ::BASE > value);
  };
  y.resize(n, false);
  for (long i = m + 1; i <= n; ++i) y[i] = 0;
  long long xCarry = 0, yCarry = 0;
  for (long i = 1; i <= n; ++i) {
    const long long u = x[i], v = y[i];
    const long long first = k.a * u + k.b * v + xCarry, second = k.c * u + k.d * v + yCarry;
    xCarry = floorDivide(first);
    yCarry = floorDivide(second);
    x[i] = first - xCarry * ZZ::BASE;
    y[i] = second - yCarry * ZZ::BASE;
  }
  x.trim();
  y.trim();
}

}  // namespace

// One division first, which evens out lengths that differ.
u64 gcd64(u64 a, u64 b) {
  if (b == 0) return a;
  a %= b;
  return a == 0 ? b : binaryGcd(a, b);
}

ZZ gcd(const ZZ& a, const ZZ& b) {
  ZZ x(abs(a)), y(abs(b)), q;
  if (x < y) std::swap(x, y);
  while (x.MN > WORD_LIMBS && !y.isZero()) {
    const Cofactors k = y.MN + 1 >= x.MN ? leadingSteps(x, y) : Cofactors();
    if (k.b != 0) {
      apply(k, x, y);
    } else {
      ZZ::div(x, y, q, x);
      std::swap(x, y);
    }
  }
  if (!y.isZero()) x.setMagnitude128(gcd128(x.magnitude128(), y.magnitude128()), true);
  return x;
}

}  // namespace latbox
