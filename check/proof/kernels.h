// The two loops over whole vectors in which a walk spends its time, for double and for mpz_class.
//
// All doubles are whole and all sums stay below 2^53, as walk.cpp shows before it uses them: then every
// step is exact, and in whatever order a processor adds, the result is the same.
#pragma once

#include <gmpxx.h>

#include <cmath>
#include <new>
#include <vector>

namespace latbox::check::proof {

// Vectors have a multiple of so many numbers, the last ones 0, and begin where so many doubles do.
inline constexpr std::size_t BLOCK = 8;

template <class T>
struct BlockAllocator {
  using value_type = T;
  static constexpr std::align_val_t ALIGNMENT{BLOCK * sizeof(double)};
  T* allocate(std::size_t n) { return static_cast<T*>(::operator new(n * sizeof(T), ALIGNMENT)); }
  void deallocate(T* p, std::size_t) { ::operator delete(p, ALIGNMENT); }
  bool operator==(const BlockAllocator&) const { return true; }
};
template <class Number>
using Array = std::vector<Number, BlockAllocator<Number>>;

// out = in + a g; returns the sum of the sizes of out.
double addMultiple(double* out, const double* in, const double* g, double a, std::size_t size);
mpz_class addMultiple(mpz_class* out, const mpz_class* in, const mpz_class* g, const mpz_class& a,
                      std::size_t size);
double product(const double* a, const double* b, std::size_t size);
mpz_class product(const mpz_class* a, const mpz_class* b, std::size_t size);

// Requires: b > 0. Doubles: |a| + b < 2^53. Then a / b, rounded, is not m where it is below a whole m: it is
// so by r / b with a whole r >= 1, and |m| b <= |a| + r < 2^53 makes that more than |m| 2^-53.
inline double floorQuotient(double a, double b) {
  return std::floor(a / b);
}
inline mpz_class floorQuotient(const mpz_class& a, const mpz_class& b) {
  mpz_class quotient;
  mpz_fdiv_q(quotient.get_mpz_t(), a.get_mpz_t(), b.get_mpz_t());
  return quotient;
}

}  // namespace latbox::check::proof
