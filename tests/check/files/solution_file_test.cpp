#include "check/files/solution_file.h"

#include <gtest/gtest.h>

#include "support.h"

namespace latbox::check {
namespace {

using testing::refusal;

constexpr const char* ONE = "[ 1 ] | 0 | [ ] | 0 | 0 | p | 2.2.2\n";
constexpr const char* TWO = "[ 2 ] | 0 | [ ] | 0 | 0 | p\n";

class SolutionFileTest : public testing::FolderTest {
 protected:
  // "line: x", one a solution; what it says while it is read is for the caller.
  static std::vector<std::string> all(SolutionFile& file) {
    std::vector<std::string> found;
    file.forEach([&](const Solution& solution, std::uint64_t) {
      found.push_back(std::to_string(solution.line) + ": " + testing::toText(solution.x));
    });
    return found;
  }
};

TEST_F(SolutionFileTest, gives_all_solutions_as_often_as_it_is_asked) {
  SolutionFile file(write("a", std::string("\n \r\n") + ONE + "\n// nothing\n" + TWO + "\n"));
  for (int i = 0; i < 2; ++i) EXPECT_EQ(all(file), (std::vector<std::string>{"3: 1", "6: 2"}));
  EXPECT_EQ(file.tornLine(), 0);
}

TEST_F(SolutionFileTest, gives_one_solution_again) {
  SolutionFile file(write("a", std::string(ONE) + "\n" + TWO + ONE));
  std::vector<std::uint64_t> offsets;
  file.forEach([&](const Solution&, std::uint64_t offset) { offsets.push_back(offset); });
  ASSERT_EQ(offsets.size(), 3U);
  EXPECT_EQ(testing::toText(file.at(offsets[1]).x), "2");
  EXPECT_EQ(testing::toText(file.at(offsets[0]).x), "1");
  EXPECT_EQ(testing::toText(file.at(offsets[2]).x), "1");
}

TEST_F(SolutionFileTest, no_lines_no_solutions) {
  for (const char* text : {"", "\n\n", " "}) {
    SolutionFile file(write("a", text));
    EXPECT_TRUE(all(file).empty());
    EXPECT_EQ(file.tornLine(), 0);
  }
}

TEST_F(SolutionFileTest, wherever_the_last_line_is_torn_the_others_are_there) {
  const std::string text = TWO;
  // Behind the parameters' bar nothing that counts is missing.
  const std::size_t end = text.find(" p");
  for (std::size_t length = 1; length < end; ++length) {
    SolutionFile file(write("a", std::string(ONE) + "\n" + text.substr(0, length)));
    EXPECT_EQ(all(file), std::vector<std::string>{"1: 1"}) << length;
    EXPECT_EQ(file.tornLine(), 3) << length;
  }
  SolutionFile file(write("a", std::string(ONE) + text.substr(0, end)));
  EXPECT_EQ(all(file), (std::vector<std::string>{"1: 1", "2: 2"}));
  EXPECT_EQ(file.tornLine(), 0);
}

TEST_F(SolutionFileTest, a_line_that_has_an_end_is_not_torn) {
  SolutionFile file(write("a", std::string("[ 1 ] | 0\n") + ONE));
  EXPECT_EQ(refusal([&] { all(file); }),
            "line 1, column 10: expected '|' behind the target norm, found the end");
}

TEST_F(SolutionFileTest, what_no_more_text_could_mend_is_not_torn) {
  SolutionFile file(write("a", std::string(ONE) + "[ 1 ] | x"));
  EXPECT_EQ(refusal([&] { all(file); }), "line 2, column 9: expected a number, found 'x'");
}

TEST_F(SolutionFileTest, another_text_in_the_place_of_a_solution) {
  SolutionFile file(write("a", std::string(ONE) + TWO));
  all(file);
  write("a", std::string(std::char_traits<char>::length(ONE) - 1, ' ') + "\nhello, hello, hello, hello\n");
  EXPECT_EQ(refusal([&] { file.at(0); }), CHANGED);
  EXPECT_EQ(refusal([&] { file.at(std::char_traits<char>::length(ONE)); }), CHANGED);
}

}  // namespace
}  // namespace latbox::check
