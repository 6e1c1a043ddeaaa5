#include "check/numbers/row.h"

#include <gtest/gtest.h>

#include <limits>
#include <random>

namespace latbox::check {
namespace {

constexpr long MOST = std::numeric_limits<long>::max();
constexpr long LEAST = std::numeric_limits<long>::min();

using Values = std::vector<Rational>;

Rational product(const Values& row, const Values& x) {
  return Row(row).times(Scaled(x));
}

// The sum as GMP makes it, term by term.
mpq_class expected(const Values& row, const Values& x) {
  mpq_class sum;
  for (std::size_t j = 0; j < row.size(); ++j) sum += row[j].exact() * x[j].exact();
  return sum;
}

TEST(Scaled, keeps_values_and_their_common_denominator) {
  const Scaled whole({3, -4});
  EXPECT_TRUE(whole.isWhole());
  EXPECT_TRUE(whole.fit());
  EXPECT_EQ(whole.whole(1), -4);
  const Scaled parts({Rational(1) / 6, Rational(-3) / 4, 2});
  EXPECT_FALSE(parts.isWhole());
  EXPECT_EQ(parts.denominator(), 12);
  EXPECT_EQ(parts.words(), (std::vector<long>{2, -9, 24}));
  EXPECT_EQ(parts[1], Rational(-3) / 4);
  const Scaled large({Rational(1) / 2, MOST});
  EXPECT_FALSE(large.fit());
  EXPECT_EQ(large.whole(0), 1);
  EXPECT_EQ(large.whole(1), mpz_class(MOST) * 2);
}

TEST(Row, without_elements) {
  EXPECT_EQ(product({}, {}), 0);
}

TEST(Row, words_at_their_end) {
  EXPECT_EQ(product({1, 1, 1}, {MOST, 1, -1}), MOST);
  EXPECT_EQ(product({1, 1}, {MOST, 1}).exact(), mpz_class(MOST) + 1);
  EXPECT_EQ(product({1, 1}, {LEAST, -1}).exact(), mpz_class(LEAST) - 1);
  EXPECT_EQ(product({-1}, {LEAST}).exact(), -mpz_class(LEAST));
  EXPECT_EQ(product({MOST}, {MOST}).exact(), mpz_class(MOST) * MOST);
  // The steps overflow and the sum does not.
  EXPECT_EQ(product({MOST, MOST, -MOST}, {1, 1, 2}), 0);
  EXPECT_EQ(product({1L << 40, -(1L << 40), 5}, {1L << 40, 1L << 40, 1}), 5);
}

TEST(Row, random_products_agree_with_gmp) {
  std::mt19937_64 draw(1);
  const std::vector<long> sizes = {1, 3, 1000, 1L << 31, 1L << 40, MOST};
  const auto number = [&](long size, bool fraction) {
    const Rational value =
        static_cast<long>(draw() % static_cast<unsigned long>(size)) * (draw() % 2 == 0 ? 1 : -1);
    const Rational longer = draw() % 50 == 0 ? value * MOST : value;
    return fraction ? longer / static_cast<long>(1 + draw() % 12) : longer;
  };
  for (int round = 0; round < 3000; ++round) {
    const std::size_t n = draw() % 8;
    const long size = sizes[draw() % sizes.size()];
    const bool fractions = draw() % 2 == 0;
    Values row;
    Values x;
    for (std::size_t j = 0; j < n; ++j) {
      row.push_back(draw() % 3 == 0 ? Rational(0) : number(size, fractions));
      x.push_back(number(sizes[draw() % sizes.size()], draw() % 2 == 0));
    }
    ASSERT_EQ(product(row, x).exact(), expected(row, x)) << round;
  }
}

}  // namespace
}  // namespace latbox::check
