#include "complete/jobs/coefficients.h"

#include <algorithm>
#include <numeric>

#include "complete/lattice/elimination.h"
#include "complete/lattice/kernel.h"

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

// `known` has the coefficients that were asked for, one for each level; `at` those of all.
template <class Known, class At>
bool isInPiece(const Piece& piece, Known& known, const At& at) {
  if (piece.empty()) return true;
  std::size_t level = known.size();
  for (std::size_t i = 0; i < piece.size() && level > 0; ++i) {
    const Choice& choice = piece[i];
    auto& coefficient = known[--level];
    if (!coefficient) coefficient = at(level);
    if (!choice.closedUp && *coefficient >= choice.up) return true;
    if (!choice.closedDown && *coefficient <= choice.down) return true;
    if (i + 1 == piece.size() || *coefficient != choice.chosen) return false;
  }
  return false;
}

template <class Known, class At>
bool isInAny(const std::vector<Piece>& pieces, Known& known, const At& at) {
  return std::any_of(pieces.begin(), pieces.end(),
                     [&](const Piece& piece) { return isInPiece(piece, known, at); });
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
  isShort_ = listShort();
}

// Sums of products, and what is taken off them, are below 2^62: their difference is a word too.
bool Coefficients::listShort() {
  const auto fits = [](const Integer& value) { return mpz_sizeinbase(value.get_mpz_t(), 2) <= 62; };
  const BoxLattice& box = lattice_.box;
  for (std::size_t c = 0; c < box.variables.size(); ++c) {
    if (!fits(box.low[c]) || !fits(box.high[c])) return false;
    shortBox_.emplace_back(box.low[c].get_si(), box.high[c].get_si());
  }
  for (std::size_t i = 0; i < lattice_.dual.size(); ++i) {
    Integer most = 0;
    std::vector<long>& row = shortDual_.emplace_back();
    for (std::size_t c = 0; c < box.variables.size(); ++c) {
      const Integer& value = lattice_.dual[i][c];
      most += abs(value) * std::max<Integer>(abs(box.low[c]), abs(box.high[c]));
      if (!fits(value)) return false;
      row.push_back(value.get_si());
    }
    if (!fits(most) || !fits(own_[i])) return false;
    shortOwn_.push_back(own_[i].get_si());
  }
  return true;
}

Integer Coefficients::at(std::size_t i, const IntegerVector& z) const {
  const IntegerVector& row = lattice_.dual[i];
  Integer sum = -own_[i];
  for (std::size_t c = 0; c < row.size(); ++c)
    mpz_addmul(sum.get_mpz_t(), row[c].get_mpz_t(), z[lattice_.box.variables[c]].get_mpz_t());
  return sum;
}

long Coefficients::at(std::size_t i, const Room& room) const {
  return std::inner_product(room.free.begin(), room.free.end(), shortDual_[i].begin(), -shortOwn_[i]);
}

bool Coefficients::isIn(const std::vector<Piece>& pieces, const IntegerVector& z) const {
  std::vector<std::optional<Integer>> known(lattice_.box.rank());
  return isInAny(pieces, known, [&](std::size_t i) { return at(i, z); });
}

bool Coefficients::enter(Room& room, const std::vector<long>& words) const {
  if (!isShort_) return false;
  const std::vector<std::size_t>& variables = lattice_.box.variables;
  room.free.resize(variables.size());
  for (std::size_t c = 0; c < variables.size(); ++c) {
    const long value = words[variables[c]];
    if (value < shortBox_[c].first || value > shortBox_[c].second) return false;
    room.free[c] = value;
  }
  room.known.assign(lattice_.box.rank(), std::nullopt);
  return true;
}

bool Coefficients::belong(const std::vector<Piece>& pieces, Room& room) const {
  return isInAny(pieces, room.known, [&](std::size_t i) { return at(i, room); });
}

}  // namespace latbox::complete::jobs
