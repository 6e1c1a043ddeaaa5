// The linear relaxation of one level: how far lambda_t can go when lambda_0, ..., lambda_{t-1} are real.
//
// The points of the relaxation are u = p + sum_{i <= t} lambda_i K_i in a box, p known at the node. Of the
// coordinates take t + 1, the columns, on which K_0, ..., K_t are independent. Then every other coordinate, a
// row, and lambda_t are linear functions of the columns' u_j - p_j:
//
//     u_r - p_r = sum_j A_rj (u_j - p_j),    lambda_t = sum_j d_j (u_j - p_j).
//
// A and d know nothing of the node: a dictionary once made serves all nodes of its level, and the one that
// was best at the last node is seldom far from the best one at the next.
//
// The method is the dual simplex method for boxes (bound flipping: Fourer 1994, Maros 2003). With each column
// at the end of its range that the sign of d_j asks for, the objective is a bound on lambda_t in every
// dictionary, because all ranges are finite: there is no first phase, and giving up costs nothing but
// sharpness. A step takes the row that is farthest out of its range and exchanges it for the column that lets
// the objective fall least; a row that stays outside with all columns at their best ends refutes the node. A
// step costs some (N - t) (t + 1) multiplications, some ten nodes of the search or less, and a node asks for
// a few of them. (A primal method would need a first phase at each node, and its bounds hold at the end
// only.)
//
// All this is a suggestion in double: of weights() certificates.h makes a bound that holds.
#pragma once

#include <cstddef>
#include <vector>

namespace latbox::complete {

// A vector with few entries that are not zero.
struct SparseVector {
  std::vector<std::size_t> coordinates;
  std::vector<double> entries;
};

// Ends of the ranges of all coordinates, finite, low <= high.
struct RealBox {
  std::vector<double> low;
  std::vector<double> high;
};

class Relaxation {
 public:
  // Of sign * lambda_level, to be maximised. The rows of the basis have one length, rows 0 to level are
  // linearly independent, and the basis outlives this. The dictionary is made by the first run.
  Relaxation(const std::vector<std::vector<double>>& basis, std::size_t level, int sign);

  enum class Outcome {
    // weights() . (u - p) = sign * lambda_level, and its greatest value in the box is a good bound.
    BOUND,
    // weights() . (u - p) = 0, and its greatest value in the box is negative: no point.
    EMPTY,
    // The basis is not independent, as far as double can see.
    FAILED
  };
  // For p = partial. Ends early when the bound is below `enough`.
  Outcome run(const std::vector<double>& partial, const RealBox& box, double enough);

  // What the last run found; up to rounding.
  const SparseVector& weights() const { return weights_; }
  // Whether the weights of a BOUND are others than those of the BOUND before.
  bool isChanged() const { return isChanged_; }
  // Multiplications of all runs so far, roughly: what they cost.
  unsigned long work() const { return work_; }
  // Forgets what rounding has done to the dictionary; its columns stay.
  void refresh() { isStale_ = steps_ > 0; }

 private:
  enum class Step { DONE, TAKEN, EMPTY };

  // What the objective loses and the row gains for each unit that the column moves.
  struct Candidate {
    double loss;
    double gain;
    std::size_t column;
  };

  std::size_t columnCount() const { return level_ + 1; }
  double* row(std::size_t r) { return entries_.data() + r * stride_; }
  double* objective() { return row(rows_.size()); }
  bool makeDictionary();
  void takeOver(const std::vector<double>& table);
  void placeColumns(const std::vector<double>& partial, const RealBox& box);
  void evaluate();
  Step step(const std::vector<double>& partial, const RealBox& box);
  std::size_t farthestOut(const std::vector<double>& partial, const RealBox& box, double& gap) const;
  bool chooseColumn(std::size_t r, const RealBox& box, double gap, std::size_t& chosen);
  void listCandidates(std::size_t r, const RealBox& box, double direction);
  void exchange(std::size_t r, std::size_t column, bool toHigh);
  void tellObjective();
  void tellRow(std::size_t r, double direction);

  const std::vector<std::vector<double>>& basis_;
  std::size_t level_;
  int sign_;
  std::size_t stride_;
  // The coordinates of rows and columns.
  std::vector<std::size_t> rows_;
  std::vector<std::size_t> columns_;
  // One row for each of rows_, and the objective behind them.
  std::vector<double> entries_;
  // Of the columns: at which end they are, and u_j - p_j there.
  std::vector<char> atHigh_;
  std::vector<double> displacements_;
  // Of the rows and the objective: u_r - p_r.
  std::vector<double> values_;
  // Of a step: the columns that can leave their ends.
  std::vector<Candidate> candidates_;
  SparseVector weights_;
  bool isStale_ = false;
  // Whether the dictionary is another one than at the last BOUND, and whether it was so in the last run.
  bool isUntold_ = false;
  bool isChanged_ = false;
  unsigned steps_ = 0;
  unsigned long work_ = 0;
};

}  // namespace latbox::complete
