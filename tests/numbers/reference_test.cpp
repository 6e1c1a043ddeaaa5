// ZZ and QQ against an independent library on seeded random operands: small and large mixed, limbs that carry
// and borrow, the result in place of either operand and of both.
#include <random>
#include <string>

#include "numbers/number.h"
#include "support/failure.h"
#include "support/gmp.h"

namespace latbox {
namespace {

using testing::Mpq;
using testing::Mpz;
using testing::textOf;

constexpr int CASES = 100000;

// The mixed form that QQ writes.
std::string mixedText(const Mpq& x) {
  if (x.sign() == 0) return "0";
  Mpz whole, rest;
  mpz_tdiv_qr(whole.value, rest.value, mpq_numref(x.value), mpq_denref(x.value));
  mpz_abs(whole.value, whole.value);
  mpz_abs(rest.value, rest.value);
  std::string result = x.sign() < 0 ? "-" : "";
  const bool fraction = mpz_sgn(rest.value) != 0;
  if (mpz_sgn(whole.value) != 0) result += whole.text() + std::string(fraction ? ":" : "");
  if (fraction) result += rest.text() + "/" + textOf(mpq_denref(x.value));
  return result;
}

class Source {
 public:
  explicit Source(unsigned seed) : random_(seed) {}

  u64 below(u64 n) { return random_() % n; }

  // Mostly a few limbs, sometimes up to `maxDigits`; with runs of 0 and 9, which carry and borrow.
  ZZ integer(u64 maxDigits) {
    static constexpr u64 SMALL[] = {1, 3, 9, 10, 18, 19, 27, 36, 45};
    const u64 digits = 1 + below(below(4) == 0 ? maxDigits : std::min(maxDigits, SMALL[below(9)]));
    std::string text = below(2) == 0 ? "-" : "";
    const u64 style = below(4);
    while (text.size() < digits + 1) {
      if (style != 0)
        text += static_cast<char>('0' + below(10));
      else
        text.append(1 + below(12), below(2) == 0 ? '0' : '9');
    }
    const ZZ value(text);
    return value.isZero() ? ZZ(0) : value;
  }

  ZZ positive(u64 maxDigits) {
    const ZZ value = abs(integer(maxDigits));
    return value.isZero() ? ZZ(1) : value;
  }

  QQ rational(u64 maxDigits) {
    switch (below(4)) {
      case 0:
        return QQ(integer(maxDigits));
      case 1:
        return QQ(integer(9), positive(9));
      case 2:
        return QQ(ZZ(static_cast<long>(below(41)) - 20), ZZ(static_cast<long>(1 + below(12))));
      default:
        return QQ(integer(maxDigits), positive(maxDigits));
    }
  }

