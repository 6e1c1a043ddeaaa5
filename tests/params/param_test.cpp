#include "params/param.h"

#include <gtest/gtest.h>

#include <functional>
#include <limits>
#include <sstream>
#include <string>

#include "numbers/number.h"
#include "params/number_text.h"
#include "support/failure.h"
#include "support/text.h"

namespace latbox {
namespace {

using testing::textOf;

TEST(ParamInfo, WritesKeyAndValue) {
  ParamInfo param;
  EXPECT_EQ(textOf(param), "");
  param.key = "verb";
  EXPECT_EQ(textOf(param), "");
  param.value.set("2");
  EXPECT_EQ(textOf(param), "--verb=2");
}

TEST(ParamInfo, ReadsOneToken) {
  Param<long> param;
  std::istringstream in(" \t\n--beta=17 --x=1");
  in >> param;
  EXPECT_EQ(param.key, "beta");
  EXPECT_EQ(param.get(), 17);
  ParamInfo plain;
  in >> plain;
  EXPECT_EQ(plain.key, "x");
  EXPECT_EQ(plain.value.get(), "1");
}

TEST(ParamInfo, SplitsAtTheFirstEquals) {
  ParamInfo param;
  std::istringstream in("--key=a=b");
  in >> param;
  EXPECT_EQ(param.key, "key");
  EXPECT_EQ(param.value.get(), "a=b");
}

TEST(ParamInfo, WithoutEqualsItIsMalformed) {
  ParamInfo param;
  std::istringstream in("--help");
  EXPECT_FAILURE(in >> param, "Malformed parameter: help");
  std::istringstream empty("");
  EXPECT_FAILURE(empty >> param, "Malformed parameter: ");
}

TEST(Param, InitRegisters) {
  Array<std::string> keys;
  Hash<ParamInfo*> hash;
  Param<long> param;
  param.init("beta", "Some help.", 20, keys, hash);
  EXPECT_EQ(param.key, "beta");
  EXPECT_EQ(param.help, "Some help.");
  EXPECT_EQ(param.defaultText, "20");
  EXPECT_EQ(param.defaultValue, 20);
  EXPECT_EQ(param.value.get(), "20");
  EXPECT_EQ(param.get(), 20);
  ASSERT_EQ(keys.MN, 1);
  EXPECT_EQ(keys[1], "beta");
  EXPECT_EQ(hash.find("beta"), &param);
}

TEST(Param, SetStoresTextParsesAndTellsTheListener) {
  Param<long> param;
  std::string heard, stored;
  param.setListener([&](const std::string& text) {
    heard = text;
    stored = param.value.get();
  });
  param.set(12);
  EXPECT_EQ(param.get(), 12);
  EXPECT_EQ(heard, "12");
  EXPECT_EQ(stored, "12");
}

TEST(Param, SetTextTellsNobody) {
  Param<long> param;
  bool heard = false;
  param.setListener([&](const std::string&) { heard = true; });
  param.setText("3");
  EXPECT_FALSE(heard);
}

TEST(Param, WithoutAListenerSetThrows) {
  Param<long> param;
  param.set(1);
  param.setListener(nullptr);
  EXPECT_THROW(param.set(2), std::bad_function_call);
}

TEST(Param, CopiesCarryNoListener) {
  Param<long> source, target;
  int heardSource = 0, heardTarget = 0;
  source.setListener([&](const std::string&) { ++heardSource; });
  target.setListener([&](const std::string&) { ++heardTarget; });
  source.key = "k";
  source.set(4);
  Param<long> copy(source);
  copy.set(5);
  EXPECT_EQ(heardSource, 1);
  target = source;
  EXPECT_EQ(target.get(), 4);
  EXPECT_EQ(target.key, "k");
  target.set(6);
  EXPECT_EQ(heardSource, 1);
  EXPECT_EQ(heardTarget, 1);
}

TEST(Param, TextOfValues) {
  Param<float> real;
  real.set(0.5F);
  EXPECT_EQ(real.value.get(), "0.5");
  Param<dbl_t> wide;
  wide.set(-std::numeric_limits<dbl_t>::infinity());
  EXPECT_EQ(wide.value.get(), "-inf");
  Param<QQ> exact;
  exact.set(QQ("7/3"));
  EXPECT_EQ(exact.value.get(), "2:1/3");
  EXPECT_TRUE(exact.get() == QQ("7/3"));
  MutexParam<long> guarded;
  guarded.set(9);
  EXPECT_EQ(guarded.get(), 9);
  Param<bool> flag;
  flag.set(true);
  EXPECT_EQ(flag.value.get(), "1");
}

// The text has the stream's default precision, and the typed value is what the text says.
TEST(Param, SetNarrowsThroughItsText) {
  Param<dbl_t> wide;
  wide.set(1234567.5L);
  EXPECT_EQ(wide.value.get(), "1.23457e+06");
  EXPECT_EQ(wide.get(), 1234570.0L);
}

TEST(Param, ExactNumbersFailAsTheirParserDoes) {
  Param<QQ> param;
  EXPECT_FAILURE(param.setText("5.0"), "QQ: parse error1");
  EXPECT_FAILURE(param.setText("1/0"), "QQ: division by zero1");
}

TEST(Param, TheConsoleGetsZeroInstead) {
  const struct {
    const char* text;
    bool refused;
    const char* value;
  } cases[] = {
      {"5", false, "5"},       {"-5", false, "-5"},   {"1/3", false, "1/3"},    {"2:1/3", false, "7/3"},
      {"1.25", false, "5/4"},  {".5", false, "1/2"},  {"1.05", false, "21/20"}, {"inf", false, "inf"},
      {"-inf", false, "-inf"}, {"", false, "0"},      {"x", false, "0"},        {"  7", false, "7"},
      {"+4", false, "4"},      {"5e3", false, "5"},   {"// 5", false, "0"},     {"1.5/2", false, "1:1/5"},
      {"5.", true, "0"},       {"5.0", true, "0"},    {"5.00", true, "0"},      {"-", true, "0"},
      {"+", true, "0"},        {"1/0", true, "0"},    {"/", true, "0"},         {"1:05/10", true, "0"},
      {"1:7/3", true, "0"},    {"1:-1/3", true, "0"}, {"1:", true, "0"},        {"1.-", true, "0"},
      {"/* ", true, "0"},      {"1.2/0", true, "0"},  {"1:1/0", true, "0"},     {"/* c */5", false, "5"},
      {"5 /* c", false, "5"},  {"//\n7", false, "7"}, {"/* c */", false, "0"},  {"/**/ /*", true, "0"},
      {"//", false, "0"},      {"/*/", true, "0"},
  };
  for (const auto& c : cases) {
    Param<QQ> param;
    param.setText("99");
    param.setTextOrZero(c.text);
    // Infinities are told apart before the extractor is asked.
    EXPECT_TRUE(param.get() == QQ("-inf") || exactNumberRefuses(c.text) == c.refused) << c.text;
    EXPECT_TRUE(param.get() == QQ(c.value)) << c.text;
    EXPECT_EQ(param.value.get(), c.text);
  }
}

// Once a number that its parser finds too long ended the run.
TEST(Param, TheConsoleGetsZeroForANumberThatIsTooLong) {
  const std::string longest(MAX_NUMBER_LENGTH, '7');
  for (const char* front : {"", "-", "/* c */ ", "."}) {
    Param<QQ> param;
    param.setText("99");
    param.setTextOrZero(front + longest + "7");
    EXPECT_TRUE(param.get() == QQ(0)) << front;
  }
  Param<QQ> param;
  param.setTextOrZero(longest);
  EXPECT_TRUE(param.get() == QQ(longest));
}

TEST(Param, TheConsoleSurvivesTextsOfAnyLength) {
  std::string points;
  for (int i = 0; i < 1'000'000; ++i) points += ".1";
  Param<QQ> param;
  param.setTextOrZero(points);
  EXPECT_TRUE(param.get() == QQ(0));
  Param<long> number;
  number.setTextOrZero("12");
  EXPECT_EQ(number.get(), 12);
}

// A reader may keep looking at a value while the next ones are published.
TEST(PublishedCell, OldValuesStayReadable) {
  PublishedCell<QQ> cell;
  cell.store(QQ("1/3"));
  const QQ& seen = cell.load();
  for (int i = 1; i <= 100; ++i) cell.store(QQ(i));
  EXPECT_TRUE(seen == QQ("1/3"));
  EXPECT_TRUE(cell.load() == QQ(100));
}

}  // namespace
}  // namespace latbox
