#include "complete/tree/pass_tables.h"

#include <cmath>
#include <numeric>

namespace latbox::complete {
namespace {

using Vector = std::vector<double>;

// Of what cuts are compared with, against float and double alike.
constexpr double MARGIN = 1e-3;

// A row in the coordinates of the cube; the point as what it is beside the centre.
Vector scaled(const BoxLattice& lattice, const IntegerVector& row, bool isPoint) {
  Vector u;
  for (std::size_t j = 0; j < row.size(); ++j) {
    const double width = Integer(lattice.high[j] - lattice.low[j]).get_d();
    double twice = 2 * row[j].get_d();
    if (isPoint) twice -= Integer(lattice.low[j] + lattice.high[j]).get_d();
    u.push_back(twice / width);
  }
  return u;
}

double product(const Vector& a, const Vector& b) {
  return std::inner_product(a.begin(), a.end(), b.begin(), 0.0);
}

void subtract(Vector& a, double factor, const Vector& b) {
  for (std::size_t j = 0; j < a.size(); ++j) a[j] -= factor * b[j];
}

// Takes the parts along earlier vectors off, and tells them: twice over, since rounding leaves some.
Vector takeParts(Vector& vector, const std::vector<Vector>& vectors, const Vector& norms) {
  Vector parts(vectors.size());
  for (int round = 0; round < 2; ++round)
    for (std::size_t j = 0; j < vectors.size(); ++j) {
      const double part = product(vector, vectors[j]) / norms[j];
      parts[j] += part;
      subtract(vector, part, vectors[j]);
    }
  return parts;
}

// g K_i = mu_i (g g) for i above the level; below it is 0 up to rounding.
CutTables<double>::Level levelOf(const Vector& g, double norm) {
  CutTables<double>::Level level;
  level.g = g;
  level.weights.resize(paddedTo(g.size(), LANES));
  double size = 0;
  for (std::size_t j = 0; j < g.size(); ++j) {
    level.weights[j] = static_cast<float>(g[j]);
    size += std::fabs(g[j]);
  }
  level.inverseNorm = norm > MARGIN ? 1 / norm : 0;
  level.most = level.least = size;
  level.slip = MARGIN * size;
  return level;
}

}  // namespace

PassTables passTablesOf(const BoxLattice& lattice) {
  const std::size_t k = lattice.rank();
  PassTables result;
  Descent& descent = result.descent;
  std::vector<Vector> vectors;
  for (std::size_t i = 0; i <= k; ++i) {
    Vector vector = scaled(lattice, i < k ? lattice.basis[i] : lattice.point, i == k);
    descent.mu.push_back(takeParts(vector, vectors, descent.norms));
    const double norm = product(vector, vector);
    result.tables.levels.push_back(levelOf(vector, norm));
    if (i == k) {
      descent.root = norm;
      result.tables.levels[k].constant = norm;
    } else {
      descent.norms.push_back(norm);
      vectors.push_back(std::move(vector));
    }
  }
  descent.coordinates = static_cast<double>(lattice.coordinates());
  for (std::size_t t = 0; t <= k; ++t) {
    auto& level = result.tables.levels[t];
    level.products.resize(k + PRODUCT_LANES);
    if (t == k) continue;
    level.constant = descent.mu[k][t] * descent.norms[t];
    level.products[t] = descent.norms[t];
    for (std::size_t i = t + 1; i < k; ++i) level.products[i] = descent.mu[i][t] * descent.norms[t];
  }
  result.tables.cap = descent.coordinates * (1 + MARGIN);
  result.tables.margin = MARGIN * descent.coordinates;
  return result;
}

}  // namespace latbox::complete
