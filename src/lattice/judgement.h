// The words in which candidates are handed to the check, and its answers.
#pragma once

#include "numbers/pair.h"
#include "numbers/serializable_array.h"

namespace latbox {

// Bits of the result of checkSolution.
inline constexpr unsigned CHECK_FOREIGN = 1;   // not part of the lattice
inline constexpr unsigned CHECK_FEASIBLE = 2;  // feasible
inline constexpr unsigned CHECK_LOOKED = 4;    // looked at as a solution
inline constexpr unsigned CHECK_NEW = 8;       // a new solution was recorded
inline constexpr unsigned CHECK_BOUND = 16;    // a bound was improved
inline constexpr unsigned CHECK_LIMIT = 32;    // the limit on solutions was reached

// What a caller of checkSolution knows of its vector. A row of B, or an integer combination of rows or of
// members of the collections, is a lattice vector by construction: every row operation is unimodular and
// exact, or has thrown. Such a vector passes the membership test at once; before anything of it is recorded
// it takes the real test all the same.
enum class Membership { unknown, byConstruction };

// When a candidate was found. A time of 0 that was read from a file is known, and not "now".
struct DiscoveryTime {
  bool known = false;
  long seconds = 0;
};
inline constexpr DiscoveryTime NOW{};
constexpr DiscoveryTime foundAfter(long seconds) {
  return {true, seconds};
}

// Pairs of coordinate number and deviation, ordered by the deviation.
template <class T>
using DeviationList = SerializableArray<RightOrderPair<long, T>>;

}  // namespace latbox
