#include "check/files/line_file.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include "support.h"

namespace latbox::check {
namespace {

using testing::refusal;
using Texts = std::vector<std::string>;

class LineFileTest : public testing::FolderTest {
 protected:
  static Texts rest(LineFile& file) {
    Texts texts;
    while (const auto line = file.next()) texts.emplace_back(line->text);
    return texts;
  }
};

TEST_F(LineFileTest, gives_the_lines_and_where_they_begin) {
  LineFile file(write("a", "one\n\nthree\r\n four"));
  const std::vector<std::tuple<std::string, std::uint64_t, bool>> lines = {
      {"one", 0, true}, {"", 4, true}, {"three\r", 5, true}, {" four", 12, false}};
  for (const auto& [text, offset, hasEnd] : lines) {
    const auto line = file.next();
    ASSERT_TRUE(line);
    EXPECT_EQ(line->text, text);
    EXPECT_EQ(line->offset, offset);
    EXPECT_EQ(line->hasEnd, hasEnd);
  }
  EXPECT_FALSE(file.next());
  EXPECT_FALSE(file.next());
}

TEST_F(LineFileTest, is_read_again_from_the_beginning_and_from_any_line) {
  LineFile file(write("a", "one\ntwo\nthree\n"));
  EXPECT_EQ(rest(file), (Texts{"one", "two", "three"}));
  file.rewind();
  EXPECT_EQ(rest(file), (Texts{"one", "two", "three"}));
  EXPECT_EQ(file.at(4).text, "two");
  EXPECT_EQ(file.at(0).text, "one");
  EXPECT_EQ(rest(file), (Texts{"two", "three"}));
  EXPECT_EQ(file.at(8).text, "three");
  EXPECT_EQ(rest(file), Texts{});
}

TEST_F(LineFileTest, an_empty_file_has_no_line) {
  LineFile file(write("a", ""));
  EXPECT_FALSE(file.next());
}

TEST_F(LineFileTest, long_lines_and_any_bytes) {
  const std::string text = std::string(1000000, 'x') + '\0' + "\xff";
  LineFile file(write("a", text + "\n" + text));
  EXPECT_EQ(rest(file), (Texts{text, text}));
  EXPECT_EQ(file.at(text.size() + 1).text, text);
}

TEST_F(LineFileTest, what_is_appended_meanwhile_does_not_belong_to_it) {
  LineFile file(write("a", "one\ntw"));
  append("a", "o\nthree\n");
  EXPECT_EQ(rest(file), (Texts{"one", "tw"}));
  EXPECT_FALSE(file.at(4).hasEnd);
}

TEST_F(LineFileTest, what_is_cut_off_meanwhile_is_missed) {
  LineFile file(write("a", "one\ntwo\n"));
  std::filesystem::resize_file(path("a"), 4);
  EXPECT_EQ(refusal([&] { rest(file); }), CHANGED);
}

TEST_F(LineFileTest, a_pipe_is_read_twice_too) {
  int ends[2];
  ASSERT_EQ(pipe(ends), 0);
  ASSERT_EQ(::write(ends[1], "one\ntwo", 7), 7);
  close(ends[1]);
  LineFile file("/dev/fd/" + std::to_string(ends[0]));
  close(ends[0]);
  EXPECT_EQ(rest(file), (Texts{"one", "two"}));
  file.rewind();
  EXPECT_EQ(rest(file), (Texts{"one", "two"}));
}

TEST_F(LineFileTest, what_cannot_be_opened_or_read) {
  EXPECT_EQ(refusal([&] { LineFile file(path("none")); }), "No such file or directory");
  EXPECT_EQ(refusal([&] { LineFile file(folder_.string()); }), "Is a directory");
}

}  // namespace
}  // namespace latbox::check
