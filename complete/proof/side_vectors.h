// Side vectors: what the linear relaxation knows of a candidate that the cuts have kept.
//
// Idea: if no real multipliers lambda_0, ..., lambda_{t-1} bring a candidate into the box, a vector w that is
// orthogonal to K_0, ..., K_{t-1} shows it by |w u| > |w| (Farkas). The simplex method in double finds w;
// rounded to a whole vector that is orthogonal exactly it is tested at the candidate, and it serves all
// candidates of its level. In small ranks few different vectors occur: a wide knapsack has 10^10 nodes
// without them and some hundreds with them.
#pragma once

#include "complete/proof/walk.h"

namespace latbox::complete::proof {

// Adds side vectors to the cuts where the tree is not small without them and becomes so by them.
void addSideVectors(const ProofLattice& lattice, CutVectors& cuts, const std::atomic<bool>& stop);

}  // namespace latbox::complete::proof
