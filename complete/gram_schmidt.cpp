#include "complete/gram_schmidt.h"

namespace latbox::complete {
namespace {

FloatVector zeros(std::size_t size, unsigned long bits) {
  return FloatVector(size, Float(0, bits));
}

Float quotient(const Integer& a, const Integer& b, unsigned long bits) {
  Float value(a, bits);
  value /= Float(b, bits);
  return value;
}

// A row in the coordinates of the cube.
FloatVector scaled(const BoxLattice& lattice, const IntegerVector& row, bool isPoint, unsigned long bits) {
  FloatVector u;
  for (std::size_t j = 0; j < row.size(); ++j) {
    Integer twice = 2 * row[j];
    if (isPoint) twice -= lattice.low[j] + lattice.high[j];
    u.push_back(quotient(twice, Integer(lattice.high[j] - lattice.low[j]), bits));
  }
  return u;
}

Float product(const FloatVector& a, const FloatVector& b, unsigned long bits) {
  Float sum(0, bits);
  for (std::size_t j = 0; j < a.size(); ++j) sum += a[j] * b[j];
  return sum;
}

void subtract(FloatVector& a, const Float& factor, const FloatVector& b) {
  for (std::size_t j = 0; j < a.size(); ++j) a[j] -= factor * b[j];
}

}  // namespace

GramSchmidt gramSchmidtOf(const BoxLattice& lattice, unsigned long bits) {
  const std::size_t k = lattice.rank();
  GramSchmidt gso;
  for (std::size_t i = 0; i <= k; ++i) {
    gso.vectors.push_back(scaled(lattice, i < k ? lattice.basis[i] : lattice.point, i == k, bits));
    gso.mu.push_back(zeros(i, bits));
    for (std::size_t j = 0; j < i; ++j) {
      gso.mu[i][j] = product(gso.vectors[i], gso.vectors[j], bits) / gso.norms[j];
      subtract(gso.vectors[i], gso.mu[i][j], gso.vectors[j]);
    }
    gso.norms.push_back(product(gso.vectors[i], gso.vectors[i], bits));
    if (i < k && gso.norms[i] <= 0) gso.norms[i] = 1;
  }
  gso.dual.resize(k);
  for (std::size_t i = k; i-- > 0;) {
    gso.dual[i] = zeros(lattice.coordinates(), bits);
    subtract(gso.dual[i], Float(-1 / gso.norms[i]), gso.vectors[i]);
    for (std::size_t t = i + 1; t < k; ++t) subtract(gso.dual[i], gso.mu[t][i], gso.dual[t]);
  }
  return gso;
}

void centre(BoxLattice& lattice, const GramSchmidt& gso) {
  FloatVector parts = gso.mu.back();
  for (std::size_t t = lattice.rank(); t-- > 0;) {
    const Float rounded = floor(Float(parts[t] + 0.5));
    const Integer steps(rounded);
    if (steps == 0) continue;
    for (std::size_t j = 0; j < lattice.coordinates(); ++j) lattice.point[j] -= steps * lattice.basis[t][j];
    for (std::size_t j = 0; j < t; ++j) parts[j] -= rounded * gso.mu[t][j];
  }
}

}  // namespace latbox::complete
