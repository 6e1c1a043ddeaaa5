#include "lib/text.h"

#include <gtest/gtest.h>

namespace latbox {
namespace {

TEST(Trimmed, TakesTheBlanksOffBothEnds) {
  EXPECT_EQ(trimmed(" \t a b\r\n", BLANKS), "a b");
  EXPECT_EQ(trimmed("a", BLANKS), "a");
  EXPECT_EQ(trimmed("", BLANKS), "");
  EXPECT_EQ(trimmed(" \r\n\t ", BLANKS), "");
}

TEST(Trimmed, TheCallerSaysWhatABlankIs) {
  EXPECT_EQ(trimmed("\f a \v", BLANKS), "\f a \v");
  EXPECT_EQ(trimmed("\f a \v", " \f\v"), "a");
  EXPECT_EQ(trimmed("xaxbx", "x"), "axb");
}

}  // namespace
}  // namespace latbox
