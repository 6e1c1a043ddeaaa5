// The lattice that a folder of pieces belongs to, as a text: its coordinates and their ends, point and basis,
// equations; and the forms that read a point's coefficients.
#pragma once

#include <string>
#include <string_view>

#include "complete/lattice/box_lattice.h"

namespace latbox::complete::jobs {

struct PieceLattice {
  BoxLattice box;
  // One row for each of the basis, over the variables of the lattice: the product with what a point is more
  // than the lattice's is the coefficient of that row.
  IntegerMatrix dual;
};

std::string textOf(const PieceLattice& lattice);
// Throws BadWords. All vectors have the lengths that belong together; whether this is the lattice of a
// program is another matter.
PieceLattice parseLattice(std::string_view text);

// Whether the dual is one of the basis.
bool isDual(const PieceLattice& lattice);

}  // namespace latbox::complete::jobs
