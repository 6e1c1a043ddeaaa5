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

WIDE_VECTORS void eliminateRows(double* entries, std::size_t count, std::size_t stride, std::size_t pivot,
                                std::size_t column) {
  const double* from = entries + pivot * stride;
  for (std::size_t r = 0; r < count; ++r) {
    double* row = entries + r * stride;
    const double factor = row[column];
    if (r == pivot || factor == 0) continue;
    row[column] = 0;
    for (std::size_t j = 0; j < stride; j += WIDTH) {
      Vector to;
      Vector add;
      std::memcpy(&to, row + j, sizeof to);
      std::memcpy(&add, from + j, sizeof add);
      to += factor * add;
      std::memcpy(row + j, &to, sizeof to);
    }
  }
}

WIDE_VECTORS void multiplyRows(const double* entries, std::size_t count, std::size_t stride,
                               const double* vector, double* products) {
  for (std::size_t r = 0; r < count; ++r) {
    Vector sums{};
    for (std::size_t j = 0; j < stride; j += WIDTH) {
      Vector f;
      Vector h;
      std::memcpy(&f, entries + r * stride + j, sizeof f);
      std::memcpy(&h, vector + j, sizeof h);
      sums += f * h;
    }
    products[r] = (sums[0] + sums[1]) + (sums[2] + sums[3]);
  }
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

void eliminate(Rows rows, std::size_t pivot, std::size_t column) {
  eliminateRows(rows.entries, rows.count, rows.stride, pivot, column);
}

void multiply(Rows rows, const double* vector, double* products) {
  multiplyRows(rows.entries, rows.count, rows.stride, vector, products);
}

}  // namespace latbox::complete
