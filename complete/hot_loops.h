// The loops in which a search spends its time. Their sums may be formed in any order: the bounds of their
// errors hold for each, and so does a product that is not rounded before it is added.
#pragma once

#include <cstddef>
#include <vector>

#include "complete/gram_schmidt.h"

namespace latbox::complete {

// Vectors are padded with zeros to a multiple of so many entries.
inline constexpr std::size_t LANES = 8;

// to = from + a g; returns the sum of the sizes of the entries. Requires equal, padded sizes.
double addScaled(std::vector<double>& to, const std::vector<double>& from, const std::vector<double>& g,
                 double a);
Float addScaled(std::vector<Float>& to, const std::vector<Float>& from, const std::vector<Float>& g,
                const Float& a);

// The sum of a[i] b[i] for i from `begin` on. Requires equal sizes.
double partialProduct(const std::vector<double>& a, const std::vector<double>& b, std::size_t begin);
Float partialProduct(const std::vector<Float>& a, const std::vector<Float>& b, std::size_t begin);

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
