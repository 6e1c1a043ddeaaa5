// The walk of a proof, exactly as docs/proof.md has it: whole numbers alone, so that everybody who follows
// the page meets the same nodes.
//
// Where the numbers of a proof allow it, by bounds that are computed beforehand, vectors are doubles and
// scalars of 64 bits: then no operation rounds. Else all is GMP's.
#pragma once

#include <atomic>
#include <functional>

#include "complete/proof/cut_vectors.h"

namespace latbox::complete::proof {

struct WalkCount {
  unsigned long nodes = 0;
  unsigned long points = 0;
};

// Whether the walk with these cuts fits doubles.
bool fitsDouble(const ProofLattice& lattice, const CutVectors& cuts);

// A part of a walk. The nodes of the highest level that has `parts` of them are numbered, and those below
// each are walked whose number leaves `rest` when it is divided by `count`; the nodes down to that level
// belong to the rest 0. The same parts for all shares of a walk.
struct WalkShare {
  unsigned long rest = 0;
  unsigned long count = 1;
  std::size_t parts = 0;
};

struct WalkSettings {
  unsigned threads = 1;
  // Set from outside: the walk ends soon.
  const std::atomic<bool>* stop = nullptr;
  // Ends after so many nodes; 0: no limit.
  unsigned long most = 0;
  WalkShare share = {};
};

// All variables z of a leaf that keeps the ranges of all columns; whether it counts. Called by several
// threads.
using Judge = std::function<bool(const IntegerVector& z)>;

// Nothing: it was stopped, or has more nodes than the most.
std::optional<WalkCount> walk(const ProofLattice& lattice, const CutVectors& cuts, const Judge& judge,
                              const WalkSettings& settings);

// A vector that is orthogonal to all rows below level t and refutes the candidate with these multipliers,
// from lambda_t on, which the cuts have kept; or nothing.
using Refuter = std::function<std::optional<IntegerVector>(std::size_t t, const IntegerVector& lambda)>;

// Walks and gives each level the vectors of the refuter as side vectors, as long as it has room for them.
// Settings are heeded but for the threads.
std::optional<WalkCount> collectSides(const ProofLattice& lattice, CutVectors& cuts, const Refuter& refuter,
                                      const WalkSettings& settings);

}  // namespace latbox::complete::proof
