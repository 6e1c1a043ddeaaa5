// Infinite bounds: closed where the rows imply it, by exact linear programming.
#pragma once

#include "complete/program/integer_program.h"

namespace latbox::complete {

// Variables without a bound on one side or both.
std::vector<std::size_t> openVariables(const IntegerProgram& program);

// Gives open sides of variables the bounds that the rows imply over the rationals. Does nothing where nothing
// is open. False: there is no rational point, or the equations that all rational points keep have no whole
// solution, by proof. Requires a program as tighten leaves it.
bool closeByRows(IntegerProgram& program);

// Throws BadInput, naming the variables that need a bound, if there are any.
void requireBounds(const IntegerProgram& program);

// Narrows open variables to at most `size` steps from their finite bound, or from 0.
void clip(IntegerProgram& program, const Integer& size);

}  // namespace latbox::complete
