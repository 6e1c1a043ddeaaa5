// Steps by linear programming: the simplex method proposes multipliers, and the step computes what they
// prove.
#pragma once

#include "complete/proof/derivation.h"

namespace latbox::complete::proof {

// Narrows variables and rows to what the linear relaxation leaves, as far as a bounded effort goes. Requires
// finite ranges of all variables. True: something changed.
bool narrowByRelaxation(Derivation& derivation);

// Gives variables without an end those that rows imply over the rationals, and rows and variables with one
// value in all rational points this value; finds out whether there is a rational point at all. Does nothing
// where all ends are finite.
void closeVariables(Derivation& derivation);

bool hasOpenVariables(const Derivation& derivation);

}  // namespace latbox::complete::proof
