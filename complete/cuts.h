// Cut vectors and the proof of what rounding can do to them.
//
// Coordinates here are u_j = (2 v_j - low_j - high_j) / (high_j - low_j): the box is the cube |u_j| <= 1. Let
// k be the rank, K_i the rows of the basis and u0 the point in these coordinates, so that u = u0 + sum
// lambda_i K_i. For each level t there is a vector g_t near the Gram-Schmidt vector of K_t, and g_k near what
// is orthogonal to all rows. They are fixed numbers of the type R, so any sum W = sum_{i >= t} a_i g_i is a
// vector, and every point of the cube keeps |W u| <= sum |W_j|. A node at level t knows lambda_t, ...,
// lambda_{k-1} and with them W u up to
//
//   - what the open rows add, at most |a_i| drift_i with drift_i = sum_{j < i} |g_i K_j| reach_j: the
//   products are
//     computed exactly, and reach_j bounds |lambda_j| over the whole cube, also by proof;
//   - the rounding of all operations on the way. Every one of them has an error of at most `unit` times the
//   sum of the
//     sizes of its operands, the sizes have bounds of their own, and the errors add up.
//
// margin_t is above the sum of both, so that a node whose value exceeds the sum of |W_j| by more than
// margin_t holds no point: floating point suggests nothing here that is not proven.
#pragma once

#include <optional>
#include <vector>

#include "complete/hot_loops.h"

namespace latbox::complete {

// Requires R to be double, or mpf_class with default precision as wide as asked for.
template <class R>
struct CutTables {
  struct Level {
    // The vector, padded with zeros to a multiple of LANES.
    std::vector<R> g;
    // g u0, and g K_i for all i.
    R constant{};
    std::vector<R> products;
    // 1 / (g g), roughly: any multiplier makes a cut.
    R inverseNorm{};
    // Greatest and least g u over the points, the least negated.
    R most{};
    R least{};
    // |g u| is at most `size` in the cube; `slip` bounds the error of a computed g u.
    R size{};
    R slip{};
    // Bounds the error of comparing W u with sum |W_j| at this level.
    R margin{};
  };
  // Levels 0 to k; the last one belongs to the constant part.
  std::vector<Level> levels;
  // |lambda_i| is at most reach[i] in the cube.
  std::vector<R> reach;
};

// 53 bits: double. Nothing: with this precision the margins would be too wide for a search. Moves the point
// of the lattice by rows of its basis to near the centre of the box.
template <class R>
std::optional<CutTables<R>> cutTablesOf(BoxLattice& lattice, unsigned long bits);

}  // namespace latbox::complete
