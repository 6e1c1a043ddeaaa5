// The best a single level's cut can do with the help of the equations.
//
// Every point keeps the equations s_i u = c_i, s_i and c_i whole numbers. So for any multipliers y
//
//     g u = (g + sum y_i s_i) u - sum y_i c_i <= sum_j |g_j + sum y_i s_ij| - sum y_i c_i,
//
// where y = 0 says what the cube says alone. The least such bound is a linear program; exact descent in one
// multiplier after the other finds a good one, and any will do: what is returned is computed for the y that
// was found, to many digits, and widened by more than those can have lost.
#pragma once

#include <optional>

#include "complete/lattice/gram_schmidt.h"

namespace latbox::complete {

class RowMultipliers {
 public:
  RowMultipliers(const BoxLattice& lattice, unsigned long bits);

  // An upper bound on g u over the points, for g in coordinates of the cube. Nothing: no multipliers help.
  std::optional<Float> bound(const FloatVector& g) const;

 private:
  struct Equation {
    IntegerVector entries;
    Integer side;
    // Near the above, the greatest entry 1.
    std::vector<double> roughEntries;
    double roughSide = 0;
  };

  bool descend(std::vector<double>& rest, const Equation& equation, double& y) const;
  Float boundFor(const FloatVector& g, const std::vector<double>& y) const;

  unsigned long bits_;
  std::vector<Equation> equations_;
};

}  // namespace latbox::complete
