#include "check/proof/ranges.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "proof_support.h"

namespace latbox::check::proof {
namespace {

// r1: 3 x1 + 5 x2 = 14. r2: 2 <= x1 - x2. x1 has no bounds, x2 has 0 .. 4.
constexpr const char* OPT =
    "[ ] [ ] [ [ 3 5 ] ] [ 14 ] [ [ 1 -1 ] ] [ 2 ] [ inf ] [ 0 0 ] [ -inf 0 ] [ inf 4 ]";

std::string shown(const Range& range) {
  return (range.low ? range.low->get_str() : "open") + " .. " + (range.high ? range.high->get_str() : "open");
}

// What is left of x1, x2, r1 and r2 after the steps; "contradiction", or why a step is refused.
std::string after(const std::string& steps, const std::string& opt = OPT) {
  const auto count = std::count(steps.begin(), steps.end(), '\n');
  const Proof proof = readProof("latbox-proof 1\nverdict none\nsearch points\nobjective 0\nderive " +
                                std::to_string(count) + "\n" + steps + "contradiction\nend\n");
  System system = systemOf(readProgram(opt));
  try {
    if (narrow(system, proof.searches[0].steps)) return "contradiction";
  } catch (const Refused& refused) {
    return refused.what();
  }
  std::string text;
  for (const Range& range : system.variables) text += shown(range) + ", ";
  for (const SystemRow& row : system.rows) text += shown(row.range) + ", ";
  return text;
}

TEST(ProofRanges, without_steps) {
  EXPECT_EQ(after(""), "open .. open, 0 .. 4, 14 .. 14, 2 .. open, ");
}

TEST(ProofRanges, upper) {
  // 3 x1 = 14 - 5 x2 <= 14: floor(14 / 3).
  EXPECT_EQ(after("upper x1 3 r1 1\n"), "open .. 4, 0 .. 4, 14 .. 14, 2 .. open, ");
  // r2 = x1 - x2 <= 4 - 0.
  EXPECT_EQ(after("upper x1 3 r1 1\nupper r2 1\n"), "open .. 4, 0 .. 4, 14 .. 14, 2 .. 4, ");
  // 2 x1 = 2 r2 + 2 x2: r2 has no high.
  EXPECT_EQ(after("upper x1 2 r2 2\n"), "line 6: an end of r2 is open");
  // x2 = x1 - r2 with a negative number: r2 has a low, x1 no high.
  EXPECT_EQ(after("upper x2 1 r2 -1\n"), "line 6: an end of x1 is open");
  EXPECT_EQ(after("upper x1 3 r1 1\nupper x2 1 r2 -1\n"), "open .. 4, 0 .. 2, 14 .. 14, 2 .. open, ");
  // What is no better changes nothing.
  EXPECT_EQ(after("upper x2 1\n"), "open .. open, 0 .. 4, 14 .. 14, 2 .. open, ");
}

TEST(ProofRanges, lower) {
  // 3 x1 = 14 - 5 x2 >= -6.
  EXPECT_EQ(after("lower x1 3 r1 1\n"), "-2 .. open, 0 .. 4, 14 .. 14, 2 .. open, ");
  // 8 x1 = r1 + 5 r2 >= 24.
  EXPECT_EQ(after("lower x1 8 r1 1 r2 5\n"), "3 .. open, 0 .. 4, 14 .. 14, 2 .. open, ");
  // A number 0 is none: 4 x1 = 4 r2 + 4 x2 >= 8.
  EXPECT_EQ(after("lower x1 4 r1 0 r2 4\n"), "2 .. open, 0 .. 4, 14 .. 14, 2 .. open, ");
  EXPECT_EQ(after("lower x1 1 r1 -1\n"), "line 6: an end of x1 is open");
}

TEST(ProofRanges, classes) {
  const std::string ends = "upper x1 3 r1 1\nlower x1 3 r1 1\n";
  // 3 x1 = 14 modulo 5: x1 = 3 modulo 5.
  EXPECT_EQ(after(ends + "class x1 3 5 r1 1\n"), "-2 .. 3, 0 .. 4, 14 .. 14, 2 .. open, ");
  // Open ends stay so.
  EXPECT_EQ(after("class x1 3 5 r1 1\n"), "open .. open, 0 .. 4, 14 .. 14, 2 .. open, ");
  // A common divisor of both: 6 x1 = 28 modulo 10 says no more.
  EXPECT_EQ(after(ends + "class x1 6 10 r1 2\n"), "-2 .. 3, 0 .. 4, 14 .. 14, 2 .. open, ");
  // A fixed variable counts as its value.
  EXPECT_EQ(after(ends + "lower x1 8 r1 1 r2 5\nclass x1 3 5 r1 1\nclass x2 5 2 r1 1\n"),
            "3 .. 3, 1 .. 3, 14 .. 14, 2 .. open, ");
  EXPECT_EQ(after(ends + "class x1 3 4 r1 1\n"),
            "line 8: the coefficient of x2 is no multiple of the modulus");
  EXPECT_EQ(after(ends + "class x1 1 5 r2 1\n"), "line 8: r2 has more than one value");
  EXPECT_EQ(after(ends + "class x1 3 1 r1 1\n"), "-2 .. 4, 0 .. 4, 14 .. 14, 2 .. open, ");
  EXPECT_EQ(after(ends + "class x1 3 0 r1 1\n"), "line 8: the modulus is not positive");
}

TEST(ProofRanges, a_row_is_a_form) {
  // 2 x1 + 4 x2 within 3 .. 9, all of them even.
  const std::string opt = "[ ] [ ] [ ] [ ] [ [ 2 4 ] ] [ 3 ] [ 9 ] [ 0 0 ] [ 0 0 ] [ 9 9 ]";
  EXPECT_EQ(after("class r1 1 2\n", opt), "0 .. 9, 0 .. 9, 4 .. 8, ");
  EXPECT_EQ(after("class r1 1 2\nupper x1 2 r1 1\n", opt), "0 .. 4, 0 .. 9, 4 .. 8, ");
}

TEST(ProofRanges, contradictions) {
  // 0 = r1 - 3 x1 - 5 x2 <= 14 - 3 * 5 - 0.
  const std::string high = "[ ] [ ] [ [ 3 5 ] ] [ 14 ] [ ] [ ] [ ] [ 0 0 ] [ 5 0 ] [ 9 9 ]";
  EXPECT_EQ(after("upper 0 1 r1 1\n", high), "contradiction");
  EXPECT_EQ(after("lower 0 1 r1 -1\n", high), "contradiction");
  EXPECT_EQ(after("upper x2 5 r1 1\n", high), "contradiction");
  // y A whole and y b not: modulo 2.
  const std::string even = "[ ] [ ] [ [ 2 4 ] ] [ 7 ] [ ] [ ] [ ] [ 0 0 ] [ -inf -inf ] [ inf inf ]";
  EXPECT_EQ(after("class 0 1 2 r1 1\n", even), "contradiction");
  EXPECT_EQ(after("class x1 2 4 r1 1\n", even), "contradiction");
  EXPECT_EQ(after("class x1 1 2 r1 1\n", even).substr(0, 7), "line 6:");
  // Nothing behind it is looked at, and nothing is needed if it is there from the beginning.
  EXPECT_EQ(after("upper 0 1 r1 1\nupper x9 0\n", high), "contradiction");
  EXPECT_EQ(after("upper x9 0\n", "[ ] [ ] [ [ 2 ] ] [ 1/2 ] [ ] [ ] [ ] [ 0 ] [ 0 ] [ 1 ]"),
            "contradiction");
  EXPECT_EQ(after("upper 0 1\nlower 0 5\nclass 0 1 9\n"), "open .. open, 0 .. 4, 14 .. 14, 2 .. open, ");
}

TEST(ProofRanges, what_no_step_may_have) {
  EXPECT_EQ(after("upper x0 1\n"), "line 6: there is no variable or row 0");
  EXPECT_EQ(after("upper x3 1\n"), "line 6: there is no variable or row 3");
  EXPECT_EQ(after("lower r3 1\n"), "line 6: there is no variable or row 3");
  EXPECT_EQ(after("upper x1 1 r99999999999999999999 1\n"),
            "line 6: there is no variable or row 99999999999999999999");
  EXPECT_EQ(after("upper x1 0 r1 1\n"), "line 6: the number behind the form is not positive");
  EXPECT_EQ(after("lower x1 -3 r1 -1\n"), "line 6: the number behind the form is not positive");
  EXPECT_EQ(after("upper x1 6 r1 1 r1 1\n"), "line 6: a row stands twice");
}

TEST(ProofRanges, into_a_class) {
  Range range{mpz_class(-7), mpz_class(7)};
  intoClass(range, -1, 5);
  EXPECT_EQ(shown(range), "-6 .. 4");
  intoClass(range, 1, 20);
  EXPECT_EQ(shown(range), "1 .. 1");
}

}  // namespace
}  // namespace latbox::check::proof
