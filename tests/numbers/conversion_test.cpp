#include "numbers/conversion.h"
#include "lib/exceptions.h"

#include <gtest/gtest.h>

#include <string>

namespace latbox {
namespace {

template <class Step>
std::string thrown(Step step) {
  try {
    step();
    return "nothing";
  } catch (const PrecisionException& e) {
    return e.what();
  }
}

TEST(Conversion, ValuesComeBackAsTheyWere) {
  for (const char* text : {"0", "-7", "1/10", "-3:1/8", "inf", "-inf", "12345678901234567"}) {
    const QQ x(text);
    EXPECT_TRUE(converted<QQ>(converted<dbl_t>(x)) == x) << text;
  }
  EXPECT_EQ(converted<dbl_t>(QQ("1/10")), 0.1L);
  EXPECT_TRUE(converted<QQ>(0.1L) == QQ("1/10"));
}

TEST(Conversion, WhatWouldComeBackAsAnotherIsRefused) {
  for (const char* text : {"1/3", "123456789012345678", "0.12345678901234567891"}) {
    dbl_t x = 5;
    EXPECT_EQ(thrown([&] { convertValue(QQ(text), x); }), "Precision lost during conversion") << text;
    EXPECT_EQ(x, 5) << text;
  }
}

TEST(Conversion, VectorsAndMatricesTakeTheSizeOfTheSource) {
  Vector<dbl_t> v("[ 9 9 9 9 ]");
  convertVector(Vector<QQ>("[ 1/2 -inf ]"), v);
  ASSERT_EQ(v.MN, 2);
  EXPECT_EQ(v[1], 0.5L);
  EXPECT_EQ(v[2], -infinity<dbl_t>());
  Matrix<QQ> m("[[9]]");
  convertMatrix(Matrix<dbl_t>("[[1 2 3][4 5 6]]"), m);
  ASSERT_EQ(m.M, 2);
  ASSERT_EQ(m.N, 3);
  EXPECT_TRUE(m[2][3] == QQ(6));
  EXPECT_EQ(thrown([&] { convertVector(Vector<QQ>("[ 1 1/3 ]"), v); }), CONVERSION_LOST);
  Matrix<dbl_t> standard;
  EXPECT_EQ(thrown([&] { convertMatrix(Matrix<QQ>("[[1][1/3]]"), standard); }), CONVERSION_LOST);
}

}  // namespace
}  // namespace latbox
