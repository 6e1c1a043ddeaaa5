// Derived ranges: what follows from rows and earlier ends, step by step; docs/proof.md, "Derived ranges".
#pragma once

#include "check/proof/system.h"

namespace latbox::check::proof {

// Moves low up and high down to the next numbers that are `residue` modulo `modulus`, which is positive.
void intoClass(Range& range, const mpz_class& residue, const mpz_class& modulus);

// Narrows the ranges of the system by the steps, in their order; true as soon as there is a contradiction.
// Throws: Refused.
bool narrow(System& system, const std::vector<Step>& steps);

}  // namespace latbox::check::proof
