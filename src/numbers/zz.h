// ZZ: a signed integer of any size in a decimal base.
//
// The base is a power of ten on purpose: printing, reading, counting digits and shifting by powers of ten
// need no change of base, and the rounding of QQ counts decimal digits. It must not become a power of two.
//
// Limbs are magnitudes in 0 .. BASE - 1, least significant in element 1. A number in normal form has no
// leading zero limb; zero has one limb of 0 and `sign` true. Every operation returns normal form for operands
// in it; only text may leave a number without limbs ("") or a negative zero ("-0"), and base_rshift one that
// has lost all its limbs. They compare equal to zero and are good operands of the arithmetic.
#pragma once

#include <iosfwd>
#include <string>

#include "lib/constants.h"
#include "numbers/limb_array.h"

namespace latbox {

__extension__ typedef unsigned __int128 u128;
using u64 = unsigned long long;

class ZZ : public Array<long long> {
 public:
  static constexpr int LIMB_DIGITS = ZZ_DIGITS / 2;
  static constexpr long long BASE = [] {
    long long base = 1;
    for (int i = 0; i < LIMB_DIGITS; ++i) base *= 10;
    return base;
  }();

  bool sign = true;  // false for a negative number

  ZZ() : Array() { setSmall(0, true); }
  ZZ(int value) : ZZ(static_cast<long long>(value)) {}
  ZZ(long value) : ZZ(static_cast<long long>(value)) {}
  ZZ(long long value);
  // Reads digits; see parse. Never fails.
  explicit ZZ(const char* text) { parse(text); }
  explicit ZZ(const std::string& text) { parse(text); }

  // `sign` is false exactly when the first character is '-'; every other character that is no digit is
  // dropped. Empty text gives MN 0.
  void parse(const std::string& text);

  // -1, 0 or +1.
  static long compare(const ZZ& a, const ZZ& b);
  // The result may be the same object as an operand.
  static void add(const ZZ& a, const ZZ& b, ZZ& r);
  static void sub(const ZZ& a, const ZZ& b, ZZ& r);
  static void mul(const ZZ& a, const ZZ& b, ZZ& r);
  // Truncating division: the remainder takes the sign of `a`. `q` and `rem` may be operands; if they are one
  // object, the quotient is what stays. Fails with "ZZ::div -- division by zero".
  static void div(const ZZ& a, const ZZ& b, ZZ& q, ZZ& rem);

  // Drops the `steps` lowest limbs. Fails with "ZZ::base_rshift steps > N".
  void base_rshift(long steps);
  // Multiplies by 10^n, n >= 0.
  void decimal_lshift(long n);
  // Drops the n lowest characters of the decimal text, the "-" of a negative number being one of them.
  void decimal_rshift(long n);
  // The shifts as defined, through text; the ones above take the limbs where the result is the same.
  void decimalLshiftByText(long n);
  void decimalRshiftByText(long n);
  // Divides by 10 as long as the lowest digit is 0; leaves zero alone.
  void removeTrailingZeros();

  // Count of decimal digits of a number in normal form.
  long digits() const;
  // The length of the limbs' texts, written unpadded from element 1 upward, without trailing "0"s; at
  // least 1.
  long significantLength() const;
  std::string to_string() const;

  // All limbs zero, whatever `sign` and `MN`.
  bool isZero() const;
  bool isOne() const { return MN == 1 && data[1] == 1 && sign; }

