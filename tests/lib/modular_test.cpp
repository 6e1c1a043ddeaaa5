#include "lib/modular.h"

#include <gtest/gtest.h>

#include <random>

#include "numbers/elimination.h"
#include "numbers/number.h"
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

ModularMatrix residues(const Matrix<QQ>& m, std::uint64_t p) {
  ModularMatrix result(m.M, m.N);
  for (long i = 1; i <= m.M; ++i)
    for (long j = 1; j <= m.N; ++j) {
      unsigned long long residue = 0;
      EXPECT_TRUE(modulo(m.data[i].data[j], p, residue));
      result.at(i, j) = residue;
    }
  return result;
}

Matrix<QQ> randomMatrix(long m, long n, std::mt19937& random) {
  std::uniform_int_distribution<long> entry(-3, 3);
  Matrix<QQ> result(m, n);
  for (long i = 1; i <= m; ++i)
    for (long j = 1; j <= n; ++j) result[i][j] = QQ(entry(random));
  return result;
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

TEST(Modular, DeterminantAgreesWithExactElimination) {
  std::mt19937 random(2);
  for (int round = 0; round < 300; ++round) {
    const long n = 1 + round % 6;
    const Matrix<QQ> square = randomMatrix(n, n, random);
    const long determinant = static_cast<long>(toDouble(square.determinant()));
    for (const std::uint64_t p : MODULAR_PRIMES)
      EXPECT_EQ(modularDeterminant(residues(square, p), p), residueOf(determinant, p));
  }
}

TEST(Modular, DeterminantsOfPermutationsAndFractions) {
  const std::uint64_t p = MODULAR_PRIMES[1];
  EXPECT_EQ(modularDeterminant(residues(Matrix<QQ>("[[0 1][1 0]]"), p), p), p - 1);
  EXPECT_EQ(modularDeterminant(residues(Matrix<QQ>("[[1/3 0][0 3]]"), p), p), 1u);
  EXPECT_EQ(modularDeterminant(ModularMatrix(0, 0), p), 1u);
  EXPECT_FAILURE(modularDeterminant(ModularMatrix(1, 2), p),
                 "Matrix: a non-quadratic matrix determinant is not defined");
}

TEST(ModularFactor, FindsThePlantedCoordinates) {
  std::mt19937 random(3);
  std::uniform_int_distribution<long> coordinate(-1000, 1000);
  const std::uint64_t p = MODULAR_PRIMES[2];
  for (int round = 0; round < 100; ++round) {
    const long rank = 1 + round % 5, dim = rank + round % 3;
    const Matrix<QQ> basis = randomMatrix(rank, dim, random);
    ModularFactor factor;
    const bool independent = rankOf(basis) == rank;
    ASSERT_EQ(factor.factorise(residues(basis, p), p), independent);
    EXPECT_EQ(factor.empty(), !independent);
    if (!independent) continue;
    Vector<QQ> planted(rank);
    for (long i = 1; i <= rank; ++i) planted[i] = QQ(coordinate(random));
    const Vector<QQ> v = planted * basis;
    std::vector<std::uint64_t> image(static_cast<std::size_t>(dim) + 1), x;
    for (long j = 1; j <= dim; ++j)
      image[static_cast<std::size_t>(j)] = residueOf(static_cast<long>(toDouble(v[j])), p);
    ASSERT_TRUE(factor.solve(image, x));
    for (long i = 1; i <= rank; ++i)
      EXPECT_EQ(x[static_cast<std::size_t>(i)], residueOf(static_cast<long>(toDouble(planted[i])), p));
  }
}

TEST(ModularFactor, SaysNoToAVectorOutsideTheSpan) {
  const std::uint64_t p = MODULAR_PRIMES[0];
  ModularFactor factor;
  ASSERT_TRUE(factor.factorise(residues(Matrix<QQ>("[[0 2 0][3 0 0]]"), p), p));
  EXPECT_EQ(factor.prime(), p);
  std::vector<std::uint64_t> x;
  EXPECT_TRUE(factor.solve({0, 3, 4, 0}, x));
  EXPECT_EQ(x[1], 2u);
  EXPECT_EQ(x[2], 1u);
  EXPECT_FALSE(factor.solve({0, 3, 4, 1}, x));
}

}  // namespace
}  // namespace latbox
