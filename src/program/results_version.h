// Whether anything has been found since the .sol file's text was built: that text takes all solutions, and
// known vectors are touched many times a second.
#pragma once

namespace latbox {

// Counts the changes of solutions, stars and best vectors in this process. Solver thread only.
inline long& resultsVersion() {
  static long version = 0;
  return version;
}

}  // namespace latbox
