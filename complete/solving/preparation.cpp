#include "complete/solving/preparation.h"

#include <cmath>

#include "complete/tree/estimate.h"
#include "complete/tree/search.h"

namespace latbox::complete {
namespace {

constexpr unsigned SAMPLE = 1000;
// A part of the search that may be spent on making it smaller.
constexpr double EFFORT = 0.1;
constexpr unsigned long MOST_BASES = 30;
// Years of search: whoever begins it wants points, and soon.
constexpr double HOPELESS = 1e15;
// Candidates that are looked at before another basis is thought of.
constexpr unsigned long SMALL = 20'000;

// What a basis and its estimate cost, in candidates; measured at ranks 40 to 70.
double costOfBasis(std::size_t rank) {
  constexpr double AT_FIFTY = 3e6;
  return AT_FIFTY * std::pow(static_cast<double>(rank) / 50, 3);
}

// The larger the tree, the larger the blocks.
int blockFor(double nodes) {
  if (nodes < 3e7) return 20;
  return nodes < 3e8 ? 30 : 40;
}

// Takes other bases while that makes the search cheaper by more than it costs.
void chooseBasis(Prepared& best) {
  best.nodes = estimatedNodes(best.lattice, SAMPLE);
  const double cost = costOfBasis(best.lattice.rank());
  if (cost > EFFORT * best.nodes || best.nodes > HOPELESS) return;
  // The sample knows the plain cuts alone. Where those of linear programs pay, little is left.
  if (isSmall(best.lattice, SMALL)) return;
  double spent = 0;
  for (unsigned long seed = 1; seed <= MOST_BASES && std::isfinite(best.nodes); ++seed) {
    spent += cost;
    if (spent > EFFORT * best.nodes) break;
    BoxLattice other = best.lattice;
    reduceAgain(other, blockFor(best.nodes), seed);
    const double nodes = estimatedNodes(other, SAMPLE);
    if (nodes < best.nodes) best = {std::move(other), nodes};
  }
}

}  // namespace

Prepared bestBasisOf(BoxLattice lattice) {
  Prepared best{std::move(lattice), 0};
  chooseBasis(best);
  return best;
}

std::optional<Prepared> preparedLatticeOf(const IntegerProgram& program, const IntegerMatrix& basis) {
  auto lattice = boxLatticeOf(program);
  if (!lattice) return std::nullopt;
  const IntegerVector point = lattice->point;
  Prepared best{std::move(*lattice), 0};
  if (!basis.empty() && takeBasis(best.lattice, basis)) return best;
  chooseBasis(best);
  // Estimates have moved it. Who comes with this basis later begins with the same lattice.
  best.lattice.point = point;
  return best;
}

}  // namespace latbox::complete
