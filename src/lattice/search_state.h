// What a search remembers beside its lattice, and no copy of a lattice carries: a step that fails does not
// take it back, and a change of precision neither resets nor shares it.
#pragma once

#include <string>
#include <vector>

#include "model/star.h"

namespace latbox {

// The largest absolute weight that trimming gives a coordinate without further ado starts here.
inline constexpr long SCALE_LIMIT_START = 1000;

// One per number type.
template <class T>
struct SearchState {
  T scaleLimit = T(SCALE_LIMIT_START);  // trimming lets it grow, a reset of the weights puts it back
  long reinsertIndex = 0;               // the solution that was re-inserted last, 0 before the first
  bool reinserting = false;  // kept vectors come back: their improvements and solutions aren't counted
  // Points in the variables of the program: what has been found since the present step began; and what a step
  // had found that was taken back, for the check to judge again.
  std::vector<Star<T>> journal;
  std::vector<Star<T>> pending;
  unsigned settled = 0;  // CHECK_ bits of what has been judged again, on which the run has not acted yet
};

// What a run has put out; both number types share one, since the file and the terminal do not ask who writes.
struct RunOutput {
  long resultsVersion = 0;         // counts the changes of solutions, stars and best vectors
  std::string lastPrintedSummary;  // the summary that verb 0 printed last, whatever was loaded since
  bool held = false;  // finds of a failed step are still to be judged: nothing is written or told before

  // The .sol file as it was written last, and from what. A lattice is put back to a former state when a step
  // fails, the file is not.
  struct Written {
    const void* owner = nullptr;
    long version = -1;
    long solutions = 0;
    long stars = 0;
    std::string parameters;
    std::string path;
    std::string text;
    bool failed = false;  // the next call tries again, whether or not something is new
  };
  Written sol;
};

}  // namespace latbox
