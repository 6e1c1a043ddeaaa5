#include "check/proof/text.h"

#include <gtest/gtest.h>

#include "proof_support.h"

namespace latbox::check::proof {
namespace {

using check::testing::refusal;
using testing::PROOF;
using testing::replaced;

std::string fault(const std::string& text) {
  return refusal([&text] { readProof(text); });
}

std::string faultOf(const std::string& old, const std::string& with) {
  return fault(replaced(PROOF, old, with));
}

TEST(ProofText, everything_is_read) {
  const Proof proof = readProof(R"(latbox-proof 1
verdict optimum -3/2 0 2
point 1 -1/3
search better
objective 3
norm -1 0
distance 1
linear
derive 3
upper x2 5 r1 -7 r3 2
lower 0 1
class r12 1 4 r2 1
contradiction
search equal
objective 0
derive 0
lattice 1 2 1
equations 1 2
coordinates 3
point 5
basis 1
dual 2
constant 7
level 0 9 2 3
side 4
side 5
walk nodes 12 points 2
end
)");
  EXPECT_EQ(proof.verdict.kind, Kind::OPTIMUM);
  EXPECT_EQ(proof.verdict.target, mpq_class(-3, 2));
  EXPECT_EQ(proof.verdict.count.value(), 2);
  EXPECT_EQ(proof.pointLine, 3U);
  EXPECT_EQ(proof.point, (std::vector<mpq_class>{1, mpq_class(-1, 3)}));
  ASSERT_EQ(proof.searches.size(), 2U);
  const Search& better = proof.searches[0];
  EXPECT_TRUE(better.contradiction);
  EXPECT_EQ(better.endLine, 13U);
  EXPECT_EQ(better.objective[0].signs.values, (Integers{-1, 0}));
  EXPECT_EQ(better.objective[2].kind, Objective::LINEAR);
  const Step& step = better.steps[0];
  EXPECT_EQ(step.rule, Rule::UPPER);
  EXPECT_EQ(step.form, 'x');
  EXPECT_EQ(step.number, 2);
  EXPECT_EQ(step.divisor, 5);
  EXPECT_EQ(step.rows, (Integers{1, 3}));
  EXPECT_EQ(step.factors, (Integers{-7, 2}));
  EXPECT_EQ(better.steps[1].form, '0');
  EXPECT_EQ(better.steps[2].modulus, 4);
  const Search& equal = proof.searches[1];
  EXPECT_EQ(equal.equations.values, (Integers{1, 2}));
  EXPECT_EQ(equal.coordinates.values, Integers{3});
  EXPECT_EQ(equal.levels[0].divisor, 9);
  EXPECT_EQ(equal.levels[0].sides[1].values, Integers{5});
  EXPECT_EQ(equal.levels[0].sides[1].line, 26U);
  EXPECT_EQ(equal.nodes, 12);
  EXPECT_EQ(equal.points, 2);
}

TEST(ProofText, levels_are_put_in_the_order_of_their_numbers) {
  const Proof proof = readProof(PROOF);
  EXPECT_EQ(proof.searches[0].levels[0].number, 0);
  EXPECT_EQ(proof.searches[0].levels[1].number, 1);
}

TEST(ProofText, blanks_and_numbers_of_any_length) {
  EXPECT_EQ(faultOf("verdict all 3", "\tverdict  all \t 3 "), "");
  const std::string digits(1000, '7');
  EXPECT_EQ(readProof(replaced(PROOF, "nodes 7", "nodes " + digits)).searches[0].nodes, mpz_class(digits));
  EXPECT_EQ(
      readProof(replaced(PROOF, "point 1 1 0", "point -" + digits + " 007 -0")).searches[0].point.values,
      (Integers{-mpz_class(digits), 7, 0}));
}

struct Case {
  const char* old;
  const char* with;
  const char* fault;
};

TEST(ProofText, each_rule_of_the_grammar) {
  const std::initializer_list<Case> cases = {
      {"latbox-proof 1", "latbox-proof 2", "1: expected '1', found '2'"},
      {"latbox-proof 1", "latbox 1", "1: expected 'latbox-proof', found 'latbox'"},
      {"latbox-proof 1\n", "latbox-proof 1\n\n", "2: an empty line"},
      {"latbox-proof 1\n", "latbox-proof 1\n \t\n", "2: an empty line"},
      {"latbox-proof 1", "latbox-proof 1 0", "1: expected the end of the line, found '0'"},
      {"verdict all 3", "verdict some", "2: expected 'none' or 'all' or 'optimum', found 'some'"},
      {"verdict all 3", "verdict all",
       "2: expected a number that is not negative, found the end of the line"},
      {"verdict all 3", "verdict all -3", "2: expected a number that is not negative, found '-3'"},
      {"verdict all 3", "verdict none 3", "2: expected the end of the line, found '3'"},
      {"verdict all 3", "verdict optimum 1", "2: expected a number, found the end of the line"},
      {"verdict all 3", "verdict optimum 2/4 0", "2: '2/4' is not in lowest terms"},
      {"verdict all 3", "verdict optimum 2/1 0", "2: '2/1' is not in lowest terms"},
      {"verdict all 3", "verdict optimum 1/0 0", "2: '1/0' is not in lowest terms"},
      {"verdict all 3", "verdict optimum 1/-2 0", "2: expected a rational, found '1/-2'"},
      {"verdict all 3", "verdict optimum 1 0", "3: expected 'point', found 'search'"},
      {"search points", "point 1 1 0\nsearch points", "3: expected 'search', found 'point'"},
      {"search points", "search all", "3: expected 'points' or 'better' or 'slack' or 'equal', found 'all'"},
      {"objective 0", "objective", "4: expected a number that is not negative, found the end of the line"},
      {"objective 0", "objective 1", "5: expected 'norm' or 'distance' or 'linear', found 'derive'"},
      {"objective 0", "objective 1\nlinear 1", "5: expected the end of the line, found '1'"},
      {"objective 0", "objective 1\nnorm a", "5: expected a number, found 'a'"},
      {"derive 0", "derive 1", "6: expected 'upper' or 'lower' or 'class', found 'lattice'"},
      {"derive 0", "derive 1\nupper y1 1", "6: expected a variable, a row or 0, found 'y1'"},
      {"derive 0", "derive 1\nupper x 1", "6: expected a variable, a row or 0, found 'x'"},
      {"derive 0", "derive 1\nupper x-1 1", "6: expected a variable, a row or 0, found 'x-1'"},
      {"derive 0", "derive 1\nupper 1 1", "6: expected a variable, a row or 0, found '1'"},
      {"derive 0", "derive 1\nupper x1", "6: expected a number, found the end of the line"},
      {"derive 0", "derive 1\nclass x1 2", "6: expected a number, found the end of the line"},
      {"derive 0", "derive 1\nupper x1 1 x1 1", "6: expected a row, found 'x1'"},
      {"derive 0", "derive 1\nupper x1 1 r1", "6: expected a number, found the end of the line"},
      {"lattice 2 1 0", "lattice 2 1",
       "6: expected a number that is not negative, found the end of the line"},
      {"lattice 2 1 0", "lattice 99999999999999999999 1 0", "12: expected 'basis', found 'dual'"},
      {"equations 1", "equations r1", "7: expected a number that is not negative, found 'r1'"},
      {"coordinates", "coordinate", "8: expected 'coordinates', found 'coordinate'"},
      {"point 1 1 0", "point 1 1.5 0", "9: expected a number, found '1.5'"},
      {"point 1 1 0", "point 1 1 0\r", "9: expected a number, found '0\r'"},
      {"basis 1 -1 0\n", "", "11: expected 'basis', found 'dual'"},
      {"constant 1 1 1", "constant 1 +1 1", "14: expected a number, found '+1'"},
      {"level 1 6 0 1", "level -1 6 0 1", "15: expected a number that is not negative, found '-1'"},
      {"level 1 6 0 1", "level 1 6 1 1", "16: expected 'side', found 'level'"},
      {"level 1 6 0 1", "level 1 6 99999999999999999999 1", "16: expected 'side', found 'level'"},
      {"walk nodes 7", "walk points 7", "17: expected 'nodes', found 'points'"},
      {"walk nodes 7 points 3", "contradiction", "17: expected 'walk', found 'contradiction'"},
      {"end\n", "end", "18: the last line has no end"},
      {"end\n", "", "18: the file ends where 'end' is expected"},
      {"end\n", "end\nend\n", "19: text behind the end of the proof"}};
  for (const Case& c : cases) EXPECT_EQ(faultOf(c.old, c.with), c.fault) << c.with;
  EXPECT_EQ(fault(""), "1: the file ends where 'latbox-proof' is expected");
  EXPECT_EQ(fault("latbox-proof 1\nverdict none\n"), "3: the file ends where 'search' is expected");
}

TEST(ProofText, a_long_word_is_cut_in_messages) {
  EXPECT_EQ(faultOf("end\n", std::string(100, 'e') + "\n"),
            "18: expected 'end', found '" + std::string(40, 'e') + "...'");
}

TEST(ProofText, a_text_that_breaks_off_is_no_proof) {
  const std::string text = PROOF;
  for (std::size_t size = 0; size < text.size(); ++size) EXPECT_NE(fault(text.substr(0, size)), "") << size;
}

}  // namespace
}  // namespace latbox::check::proof
