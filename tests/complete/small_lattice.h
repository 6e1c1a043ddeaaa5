// Random lattices in boxes, small enough to list all their points.
#pragma once

#include <random>

#include "complete/lattice/elimination.h"
#include "complete/tree/cuts.h"
#include "support.h"

namespace latbox::complete::testing {

// A lattice that no program was needed for: whole coordinates, no rows, no equations.
class SmallLattice {
 public:
  // Of a rank and a number of coordinates, entries of the basis up to `size`, boxes up to `width` wide.
  SmallLattice(unsigned seed, long size, long width) : random_(seed) {
    const long k = draw(1, 4);
    const long n = k + draw(0, 3);
    do {
      lattice = {};
      for (long i = 0; i < k; ++i) {
        lattice.basis.emplace_back();
        for (long j = 0; j < n; ++j) lattice.basis.back().emplace_back(draw(-size, size));
      }
      for (long j = 0; j < n; ++j) {
        lattice.variables.push_back(static_cast<std::size_t>(j));
        lattice.point.emplace_back(draw(-2 * size, 2 * size));
        lattice.low.emplace_back(draw(-width, width));
        lattice.high.push_back(lattice.low.back() + draw(1, width));
      }
      lattice.fixed.resize(static_cast<std::size_t>(n));
    } while (!isIndependent());
  }

  long draw(long low, long high) {
    return low + static_cast<long>(random_() % static_cast<unsigned long>(high - low + 1));
  }

  // Bounds of the multipliers, and the point as the search has it. Nothing: it cannot be searched in double.
  std::optional<std::vector<double>> prepare() {
    const auto tables = cutTablesOf<double>(lattice, 53);
    if (!tables) return std::nullopt;
    return tables->reach;
  }

  // Whether points() takes no time to speak of.
  static bool isShort(const std::vector<double>& reach) {
    double candidates = 1;
    for (const double most : reach) candidates *= 2 * most + 3;
    return candidates < 20000;
  }

  // The multipliers of all points in the box; `reach` bounds them.
  std::vector<std::vector<double>> points(const std::vector<double>& reach) const {
    std::vector<std::vector<double>> found;
    std::vector<double> lambda(lattice.rank());
    tryAll(lattice.rank(), lattice.point, reach, lambda, found);
    return found;
  }

  BoxLattice lattice;

 private:
  bool isIndependent() const {
    const auto independent = independentRows(lattice.basis, IntegerVector(lattice.rank()));
    return independent->size() == lattice.rank();
  }

  void tryAll(std::size_t level, const IntegerVector& v, const std::vector<double>& reach,
              std::vector<double>& lambda, std::vector<std::vector<double>>& found) const {
    if (level == 0) {
      for (std::size_t j = 0; j < v.size(); ++j)
        if (v[j] < lattice.low[j] || v[j] > lattice.high[j]) return;
      found.push_back(lambda);
      return;
    }
    const std::size_t i = level - 1;
    const long most = static_cast<long>(reach[i]) + 1;
    for (long step = -most; step <= most; ++step) {
      lambda[i] = static_cast<double>(step);
      IntegerVector next = v;
      for (std::size_t j = 0; j < v.size(); ++j) next[j] += step * lattice.basis[i][j];
      tryAll(i, next, reach, lambda, found);
    }
  }

  std::mt19937 random_;
};

}  // namespace latbox::complete::testing
