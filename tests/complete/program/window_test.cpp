#include "complete/program/window.h"

#include <gtest/gtest.h>

namespace latbox::complete {
namespace {

TEST(Window, AsksForOneUnitWhileNothingIsProven) {
  Window window;
  window.improve(1000000);
  EXPECT_EQ(window.limit(), 999999);
  EXPECT_FALSE(window.isClosed());
}

TEST(Window, AsksForAPartOfWhatIsOpen) {
  Window window;
  window.improve(6400);
  window.raise(0);
  EXPECT_EQ(window.limit(), 6300);
  window.raise(6301);
  EXPECT_EQ(window.limit(), 6399);
  window.raise(6399);
  EXPECT_EQ(window.limit(), 6399);
  window.raise(6400);
  EXPECT_TRUE(window.isClosed());
}

TEST(Window, ALaterProofOfLessSaysNothing) {
  Window window;
  window.improve(10);
  window.raise(7);
  window.raise(-3);
  EXPECT_EQ(*window.least(), 7);
}

// What a search has excluded stays excluded: a better point never raises the limit.
TEST(Window, TheLimitFallsWithTheBestValue) {
  Window window;
  window.raise(-50);
  Integer last = 1000;
  for (long value = 1000; value > -50; --value) {
    window.improve(value);
    EXPECT_LE(window.limit(), last) << value;
    EXPECT_LT(window.limit(), value);
    EXPECT_GE(window.limit(), -50);
    last = window.limit();
  }
}

// Finds and searches for a value that lies somewhere in a range of 10^12: as many as there are digits, not as
// many as there are units.
TEST(Window, ClosesInFewSteps) {
  for (const char* where : {"0", "1", "123456789012", "999999999999"}) {
    Window window;
    const Integer least(where);
    window.improve(powerOfTen(12));
    window.raise(0);
    int finds = 0;
    int proofs = 0;
    while (!window.isClosed()) {
      if (least <= window.limit()) {
        window.improve(window.limit());
        ++finds;
      } else {
        window.raise(window.limit() + 1);
        ++proofs;
      }
    }
    EXPECT_EQ(*window.least(), least);
    EXPECT_LT(finds, 2500) << where;
    EXPECT_LT(proofs, 9) << where;
  }
}

}  // namespace
}  // namespace latbox::complete
