// Operations on all rows of a matrix of doubles: where the simplex method spends its time. Sums are formed in
// one order on every processor.
#pragma once

#include <cstddef>

namespace latbox::complete {

// A matrix by rows of `stride` entries each, a multiple of WIDTH, padded with zeros.
inline constexpr std::size_t WIDTH = 4;
struct Rows {
  double* entries;
  std::size_t count;
  std::size_t stride;
};

// Adds to every row but `pivot` its entry in `column`, which becomes 0 first, times the row `pivot`.
void eliminate(Rows rows, std::size_t pivot, std::size_t column);

// products[r] = the product of row r with `vector`, which has `stride` entries.
void multiply(Rows rows, const double* vector, double* products);

}  // namespace latbox::complete
