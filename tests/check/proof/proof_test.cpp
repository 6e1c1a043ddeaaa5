#include "check/proof/proof.h"

#include <gtest/gtest.h>

#include "proof_support.h"

namespace latbox::check::proof {
namespace {

using testing::changed;
using testing::OPT;
using testing::PROOF;
using testing::replaced;
using testing::verdict;

TEST(Proof, the_sample) {
  EXPECT_EQ(verdict(OPT, PROOF), "all 3");
}

TEST(Proof, another_program) {
  EXPECT_EQ(verdict(replaced(OPT, "[ 2 ]", "[ 1 ]"), PROOF),
            "refused: line 9: the point does not keep equation 1");
  EXPECT_EQ(verdict(replaced(OPT, "[ ] [ ] [ ] [ 0 0 0 ]", "[ [ 1 1 0 ] ] [ -inf ] [ 1 ] [ 0 0 0 ]"), PROOF),
            "refused: line 17: the search points has 2 points, not 3");
}

TEST(Proof, numbers_must_be_the_stated_ones) {
  EXPECT_EQ(changed("nodes 7", "nodes 8"), "refused: line 17: the search points has 7 nodes, not 8");
  EXPECT_EQ(changed("points 3\nend", "points 2\nend"),
            "refused: line 17: the search points has 3 points, not 2");
  EXPECT_EQ(changed("all 3", "all 4"), "refused: line 17: the search points has 3 points, not 4");
  EXPECT_EQ(changed("all 3", "none"), "refused: line 17: the search points has 3 points, not 0");
  EXPECT_EQ(changed("all 3", "all 0"), "refused: line 2: the number of points is not positive");
}

TEST(Proof, a_long_reason_breaks_off) {
  const std::string digits(1000, '9');
  EXPECT_EQ(changed("nodes 7", "nodes " + digits),
            "refused: line 17: " +
                ("the search points has 7 nodes, not " + digits).substr(0, Refused::SHOWN) + "...");
}

TEST(Proof, searches_must_be_those_of_the_verdict) {
  EXPECT_EQ(changed("search points", "search better"),
            "refused: line 3: not the search that the verdict needs: better");
  EXPECT_EQ(changed("walk nodes 7 points 3\n",
                    "walk nodes 7 points 3\nsearch points\nobjective 0\nderive 0\ncontradiction\n"),
            "refused: line 18: not the search that the verdict needs: points");
}

std::string none(const std::string& ending, const std::string& steps = "derive 0\n") {
  return "latbox-proof 1\nverdict none\nsearch points\nobjective 0\n" + steps + ending + "end\n";
}

TEST(Proof, contradictions) {
  const std::string big = replaced(OPT, "[ 2 ]", "[ 4 ]");
  EXPECT_EQ(verdict(big, none("contradiction\n", "derive 1\nupper 0 1 r1 -1\n")), "none");
  EXPECT_EQ(verdict(big, none("contradiction\n")), "refused: line 6: there is no contradiction");
  EXPECT_EQ(verdict(big, replaced(PROOF, "derive 0", "derive 1\nupper 0 1 r1 -1")),
            "refused: line 18: there is a contradiction, and no walk");
  EXPECT_EQ(verdict(big, replaced(none("contradiction\n", "derive 1\nupper 0 1 r1 -1\n"), "none", "all 1")),
            "refused: line 7: the search points has 0 points, not 1");
}

TEST(Proof, classes_that_leave_nothing_have_a_walk_of_no_nodes) {
  // 4 x1 + 8 x2 + x3 = 10, x3 is 2 modulo 4.
  const std::string opt = "[ ] [ ] [ [ 4 8 1 ] ] [ 10 ] [ ] [ ] [ ] [ 0 0 0 ] [ 0 0 3 ] [ 9 9 5 ]";
  const std::string text = none(R"(lattice 2 1 0
equations 1
coordinates
point 0 0 10
basis 1 0 -4
basis 0 1 -8
dual 1 0 0
dual 0 1 0
constant 0 0 0
level 1 1 0 0 1 0
level 0 1 0 1 0 0
walk nodes 0 points 0
)");
  EXPECT_EQ(verdict(opt, text), "none");
  EXPECT_EQ(verdict(opt, text, {3, 1, 1, true}), "none");
  EXPECT_EQ(verdict(opt, replaced(text, "nodes 0", "nodes 1")),
            "refused: line 17: the search points has 0 nodes, not 1");
  // The cuts are looked at all the same.
  EXPECT_EQ(verdict(opt, replaced(text, "level 0 1", "level 0 0")),
            "refused: line 16: the divisor is not positive");
  EXPECT_EQ(verdict(replaced(opt, "9 9 5", "9 9 6"), text),
            "refused: line 17: the walk has more than 0 nodes");
}

// The least x1 + x2 / 2, x1 + x2 = 3 with x1 of 0 .. 2, x2 of 0 .. 2 in halves; and near 1/2 with x1.
constexpr const char* OPTIMUM_OPT =
    "[ -inf ] [ [ 1 1/2 ] ] [ [ 1 1 ] ] [ 3 ] [ ] [ ] [ ] [ 0 0 ] [ 0 0 ] [ 2 2 ]";
constexpr const char* OPTIMUM = R"(latbox-proof 1
verdict optimum 2 0
point 1 2
search better
objective 1
norm
derive 1
lower 0 2 r1 -1 r2 -2
contradiction
end
)";

TEST(Proof, optimum) {
  // 2 L = 2 x1 + x2 = 3 + x1 >= 4, so that 2 L <= 3 contradicts only with x1 >= 1.
  const std::string text =
      replaced(OPTIMUM, "derive 1\nlower 0 2 r1 -1 r2 -2", "derive 2\nlower x1 1 r1 1\nlower 0 1 r1 1 r2 -1");
  EXPECT_EQ(verdict(OPTIMUM_OPT, text), "optimum 2");
  EXPECT_EQ(verdict(OPTIMUM_OPT, replaced(text, "derive 2\nlower x1 1 r1 1\n", "derive 1\n")),
            "refused: line 9: there is no contradiction");
  EXPECT_EQ(verdict(OPTIMUM_OPT, replaced(text, "optimum 2 0", "optimum 2 0 1")),
            "refused: line 2: the verdict needs more searches");
  EXPECT_EQ(verdict(OPTIMUM_OPT, replaced(text, "optimum 2 0", "optimum 2 0 0")),
            "refused: line 2: the number of points is not positive");
  EXPECT_EQ(verdict(OPTIMUM_OPT, replaced(text, "optimum 2 0", "optimum 5/2 0")),
            "refused: line 3: the point has other norms");
  EXPECT_EQ(verdict(OPTIMUM_OPT, replaced(text, "optimum 2 0", "optimum 2 1")),
            "refused: line 3: the point has other norms");
  EXPECT_EQ(verdict(OPTIMUM_OPT, replaced(text, "optimum 2 0", "optimum 7/3 0")),
            "refused: line 2: 7/3 is no norm of a point");
  EXPECT_EQ(verdict(OPTIMUM_OPT, replaced(text, "point 1 2", "point 2 2")),
            "refused: line 3: the point is not feasible");
  EXPECT_EQ(verdict(OPTIMUM_OPT, replaced(text, "point 1 2", "point 3/2 3/2")),
            "refused: line 3: the point is not feasible");
  EXPECT_EQ(verdict(OPTIMUM_OPT, replaced(text, "point 1 2", "point 1 2 0")),
            "refused: line 3: 3 numbers, not 2");
  EXPECT_EQ(verdict(OPTIMUM_OPT, replaced(text, "point 1 2", "point 2 1")),
            "refused: line 3: the point has other norms");
  EXPECT_EQ(verdict(replaced(OPTIMUM_OPT, "[ -inf ] [ [ 1 1/2 ] ]", "[ ] [ ]"), text),
            "refused: line 2: the program has no targets");
  // A better point stands against it.
  EXPECT_EQ(verdict(replaced(OPTIMUM_OPT, "[ 2 2 ]", "[ 2 3 ]"), text),
            "refused: line 10: there is no contradiction");
}

// Least x1 + |x1 + x2 - 3/2|, x of 0 .. 1: (0 1) and (0 0), (1 0), (1 1) have 1/2, 3/2, 3/2, 3/2.
constexpr const char* VALUED_OPT =
    "[ -inf 3/2 ] [ [ 1 0 ] [ 1 1 ] ] [ ] [ ] [ ] [ ] [ ] [ 0 0 ] [ 0 0 ] [ 1 1 ]";

std::string tree(const std::string& goal, const std::string& numbers,
                 const std::string& objective = "objective 0\n") {
  return "search " + goal + "\n" + objective + R"(derive 0
lattice 2 0 0
equations
coordinates
point 0 0
basis 1 0
basis 0 1
dual 1 0
dual 0 1
constant 0 0
level 1 1 0 0 1
level 0 1 0 1 0
walk nodes )" +
         numbers + "\n";
}

