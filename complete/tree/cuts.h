// Cut vectors and the proof of what rounding can do to them.
//
// Coordinates here are u_j = (2 v_j - low_j - high_j) / (high_j - low_j): the box is the cube |u_j| <= 1. Let
// k be the rank, N the number of coordinates, K_i the rows of the basis and u0 the point in these
// coordinates, so that u = u0 + sum lambda_i K_i. For each level t there is a vector g_t near the
// Gram-Schmidt vector of K_t, and g_k near what is orthogonal to all rows. They are fixed numbers of the type
// R, so any sum W = sum_{i >= t} a_i g_i is a vector, and every point of the cube keeps |W u| <= sum |W_j|. A
// node at level t knows lambda_t, ..., lambda_{k-1} and with them p_i, near g_i u for all points below: they
// differ by at most slip_i, which bounds what the open rows add (sum_{j < i} |g_i K_j| reach_j, the products
// exact, reach_j a proven bound of |lambda_j| over the cube) and all rounding. With a_i = p_i / norm_i the
// value sum a_i p_i is near W u, and near the squared length of W. So there are two cuts, and a node falls if
// its value exceeds
//
//   - cap: N, and a little. The length of W times sqrt(N) bounds the sum of its sizes (Cauchy and Schwarz);
//   - sum |W_j| + margin, the sum as it is computed in numbers of another, shorter type.
//
// Where both are kept, sum p_i^2 / norm_i is bounded by the cap, and with it, again by Cauchy and Schwarz,
// all sums of errors on the way: margin is twice what they come to. Floating point suggests nothing here that
// is not proven.
#pragma once

#include <optional>
#include <vector>

#include "complete/tree/weights.h"

namespace latbox::complete {

// Requires R to be double, or mpf_class with default precision as wide as asked for.
template <class R>
struct CutTables {
  struct Level {
    // The vector, and once more, rounded and padded with zeros to a multiple of LANES.
    std::vector<R> g;
    Weights<R> weights;
    // g u0, and g K_i for all i, with PRODUCT_LANES zeros behind them.
    R constant{};
    std::vector<R> products;
    // 1 / (g g), roughly: any multiplier makes a cut.
    R inverseNorm{};
    // Greatest and least g u over the points, the least negated.
    R most{};
    R least{};
    // Bounds the error of a computed g u.
    R slip{};
  };
  // Levels 0 to k; the last one belongs to the constant part.
  std::vector<Level> levels;
  // |lambda_i| is at most reach[i] for all points of the cube.
  std::vector<R> reach;
  R cap{};
  R margin{};
};

// 53 bits: double. Nothing: with this precision the margins would be too wide for a search. Moves the point
// of the lattice by rows of its basis to near the centre of the box.
template <class R>
std::optional<CutTables<R>> cutTablesOf(BoxLattice& lattice, unsigned long bits);

}  // namespace latbox::complete
