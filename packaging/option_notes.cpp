#include "option_notes.h"

namespace latbox {
namespace {

constexpr const char* SWITCH = "`0` off, `1` on";
constexpr const char* ON_OFF = "0 1";
constexpr const char* NEXT_ITERATION = "From the step's next turn on.";
constexpr const char* NEXT_CANDIDATE =
    "From the next point on that is judged; points judged before stay as they were.";

}  // namespace

std::span<const OptionNote> optionNotes() {
  static const OptionNote notes[] = {
      {"help", "`0` no effect, `1` show the options and end", ON_OFF, "Needs no input file. Exit status 0.",
       "No effect; the command `HELP` shows the options."},
      {"verb", "`0`, `1` or `2`", "0 1 2",
       "`0` prints what changes in the result, `1` adds statistics of each iteration, `2` the progress of "
       "every phase, indented by depth.",
       "From the next line that would be printed."},
      {"consistency", SWITCH, ON_OFF,
       "Costs time and memory: every transformation of the basis is recorded and checked. Without it the "
       "transformation is worked out anew at each check.",
       "At once. What the step in progress has done before is not recorded, so that the basis may fall back "
       "to that of the last check."},
      {"eenum", SWITCH, ON_OFF,
       "On: each iteration reduces the basis block by block with enumeration. Off: it makes one sweep of "
       "plain reduction, which is much cheaper, and leaves the search to the other steps.",
       NEXT_ITERATION},
      {"beta", "a whole number; at most the rank of the lattice counts; `2` or less: no enumeration", "",
       "A larger block finds shorter vectors and costs exponentially more.", "From the next reduction on."},
      {"eprune", "`0` to `3`; less is as `0`, more as `3`", "0 1 2 3",
       "`0` looks at every branch. `1` lets the bound grow along a straight line with the depth, `2` halves "
       "it in the far half of the block, `3` follows two straight lines that meet near the middle.",
       "From the next block on."},
      {"btime", "seconds; `0`: no limit", "",
       "What has been found in the block by then is kept; a sweep of the reduction ends by it too. With "
       "`rtime` set on the command line, a `btime` of 0 or above `rtime` becomes `rtime`.",
       "At once."},
      {"deep", SWITCH, ON_OFF,
       "A vector that is short enough goes back several places in the basis at once, instead of one. Better "
       "bases for more time.",
       "At once."},
      {"collectLimit", "a whole number; `0`: no limit", "",
       "It holds for each of the two collections, that of near-solutions and that of their differences. They "
       "are filled only while `pair` or `sieve` is on. The work of `sieve` grows with the square of the "
       "limit; without a limit a sieve may not come to an end.",
       "At the next vector that is collected; the worst ones go first."},
      {"pair", SWITCH, ON_OFF,
       "Adds vectors of the collections and of the basis to each other and subtracts them, and judges the "
       "results.",
       NEXT_ITERATION},
      {"pairLimit", "a whole number; `0` or less: none, only the basis is recombined", "",
       "The work is the product of the vectors taken from the two collections, so a larger limit costs its "
       "square.",
       NEXT_ITERATION},
      {"sieve", SWITCH, ON_OFF,
       "Works on the collections alone, round by round, until nothing gets better. Pays with full "
       "collections, that is after some iterations.",
       NEXT_ITERATION},
      {"sample", SWITCH, ON_OFF,
       "A sample that is shorter than a vector of the basis, in the projection of its place, takes that "
       "place. Pays where enumeration has nothing left to improve and the rank is far beyond `beta`.",
       NEXT_ITERATION},
      {"sampleLimit", "a whole number; `0` or less: none", "",
       "An upper limit: the step ends with the first sample that takes a place in the basis.",
       NEXT_ITERATION},
      {"scale", SWITCH, ON_OFF,
       "Raises the weight of the coordinates in which the first inhomogeneous vector of the basis leaves its "
       "bounds, so that the next reduction prefers vectors that behave there.",
       NEXT_ITERATION},
      {"translate", SWITCH, ON_OFF, "As `scale`, but moves the centre of these coordinates.", NEXT_ITERATION},
      {"reinsert", SWITCH, ON_OFF,
       "A remembered vector goes into the basis at the first place where it is not too long: a solution, in "
       "turn, once there are some; before that the best vector of a target; before that the best "
       "inhomogeneous vector.",
       NEXT_ITERATION},
      {"variate", SWITCH, ON_OFF,
       "Acts in iterations that follow one without progress, harder the longer nothing happens. Without it, "
       "and without sampling and trimming, a reduced basis stays as it is and the iterations repeat "
       "themselves.",
       NEXT_ITERATION},
      {"rtime", "seconds since the start of the program; `0`: no limit", "",
       "Looked at once a second, in every phase of a run. The end comes with the final report and exit "
       "status 0.",
       "Within a second, if the run was started with a limit; otherwise no effect. `0` is a limit that has "
       "passed, too, and ends such a run. `btime` stays as it is."},
      {"iters", "a whole number; `0`: write the `.lat` file and end; `-1`: no limit", "",
       "With `0` the program is read and prepared and the lattice is written; nothing is searched, and there "
       "is no report.",
       "At the end of an iteration of exactly this number; a number that has passed has no effect. An "
       "iteration that ends at once, for `STOP` or for another input, counts as well: it may pass the number "
       "without a look at it."},
      {"sol", "a whole number; `0` or less: no limit", "",
       "Without targets every feasible point is a solution. With targets, a point that brings every target "
       "to its value, and one within `snorm` and `tnorm`. Looked at when a solution is found: those that the "
       "`.sol` file holds from earlier runs count, but end nothing by themselves.",
       "From the next solution on."},
      {"bench", "a number; `0`: no benchmark run", "",
       "It is the difference from 0 that counts, so a negative value works as well. The files are still "
       "written, with times of 18 digits at most.",
       "Discovery times are multiplied from then on, and the report names no solutions; what has been read "
       "stays."},
      {"snorm", "a number; `-inf`: the slack norm is not looked at", "-1 0 -inf",
       "The slack norm is the distance from the targets with a value; it is 0 where there are none, and "
       "never below, so that the default lets no point through. If `tnorm` is set as well, a solution must "
       "hold both.",
       NEXT_CANDIDATE},
      {"tnorm", "a number; `-inf`: the target norm is not looked at", "-inf",
       "The target norm is the sum of minimised values as they are, maximised ones negated, and distances "
       "from targets with a value. Give `--snorm=0` with it: the default of `snorm` lets no point through.",
       NEXT_CANDIDATE},
  };
  return notes;
}

}  // namespace latbox
