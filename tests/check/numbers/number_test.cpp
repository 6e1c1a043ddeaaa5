#include "check/numbers/number.h"

#include <gtest/gtest.h>

namespace latbox::check {
namespace {

Rational ratio(long numerator, long denominator) {
  return Rational(numerator) / denominator;
}

struct Reading {
  const char* text;
  long numerator;
  long denominator;
};

TEST(ParseNumber, reads_every_form) {
  for (const Reading& r : std::initializer_list<Reading>{{"0", 0, 1},
                                                         {"-0", 0, 1},
                                                         {"12", 12, 1},
                                                         {"-3", -3, 1},
                                                         {"+3", 3, 1},
                                                         {"007", 7, 1},
                                                         {"1.25", 5, 4},
                                                         {"1,25", 5, 4},
                                                         {"1.05", 21, 20},
                                                         {"1.50", 3, 2},
                                                         {".5", 1, 2},
                                                         {"-.5", -1, 2},
                                                         {"3/4", 3, 4},
                                                         {"-6/8", -3, 4},
                                                         {"2:1/3", 7, 3},
                                                         {"-2:1/3", -7, 3},
                                                         {"0:3/4", 3, 4},
                                                         {"2:2/4", 5, 2}})
    EXPECT_EQ(parseNumber(r.text, false), ratio(r.numerator, r.denominator)) << r.text;
}

TEST(ParseNumber, refuses_garbage) {
  for (const char* text : {"",      "-",    "+",     "--5",   "+-5",   "1-2",    "1+2",   "5.",    "5.0",
                           "5,00",  ".",    "/",     "1/",    "/2",    "1/0",    "1/-2",  "1/2/3", "2:1",
                           "2:",    ":1/2", "2:4/3", "2:3/3", "2:0/3", "2:01/3", "1:2:3", "1.2.3", "1.5/2",
                           "1:1.5", "1.-5", "x",     "inf",   "nan",   "0x10",   " 5",    "5 "})
    EXPECT_THROW(parseNumber(text, true), MalformedNumber) << text;
}

TEST(ParseNumber, reads_exponents_only_where_they_belong) {
  for (const Reading& r : std::initializer_list<Reading>{{"1e3", 1000, 1},
                                                         {"1e+03", 1000, 1},
                                                         {"-2E-2", -1, 50},
                                                         {"1.5e1", 15, 1},
                                                         {"2.5e-05", 1, 40000}}) {
    EXPECT_EQ(parseNumber(r.text, true), ratio(r.numerator, r.denominator)) << r.text;
    EXPECT_THROW(parseNumber(r.text, false), MalformedNumber) << r.text;
  }
  for (const char* text :
       {"1e", "e5", "1e+", "1e1/2", "1e1.5", "1/2e3", "1e2e3", "1e100001", "1e99999999999999"})
    EXPECT_THROW(parseNumber(text, true), MalformedNumber) << text;
  EXPECT_EQ(toText(parseNumber("1e100000", true)).size(), 100001U);
}

TEST(ParseNumber, holds_any_length) {
  const std::string digits(5000, '7');
  EXPECT_EQ(toText(parseNumber("-" + digits, false)), "-" + digits);
  EXPECT_NE(parseNumber(digits, false), parseNumber(digits.substr(1) + "8", false));
}

TEST(ToText, is_the_form_of_the_files) {
  for (const char* text :
       {"0", "5", "-5", "3/4", "-3/4", "2:1/3", "-2:1/3", "123456789012345678901234567890"})
    EXPECT_EQ(toText(parseNumber(text, false)), text);
  EXPECT_EQ(toText(Number::infinity(1)), "inf");
  EXPECT_EQ(toText(Number::infinity(-1)), "-inf");
  EXPECT_EQ(toText(Number(ratio(7, 3))), "2:1/3");
}

TEST(Shown, loses_the_middle_of_what_is_long) {
  EXPECT_EQ(shown(ratio(-7, 3)), "-2:1/3");
  EXPECT_EQ(shown(Number::infinity(-1)), "-inf");
  const std::string longest(SHOWN_DIGITS, '7');
  EXPECT_EQ(shown(parseNumber(longest, false)), longest);
  const std::string half(SHOWN_DIGITS / 2, '7');
  EXPECT_EQ(shown(parseNumber(longest + "7", false)), half + "..." + half);
  EXPECT_EQ(shown(parseNumber("1e90000", true)).size(), SHOWN_DIGITS + 3);
}

TEST(NumberOrder, infinities_enclose_every_rational) {
  const Number low = Number::infinity(-1);
  const Number high = Number::infinity(1);
  const Number huge(Rational(powerOfTen(1000)));
  EXPECT_LT(low, Number(0L));
  EXPECT_LT(huge, high);
  EXPECT_LT(low, high);
  EXPECT_EQ(high, Number::infinity(1));
  EXPECT_NE(high, huge);
  EXPECT_LT(Number(ratio(1, 3)), Number(ratio(1, 2)));
  EXPECT_EQ(Number(ratio(2, 4)), Number(ratio(1, 2)));
}

TEST(PowerOfTen, and_wholeness) {
  EXPECT_EQ(powerOfTen(0), 1);
  EXPECT_EQ(powerOfTen(3), 1000);
  EXPECT_TRUE(ratio(8, 4).isWhole());
  EXPECT_FALSE(ratio(9, 4).isWhole());
}

}  // namespace
}  // namespace latbox::check
