// The decimal text of ZZ and what is defined through it: digit counts and shifts by powers of ten.
#include <algorithm>
#include <charconv>
#include <ostream>

#include "numbers/zz.h"

namespace latbox {

namespace {

constexpr long LIMB_DIGITS = ZZ::LIMB_DIGITS;

long powerOfTenLimb(long n) {
  long power = 1;
  for (; n > 0; --n) power *= 10;
  return power;
}

long digitsOf(long long limb) {
  long count = 1;
  for (; limb >= 10; limb /= 10) ++count;
  return count;
}

void appendLimb(std::string& text, long long limb, bool padded) {
  char buffer[24];
  const char* end = std::to_chars(buffer, buffer + sizeof buffer, limb).ptr;
  const auto length = static_cast<std::size_t>(end - buffer);
  if (padded) text.append(static_cast<std::size_t>(LIMB_DIGITS) - length, '0');
  text.append(buffer, length);
}

}  // namespace

void ZZ::parse(const std::string& text) {
  std::string digits;
  digits.reserve(text.size());
  for (const char ch : text)
    if (ch >= '0' && ch <= '9') digits += ch;
  sign = text.empty() || text[0] != '-';

  const long length = static_cast<long>(digits.size());
  Array::resize((length + LIMB_DIGITS - 1) / LIMB_DIGITS, false);
  long end = length;
  for (long i = 1; i <= MN; ++i, end -= LIMB_DIGITS) {
    const long start = std::max(0L, end - LIMB_DIGITS);
    long long limb = 0;
    std::from_chars(digits.data() + start, digits.data() + end, limb);
    data[i] = limb;
  }
  trim();
}

std::string ZZ::to_string() const {
  std::string text(sign ? "" : "-");
  if (MN == 0) return text + "0";
  text.reserve(static_cast<std::size_t>(MN * LIMB_DIGITS) + 1);
  appendLimb(text, data[MN], false);
  for (long i = MN - 1; i >= 1; --i) appendLimb(text, data[i], true);
  return text;
}

std::ostream& operator<<(std::ostream& stream, const ZZ& a) {
  return stream << a.to_string();
}

long ZZ::digits() const {
  if (MN == 0) return 1;
  return LIMB_DIGITS * (MN - 1) + digitsOf(data[MN]);
}

long ZZ::significantLength() const {
  std::string text;
  for (long i = 1; i <= MN; ++i) appendLimb(text, data[i], false);
  const std::size_t last = text.find_last_not_of('0');
  return last == std::string::npos ? 1 : static_cast<long>(last) + 1;
}

void ZZ::decimalLshiftByText(long n) {
  if (isZero()) return;
  parse(to_string() + std::string(static_cast<std::size_t>(n), '0'));
}

void ZZ::decimalRshiftByText(long n) {
  if (isZero()) return;
  std::string text = to_string();
  if (static_cast<long>(text.size()) <= n) {
    setSmall(0, true);
    return;
  }
  text.resize(text.size() - static_cast<std::size_t>(n));
  parse(text);
  clearNegativeZero();  // "-5" leaves the lone "-"
}

void ZZ::decimal_lshift(long n) {
  if (!sign || n < 0) return decimalLshiftByText(n);
  if (isZero()) return;
  if (n % LIMB_DIGITS != 0) mul(*this, ZZ(powerOfTenLimb(n % LIMB_DIGITS)), *this);
  prependLimbs(n / LIMB_DIGITS);
}

void ZZ::decimal_rshift(long n) {
  if (!sign || n < 0) return decimalRshiftByText(n);
  if (isZero()) return;
  if (digits() <= n) return setSmall(0, true);
  base_rshift(n / LIMB_DIGITS);
  if (n % LIMB_DIGITS != 0) div(*this, ZZ(powerOfTenLimb(n % LIMB_DIGITS)), *this, *this);
}

void ZZ::base_rshift(long steps) {
  if (steps > MN) fail("ZZ::base_rshift steps > N");
  if (steps <= 0) return;
  std::copy(data + steps + 1, data + MN + 1, data + 1);
  MN -= steps;
}

void ZZ::removeTrailingZeros() {
  if (isZero()) return;
  long zeroLimbs = 0;
  while (data[zeroLimbs + 1] == 0) ++zeroLimbs;
  base_rshift(zeroLimbs);
  long long power = 1;
  while (data[1] % (power * 10) == 0) power *= 10;
  if (power > 1) div(*this, ZZ(power), *this, *this);
}

}  // namespace latbox
