// The bounds of linear programs, at the levels where they pay.
//
// A bound costs as much as some ten to some thousand candidates by the plain cuts. It saves the trees
// below the candidates that it excludes and the plain cuts have kept; so these are asked first, and only
// then is the bound. What such a tree costs is not known, and the average tree of the level is no guide:
// in market splits the bounds exclude a candidate in four nodes of five at the upper levels, and together
// only a thirtieth of the nodes. So now and then an excluded candidate is walked all the same, as a trial:
// until its tree ends, or has cost several times what makes the bounds of its level pay, and is left. A
// level has bounds while the trees that they save cost more than they do. For the other levels there is an
// allowance, by which they are tried at the beginning and rarely later on. All is counted, in
// multiplications, and nothing is timed: a search repeats itself.
//
// Measured: equality knapsacks have bounds at all levels, 0/1 knapsacks at each second to fourth, and trees
// of hundreds to thousands of nodes in place of hopeless ones. In market splits a bound saves a hundredth to
// a tenth of what it costs, at every level.
#pragma once

#include <limits>

#include "complete/tree/node_bounds.h"

namespace latbox::complete {

class AdaptiveBounds {
 public:
  struct Range {
    double least;
    double greatest;
  };

  // As NodeBounds; where there are none, nothing is ever excluded.
  AdaptiveBounds(const BoxLattice& lattice, const std::vector<double>& reach);

  // The search comes to a node of level t.
  void enter(std::size_t t) { states_[t] = levels_[t].isOn ? State::WANTED : State::OFF; }

  // The range of lambda_t over all points below the node, if it excludes lambda[t], which the plain cuts have
  // kept; empty if there is no point. Null: the candidate is to be walked. Requires lambda[i] for i >= t.
  const Range* excluding(std::size_t t, const std::vector<double>& lambda) {
    return states_[t] == State::OFF ? nullptr : ask(t, lambda);
  }

  // Whether excluding() has anything to say at the candidates of a node that is entered now.
  bool isOn(std::size_t t) const { return levels_[t].isOn; }

  // The search has looked at so many candidates since this was called last.
  void countCandidates(unsigned long count) {
    if (trial_.isRunning) trial_.work += candidateWork_ * static_cast<double>(count);
  }
  // Whether a trial has ended for a search at level t. If it has, the search goes on at the level that
  // endTrial tells, t or above: what it leaves holds no point.
  bool isTrialOver(std::size_t t) const {
    return trial_.isRunning && (t >= trial_.level || trial_.work > trial_.limit);
  }
  std::size_t endTrial(std::size_t t);
  // That is to be asked at the trial's level and those above, and after so many candidates.
  unsigned long trialCandidates() const;
  // The search goes elsewhere.
  void cancelTrial() { trial_.isRunning = false; }

  // The level whose candidate a trial walks, if one does. What is below holds no point: it need not be kept,
  // and nobody else should search it, for its tree may have no end.
  std::optional<std::size_t> trialLevel() const {
    return trial_.isRunning ? std::optional(trial_.level) : std::nullopt;
  }

  // To be called now and then, after so many candidates more: levels that are off get their chance.
  void review(unsigned long candidates);

 private:
  // Of the node at hand: its range is not wanted, or is when a candidate stays, or is known.
  enum class State : unsigned char { OFF, WANTED, KNOWN };

  struct Level {
    // Whether the next node is bounded.
    bool isOn = false;
    // Of the node at hand, if it is known.
    Range range{};
    // Of late: nodes that were bounded, what that has cost, candidates excluded; trials, and what they cost.
    double bounds = 0;
    double cost = 0;
    double cuts = 0;
    double trials = 0;
    double trialCost = 0;
    // The part of the cost that the allowance has carried.
    double unpaid = 0;
    unsigned untilTrial = 0;
  };
  struct Trial {
    bool isRunning = false;
    std::size_t level = 0;
    double work = 0;
    double limit = 0;
  };

  const Range* ask(std::size_t t, const std::vector<double>& lambda);
  Range rangeAt(std::size_t t, const std::vector<double>& lambda);
  void charge(std::size_t t, double cost);
  bool beginTrial(std::size_t t);
  void decide(std::size_t t);
  bool pays(const Level& level) const;

  NodeBounds bounds_;
  std::vector<Level> levels_;
  std::vector<State> states_;
  Trial trial_;
  // Of a candidate by the plain cuts, and of the search so far.
  double candidateWork_;
  double work_ = 0;
  // What a level may spend unpaid.
  double allowance_ = 0;
};

}  // namespace latbox::complete
