// Parts of a tree of like size.
//
// The largest part is opened, its children take its place, until there are some times as many parts as are
// wanted; then these are put together so that none is much larger than others. How large a part is, is
// estimated as for a whole search (walk.h): that says how long a piece takes, and nothing else.
#pragma once

#include "complete/lattice/box_lattice.h"
#include "complete/tree/piece.h"

namespace latbox::complete::jobs {

struct Portion {
  std::vector<Piece> pieces;
  // Candidates, estimated.
  double nodes = 0;
};

// The pieces that are given, in at most `count` portions, which together are the same set, each part of it
// once. Requires count > 0. The lattice's point must be where cutTablesOf leaves it, and stays there; else
// ReductionFailure is thrown.
std::vector<Portion> split(BoxLattice& lattice, const std::vector<Piece>& pieces, std::size_t count);

// The lattice's point is where searches of it leave it.
void settle(BoxLattice& lattice);

}  // namespace latbox::complete::jobs
