#include "complete/linear/row_operations.h"

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

// GCC's vectors become what the processor has.
using Vector = double __attribute__((vector_size(WIDTH * sizeof(double))));

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

void eliminate(Rows rows, std::size_t pivot, std::size_t column) {
  eliminateRows(rows.entries, rows.count, rows.stride, pivot, column);
}

void multiply(Rows rows, const double* vector, double* products) {
  multiplyRows(rows.entries, rows.count, rows.stride, vector, products);
}

}  // namespace latbox::complete