TEST(Proof, true_distances_count) {
  const std::string opening = "latbox-proof 1\nverdict optimum 1/2 1/2\npoint 0 1\n";
  const std::string better = tree("better", "6 points 0");
  EXPECT_EQ(verdict(VALUED_OPT, opening + better + tree("slack", "6 points 0") + "end\n"), "optimum 1/2 1/2");
  // An objective row that no better point keeps: 2 L + 2 E <= 0.
  EXPECT_EQ(verdict(VALUED_OPT, opening + tree("better", "2 points 0", "objective 1\nnorm 1\n") +
                                    tree("slack", "6 points 0") + "end\n")
                .substr(0, 8),
            "refused:");
  EXPECT_EQ(verdict(VALUED_OPT, opening + better + "end\n"),
            "refused: line 2: the verdict needs more searches");
  EXPECT_EQ(verdict(VALUED_OPT, replaced(opening, "1/2 1/2", "1/2 1/2 1") + better +
                                    tree("slack", "6 points 0") + tree("equal", "6 points 1") + "end\n"),
            "optimum 1/2 1/2, 1 points");
  EXPECT_EQ(verdict(VALUED_OPT, replaced(replaced(opening, "1/2 1/2", "3/2 3/2"), "point 0 1", "point 0 0") +
                                    better + tree("slack", "6 points 0") + "end\n"),
            "refused: line 18: the search better has 1 points, not 0");
  // Without a part in the norm that has no wanted value there is no second search.
  const std::string only = replaced(VALUED_OPT, "[ -inf 3/2 ] [ [ 1 0 ]", "[ -inf 3/2 ] [ [ 0 0 ]");
  EXPECT_EQ(verdict(only, opening + better + "end\n"), "optimum 1/2 1/2");
  EXPECT_EQ(verdict(only, opening + better + tree("slack", "6 points 0") + "end\n"),
            "refused: line 19: not the search that the verdict needs: slack");
}

}  // namespace
}  // namespace latbox::check::proof
