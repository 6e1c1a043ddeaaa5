// The complete search of a lattice in its box, depth first.
#pragma once

#include <atomic>

#include "complete/box_lattice.h"

namespace latbox::complete {

// What a search may do after a point.
enum class Next {
  GO_ON,
  // The rows of targets have new bounds: limit() tells them.
  LIMIT,
  STOP
};

class Visitor {
 public:
  virtual ~Visitor() = default;
  // All variables of a point of the program.
  virtual Next visit(const IntegerVector& z) = 0;
  // The bound of the target norm that all further points must keep, in the units of Row.
  virtual Integer limit() const = 0;
};

struct SearchControl {
  // Set from outside: the search ends soon.
  std::atomic<bool> stop = false;
  // Candidates that were looked at, in all searches.
  std::atomic<unsigned long> nodes = 0;
};

// Calls the visitor for every point of the box, once, in no order. True: all were visited, those excepted
// that a limit has excluded. False: stopped. Moves the lattice's point.
bool search(BoxLattice& lattice, Visitor& visitor, SearchControl& control);

// As search, by multiprecision numbers of at least so many bits: for tests. 53 bits are those of double.
bool searchWith(unsigned long bits, BoxLattice& lattice, Visitor& visitor, SearchControl& control);

}  // namespace latbox::complete
