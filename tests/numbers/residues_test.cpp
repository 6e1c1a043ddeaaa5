#include "numbers/residues.h"

#include <gtest/gtest.h>

#include "numbers/number.h"

namespace latbox {
namespace {

template <class T>
class ResiduesOf : public ::testing::Test {};
using NumberTypes = ::testing::Types<dbl_t, QQ>;
TYPED_TEST_SUITE(ResiduesOf, NumberTypes);

constexpr std::uint64_t PRIME = MODULAR_PRIMES[0];

TYPED_TEST(ResiduesOf, EntriesStandWhereTheyStood) {
  std::vector<std::uint64_t> residues;
  ASSERT_TRUE(residuesOf(Vector<TypeParam>("[ 5 -1 0 ]"), PRIME, residues));
  ASSERT_EQ(residues.size(), 4u);
  EXPECT_EQ(residues[1], 5u);
  EXPECT_EQ(residues[2], PRIME - 1);
  EXPECT_EQ(residues[3], 0u);
  ModularMatrix image;
  ASSERT_TRUE(residuesOf(Matrix<TypeParam>("[[1 2 3][4 5 -6]]"), PRIME, image));
  EXPECT_EQ(image.M, 2);
  EXPECT_EQ(image.N, 3);
  EXPECT_EQ(image.at(1, 3), 3u);
  EXPECT_EQ(image.at(2, 1), 4u);
  EXPECT_EQ(image.at(2, 3), PRIME - 6);
}

TYPED_TEST(ResiduesOf, InfinitiesHaveNone) {
  std::vector<std::uint64_t> residues;
  ModularMatrix image;
  EXPECT_FALSE(residuesOf(Vector<TypeParam>("[ 5 inf ]"), PRIME, residues));
  EXPECT_FALSE(residuesOf(Matrix<TypeParam>("[[1 2][3 -inf]]"), PRIME, image));
}

// A fraction in floating point is the rounding of what it stands for.
TYPED_TEST(ResiduesOf, FractionsHaveOneInExactNumbersOnly) {
  constexpr bool exact = std::is_same_v<TypeParam, QQ>;
  std::vector<std::uint64_t> residues;
  ModularMatrix image;
  EXPECT_EQ(residuesOf(Vector<TypeParam>("[ 1/2 ]"), PRIME, residues), exact);
  EXPECT_EQ(residuesOf(Matrix<TypeParam>("[[1/2]]"), PRIME, image), exact);
  if (exact) {
    EXPECT_EQ(residues[1], (PRIME + 1) / 2);
    EXPECT_EQ(image.at(1, 1), (PRIME + 1) / 2);
  }
}

// For those who want one all the same, through the text: a tenth is a tenth in both types.
TYPED_TEST(ResiduesOf, FractionsWhereTheyAreAllowed) {
  std::vector<std::uint64_t> residues;
  ASSERT_TRUE(residuesOf(Vector<TypeParam>("[ 1/10 -1/2 3 ]"), PRIME, residues, Fractions::allowed));
  EXPECT_EQ(multiplyModulo(residues[1], 10, PRIME), 1u);
  EXPECT_EQ(residues[2], (PRIME - 1) / 2);
  EXPECT_EQ(residues[3], 3u);
  EXPECT_FALSE(residuesOf(Vector<TypeParam>("[ inf ]"), PRIME, residues, Fractions::allowed));
}

}  // namespace
}  // namespace latbox
