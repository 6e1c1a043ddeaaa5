// The least value that a norm can have, by the linear relaxation.
#pragma once

#include <optional>

#include "complete/program/objective.h"

namespace latbox::complete {

// No point of the program has a smaller value of the objective, by proof; in its units. Nothing: the
// relaxation knows no bound. Distances from wanted values are variables of their own here, so that this says
// more than the rows of a bound do, of which each knows one pattern of signs. Requires a program as tighten
// leaves it; costs as narrowByRelaxation, or where ranges are open as closeByRows.
std::optional<Integer> leastNorm(const IntegerProgram& program, const Objective& objective);

}  // namespace latbox::complete
