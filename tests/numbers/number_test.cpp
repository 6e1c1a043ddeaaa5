#include "numbers/number.h"

#include <iomanip>
#include <limits>
#include <random>
#include <sstream>

#include "lib/exceptions.h"
#include "support/failure.h"

namespace latbox {
namespace {

template <class T>
class Number : public ::testing::Test {
 protected:
  static T of(const char* text) { return parseText<T>(text); }
};
using NumberTypes = ::testing::Types<dbl_t, QQ>;
TYPED_TEST_SUITE(Number, NumberTypes);

TYPED_TEST(Number, IsZeroUpToTheTolerance) {
  EXPECT_TRUE(isZero(TypeParam(0)));
  EXPECT_TRUE(isZero(this->of("1/1000000000")));
  EXPECT_TRUE(isZero(this->of("-1/1000000000")));
  EXPECT_FALSE(isZero(this->of("1.1e-9")));
  EXPECT_FALSE(isZero(this->of("-1.1e-9")));
  EXPECT_FALSE(isZero(TypeParam(1)));
  EXPECT_FALSE(isZero(infinity<TypeParam>()));
  EXPECT_FALSE(isZero(-infinity<TypeParam>()));
}

TYPED_TEST(Number, ExactZeroAndSign) {
  EXPECT_TRUE(isExactZero(TypeParam(0)));
  EXPECT_FALSE(isExactZero(this->of("1/1000000000000")));
  EXPECT_EQ(signOf(TypeParam(0)), 0);
  EXPECT_EQ(signOf(this->of("-1/1000000000000")), -1);
  EXPECT_EQ(signOf(infinity<TypeParam>()), 1);
}

TYPED_TEST(Number, InfinitiesHaveASign) {
  const TypeParam inf = infinity<TypeParam>();
  EXPECT_TRUE(isPlusInfinity(inf));
  EXPECT_FALSE(isPlusInfinity(TypeParam(-inf)));
  EXPECT_FALSE(isPlusInfinity(TypeParam(1)));
  EXPECT_TRUE(isMinusInfinity(TypeParam(-inf)));
  EXPECT_FALSE(isMinusInfinity(inf));
  EXPECT_FALSE(isMinusInfinity(TypeParam(-1)));
}

TYPED_TEST(Number, TheNegatedZeroHasNoSign) {
  EXPECT_TRUE(negated(TypeParam(3)) == TypeParam(-3));
  EXPECT_TRUE(negated(infinity<TypeParam>()) == -infinity<TypeParam>());
  EXPECT_EQ(toText(negated(TypeParam(0))), "0");
  EXPECT_EQ(toText(negated(-TypeParam(0))), "0");
}

TYPED_TEST(Number, Rounding) {
  const char* table[][4] = {
      {"2.5", "2", "3", "3"}, {"-2.5", "-3", "-2", "-3"}, {"2.4", "2", "3", "2"}, {"-7", "-7", "-7", "-7"}};
  for (const auto& row : table) {
    EXPECT_EQ(floor(this->of(row[0])), this->of(row[1])) << row[0];
    EXPECT_EQ(ceil(this->of(row[0])), this->of(row[2])) << row[0];
    EXPECT_EQ(roundNearest(this->of(row[0])), this->of(row[3])) << row[0];
  }
  for (const TypeParam& x : {infinity<TypeParam>(), TypeParam(-infinity<TypeParam>())}) {
    EXPECT_EQ(floor(x), x);
    EXPECT_EQ(ceil(x), x);
    EXPECT_EQ(roundNearest(x), x);
  }
}

TYPED_TEST(Number, InfinityAndAbs) {
  EXPECT_TRUE(isInfinite(infinity<TypeParam>()));
  EXPECT_TRUE(isInfinite(TypeParam(-infinity<TypeParam>())));
  EXPECT_FALSE(isInfinite(TypeParam(5)));
  EXPECT_EQ(abs(TypeParam(-infinity<TypeParam>())), infinity<TypeParam>());
  EXPECT_EQ(abs(this->of("-1/2")), this->of("1/2"));
}

TYPED_TEST(Number, IsInteger) {
  EXPECT_TRUE(isInteger(TypeParam(0)));
  EXPECT_TRUE(isInteger(this->of("-123456789012")));
  EXPECT_FALSE(isInteger(this->of("1.5")));
  EXPECT_FALSE(isInteger(infinity<TypeParam>()));
}

TYPED_TEST(Number, GcdAndLcm) {
  const long table[][4] = {
      {12, 18, 6, 36}, {-12, 18, 6, 36}, {-12, -18, 6, 36}, {7, 5, 1, 35},
      {0, 5, 5, 0},    {-5, 0, 5, 0},    {0, 0, 0, 0},      {1000000007, 1000000009, 1, 1000000016000000063}};
  for (const auto& row : table) {
    const TypeParam a(row[0]), b(row[1]);
    EXPECT_EQ(gcd(a, b), TypeParam(row[2])) << row[0] << " " << row[1];
    EXPECT_EQ(lcm(a, b), TypeParam(row[3])) << row[0] << " " << row[1];
  }
}

TYPED_TEST(Number, DenominatorOf) {
  EXPECT_EQ(denominatorOf(TypeParam(7)), TypeParam(1));
  EXPECT_EQ(denominatorOf(infinity<TypeParam>()), TypeParam(1));
  EXPECT_EQ(denominatorOf(this->of("-2.75")), TypeParam(4));
  EXPECT_EQ(denominatorOf(this->of("0.1")), TypeParam(10));
}

TYPED_TEST(Number, Conversions) {
  EXPECT_EQ(toDouble(this->of("2.25")), 2.25L);
  EXPECT_EQ(toDoubleStrict(this->of("2.25"), true), 2.25L);
  EXPECT_EQ(fromDouble<TypeParam>(2.25L), this->of("2:1/4"));
  EXPECT_EQ(fromExact<TypeParam>(QQ("2:1/4")), this->of("2:1/4"));
}

TYPED_TEST(Number, PowerOfTen) {
  EXPECT_EQ(powerOfTen<TypeParam>(0), TypeParam(1));
  EXPECT_EQ(powerOfTen<TypeParam>(18), TypeParam(1000000000000000000L));
  EXPECT_EQ(powerOfTen<TypeParam>(-2), this->of("0.01"));
  EXPECT_EQ(toDouble(powerOfTen<TypeParam>(100)), 1e100L);
}

TYPED_TEST(Number, PowersAndLogarithms) {
  EXPECT_TRUE(isZero(pow(TypeParam(2), TypeParam(10)) - TypeParam(1024)));
  EXPECT_TRUE(isZero(log2(TypeParam(1024)) - TypeParam(10)));
  EXPECT_TRUE(isZero(log(TypeParam(1))));
  EXPECT_TRUE(isZero(sqrt(TypeParam(49)) - TypeParam(7)));
}

TYPED_TEST(Number, Modulo) {
  unsigned long long residue = 0;
  EXPECT_TRUE(modulo(TypeParam(-5), 7, residue));
  EXPECT_EQ(residue, 2u);
  EXPECT_TRUE(modulo(TypeParam(-14), 7, residue));
  EXPECT_EQ(residue, 0u);
  EXPECT_TRUE(modulo(TypeParam(1000000000000000000L), 1000003, residue));
  EXPECT_EQ(residue, 1000000000000000000ULL % 1000003);
  EXPECT_FALSE(modulo(infinity<TypeParam>(), 7, residue));
}

TYPED_TEST(Number, TextRoundTrip) {
  for (const char* text : {"0", "5", "-123456789012345", "inf", "-inf"})
    EXPECT_EQ(toText(this->of(text)), text);
  EXPECT_EQ(parseText<TypeParam>(toText(this->of("-0.1"))), this->of("-0.1"));
}

TEST(NumberDouble, Text) {
  EXPECT_EQ(toText(0.1L), "0.1");
}

TEST(NumberDouble, PrecisionCheck) {
  EXPECT_FALSE(precisionCheck(0.0L));
  EXPECT_FALSE(precisionCheck(1e9L));
  EXPECT_FALSE(precisionCheck(-1e9L));
  EXPECT_TRUE(precisionCheck(1e9L + 1e-3L));
  EXPECT_TRUE(precisionCheck(1e18L));
  EXPECT_TRUE(precisionCheck(-1e18L));
  EXPECT_FALSE(precisionCheck(std::numeric_limits<dbl_t>::infinity()));
  EXPECT_FALSE(precisionCheck(-std::numeric_limits<dbl_t>::infinity()));
  EXPECT_FALSE(precisionCheck(std::numeric_limits<dbl_t>::quiet_NaN()));
}

TEST(NumberDouble, PrecisionCheckBeyondRepairIsFatal) {
  for (const dbl_t x : {2e18L, -2e18L}) try {
      precisionCheck(x);
      ADD_FAILURE() << x;
    } catch (const FatalPrecisionException& e) {
      EXPECT_STREQ(
          e.what(),
          "Uncorrectable precision overflow detected - probably more overflow / precision checks are "
          "needed ...");
    }
}

TEST(NumberDouble, CheckPrecisionThrowsTheCallersText) {
  checkPrecision(1e9L, "unused");
  try {
    checkPrecision(-2e9L, "vector precisison overflow");
    ADD_FAILURE();
  } catch (const FatalPrecisionException&) {
    ADD_FAILURE();
  } catch (const PrecisionException& e) {
    EXPECT_STREQ(e.what(), "vector precisison overflow");
  }
  EXPECT_THROW(checkPrecision(2e18L, "unused"), FatalPrecisionException);
}

TEST(NumberExact, PrecisionIsNeverLost) {
  EXPECT_FALSE(precisionCheck(QQ("1e40")));
  checkPrecision(QQ("1e40"), "unused");
}

TEST(NumberDouble, ModuloRefusesFractionsAndLargeValues) {
  unsigned long long residue = 0;
  EXPECT_FALSE(modulo(0.5L, 7, residue));
  EXPECT_FALSE(modulo(1.1e18L, 7, residue));
}

TEST(NumberExact, ModuloOfFractions) {
  unsigned long long residue = 0;
  EXPECT_TRUE(modulo(QQ("1/2"), 7, residue));
  EXPECT_EQ(residue, 4u);
  EXPECT_TRUE(modulo(QQ("-2:1/2"), 7, residue));
  EXPECT_EQ(residue, 1u);
  EXPECT_FALSE(modulo(QQ("1/14"), 7, residue));
}

TEST(NumberExact, GcdOfFractions) {
  EXPECT_EQ(toText(gcd(QQ("1/2"), QQ("3/4"))), "1/4");
  EXPECT_EQ(toText(gcd(QQ("-2:1/2"), QQ("1:2/3"))), "5/6");
  EXPECT_EQ(toText(gcd(QQ(0), QQ("-3/4"))), "3/4");
  EXPECT_EQ(toText(lcm(QQ("-1/2"), QQ("3/4"))), "1:1/2");
}

TEST(NumberExact, ConvertStrict) {
  dbl_t out = 7;
  EXPECT_TRUE(convertStrict(QQ("2:1/4"), out));
  EXPECT_EQ(out, 2.25L);
  EXPECT_TRUE(convertStrict(-qqInfinity(), out));
  EXPECT_EQ(out, -std::numeric_limits<dbl_t>::infinity());
  EXPECT_TRUE(convertStrict(QQ("0.1"), out));
  out = 7;
  // A third has no last digit, 18 digits do not come back through 17, and what isZero comes back as 0.
  for (const char* text : {"1/3", "123456789012345678", "0.123456789012345678", "1/10000000000"})
    EXPECT_FALSE(convertStrict(QQ(text), out)) << text;
  EXPECT_EQ(out, 7.0L);
}

TEST(NumberText, FullPrecisionSetsSeventeenSignificantDigits) {
  std::ostringstream stream;
  stream << std::fixed << std::setprecision(2) << setFullPrecision << 0.1L << " " << 2.0L / 3 << " " << 1e20L
         << " " << 5.0L << " " << std::numeric_limits<dbl_t>::infinity();
  EXPECT_EQ(stream.str(), "0.1 0.66666666666666667 1e+20 5 inf");
}

TEST(NumberText, TextOfDoubleIsThatOfTheStream) {
  std::mt19937_64 random(6);
  for (int i = 0; i < 10000; ++i) {
    const dbl_t value = static_cast<dbl_t>(static_cast<long long>(random())) /
                        powerOfTen<dbl_t>(static_cast<long>(random() % 40));
    std::ostringstream stream;
    stream << setFullPrecision << value;
    EXPECT_EQ(toText(value), stream.str());
  }
}

}  // namespace
}  // namespace latbox
