#include "complete/proof/walk_numbers.h"

#include <cmath>

namespace latbox::complete::proof {
namespace {

#if defined(__x86_64__)
[[gnu::target_clones("avx512f", "avx2", "default")]]
#endif
double
addScaled(double* next, const double* before, const double* vector, double factor, std::size_t size) {
  double sums[WIDTH] = {};
  for (std::size_t c = 0; c < size; c += WIDTH)
    for (std::size_t i = 0; i < WIDTH; ++i) {
      next[c + i] = before[c + i] + factor * vector[c + i];
      sums[i] += std::fabs(next[c + i]);
    }
  double sum = 0;
  for (const double part : sums) sum += part;
  return sum;
}

}  // namespace

std::int64_t addScaled(std::vector<double>& next, const std::vector<double>& before,
                       const std::vector<double>& vector, std::int64_t factor) {
  return static_cast<std::int64_t>(
      addScaled(next.data(), before.data(), vector.data(), static_cast<double>(factor), next.size()));
}

Integer addScaled(IntegerVector& next, const IntegerVector& before, const IntegerVector& vector,
                  const Integer& factor) {
  Integer sum = 0;
  for (std::size_t c = 0; c < next.size(); ++c) {
    next[c] = before[c];
    mpz_addmul(next[c].get_mpz_t(), factor.get_mpz_t(), vector[c].get_mpz_t());
    sum += abs(next[c]);
  }
  return sum;
}

}  // namespace latbox::complete::proof
