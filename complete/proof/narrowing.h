// Ranges narrowed by what activities of rows and common divisors of their coefficients say, to a fixpoint.
#pragma once

#include "complete/proof/derivation.h"

namespace latbox::complete::proof {

// Takes such steps until nothing changes, for a bounded number of rounds.
void propagate(Derivation& derivation);

// Takes the steps that bring the ranges of rows that the box does not keep down to what the variables can
// reach.
void closeRows(Derivation& derivation);

// Whether the box alone keeps the row within its range.
bool isImplied(const Derivation& derivation, std::size_t row);

// The common divisor of the coefficients of the variables that are not fixed.
Integer divisorOf(const Derivation& derivation, std::size_t row);

// q, at most, such that the divided terms are whole.
void divideByContent(Step& step);

}  // namespace latbox::complete::proof
