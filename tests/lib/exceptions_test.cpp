#include "lib/exceptions.h"

#include <gtest/gtest.h>

#include <string>
#include <type_traits>

namespace latbox {
namespace {

TEST(Exceptions, EmptyMessagesGetTheDefaultText) {
  EXPECT_STREQ(GeneralException("").what(), "");
  EXPECT_STREQ(ReadException("").what(), "Read exception");
  EXPECT_STREQ(DependencyException("").what(), "Dependency exception");
  EXPECT_STREQ(PrecisionException("").what(), "Precision exception");
  EXPECT_STREQ(FatalPrecisionException("").what(), "Fatal precision exception");
  EXPECT_STREQ(RestartException("").what(), "Restart exception");
}

TEST(Exceptions, MessagesStay) {
  EXPECT_STREQ(PrecisionException("q overflow").what(), "q overflow");
  EXPECT_STREQ(FatalPrecisionException("too late").what(), "too late");
}

TEST(Exceptions, FatalIsAPrecisionException) {
  try {
    throw FatalPrecisionException("x");
  } catch (const PrecisionException& caught) {
    EXPECT_STREQ(caught.what(), "x");
  }
}

// A rule of this design: a catch of the standard exception must not swallow a condition of ours.
TEST(Exceptions, TheStandardExceptionIsNoPublicBase) {
  static_assert(std::is_base_of_v<std::exception, GeneralException>);
  static_assert(!std::is_convertible_v<GeneralException*, std::exception*>);
  bool named = false;
  try {
    try {
      throw RestartException();
    } catch (const std::exception&) {
      FAIL();
    }
  } catch (const GeneralException&) {
    named = true;
  }
  EXPECT_TRUE(named);
}

}  // namespace
}  // namespace latbox