 private:
  std::mt19937_64 random_;
};

using ZZOperation = void (*)(const ZZ&, const ZZ&, ZZ&);
using MpzOperation = void (*)(mpz_ptr, mpz_srcptr, mpz_srcptr);

void expectNormalForm(const ZZ& a) {
  ASSERT_GE(a.MN, 1);
  ASSERT_TRUE(a.MN == 1 || a[a.MN] != 0);
  ASSERT_TRUE(a.sign || !a.isZero());
}

// Every aliasing in turn.
void compareIntegers(ZZOperation ours, MpzOperation theirs, unsigned seed, u64 maxDigits) {
  Source source(seed);
  for (int i = 0; i < CASES; ++i) {
    ZZ a = source.integer(maxDigits), b = i % 4 == 3 ? a : source.integer(maxDigits);
    const ZZ aBefore(a), bBefore(b);
    Mpz x(a), y(b), expected;
    theirs(expected.value, x.value, y.value);
    ZZ separate("-123456789012345678901234567890");  // nothing of what was there may stay
    ZZ& r = i % 4 == 0 ? separate : (i % 4 == 1 ? a : (i % 4 == 2 ? b : a));
    ours(a, i % 4 == 3 ? a : b, r);
    ASSERT_EQ(r.to_string(), expected.text()) << aBefore << " and " << bBefore << ", aliasing " << i % 4;
    expectNormalForm(r);
  }
}

TEST(Reference, Add) {
  compareIntegers(ZZ::add, mpz_add, 1, 400);
}
TEST(Reference, Sub) {
  compareIntegers(ZZ::sub, mpz_sub, 2, 400);
}
TEST(Reference, Mul) {
  compareIntegers(ZZ::mul, mpz_mul, 3, 400);
}

TEST(Reference, MulOfManyLimbs) {
  Source source(4);
  for (int i = 0; i < 2000; ++i) {
    const ZZ a = source.integer(5000), b = source.integer(5000);
    Mpz x(a), y(b), expected;
    mpz_mul(expected.value, x.value, y.value);
    ASSERT_EQ((a * b).to_string(), expected.text());
  }
}

TEST(Reference, Compare) {
  Source source(5);
  for (int i = 0; i < CASES; ++i) {
    const ZZ a = source.integer(300), b = source.below(4) == 0 ? a : source.integer(300);
    Mpz x(a), y(b);
    const int order = mpz_cmp(x.value, y.value);
    ASSERT_EQ(ZZ::compare(a, b), order > 0 ? 1 : (order < 0 ? -1 : 0)) << a << " and " << b;
  }
}

// Quotient and remainder; both in place of the operands, either way round.
TEST(Reference, Div) {
  Source source(6);
  for (int i = 0; i < CASES; ++i) {
    ZZ a = source.integer(400), b = source.integer(400);
    if (b.isZero()) b = ZZ(7);
    const ZZ aBefore(a), bBefore(b);
    Mpz x(a), y(b), q, rem;
    mpz_tdiv_qr(q.value, rem.value, x.value, y.value);
    ZZ quotient("-987654321098765432109876543210"), rest(quotient);
    ZZ& qr = i % 3 == 0 ? quotient : (i % 3 == 1 ? a : b);
    ZZ& rr = i % 3 == 0 ? rest : (i % 3 == 1 ? b : a);
    ZZ::div(a, b, qr, rr);
    ASSERT_EQ(qr.to_string(), q.text()) << aBefore << " / " << bBefore << ", aliasing " << i % 3;
    ASSERT_EQ(rr.to_string(), rem.text()) << aBefore << " % " << bBefore << ", aliasing " << i % 3;
    expectNormalForm(qr);
    expectNormalForm(rr);
  }
}

// Divisors whose top limb is large and dividends just below multiples: the estimate of a quotient limb is
// corrected there.
TEST(Reference, DivGeneralAtTheEdges) {
  Source source(7);
  for (int i = 0; i < CASES; ++i) {
    const ZZ b = source.positive(60);
    const ZZ a = b * source.integer(60) + ZZ(static_cast<long>(source.below(3)) - 1);
    Mpz x(a), y(b), q, rem;
    mpz_tdiv_qr(q.value, rem.value, x.value, y.value);
    ZZ quotient, rest;
    ZZ::divGeneral(a, b, quotient, rest);
    ASSERT_EQ(quotient.to_string(), q.text()) << a << " / " << b;
    ASSERT_EQ(rest.to_string(), rem.text()) << a << " % " << b;
  }
}

TEST(Reference, Gcd) {
  Source source(8);
  for (int i = 0; i < CASES; ++i) {
    const ZZ common = source.integer(60);
    const ZZ a = source.integer(120) * common, b = source.integer(120) * common;
    Mpz x(a), y(b), expected;
    mpz_gcd(expected.value, x.value, y.value);
    ASSERT_EQ(gcd(a, b).to_string(), expected.text()) << a << " and " << b;
  }
}

// What the leading limbs tell least about: quotients of 1 throughout, leading limbs that agree, quotients of
// many limbs, powers of the base.
TEST(Reference, GcdAtTheEdges) {
  Source source(20);
  ZZ previous(1), fibonacci(1);
  for (int i = 0; i < 2000; ++i) {
    const ZZ next = previous + fibonacci;
    previous = fibonacci;
    fibonacci = next;
    EXPECT_EQ(gcd(previous, fibonacci).to_string(), "1");
    const ZZ factor = source.positive(60);
    const ZZ pairs[][2] = {{previous * factor, fibonacci * factor},
                           {fibonacci * factor + ZZ(1), fibonacci * factor},
                           {fibonacci * factor + ZZ(2), fibonacci * factor},
                           {ZZ(10) ^ ZZ(i % 200), factor},
                           {(ZZ(10) ^ ZZ(i % 200)) - ZZ(1), (ZZ(10) ^ ZZ(i % 77)) - ZZ(1)},
                           {fibonacci, factor}};
    for (const auto& [a, b] : pairs) {
      Mpz x(a), y(b), expected;
      mpz_gcd(expected.value, x.value, y.value);
      ASSERT_EQ(gcd(a, b).to_string(), expected.text()) << a << " and " << b;
      ASSERT_EQ(gcd(b, a).to_string(), expected.text()) << a << " and " << b;
    }
  }
}

TEST(Reference, Power) {
  Source source(9);
  for (int i = 0; i < CASES; ++i) {
    const ZZ base = source.integer(12);
    const u64 exponent = source.below(12);
    Mpz x(base), expected;
    mpz_pow_ui(expected.value, x.value, exponent);
    ASSERT_EQ((base ^ ZZ(static_cast<long long>(exponent))).to_string(), expected.text());
  }
}

TEST(Reference, DecimalShifts) {
  Source source(10);
  for (int i = 0; i < CASES; ++i) {
    ZZ a = abs(source.integer(200));
    const u64 n = source.below(60);
    Mpz x(a), power, expected;
    mpz_ui_pow_ui(power.value, 10, n);
    mpz_mul(expected.value, x.value, power.value);
    ZZ left(a);
    left.decimal_lshift(static_cast<long>(n));
    ASSERT_EQ(left.to_string(), expected.text());
    mpz_tdiv_q(expected.value, x.value, power.value);
    a.decimal_rshift(static_cast<long>(n));
    ASSERT_EQ(a.to_string(), expected.text());
  }
}

using QQOperation = void (*)(QQ&, const QQ&, const QQ&);
using MpqOperation = void (*)(mpq_ptr, mpq_srcptr, mpq_srcptr);

void expectCanonical(const QQ& x) {
  ASSERT_TRUE(x.ganze.sign && x.zaehler.sign && x.nenner.sign);
  expectNormalForm(x.ganze);
  expectNormalForm(x.zaehler);
  expectNormalForm(x.nenner);
  ASSERT_TRUE(x.zaehler < x.nenner);
  ASSERT_TRUE(gcd(x.zaehler, x.nenner).isOne());
  ASSERT_TRUE(x.sign || !x.isExactZero());
}

void compareRationals(QQOperation ours, MpqOperation theirs, unsigned seed, bool nonZero) {
  Source source(seed);
  for (int i = 0; i < CASES; ++i) {
    QQ a = source.rational(100), b = source.rational(100);
    const int aliasing = i % 4;
    if (aliasing == 3) b = a;
    if (nonZero && b.isExactZero()) a = b = QQ(3);
    const QQ aBefore(a), bBefore(b);
    Mpq x(a), y(b), expected;
    theirs(expected.value, x.value, y.value);
    QQ separate(i % 8 == 0 ? "-inf" : "-7:1/3");  // nothing of what was there may stay
    QQ& r = aliasing == 0 ? separate : (aliasing == 2 ? b : a);
    ours(r, a, aliasing == 3 ? a : b);
    ASSERT_EQ(toText(r), mixedText(expected)) << aBefore << " and " << bBefore << ", aliasing " << aliasing;
    expectCanonical(r);
  }
}

TEST(Reference, RationalAdd) {
  compareRationals(QQ::add, mpq_add, 11, false);
}
TEST(Reference, RationalSub) {
  compareRationals(QQ::sub, mpq_sub, 12, false);
}
TEST(Reference, RationalMul) {
  compareRationals(QQ::mul, mpq_mul, 13, false);
}
TEST(Reference, RationalDivide) {
  compareRationals(QQ::divide, mpq_div, 14, true);
}

TEST(Reference, RationalCompare) {
  Source source(15);
  for (int i = 0; i < CASES; ++i) {
    const QQ a = source.rational(60), b = source.below(5) == 0 ? a : source.rational(60);
    Mpq x(a), y(b);
    const int order = mpq_cmp(x.value, y.value);
    const long expected = order > 0 ? 1 : (order < 0 ? -1 : 0);
    ASSERT_EQ(QQ::compare(a, b), expected) << a << " and " << b;
    ASSERT_EQ(QQ::compareGeneral(a, b), expected) << a << " and " << b;
  }
}

TEST(Reference, RationalFloorAndCeil) {
  Source source(16);
  for (int i = 0; i < CASES; ++i) {
    const QQ a = source.rational(60);
    Mpq x(a);
    Mpz expected;
    mpz_fdiv_q(expected.value, mpq_numref(x.value), mpq_denref(x.value));
    ASSERT_EQ(toText(floor(a)), expected.text()) << a;
    mpz_cdiv_q(expected.value, mpq_numref(x.value), mpq_denref(x.value));
    ASSERT_EQ(toText(ceil(a)), expected.text()) << a;
  }
}

// The short cuts against the algorithms, object for object.
TEST(Reference, RationalShortCutsEqualGeneralAlgorithms) {
  Source source(17);
  for (int i = 0; i < CASES; ++i) {
    const QQ a = source.rational(30), b = source.rational(30);
    QQ fast, general;
    QQ::add(fast, a, b), QQ::addGeneral(general, a, b);
    ASSERT_EQ(toText(fast), toText(general)) << a << " + " << b;
    QQ::sub(fast, a, b), QQ::subGeneral(general, a, b);
    ASSERT_EQ(toText(fast), toText(general)) << a << " - " << b;
    QQ::mul(fast, a, b), QQ::mulGeneral(general, a, b);
    ASSERT_EQ(toText(fast), toText(general)) << a << " * " << b;
    if (b.isExactZero()) continue;
    QQ::divide(fast, a, b), QQ::divideGeneral(general, a, b);
    ASSERT_EQ(toText(fast), toText(general)) << a << " / " << b;
  }
}

TEST(Reference, TextRoundTrip) {
  Source source(18);
  for (int i = 0; i < CASES; ++i) {
    const QQ a = source.rational(120);
    ASSERT_EQ(toText(a), mixedText(Mpq(a)));
    const QQ back(toText(a));
    ASSERT_TRUE(back == a) << a;
    expectCanonical(back);
  }
}

TEST(Reference, Modulo) {
  Source source(19);
  const u64 primes[] = {2, 1000003, 2305843009213693951};
  for (int i = 0; i < CASES; ++i) {
    const QQ a = source.rational(60);
    const u64 p = primes[i % 3];
    Mpq x(a);
    Mpz modulus(ZZ(static_cast<long long>(p))), inverse;
    const bool invertible = mpz_invert(inverse.value, mpq_denref(x.value), modulus.value) != 0;
    u64 residue = 0;
    ASSERT_EQ(modulo(a, p, residue), invertible) << a << " modulo " << p;
    if (!invertible) continue;
    mpz_mul(inverse.value, inverse.value, mpq_numref(x.value));
    mpz_mod(inverse.value, inverse.value, modulus.value);
    ASSERT_EQ(std::to_string(residue), inverse.text()) << a << " modulo " << p;
  }
}

}  // namespace
}  // namespace latbox
