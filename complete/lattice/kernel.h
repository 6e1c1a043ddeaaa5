// All whole solutions of a system of equations: a point and a basis of the kernel, with the proof that it is
// one.
#pragma once

#include <optional>

#include "complete/program/integer_program.h"

namespace latbox::complete {

// x is a whole solution if and only if it is point + a whole combination of the rows of basis.
struct WholeSolutions {
  IntegerVector point;
  IntegerMatrix basis;
};

// A unimodular matrix in two parts: a basis of the kernel of the equations A, and others, C, with H = A C^T,
// whose determinant is not 0.
struct Split {
  IntegerMatrix kernel;
  IntegerMatrix others;
  IntegerMatrix images;
};

// Requires linearly independent rows of `columns` columns each. Throws ReductionFailure.
Split splitByKernel(const IntegerMatrix& equations, std::size_t columns);

// Requires linearly independent rows of `columns` columns each. Nothing: there is no whole solution, by
// proof.
//
// LLL on the rows (e_j, N a_j), a_j the j-th column of the system A, with a large N, brings the vectors with
// A x = 0 to the front: K; the others are C. Let H = A C^T. Then (det [K; C])^2 det(A A^T) = det(K K^T) (det
// H)^2, so that det(K K^T) (det H)^2 = det(A A^T) proves that [K; C] is unimodular: every whole x is a
// combination u K + y C, and A x = b says H y = b, which has one solution y. K is the kernel, and y is whole
// or there is no whole solution. Throws ReductionFailure where no N brings such a matrix.
std::optional<WholeSolutions> wholeSolutions(const IntegerMatrix& equations, const IntegerVector& sides,
                                             std::size_t columns);

// Whether all rows x keep A x = 0.
bool isInKernel(const IntegerMatrix& equations, const IntegerMatrix& rows);

// Whether `other` generates the same lattice as `basis`: as many rows, all in the kernel of `equations`, of
// which `basis` is a basis, and the same determinant.
bool isSameKernel(const IntegerMatrix& equations, const IntegerMatrix& basis, const IntegerMatrix& other);

}  // namespace latbox::complete
