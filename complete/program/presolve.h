// Exact presolve: what divisibility and activities say about ranges, to a fixpoint.
#pragma once

#include "complete/program/integer_program.h"

namespace latbox::complete {

// Narrows ranges, takes fixed variables out of rows (their coefficients become 0), divides rows by their
// common divisor and removes those that say nothing more. Keeps the set of points. False if it has none, by
// proof. Ranges of wide boxes may creep: after MOST_ROUNDS they stay as they are, which costs narrowness
// alone.
bool tighten(IntegerProgram& program);
inline constexpr int MOST_ROUNDS = 60;

}  // namespace latbox::complete
