// How far lambda_t can go at a node: the simplex method proposes (relaxation.h), certificates decide
// (certificates.h).
//
// Each level has a dictionary for either direction, and its last certificates of a bound and of a refutation.
// These are tried first, for a few multiplications; where they do not say enough, the simplex method goes on
// from its dictionary. What is found depends on the nodes before, but it holds for the node.
#pragma once

#include "complete/tree/certificates.h"

namespace latbox::complete {

class NodeBounds {
 public:
  // Requires |lambda_i| <= reach[i] for all points of the box. The lattice outlives this and stays as it is.
  NodeBounds(const BoxLattice& lattice, const std::vector<double>& reach);
  NodeBounds(const NodeBounds&) = delete;
  NodeBounds& operator=(const NodeBounds&) = delete;

  // Levels 0 to levels() - 1 have bounds: all of them, or none where numbers are too long, or the lower ones
  // where the rank is so large that the dictionaries of all would take too much memory.
  std::size_t levels() const { return sides_.size() / 2; }

  // A whole number that sign * lambda_t, sign being 1 or -1, does not exceed in any point with the given
  // lambda_{t+1}, ...; minus infinity where there is no point, infinity where no bound is known. Looks for no
  // more when it is below `enough`.
  // Requires t < levels().
  double bound(std::size_t t, int sign, const std::vector<double>& lambda, double enough);

  // What all calls have cost so far, in multiplications, roughly; and what the first node of level t may
  // cost.
  unsigned long work() const { return work_; }
  unsigned long firstWork(std::size_t t) const;

 private:
  // Of one level and sign.
  struct Side {
    Relaxation relaxation;
    Certificate objective;
    Certificate refutation;
  };

  void takeCube(const BoxLattice& lattice);
  void startLevels();
  const std::vector<double>& partialAt(std::size_t t, const std::vector<double>& lambda);
  double improve(Side& side, const std::vector<double>& partial, std::size_t t, int sign, double enough);
  const SparseVector& whole(const SparseVector& weights);

  Certificates certificates_;
  // The lattice and its box where that is a cube: u = stretch * v - shift, rounded.
  std::vector<std::vector<double>> cubeRows_;
  RealBox cube_;
  std::vector<double> stretch_;
  std::vector<double> shift_;
  // p of each level down to known_, and the multipliers above that they were made from.
  std::vector<std::vector<double>> partials_;
  std::vector<double> chosen_;
  std::size_t known_ = 0;
  // Two of each level.
  std::vector<Side> sides_;
  // Scratch.
  std::vector<double> cubePartial_;
  SparseVector whole_;
  unsigned long work_ = 0;
};

}  // namespace latbox::complete
