// A point with given norms, by a search that knows nothing else: the points of a run may have been counted
// only.
#pragma once

#include "complete/tree/search.h"

namespace latbox::complete::proof {

// Requires that there is one. Throws NoProof when it is stopped, std::logic_error if none is found.
Point bestPointOf(const Program& program, const Norms& norms, SearchControl& control);

}  // namespace latbox::complete::proof
