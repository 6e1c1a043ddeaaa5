// A verdict as a VIPR 1.1 certificate, which readers of other houses check.
//
// Its problem is the program in whole numbers: variables count steps of their grids, distances from wanted
// values are variables of their own, and the objective is the target norm in whole units. Of an optimum it
// proves the target norm; a slack norm is no matter of one objective. It is as long as its tree, so that
// small trees only are written.
#pragma once

#include <string>

#include "complete/proof/prover.h"

namespace latbox::complete::vipr {

inline constexpr unsigned long MOST_NODES = 100'000;

// Such a certificate is not for this verdict or this tree.
class NotOfItsKind : public proof::NoProof {
 public:
  using proof::NoProof::NoProof;
};

// Throws NotOfItsKind for claims but that of no point or of an optimum, and where the tree has more than
// MOST_NODES nodes; else as proof::proofOf.
std::string certificateOf(const Program& program, const proof::Claim& claim, SearchControl& control);

}  // namespace latbox::complete::vipr