  // The magnitude, if it has at most two limbs (below 10^18).
  bool fitsTwoLimbs() const { return MN <= 2; }
  u64 magnitude64() const {
    if (MN == 0) return 0;
    const u64 low = static_cast<u64>(data[1]);
    return MN == 1 ? low : low + static_cast<u64>(data[2]) * static_cast<u64>(BASE);
  }
  // The magnitude, if it has at most four limbs (below 10^36).
  u128 magnitude128() const {
    u128 value = 0;
    for (long i = MN; i >= 1; --i) value = value * static_cast<u64>(BASE) + static_cast<u64>(data[i]);
    return value;
  }
  // Sets the magnitude and the sign; zero gets `sign` true.
  void setMagnitude(u64 magnitude, bool nonNegative) {
    if (magnitude < static_cast<u64>(BASE))
      return setSmall(static_cast<long long>(magnitude), nonNegative || magnitude == 0);
    const u64 high = magnitude / static_cast<u64>(BASE);
    const bool three = high >= static_cast<u64>(BASE);
    Array::resize(three ? 3 : 2, false);
    data[1] = static_cast<long long>(magnitude - high * static_cast<u64>(BASE));
    data[2] = static_cast<long long>(three ? high % static_cast<u64>(BASE) : high);
    if (three) data[3] = static_cast<long long>(high / static_cast<u64>(BASE));
    sign = nonNegative;
  }
  void setMagnitude128(u128 magnitude, bool nonNegative);

  // Removes leading zero limbs, keeping one limb at least.
  void trim() {
    long top = MN;
    while (top > 1 && data[top] == 0) --top;
    MN = top;
  }

  // The algorithms without their short cuts for few limbs; tests hold one against the other.
  static void addGeneral(const ZZ& a, const ZZ& b, ZZ& r);
  static void subGeneral(const ZZ& a, const ZZ& b, ZZ& r);
  static void mulGeneral(const ZZ& a, const ZZ& b, ZZ& r);
  static void mulSchool(const ZZ& a, const ZZ& b, ZZ& r);  // r is no operand; at most 18 limbs in the shorter
  static void divGeneral(const ZZ& a, const ZZ& b, ZZ& q, ZZ& rem);

 private:
  void setSmall(long long limb, bool nonNegative) {
    Array::resize(1, false);
    data[1] = limb;
    sign = nonNegative;
  }
  ZZ highPart(long m) const;
  ZZ lowPart(long m) const;
  void prependLimbs(long count);
  static void mulKaratsuba(const ZZ& a, const ZZ& b, ZZ& r);
  static void addMagnitudes(const ZZ& a, const ZZ& b, ZZ& r);
  static void subMagnitudes(const ZZ& a, const ZZ& b, ZZ& r);
  static void addSigned(const ZZ& a, const ZZ& b, bool bSign, ZZ& r);
  static long compareMagnitudes(const ZZ& a, const ZZ& b);
  static void divideByLimb(const ZZ& a, const ZZ& b, ZZ& q, ZZ& rem);
  void clearNegativeZero();
};

ZZ operator+(const ZZ& a, const ZZ& b);
ZZ operator-(const ZZ& a, const ZZ& b);
ZZ operator*(const ZZ& a, const ZZ& b);
ZZ operator/(const ZZ& a, const ZZ& b);
ZZ operator%(const ZZ& a, const ZZ& b);
ZZ operator-(const ZZ& a);
// Power. Fails with "[ ZZ::operator ^ ] Exponent < 0 ". 0 to the power 0 is 1.
ZZ operator^(const ZZ& base, const ZZ& exponent);

inline bool operator==(const ZZ& a, const ZZ& b) {
  return ZZ::compare(a, b) == 0;
}
inline bool operator!=(const ZZ& a, const ZZ& b) {
  return ZZ::compare(a, b) != 0;
}
inline bool operator<(const ZZ& a, const ZZ& b) {
  return ZZ::compare(a, b) < 0;
}
inline bool operator<=(const ZZ& a, const ZZ& b) {
  return ZZ::compare(a, b) <= 0;
}
inline bool operator>(const ZZ& a, const ZZ& b) {
  return ZZ::compare(a, b) > 0;
}
inline bool operator>=(const ZZ& a, const ZZ& b) {
  return ZZ::compare(a, b) >= 0;
}

ZZ abs(const ZZ& a);
// Greatest common divisor, non-negative; gcd(0, 0) is 0.
ZZ gcd(const ZZ& a, const ZZ& b);
u64 gcd64(u64 a, u64 b);

std::ostream& operator<<(std::ostream& stream, const ZZ& a);

}  // namespace latbox
