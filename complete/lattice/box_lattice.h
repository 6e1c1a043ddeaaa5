// The program as a lattice in a box: the points are point + whole combinations of basis that keep low <= v <=
// high.
#pragma once

#include "complete/program/integer_program.h"

namespace latbox::complete {

// Coordinates are first the variables that are not fixed, then the values of rows with different sides. A
// point of the lattice in the box is a point of the program, and each point of the program is one in the
// lattice, once.
struct BoxLattice {
  // All variables: the fixed ones have their values here, the others 0.
  IntegerVector fixed;
  // The variable of each coordinate; rows stand behind them.
  std::vector<std::size_t> variables;
  // The row of each coordinate behind the variables.
  std::vector<Row> rows;
  IntegerVector point;
  IntegerMatrix basis;
  // What all points keep: equations v = sides. A row's value is one of them.
  IntegerMatrix equations;
  IntegerVector sides;
  // low < high everywhere, and no coordinate is the same in all points.
  IntegerVector low;
  IntegerVector high;

  std::size_t coordinates() const { return point.size(); }
  std::size_t rank() const { return basis.size(); }
};

// The same lattice by another basis, reduced in blocks of this size: for seed 0 the present one goes on, for
// others it is scrambled before. Throws ReductionFailure.
void reduceAgain(BoxLattice& lattice, int blockSize, unsigned long seed);

// False, and the lattice stays as it is: the rows are no basis of it.
bool takeBasis(BoxLattice& lattice, const IntegerMatrix& rows);

// The lattice of a program, its basis reduced in small blocks. Nothing: the program has no point, by proof.
// Requires finite ranges of all variables. Throws ReductionFailure.
std::optional<BoxLattice> boxLatticeOf(IntegerProgram program);
// The same by the basis that its construction brings.
std::optional<BoxLattice> unreducedLatticeOf(IntegerProgram program);

}  // namespace latbox::complete
