#include "complete/program/opt_reader.h"

#include "support.h"

namespace latbox::complete {
namespace {

using testing::refusal;

const std::string SMALL =
    "[ -inf ]\n[ [ 1 2 ] ]\n[ [ 1 1 ] ]\n[ 3 ]\n[ [ 2 1 ] ]\n[ 1 ]\n[ 8 ]\n[ 0 1 ]\n[ 0 0 ]\n[ 4 inf ]\n";

// The line-th line written as `text`.
std::string with(int line, const std::string& text) {
  std::size_t begin = 0;
  for (int i = 1; i < line; ++i) begin = SMALL.find('\n', begin) + 1;
  return SMALL.substr(0, begin) + text + SMALL.substr(SMALL.find('\n', begin));
}

TEST(ReadProgram, TakesEveryItem) {
  const Program program = readProgram(SMALL, "p");
  EXPECT_EQ(program.variables(), 2u);
  EXPECT_EQ(program.wanted[0].infinite, -1);
  EXPECT_EQ(program.sides[0], 3);
  EXPECT_EQ(program.upperSides[0].value, 8);
  EXPECT_EQ(program.digits, (std::vector<unsigned long>{0, 1}));
  EXPECT_EQ(program.upper[1].infinite, 1);
}

TEST(ReadProgram, SkipsCommentsThresholdsAndWhatStandsBehind) {
  const Program program = readProgram("// one\n[ 5 ] = [ -inf/* any */ ]" + SMALL.substr(8) + "behind", "p");
  EXPECT_EQ(program.wanted[0].value, 5);
}

TEST(ReadProgram, TellsThePlaceOfWhatIsWrong) {
  const std::tuple<int, const char*, const char*> rows[] = {
      {1, "-inf ]", "p:1:1: expected '[' to begin dt, found '-'"},
      {1, "[ -inf inf ]", "p:2:1: At has 1 entries, but dt has 2"},
      {1, "[ -inf ] = [ 1 2 ]", "p:1:12: kt has 2 entries, but dt has 1"},
      {2, "[ [ 1 inf ] ]", "p:2:3: an infinity in row 1 of At"},
      {2, "[ [ 1 2 ] [ 1 ] ]", "p:2:11: row 2 of At has 1 elements, not 2"},
      {3, "[ [ 1 1 1 ] ]", "p:3:1: Ag has 3 columns, but there are 2 variables"},
      {4, "[ inf ]", "p:4:1: an infinity in bg"},
      {4, "[ 1/0 ]", "p:4:3: '1/0' has the denominator 0"},
      {6, "[ -inf ] [ inf ] //", "p:6:10: inequation 1 has no finite side"},
      {7, "[ 0 ]", "p:7:1: no number lies within the bounds of inequation 1, 1 .. 0"},
      {8, "[ 0 1/2 ]", "p:8:1: x2 cannot have 1/2 digits"},
      {9, "[ 5 0 ]", "p:10:1: no number lies within the bounds of x1, 5 .. 4"},
      {10, "[ 4 /* inf ]", "p:10:5: the comment has no end"},
      {10, "[ 4", "p:11:1: expected ']' to end rx, found the end"},
  };
  for (const auto& [line, text, message] : rows)
    EXPECT_EQ(refusal([&, t = with(line, text)] { readProgram(t, "p"); }), message);
  EXPECT_EQ(refusal([] { readProgram("[ ] [ ] [ ] [ ] [ ] [ ] [ ] [ ] [ ] [ ]", "p"); }),
            "p:1:5: At, Ag and Au are all empty");
}

}  // namespace
}  // namespace latbox::complete
