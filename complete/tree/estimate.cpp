#include "complete/tree/estimate.h"

#include <cmath>
#include <limits>

#include "complete/tree/walk.h"

namespace latbox::complete {

double estimatedNodes(BoxLattice& lattice, unsigned probes) {
  const auto tables = cutTablesOf<double>(lattice, 53);
  if (!tables) return std::numeric_limits<double>::infinity();
  Walk<double> walk(*tables);
  std::mt19937_64 random(1);
  return walk.sampledNodes(probes, random);
}

namespace {

using Vector = std::vector<double>;

// The factor L of a symmetric matrix L L^T, in its place below the diagonal. False: it is not positive.
bool factorise(std::vector<Vector>& matrix) {
  for (std::size_t i = 0; i < matrix.size(); ++i)
    for (std::size_t j = 0; j <= i; ++j) {
      double sum = matrix[i][j];
      for (std::size_t k = 0; k < j; ++k) sum -= matrix[i][k] * matrix[j][k];
      if (i == j && !(sum > 0)) return false;
      matrix[i][j] = i == j ? std::sqrt(sum) : sum / matrix[j][j];
    }
  return true;
}

}  // namespace

double expectedPoints(const BoxLattice& lattice) {
  const std::size_t m = lattice.equations.size();
  double logarithm = 0;
  Vector variance;
  Vector middle;
  for (std::size_t j = 0; j < lattice.coordinates(); ++j) {
    const double values = Integer(lattice.high[j] - lattice.low[j]).get_d() + 1;
    logarithm += std::log(values);
    variance.push_back((values * values - 1) / 12);
    middle.push_back(Integer(lattice.high[j] + lattice.low[j]).get_d() / 2);
  }
  std::vector<Vector> covariance(m, Vector(m));
  Vector distance(m);
  for (std::size_t i = 0; i < m; ++i) {
    distance[i] = lattice.sides[i].get_d();
    for (std::size_t j = 0; j < lattice.coordinates(); ++j) {
      const double a = lattice.equations[i][j].get_d();
      distance[i] -= a * middle[j];
      for (std::size_t r = 0; a != 0 && r <= i; ++r)
        covariance[i][r] += a * lattice.equations[r][j].get_d() * variance[j];
    }
  }
  if (!factorise(covariance)) return -1;
  constexpr double TURN = 6.283185307179586;
  for (std::size_t i = 0; i < m; ++i) {
    double y = distance[i];
    for (std::size_t k = 0; k < i; ++k) y -= covariance[i][k] * distance[k];
    distance[i] = y / covariance[i][i];
    logarithm -= std::log(covariance[i][i]) + std::log(TURN) / 2 + distance[i] * distance[i] / 2;
  }
  return std::exp(logarithm);
}

}  // namespace latbox::complete
