#include "complete/hot_loops.h"

#include <cstring>

// Which of them is run is decided when the program starts. Sanitizers cannot follow that decision.
#if defined(__x86_64__) && defined(__GNUC__) && !defined(__clang__) && !defined(__SANITIZE_ADDRESS__) && \
    !defined(__SANITIZE_THREAD__)
#define WIDE_VECTORS __attribute__((target_clones("arch=skylake-avx512", "arch=haswell", "default")))
#else
#define WIDE_VECTORS
#endif

namespace latbox::complete {
namespace {

// GCC's vectors become what the processor has: one register or several. The mask takes the signs off.
using Floats = float __attribute__((vector_size(LANES * sizeof(float))));
using Bits = int __attribute__((vector_size(LANES * sizeof(int))));
constexpr std::size_t WIDTH = 8;
using Doubles = double __attribute__((vector_size(WIDTH * sizeof(double))));

WIDE_VECTORS float addScaledFloat(float* __restrict to, const float* from, const float* g, float a,
                                  std::size_t size) {
  const Bits withoutSign = Bits{} + 0x7fffffff;
  Floats sums{};
  for (std::size_t j = 0; j < size; j += LANES) {
    Floats f;
    Floats h;
    std::memcpy(&f, __builtin_assume_aligned(from + j, sizeof f), sizeof f);
    std::memcpy(&h, __builtin_assume_aligned(g + j, sizeof h), sizeof h);
    f += a * h;
    std::memcpy(__builtin_assume_aligned(to + j, sizeof f), &f, sizeof f);
    sums += reinterpret_cast<Floats>(reinterpret_cast<Bits>(f) & withoutSign);
  }
  // Halves upon halves: the shuffles of one register.
  const Bits half = {8, 9, 10, 11, 12, 13, 14, 15, 0, 1, 2, 3, 4, 5, 6, 7};
  const Bits quarter = {4, 5, 6, 7, 0, 1, 2, 3, 4, 5, 6, 7, 0, 1, 2, 3};
  sums += __builtin_shuffle(sums, half);
  sums += __builtin_shuffle(sums, quarter);
  return (sums[0] + sums[1]) + (sums[2] + sums[3]);
}

WIDE_VECTORS double productDouble(const double* a, const double* b, std::size_t size) {
  Doubles sums{};
  std::size_t i = 0;
  for (; i + WIDTH <= size; i += WIDTH) {
    Doubles f;
    Doubles h;
    std::memcpy(&f, a + i, sizeof f);
    std::memcpy(&h, b + i, sizeof h);
    sums += f * h;
  }
  double sum = 0;
  for (std::size_t lane = 0; lane < WIDTH; ++lane) sum += sums[lane];
  for (; i < size; ++i) sum += a[i] * b[i];
  return sum;
}

}  // namespace

float addScaled(Weights<double>& to, const Weights<double>& from, const Weights<double>& g, float a) {
  return addScaledFloat(to.data(), from.data(), g.data(), a, to.size());
}

Float addScaled(Weights<Float>& to, const Weights<Float>& from, const Weights<Float>& g, const Float& a) {
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
