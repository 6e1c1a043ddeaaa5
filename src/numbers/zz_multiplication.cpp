// Multiplication of ZZ: the school method for few limbs, A. Karatsuba's above.
#include <algorithm>
#include <utility>

#include "numbers/zz.h"

namespace latbox {

namespace {

constexpr u64 UBASE = static_cast<u64>(ZZ::BASE);

// Above this product of lengths multiplication splits its operands.
constexpr long SCHOOL_LIMIT = 200;

}  // namespace

void ZZ::mul(const ZZ& a, const ZZ& b, ZZ& r) {
  if (a.MN == 1 && b.MN == 1) {
    const u64 product = static_cast<u64>(a.data[1]) * static_cast<u64>(b.data[1]);
    r.setMagnitude(product, a.sign == b.sign);
    return;
  }
  mulGeneral(a, b, r);
}

void ZZ::mulGeneral(const ZZ& a, const ZZ& b, ZZ& r) {
  if (a.isZero() || b.isZero()) {
    r.setSmall(0, true);
    return;
  }
  if (&r == &a || &r == &b) {
    ZZ product;
    mulGeneral(a, b, product);
    r = std::move(product);
    return;
  }
  if (a.MN * b.MN > SCHOOL_LIMIT)
    mulKaratsuba(a, b, r);
  else
    mulSchool(a, b, r);
}

namespace {

// Column by column: nothing is stored but the result. Best for few limbs.
void multiplyColumns(const long long* x, long n, const long long* y, long m, long long* out) {
  u64 accumulator = 0;
  for (long column = 0; column < n + m - 1; ++column) {
    const long from = std::max(0L, column - m + 1), to = std::min(column, n - 1);
    for (long i = from; i <= to; ++i) accumulator += static_cast<u64>(x[i]) * static_cast<u64>(y[column - i]);
    out[column] = static_cast<long long>(accumulator % UBASE);
    accumulator /= UBASE;
  }
  out[n + m - 1] = static_cast<long long>(accumulator);
}

// sums[0 .. m + 2] += y times four limbs of the other operand, in one pass over the sums.
void addFourRows(const long long* x, const long long* y, long m, u64* sums) {
  const u64 x0 = static_cast<u64>(x[0]), x1 = static_cast<u64>(x[1]);
  const u64 x2 = static_cast<u64>(x[2]), x3 = static_cast<u64>(x[3]);
  u64 y1 = 0, y2 = 0, y3 = 0;  // the limbs of y before this one
  for (long j = 0; j < m; ++j) {
    const u64 y0 = static_cast<u64>(y[j]);
    sums[j] += x0 * y0 + x1 * y1 + x2 * y2 + x3 * y3;
    y3 = y2;
    y2 = y1;
    y1 = y0;
  }
  sums[m] += x1 * y1 + x2 * y2 + x3 * y3;
  sums[m + 1] += x2 * y1 + x3 * y2;
  sums[m + 2] += x3 * y1;
}

// Four rows at a time: a sixth faster than by columns at 100 digits, since every loop but the last few is of
// one length.
void multiplyRows(const long long* x, long n, const long long* y, long m, long long* out) {
  u64 sums[SCHOOL_LIMIT + 4];
  std::fill(sums, sums + n + m, 0ULL);
  long i = 0;
  for (; i + 4 <= n; i += 4) addFourRows(x + i, y, m, sums + i);
  for (; i < n; ++i)
    for (long j = 0; j < m; ++j) sums[i + j] += static_cast<u64>(x[i]) * static_cast<u64>(y[j]);
  u64 carry = 0;
  for (long k = 0; k < n + m; ++k) {
    const u64 sum = sums[k] + carry;
    carry = sum / UBASE;
    out[k] = static_cast<long long>(sum - carry * UBASE);
  }
}

}  // namespace

// A limb product is below 10^18, so one unsigned sum of 64 bits holds 18 of them with the carry of the column
// before, and each column costs one division by BASE; a division per limb product took over twice as long at
// 100 digits. The school limit keeps the shorter operand below 15 limbs.
void ZZ::mulSchool(const ZZ& a, const ZZ& b, ZZ& r) {
  constexpr long ROWS_FROM = 7;
  const ZZ& shorter = a.MN <= b.MN ? a : b;
  const ZZ& longer = a.MN <= b.MN ? b : a;
  const long n = shorter.MN, m = longer.MN;
  r.Array::resize(n + m, false);
  // The ends of the ranges take the checked access; the loops stay between them.
  const bool rows = n >= ROWS_FROM && n + m <= SCHOOL_LIMIT;
  (rows ? multiplyRows : multiplyColumns)(&shorter[1], n, &longer[1], m, &r[1]);
  r.trim();
  r.sign = a.sign == b.sign;
}

// The limbs above m, zero if there are none.
ZZ ZZ::highPart(long m) const {
  ZZ part;
  if (MN <= m) return part;
  part.Array::resize(MN - m, false);
  std::copy(data + m + 1, data + MN + 1, part.data + 1);
  part.trim();
  part.sign = sign || part.isZero();
  return part;
}

// The limbs 1 to m without leading zeros.
ZZ ZZ::lowPart(long m) const {
  ZZ part;
  const long count = std::min(m, MN);
  part.Array::resize(count, false);
  std::copy(data + 1, data + count + 1, part.data + 1);
  part.trim();
  part.sign = sign || part.isZero();
  return part;
}

void ZZ::prependLimbs(long count) {
  const long old = MN;
  if (isZero()) return;
  Array::resize(old + count, false);
  std::move_backward(data + 1, data + old + 1, data + old + count + 1);
  std::fill(data + 1, data + count + 1, 0LL);
}

// The subtractive form: (a_hi - a_lo)(b_lo - b_hi) + a_hi b_hi + a_lo b_lo is the middle term.
void ZZ::mulKaratsuba(const ZZ& a, const ZZ& b, ZZ& r) {
  const long longer = std::max(a.MN, b.MN);
  const long length = longer + (longer & 1), m = length / 2;
  const ZZ aHigh = a.highPart(m), aLow = a.lowPart(m), bHigh = b.highPart(m), bLow = b.lowPart(m);
  ZZ t1, t2, z0, z1, z2;
  sub(aHigh, aLow, t1);
  sub(bLow, bHigh, t2);
  mul(t1, t2, z1);
  mul(aHigh, bHigh, z2);
  mul(aLow, bLow, z0);
  add(z1, z2, z1);
  add(z1, z0, z1);
  z1.prependLimbs(m);
  z2.prependLimbs(length);
  add(z1, z2, r);
  add(r, z0, r);
}

}  // namespace latbox
