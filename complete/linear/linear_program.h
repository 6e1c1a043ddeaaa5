// The rational relaxation of a program, solved exactly.
#pragma once

#include <optional>

#include "complete/linear/simplex.h"
#include "complete/program/integer_program.h"

namespace latbox::complete {

// For programs of some dozens of rows and variables: all entries are rationals. Its first phase runs once for
// all questions about one program.
class LinearProgram {
 public:
  explicit LinearProgram(const IntegerProgram& program);

  bool isFeasible() const { return feasible_; }
  // The greatest value of sign * variable, the rows counting as variables behind the others; nothing if there
  // is none. Requires isFeasible.
  std::optional<Rational> greatest(std::size_t variable, int sign);
  // At the vertex where the last question ended, be there a greatest value or not.
  const Rational& value(std::size_t variable) const { return simplex_.value(variable); }
  // What was asked for last, and the multipliers of rows that prove the answer: see Simplex. Of a program
  // that is not feasible they bound sign * variable outside of its range.
  std::size_t variable() const { return simplex_.variable(); }
  int sign() const { return simplex_.sign(); }
  std::vector<Rational> multipliers() const { return simplex_.multipliers(); }

 private:
  Simplex<Rational> simplex_;
  bool feasible_;
};

}  // namespace latbox::complete
