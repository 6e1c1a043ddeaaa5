// The text of a proof: the grammar of docs/proof.md.
#pragma once

#include <string>

#include "complete/proof/cut_vectors.h"
#include "complete/proof/derivation.h"
#include "complete/proof/walk.h"

namespace latbox::complete::proof {

// How a search ends that does not end in a contradiction.
struct Tree {
  ProofLattice lattice;
  CutVectors cuts;
  WalkCount count;
};

std::string textOf(const Point& point);
std::string textOf(const WalkCount& count);
std::string textOf(Goal goal, const Derivation& derivation, const Tree* tree);

}  // namespace latbox::complete::proof
