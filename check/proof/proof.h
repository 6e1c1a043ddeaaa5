// Whether a proof proves its verdict on a program; docs/proof.md says what that takes.
#pragma once

#include <string>
#include <vector>

#include "check/proof/walk.h"

namespace latbox::check::proof {

// Everything but the numbers of nodes and points: that the searches are those of the verdict, the point, the
// derived ranges, lattices and cuts. What was met by walks, by as much as the plan says, for each search.
// Throws: Refused.
std::vector<Counts> checkSearches(const Program& program, const Proof& proof, const Plan& plan);

// That all walks together have met what the searches state, and these what the verdict needs.
// Throws: Refused.
void requireStated(const Proof& proof, const std::vector<Counts>& met);

// "all 12", "optimum 3/2 1/2, 4 points".
std::string toText(const Verdict& verdict);

// How many points the verdict speaks of: for an optimum without a number, the one that was found.
mpz_class listedPoints(const Verdict& verdict);
// T and S.
Norms normsOf(const Verdict& verdict);

}  // namespace latbox::check::proof
