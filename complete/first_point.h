// A first point by pruned passes.
//
// Idea: the length of a point's projection grows evenly from level to level. Nodes that are long for their
// level are many and have few points below, so a pass leaves out those that are longer than most points are
// there: it sees a known share of all points at a small part of the nodes. A pass that finds nothing is
// followed by one of another basis, for which the point lies elsewhere (Gama, Nguyen, Regev, Lattice
// enumeration using extreme pruning, 2010). When the passes have cost what a part of the complete search
// would, that is searched, and proves that there is no point if that is so.
#pragma once

#include "complete/journal.h"

namespace latbox::complete {

// The share of the points that keep the cap of one level: that of all levels together is about half of it.
inline constexpr double SHARE = 0.8;

// For each level and behind them the value (see cuts.h) that a random point keeps with that chance. Requires
// the squared length that is orthogonal to all rows, and the number of coordinates.
std::vector<double> quantileCaps(std::size_t rank, double constantPart, std::size_t coordinates,
                                 double share);

// Whether the visitor has had enough. Returns also when the control stops, and when passes no longer pay. The
// seed and the number of a pass determine it. `key` names the lattice. Throws ReductionFailure.
bool findByPasses(const std::string& key, const BoxLattice& lattice, unsigned long seed, Journal& journal,
                  Visitor& visitor);

}  // namespace latbox::complete
