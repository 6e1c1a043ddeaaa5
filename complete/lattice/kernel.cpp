#include "complete/lattice/kernel.h"

#include "complete/lattice/elimination.h"
#include "complete/lattice/reduction.h"

namespace latbox::complete {
namespace {

constexpr int ATTEMPTS = 4;

// The kernel has a basis no longer than about the product of the rows' lengths; times the factor that LLL may
// lose.
std::size_t multiplierBits(const IntegerMatrix& equations, std::size_t columns) {
  std::size_t bits = columns + 10;
  for (const IntegerVector& row : equations)
    bits += mpz_sizeinbase(innerProduct(row, row).get_mpz_t(), 2) / 2 + 1;
  return bits;
}

// A C^T.
IntegerMatrix images(const IntegerMatrix& equations, const IntegerMatrix& others) {
  IntegerMatrix products(equations.size(), IntegerVector(others.size()));
  for (std::size_t i = 0; i < equations.size(); ++i)
    for (std::size_t j = 0; j < others.size(); ++j) products[i][j] = innerProduct(equations[i], others[j]);
  return products;
}

// Before it is known to be unimodular.
Split splitByReduction(const IntegerMatrix& equations, std::size_t columns, std::size_t bits) {
  IntegerMatrix rows(columns, IntegerVector(columns + equations.size()));
  for (std::size_t j = 0; j < columns; ++j) {
    rows[j][j] = 1;
    for (std::size_t i = 0; i < equations.size(); ++i) rows[j][columns + i] = equations[i][j] << bits;
  }
  reduceLLL(rows);
  Split split;
  for (IntegerVector& row : rows) {
    bool inKernel = true;
    for (std::size_t i = columns; i < row.size(); ++i) inKernel = inKernel && row[i] == 0;
    row.resize(columns);
    (inKernel ? split.kernel : split.others).push_back(std::move(row));
  }
  split.images = images(equations, split.others);
  return split;
}

bool isUnimodular(const IntegerMatrix& equations, const Split& split) {
  if (split.others.size() != equations.size() || !isInKernel(equations, split.kernel)) return false;
  const Integer side = determinant(split.images);
  return side != 0 && determinant(gram(split.kernel)) * side * side == determinant(gram(equations));
}

// y C, if y is whole.
std::optional<IntegerVector> pointOf(const IntegerMatrix& others, const std::vector<Rational>& y,
                                     std::size_t columns) {
  IntegerVector point(columns);
  for (std::size_t i = 0; i < y.size(); ++i) {
    if (y[i].get_den() != 1) return std::nullopt;
    for (std::size_t j = 0; j < columns; ++j) point[j] += y[i].get_num() * others[i][j];
  }
  return point;
}

}  // namespace

Split splitByKernel(const IntegerMatrix& equations, std::size_t columns) {
  std::size_t bits = multiplierBits(equations, columns);
  for (int attempt = 0; attempt < ATTEMPTS; ++attempt, bits *= 2) {
    Split split = splitByReduction(equations, columns, bits);
    if (isUnimodular(equations, split)) return split;
  }
  throw ReductionFailure("the kernel of the equations was not found");
}

std::optional<WholeSolutions> wholeSolutions(const IntegerMatrix& equations, const IntegerVector& sides,
                                             std::size_t columns) {
  Split split = splitByKernel(equations, columns);
  std::optional<IntegerVector> point = pointOf(split.others, solveSquare(split.images, sides), columns);
  if (!point) return std::nullopt;
  return WholeSolutions{std::move(*point), std::move(split.kernel)};
}

bool isInKernel(const IntegerMatrix& equations, const IntegerMatrix& rows) {
  for (const IntegerVector& row : rows)
    for (const IntegerVector& equation : equations)
      if (innerProduct(equation, row) != 0) return false;
  return true;
}

bool isSameKernel(const IntegerMatrix& equations, const IntegerMatrix& basis, const IntegerMatrix& other) {
  return basis.size() == other.size() && isInKernel(equations, other) &&
         determinant(gram(basis)) == determinant(gram(other));
}

}  // namespace latbox::complete
