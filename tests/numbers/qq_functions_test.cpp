#include <cmath>

#include "lib/exceptions.h"
#include "numbers/number.h"
#include "support/failure.h"

namespace latbox {
namespace {

const QQ TINY = qqEps() * qqEps();

QQ rootOf(const QQ& x, long n) {
  QQ r;
  root(r, x, ZZ(n));
  return r;
}

void expectWithin(const QQ& x, const QQ& expected, const QQ& bound) {
  EXPECT_TRUE(abs(x - expected) <= bound) << x << " instead of " << expected;
}

TEST(QQFunctions, BinaryLogarithmOfIntegers) {
  expectWithin(log2(ZZ(1)), QQ(0), TINY);
  expectWithin(log2(ZZ(2)), QQ(1), TINY);
  expectWithin(log2(ZZ(1024)), QQ(10), TINY);
  expectWithin(log2(ZZ(2) ^ ZZ(300)), QQ(300), TINY);
  expectWithin(log2(ZZ(3)), QQ("1.584962500721156181"), QQ("4/1000000000000000000"));
  expectWithin(log2(ZZ(10) ^ ZZ(50)), QQ("166.0964047443681174"), QQ("4/1000000000000000"));
}

TEST(QQFunctions, BinaryLogarithmOfRationals) {
  expectWithin(log2(QQ("1/8")), QQ(-3), TINY);
  expectWithin(log2(QQ("2:1/2")), QQ("1.321928094887362348"), QQ("4/1000000000000000000"));
  EXPECT_EQ(toText(log2(qqInfinity())), "inf");
}

TEST(QQFunctions, LogarithmFailures) {
  const char* message = "log2(x), x <= 0 is not implemented / defined";
  EXPECT_FAILURE(log2(ZZ(0)), message);
  EXPECT_FAILURE(log2(ZZ(-5)), message);
  EXPECT_FAILURE(log2(QQ(0)), message);
  EXPECT_FAILURE(log2(QQ("-1/2")), message);
  EXPECT_FAILURE(log(QQ(0)), message);
  EXPECT_FAILURE(log2(-qqInfinity()), "log2(-inf) is not implemented / defined");
  EXPECT_FAILURE(log(-qqInfinity()), "log(-inf) is not implemented / defined");
}

TEST(QQFunctions, NaturalLogarithm) {
  const QQ bound("1/100000000000000");
  expectWithin(log(QQ(1)), QQ(0), bound);
  expectWithin(log(QQ(10)), QQ("2.302585092994045684"), bound);
  expectWithin(log(QQ("1/10")), QQ("-2.302585092994045684"), bound);
  EXPECT_EQ(toText(log(qqInfinity())), "inf");
}

// The base of the natural logarithm is a constant of double width: its own logarithm is exactly 1, that of a
// closer value is not.
TEST(QQFunctions, NaturalLogarithmRestsOnADoubleConstant) {
  EXPECT_EQ(toText(log(QQ(2.718281828459045))), "1");
  EXPECT_NE(toText(log(QQ("2.71828182845904524"))), "1");
}

TEST(QQFunctions, Roots) {
  expectWithin(rootOf(QQ(27), 3), QQ(3), qqEps());
  expectWithin(rootOf(QQ(-8), 3), QQ(-2), qqEps());
  expectWithin(rootOf(QQ(4), -2), QQ("1/2"), qqEps());
  expectWithin(rootOf(QQ(-8), -3), QQ("-1/2"), qqEps());
  expectWithin(rootOf(QQ(2), 2), QQ("1.41421356237309505"), qqEps());
  expectWithin(rootOf(QQ("1/9"), 2), QQ("1/3"), qqEps());
  expectWithin(rootOf(QQ("10000000000000000000000000000000000000000"), 2), QQ("100000000000000000000"),
               qqEps());
  expectWithin(rootOf(QQ("20000000000000000000000000000000000000000"), 2),
               QQ("141421356237309504880.168872420"), qqEps());
  EXPECT_EQ(toText(rootOf(QQ("-5:1/3"), 1)), "-5:1/3");
  EXPECT_EQ(toText(rootOf(QQ(0), 2)), "0");
  EXPECT_EQ(toText(rootOf(qqInfinity(), 2)), "inf");
  EXPECT_EQ(toText(rootOf(-qqInfinity(), 3)), "-inf");
  EXPECT_EQ(toText(rootOf(qqInfinity(), -2)), "0");
}

// That two steps agree is not enough: the power of the root has to be the number.
TEST(QQFunctions, PowerOfARootIsTheNumberWithinTheTolerance) {
  for (const long degree : {2L, 3L, 5L, 7L, 11L, 13L})
    for (const long base : {2L, 3L, 10L, 97L, 1001L}) {
      const QQ x = pow(QQ(base), QQ(degree)) + QQ("1/7");
      EXPECT_TRUE(isZero(pow(rootOf(x, degree), QQ(degree)) - x)) << base << " " << degree;
    }
}

TEST(QQFunctions, RootInPlace) {
  QQ x(16);
  root(x, x, ZZ(4));
  expectWithin(x, QQ(2), qqEps());
}

// t = y^(n-1) rounds to zero on the way down: the iteration starts again from 1 and still ends.
TEST(QQFunctions, RootOfASmallNumberWithALargeDegree) {
  for (const long degree : {10L, 30L, 50L}) {
    const QQ root10 = rootOf(powerOfTen<QQ>(-degree), degree);
    EXPECT_TRUE(isZero(pow(root10, QQ(degree)) - powerOfTen<QQ>(-degree))) << degree;
  }
}

TEST(QQFunctions, RootFailures) {
  QQ r;
  EXPECT_FAILURE(root(r, QQ(2), ZZ(0)), "QQ: zero-th roots are not defined");
  EXPECT_FAILURE(root(r, QQ(-8), ZZ(2)), "QQ: complex roots are not implemented");
  EXPECT_FAILURE(root(r, QQ(-8), ZZ(-2)), "QQ: complex roots are not implemented");
  EXPECT_FAILURE(root(r, QQ(0), ZZ(-2)), "QQ: division by zero");
}

TEST(QQFunctions, Powers) {
  EXPECT_EQ(toText(pow(QQ(2), QQ(10))), "1024");
  EXPECT_EQ(toText(pow(QQ(2), QQ(-1))), "1/2");
  EXPECT_EQ(toText(pow(QQ("-2/3"), QQ(3))), "-8/27");
  EXPECT_EQ(toText(pow(QQ("-1:1/2"), QQ(-2))), "4/9");
  EXPECT_EQ(toText(pow(QQ(0), QQ(0))), "1");
  EXPECT_EQ(toText(pow(QQ(0), QQ(3))), "0");
  expectWithin(pow(QQ(4), QQ("1/2")), QQ(2), qqEps());
  expectWithin(pow(QQ("1/4"), QQ("-1:1/2")), QQ(8), QQ("1/1000000"));
  expectWithin(pow(QQ(-8), QQ("1/3")), QQ(-2), qqEps());
  EXPECT_THROW(pow(QQ(0), QQ(-1)), PrecisionException);
  EXPECT_FAILURE(pow(QQ(-4), QQ("1/2")), "QQ: complex roots are not implemented");
}

TEST(QQFunctions, InfinitePowers) {
  const QQ inf = qqInfinity();
  EXPECT_EQ(toText(pow(QQ(2), inf)), "inf");
  EXPECT_EQ(toText(pow(QQ(-2), inf)), "-inf");
  EXPECT_EQ(toText(pow(QQ("1/2"), inf)), "0");
  EXPECT_EQ(toText(pow(QQ("-1/2"), inf)), "0");
  EXPECT_EQ(toText(pow(QQ(1), inf)), "1");
  EXPECT_EQ(toText(pow(QQ(-1), inf)), "-1");
  EXPECT_EQ(toText(pow(QQ(2), -inf)), "0");
  EXPECT_EQ(toText(pow(inf, QQ(2))), "inf");
  EXPECT_EQ(toText(pow(-inf, QQ(3))), "-inf");
  EXPECT_EQ(toText(pow(-inf, QQ(2))), "inf");
  EXPECT_EQ(toText(pow(inf, QQ(0))), "1");
  EXPECT_EQ(toText(pow(inf, QQ(-1))), "0");
}

}  // namespace
}  // namespace latbox
