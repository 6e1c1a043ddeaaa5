#include "complete/proof/lattice.h"

#include "complete/lattice/elimination.h"
#include "small_systems.h"

namespace latbox::complete::proof {
namespace {

using namespace testing;

// What docs/proof.md requires of a lattice.
void expectWell(const ProofLattice& lattice) {
  const BoxLattice& box = lattice.box;
  for (std::size_t i = 0; i < box.equations.size(); ++i) {
    EXPECT_EQ(innerProduct(box.equations[i], box.point), box.sides[i]);
    for (const IntegerVector& row : box.basis) EXPECT_EQ(innerProduct(box.equations[i], row), 0);
  }
  for (std::size_t i = 0; i < lattice.rank(); ++i)
    for (std::size_t j = 0; j < lattice.rank(); ++j)
      EXPECT_EQ(innerProduct(lattice.dual[i], box.basis[j]), i == j ? 1 : 0);
  for (const IntegerVector& vector : lattice.orthogonal)
    for (const IntegerVector& row : box.basis) EXPECT_EQ(innerProduct(vector, row), 0);
  EXPECT_EQ(lattice.orthogonal.size() + lattice.rank(), lattice.columns());
  for (std::size_t c = 0; c < lattice.columns(); ++c) EXPECT_GT(lattice.width(c), 0);
}

TEST(LatticeOf, EquationsAndCoordinates) {
  Derivation derivation(madeOf({rangeOf(0, 9), rangeOf(0, 9), rangeOf(0, 9), rangeOf(0, 9)},
                               {rowOf({4, 5, 7, 2}, 40, 40), rowOf({1, -1, 1, 3}, 2, 9),
                                rowOf({1, 1, 1, 1}, -1, 60), rowOf({-2, 2, -2, -6}, -14, {})}));
  const auto lattice = latticeOf(derivation);
  ASSERT_TRUE(lattice);
  expectWell(*lattice);
  // The third row is kept by the box; the last one is the second, and narrows it.
  EXPECT_EQ(lattice->coordinates, std::vector<std::size_t>{1});
  EXPECT_EQ(endsOf(derivation.ranges()[1]), std::make_pair(Integer(2), Integer(7)));
}

TEST(LatticeOf, ColumnsAreInTheirClasses) {
  // x3 is even: 3 x3 = 20 - 2 x1 - 4 x2.
  Derivation derivation(madeOf({rangeOf(0, 9), rangeOf(0, 9), rangeOf(0, 5)}, {rowOf({2, 4, 3}, 20, 20)}));
  const auto lattice = latticeOf(derivation);
  ASSERT_TRUE(lattice);
  expectWell(*lattice);
  EXPECT_EQ(lattice->box.high[2], 4);
}

TEST(LatticeOf, WhatTheEquationsFixIsNoColumn) {
  // x1 - x2 = 1 and x1 + x2 = 5; x3 = 1 modulo 7 within 0..6.
  Derivation derivation(
      madeOf({rangeOf(0, 90), rangeOf(0, 90), rangeOf(0, 6), rangeOf(-9, 9), rangeOf(0, 9)},
             {rowOf({1, -1, 0, 0, 0}, 1, 1), rowOf({1, 1, 0, 0, 0}, 5, 5), rowOf({0, 0, 1, 7, 14}, 8, 8)}));
  const auto lattice = latticeOf(derivation);
  ASSERT_TRUE(lattice);
  expectWell(*lattice);
  EXPECT_EQ(lattice->box.variables, (std::vector<std::size_t>{3, 4}));
  EXPECT_EQ(lattice->box.fixed[0], 3);
  EXPECT_EQ(lattice->box.fixed[2], 1);
}

TEST(LatticeOf, Contradictions) {
  const std::vector<Range> open(3);
  const std::vector<Row> systems[] = {
      // Over the rationals; of divisibility; by a combination of three rows.
      {rowOf({1, 1, 2}, 1, 1), rowOf({2, 3, 1}, 5, 5), rowOf({4, 5, 5}, 8, 8)},
      {rowOf({2, 0, 1}, 1, 1), rowOf({0, 2, 1}, 2, 2)},
      {rowOf({1, 1, 0}, {}, 3), rowOf({-1, 0, 1}, {}, 4), rowOf({0, 1, 1}, 8, {})}};
  for (const std::vector<Row>& rows : systems) {
    Derivation derivation(madeOf(open, rows));
    EXPECT_FALSE(latticeOf(derivation));
    EXPECT_TRUE(derivation.isContradiction());
  }
}

TEST(LatticeOf, RowsCloseVariables) {
  Derivation derivation(
      madeOf({{Integer(0), {}}, {}}, {rowOf({1, 1}, {}, 7), rowOf({1, -2}, {}, 3), rowOf({-1, -5}, {}, 20)}));
  const auto lattice = latticeOf(derivation);
  ASSERT_TRUE(lattice);
  expectWell(*lattice);
  EXPECT_EQ(endsOf(derivation.box()[0]), std::make_pair(Integer(0), Integer(5)));
}

}  // namespace
}  // namespace latbox::complete::proof
