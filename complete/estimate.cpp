#include "complete/estimate.h"

#include <cmath>
#include <limits>

#include "complete/walk.h"

namespace latbox::complete {

double estimatedNodes(BoxLattice& lattice, unsigned probes) {
  const auto tables = cutTablesOf<double>(lattice, 53);
  if (!tables) return std::numeric_limits<double>::infinity();
  Walk<double> walk(*tables);
  std::mt19937_64 random(1);
  return walk.sampledNodes(probes, random);
}

}  // namespace latbox::complete
