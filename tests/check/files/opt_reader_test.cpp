#include <gtest/gtest.h>

#include "check/files/program.h"
#include "support.h"

namespace latbox::check {
namespace {

using testing::refusal;
using testing::replaced;

// The places of the tests below count on these lines.
constexpr const char* OPT = R"([ -inf inf 7 ] = [ 9 2 inf ]
[ [ 1 1 ] [ 1/2 0 ] [ 2 3 ] ]
[ [ 1 2 ] ]
[ 7 ]
[ [ 3 -1 ] ]
[ 0 ]
[ inf ]
[ 0 1 ]
[ 0 -inf ]
[ 10 10 ]
)";

std::string refusalOf(const std::string& text) {
  return refusal([&] { readProgram(text); });
}

TEST(OptReader, reads_all_items) {
  const Program p = readProgram(OPT);
  EXPECT_EQ(testing::toText(p.dt), "-inf inf 7");
  EXPECT_EQ(testing::toText(p.kt), "9 2 inf");
  ASSERT_EQ(p.At.size(), 3U);
  EXPECT_EQ(p.At[1][0], Rational(1) / 2);
  ASSERT_EQ(p.Ag.size(), 1U);
  EXPECT_EQ(p.Ag[0][1], 2);
  EXPECT_EQ(p.bg[0], 7);
  ASSERT_EQ(p.Au.size(), 1U);
  EXPECT_EQ(p.Au[0][1], -1);
  EXPECT_EQ(testing::toText(p.lu), "0");
  EXPECT_EQ(testing::toText(p.ru), "inf");
  EXPECT_EQ(p.dx, (std::vector<long>{0, 1}));
  EXPECT_EQ(testing::toText(p.lx), "0 -inf");
  EXPECT_EQ(testing::toText(p.rx), "10 10");
  EXPECT_FALSE(p.trailingText);
}

TEST(OptReader, thresholds_may_be_missing) {
  EXPECT_EQ(testing::toText(readProgram(replaced(OPT, "= [ 9 2 inf ]", "")).kt), "-inf inf 7");
}

TEST(OptReader, items_stand_as_close_or_as_far_as_they_like) {
  const Program p = readProgram(
      "[]/* none */[]//none\n[[3 5\t][1,5\r\n-7]]"
      "[1 2][]/**/[][] [0 0][0 //low\n0][inf inf/*high*/]");
  EXPECT_EQ(p.variables(), 2U);
  EXPECT_EQ(p.Ag.size(), 2U);
}

TEST(OptReader, rows_without_elements_make_no_matrix) {
  EXPECT_TRUE(readProgram("[ ] [ [ ] [ ] ] [ [ 1 ] ] [ 1 ] [ ] [ ] [ ] [ 0 ] [ 0 ] [ 1 ]").At.empty());
}

TEST(OptReader, digits_below_zero_mean_whole_numbers) {
  EXPECT_EQ(readProgram(replaced(OPT, "[ 0 1 ]", "[ -2 10000 ]")).dx, (std::vector<long>{0, 10000}));
}

TEST(OptReader, text_behind_the_last_item_is_noticed) {
  for (const char* blank : {" \n\t", "// done", "/* done */", "/* open"})
    EXPECT_FALSE(readProgram(OPT + std::string(blank)).trailingText) << blank;
  for (const char* text : {"]", "[ 1 ]", "/* */ x"})
    EXPECT_TRUE(readProgram(OPT + std::string(text)).trailingText) << text;
}

struct Damage {
  const char* old;
  const char* with;
  const char* message;
};

TEST(OptReader, says_what_is_wrong_and_where) {
  const std::initializer_list<Damage> damages = {
      {"[ -inf inf 7", "-inf inf 7", "line 1, column 1: expected '[' to begin dt, found '-'"},
      {"inf 7", "inx 7", "line 1, column 8: expected a number, found 'i'"},
      {"inf 7", "infinity 7", "line 1, column 11: 'i' behind 'inf'"},
      {"= [ 9 2 inf ]", "= [ 9 2 ]", "line 1, column 18: kt has 2 entries, but dt has 3"},
      {"= [ 9 2 inf ]", "=", "line 2, column 3: expected a number, found '['"},
      {"1/2", "1/0", "line 2, column 13: '1/0' has the denominator 0"},
      {"1/2", "1.0", "line 2, column 13: '1.0' has no digit other than zero behind the point"},
      {"1/2", "1e2", "line 2, column 14: 'e' behind '1'"},
      {"1/2", "inf", "line 2, column 11: an infinity in row 2 of At"},
      {"[ 1/2 0 ]", "[ 1/2 ]", "line 2, column 11: row 2 of At has 1 elements, not 2"},
      {"[ 1/2 0 ]", "[ 1/2 0 0 ]", "line 2, column 11: row 2 of At has 3 elements, not 2"},
      {"[ 1/2 0 ]", "1/2 0", "line 2, column 11: expected '[' to begin row 2 of At, found '1'"},
      {"[ 1/2 0 ] ", "", "line 2, column 1: At has 2 entries, but dt has 3"},
      {"[ [ 1 2 ] ]", "[ [ 1 2 3 ] ]", "line 3, column 1: Ag has 3 columns, but there are 2 variables"},
      {"[ [ 1 2 ] ]", "[ [ 1 -inf ] ]", "line 3, column 3: an infinity in row 1 of Ag"},
      {"\n[ 7 ]", "\n[ 7 8 ]", "line 4, column 1: bg has 2 entries, but Ag has 1"},
      {"\n[ 7 ]", "\n[ inf ]", "line 4, column 1: an infinity in bg"},
      {"[ [ 3 -1 ] ]", "[ [ 3 ] ]", "line 5, column 1: Au has 1 columns, but there are 2 variables"},
      {"[ 0 ]", "[ ]", "line 6, column 1: lu has 0 entries, but Au has 1"},
      {"[ 0 ]", "[ -inf ]", "line 7, column 1: inequation 1 has no finite side"},
      {"[ inf ]", "[ -1 ]", "line 7, column 1: no number lies within the bounds of inequation 1, 0 .. -1"},
      {"[ inf ]", "[ inf inf ]", "line 7, column 1: ru has 2 entries, but Au has 1"},
      {"[ 0 1 ]", "[ 0 1 1 ]", "line 9, column 1: lx has 2 entries, but dx has 3"},
      {"[ 0 1 ]", "[ 0 1/2 ]", "line 8, column 1: x2 cannot have 1/2 digits"},
      {"[ 0 1 ]", "[ inf 1 ]", "line 8, column 1: x1 cannot have inf digits"},
      {"[ 0 1 ]", "[ 0 10001 ]", "line 8, column 1: x2 cannot have 10001 digits"},
      {"[ 10 10 ]", "[ 10 ]", "line 10, column 1: rx has 1 entries, but dx has 2"},
      {"[ 10 10 ]", "[ -1 10 ]", "line 10, column 1: no number lies within the bounds of x1, 0 .. -1"},
      {"[ 0 -inf ]", "[ 0 11 ]", "line 10, column 1: no number lies within the bounds of x2, 11 .. 10"},
      {"[ 10 10 ]", "[ 10 -inf ]", "line 10, column 1: no number lies within the bounds of x2, -inf .. -inf"},
      {"[ 10 10 ]", "[ 10 /* 10 ]", "line 10, column 6: the comment has no end"},
      {"[ 10 10 ]", "[ 10 10", "line 11, column 1: expected ']' to end rx, found the end"},
      {"[ 10 10 ]", "", "line 11, column 1: expected '[' to begin rx, found the end"}};
  for (const Damage& d : damages) EXPECT_EQ(refusalOf(replaced(OPT, d.old, d.with)), d.message);
}

TEST(OptReader, refuses_what_is_no_program) {
  EXPECT_EQ(refusalOf(""), "line 1, column 1: expected '[' to begin dt, found the end");
  EXPECT_EQ(refusalOf(std::string("\0ELF", 4)),
            "line 1, column 1: expected '[' to begin dt, found byte 0x00");
  EXPECT_EQ(refusalOf("[ \xff ]"), "line 1, column 3: expected a number, found byte 0xff");
  EXPECT_EQ(refusalOf("[ ] [ ] [ ] [ ] [ ] [ ] [ ] [ 0 ] [ 0 ] [ 1 ]"),
            "line 1, column 5: At, Ag and Au are all empty");
  const std::string longToken(100, '/');
  EXPECT_EQ(refusalOf("[ 1" + longToken + " ]"),
            "line 1, column 3: '1" + longToken.substr(0, 39) + "...' is not a number");
}

TEST(OptReader, refuses_every_truncation) {
  const std::string text = OPT;
  for (std::size_t length = 0; length + 2 < text.size(); ++length)
    EXPECT_NE(refusalOf(text.substr(0, length)), "") << length;
}

}  // namespace
}  // namespace latbox::check
