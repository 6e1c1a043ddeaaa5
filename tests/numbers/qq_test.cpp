#include "numbers/qq.h"

#include <cmath>
#include <limits>
#include <random>

#include "lib/exceptions.h"
#include "numbers/number.h"
#include "support/failure.h"

namespace latbox {
namespace {

const dbl_t INF = std::numeric_limits<dbl_t>::infinity();

void expectParts(const QQ& x, bool sign, const char* ganze, const char* zaehler, const char* nenner) {
  EXPECT_FALSE(x.isInf);
  EXPECT_EQ(x.sign, sign);
  EXPECT_EQ(x.ganze.to_string(), ganze);
  EXPECT_EQ(x.zaehler.to_string(), zaehler);
  EXPECT_EQ(x.nenner.to_string(), nenner);
}

void expectInfinity(const QQ& x, bool sign) {
  EXPECT_TRUE(x.isInf);
  EXPECT_EQ(x.sign, sign);
  EXPECT_EQ(x.ganze.to_string(), "1");
  EXPECT_EQ(x.zaehler.to_string(), "0");
  EXPECT_EQ(x.nenner.to_string(), "1");
}

template <class Call>
std::string precisionMessage(Call call) {
  try {
    call();
  } catch (const PrecisionException& e) {
    return e.what();
  }
  return "nothing thrown";
}

const QQ INFINITE("inf");

TEST(QQ, Construction) {
  expectParts(QQ(), true, "0", "0", "1");
  expectParts(QQ(0), true, "0", "0", "1");
  expectParts(QQ(-5), false, "5", "0", "1");
  expectParts(QQ(-123456789012L), false, "123456789012", "0", "1");
  expectParts(QQ(ZZ(-7)), false, "7", "0", "1");
  expectParts(QQ(ZZ(7), ZZ(-3)), false, "2", "1", "3");
  expectParts(QQ(ZZ(-6), ZZ(-8)), true, "0", "3", "4");
  expectParts(QQ(ZZ(0), ZZ(-8)), true, "0", "0", "1");
  expectParts(QQ("-2:1/3"), false, "2", "1", "3");
}

TEST(QQ, EmptyAndNegativeZeroIntegersEnterAsZero) {
  expectParts(QQ(ZZ("")), true, "0", "0", "1");
  expectParts(QQ(ZZ("-0")), true, "0", "0", "1");
}

TEST(QQ, Assignment) {
  QQ x;
  x = -3;
  expectParts(x, false, "3", "0", "1");
  x = 4L;
  expectParts(x, true, "4", "0", "1");
  x = ZZ(-9);
  expectParts(x, false, "9", "0", "1");
  x = 0.25L;
  expectParts(x, true, "0", "1", "4");
  x = "1/3";
  expectParts(x, true, "0", "1", "3");
}

TEST(QQ, MovedFromIsZero) {
  QQ a("5:1/3"), b(std::move(a));
  expectParts(a, true, "0", "0", "1");
  a = std::move(b);
  expectParts(a, true, "5", "1", "3");
  expectParts(b, true, "0", "0", "1");
}

TEST(QQ, Sums) {
  expectParts(QQ("1/3") + QQ("2/3"), true, "1", "0", "1");
  expectParts(QQ("1/2") - QQ("3/4"), false, "0", "1", "4");
  expectParts(QQ(2) - QQ("1/3"), true, "1", "2", "3");
  expectParts(QQ("-1/2") + QQ("1/2"), true, "0", "0", "1");
  expectParts(QQ("-1/2") - QQ("-1/2"), true, "0", "0", "1");
  expectParts(QQ("1/6") + QQ("1/10"), true, "0", "4", "15");
}

TEST(QQ, GeneralSumsOfTheSameCases) {
  QQ r;
  QQ::addGeneral(r, QQ("1/3"), QQ("2/3"));
  expectParts(r, true, "1", "0", "1");
  QQ::subGeneral(r, QQ("1/2"), QQ("3/4"));
  expectParts(r, false, "0", "1", "4");
  QQ::subGeneral(r, QQ(2), QQ("1/3"));
  expectParts(r, true, "1", "2", "3");
  QQ::addGeneral(r, QQ("-1/2"), QQ("1/2"));
  expectParts(r, true, "0", "0", "1");
}

TEST(QQ, InfiniteSums) {
  expectInfinity(INFINITE + INFINITE, true);
  expectInfinity(INFINITE + QQ(-5), true);
  expectInfinity(QQ("-1/3") + INFINITE, true);
  expectInfinity(-INFINITE - INFINITE, false);
  expectInfinity(QQ(5) - INFINITE, false);
  expectInfinity(-INFINITE + QQ(7), false);
  EXPECT_FAILURE(INFINITE - INFINITE, "INF - INF is not defined");
  EXPECT_FAILURE(INFINITE + -INFINITE, "INF - INF is not defined");
  EXPECT_FAILURE(-INFINITE + INFINITE, "INF - INF is not defined");
}

TEST(QQ, Products) {
  expectParts(QQ("2:1/2") * QQ("-2/5"), false, "1", "0", "1");
  expectParts(QQ(-3) * QQ(0), true, "0", "0", "1");
  expectParts(QQ("2/3") * QQ("3/2"), true, "1", "0", "1");
  expectInfinity(INFINITE * QQ("-1/3"), false);
  expectInfinity(QQ(-2) * -INFINITE, true);
  expectInfinity(INFINITE * -INFINITE, false);
  EXPECT_FAILURE(INFINITE * QQ(0), "qq: INF * 0 is not defined!");
  EXPECT_FAILURE(QQ(0) * INFINITE, "qq: 0 * INF is not defined!");
}

TEST(QQ, Quotients) {
  expectParts(QQ(7) / QQ(-2), false, "3", "1", "2");
  expectParts(QQ(5) / INFINITE, true, "0", "0", "1");
  expectParts(QQ(-5) / INFINITE, true, "0", "0", "1");
  expectInfinity(INFINITE / QQ(-2), false);
  EXPECT_FAILURE(INFINITE / INFINITE, "QQ: +-INF / +-INF is not defined");
  EXPECT_FAILURE(INFINITE / -INFINITE, "QQ: +-INF / +-INF is not defined");
}

TEST(QQ, DivisionByZeroThrowsAndLeavesTheTarget) {
  QQ r("5/7");
  EXPECT_EQ(precisionMessage([&] { QQ::divide(r, QQ(1), QQ(0)); }), "QQ: division by zero3");
  EXPECT_EQ(precisionMessage([&] { QQ::divide(r, INFINITE, QQ(0)); }), "QQ: division by zero3");
  EXPECT_EQ(precisionMessage([&] { r /= QQ(0); }), "QQ: division by zero3");
  expectParts(r, true, "0", "5", "7");
}

TEST(QQ, Comparison) {
  const char* ascending[] = {"-inf", "-3",  "-2:1/2", "-2:1/3", "-1/1000000000000000000000", "0",
                             "1/3",  "1/2", "2:1/3",  "2:1/2",  "1000000000000000000000",    "inf"};
  const long n = std::size(ascending);
  for (long i = 0; i < n; ++i)
    for (long j = 0; j < n; ++j) {
      const long expected = i == j ? 0 : (i < j ? -1 : 1);
      EXPECT_EQ(QQ::compare(QQ(ascending[i]), QQ(ascending[j])), expected)
          << ascending[i] << " " << ascending[j];
      EXPECT_EQ(QQ::compareGeneral(QQ(ascending[i]), QQ(ascending[j])), expected)
          << ascending[i] << " " << ascending[j];
    }
  EXPECT_EQ(QQ::compare(INFINITE, INFINITE), 0);
  EXPECT_TRUE(QQ("1/3") < QQ("1/2") && QQ("1/3") <= QQ("1/3") && QQ("1/2") > QQ("1/3") && QQ(2) >= QQ(2) &&
              QQ(2) != QQ(3));
}

TEST(QQ, NegateKeepsZeroPositive) {
  QQ zero;
  zero.negate();
  EXPECT_TRUE(zero.sign);
  expectParts(-QQ("1/2"), false, "0", "1", "2");
  expectInfinity(-INFINITE, false);
}

TEST(QQ, Normalize) {
  QQ x;
  x.ganze = ZZ(1);
  x.zaehler = ZZ(18);
  x.nenner = ZZ(4);
  expectParts(x.normalize(), true, "5", "1", "2");
  x.ganze = ZZ(0);
  x.zaehler = ZZ(8);
  x.nenner = ZZ(4);
  expectParts(x.normalize(), true, "2", "0", "1");
  x.ganze = ZZ(0);
  x.zaehler = ZZ(0);
  x.nenner = ZZ(4);
  x.sign = false;
  expectParts(x.normalize(), true, "0", "0", "1");
}

TEST(QQ, SignedPartsAreABrokenInvariant) {
  const char* message = "A ganze / zaehler / nenner sign has been set, though it should not be used";
  for (int part = 0; part < 3; ++part) {
    QQ x("2:1/3");
    (part == 0 ? x.ganze : (part == 1 ? x.zaehler : x.nenner)).sign = false;
    EXPECT_FAILURE(x.normalize(), message);
  }
}

TEST(QQ, CommonDenominator) {
  ZZ aZ, bZ, n;
  commonDenominator(aZ, bZ, n, QQ("1/6"), QQ("3:3/4"));
  EXPECT_EQ(aZ.to_string(), "2");
  EXPECT_EQ(bZ.to_string(), "9");
  EXPECT_EQ(n.to_string(), "12");
  EXPECT_FAILURE(commonDenominator(aZ, aZ, n, QQ(1), QQ(2)), "QQ: The ZZs have the same address");
  EXPECT_FAILURE(commonDenominator(aZ, bZ, aZ, QQ(1), QQ(2)), "QQ: The ZZs have the same address");
  EXPECT_FAILURE(commonDenominator(aZ, bZ, bZ, QQ(1), QQ(2)), "QQ: The ZZs have the same address");
  const char* message = "a_z, b_z can not be set to ZZ::INF -- isInf is logic only available in QQ class";
  EXPECT_FAILURE(commonDenominator(aZ, bZ, n, INFINITE, QQ(2)), message);
  EXPECT_FAILURE(commonDenominator(aZ, bZ, n, QQ(2), INFINITE), message);
}

TEST(QQ, SignedParts) {
  EXPECT_EQ(signedGanze(QQ("-2:1/3")).to_string(), "-2");
  EXPECT_EQ(signedZaehler(QQ("-2:1/3")).to_string(), "-1");
  EXPECT_EQ(signedGanze(QQ("-1/3")).to_string(), "0");
  EXPECT_EQ(signedZaehler(QQ(-2)).to_string(), "0");
  EXPECT_EQ(toText(denominator(QQ("-2:1/3"))), "3");
  EXPECT_EQ(toText(denominator(INFINITE)), "1");
}

TEST(QQ, RoundDigits) {
  QQ third("1/3");
  roundDigits(third, 18);
  expectParts(third, true, "0", "1", "3");
  // 10^20 has 21 digits, so three are dropped.
  QQ x;
  x.ganze = ZZ(7);
  x.zaehler = ZZ(123456);
  x.nenner = ZZ("100000000000000000000");
  roundDigits(x, 18);
  expectParts(x, true, "7", "123", "100000000000000000");
  QQ tiny(ZZ(12), ZZ("1000000000000000000001"));
  roundDigits(tiny, 18);
  expectParts(tiny, true, "0", "0", "1");
  // As many digits are dropped as the numerator has, and one less.
  QQ two(ZZ(77), ZZ("10000000000000000003"));
  roundDigits(two, 18);
  expectParts(two, true, "0", "0", "1");
  QQ three(ZZ(777), ZZ("10000000000000000003"));
  roundDigits(three, 18);
  expectParts(three, true, "0", "7", "100000000000000000");
}

// A fraction that was cut to nothing left a zero with the sign of the number behind.
TEST(QQ, NegativeFractionCutToNothingIsPositiveZero) {
  QQ x(ZZ(-1), ZZ("100000000000000000000"));
  roundDigits(x, 18);
  expectParts(x, true, "0", "0", "1");
  EXPECT_TRUE(x == QQ(0));
  QQ y = QQ(-7) + QQ(ZZ(-1), ZZ("100000000000000000000"));
  roundDigits(y, 18);
  expectParts(y, false, "7", "0", "1");
}

TEST(QQ, RoundingDoesNotReduceButTheNextOperationDoes) {
  QQ x(ZZ(20000014), ZZ("10000000000000000003"));
  roundDigits(x, 14);
  expectParts(x, true, "0", "20", "10000000000000");
  expectParts(x + QQ(0), true, "0", "1", "500000000000");
  expectParts(x * QQ(1), true, "0", "1", "500000000000");
  expectParts(x / QQ(1), true, "0", "1", "500000000000");
  EXPECT_TRUE(x == QQ(ZZ(1), ZZ(500000000000)));
  expectParts(x.normalize(), true, "0", "1", "500000000000");
}

TEST(QQ, RoundProductsIsClearAndRoundsWhileSet) {
  EXPECT_FALSE(QQ::roundProducts());
  const QQ a(ZZ("123456789012345"), ZZ("1000000000039")), b(ZZ("98765432109876"), ZZ("1000000000061"));
  const QQ exact = a * b;
  QQ::setRoundProducts(true);
  EXPECT_TRUE(QQ::roundProducts());
  const QQ rounded = a * b;
  const QQ integers = QQ(ZZ("12345678901234567890")) * QQ(-3);
  QQ::setRoundProducts(false);
  EXPECT_FALSE(rounded == exact);
  EXPECT_TRUE(isZero(rounded - exact));
  // Three partial products, none of more than 18 digits in its denominator.
  EXPECT_LE(rounded.nenner.digits(), 54);
  EXPECT_EQ(toText(integers), "-37037036703703703670");
  EXPECT_TRUE(a * b == exact);
}

TEST(QQ, EachRoundedPartialProductKeepsEighteenDigits) {
  const QQ small(ZZ(1234567), ZZ("100000000000000000000"));
  QQ::setRoundProducts(true);
  const QQ second = QQ(3) * small, third = small * QQ(3);
  QQ::setRoundProducts(false);
  expectParts(second, true, "0", "3703", "100000000000000000");
  expectParts(third, true, "0", "3703", "100000000000000000");
  expectParts(QQ(3) * small, true, "0", "3703701", "100000000000000000000");
}

TEST(QQ, RoundedProductKeepsEighteenDigits) {
  const QQ a(ZZ(1234567891), ZZ(10000000000));
  QQ::setRoundProducts(true);
  const QQ square = a * a;
  QQ::setRoundProducts(false);
  expectParts(square, true, "0", "1524157877488187", "100000000000000000");
  expectParts(a * a, true, "0", "1524157877488187881", "100000000000000000000");
}

// The product of small numbers of different signs overflowed the stack: the zero that the last partial
// product was cut to had a sign, and sum and difference handed it to one another.
TEST(QQ, RoundedProductThatIsCutToNothing) {
  QQ::setRoundProducts(true);
  const QQ product = QQ(ZZ(-1), ZZ("10000000001")) * QQ(ZZ(1), ZZ("10000000001"));
  const QQ more = QQ(ZZ("-20000000003"), ZZ("10000000001")) * QQ(ZZ(1), ZZ("10000000001"));
  QQ::setRoundProducts(false);
  expectParts(product, true, "0", "0", "1");
  expectParts(more, false, "0", "2", "10000000001");
}

TEST(QQ, ToDouble) {
  EXPECT_EQ(toDouble(QQ()), 0.0L);
  EXPECT_EQ(toDouble(QQ(-5)), -5.0L);
  EXPECT_EQ(toDouble(QQ("1/4")), 0.25L);
  EXPECT_EQ(toDouble(QQ("-2:1/20")), -2.05L);
  EXPECT_EQ(toDouble(QQ("1" + std::string(30, '0'))), 1e30L);
  EXPECT_EQ(toDouble(INFINITE), INF);
  EXPECT_EQ(toDouble(-INFINITE), -INF);
  EXPECT_EQ(toDouble(QQ("1" + std::string(6000, '0'))), INF);
  EXPECT_EQ(toDouble(QQ("-1" + std::string(6000, '0') + ":1/3")), -INF);
  EXPECT_NEAR(static_cast<double>(toDouble(QQ("1/3"))), 1.0 / 3, 1e-16);
}

TEST(QQ, ToDoubleStrict) {
  const char* message = "QQ is not representable as dbl_t";
  EXPECT_EQ(toDoubleStrict(QQ("1/4"), true), 0.25L);
  EXPECT_EQ(toDoubleStrict(QQ("999999999999999999"), true), 999999999999999999.0L);
  EXPECT_EQ(toDoubleStrict(INFINITE, true), INF);
  for (const char* text : {"1/3", "1000000000000000000", "-1000000000000000000:1/2", "100000000000000000:1/4",
                           "1:1/300000000000000000000"}) {
    EXPECT_EQ(precisionMessage([&] { toDoubleStrict(QQ(text), true); }), message) << text;
    EXPECT_EQ(precisionMessage([&] { toDoubleByText(QQ(text), true); }), message) << text;
    toDoubleStrict(QQ(text), false);
  }
}

// The digits of the integer part and the zeros behind the point count where there is an integer part; the
// digit that goes beyond 18 is the last one.
TEST(QQ, ToDoubleShowsTheDigitsOfTheBudget) {
  const std::pair<QQ, dbl_t> table[] = {
      {QQ("1/3"), 0.3333333333333333333L},
      {QQ("-1/300"), -0.003333333333333333333L},
      {QQ("1:1/3"), 1.333333333333333333L},
      {QQ("1:1/300"), 1.003333333333333333L},
      {QQ("-123456789012345678:1/3"), -123456789012345678.33L},
      {QQ("1234567890123456789:1/3"), 1234567890123456789.0L},
  };
  for (const auto& [x, expected] : table) {
    EXPECT_EQ(toDouble(x), expected) << x;
    EXPECT_EQ(toDoubleByText(x, false), expected) << x;
  }
}

// The count of the digits is that of significantLength, by design: zeros that fill a limb do not count, and a
// limb that they begin counts without them.
TEST(QQ, ToDoubleCountsDigitsInStorageOrder) {
  EXPECT_EQ(toDoubleStrict(QQ("0.10000000000000000003"), true), 0.10000000000000000003L);
  EXPECT_EQ(toDouble(QQ("0.1") + QQ("1/3000000000000000000")), 0.1000000000000000003333L);
  EXPECT_EQ(precisionMessage([&] { toDoubleStrict(QQ("0.12345678901234567891"), true); }),
            "QQ is not representable as dbl_t");
}

std::string conversion(dbl_t (*convert)(const QQ&, bool), const QQ& x, bool strict) {
  try {
    char buffer[64];
    std::snprintf(buffer, sizeof buffer, "%La", convert(x, strict));
    return buffer;
  } catch (const PrecisionException& e) {
    return e.what();
  }
}

TEST(QQ, ShortConversionEqualsConversionThroughText) {
  std::mt19937_64 random(4);
  const auto number = [&random] {
    u64 limit = 1;
    for (u64 digits = random() % 20; digits > 0; --digits) limit *= 10;
    ZZ value;
    value.setMagnitude(random() % limit, true);
    return value;
  };
  for (int i = 0; i < 100000; ++i) {
    ZZ n = number();
    if (i % 3 == 0) {
      n = ZZ(1);
      n.decimal_lshift(static_cast<long>(random() % 25));
    } else if (i % 3 == 1) {
      n = ZZ(2) ^ ZZ(static_cast<long>(random() % 30));
    } else if (n.isZero()) {
      n = ZZ(3);
    }
    QQ x = (random() % 2 == 0 ? QQ() : QQ(number())) + QQ(number(), n);
    if (random() % 2 == 0) x.negate();
    for (const bool strict : {false, true})
      ASSERT_EQ(conversion(toDoubleStrict, x, strict), conversion(toDoubleByText, x, strict))
          << x << " " << strict;
  }
}

// Halfway between two numbers of the machine, and one beside it; up to 36 digits and beyond.
TEST(QQ, LongIntegersAreRoundedLikeTheirText) {
  std::mt19937_64 random(9);
  for (int i = 0; i < 20000; ++i) {
    ZZ n = ZZ(static_cast<long long>(random() >> 1)) * (ZZ(2) ^ ZZ(static_cast<long>(random() % 70)));
    n = n + ZZ(static_cast<long>(random() % 3)) - ZZ(1);
    if (i % 2 == 0) n = n * ZZ(static_cast<long long>(random() >> 1));
    QQ x = QQ(n) + (i % 3 == 0 ? QQ("2/3") : QQ());
    if (random() % 2 == 0) x.negate();
    for (const bool strict : {false, true})
      ASSERT_EQ(conversion(toDoubleStrict, x, strict), conversion(toDoubleByText, x, strict))
          << x << " " << strict;
  }
}

TEST(QQ, FromDouble) {
  expectParts(QQ(0.1L), true, "0", "1", "10");
  expectParts(QQ(-2.5L), false, "2", "1", "2");
  expectParts(QQ(0.1), true, "0", "10000000000000001", "100000000000000000");  // what 17 digits show
  expectParts(QQ(1e20L), true, "100000000000000000000", "0", "1");
  expectParts(QQ(123456789012345678.0L), true, "123456789012345680", "0", "1");
  expectParts(QQ(99999999999999999.0L), true, "99999999999999999", "0", "1");
  expectInfinity(QQ(INF), true);
  expectInfinity(QQ(-INF), false);
}

TEST(QQ, ValuesWithinTheToleranceBecomeZero) {
  expectParts(QQ(5e-10L), true, "0", "0", "1");
  expectParts(QQ(-5e-10L), true, "0", "0", "1");
  expectParts(QQ(-0.0L), true, "0", "0", "1");
  expectParts(QQ(2e-9L), true, "0", "1", "500000000");
  expectParts(QQ(EPS), true, "0", "0", "1");
  expectParts(QQ(-EPS), true, "0", "0", "1");
}

TEST(QQ, WholeDoublesEqualTheirText) {
  std::mt19937_64 random(5);
  for (int i = 0; i < 20000; ++i) {
    const dbl_t value =
        static_cast<dbl_t>(static_cast<long long>(random())) / static_cast<dbl_t>(1ULL << (random() % 64));
    const dbl_t whole = std::trunc(value);
    EXPECT_EQ(toText(QQ(whole)), isZero(whole) ? "0" : toText(QQ(toText(whole))));
    if (!isZero(value)) {
      EXPECT_EQ(toText(QQ(value)), toText(QQ(toText(value))));
    }
  }
}

TEST(QQ, FloorCeilRound) {
  const char* table[][4] = {{"2:1/2", "2", "3", "3"},
                            {"-2:1/2", "-3", "-2", "-3"},
                            {"2:1/3", "2", "3", "2"},
                            {"-1/3", "-1", "0", "0"},
                            {"5", "5", "5", "5"},
                            {"-5", "-5", "-5", "-5"},
                            {"0", "0", "0", "0"},
                            {"1/2", "0", "1", "1"},
                            {"-1/2", "-1", "0", "-1"},
                            {"inf", "inf", "inf", "inf"},
                            {"-inf", "-inf", "-inf", "-inf"}};
  for (const auto& row : table) {
    EXPECT_EQ(toText(floor(QQ(row[0]))), row[1]) << row[0];
    EXPECT_EQ(toText(ceil(QQ(row[0]))), row[2]) << row[0];
    EXPECT_EQ(toText(roundNearest(QQ(row[0]))), row[3]) << row[0];
  }
}

TEST(QQ, AddmulAndSubmul) {
  QQ r("1/2");
  QQ::addmul(r, QQ("2/3"), QQ(3));
  EXPECT_EQ(toText(r), "2:1/2");
  QQ::submul(r, r, QQ(2));
  EXPECT_EQ(toText(r), "-2:1/2");
}

TEST(QQ, Constants) {
  EXPECT_EQ(toText(qqZero()), "0");
  EXPECT_EQ(toText(qqOne()), "1");
  EXPECT_EQ(toText(qqTwo()), "2");
  EXPECT_EQ(toText(qqTen()), "10");
  EXPECT_EQ(toText(qqHalf()), "1/2");
  EXPECT_EQ(toText(qqEps()), "1/1000000000");
  EXPECT_EQ(toText(qqInfinity()), "inf");
}

}  // namespace
}  // namespace latbox
