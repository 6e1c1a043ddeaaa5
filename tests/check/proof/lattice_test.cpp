#include "check/proof/lattice.h"

#include <gtest/gtest.h>

#include "proof_support.h"

namespace latbox::check::proof {
namespace {

using testing::changed;
using testing::PROOF;
using testing::replaced;

TEST(ProofLattice, the_sample) {
  const Proof proof = readProof(PROOF);
  const Box box = boxOf(systemOf(readProgram(testing::OPT)), proof.searches[0]);
  EXPECT_EQ(box.variables, (std::vector<std::size_t>{0, 1, 2}));
  EXPECT_EQ(box.low, (Integers{0, 0, 0}));
  EXPECT_EQ(box.high, (Integers{1, 1, 1}));
  EXPECT_FALSE(box.isEmpty);
  // D_i (v - x0), D_0 = (1 0 0), D_1 = (1 1 0), x0 = (1 1 0).
  EXPECT_EQ(box.alpha, (Integers{-1, -2}));
  EXPECT_EQ(box.beta, (Integers{0, 0}));
}

TEST(ProofLattice, the_point_keeps_the_equations) {
  EXPECT_EQ(changed("point 1 1 0", "point 1 0 0"), "refused: line 9: the point does not keep equation 1");
}

TEST(ProofLattice, the_basis_is_in_the_kernel) {
  EXPECT_EQ(changed("basis 1 -1 0", "basis 1 0 0"), "refused: line 10: not in the kernel of equation 1");
}

TEST(ProofLattice, the_dual_is_one) {
  EXPECT_EQ(changed("dual 1 0 0", "dual 1 1 0"),
            "refused: line 12: not the wanted product with basis vector 0");
  EXPECT_EQ(changed("dual 1 1 0", "dual 0 1 0"),
            "refused: line 13: not the wanted product with basis vector 0");
  // Twice a basis vector is in the kernel too, but has no dual.
  EXPECT_EQ(changed("basis 1 -1 0", "basis 2 -2 0"),
            "refused: line 12: not the wanted product with basis vector 0");
}

TEST(ProofLattice, a_part_of_the_kernel_is_not_enough) {
  const std::string part = R"(latbox-proof 1
verdict all 2
search points
objective 0
derive 0
lattice 1 1 0
equations 1
coordinates
point 1 0 1
basis 1 -1 0
dual 1 0 0
constant 0 0 0
level 0 2 0 1 -1 0
walk nodes 2 points 2
end
)";
  EXPECT_EQ(testing::verdict(testing::OPT, part), "refused: line 6: the rank of the kernel may be 2");
  EXPECT_EQ(testing::verdict(testing::OPT, replaced(replaced(part, "lattice 1 1 0", "lattice 1 0 0"),
                                                    "equations 1", "equations")),
            "refused: line 6: the rank of the kernel may be 3");
}

TEST(ProofLattice, the_rank_is_taken_modulo_a_prime) {
  // A row that is 0 modulo it shows no rank.
  const std::string opt =
      replaced(testing::OPT, "[ 1 1 1 ] ] [ 2 ]", "[ 2147483647 2147483647 0 ] ] [ 2147483647 ]");
  const std::string text = replaced(PROOF, "basis 0 1 -1", "basis 0 0 1");
  EXPECT_EQ(testing::verdict(opt, replaced(text, "point 1 1 0", "point 1 0 0")).substr(0, 16),
            "refused: line 13");
  const std::string dual = replaced(replaced(text, "dual 1 1 0", "dual 0 0 1"), "point 1 1 0", "point 1 0 0");
  EXPECT_EQ(testing::verdict(opt, dual), "refused: line 6: the rank of the kernel may be 3");
}

TEST(ProofLattice, rows_and_sizes) {
  EXPECT_EQ(changed("equations 1", "equations 2"), "refused: line 7: there is no row 2");
  EXPECT_EQ(changed("equations 1", "equations 0"), "refused: line 7: there is no row 0");
  EXPECT_EQ(changed("equations 1", "equations 1 1"), "refused: line 7: 2 numbers, not 1");
  EXPECT_EQ(testing::verdict(testing::OPT, replaced(replaced(PROOF, "equations 1", "equations 1 1"),
                                                    "lattice 2 1 0", "lattice 2 2 0")),
            "refused: line 7: a row stands twice");
  EXPECT_EQ(changed("coordinates", "coordinates 1"), "refused: line 8: 1 numbers, not 0");
  EXPECT_EQ(changed("lattice 2 1 0", "lattice 2 99999999999999999999 0"),
            "refused: line 7: 1 numbers, not 99999999999999999999");
  EXPECT_EQ(changed("point 1 1 0", "point 1 1"), "refused: line 9: 2 numbers, not 3");
  EXPECT_EQ(changed("basis 1 -1 0", "basis 1 -1 0 0"), "refused: line 10: 4 numbers, not 3");
  EXPECT_EQ(changed("dual 1 0 0", "dual"), "refused: line 12: 0 numbers, not 3");
}

TEST(ProofLattice, open_ends_and_rows_with_many_values) {
  const std::string opt = "[ ] [ ] [ ] [ ] [ [ 1 1 1 ] ] [ 1 ] [ 2 ] [ 0 0 0 ] [ 0 0 0 ] [ 1 1 1 ]";
  EXPECT_EQ(testing::verdict(opt, PROOF), "refused: line 7: a row has more than one value");
  EXPECT_EQ(
      testing::verdict("[ ] [ ] [ [ 1 1 1 ] ] [ 2 ] [ ] [ ] [ ] [ 0 0 0 ] [ 0 -inf 0 ] [ 1 1 1 ]", PROOF),
      "refused: line 6: x2 has an open end");
}

// x1 + 2 x2 within 2 .. 3 as a column, x3 fixed at 1: (2 0), (3 0), (0 1), (1 1) with x1 <= 3.
constexpr const char* ROW_OPT = "[ ] [ ] [ ] [ ] [ [ 1 2 5 ] ] [ 7 ] [ 8 ] [ 0 0 0 ] [ 0 0 1 ] [ 3 3 1 ]";
constexpr const char* ROW_PROOF = R"(latbox-proof 1
verdict all 4
search points
objective 0
derive 0
lattice 2 0 1
equations
coordinates 1
point 0 0 5
basis 1 0 1
basis 0 1 2
dual 1 0 0
dual 0 1 0
constant 0 0 0
level 1 5 0 0 1 0
level 0 2 1 1 0 1
side 1 2 1
walk nodes 12 points 4
end
)";

