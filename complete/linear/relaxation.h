// The linear relaxation of one level: how far lambda_t can go when lambda_0, ..., lambda_{t-1} are real.
//
// The points of the relaxation are u = p + sum_{i <= t} lambda_i K_i in a box, p known at the node. By a
// dictionary (dictionary.h) lambda_t and the coordinates that are not its columns are linear functions of the
// columns' u_j - p_j. The dictionary knows nothing of the node: once made it serves all nodes of its level,
// and the one that was best at the last node is seldom far from the best one at the next.
//
// The method is the dual simplex method for boxes (bound flipping: Fourer 1994, Maros 2003). With each column
// at the end of its range that the sign of d_j asks for, the objective is a bound on lambda_t in every
// dictionary, because all ranges are finite: there is no first phase, and giving up costs nothing but
// sharpness. A step takes the row that is farthest out of its range and exchanges it for the column that lets
// the objective fall least; a row that stays outside with all columns at their best ends refutes the node. A
// step costs some 2 (N - t) (t + 1) multiplications, ten nodes of the search or less, and a node asks for
// a few of them. (A primal method would need a first phase at each node, and its bounds hold at the end
// only.)
//
// All this is a suggestion in double: of weights() certificates.h makes a bound that holds.
#pragma once

#include <optional>

#include "complete/linear/dictionary.h"

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
  // Maximises the objective of the dictionary, sign * lambda_t for t + 1 columns. The basis outlives this.
  Relaxation(const std::vector<std::vector<double>>& basis, Dictionary dictionary, int sign);
  // Without a basis: rid of its rounding it is as it was at first. Its runs are short.
  explicit Relaxation(Dictionary dictionary);

  enum class Outcome {
    // weights() . (u - p) = sign * lambda_level, and its greatest value in the box is a good bound.
    BOUND,
    // weights() . (u - p) = 0, and its greatest value in the box is negative: no point.
    EMPTY,
    // The basis does not bring the dictionary again whose columns it had.
    FAILED
  };
  // For p = partial. Ends early when the bound is below `enough`, and after some steps; the next run goes on
  // from there.
  Outcome run(const std::vector<double>& partial, const RealBox& box, double enough);
  // Whether the last BOUND is the best one.
  bool hasEnded() const { return hasEnded_; }

  // What the last run found; up to rounding.
  const SparseVector& weights() const { return weights_; }
  // After a BOUND that has ended: u - p where the objective is greatest, by coordinates.
  void takePoint(std::vector<double>& moves) const;
  // There, at least what the objective loses for each unit that row r moves in the direction; infinite if it
  // cannot move.
  double lossOf(std::size_t r, const RealBox& box, double direction) const;
  const Dictionary& dictionary() const { return dictionary_; }
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

  bool makeDictionary();
  void placeColumns(const std::vector<double>& partial, const RealBox& box);
  void evaluate();
  Step step(const std::vector<double>& partial, const RealBox& box);
  std::size_t farthestOut(const std::vector<double>& partial, const RealBox& box, double& gap) const;
  bool chooseColumn(std::size_t r, const RealBox& box, double gap, std::size_t& chosen);
  void listCandidates(std::size_t r, const RealBox& box, double direction);
  template <class Take>
  void forCandidates(std::size_t r, const RealBox& box, double direction, Take take) const;
  void tellObjective();
  void tellRow(std::size_t r, double direction);

  // Null, and then the dictionary of the beginning.
  const std::vector<std::vector<double>>* basis_;
  std::optional<Dictionary> origin_;
  Dictionary dictionary_;
  int sign_;
  std::size_t mostSteps_;
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
  bool isUntold_ = true;
  bool isChanged_ = false;
  bool hasEnded_ = false;
  unsigned steps_ = 0;
  unsigned long work_ = 0;
};

}  // namespace latbox::complete
