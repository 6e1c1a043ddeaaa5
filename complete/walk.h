// A walk through a piece of the tree, depth first; candidates of a level in the order of their distance from
// its centre.
#pragma once

#include <random>

#include "complete/cuts.h"
#include "complete/piece.h"

namespace latbox::complete {

template <class R>
class Walk {
 public:
  // What makes a walk pause.
  enum class Pause {
    // All candidates are chosen: the point of lambda() keeps all cuts.
    LEAF,
    // Some thousand candidates were looked at.
    LOOK,
    // Nothing is left.
    END
  };

  // Of a coordinate whose range has shrunk since the tables were made: the ends in the cube.
  struct Shrunk {
    std::size_t coordinate;
    R high;
    R low;
  };

  // The tables must outlive the walk. `caps`, one a level and one behind them, refute candidates whose value
  // exceeds them, points or not; empty: none does.
  explicit Walk(const CutTables<R>& tables, std::vector<double> caps = {});

  void start(const Piece& piece);
  Pause next();
  const std::vector<R>& lambda() const { return lambda_; }

  // Takes narrower ranges into the cuts: only what is behind them is excluded, so that the walk goes on where
  // it is.
  void shrink(std::vector<Shrunk> ends);

  // What next() has yet to look at. The walk may go on.
  Piece rest() const;
  // The share of the tree that rest() is, estimated.
  double share() const;
  // Gives away what is open at the highest level below which something is open too; false: there is none
  // worth it.
  bool split(Piece& other);
  // The number of candidates in the whole tree, guessed from `most` nodes of each level: the children of a
  // random choice of the children of the level above, each of which stands for as many as there were too
  // many. Right on average (Rubinstein, Stochastic enumeration method for counting NP-hard problems, 2013,
  // after Knuth, Estimating the efficiency of backtrack programs, 1975, which follows one node alone and is
  // mostly too low). Leaves nothing to be walked through.
  double sampledNodes(std::size_t most, std::mt19937_64& random);
  // Candidates since the last call.
  unsigned long takeNodes();

 private:
  struct State {
    // The next candidates on both sides of the centre, and which sides are closed.
    R up{};
    R down{};
    bool closedUp = true;
    bool closedDown = true;
    // g u at lambda = 0, as far as it is known, and where it is 0.
    R base{};
    R centre{};
    // The cut: the vector W and its product with the point.
    Weights<R> w;
    R value{};
    bool isOpen() const { return !closedUp || !closedDown; }
  };

  // Greatest and least g u in what the ranges leave of the cube, the least negated.
  struct Limit {
    R most;
    R least;
  };

  static constexpr unsigned long BETWEEN_LOOKS = 4096;

  bool enterRoot();
  void enter(std::size_t t);
  void resume(std::size_t t, const Choice& choice, bool hasChosen);
  bool step(std::size_t t);
  bool choose(std::size_t t, bool up);
  void refute(State& state, bool up, const R& product) const;
  R most(const Weights<R>& w, const R& size) const;
  Choice choiceAt(std::size_t t) const;
  double openPart(std::size_t t, double& chosenPart) const;
  bool follow(const std::vector<R>& choices);

  const CutTables<R>& tables_;
  std::size_t k_;
  std::vector<R> caps_;
  std::vector<State> states_;
  // What is chosen at each level.
  std::vector<R> lambda_;
  std::vector<Limit> limits_;
  std::vector<Shrunk> shrunk_;
  // Where the next candidate is taken; k: nothing is left.
  std::size_t level_ = 0;
  // A lattice of rank 0 has one leaf.
  bool leafLeft_ = false;
  unsigned long nodes_ = 0;
  unsigned long sinceLook_ = 0;
};

}  // namespace latbox::complete
