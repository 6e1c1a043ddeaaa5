// The solutions as their file claims them.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "check/scanner.h"

namespace latbox::check {

// One line of a .sol file.
struct Solution {
  // Number of the line in the file, from 1.
  long line = 0;
  Vector x;
  Number targetNorm;
  Vector targets;
  Number slackNorm;
  // Seconds; -1: not known. A benchmark run with a negative factor writes negative ones.
  long time = -1;
  std::string parameters;
  std::string version;
};

// Reads a .sol text, one solution a line, blank lines skipped:
//     [ x1 x2 ... ] | target norm | [ t1 t2 ... ] | slack norm | time | parameters | version
// The version may be missing, with its bar. Throws Unreadable.
std::vector<Solution> readSolutions(std::string_view text);

}  // namespace latbox::check
