// Bases of short numbers: reduced by libfplll in machine words and double, which takes a fifth to a tenth of
// the time that GMP's integers take, and by blocks that are pruned with straight lines, for which no file of
// strategies has to be read. For passes, which make a basis for each tenth of a second of search. Nothing is
// proven here: whoever takes rows tests that they are of the lattice.
#pragma once

#include <optional>
#include <random>
#include <vector>

#include "complete/lattice/box_lattice.h"

namespace latbox::complete {

using ShortMatrix = std::vector<std::vector<long>>;

// The lattice's basis where the box is a cube, as far as whole multipliers make it one.
struct ShortBasis {
  ShortMatrix rows;
  // What each coordinate was multiplied by.
  std::vector<long> multipliers;
};

// Nothing: a number is too long.
std::optional<ShortBasis> shortBasisOf(const BoxLattice& lattice);

// Another basis, reduced; the random numbers alone decide which. Nothing: libfplll has given up.
std::optional<ShortMatrix> newBasis(const ShortBasis& from, std::mt19937_64& random);

// The rows in coordinates of the lattice.
IntegerMatrix inLattice(const ShortBasis& basis, const ShortMatrix& rows);

}  // namespace latbox::complete
