#include "complete/jobs/result.h"

#include <gtest/gtest.h>

#include "complete/files/digest.h"
#include "complete/files/words.h"
#include "complete/jobs/prefix_text.h"

namespace latbox::complete::jobs {
namespace {

Result resultOf() {
  Result result;
  result.number = 7;
  result.entry = "d";
  result.nodes = 12;
  result.open = {parsePiece("1,*>2"), parsePiece("*<3")};
  result.bound = "3:1/2";
  result.points = 2;
  result.lines = "[ 1 ] | x\n[ 2 ] | y\n";
  return result;
}

TEST(Result, GoesThereAndBack) {
  const std::string text = textOf(resultOf());
  const Result read = parseResult(text);
  EXPECT_EQ(textOf(read), text);
  EXPECT_EQ(read.lines, resultOf().lines);
  EXPECT_EQ(read.open, resultOf().open);
  EXPECT_FALSE(read.isDone());
  Result done = resultOf();
  done.open.clear();
  EXPECT_TRUE(parseResult(textOf(done)).isDone());
}

TEST(Result, NoticesEveryChange) {
  const std::string text = textOf(resultOf());
  for (std::size_t i = 0; i < text.size(); ++i) {
    std::string other = text;
    other[i] ^= 1;
    EXPECT_THROW(parseResult(other), BadWords) << i;
    EXPECT_THROW(parseResult(text.substr(0, i)), BadWords) << i;
  }
}

// A stream would read the largest number that there is.
TEST(Result, CountsFromNothingOn) {
  for (const char* name : {"nodes", "points"}) {
    std::string text = textOf(resultOf());
    text.resize(unsealed(text)->size());
    text.insert(text.find(std::string("\n") + name) + 2 + std::string(name).size(), "-");
    EXPECT_THROW(parseResult(sealed(text)), BadWords) << text;
  }
}

}  // namespace
}  // namespace latbox::complete::jobs
