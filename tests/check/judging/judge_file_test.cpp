#include "check/judging/judge_file.h"

#include <gtest/gtest.h>

#include "support.h"

namespace latbox::check {
namespace {

using testing::refusal;
using Texts = std::vector<std::string>;

constexpr const char* OPT = "[ 7 ] [ [ 2 3 ] ] [ ] [ ] [ ] [ ] [ ] [ 0 0 ] [ 0 0 ] [ 4 4 ]";
constexpr const char* GOOD = "[ 1 1 ] | 2 | [ 2 ] | 2 | 0 | p\n";
constexpr const char* OTHER = "[ 2 1 ] | 0 | [ 0 ] | 0 | 0 | p\n";
constexpr const char* WRONG = "[ 5 1 ] | 6 | [ 6 ] | 6 | 0 | p\n";

class JudgeFile : public testing::FolderTest {
 protected:
  // "number (line): faults" for each solution.
  Texts told(const std::string& text) {
    const Program program = readProgram(OPT);
    SolutionFile file(write("a.sol", text));
    Texts texts;
    judgeFile(program, file, [&](std::size_t number, const Solution& solution, const Judgement& judgement) {
      texts.push_back(std::to_string(number) + " (" + std::to_string(solution.line) + "):");
      for (const std::string& fault : judgement.faults) texts.back() += " " + fault + ";";
    });
    return texts;
  }
};

TEST_F(JudgeFile, a_line_that_stands_twice) {
  EXPECT_EQ(told(std::string(GOOD) + "\n" + OTHER + GOOD + OTHER + GOOD),
            (Texts{"1 (1):", "2 (3):", "3 (4): the same as solution 1;", "4 (5): the same as solution 2;",
                   "5 (6): the same as solution 1;"}));
}

TEST_F(JudgeFile, a_wrong_line_that_stands_twice_has_both_faults) {
  EXPECT_EQ(told(std::string(WRONG) + WRONG),
            (Texts{"1 (1): x1 = 5 is outside 0 .. 4;",
                   "2 (2): x1 = 5 is outside 0 .. 4; the same as solution 1;"}));
}

TEST_F(JudgeFile, one_point_may_stand_with_several_distances) {
  EXPECT_EQ(told(std::string(GOOD) + "[ 1 1 ] | 4 | [ 4 ] | 2 | 0 | p"), (Texts{"1 (1):", "2 (2):"}));
}

TEST_F(JudgeFile, an_unreadable_line_far_behind_lets_nothing_be_told) {
  std::string text;
  for (int i = 0; i < 2000; ++i) text += GOOD;
  const Program program = readProgram(OPT);
  SolutionFile file(write("a.sol", text + "hello\n"));
  const Verdict tell = [](std::size_t, const Solution&, const Judgement&) { ADD_FAILURE(); };
  EXPECT_EQ(refusal([&] { judgeFile(program, file, tell); }),
            "line 2001, column 1: expected '[' to begin x, found 'h'");
}

// The points of the second reading are others than those whose repetitions are known.
TEST_F(JudgeFile, a_file_that_changes_between_the_readings_gets_no_verdict) {
  std::string text;
  for (int i = 0; i < 2000; ++i) text += GOOD;
  const Program program = readProgram(OPT);
  SolutionFile file(write("a.sol", text + GOOD));
  const Verdict change = [&](std::size_t number, const Solution&, const Judgement&) {
    if (number == 1) write("a.sol", text + OTHER);
  };
  EXPECT_EQ(refusal([&] { judgeFile(program, file, change); }), CHANGED);
}

}  // namespace
}  // namespace latbox::check
