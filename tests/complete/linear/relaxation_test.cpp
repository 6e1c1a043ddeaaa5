#include "complete/linear/relaxation.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <optional>
#include <random>

namespace latbox::complete {
namespace {

constexpr double TOLERANCE = 1e-7;

using Matrix = std::vector<std::vector<double>>;

struct Instance {
  explicit Instance(unsigned seed) : random(seed) {
    level = random() % 3;
    coordinates = level + 1 + random() % 3;
    basis.assign(level + 2, std::vector<double>(coordinates));
    for (auto& row : basis)
      for (double& entry : row) entry = draw(-1.5, 1.5);
    box = {std::vector<double>(coordinates, -1), std::vector<double>(coordinates, 1)};
    partial.resize(coordinates);
    next();
  }

  double draw(double low, double high) {
    return low + (high - low) * static_cast<double>(random()) / static_cast<double>(std::mt19937::max());
  }

  // Another node of the level; sometimes a range has shrunk.
  void next() {
    for (double& entry : partial) entry = draw(-2, 2);
    if (random() % 4 == 0) box.high[random() % coordinates] *= draw(0, 1);
  }

  std::mt19937 random;
  std::size_t level = 0;
  std::size_t coordinates = 0;
  Matrix basis;
  RealBox box;
  std::vector<double> partial;
};

Relaxation relaxationOf(const Instance& problem, int sign) {
  DictionaryBuilder builder(problem.basis, problem.level + 1);
  for (std::size_t t = 0; t <= problem.level; ++t) EXPECT_TRUE(builder.addLevel());
  return Relaxation(problem.basis, builder.dictionary(sign), sign);
}

// The solution of a square system, if it has one.
std::optional<std::vector<double>> solved(Matrix a, std::vector<double> b) {
  const std::size_t n = b.size();
  for (std::size_t i = 0; i < n; ++i) {
    std::size_t best = i;
    for (std::size_t r = i; r < n; ++r)
      if (std::fabs(a[r][i]) > std::fabs(a[best][i])) best = r;
    if (std::fabs(a[best][i]) < 1e-9) return std::nullopt;
    std::swap(a[i], a[best]);
    std::swap(b[i], b[best]);
    for (std::size_t r = 0; r < n; ++r) {
      if (r == i) continue;
      const double factor = a[r][i] / a[i][i];
      for (std::size_t c = 0; c < n; ++c) a[r][c] -= factor * a[i][c];
      b[r] -= factor * b[i];
    }
  }
  for (std::size_t i = 0; i < n; ++i) b[i] /= a[i][i];
  return b;
}

// The greatest sign * lambda_level over all vertices; nothing: there is none. `margin` widens the box.
std::optional<double> greatestByVertices(const Instance& problem, int sign, double margin) {
  const std::size_t m = problem.level + 1;
  const std::size_t n = problem.coordinates;
  std::optional<double> greatest;
  for (std::size_t chosen = 0; chosen < std::size_t{1} << (2 * n); ++chosen) {
    Matrix a;
    std::vector<double> b;
    for (std::size_t end = 0; end < 2 * n; ++end) {
      if ((chosen >> end & 1) == 0) continue;
      const std::size_t j = end / 2;
      a.emplace_back();
      for (std::size_t i = 0; i < m; ++i) a.back().push_back(problem.basis[i][j]);
      b.push_back((end % 2 == 0 ? problem.box.low[j] - margin : problem.box.high[j] + margin) -
                  problem.partial[j]);
    }
    if (b.size() != m) continue;
    const auto lambda = solved(a, b);
    if (!lambda) continue;
    bool inside = true;
    for (std::size_t j = 0; j < n; ++j) {
      double u = problem.partial[j];
      for (std::size_t i = 0; i < m; ++i) u += (*lambda)[i] * problem.basis[i][j];
      inside = inside && u > problem.box.low[j] - margin - TOLERANCE &&
               u < problem.box.high[j] + margin + TOLERANCE;
    }
    if (inside) greatest = std::max(greatest.value_or(-INFINITY), sign * lambda->back());
  }
  return greatest;
}

// The greatest D (u - p) in the box.
double greatestOf(const SparseVector& d, const Instance& problem) {
  double sum = 0;
  for (std::size_t i = 0; i < d.entries.size(); ++i) {
    const std::size_t j = d.coordinates[i];
    sum +=
        d.entries[i] * ((d.entries[i] > 0 ? problem.box.high[j] : problem.box.low[j]) - problem.partial[j]);
  }
  return sum;
}

double product(const SparseVector& d, const std::vector<double>& row) {
  double sum = 0;
  for (std::size_t i = 0; i < d.entries.size(); ++i) sum += d.entries[i] * row[d.coordinates[i]];
  return sum;
}

class Runs {
 public:
  // Several nodes of one level, each from the dictionary of the one before.
  void check(unsigned seed, int sign) {
    Instance problem(seed);
    Relaxation relaxation = relaxationOf(problem, sign);
    for (int node = 0; node < 6; ++node, problem.next()) {
      const auto outcome = relaxation.run(problem.partial, problem.box, -INFINITY);
      for (std::size_t i = 0; i < problem.level; ++i)
        EXPECT_NEAR(product(relaxation.weights(), problem.basis[i]), 0, TOLERANCE);
      const double along = product(relaxation.weights(), problem.basis[problem.level]);
      const double value = greatestOf(relaxation.weights(), problem);
      if (outcome == Relaxation::Outcome::EMPTY) {
        ++empty;
        EXPECT_NEAR(along, 0, TOLERANCE);
        EXPECT_LT(value, 0);
        EXPECT_FALSE(greatestByVertices(problem, sign, -1e-6)) << seed;
      } else {
        ++bounded;
        ASSERT_EQ(outcome, Relaxation::Outcome::BOUND);
        EXPECT_NEAR(along, sign, TOLERANCE);
        const auto greatest = greatestByVertices(problem, sign, 1e-8);
        ASSERT_TRUE(greatest) << seed;
        EXPECT_NEAR(value, *greatest, 1e-5) << seed;
      }
    }
  }

