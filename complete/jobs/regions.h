// A piece as conditions on the variables.
//
// A coefficient of a point is a product of its variables with a whole vector, less a constant. So a prefix is
// a list of equations, and the candidates that are left beside it are inequations: each level that has any is
// a program of its own, whatever search takes it. That the regions of pieces which make up the tree make up
// all whole points needs no lattice at all: every whole vector has whole coefficients by any such forms.
#pragma once

#include "complete/jobs/lattice_text.h"
#include "complete/tree/piece.h"

namespace latbox::complete::jobs {

// Rows over all variables; each list is a region, and each point of the piece is in one of them.
std::vector<std::vector<Row>> regionsOf(const PieceLattice& lattice, const Piece& piece);

}  // namespace latbox::complete::jobs
