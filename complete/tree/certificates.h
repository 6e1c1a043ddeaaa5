// Bounds on lambda_t at a node from any vector whatever, rounding included.
//
// The point, the basis B and the box are whole numbers, and here all of them are so short that double holds
// them and their sums exactly; otherwise there are no certificates. A node of level t knows lambda_{t+1},
// ..., lambda_{k-1}, and with them p = point + sum_{i > t} lambda_i B_i exactly. Let D be any vector of
// doubles, taken as exact numbers, s = 1, -1 or 0, and E_i = D B_i - (s for i = t, else 0). Each point v
// below the node has v - p = sum_{i <= t} lambda_i B_i, so that
//
//     s lambda_t = D (v - p) - sum_{i <= t} lambda_i E_i
//               <= sum_j D_j (end_j - p_j) + sum_{i <= t} |E_i| reach_i,
//
// where end_j is the end of the range of v_j that D_j asks for and reach_i bounds |lambda_i| over the box.
// For s = 0 a right side below 0 refutes the node. A D with E_i near 0 makes a sharp bound; every D makes a
// bound.
//
// Rounding. Let D have m entries, |D_j| >= 1e-100 so that nothing underflows, M_j = sum_i reach_i |B_ij|, and
// size_j = (the larger |end| of v_j) + |point_j| + 2 M_j. Only nodes with |lambda_i| <= reach_i have points,
// and there |end_j - p_j| <= size_j - M_j. A computed sum of m products has an error of at most m 2^-53 (1 +
// tiny) times the sum of their sizes, in any order, fused or not. So the errors
//
//   - of the first sum and of adding it to the second are at most (m + 1) 2^-53 sum |D_j| (size_j - M_j),
//   - of the E_i, times reach_i, at most (m + 1) 2^-53 (sum |D_j| M_j + reach_t),
//
// up to factors 1 + tiny, together below (m + 4) 2^-52 (sum |D_j| size_j + reach_t). That is added, and the
// result widened by more than its own computation can have lost. All but the first sum depends on D and t
// alone: it is the slack of the certificate, which serves all nodes of its level. It costs m (t + 1)
// multiplications, its use at a node m.
#pragma once

#include <limits>

#include "complete/lattice/box_lattice.h"
#include "complete/linear/relaxation.h"

namespace latbox::complete {

// D, and its slack; an infinite slack says nothing.
struct Certificate {
  SparseVector weights;
  double slack = std::numeric_limits<double>::infinity();
};

class Certificates {
 public:
  // Requires |lambda_i| <= reach[i] for all points of the box. The lattice outlives this and stays as it is.
  Certificates(const BoxLattice& lattice, const std::vector<double>& reach);

  // Whether the numbers are short enough; the other calls require it.
  bool exist() const { return exist_; }

  // p of the root, and the step from p of a level to that of the next: exact where the node can have a point.
  const std::vector<double>& point() const { return point_; }
  void move(std::vector<double>& to, const std::vector<double>& from, std::size_t row, double lambda) const;

  // Makes a certificate of D for sign * lambda_t; sign 0: for the refutation of nodes of level t.
  void certify(Certificate& certificate, const SparseVector& d, std::size_t t, int sign);

  // What sign * lambda_t does not exceed in any point below a node of the certificate's level; infinity where
  // there is no bound. For a refutation: below 0 there is no point.
  double evaluate(const Certificate& certificate, const std::vector<double>& partial) const;

  // The ends of the ranges.
  const RealBox& box() const { return box_; }

 private:
  bool takeNumbers();

  const BoxLattice& lattice_;
  std::vector<double> reach_;
  bool exist_ = false;
  // Whole numbers all.
  RealBox box_;
  std::vector<double> point_;
  std::vector<std::vector<double>> rows_;
  // The rows, by coordinates.
  std::vector<std::vector<double>> entries_;
  // size_j.
  std::vector<double> sizes_;
  // The E_i of the certificate that is being made.
  std::vector<double> errors_;
};

}  // namespace latbox::complete
