#include "complete/program/number.h"

#include <gtest/gtest.h>

namespace latbox::complete {
namespace {

TEST(ParseRational, TakesEveryForm) {
  const std::pair<const char*, const char*> forms[] = {
      {"12", "12"},       {"-3", "-3"},
      {"+3", "3"},        {"007", "7"},
      {"1.25", "1:1/4"},  {"1,25", "1:1/4"},
      {".5", "1/2"},      {"5.50", "5:1/2"},
      {"3/4", "3/4"},     {"-6/8", "-3/4"},
      {"2:1/3", "2:1/3"}, {"-2:1/3", "-2:1/3"},
      {"8/4", "2"},       {"123456789012345678901234567890", "123456789012345678901234567890"}};
  for (const auto& [text, value] : forms) EXPECT_EQ(toText(parseRational(text)), value) << text;
}

TEST(ParseRational, RefusesWhatIsNoNumber) {
  for (const char* text : {"", "-", "+", "a", "1e3", "5.", "5.0", ",", "2:", "2:0", "1/0", "1/", "2:01/3",
                           "2:7/3", "2:0.5", "1/2/3", "--1", "1;"})
    EXPECT_THROW(parseRational(text), BadNumber) << text;
  EXPECT_THROW(parseRational(std::string(100001, '1')), BadNumber);
}

TEST(Rounding, GoesTheWayItSays) {
  EXPECT_EQ(floorOf(Rational(-7, 2)), -4);
  EXPECT_EQ(ceilOf(Rational(-7, 2)), -3);
  EXPECT_EQ(floorOf(Integer(7), Integer(2)), 3);
  EXPECT_EQ(ceilOf(Integer(7), Integer(2)), 4);
}

TEST(Compare, PutsInfinitiesAtTheEnds) {
  const Number low{-1, 0};
  const Number middle{0, 5};
  const Number high{1, 0};
  EXPECT_LT(compare(low, middle), 0);
  EXPECT_GT(compare(high, middle), 0);
  EXPECT_EQ(compare(high, high), 0);
  EXPECT_EQ(compare(middle, middle), 0);
}

}  // namespace
}  // namespace latbox::complete
