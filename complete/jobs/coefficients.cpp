#include "complete/jobs/coefficients.h"

#include <algorithm>
#include <numeric>

#include "complete/elimination.h"
#include "complete/kernel.h"

namespace latbox::complete::jobs {
namespace {

// The equations of the program alone, in its free variables.
IntegerMatrix ownEquations(const BoxLattice& lattice) {
  IntegerMatrix rows(lattice.equations.begin(),
                     lattice.equations.end() - static_cast<std::ptrdiff_t>(lattice.rows.size()));
  for (IntegerVector& row : rows) row.resize(lattice.variables.size());
  return rows;
}

IntegerMatrix inverseOf(const IntegerMatrix& unimodular) {
  const std::size_t n = unimodular.size();
  IntegerMatrix unit(n, IntegerVector(n));
  for (std::size_t j = 0; j < n; ++j) unit[j][j] = 1;
  return solveUnimodular(unimodular, unit);
}

}  // namespace

PieceLattice withDual(BoxLattice lattice) {
  const std::size_t n = lattice.variables.size();
  const std::size_t k = lattice.rank();
  Split split = splitByKernel(ownEquations(lattice), n);
  IntegerMatrix unimodular = std::move(split.kernel);
  unimodular.insert(unimodular.end(), split.others.begin(), split.others.end());
  const IntegerMatrix inverse = inverseOf(unimodular);
  IntegerMatrix kernelDual(k, IntegerVector(n));
  for (std::size_t i = 0; i < k; ++i)
    for (std::size_t j = 0; j < n; ++j) kernelDual[i][j] = inverse[j][i];
  IntegerMatrix transposed(k, IntegerVector(k));
  for (std::size_t i = 0; i < k; ++i)
    for (std::size_t j = 0; j < k; ++j)
      for (std::size_t c = 0; c < n; ++c) transposed[i][j] += lattice.basis[j][c] * kernelDual[i][c];
  IntegerMatrix dual = solveUnimodular(std::move(transposed), kernelDual);
  return {std::move(lattice), std::move(dual)};
}

Coefficients::Coefficients(const PieceLattice& lattice) : lattice_(lattice) {
  for (const IntegerVector& row : lattice.dual) {
    own_.emplace_back(0);
    for (std::size_t c = 0; c < row.size(); ++c) own_.back() += row[c] * lattice.box.point[c];
  }
  listShort();
}

// Points are in the box; whatever is not is left to GMP.
void Coefficients::listShort() {
  constexpr unsigned DIGITS = 62;
  const BoxLattice& box = lattice_.box;
  for (const IntegerVector& row : lattice_.dual) {
    Integer most = 0;
    for (std::size_t c = 0; c < row.size(); ++c)
      most += abs(row[c]) * std::max<Integer>(abs(box.low[c]), abs(box.high[c]));
    if (mpz_sizeinbase(most.get_mpz_t(), 2) > DIGITS) {
      words_.clear();
      return;
    }
    std::vector<long>& words = words_.emplace_back();
    for (const Integer& value : row) {
      if (!value.fits_slong_p()) {
        words_.clear();
        return;
      }
      words.push_back(value.get_si());
    }
  }
}

std::vector<long> Coefficients::wordsOf(const IntegerVector& z) const {
  const BoxLattice& box = lattice_.box;
  if (words_.empty()) return {};
  std::vector<long> words(box.variables.size());
  for (std::size_t c = 0; c < words.size(); ++c) {
    const Integer& value = z[box.variables[c]];
    if (value < box.low[c] || value > box.high[c] || !value.fits_slong_p()) return {};
    words[c] = value.get_si();
  }
  return words;
}

Integer Coefficients::at(std::size_t i, const IntegerVector& z) const {
  return at(i, z, wordsOf(z));
}

Integer Coefficients::at(std::size_t i, const IntegerVector& z, const std::vector<long>& words) const {
  if (!words.empty()) {
    const std::vector<long>& row = words_[i];
    return std::inner_product(row.begin(), row.end(), words.begin(), 0l) - own_[i];
  }
  const IntegerVector& row = lattice_.dual[i];
  Integer sum = -own_[i];
  for (std::size_t c = 0; c < row.size(); ++c)
    mpz_addmul(sum.get_mpz_t(), row[c].get_mpz_t(), z[lattice_.box.variables[c]].get_mpz_t());
  return sum;
}

bool Coefficients::isIn(const Piece& piece, const IntegerVector& z, Known& known) const {
  if (piece.empty()) return true;
  std::size_t level = lattice_.box.rank();
  for (std::size_t i = 0; i < piece.size() && level > 0; ++i) {
    const Choice& choice = piece[i];
    std::optional<Integer>& coefficient = known.coefficients[--level];
    if (!coefficient) coefficient = at(level, z, known.words);
    if (!choice.closedUp && *coefficient >= choice.up) return true;
    if (!choice.closedDown && *coefficient <= choice.down) return true;
    if (i + 1 == piece.size() || *coefficient != choice.chosen) return false;
  }
  return false;
}

bool Coefficients::isIn(const std::vector<Piece>& pieces, const IntegerVector& z) const {
  if (pieces.empty()) return false;
  Known known{std::vector<std::optional<Integer>>(lattice_.box.rank()), wordsOf(z)};
  for (const Piece& piece : pieces)
    if (isIn(piece, z, known)) return true;
  return false;
}

}  // namespace latbox::complete::jobs
