#include "numbers/zz.h"

#include <limits>
#include <random>
#include <string>
#include <vector>

#include "support/failure.h"

namespace latbox {
namespace {

std::vector<long long> limbs(const ZZ& a) {
  return {a.data + 1, a.data + a.MN + 1};
}

ZZ randomNumber(std::mt19937_64& random, long maxLimbs) {
  std::string text;
  const auto digits = 1 + random() % static_cast<u64>(maxLimbs * ZZ::LIMB_DIGITS);
  for (u64 i = 0; i < digits; ++i) text += static_cast<char>('0' + random() % 10);
  ZZ value(text);
  value.sign = value.isZero() || random() % 2 == 0;
  return value;
}

ZZ withLimbs(std::mt19937_64& random, long count) {
  std::string text(1, static_cast<char>('1' + random() % 9));
  for (long i = 1; i < count * ZZ::LIMB_DIGITS; ++i) text += static_cast<char>('0' + random() % 10);
  return ZZ(text);
}

TEST(ZZ, DefaultIsZeroWithOneLimb) {
  const ZZ zero;
  EXPECT_EQ(zero.MN, 1);
  EXPECT_EQ(zero[1], 0);
  EXPECT_TRUE(zero.sign);
}

TEST(ZZ, BaseIsTenToTheNine) {
  EXPECT_EQ(ZZ::BASE, 1000000000);
  EXPECT_EQ(ZZ::LIMB_DIGITS, 9);
}

TEST(ZZ, IntegersAreSplitIntoLimbs) {
  EXPECT_EQ(limbs(ZZ(7)), (std::vector<long long>{7}));
  EXPECT_EQ(limbs(ZZ(1234567890123LL)), (std::vector<long long>{567890123, 1234}));
  EXPECT_EQ(ZZ(-5).sign, false);
  EXPECT_EQ(ZZ(std::numeric_limits<long long>::min()).to_string(), "-9223372036854775808");
  EXPECT_EQ(ZZ(std::numeric_limits<long long>::max()).to_string(), "9223372036854775807");
}

TEST(ZZ, WideMagnitudes) {
  ZZ a;
  a.setMagnitude128(~static_cast<u128>(0), true);
  EXPECT_EQ(a.to_string(), "340282366920938463463374607431768211455");
  a.setMagnitude128(static_cast<u128>(1000000000000000000ULL), true);
  EXPECT_EQ(a.to_string(), "1000000000000000000");
  a.setMagnitude128(0, true);
  EXPECT_EQ(a.MN, 1);
}

TEST(ZZ, EmptyTextHasNoLimbsAndCountsAsZero) {
  const ZZ empty("");
  EXPECT_EQ(empty.MN, 0);
  EXPECT_EQ(empty.data, nullptr);
  EXPECT_TRUE(empty == ZZ(0));
  EXPECT_TRUE(empty + ZZ(5) == ZZ(5));
  EXPECT_TRUE(ZZ(5) + empty == ZZ(5));
  EXPECT_TRUE(empty * ZZ(5) == ZZ(0));
  EXPECT_EQ((empty + empty).to_string(), "0");
}

TEST(ZZ, NegativeZeroTextComparesEqualToZero) {
  const ZZ negative("-0");
  EXPECT_FALSE(negative.sign);
  EXPECT_TRUE(negative == ZZ(0));
  EXPECT_EQ(ZZ::compare(negative, ZZ(3)), -1);
  EXPECT_EQ(ZZ::compare(negative, ZZ(-3)), 1);
  for (const ZZ& zero : {ZZ(0), ZZ(""), ZZ("-0"), ZZ("-0000000000")}) {
    EXPECT_EQ((negative + zero).to_string(), "0");
    EXPECT_EQ((zero - negative).to_string(), "0");
    EXPECT_EQ((negative * zero).to_string(), "0");
    EXPECT_EQ((negative / ZZ(3)).to_string(), "0");
  }
}

TEST(ZZ, ParseDropsWhatIsNoDigit) {
  EXPECT_TRUE(ZZ("12a3") == ZZ(123));
  EXPECT_TRUE(ZZ("--5") == ZZ(-5));
  EXPECT_TRUE(ZZ("+5") == ZZ(5));
  EXPECT_TRUE(ZZ("5-") == ZZ(5));
  EXPECT_TRUE(ZZ(" -5") == ZZ(5));
  EXPECT_EQ(limbs(ZZ("000000000000000000012")), (std::vector<long long>{12}));
  EXPECT_EQ(limbs(ZZ("0000000000000000000")), (std::vector<long long>{0}));
}

TEST(ZZ, TextPadsLowerLimbs) {
  EXPECT_EQ(ZZ("-1000000001").to_string(), "-1000000001");
  EXPECT_EQ(ZZ("5000000000000000007").to_string(), "5000000000000000007");
  EXPECT_EQ(ZZ("-0").to_string(), "-0");  // the sign is printed as it stands
}

TEST(ZZ, CarryRunsIntoANewLimb) {
  EXPECT_EQ(limbs(ZZ(999999999) + ZZ(1)), (std::vector<long long>{0, 1}));
  EXPECT_EQ(limbs(ZZ("999999999999999999") + ZZ(1)), (std::vector<long long>{0, 0, 1}));
}

TEST(ZZ, BorrowRunsThroughAndTheTopIsTrimmed) {
  EXPECT_EQ(limbs(ZZ(1000000000) - ZZ(1)), (std::vector<long long>{999999999}));
  EXPECT_EQ(limbs(ZZ("1000000000000000000") - ZZ(1)), (std::vector<long long>{999999999, 999999999}));
}

TEST(ZZ, DifferenceOfEqualsIsPositiveZero) {
  for (const char* text : {"5", "-5", "123456789012345678901234567890", "-123456789012345678901234567890"}) {
    const ZZ x(text), zero = x - x;
    EXPECT_EQ(zero.MN, 1);
    EXPECT_EQ(zero[1], 0);
    EXPECT_TRUE(zero.sign);
  }
}

TEST(ZZ, Comparison) {
  const std::vector<ZZ> ascending{ZZ("-1000000000000000000000"),
                                  ZZ(-1000000001),
                                  ZZ(-1000000000),
                                  ZZ(-2),
                                  ZZ(-1),
                                  ZZ(0),
                                  ZZ(1),
                                  ZZ(999999999),
                                  ZZ(1000000000),
                                  ZZ("1000000000000000000000")};
  for (std::size_t i = 0; i < ascending.size(); ++i)
    for (std::size_t j = 0; j < ascending.size(); ++j)
      EXPECT_EQ(ZZ::compare(ascending[i], ascending[j]), i == j ? 0 : (i < j ? -1 : 1)) << i << " " << j;
}

TEST(ZZ, KaratsubaEqualsSchool) {
  std::mt19937_64 random(1);
  const std::pair<long, long> shapes[] = {{15, 15}, {14, 15}, {18, 18}, {201, 1}, {1, 201},
                                          {101, 2}, {67, 3},  {29, 7},  {250, 18}};
  for (const auto& [n, m] : shapes)
    for (int round = 0; round < 50; ++round) {
      const ZZ a = withLimbs(random, n), b = -withLimbs(random, m);
      ZZ school;
      ZZ::mulSchool(a, b, school);
      EXPECT_TRUE(a * b == school) << n << " x " << m;
      EXPECT_TRUE(b * a == school) << n << " x " << m;
      EXPECT_EQ((a * b).MN, school.MN);
    }
}

TEST(ZZ, SchoolHoldsTheLargestLimbs) {
  const ZZ nines(std::string(18 * 9, '9'));
  ZZ square;
  ZZ::mulSchool(nines, nines, square);
  EXPECT_EQ(square.to_string(), std::string(161, '9') + "8" + std::string(161, '0') + "1");
}

TEST(ZZ, DivisionTruncatesTowardZero) {
  const long table[][4] = {{-7, 2, -3, -1}, {7, -2, -3, 1}, {-6, 3, -2, 0}, {7, 2, 3, 1}, {-7, -2, 3, -1},
                           {1, 5, 0, 1},    {-1, 5, 0, -1}, {0, 5, 0, 0},   {0, -5, 0, 0}};
  for (const auto& row : table) {
    ZZ q, rem;
    ZZ::div(ZZ(row[0]), ZZ(row[1]), q, rem);
    EXPECT_EQ(q.to_string(), std::to_string(row[2])) << row[0] << " / " << row[1];
    EXPECT_EQ(rem.to_string(), std::to_string(row[3])) << row[0] << " % " << row[1];
    EXPECT_EQ((ZZ(row[0]) / ZZ(row[1])).to_string(), std::to_string(row[2])) << row[0] << " / " << row[1];
    EXPECT_EQ((ZZ(row[0]) % ZZ(row[1])).to_string(), std::to_string(row[3])) << row[0] << " % " << row[1];
    ZZ::divGeneral(ZZ(row[0]), ZZ(row[1]), q, rem);
    EXPECT_EQ(q.to_string(), std::to_string(row[2])) << row[0] << " / " << row[1];
    EXPECT_EQ(rem.to_string(), std::to_string(row[3])) << row[0] << " % " << row[1];
  }
}

TEST(ZZ, OneObjectForQuotientAndRemainderKeepsTheQuotient) {
  for (const char* dividend : {"7", "123456789012345678901234567890123456789012345678901234567890", "1"})
    for (const char* divisor :
         {"2", "12345678901234567890123", "98765432109876543210987654321098765432109"}) {
      const ZZ expected = ZZ(dividend) / ZZ(divisor);
      ZZ both;
      ZZ::div(ZZ(dividend), ZZ(divisor), both, both);
      EXPECT_TRUE(both == expected) << dividend << " / " << divisor;
      ZZ a(dividend);
      ZZ::div(a, ZZ(divisor), a, a);
      EXPECT_TRUE(a == expected) << dividend << " / " << divisor;
      ZZ b(divisor);
      ZZ::div(ZZ(dividend), b, b, b);
      EXPECT_TRUE(b == expected) << dividend << " / " << divisor;
    }
}

TEST(ZZ, Failures) {
  ZZ q, rem;
  EXPECT_FAILURE(ZZ::div(ZZ(1), ZZ(0), q, rem), "ZZ::div -- division by zero");
  EXPECT_FAILURE(ZZ::div(ZZ(1), ZZ(""), q, rem), "ZZ::div -- division by zero");
  EXPECT_FAILURE(ZZ::div(ZZ(std::string(100, '7')), ZZ(0), q, rem), "ZZ::div -- division by zero");
  EXPECT_FAILURE(ZZ(2) ^ ZZ(-1), "[ ZZ::operator ^ ] Exponent < 0 ");
  EXPECT_FAILURE(ZZ(5).base_rshift(2), "ZZ::base_rshift steps > N");
  EXPECT_FAILURE(ZZ(5)[2] = 1, "Array: index out of range");
}

TEST(ZZ, Power) {
  EXPECT_TRUE((ZZ(0) ^ ZZ(0)) == ZZ(1));
  EXPECT_TRUE((ZZ(0) ^ ZZ(5)) == ZZ(0));
  EXPECT_TRUE((ZZ(-2) ^ ZZ(3)) == ZZ(-8));
  EXPECT_TRUE((ZZ(2) ^ ZZ(100)) == ZZ("1267650600228229401496703205376"));
  EXPECT_TRUE((ZZ(10) ^ ZZ(40)) == ZZ("1" + std::string(40, '0')));
}

TEST(ZZ, Gcd) {
  EXPECT_TRUE(gcd(ZZ(0), ZZ(0)) == ZZ(0));
  EXPECT_TRUE(gcd(ZZ(0), ZZ(-7)) == ZZ(7));
  EXPECT_TRUE(gcd(ZZ(-7), ZZ(0)) == ZZ(7));
  EXPECT_TRUE(gcd(ZZ(12), ZZ(-18)) == ZZ(6));
  EXPECT_EQ(gcd64(0, 0), 0u);
  EXPECT_EQ(gcd64(0, 9), 9u);
  EXPECT_EQ(gcd64(9, 0), 9u);
  EXPECT_EQ(gcd64(1ULL << 63, 1ULL << 40), 1ULL << 40);
}

TEST(ZZ, BaseShift) {
  ZZ a("123456789000000001000000002");
  a.base_rshift(2);
  EXPECT_TRUE(a == ZZ(123456789));
  a.base_rshift(1);
  EXPECT_EQ(a.MN, 0);
  EXPECT_TRUE(a == ZZ(0));
}

TEST(ZZ, Digits) {
  EXPECT_EQ(ZZ(0).digits(), 1);
  EXPECT_EQ(ZZ(999999999).digits(), 9);
  EXPECT_EQ(ZZ(1000000000).digits(), 10);
  EXPECT_EQ(ZZ("-12345678901234567890").digits(), 20);
}

TEST(ZZ, SignificantLengthIsThatOfTheLimbsInStorageOrder) {
  EXPECT_EQ(ZZ(0).significantLength(), 1);
  EXPECT_EQ(ZZ(1200).significantLength(), 2);
  EXPECT_EQ(ZZ(1000000000).significantLength(), 2);      // "0" and "1"
  EXPECT_EQ(ZZ(1000000005).significantLength(), 2);      // "5" and "1"
  EXPECT_EQ(ZZ(10000000005).significantLength(), 2);     // "5" and "10"
  EXPECT_EQ(ZZ(12345678901LL).significantLength(), 11);  // "345678901" and "12"
}

TEST(ZZ, DecimalShifts) {
  ZZ a(12);
  a.decimal_lshift(10);
  EXPECT_EQ(a.to_string(), "120000000000");
  a.decimal_rshift(11);
  EXPECT_EQ(a.to_string(), "1");
  a.decimal_rshift(1);
  EXPECT_EQ(a.to_string(), "0");
  ZZ negative(-5);
  negative.decimal_lshift(2);
  EXPECT_EQ(negative.to_string(), "-500");
  negative.decimal_rshift(2);
  EXPECT_EQ(negative.to_string(), "-5");
  negative.decimal_rshift(1);  // cuts to the lone "-"
  EXPECT_EQ(negative.to_string(), "0");
  EXPECT_TRUE(negative.sign);
  ZZ minus("-0");
  minus.decimal_lshift(3);
  EXPECT_EQ(minus.MN, 1);
}

TEST(ZZ, ShiftsOnLimbsEqualShiftsOnText) {
  std::mt19937_64 random(2);
  for (int round = 0; round < 20000; ++round) {
    const ZZ value = randomNumber(random, 12);
    const long n = static_cast<long>(random() % 120);
    ZZ limbShift(value), textShift(value);
    limbShift.decimal_lshift(n);
    textShift.decimalLshiftByText(n);
    ASSERT_EQ(limbs(limbShift), limbs(textShift)) << value << " " << n;
    ASSERT_EQ(limbShift.sign, textShift.sign);
    limbShift = textShift = value;
    limbShift.decimal_rshift(n);
    textShift.decimalRshiftByText(n);
    ASSERT_EQ(limbs(limbShift), limbs(textShift)) << value << " " << n;
    ASSERT_EQ(limbShift.sign, textShift.sign);
  }
}

TEST(ZZ, RemoveTrailingZeros) {
  const std::pair<const char*, const char*> table[] = {{"0", "0"},
                                                       {"5", "5"},
                                                       {"500", "5"},
                                                       {"-500", "-5"},
                                                       {"1000000000000000000000", "1"},
                                                       {"10203000000000000", "10203"}};
  for (const auto& [before, after] : table) {
    ZZ a(before);
    a.removeTrailingZeros();
    EXPECT_EQ(a.to_string(), after);
  }
}

TEST(ZZ, MoveLeavesTheSourceEmpty) {
  for (const char* text :
       {"-12", "-123456789012345678901234567890123456789012345678901234567890123456789012345"}) {
    ZZ a(text), b(std::move(a));
    EXPECT_EQ(b.to_string(), text);
    EXPECT_EQ(a.MN, 0);
    EXPECT_EQ(a.data, nullptr);
    ZZ c;
    c = std::move(b);
    EXPECT_EQ(c.to_string(), text);
    b = c;
    EXPECT_EQ(b.to_string(), text);
  }
}

// A number of 57 digits changed its sign, or its first digits, when a copy of it grew by a limb: see
// CopyOfAFullSmallStoreGrowsToTheHeap.
TEST(ZZ, CopyThatGrowsIntoTheEighthLimb) {
  for (const std::string digits : {"512", "-512", "1", "-1", "-257"}) {
    ZZ number(std::string(54, '9'));
    const ZZ value(digits + std::string(54, '0'));
    number = value;
    ASSERT_EQ(number.MN, 7);
    ZZ copy(number);
    copy.decimal_lshift(9);
    EXPECT_EQ(copy.to_string(), digits + std::string(63, '0'));
    ZZ sum(number);
    ZZ::add(sum, copy, sum);
    EXPECT_EQ((sum - copy).to_string(), digits + std::string(54, '0'));
    EXPECT_EQ(number.to_string(), digits + std::string(54, '0'));
  }
}

// The short cuts for few limbs against the algorithms, with every aliasing.
TEST(ZZ, ShortCutsEqualGeneralAlgorithms) {
  std::mt19937_64 random(3);
  for (int round = 0; round < 100000; ++round) {
    const ZZ a = randomNumber(random, 3), b = randomNumber(random, 3);
    ZZ fast, general;
    ZZ::add(a, b, fast), ZZ::addGeneral(a, b, general);
    ASSERT_EQ(fast.to_string(), general.to_string());
    ZZ::sub(a, b, fast), ZZ::subGeneral(a, b, general);
    ASSERT_EQ(fast.to_string(), general.to_string());
    ZZ::mul(a, b, fast), ZZ::mulGeneral(a, b, general);
    ASSERT_EQ(fast.to_string(), general.to_string());
    if (b.isZero()) continue;
    ZZ fastRest, generalRest;
    ZZ::div(a, b, fast, fastRest), ZZ::divGeneral(a, b, general, generalRest);
    ASSERT_EQ(fast.to_string(), general.to_string());
    ASSERT_EQ(fastRest.to_string(), generalRest.to_string());
  }
}

}  // namespace
}  // namespace latbox
