// A part of a tree that can be searched by itself: handed to another thread, or kept in a file and taken up
// later.
#pragma once

#include <vector>

#include "complete/program/integer_program.h"

namespace latbox::complete {

// One level of a walk that stands still. Candidates are taken on both sides of a centre, which follows from
// what the levels above have chosen.
struct Choice {
  Integer chosen;
  // The next candidates, and whether all further ones on that side are refuted or somebody else's.
  Integer up;
  Integer down;
  bool closedUp = false;
  bool closedDown = false;

  friend bool operator==(const Choice&, const Choice&) = default;
};

// From the last level down. The lowest one has not chosen yet: its candidates, and the open ones of the
// levels above, are what is left. Empty: the whole tree. A lattice of rank 0 has one leaf and no levels: a
// piece of it that is not empty has nothing left.
using Piece = std::vector<Choice>;

// What is left of a search.
struct Frontier {
  std::vector<Piece> pieces;
  // An estimate of its share in the tree, between 0 and 1.
  double share = 1;
};

}  // namespace latbox::complete
