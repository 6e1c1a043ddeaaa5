#include "complete/jobs/cover.h"

#include <gtest/gtest.h>

#include "complete/jobs/prefix_text.h"

namespace latbox::complete::jobs {
namespace {

std::vector<Piece> piecesOf(std::initializer_list<const char*> texts) {
  std::vector<Piece> pieces;
  for (const char* text : texts) pieces.push_back(parsePiece(text));
  return pieces;
}

bool isWhole(std::initializer_list<const char*> texts) {
  Cover cover;
  return cover.add(piecesOf(texts)) && cover.isWhole();
}

TEST(Cover, IsWhole) {
  EXPECT_TRUE(isWhole({"."}));
  EXPECT_TRUE(isWhole({"*>1<0"}));
  EXPECT_TRUE(isWhole({"*>1", "*<0"}));
  EXPECT_TRUE(isWhole({"0,*>5<4", "*>1<-1"}));
  EXPECT_TRUE(isWhole({"0,1,*>1<0", "0,*>2<0", "1,*>0<-1", "*>2<-1"}));
  EXPECT_TRUE(isWhole({"0>1<-1,3>4<2,*>1<0"}));
}

TEST(Cover, MissesWhatIsNotThere) {
  EXPECT_FALSE(isWhole({}));
  EXPECT_FALSE(isWhole({"*>1"}));
  EXPECT_FALSE(isWhole({"*>2<0"}));
  EXPECT_FALSE(isWhole({"0,*>5<3", "*>1<-1"}));
  EXPECT_FALSE(isWhole({"0,1,*>1<0", "0,*>2<-1", "*>1<-1"}));
  EXPECT_FALSE(isWhole({"0,*>1<0", "2,*>1<0", "*>3<-1"}));
}

TEST(Cover, RefusesWhatIsThereTwice) {
  EXPECT_FALSE(isWhole({".", "."}));
  EXPECT_FALSE(isWhole({".", "0,*>1<0"}));
  EXPECT_FALSE(isWhole({"0,*>1<0", "."}));
  EXPECT_FALSE(isWhole({"*>1<0", "5,*>1<0"}));
  EXPECT_FALSE(isWhole({"5,*>1<0", "*>1<0"}));
  EXPECT_FALSE(isWhole({"*>0<0"}));
  EXPECT_FALSE(isWhole({"*>1", "*>2", "*<0"}));
  EXPECT_FALSE(isWhole({"0,*>1<0", "0,*>1<0", "*>1<-1"}));
}

TEST(Cover, KnowsTheSameSetInOtherPieces) {
  EXPECT_TRUE(isSame(piecesOf({"3,*>1<0"}), piecesOf({"3,*>7<6"})));
  EXPECT_TRUE(isSame(piecesOf({"3>4,*>1<0"}), piecesOf({"3,*>1", "3,*<0", "4,*>0<-1", "*>5"})));
  EXPECT_FALSE(isSame(piecesOf({"3>4,*>1<0"}), piecesOf({"3,*>1", "4,*>0<-1", "*>5"})));
  EXPECT_FALSE(isSame(piecesOf({"3,*>1<0"}), piecesOf({"4,*>1<0"})));
  EXPECT_FALSE(isSame(piecesOf({"3,*>1<0"}), piecesOf({"3,*>1<0", "4,*>1<0"})));
}

TEST(Cover, KnowsAPart) {
  for (const auto& [part, all] :
       {std::pair("3,*>1<0", "."), std::pair("3,*>4", "3,*>2"), std::pair("3,7,*>2", "3,*>2"),
        std::pair("3,*>1<0", "3>4<-1,*>1<0"), std::pair("9,*>1<0", "*>3")})
    EXPECT_TRUE(isWithin(piecesOf({part}), piecesOf({all}))) << part << " in " << all;
  for (const auto& [part, all] :
       {std::pair(".", "3,*>1<0"), std::pair("3,*>1", "3,*>2"), std::pair("4,*>1<0", "3,*>1<0"),
        std::pair("2,*>1<0", "*>3"), std::pair("*<0", "*>3")})
    EXPECT_FALSE(isWithin(piecesOf({part}), piecesOf({all}))) << part << " in " << all;
}

TEST(Cover, KnowsWhatIsNothing) {
  for (const char* nothing : {"*", "0,*", "7,-3,*"}) EXPECT_TRUE(isNothing(parsePiece(nothing))) << nothing;
  for (const char* something : {".", "*>1", "0<3,*"})
    EXPECT_FALSE(isNothing(parsePiece(something))) << something;
}

TEST(Cover, KnowsItsDepth) {
  EXPECT_EQ(depthOf({}), 0u);
  EXPECT_EQ(depthOf(piecesOf({"."})), 0u);
  EXPECT_EQ(depthOf(piecesOf({"*>1", "1,2,*<0", "0,*>0<-1"})), 3u);
}

}  // namespace
}  // namespace latbox::complete::jobs
