// The solutions as their file claims them.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "check/files/scanner.h"

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

// Reads a line of a .sol text, the one of this number; nothing if it is blank:
//     [ x1 x2 ... ] | target norm | [ t1 t2 ... ] | slack norm | time | parameters | version
// The version may be missing, with its bar. Throws Unreadable.
std::optional<Solution> readSolution(std::string_view text, long line);

}  // namespace latbox::check
