// Lattice reduction by libfplll. Nothing rests on it: whoever takes a basis from here proves by other means
// that it is one.
#pragma once

#include <stdexcept>

#include "complete/integer_program.h"

namespace latbox::complete {

// The reduction has failed, or has brought something else than a basis of the same lattice.
class ReductionFailure : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// LLL. Throws ReductionFailure.
void reduceLLL(IntegerMatrix& rows);

// Block reduction behind LLL; a basis that it cannot take stays as LLL left it. Throws ReductionFailure.
void reduceBlocks(IntegerMatrix& rows, int blockSize);

}  // namespace latbox::complete
