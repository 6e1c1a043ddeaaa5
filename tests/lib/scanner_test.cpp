#include "lib/scanner.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>

#include "support/failure.h"

namespace latbox {
namespace {

std::string restAfterSkip(const std::string& text) {
  std::istringstream in(text);
  skipSpaceAndComments(in);
  EXPECT_TRUE(in.good()) << text;
  return std::string(std::istreambuf_iterator<char>(in), {});
}

TEST(Scanner, SkipsSpaceAndComments) {
  const struct {
    const char* text;
    const char* rest;
  } cases[] = {
      {"", ""},
      {"  \t\r\n x", "x"},
      {"// note\nx", "x"},
      {"//", ""},
      {"// note", ""},
      {"/* a */x", "x"},
      {"/**/x", "x"},
      {"/***/x", "x"},
      {"/* a\n * b */ // c\n /* d */ x", "x"},
      {"/*/ still a comment */x", "x"},
      {"/x", "/x"},
      {"/", "/"},
      {" /3", "/3"},
      {"\v x", "\v x"},
      {"\f x", "\f x"},
      {"x // y", "x // y"},
  };
  for (const auto& c : cases) EXPECT_EQ(restAfterSkip(c.text), c.rest) << c.text;
}

TEST(Scanner, ALineCommentStopsInFrontOfItsLineEnd) {
  std::istringstream in("// note\nx");
  takeCharacter(in);
  takeCharacter(in);
  std::istringstream whole("//a\nb");
  skipSpaceAndComments(whole);
  EXPECT_EQ(nextCharacter(whole), 'b');
}

TEST(Scanner, UnterminatedCommentFails) {
  for (const char* text : {"/*", "/* note", "/* *", "/*/", "/* note */ /* more"}) {
    std::istringstream in(text);
    EXPECT_FAILURE(skipSpaceAndComments(in), "Comment is not terminated");
  }
}

TEST(Scanner, SkipSpaceKnowsNoComments) {
  std::istringstream in(" \t// note");
  skipSpace(in);
  EXPECT_EQ(nextCharacter(in), '/');
}

TEST(Scanner, LookingAtTheEndSetsNoState) {
  std::istringstream in("");
  EXPECT_EQ(nextCharacter(in), std::char_traits<char>::eof());
  EXPECT_EQ(takeCharacter(in), std::char_traits<char>::eof());
  EXPECT_TRUE(in.good());
}

TEST(Scanner, NumberTokens) {
  const struct {
    const char* text;
    bool exponents;
    const char* token;
  } cases[] = {
      {"12 3", false, "12"},
      {"-2:1/3]", false, "-2:1/3"},
      {"1.5e3", false, "1.5"},
      {"1.5e3]", true, "1.5e3"},
      {"1E-3 ", true, "1E-3"},
      {"inf", false, ""},
      {"]", true, ""},
      {"", false, ""},
      {"+,-./0:;", false, "+,-./0:"},
  };
  for (const auto& c : cases) {
    std::istringstream in(c.text);
    EXPECT_EQ(takeNumberToken(in, c.exponents), c.token) << c.text;
  }
}

TEST(Scanner, ExponentsAreOffForANewStream) {
  std::istringstream in("");
  EXPECT_FALSE(acceptsExponents(in));
  acceptExponents(in);
  EXPECT_TRUE(acceptsExponents(in));
  acceptExponents(in, false);
  EXPECT_FALSE(acceptsExponents(in));
}

}  // namespace
}  // namespace latbox
