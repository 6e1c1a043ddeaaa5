#include "complete/jobs/prefix_text.h"

#include <gtest/gtest.h>

#include "complete/files/words.h"

namespace latbox::complete::jobs {
namespace {

TEST(PrefixText, GoesThereAndBack) {
  for (const char* text : {".", "*>1<0", "3,0>2,*>1<0", "-12,4<-3,*<7", "*", "1>2<0,*>5"})
    EXPECT_EQ(textOf(parsePiece(text)), text);
  EXPECT_TRUE(parsePiece(".").empty());
}

TEST(PrefixText, ReadsALevel) {
  const Piece piece = parsePiece("3,-2>5<-7,*<9");
  ASSERT_EQ(piece.size(), 3u);
  EXPECT_EQ(piece[0], (Choice{3, 0, 0, true, true}));
  EXPECT_EQ(piece[1], (Choice{-2, 5, -7, false, false}));
  EXPECT_EQ(piece[2], (Choice{0, 0, 9, true, false}));
}

TEST(PrefixText, RefusesWhatIsNone) {
  for (const char* text :
       {"", "3", "3,", ",*", "*,3", "3,*,", "3 ,*", "*>", "*<>1", "*<1>2", "x,*", "3>1", "-,*", "..", "*1"})
    EXPECT_THROW(parsePiece(text), BadWords) << text;
}

}  // namespace
}  // namespace latbox::complete::jobs
