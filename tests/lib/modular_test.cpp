#include "lib/modular.h"
#include "support/rows.h"

#include <gtest/gtest.h>

#include <random>
#include <vector>

#include "support/failure.h"

namespace latbox {
namespace {

__extension__ using Wide = unsigned __int128;

std::uint64_t slowMultiply(std::uint64_t a, std::uint64_t b, std::uint64_t p) {
  return static_cast<std::uint64_t>(static_cast<Wide>(a) * b % p);
}

std::uint64_t residueOf(long x, std::uint64_t p) {
  return x >= 0 ? static_cast<std::uint64_t>(x) % p : p - static_cast<std::uint64_t>(-x) % p;
}

using Rows = std::vector<std::vector<long>>;

ModularMatrix residues(const Rows& rows, std::uint64_t p) {
  ModularMatrix result(static_cast<long>(rows.size()), static_cast<long>(rows.front().size()));
  for (std::size_t i = 0; i < rows.size(); ++i)
    for (std::size_t j = 0; j < rows[i].size(); ++j)
      result.at(static_cast<long>(i) + 1, static_cast<long>(j) + 1) = residueOf(rows[i][j], p);
  return result;
}

Rows randomRows(std::size_t m, std::size_t n, std::mt19937& random) {
  std::uniform_int_distribution<long> entry(-3, 3);
  Rows rows(m, std::vector<long>(n));
  for (std::vector<long>& row : rows)
    for (long& x : row) x = entry(random);
  return rows;
}

// By expansion along the first row.
long determinantOf(const Rows& rows) {
  if (rows.size() == 1) return rows[0][0];
  long sum = 0;
  for (std::size_t j = 0; j < rows.size(); ++j) {
    Rows minor(rows.begin() + 1, rows.end());
    for (std::vector<long>& row : minor) row.erase(row.begin() + static_cast<long>(j));
    sum += (j % 2 == 0 ? 1 : -1) * rows[0][j] * determinantOf(minor);
  }
  return sum;
}

// By the determinant of the inner products.
bool areIndependent(const Rows& rows) {
  Rows products(rows.size(), std::vector<long>(rows.size(), 0));
  for (std::size_t i = 0; i < rows.size(); ++i)
    for (std::size_t k = 0; k < rows.size(); ++k)
      for (std::size_t j = 0; j < rows[i].size(); ++j) products[i][k] += rows[i][j] * rows[k][j];
  return determinantOf(products) != 0;
}

// Miller and Rabin's test with the first twelve primes as bases, which decides below 2^64.
bool isPrime(std::uint64_t n) {
  std::uint64_t odd = n - 1;
  int twos = 0;
  for (; odd % 2 == 0; odd /= 2) ++twos;
  for (const std::uint64_t base : {2, 3, 5, 7, 11, 13, 17, 19, 23, 29, 31, 37}) {
    std::uint64_t x = 1;
    for (int bit = 63; bit >= 0; --bit) {
      x = slowMultiply(x, x, n);
      if (odd >> bit & 1) x = slowMultiply(x, base, n);
    }
    bool witness = x != 1 && x != n - 1;
    for (int i = 1; i < twos && witness; ++i) {
      x = slowMultiply(x, x, n);
      witness = x != n - 1;
    }
    if (witness) return false;
  }
  return true;
}

TEST(Modular, TheModuliArePrime) {
  for (const std::uint64_t p : MODULAR_PRIMES) EXPECT_TRUE(isPrime(p)) << p;
  EXPECT_FALSE(isPrime((std::uint64_t{1} << 61) - 3));
}

TEST(Modular, MultiplicationAgreesWithDivision) {
  std::mt19937_64 random(1);
  for (const std::uint64_t p : MODULAR_PRIMES) {
    for (int i = 0; i < 100'000; ++i) {
      const std::uint64_t a = random() % p, b = random() % p;
      ASSERT_EQ(multiplyModulo(a, b, p), slowMultiply(a, b, p)) << a << ' ' << b;
    }
    for (const std::uint64_t a : {std::uint64_t{0}, std::uint64_t{1}, p - 1, p - 2})
      for (const std::uint64_t b : {std::uint64_t{0}, std::uint64_t{1}, p - 1, p - 2})
        EXPECT_EQ(multiplyModulo(a, b, p), slowMultiply(a, b, p));
  }
}

TEST(Modular, DifferencesPowersInverses) {
  const std::uint64_t p = MODULAR_PRIMES[0];
  EXPECT_EQ(subtractModulo(0, 1, p), p - 1);
  EXPECT_EQ(powerModulo(3, 0, p), 1u);
  EXPECT_EQ(powerModulo(2, 61, p), 1u);
  for (std::uint64_t a : {std::uint64_t{1}, std::uint64_t{2}, std::uint64_t{12345}, p - 1})
    EXPECT_EQ(multiplyModulo(a, inverseModulo(a, p), p), 1u);
}

TEST(Modular, AnyModulusAgreesWithThePrimesOfTheSystem) {
  std::mt19937_64 random(5);
  for (const std::uint64_t p : MODULAR_PRIMES)
    for (int i = 0; i < 1000; ++i) {
      const std::uint64_t a = random() % p, b = random() % p;
      ASSERT_EQ(multiplyModuloAny(a, b, p), multiplyModulo(a, b, p)) << a << ' ' << b;
      ASSERT_EQ(powerModuloAny(a, b, p), powerModulo(a, b, p)) << a << ' ' << b;
    }
}

TEST(Modular, PowersForAnyModulus) {
  EXPECT_EQ(multiplyModuloAny(~std::uint64_t{0} - 1, ~std::uint64_t{0} - 1, ~std::uint64_t{0}), 1u);
  EXPECT_EQ(powerModuloAny(7, 0, 12), 1u);
  EXPECT_EQ(powerModuloAny(2, 10, 1000), 24u);
  EXPECT_EQ(powerModuloAny(10, 18, std::uint64_t{1} << 62), 1'000'000'000'000'000'000u);
}

TEST(Modular, RowsAreSubtractedWithinTheRange) {
  const std::uint64_t p = MODULAR_PRIMES[0];
  std::vector<std::uint64_t> row = {9, 9, 1, 9}, other = {5, 5, 3, p - 1};
  subtractRowModulo(row.data(), 2, other.data(), 2, 3, p);
  EXPECT_EQ(row, (std::vector<std::uint64_t>{9, 9, p - 5, 11}));
}

TEST(Modular, DeterminantAgreesWithTheExpansion) {
  std::mt19937 random(2);
  for (int round = 0; round < 300; ++round) {
    const std::size_t n = 1 + static_cast<std::size_t>(round) % 6;
    const Rows square = randomRows(n, n, random);
    const long determinant = determinantOf(square);
    for (const std::uint64_t p : MODULAR_PRIMES)
      EXPECT_EQ(modularDeterminant(residues(square, p), p), residueOf(determinant, p));
  }
}

TEST(Modular, DeterminantsOfPermutationsAndFractions) {
  const std::uint64_t p = MODULAR_PRIMES[1];
  EXPECT_EQ(modularDeterminant(residues({{0, 1}, {1, 0}}, p), p), p - 1);
  ModularMatrix third = residues({{0, 0}, {0, 3}}, p);
  third.at(1, 1) = inverseModulo(3, p);
  EXPECT_EQ(modularDeterminant(third, p), 1u);
  EXPECT_EQ(modularDeterminant(ModularMatrix(0, 0), p), 1u);
  EXPECT_FAILURE(modularDeterminant(ModularMatrix(1, 2), p),
                 "Matrix: a non-quadratic matrix determinant is not defined");
}

TEST(ModularFactor, FindsThePlantedCoordinates) {
  std::mt19937 random(3);
  std::uniform_int_distribution<long> coordinate(-1000, 1000);
  const std::uint64_t p = MODULAR_PRIMES[2];
  for (int round = 0; round < 100; ++round) {
    const std::size_t rank = 1 + static_cast<std::size_t>(round) % 5;
    const std::size_t dim = rank + static_cast<std::size_t>(round) % 3;
    const Rows basis = randomRows(rank, dim, random);
    ModularFactor factor;
    const bool independent = areIndependent(basis);
    ASSERT_EQ(factor.factorise(residues(basis, p), p), independent);
    EXPECT_EQ(factor.empty(), !independent);
    if (!independent) continue;
    std::vector<long> planted(rank), v(dim, 0);
    for (long& x : planted) x = coordinate(random);
    for (std::size_t i = 0; i < rank; ++i)
      for (std::size_t j = 0; j < dim; ++j) v[j] += planted[i] * basis[i][j];
    std::vector<std::uint64_t> image(1, 0), x;
    for (const long entry : v) image.push_back(residueOf(entry, p));
    ASSERT_TRUE(factor.solve(image, x));
    for (std::size_t i = 0; i < rank; ++i) EXPECT_EQ(x[i + 1], residueOf(planted[i], p));
  }
}

TEST(ModularFactor, SaysNoToAVectorOutsideTheSpan) {
  const std::uint64_t p = MODULAR_PRIMES[0];
  ModularFactor factor;
  ASSERT_TRUE(factor.factorise(residues({{0, 2, 0}, {3, 0, 0}}, p), p));
  EXPECT_EQ(factor.prime(), p);
  std::vector<std::uint64_t> x;
  EXPECT_TRUE(factor.solve({0, 3, 4, 0}, x));
  EXPECT_EQ(x[1], 2u);
  EXPECT_EQ(x[2], 1u);
  EXPECT_FALSE(factor.solve({0, 3, 4, 1}, x));
}

}  // namespace
}  // namespace latbox
