#include "program/trivial.h"
#include "lib/exceptions.h"
#include "support/failure.h"
#include "support/lattice.h"

namespace latbox {
namespace {

using testing::latticeOf;
using testing::shown;

template <class T>
class Trivial : public ::testing::Test {
 protected:
  // The points of the solutions found, in the variables of the program.
  static std::string found(const Lattice<T, dbl_t>& l) {
    std::string text;
    for (long i = 1; i <= l.solutions.MN; ++i) {
      Vector<T> x;
      l.lat2opt(l.solutions[i], x, false);
      text += shown(x);
    }
    return text;
  }
  static std::string tried(const std::string& program) {
    auto l = latticeOf<T>(program);
    l->params.sol.set(0);
    l->solutions.clear();  // what the preparation came across
    checkTrivialSolutions(*l);
    return found(*l);
  }
};
using NumberTypes = ::testing::Types<dbl_t, QQ>;
TYPED_TEST_SUITE(Trivial, NumberTypes);

TYPED_TEST(Trivial, CornersAndCentre) {
  EXPECT_EQ(this->tried("[ ] [ ] [ ] [ ] [ [ 1 1 ] ] [ 0 ] [ 9 ] [ 0 0 ] [ 0 0 ] [ 4 5 ]"),
            "[ 0 0 ][ 4 5 ][ 2 3 ]");
}

TYPED_TEST(Trivial, CentreIsRoundedAtItsDigits) {
  EXPECT_EQ(this->tried("[ ] [ ] [ ] [ ] [ [ 1 1 ] ] [ 0 ] [ 9 ] [ 1 0 ] [ 0 0 ] [ 0.5 2 ]"),
            this->tried("[ ] [ ] [ ] [ ] [ [ 1 1 ] ] [ 0 ] [ 9 ] [ 1 0 ] [ 0 0 ] [ 1/2 2 ]"));
  auto l = latticeOf<TypeParam>("[ ] [ ] [ ] [ ] [ [ 1 1 ] ] [ 0 ] [ 9 ] [ 1 0 ] [ 0 0 ] [ 0.5 2 ]");
  l->params.sol.set(0);
  checkTrivialSolutions(*l);
  ASSERT_EQ(l->solutions.MN, 3);
  Vector<TypeParam> x;
  l->lat2opt(l->solutions[3], x, false);
  EXPECT_EQ(x, Vector<TypeParam>("[ 0.3 1 ]"));  // 2.5 tenths, away from zero
}

// Missing bounds: the points that stand for them, per row of the table.
TYPED_TEST(Trivial, MissingBounds) {
  struct Row {
    const char *low, *high, *expected;
  };
  const Row rows[] = {
      {"-inf", "inf", "[ 0 0 ]"}, {"-inf", "-3", "[ -3 0 ]"},
      {"-inf", "0", "[ 0 0 ]"},   {"-inf", "6", "[ 0 0 ][ 6 0 ][ 3 0 ]"},
      {"0", "inf", "[ 0 0 ]"},    {"-4", "inf", "[ -4 0 ][ 0 0 ][ -2 0 ]"},
      {"5", "inf", "[ 5 0 ]"},
  };
  for (const Row& row : rows) {
    const std::string program = std::string("[ ] [ ] [ ] [ ] [ [ 1 1 ] ] [ -9 ] [ 9 ] [ 0 0 ] [ ") + row.low +
                                " -inf ] [ " + row.high + " inf ]";
    EXPECT_EQ(this->tried(program), row.expected) << row.low << ' ' << row.high;
  }
}

// Both corners are the one bound; the centre is rounded all the same.
TYPED_TEST(Trivial, CentreOfOneFractionalBoundIsRounded) {
  EXPECT_EQ(this->tried("[ ] [ ] [ ] [ ] [ [ 1 1 ] ] [ 0 ] [ 9 ] [ 0 0 ] [ 5.5 0 ] [ inf 2 ]"), "[ 6 1 ]");
  EXPECT_EQ(this->tried("[ ] [ ] [ ] [ ] [ [ 1 1 ] ] [ -9 ] [ 9 ] [ 0 0 ] [ -inf 0 ] [ -5.5 2 ]"),
            "[ -6 1 ]");
}

TYPED_TEST(Trivial, FixedVariablesStay) {
  EXPECT_EQ(this->tried("[ ] [ ] [ ] [ ] [ [ 1 1 ] ] [ 0 ] [ 9 ] [ 0 0 ] [ 3 0 ] [ 3 2 ]"),
            "[ 3 0 ][ 3 2 ][ 3 1 ]");
}

// A program of a few bytes asked for a number of a gigabyte here: ten to the digits of a fixed variable.
TYPED_TEST(Trivial, DigitsOfFixedVariablesAreNotLookedAt) {
  for (const std::string digits : {"1000000000", "inf", "1/2"})
    EXPECT_EQ(this->tried("[ ] [ ] [ ] [ ] [ [ 1 1 ] ] [ 0 ] [ 9 ] [ " + digits + " 0 ] [ 3 0 ] [ 3 2 ]"),
              "[ 3 0 ][ 3 2 ][ 3 1 ]")
        << digits;
}

TYPED_TEST(Trivial, SlacksAreFilledIn) {
  EXPECT_EQ(this->tried("[ ] [ ] [ ] [ ] [ [ 1 1 ] ] [ 0 ] [ inf ] [ 0 0 ] [ 0 0 ] [ 2 2 ]"),
            "[ 0 0 ][ 2 2 ][ 1 1 ]");
}

// Nothing guards against a corner that breaks a half-infinite inequation: a rule of this design.
TYPED_TEST(Trivial, CornerAgainstAHalfInfiniteInequation) {
  EXPECT_FAILURE(this->tried("[ ] [ ] [ ] [ ] [ [ 1 1 ] ] [ 3 ] [ inf ] [ 0 0 ] [ 0 0 ] [ 2 2 ]"),
                 "slack variable insonsistency, s should be >= 0");
}

TYPED_TEST(Trivial, LineAtVerbosityTwo) {
  auto l = latticeOf<TypeParam>(testing::SMALL);
  l->params.verb.set(2);
  ::testing::internal::CaptureStdout();
  checkTrivialSolutions(*l);
  EXPECT_NE(::testing::internal::GetCapturedStdout().find("-> Checking trivial solutions ...\n"),
            std::string::npos);
}

// The three are judged together, and then the lattice is regenerated once.
TYPED_TEST(Trivial, BetterTargetRegeneratesOnce) {
  using T = TypeParam;
  auto l = latticeOf<T>("[ -inf ] [ [ 1 1 ] ] [ ] [ ] [ [ 1 1 ] ] [ 0 ] [ 9 ] [ 0 0 ] [ 0 0 ] [ 4 4 ]");
  l->finishEnabled = true;
  EXPECT_THROW(checkTrivialSolutions(*l), RestartException);
  EXPECT_TRUE(l->finishEnabled);
  EXPECT_EQ(l->program.rtu(), T(-1));
  EXPECT_TRUE(l->generatedTu);
}

// Stars that were read back have moved a bound; nothing else has.
TYPED_TEST(Trivial, BoundsMovedBeforeCountToo) {
  using T = TypeParam;
  auto l = latticeOf<T>("[ -inf ] [ [ 1 1 ] ] [ ] [ ] [ [ 1 1 ] ] [ 1 ] [ 3 ] [ 0 0 ] [ 0 0 ] [ 4 4 ]");
  l->checkSolution(testing::latticeVector(*l, "[ 1 0 ]"), foundAfter(3), false);
  l->finishEnabled = true;
  EXPECT_THROW(checkTrivialSolutions(*l), RestartException);
  EXPECT_NO_THROW(checkTrivialSolutions(*l));
}

TEST(TrivialStandard, FlagComesBackWhenAnExceptionFlies) {
  auto l = latticeOf<dbl_t>("[ ] [ ] [ ] [ ] [ [ 1 1 ] ] [ 1 ] [ 3 ] [ 0 0 ] [ 0 0 ] [ 4 inf ]");
  l->finishEnabled = true;
  l->program.rx[2] = 4e9L;
  EXPECT_THROW(checkTrivialSolutions(*l), PrecisionException);
  EXPECT_TRUE(l->finishEnabled);
}

}  // namespace
}  // namespace latbox
