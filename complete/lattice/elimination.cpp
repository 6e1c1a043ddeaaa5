#include "complete/lattice/elimination.h"

#include <utility>

namespace latbox::complete {
namespace {

// Row p takes the place of one that has 0 in column p; false if all have.
bool findPivot(IntegerMatrix& matrix, std::size_t p, bool& odd) {
  std::size_t row = p;
  while (row < matrix.size() && matrix[row][p] == 0) ++row;
  if (row == matrix.size()) return false;
  if (row != p) {
    std::swap(matrix[row], matrix[p]);
    odd = !odd;
  }
  return true;
}

// One step of Bareiss' elimination; all quotients are whole. Columns may be more than rows.
void eliminateBelow(IntegerMatrix& matrix, std::size_t p, const Integer& previous) {
  for (std::size_t i = p + 1; i < matrix.size(); ++i) {
    for (std::size_t j = p + 1; j < matrix[i].size(); ++j) {
      Integer value = matrix[p][p] * matrix[i][j];
      value -= matrix[i][p] * matrix[p][j];
      mpz_divexact(matrix[i][j].get_mpz_t(), value.get_mpz_t(), previous.get_mpz_t());
    }
    matrix[i][p] = 0;
  }
}

// A row that is reduced by those before it, with its first nonzero column.
struct Echelon {
  std::vector<Rational> row;
  std::size_t pivot;
};

void reduceBy(const std::vector<Echelon>& echelon, std::vector<Rational>& row) {
  for (const Echelon& earlier : echelon) {
    const Rational factor = row[earlier.pivot];
    if (factor == 0) continue;
    for (std::size_t j = earlier.pivot; j < row.size(); ++j)
      if (earlier.row[j] != 0) row[j] -= factor * earlier.row[j];
  }
}

}  // namespace

Integer innerProduct(const IntegerVector& a, const IntegerVector& b) {
  Integer sum = 0;
  for (std::size_t j = 0; j < a.size(); ++j) mpz_addmul(sum.get_mpz_t(), a[j].get_mpz_t(), b[j].get_mpz_t());
  return sum;
}

IntegerMatrix gram(const IntegerMatrix& rows) {
  IntegerMatrix products(rows.size(), IntegerVector(rows.size()));
  for (std::size_t i = 0; i < rows.size(); ++i)
    for (std::size_t j = 0; j <= i; ++j) products[i][j] = products[j][i] = innerProduct(rows[i], rows[j]);
  return products;
}

Integer determinant(IntegerMatrix matrix) {
  Integer previous = 1;
  bool odd = false;
  for (std::size_t p = 0; p < matrix.size(); ++p) {
    if (!findPivot(matrix, p, odd)) return 0;
    eliminateBelow(matrix, p, previous);
    previous = matrix[p][p];
  }
  return odd ? Integer(-previous) : previous;
}

std::vector<Rational> solveSquare(const IntegerMatrix& matrix, const IntegerVector& side) {
  IntegerMatrix work = matrix;
  for (std::size_t i = 0; i < work.size(); ++i) work[i].push_back(side[i]);
  Integer previous = 1;
  bool odd = false;
  for (std::size_t p = 0; p < work.size(); ++p) {
    findPivot(work, p, odd);
    eliminateBelow(work, p, previous);
    previous = work[p][p];
  }
  std::vector<Rational> y(work.size());
  for (std::size_t i = work.size(); i-- > 0;) {
    Rational rest(work[i].back());
    for (std::size_t j = i + 1; j < work.size(); ++j) rest -= work[i][j] * y[j];
    y[i] = rest / work[i][i];
  }
  return y;
}

// Bareiss' elimination above the diagonal as well: all its numbers are minors, so that it ends with the
// determinant on the whole diagonal.
IntegerMatrix solveUnimodular(IntegerMatrix matrix, const IntegerMatrix& sides) {
  const std::size_t k = matrix.size();
  for (std::size_t i = 0; i < k; ++i) matrix[i].insert(matrix[i].end(), sides[i].begin(), sides[i].end());
  Integer previous = 1;
  bool odd = false;
  for (std::size_t p = 0; p < k; ++p) {
    findPivot(matrix, p, odd);
    for (std::size_t i = 0; i < k; ++i) {
      if (i == p) continue;
      const Integer factor = matrix[i][p];
      for (std::size_t j = p + 1; j < matrix[i].size(); ++j) {
        Integer& entry = matrix[i][j];
        entry *= matrix[p][p];
        mpz_submul(entry.get_mpz_t(), factor.get_mpz_t(), matrix[p][j].get_mpz_t());
        mpz_divexact(entry.get_mpz_t(), entry.get_mpz_t(), previous.get_mpz_t());
      }
      matrix[i][p] = 0;
    }
    previous = matrix[p][p];
  }
  IntegerMatrix solution;
  for (IntegerVector& row : matrix) {
    solution.emplace_back(row.begin() + static_cast<std::ptrdiff_t>(k), row.end());
    // The determinant is its own inverse.
    for (Integer& entry : solution.back()) entry *= previous;
  }
  return solution;
}

std::optional<std::vector<std::size_t>> independentRows(const IntegerMatrix& rows,
                                                        const IntegerVector& sides) {
  std::vector<std::size_t> kept;
  std::vector<Echelon> echelon;
  for (std::size_t i = 0; i < rows.size(); ++i) {
    std::vector<Rational> row(rows[i].begin(), rows[i].end());
    row.emplace_back(sides[i]);
    reduceBy(echelon, row);
    std::size_t pivot = 0;
    while (pivot < row.size() && row[pivot] == 0) ++pivot;
    if (pivot == row.size()) continue;
    // 0 = something else than 0.
    if (pivot + 1 == row.size()) return std::nullopt;
    const Rational lead = row[pivot];
    for (Rational& value : row) value /= lead;
    echelon.push_back({std::move(row), pivot});
    kept.push_back(i);
  }
  return kept;
}

}  // namespace latbox::complete
