// The walk over all lambda that the cuts leave; docs/proof.md, "The cuts" and "The walk".
//
// It runs in doubles where the numbers of the proof show that all of them stay whole below 2^53, else in
// GMP's numbers: one source, and the same nodes. Shares of it are walked at once, by threads, or by several
// runs, as parts: below the highest level with MANY nodes each node's subtree is one piece, and pieces are
// dealt out in turn. Who walks pieces walks all nodes above them as well, but only the first counts these.
#pragma once

#include <cstdint>

#include "check/proof/lattice.h"

namespace latbox::check::proof {

struct Plan {
  std::size_t threads = 1;
  // The part-th of so many, from 1; 0: nothing is walked.
  std::uint64_t part = 1;
  std::uint64_t parts = 1;
  // In GMP's numbers, whatever the numbers are.
  bool exact = false;
};

struct Counts {
  std::uint64_t nodes = 0;
  std::uint64_t points = 0;
};

// The conditions on the cuts, and then the walk, whose leaves count if they are feasible and have norms that
// count beside the verdict's. Requires: the box is that of the search.
// Throws: Refused, also as soon as there are more nodes than the search states.
Counts walk(const Program& program, const Box& box, const Search& search, const Norms& verdict,
            const Plan& plan);

}  // namespace latbox::check::proof
