#include <sstream>
#include <string>

#include "lib/scanner.h"
#include "numbers/number.h"
#include "support/failure.h"

namespace latbox {
namespace {

std::string parsed(const std::string& text) {
  QQ q("77:7/9");
  parse(q, text);
  return toText(q);
}

TEST(QQText, Accepted) {
  const char* table[][2] = {
      {"5", "5"},
      {"+5", "5"},
      {"-5", "-5"},
      {"0", "0"},
      {"-0", "0"},
      {"  \t\n7", "7"},
      {"3/4", "3/4"},
      {"6/8", "3/4"},
      {"0:3/4", "3/4"},
      {"-6/8", "-3/4"},
      {"6/-8", "-3/4"},
      {"-6/-8", "3/4"},
      {"--6/8", "3/4"},
      {"0/5", "0"},
      {"-0/5", "0"},
      {"8/4", "2"},
      {"2:1/3", "2:1/3"},
      {"7/3", "2:1/3"},
      {"-2:1/3", "-2:1/3"},
      {":1/3", "1/3"},
      {"1.25", "1:1/4"},
      {"1,25", "1:1/4"},
      {"1.05", "1:1/20"},
      {"1.50", "1:1/2"},
      {".5", "1/2"},
      {"-.5", "-1/2"},
      {"-0.5", "-1/2"},
      {"0.001", "1/1000"},
      {"12.0012000", "12:3/2500"},
      {"1.2.3", "1:1/5"},  // the text behind the point is a number of its own; its integer part counts
      {"1.-5", "1:1/2"},
      {"inf", "inf"},
      {"+inf", "inf"},
      {"-inf", "-inf"},
      {"infinity", "inf"},
      {"1e3", "1000"},
      {"1E-3", "1/1000"},
      {"1.5e3", "1500"},
      {"2e-2", "1/50"},
      {"1/3e2", "33:1/3"},
      {"2e+2", "200"},
      {"-1e2", "-100"},
      {" 1e2", "100"},
      {"1e1e1", "10000000000"},
      {"1e1e1e0", "10000000000"},
      {"1einf", "inf"},
      {"-infe2", "-inf"},
      {"1e-inf", "0"},
      {"0e5", "0"},
      {"1.2345678901234568e+17", "123456789012345680"},
      {"12a3", "123"},
      {"nan", "0"},
      {"123456789012345678901234567890/246913578024691357802469135780", "1/2"},
  };
  for (const auto& [text, value] : table) EXPECT_EQ(parsed(text), value) << text;
}

TEST(QQText, HalfPowerOfTen) {
  EXPECT_TRUE(isZero(QQ("1e1/2") - QQ("3.162277660168379332")));
}

TEST(QQText, Refused) {
  const char* table[][2] = {
      {"", "QQ: parse error1"},
      {"   ", "QQ: parse error1"},
      {"+", "QQ: parse error1"},
      {"-", "QQ: parse error1"},
      {"5.", "QQ: parse error1"},
      {"5.0", "QQ: parse error1"},
      {"5.00", "QQ: parse error1"},
      {"5,0", "QQ: parse error1"},
      {"5:", "QQ: parse error1"},
      {"1:0", "QQ: parse error1"},
      {"1e", "QQ: parse error1"},
      {"e5", "QQ: parse error1"},
      {"i", "QQ: parse error2"},
      {"ix", "QQ: parse error2"},
      {"in", "QQ: parse error3"},
      {"inx", "QQ: parse error3"},
      {"1/0", "QQ: division by zero1"},
      {"1/", "QQ: division by zero1"},
      {"/", "QQ: division by zero1"},
      {"1:1/0", "QQ: division by zero1"},
      {"1:05/10", "QQ: malformed number1"},
      {"1:-1/2", "QQ: malformed number1"},
      {"1:7/3", "QQ: malformed number2"},
      {"1:2", "QQ: malformed number2"},
      {"1:inf", "QQ: malformed number2"},
      {"1e10001", "QQ: exponent out of range"},
      {"1e-999999999999", "QQ: exponent out of range"},
      {"1e1/21", "QQ: exponent out of range"},
      {"1e1e9", "QQ: exponent out of range"},
      {"ixe1/0", "QQ: parse error2"},  // what stands before the exponent is read first
      {"inxe10001", "QQ: parse error3"},
      {"1e2e1/0", "QQ: division by zero1"},
  };
  for (const auto& [text, message] : table) EXPECT_FAILURE(parsed(text), message) << text;
}

TEST(QQText, LongTextsEndSoon) {
  std::string points, exponents, zeros(90000, '0'), digits(90000, '7');
  for (int i = 0; i < 49000; ++i) points += "1.", exponents += "1e";
  EXPECT_EQ(parsed(points + "1"), "1:1/10");  // a recursion per point would overflow the stack
  EXPECT_FAILURE(parsed(exponents + "1"), "QQ: exponent out of range");
  EXPECT_EQ(parsed("." + zeros + "5"), "1/2" + zeros);
  EXPECT_EQ(toDouble(QQ("." + zeros + "5")), 0.0L);
  EXPECT_EQ(parsed(digits), digits);
  EXPECT_FAILURE(parsed(std::string(100001, '7')), "QQ: number is too long");
}

TEST(QQText, PartsCarryNoSigns) {
  for (const char* text : {"-5", "--5", "-1/2", "1/-2", "-1.5", "-0", "--1:1/2", "--1.5"}) {
    const QQ q(text);
    EXPECT_TRUE(q.ganze.sign && q.zaehler.sign && q.nenner.sign) << text;
  }
}

TEST(QQText, ZeroIsPositiveHoweverItIsWritten) {
  for (const char* text : {"-0", "-0/5", "0/-5", "-0.x", "-.x", "-:/5", "-0e5", "-x"}) {
    const QQ q(text);
    EXPECT_TRUE(q.isExactZero() && q.sign) << text;
  }
}

TEST(QQText, Written) {
  EXPECT_EQ(toText(QQ(ZZ(-7), ZZ(3))), "-2:1/3");
  EXPECT_EQ(toText(QQ(5)), "5");
  EXPECT_EQ(toText(QQ(ZZ(3), ZZ(4))), "3/4");
  EXPECT_EQ(toText(QQ()), "0");
  EXPECT_EQ(toText(-qqInfinity()), "-inf");
  std::ostringstream stream;
  stream << QQ("-1.5") << " " << QQ("inf");
  EXPECT_EQ(stream.str(), "-1:1/2 inf");
}

TEST(QQText, ExpandExponent) {
  EXPECT_EQ(expandExponent("1.50"), "1.50");
  EXPECT_EQ(expandExponent("-inf"), "-inf");
  EXPECT_EQ(expandExponent("1.5e3"), "1500");
  EXPECT_EQ(expandExponent("1e-3"), "1/1000");
  EXPECT_EQ(expandExponent("5e-1/1"), "1/2");
}

TEST(QQText, ExtractorTakesOneToken) {
  std::istringstream stream(" \t/* a */ // b\n 1.5,5x -3/4:");
  QQ q;
  stream >> q;
  EXPECT_EQ(toText(q), "1:1/2");  // "1.5,5"
  char next = 0;
  stream.get(next);
  EXPECT_EQ(next, 'x');
}

TEST(QQText, ExtractorAtTheEndOfTheText) {
  std::istringstream stream("12");
  QQ q;
  EXPECT_TRUE(stream >> q);
  EXPECT_EQ(toText(q), "12");
  EXPECT_FALSE(stream >> q);
  EXPECT_EQ(toText(q), "12");
}

TEST(QQText, ExtractorFailsOnAnEmptyTokenWithoutParsing) {
  for (const char* text : {"", "   ", "x", "inf", "]", "e5"}) {
    std::istringstream stream(text);
    QQ q(7);
    EXPECT_FALSE(stream >> q) << text;
    EXPECT_EQ(toText(q), "7");
  }
}

TEST(QQText, ExtractorTakesNoExponentUnlessAskedTo) {
  std::istringstream stream("15e2");
  QQ q;
  stream >> q;
  EXPECT_EQ(toText(q), "15");
  EXPECT_EQ(stream.peek(), 'e');
  std::istringstream own("15e2");
  acceptExponents(own);
  own >> q;
  EXPECT_EQ(toText(q), "1500");
}

TEST(QQText, ReadNumberTakesBothWrittenForms) {
  std::istringstream stream("1.2345678901234568e+17 -2:1/4 0.5 x");
  dbl_t x = 0;
  EXPECT_TRUE(readNumber(stream, x));
  EXPECT_EQ(x, 123456789012345680.0L);
  EXPECT_TRUE(readNumber(stream, x));
  EXPECT_EQ(x, -2.25L);
  QQ q;
  EXPECT_TRUE(readNumber(stream, q));
  EXPECT_EQ(toText(q), "1/2");
  EXPECT_FALSE(readNumber(stream, q));
}

}  // namespace
}  // namespace latbox
