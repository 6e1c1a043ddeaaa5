// Lattice reduction by libfplll. Nothing rests on it: whoever takes a basis from here proves by other means
// that it is one.
#pragma once

#include <mutex>
#include <random>
#include <stdexcept>
#include <string>

#include "complete/program/integer_program.h"

namespace latbox::complete {

// The reduction has failed, or has brought something else than a basis of the same lattice.
class ReductionFailure : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// LLL. Throws ReductionFailure.
void reduceLLL(IntegerMatrix& rows);

// Block reduction behind LLL: blocks of 20, 30, ... up to blockSize, pruned as libfplll's strategies say
// where they are installed, and once more from both ends. A basis that it cannot take stays as LLL left it.
// Throws ReductionFailure.
void reduceBlocks(IntegerMatrix& rows, int blockSize);

// Held around block reduction by libfplll, whose enumerations go to one pool for all threads: of two that
// wait for it, one would take up the other's work, which may be gone by then. reduceBlocks takes its turn by
// itself.
std::unique_lock<std::mutex> turnOfBlocks();

// Another basis of the same lattice: rows in a random order, each with others added or taken away. Reduced
// anew it is as good as the first one, and different.
void scramble(IntegerMatrix& rows, std::mt19937_64& random);

// "fplll 5.4.4", by which this was built.
std::string libraryVersion();

}  // namespace latbox::complete
