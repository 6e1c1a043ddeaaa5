// Conversions between QQ and dbl_t. Both ways go through decimal text: 0.1 is 1/10 and not its
// binary expansion, and what a dbl_t shows is what a QQ keeps. The short cuts give the number that the text
// would give.
#include <algorithm>
#include <cstdlib>
#include <string>

#include "lib/exceptions.h"
#include "numbers/number.h"

namespace latbox {

namespace {

// Powers of ten that a dbl_t holds exactly: 5^27 has 63 bits.
constexpr int EXACT_POWERS = 28;

dbl_t exactPowerOfTen(int n) {
  static const auto table = [] {
    struct {
      dbl_t power[EXACT_POWERS];
    } t{};
    dbl_t power = 1;
    for (dbl_t& entry : t.power) {
      entry = power;
      power *= 10;
    }
    return t;
  }();
  return table.power[n];
}

[[noreturn]] void notRepresentable() {
  throw PrecisionException("QQ is not representable as dbl_t");
}

int decimalLength(u64 x) {
  int length = 1;
  for (; x >= 10; x /= 10) ++length;
  return length;
}

u64 withoutTrailingZeros(u64 x) {
  while (x != 0 && x % 10 == 0) x /= 10;
  return x;
}

// ZZ::significantLength on a machine word: the limbs' texts, the lowest first and unpadded, without the zeros
// at the end.
long significantLength(u64 x) {
  constexpr u64 BASE = static_cast<u64>(ZZ::BASE);
  long length = 0;
  for (; x >= BASE; x /= BASE) length += decimalLength(x % BASE);
  return x == 0 ? 1 : length + decimalLength(withoutTrailingZeros(x));
}

// The digits of a fraction behind the point, as the text of the conversion shows them: `lead` zeros, then
// `digits` without trailing zeros.
struct Decimals {
  int lead = -1;
  u64 digits = 0;
};

// digits = digits * 10 + q, where (q, w) = 10 w div n. 64-bit division wherever it does: it is the cost here.
void nextDigit(u128& w, u64 n, u64& digits) {
  w *= 10;
  if ((w >> 64) == 0) {
    const u64 narrow = static_cast<u64>(w), q = narrow / n;
    digits = digits * 10 + q;
    w = narrow - q * n;
  } else {
    digits = digits * 10 + static_cast<u64>(w / n);
    w %= n;
  }
}

// Digits that `used` ones leave of the budget, as the power of ten that numbers within it stay below.
u64 budgetBound(long used) {
  return used < PRECISION_DIGITS
             ? static_cast<u64>(exactPowerOfTen(static_cast<int>(PRECISION_DIGITS - used)))
             : 0;
}

// The digit loop of toDoubleByText on machine words. False if it does not fit them. The first round takes two
// digits at once there, because the remainder keeps its last shift; so it does here.
bool smallDecimals(const QQ& x, bool strict, Decimals& decimals) {
  constexpr u64 LIMIT = 1000000000000000000;  // 10^18: ten times this fits 64 bits
  const u64 n = x.nenner.magnitude64();
  u128 w = x.zaehler.magnitude64();
  for (; w < n; w *= 10)
    if (++decimals.lead > EXACT_POWERS) return false;
  const long used = x.ganze.isZero() ? 0 : decimalLength(x.ganze.magnitude64()) + decimals.lead;
  const u64 bound = budgetBound(used);
  while (w != 0) {
    if (decimals.digits >= LIMIT) return false;
    nextDigit(w, n, decimals.digits);
    // No number has more significant digits than digits: the count is only needed near the end.
    if (decimals.digits < bound || used + significantLength(decimals.digits) <= PRECISION_DIGITS) continue;
    if (strict) notRepresentable();
    break;
  }
  return true;
}

// 19 to 36 digits before the point: the text ends there, and the conversion of a machine's integer rounds as
// the library rounds the text. Products of long entries are of this size, and a reduction takes many.
bool longToDouble(const QQ& x, dbl_t& result) {
  if (x.ganze.MN > 4 || x.ganze.data[x.ganze.MN] == 0) return false;
  result = static_cast<dbl_t>(x.ganze.magnitude128());
  if (!x.sign) result = -result;
  return true;
}

// An integer of at most 64 bits over an exact power of ten: one correctly rounded division, so the same
// number that the text gives.
bool toDoubleFast(const QQ& x, bool strict, dbl_t& result) {
  if (x.ganze.MN > 2 && !strict) return longToDouble(x, result);
  if (x.ganze.MN > 2 || x.nenner.MN > 2) return false;
  const u64 whole = x.ganze.magnitude64();
  result = static_cast<dbl_t>(whole);
  if (!x.zaehler.isZero()) {
    Decimals decimals;
    if (!smallDecimals(x, strict, decimals)) return false;
    const u64 digits = withoutTrailingZeros(decimals.digits);
    const int length = decimals.lead + decimalLength(digits);
    if (length >= EXACT_POWERS) return false;
    u128 numerator = digits;
    if (whole != 0) {
      if (length > 18) return false;
      numerator += static_cast<u128>(whole) * static_cast<u64>(exactPowerOfTen(length));
    }
    if ((numerator >> 64) != 0) return false;
    result = static_cast<dbl_t>(static_cast<u64>(numerator)) / exactPowerOfTen(length);
  }
  if (!x.sign) result = -result;
  return true;
}

dbl_t signedInfinity(bool nonNegative) {
  return nonNegative ? infinity<dbl_t>() : -infinity<dbl_t>();
}

// The digits behind the point, "" if there are none. `wholeDigits` of the integer part are shown already.
std::string decimalsByText(const QQ& x, long wholeDigits, bool strict) {
  ZZ w(x.zaehler), q(0), acc(0);
  long lead = -1, s = 0;
  // As long as w has fewer digits than the denominator, the quotient is 0: these zeros are shifted at once.
  const long zeros = x.nenner.digits() - w.digits() - 1;
  if (!w.isZero() && zeros > 0) {
    w.decimal_lshift(zeros);
    lead += zeros;
  }
  while (!w.isZero() && q.isZero()) {
    ++lead;
    w.decimal_lshift(1);
    q = w / x.nenner;
  }
  const long used = x.ganze.isZero() ? 0 : wholeDigits + std::max(lead, 0L);
  while (!w.isZero()) {
    w.decimal_lshift(1);
    ZZ::div(w, x.nenner, q, w);
    acc.decimal_lshift(1);
    acc = acc + q;
    s = acc.significantLength();
    if (used + s <= PRECISION_DIGITS) continue;
    if (strict) notRepresentable();
    break;
  }
  if (s == 0) return "";
  acc.removeTrailingZeros();
  std::string text(".");
  text.append(static_cast<std::size_t>(std::max(lead, 0L)), '0');
  return text.append(acc.to_string());
}

}  // namespace

dbl_t toDoubleByText(const QQ& x, bool strict) {
  if (x.isInf) return signedInfinity(x.sign);
  const long digits = x.ganze.digits();
  std::string text(x.sign ? "" : "-");
  text += x.ganze.to_string();
  if (digits <= PRECISION_DIGITS)
    text += decimalsByText(x, digits, strict);
  else if (strict)
    notRepresentable();
  return std::strtold(text.c_str(), nullptr);  // beyond its range: the signed infinity
}

dbl_t toDoubleStrict(const QQ& x, bool strict) {
  if (x.isInf) return signedInfinity(x.sign);
  dbl_t result;
  return toDoubleFast(x, strict, result) ? result : toDoubleByText(x, strict);
}

dbl_t toDouble(const QQ& x) {
  return toDoubleStrict(x, false);
}

bool convertStrict(const QQ& x, dbl_t& out) {
  try {
    const dbl_t converted = toDoubleStrict(x, true);
    if (QQ(converted) != x) return false;
    out = converted;
    return true;
  } catch (const PrecisionException&) {
    return false;
  }
}

QQ::QQ(dbl_t value) : nenner(1) {
  // The text shows 17 significant digits, so whole numbers below 10^17 arrive as they are.
  constexpr dbl_t EXACT_TEXT = 1e17L;
  const dbl_t magnitude = value < 0 ? -value : value;
  if (magnitude <= EPS) return;
  if (magnitude < EXACT_TEXT && magnitude == static_cast<dbl_t>(static_cast<u64>(magnitude))) {
    ganze.setMagnitude(static_cast<u64>(magnitude), true);
    sign = value >= 0;
    return;
  }
  parse(*this, toText(value));
}

template <>
dbl_t powerOfTen<dbl_t>(long n) {
  if (n >= 0 && n < EXACT_POWERS) return exactPowerOfTen(static_cast<int>(n));
  return std::strtold(("1e" + std::to_string(n)).c_str(), nullptr);
}

}  // namespace latbox
