// The judgement of candidates: each vector that reduction or a heuristic touches comes here, and nothing
// becomes a result by another road. Lattice::checkSolution is its door.
#pragma once

#include "lattice/lattice.h"

namespace latbox {

// A view of a lattice for the length of a check. What it finds it enters into the lattice's finds and its
// program; whoever runs the search hears of it by SearchEvents, once all has been entered.
template <class T>
class CandidateCheck {
 public:
  using Candidate = HeuristicVector<T, dbl_t>;

  explicit CandidateCheck(Lattice<T, dbl_t>& lattice) : l_(lattice) {}

  // As Lattice::checkSolution; `keepBounds` is its `flag`. `measures` are those of vec and -vec where they
  // are known already. Requires: `vec` has dim coordinates.
  unsigned check(const Vector<T>& vec, bool scaled, DiscoveryTime time, bool keepBounds,
                 Membership membership, const BothDeviations<dbl_t>* measures = nullptr);

  // The part of it that looks at targets: h becomes w with its norms and its time, and bestSlack where it is
  // better. CHECK_FEASIBLE alone: no better than what is known.
  // Requires: w is feasible.
  // Fails with: under keepBounds, "This case should not happen between a backup / restore!" where the bound
  // on the target does not lie below the best one.
  unsigned judgeVector(const Vector<T>& w, Candidate& h, DiscoveryTime time, bool keepBounds);
  // Bounds of free variables of `program` follow the point x; true when one moved.
  bool updateBounds(const Vector<T>& x);
  // By `snorm` and `tnorm`, or by the targets alone; always without targets.
  bool isSolution(const Candidate& h) const;
  // True when it was new.
  bool addSolution(const Candidate& h, DiscoveryTime time);

 private:
  Lattice<T, dbl_t>& l_;

  bool isRuledOut(const Vector<T>& vec, bool scaled) const;
  bool takeCandidate(const Vector<T>& vec, bool scaled);
  bool isFeasible(const Vector<T>& w) const;
  void remember(const Vector<T>& w, bool collecting, bool feasible, const HeuristicDeviation<dbl_t>* measure,
                DiscoveryTime time);
  bool isForeign(const Vector<T>& w, Membership membership);
  unsigned judge(const Vector<T>& w, Candidate& h, DiscoveryTime time, bool keepBounds);
  unsigned record(const Candidate& h, DiscoveryTime time, unsigned result);
  int orderAgainstBest(const Vector<T>& x, const T& norm) const;
  void noteFind(const Vector<T>& w, long seconds);
  bool findsCount() const;
};

}  // namespace latbox
