// The judgement on a solution, by the program as its user wrote it.
#pragma once

#include <string>
#include <vector>

#include "check/files/program.h"
#include "check/files/solution.h"
#include "check/judging/rewriting.h"

namespace latbox::check {

struct Judgement {
  // What is wrong, one text each; none: the solution holds.
  std::vector<std::string> faults;
  // What a reader of the line should know although it holds.
  std::vector<std::string> notes;
};

// Checks the dimension, then bounds, digit grids, equations, inequations, target values and both norms, all
// exactly.
//
// Target values: At x, and for a target with a value the distance from it, in the order of
// Rewriting::targetOrder. Target norm: their sum, maximised ones negated. Slack norm: the sum of the
// distances. Three things hold with a note:
// - A distance may be claimed too large by an even number, and the target norm with it: the solver shows the
//   sum of two deviations, above and below, that it does not force to cancel.
// - The slack norm may be what the solver takes from other rows; see Rewriting::slackNorm.
// - Where a row has terms that are no whole numbers, a figure may be off by the rounding of standard
//   precision: by 10^-15 of the sizes of its terms, and 10^-9 at most.
// `rewriting` is the program's.
Judgement judge(const Program& program, const Rewriting& rewriting, const Solution& solution);

}  // namespace latbox::check
