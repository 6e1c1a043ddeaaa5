// Bounds of variables and rows by linear programming: proposed in double, proven in whole numbers.
//
// For whatever numbers y_i and any vector c, every point of a program keeps
//
//   c z = sum y_i (a_i z) + sum r_j z_j  with  r = c - sum y_i a_i,
//
// and each term has a greatest value by the range of its row or its variable: the sum of these bounds c z.
// The simplex method in double brings the y for which that bound is best; doubles are dyadic, so that with a
// common power of two all is whole. Rounding costs narrowness, never truth. Simplex steps over the rationals
// would take a hundred times as long.
//
// Cost: rows x columns for each step and each proof, and some steps for each bound that no vertex on the way
// has shown to be attained.
#pragma once

#include "complete/linear/simplex.h"
#include "complete/program/integer_program.h"

namespace latbox::complete {

// Some milliseconds.
inline constexpr unsigned long RELAXATION_EFFORT = 4'000'000;

// Variables are numbered: those of the program, then its rows.
class LinearBounds {
 public:
  // Requires finite ranges, none of them empty. The program must outlive this; its ranges may be narrowed
  // meanwhile. Gives up after about `effort` operations.
  LinearBounds(const IntegerProgram& program, unsigned long effort);

  // By proof.
  bool isEmpty() const { return isEmpty_; }
  // A bound of sign * variable that says more than the variable's own range, if one is found.
  std::optional<Integer> greatest(std::size_t variable, int sign);
  // What proves the last bound, or that there is no point: scale * sign * variable = sum y_i (a_i z) + rest
  // z, and each term is bounded by its range.
  struct Proof {
    std::size_t variable = 0;
    int sign = 1;
    Integer scale;
    IntegerVector y;
  };
  const Proof& proof() const { return proof_; }
  // What was done so far, in the units of the effort.
  unsigned long work() const { return simplex_.work(); }

 private:
  const Range& rangeOf(std::size_t variable) const;
  Simplex<double> scaled(unsigned long effort);
  void noteVertex();
  bool isAtEnd(std::size_t variable, int sign) const;
  std::optional<Integer> proven();
  Integer valueOf(const IntegerVector& y, const IntegerVector& rest) const;

  const IntegerProgram& program_;
  // Of the variables when all began: z[j] = low[j] + width[j] t[j]; rows are divided by 2^exponents[i].
  IntegerVector widths_;
  std::vector<long> exponents_;
  std::vector<Bounds<double>> bounds_;
  Simplex<double> simplex_;
  // Variables that a vertex has shown at the end of their range.
  std::vector<bool> atHigh_;
  std::vector<bool> atLow_;
  Proof proof_;
  bool isEmpty_ = false;
  bool gaveUp_ = false;
};

// Narrows the ranges of rows to what the variables can reach, so that no side is open. False: a row cannot be
// kept. Requires finite ranges of all variables.
bool closeRows(IntegerProgram& program);

// Narrows the ranges of variables and rows to what the relaxation leaves, and closes open sides of rows, as
// far as a bounded effort goes; then tightens again. False: the program has no point, by proof. Requires
// finite ranges of all variables and a program as tighten leaves it.
bool narrowByRelaxation(IntegerProgram& program);

}  // namespace latbox::complete