TEST(ProofLattice, coordinate_rows_and_fixed_variables) {
  const Proof proof = readProof(ROW_PROOF);
  const Box box = boxOf(systemOf(readProgram(ROW_OPT)), proof.searches[0]);
  EXPECT_EQ(box.variables, (std::vector<std::size_t>{0, 1}));
  EXPECT_EQ(box.fixed, (Integers{0, 0, 1}));
  EXPECT_EQ(box.low, (Integers{0, 0, 7}));
  EXPECT_EQ(box.high, (Integers{3, 3, 8}));
  // What the fixed variables take is part of the row's value.
  EXPECT_EQ(testing::verdict(ROW_OPT, replaced(ROW_PROOF, "point 0 0 5", "point 0 0 0")),
            "refused: line 9: the point does not keep equation 1");
}

// 4 x1 + 8 x2 + x3 = 10: x3 is 2 modulo 4.
Box boxOfClass(const std::string& high) {
  Search search = readProof(PROOF).searches[0];
  search.point.values = {0, 0, 10};
  search.basis = {{0, {1, 0, -4}}, {0, {0, 1, -8}}};
  search.dual = {{0, {1, 0, 0}}, {0, {0, 1, 0}}};
  return boxOf(systemOf(readProgram("[ ] [ ] [ [ 4 8 1 ] ] [ 10 ] [ ] [ ] [ ] [ 0 0 0 ] [ 0 0 3 ] [ 9 9 " +
                                    high + " ]")),
               search);
}

TEST(ProofLattice, classes_move_the_ends) {
  const Box box = boxOfClass("13");
  EXPECT_EQ(box.low, (Integers{0, 0, 6}));
  EXPECT_EQ(box.high, (Integers{9, 9, 10}));
  EXPECT_FALSE(box.isEmpty);
  EXPECT_TRUE(boxOfClass("5").isEmpty);
}

// x1 + x2 = 2 and 2 x3 = 2: x3 has one value on the lattice.
Box boxOfValue(const std::string& low) {
  Search search = readProof(PROOF).searches[0];
  search.lattice.values[1] = 2;
  search.equations.values = {1, 2};
  search.point.values = {1, 1, 1};
  search.basis = {{0, {1, -1, 0}}};
  search.dual = {{0, {1, 0, 0}}};
  return boxOf(systemOf(readProgram("[ ] [ ] [ [ 1 1 0 ] [ 0 0 2 ] ] [ 2 2 ] [ ] [ ] [ ] [ 0 0 0 ] [ 0 0 " +
                                    low + " ] [ 9 9 9 ]")),
               search);
}

TEST(ProofLattice, a_column_without_a_choice) {
  const Box box = boxOfValue("0");
  EXPECT_EQ(box.low, (Integers{0, 0, 1}));
  EXPECT_EQ(box.high, (Integers{9, 9, 1}));
  EXPECT_FALSE(box.isEmpty);
  EXPECT_TRUE(boxOfValue("2").isEmpty);
}

}  // namespace
}  // namespace latbox::check::proof