  int empty = 0;
  int bounded = 0;
};

TEST(RelaxationTest, FindsTheOptimumThatTheVerticesHave) {
  Runs runs;
  for (unsigned seed = 0; seed < 100; ++seed)
    for (const int sign : {1, -1}) runs.check(seed, sign);
  EXPECT_GT(runs.empty, 200);
  EXPECT_GT(runs.bounded, 200);
}

TEST(RelaxationTest, WhatIsEnoughEndsItEarlyWithABound) {
  int early = 0;
  for (unsigned seed = 0; seed < 200; ++seed) {
    const Instance problem(seed);
    Relaxation whole = relaxationOf(problem, 1);
    Relaxation hasty = relaxationOf(problem, 1);
    if (whole.run(problem.partial, problem.box, -INFINITY) != Relaxation::Outcome::BOUND) continue;
    const double optimum = greatestOf(whole.weights(), problem);
    ASSERT_EQ(hasty.run(problem.partial, problem.box, optimum + 0.5), Relaxation::Outcome::BOUND);
    const double bound = greatestOf(hasty.weights(), problem);
    EXPECT_GE(bound, optimum - TOLERANCE);
    EXPECT_LE(bound, optimum + 0.5 + TOLERANCE);
    early += hasty.work() < whole.work() ? 1 : 0;
  }
  EXPECT_GT(early, 5);
}

TEST(RelaxationTest, NumbersThatAreNoneEndItToo) {
  const Instance problem(1);
  Relaxation relaxation = relaxationOf(problem, 1);
  std::vector<double> partial(problem.coordinates, std::numeric_limits<double>::quiet_NaN());
  relaxation.run(partial, problem.box, -INFINITY);
  partial.assign(problem.coordinates, INFINITY);
  relaxation.run(partial, problem.box, -INFINITY);
  // The dictionary is none of the node's: the next one is bounded as ever.
  Relaxation fresh = relaxationOf(problem, 1);
  EXPECT_EQ(relaxation.run(problem.partial, problem.box, -INFINITY),
            fresh.run(problem.partial, problem.box, -INFINITY));
  EXPECT_NEAR(greatestOf(relaxation.weights(), problem), greatestOf(fresh.weights(), problem), TOLERANCE);
}

}  // namespace
}  // namespace latbox::complete
