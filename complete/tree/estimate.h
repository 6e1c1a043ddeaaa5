// How large a search will be, before it is begun.
#pragma once

#include "complete/lattice/box_lattice.h"

namespace latbox::complete {

// Candidates of the complete search of this lattice, by `probes` random ways down, always the same ones: the
// square root of the mean square error is of the order of the number itself. Infinite where double does not
// do for the search, or levels are very wide.
double estimatedNodes(BoxLattice& lattice, unsigned probes);

// The number of points to be expected if the values of the equations are spread like a normal distribution
// with their mean and covariance over the box: good for many variables that count alike. Below 0: not known.
double expectedPoints(const BoxLattice& lattice);

}  // namespace latbox::complete
