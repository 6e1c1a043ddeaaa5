// The equations of a program, in the variables that are not fixed.
#pragma once

#include <optional>

#include "complete/lattice/kernel.h"
#include "complete/program/integer_program.h"

namespace latbox::complete {

// Linearly independent rows, each with one coefficient for each of `variables`.
struct Equations {
  std::vector<std::size_t> variables;
  IntegerMatrix rows;
  IntegerVector sides;

  // As wholeSolutions of kernel.h.
  std::optional<WholeSolutions> solutions() const { return wholeSolutions(rows, sides, variables.size()); }
};

std::vector<std::size_t> freeVariables(const IntegerProgram& program);
// The coefficients of some variables.
IntegerVector partOf(const IntegerVector& a, const std::vector<std::size_t>& variables);

// Rows with equal sides, less those that follow from others. Nothing: they contradict each other over the
// rationals. Requires that fixed variables have the coefficient 0, as tighten leaves it.
std::optional<Equations> equationsOf(const IntegerProgram& program);

}  // namespace latbox::complete
