// The proof of a verdict. It is made from the program and the verdict alone, so that it does not matter on
// how many threads, in how many runs, or by what ideas the verdict was found.
#pragma once

#include <string>

#include "complete/program/program.h"
#include "complete/proof/walk.h"
#include "complete/tree/search.h"

namespace latbox::complete::proof {

struct Claim {
  // Of all points: their number; of an optimum: the number of best points, where that is claimed.
  std::optional<unsigned long> count;
  // Of an optimum.
  std::optional<Norms> best;
};

// The text of the proof. Heeds control's threads, and ends soon with NoProof when it is stopped, unless it
// stands in a reduction. Throws NoProof where no proof can be made, ReductionFailure, std::logic_error if the
// claim turns out to be wrong.
std::string proofOf(const Program& program, const Claim& claim, SearchControl& control);

// A proof about all points, as far as it is known from the program alone: what comes before the verdict's
// search has been walked through. Without a lattice that is all of it, and there is no point.
struct Beginning {
  // From the line of the search on.
  std::string text;
  std::optional<ProofLattice> lattice;
  CutVectors cuts;
};

// Throws as proofOf.
Beginning beginningOf(const Program& program, SearchControl& control);
// The text of proofOf, from a beginning's and its walk's count.
std::string proofOf(const std::string& beginning, const std::optional<WalkCount>& count);

}  // namespace latbox::complete::proof
