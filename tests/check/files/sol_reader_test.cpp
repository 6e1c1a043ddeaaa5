#include <gtest/gtest.h>

#include "check/files/solution.h"
#include "support.h"

namespace latbox::check {
namespace {

using testing::refusal;
using testing::replaced;

constexpr const char* LINE = "[ 8 -1.5 ] | 2:1/2 | [ 1e+03 0 ] | 0 | -1 | --verb=0 --sol=1 | 2.2.2";

TEST(SolReader, reads_all_fields) {
  const auto s = readSolution(LINE, 7);
  ASSERT_TRUE(s);
  EXPECT_EQ(s->line, 7);
  EXPECT_EQ(testing::toText(s->x), "8 -1:1/2");
  EXPECT_EQ(toText(s->targetNorm), "2:1/2");
  EXPECT_EQ(testing::toText(s->targets), "1000 0");
  EXPECT_EQ(toText(s->slackNorm), "0");
  EXPECT_EQ(s->time, -1);
  EXPECT_EQ(s->parameters, "--verb=0 --sol=1");
  EXPECT_EQ(s->version, "2.2.2");
}

TEST(SolReader, the_version_may_be_missing) {
  const auto s = readSolution("[ 1 ] | 0 | [ ] | 0 | 7 | p q", 1);
  ASSERT_TRUE(s);
  EXPECT_EQ(s->parameters, "p q");
  EXPECT_EQ(s->version, "");
  EXPECT_EQ(s->time, 7);
}

TEST(SolReader, a_negative_factor_of_a_benchmark_gives_negative_times) {
  const std::string text = replaced(LINE, "| -1 |", "| -999999999999999999 |");
  EXPECT_EQ(readSolution(text, 1)->time, -999999999999999999);
}

TEST(SolReader, a_blank_line_is_no_solution) {
  for (const char* text : {"", " \t\r", "// nothing", "/* nothing */ "})
    EXPECT_FALSE(readSolution(text, 1)) << text;
}

TEST(SolReader, infinite_figures_are_read) {
  EXPECT_FALSE(readSolution(replaced(LINE, "2:1/2", "inf"), 1)->targetNorm.isFinite());
}

struct Damage {
  const char* old;
  const char* with;
  const char* message;
};

TEST(SolReader, says_what_is_wrong_and_where) {
  const std::initializer_list<Damage> damages = {
      {"[ 8", "8", "line 2, column 1: expected '[' to begin x, found '8'"},
      {"[ 8", "hello", "line 2, column 1: expected '[' to begin x, found 'h'"},
      {"-1.5", "-1.0", "line 2, column 5: '-1.0' has no digit other than zero behind the point"},
      {"-1.5", "-1.5x", "line 2, column 9: 'x' behind '-1.5'"},
      {"-1.5 ]", "-1.5 //", "line 2, column 70: expected ']' to end x, found the end"},
      {"-1.5 ]", "-1.5 /*", "line 2, column 10: the comment has no end"},
      {"] | 2:1/2", "] 2:1/2", "line 2, column 12: expected '|' behind x, found '2'"},
      {"2:1/2", "2:3/2", "line 2, column 14: '2:3/2' has no proper fraction behind the colon"},
      {"| 2:1/2 |", "| |", "line 2, column 14: expected a number, found '|'"},
      {"[ 1e+03 0 ]", "", "line 2, column 23: expected '[' to begin the target values, found '|'"},
      {"1e+03", "1e+", "line 2, column 24: '1e+' is not a number"},
      {"| 0 |", "| x |", "line 2, column 36: expected a number, found 'x'"},
      {"| -1 |", "| 1.5 |", "line 2, column 40: '1.5' is not an integer"},
      {"| -1 |", "| now |", "line 2, column 40: expected an integer, found 'n'"},
      {"| -1 |", "| 1234567890123456789 |", "line 2, column 40: '1234567890123456789' is not an integer"},
      {"| -1 | --verb=0 --sol=1 | 2.2.2", "| -1",
       "line 2, column 42: expected '|' behind the time, found the end"},
      {"2.2.2", "2.2.2 | x", "line 2, column 70: a field behind the version"}};
  for (const Damage& d : damages)
    EXPECT_EQ(refusal([&] { readSolution(replaced(LINE, d.old, d.with), 2); }), d.message);
}

TEST(SolReader, a_line_that_is_cut_off_before_the_parameters_breaks_off) {
  const std::string text = LINE;
  const std::size_t end = text.find(" --verb");
  for (std::size_t length = 1; length < end; ++length)
    EXPECT_THROW(readSolution(text.substr(0, length), 1), BrokenOff) << length;
}

TEST(SolReader, what_could_not_be_mended_by_more_text_does_not_break_off) {
  for (const char* text : {"hello", "[ 8 x", "[ 8 1.5x", "[ 8 ] 2", "[ 8 ] | [", "[ 8 /*", "[ 1e999999 ]"}) {
    EXPECT_NE(refusal([&] { readSolution(text, 1); }), "") << text;
    try {
      readSolution(text, 1);
    } catch (const BrokenOff&) {
      ADD_FAILURE() << text;
    } catch (const Unreadable&) {
      // As it should be.
    }
  }
}

}  // namespace
}  // namespace latbox::check
