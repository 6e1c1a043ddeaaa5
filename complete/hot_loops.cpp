#include "complete/hot_loops.h"

#include <cstring>

// Which of the two is run is decided when the program starts. Sanitizers cannot follow that decision.
#if defined(__x86_64__) && defined(__GNUC__) && !defined(__clang__) && !defined(__SANITIZE_ADDRESS__) && \
    !defined(__SANITIZE_THREAD__)
#define WIDE_VECTORS __attribute__((target_clones("arch=haswell", "default")))
#else
#define WIDE_VECTORS
#endif

namespace latbox::complete {
namespace {

// Four sums side by side, and two of these, so that no addition waits for the one before. GCC's vectors
// become what the processor has; the mask takes the signs off.
using Vector = double __attribute__((vector_size(4 * sizeof(double))));
using Bits = long __attribute__((vector_size(4 * sizeof(long))));
constexpr std::size_t WIDTH = 4;

WIDE_VECTORS double addScaledDouble(double* __restrict to, const double* from, const double* g, double a,
                                    std::size_t size) {
  const Bits withoutSign = Bits{} + 0x7fffffffffffffff;
  Vector first{};
  Vector second{};
  for (std::size_t j = 0; j < size; j += LANES) {
    Vector f[2];
    Vector h[2];
    std::memcpy(f, from + j, sizeof f);
    std::memcpy(h, g + j, sizeof h);
    f[0] += a * h[0];
    f[1] += a * h[1];
    std::memcpy(to + j, f, sizeof f);
    first += reinterpret_cast<Vector>(reinterpret_cast<Bits>(f[0]) & withoutSign);
    second += reinterpret_cast<Vector>(reinterpret_cast<Bits>(f[1]) & withoutSign);
  }
  first += second;
  return (first[0] + first[1]) + (first[2] + first[3]);
}

WIDE_VECTORS double productDouble(const double* a, const double* b, std::size_t size) {
  Vector sums{};
  std::size_t i = 0;
  for (; i + WIDTH <= size; i += WIDTH) {
    Vector f;
    Vector h;
    std::memcpy(&f, a + i, sizeof f);
    std::memcpy(&h, b + i, sizeof h);
    sums += f * h;
  }
  double sum = (sums[0] + sums[1]) + (sums[2] + sums[3]);
  for (; i < size; ++i) sum += a[i] * b[i];
  return sum;
}

}  // namespace

double addScaled(std::vector<double>& to, const std::vector<double>& from, const std::vector<double>& g,
                 double a) {
  return addScaledDouble(to.data(), from.data(), g.data(), a, to.size());
}

Float addScaled(std::vector<Float>& to, const std::vector<Float>& from, const std::vector<Float>& g,
                const Float& a) {
  Float sum(0);
  for (std::size_t j = 0; j < to.size(); ++j) {
    to[j] = from[j] + a * g[j];
    sum += abs(to[j]);
  }
  return sum;
}

double partialProduct(const std::vector<double>& a, const std::vector<double>& b, std::size_t begin) {
  return productDouble(a.data() + begin, b.data() + begin, a.size() - begin);
}

Float partialProduct(const std::vector<Float>& a, const std::vector<Float>& b, std::size_t begin) {
  Float sum(0);
  for (std::size_t i = begin; i < a.size(); ++i) sum += a[i] * b[i];
  return sum;
}

}  // namespace latbox::complete
