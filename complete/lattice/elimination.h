// Exact linear algebra without fractions of its own: determinants, independent rows, solutions.
#pragma once

#include <optional>

#include "complete/program/integer_program.h"

namespace latbox::complete {

// By Bareiss' elimination (Sylvester's identity and multistep integer-preserving Gaussian elimination, 1968);
// the determinant of no rows is 1. Requires a square matrix.
Integer determinant(IntegerMatrix matrix);

// M M^T.
IntegerMatrix gram(const IntegerMatrix& rows);

// The solution of the square system matrix * y = side. Requires the determinant not to be 0.
std::vector<Rational> solveSquare(const IntegerMatrix& matrix, const IntegerVector& side);

// X with matrix * X = sides. Requires a square matrix of determinant 1 or -1.
IntegerMatrix solveUnimodular(IntegerMatrix matrix, const IntegerMatrix& sides);

// Indices of rows that generate all rows; nothing if the system rows x = sides is contradictory over the
// rationals.
std::optional<std::vector<std::size_t>> independentRows(const IntegerMatrix& rows,
                                                        const IntegerVector& sides);

Integer innerProduct(const IntegerVector& a, const IntegerVector& b);

}  // namespace latbox::complete
