// A walk through a piece of the tree, depth first; candidates of a level in the order of their distance from
// its centre.
#pragma once

#include <random>

#include "complete/tree/cuts.h"
#include "complete/tree/piece.h"

namespace latbox::complete {

template <class R>
class Walk {
 public:
  // The tables must outlive the walk. `caps`, one a level and one behind them, refute candidates whose value
  // exceeds them, points or not; empty: none does.
  explicit Walk(const CutTables<R>& tables, const std::vector<double>& caps = {});
  Walk(const Walk&) = delete;
  Walk& operator=(const Walk&) = delete;

  void start(const Piece& piece);
  // To the next pause.
  WalkPause next();
  // What is chosen: of all levels at a leaf, from level() on at a candidate. Zeros follow.
  const std::vector<R>& lambda() const { return lambda_; }
  std::size_t level() const { return data_.level; }

  // At a leaf: it is one of the open candidates again.
  void takeBack();

  // Whether the walk pauses at candidates of this level.
  void askAt(std::size_t t, bool asks) { levels_[t].asks = asks; }
  // At a candidate: whether it is the first one of its node.
  bool isNew();
  // At a candidate: goes on below it; at level 0 it is a leaf then, as at that pause. Or leaves it, and all
  // candidates of its node outside of a range, which is empty if it ends before it begins.
  WalkPause accept();
  void refuse(const R& least, const R& greatest);
  // Pauses when it comes to this level again, or after so many candidates.
  void pauseAt(std::size_t ceiling, unsigned long candidates);
  static constexpr std::size_t NO_CEILING = static_cast<std::size_t>(-1);
  // Goes on at this level, at or above the present one: what is open below goes.
  void leaveBelow(std::size_t t) { data_.level = std::max(data_.level, t); }

  // What next() has yet to look at, unless it has come to the end. The walk may go on. What is open below
  // level `least` is left out: the caller knows that it holds no point. The same of split().
  Piece rest(std::size_t least = 0) const;
  // The share of the tree that rest() is, estimated.
  double share() const;
  // Gives away what is open at the highest level below which something is open too; false: there is none
  // worth it.
  bool split(Piece& other, std::size_t least = 0);
  // The number of candidates in the whole tree, guessed from `most` nodes of each level: the children of a
  // random choice of the children of the level above, each of which stands for as many as there were too
  // many. Right on average (Rubinstein, Stochastic enumeration method for counting NP-hard problems, 2013,
  // after Knuth, Estimating the efficiency of backtrack programs, 1975, which follows one node alone and is
  // mostly too low). Infinite where levels are so wide that this itself takes long. Leaves nothing to be
  // walked through.
  // The same below the node with these coefficients, from the last level down.
  double sampledNodes(std::size_t most, std::mt19937_64& random, const IntegerVector& above = {});
  // All that is below that node, as a piece. Leaves nothing to be walked through. Requires a level below.
  Piece below(const IntegerVector& above);
  // Candidates since the last call.
  unsigned long takeNodes();

 private:
  using Level = WalkLevel<R, Weight<R>>;

  bool enterRoot();
  bool resume(std::size_t t, const Choice& choice, bool hasChosen);
  void takeSides(Level& level, const Choice& choice) const;
  Choice choiceAt(std::size_t t) const;
  double openPart(std::size_t t, double& chosenPart) const;
  bool follow(const std::vector<R>& choices);

  const CutTables<R>& tables_;
  std::size_t k_;
  std::vector<Level> levels_;
  // With zeros behind.
  std::vector<R> lambda_;
  // The W of all levels, one behind the other.
  Weights<R> weights_;
  WalkData<R, Weight<R>> data_;
  // A lattice of rank 0 has one leaf.
  bool leafLeft_ = false;
  unsigned long nodes_ = 0;
};

}  // namespace latbox::complete
