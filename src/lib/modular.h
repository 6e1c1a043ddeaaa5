// Linear algebra modulo primes of 61 bits: exact decisions about determinants and coordinates at the speed
// of machine words. A non-zero residue proves a value non-zero; zero modulo several primes decides only
// with the odds of the primes, so callers confirm a find by exact arithmetic.
#pragma once

#include <array>
#include <cstdint>
#include <vector>

namespace latbox {

// The three largest primes below 2^61; each is 2^61 - c with small c, which makes the reduction two folds.
inline constexpr std::array<std::uint64_t, 3> MODULAR_PRIMES = {
    (std::uint64_t{1} << 61) - 1, (std::uint64_t{1} << 61) - 31, (std::uint64_t{1} << 61) - 45};

// Arithmetic on residues 0..p-1 for p = 2^61 - c, c < 2^20.
inline std::uint64_t subtractModulo(std::uint64_t a, std::uint64_t b, std::uint64_t p) {
  return a >= b ? a - b : a + p - b;
}
inline std::uint64_t multiplyModulo(std::uint64_t a, std::uint64_t b, std::uint64_t p) {
  constexpr std::uint64_t MASK = (std::uint64_t{1} << 61) - 1;
  const std::uint64_t c = (std::uint64_t{1} << 61) - p;
  __extension__ using Wide = unsigned __int128;
  const Wide product = static_cast<Wide>(a) * b;
  const Wide folded = static_cast<Wide>(static_cast<std::uint64_t>(product >> 61)) * c +
                      (static_cast<std::uint64_t>(product) & MASK);
  const std::uint64_t once =
      static_cast<std::uint64_t>(folded >> 61) * c + (static_cast<std::uint64_t>(folded) & MASK);
  return once >= p ? once - p : once;
}
// The same for every modulus, by a division.
inline std::uint64_t multiplyModuloAny(std::uint64_t a, std::uint64_t b, std::uint64_t n) {
  __extension__ using Wide = unsigned __int128;
  return static_cast<std::uint64_t>(static_cast<Wide>(a) * b % n);
}

// base^exponent by squaring, where `multiply` multiplies two residues.
template <class Multiply>
std::uint64_t powerBy(std::uint64_t base, std::uint64_t exponent, Multiply multiply) {
  std::uint64_t result = 1;
  for (; exponent != 0; exponent >>= 1, base = multiply(base, base))
    if (exponent & 1) result = multiply(result, base);
  return result;
}
// p = 2^61 - c, as above.
std::uint64_t powerModulo(std::uint64_t base, std::uint64_t exponent, std::uint64_t p);
// Any modulus n > 1; base < n.
std::uint64_t powerModuloAny(std::uint64_t base, std::uint64_t exponent, std::uint64_t n);
// a != 0.
std::uint64_t inverseModulo(std::uint64_t a, std::uint64_t p);

// row[from..last] -= q * other[from..last], on residues.
void subtractRowModulo(std::uint64_t* row, std::uint64_t q, const std::uint64_t* other, long from, long last,
                       std::uint64_t p);

// A dense matrix of residues, rows and columns numbered from 1 like everything else.
class ModularMatrix {
 public:
  long M = 0;
  long N = 0;

  ModularMatrix() = default;
  ModularMatrix(long rows, long columns)
      : M(rows), N(columns), entries_(static_cast<std::size_t>(rows * columns), 0) {}

  std::uint64_t& at(long i, long j) { return entries_[index(i, j)]; }
  std::uint64_t at(long i, long j) const { return entries_[index(i, j)]; }
  std::uint64_t* row(long i) { return entries_.data() + index(i, 1) - 1; }
  const std::uint64_t* row(long i) const { return entries_.data() + index(i, 1) - 1; }

 private:
  std::size_t index(long i, long j) const { return static_cast<std::size_t>((i - 1) * N + (j - 1)); }
  std::vector<std::uint64_t> entries_;
};

// The determinant modulo p, 1 for the 0 x 0 matrix; the matrix is a working copy. Fails with "Matrix: a
// non-quadratic matrix determinant is not defined".
std::uint64_t modularDeterminant(ModularMatrix work, std::uint64_t p);

// A factorisation of a basis (rank x dim, independent rows) modulo p, kept to find the coordinates of many
// vectors at rank * dim multiplications each.
class ModularFactor {
 public:
  // False, and empty(), if the rows are dependent modulo p.
  bool factorise(const ModularMatrix& basis, std::uint64_t p);
  void clear() {
    rank_ = 0;
    dim_ = 0;
    p_ = 0;
  }
  bool empty() const { return p_ == 0; }
  std::uint64_t prime() const { return p_; }

  // Coordinates x[1..rank] of `vector`[1..dim] with x * basis == vector modulo p; both hold element 0 unused.
  // False if there are none modulo p, which proves that there are none at all. Allocates nothing once the
  // vectors have their size.
  bool solve(const std::vector<std::uint64_t>& vector, std::vector<std::uint64_t>& x);

 private:
  long rank_ = 0;
  long dim_ = 0;
  std::uint64_t p_ = 0;
  ModularMatrix factors_;                // of the transposed basis, dim x rank: unit lower and upper triangle
  std::vector<long> order_;              // row order of the transposed basis, from 1
  std::vector<std::uint64_t> inverses_;  // of the pivots, from 1
  std::vector<std::uint64_t> permuted_;  // scratch
};

}  // namespace latbox
