// What a pass walks by: cut tables as in cuts.h, and the shape of the tree, all of it in plain double. What
// their rounding excludes is a part of what the pass leaves out anyway.
#pragma once

#include "complete/tree/cuts.h"
#include "complete/tree/pruning.h"

namespace latbox::complete {

struct PassTables {
  CutTables<double> tables;
  Descent descent;
};

// Requires a reduced basis of short numbers.
PassTables passTablesOf(const BoxLattice& lattice);

}  // namespace latbox::complete
