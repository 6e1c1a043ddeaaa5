#include "complete/lattice/short_basis.h"

#include <fplll.h>

#include <algorithm>

#include "complete/lattice/reduction.h"

namespace latbox::complete {
namespace {

// Reduction shortens rows, and between its steps they are longer by some bits.
constexpr long ENTRY_LIMIT = 1l << 40;
// A cube as good as whole numbers of these places make it.
constexpr int PLACES = 6;

// A share of the coordinates is stretched by so much before each new basis.
constexpr std::size_t STRETCHED = 5;
constexpr long STRETCH = 30;

constexpr int BLOCK = 20;
// Of block reduction over the whole basis. The first ones gain the most.
constexpr int TOURS = 4;

using FplllMatrix = fplll::ZZ_mat<long>;
using Whole = fplll::Z_NR<long>;
using Real = fplll::FP_NR<double>;

// What is reduced, with all that libfplll keeps about it.
class Reduction {
 public:
  explicit Reduction(const ShortMatrix& rows)
      : matrix_(matrixOf(rows)),
        gso_(matrix_, none_, none_, fplll::GSO_DEFAULT),
        lll_(gso_, 0.99, 0.51, fplll::LLL_DEFAULT) {
    gso_.update_gso();
  }

  bool reduceLLL() { return lll_.lll(); }

  bool reduceBlocks() {
    if (matrix_.get_rows() < BLOCK) return true;
    static std::vector<fplll::Strategy> pruned = strategies();
    fplll::BKZParam parameters(BLOCK, pruned);
    parameters.flags = fplll::BKZ_AUTO_ABORT | fplll::BKZ_MAX_LOOPS;
    parameters.max_loops = TOURS;
    // One attempt at each block: further ones would draw random numbers that all threads share.
    parameters.min_success_probability = 0.01;
    fplll::BKZReduction<Whole, Real> blocks(gso_, lll_, parameters);
    const auto turn = turnOfBlocks();
    blocks.bkz();
    return blocks.status == fplll::RED_SUCCESS || blocks.status == fplll::RED_BKZ_LOOPS_LIMIT;
  }

  ShortMatrix rows() {
    ShortMatrix result(static_cast<std::size_t>(matrix_.get_rows()),
                       std::vector<long>(static_cast<std::size_t>(matrix_.get_cols())));
    for (std::size_t i = 0; i < result.size(); ++i)
      for (std::size_t j = 0; j < result[i].size(); ++j) result[i][j] = at(matrix_, i, j);
    return result;
  }

 private:
  // Half of the levels of a block allow less and less, in a straight line.
  static std::vector<fplll::Strategy> strategies() {
    constexpr int LEAST = 10;
    std::vector<fplll::Strategy> result;
    for (int block = 0; block <= BLOCK; ++block) {
      result.push_back(fplll::Strategy::EmptyStrategy(static_cast<std::size_t>(block)));
      if (block >= LEAST)
        result.back().pruning_parameters = {fplll::PruningParams::LinearPruningParams(block, block / 2)};
    }
    return result;
  }

  static long& at(FplllMatrix& matrix, std::size_t i, std::size_t j) {
    return matrix[static_cast<int>(i)][static_cast<int>(j)].get_data();
  }

  static FplllMatrix matrixOf(const ShortMatrix& rows) {
    FplllMatrix matrix(static_cast<int>(rows.size()), static_cast<int>(rows.front().size()));
    for (std::size_t i = 0; i < rows.size(); ++i)
      for (std::size_t j = 0; j < rows[i].size(); ++j) at(matrix, i, j) = rows[i][j];
    return matrix;
  }

  FplllMatrix matrix_;
  FplllMatrix none_;
  fplll::MatGSO<Whole, Real> gso_;
  fplll::LLLReduction<Whole, Real> lll_;
};

// Coordinates that random numbers choose, each once.
std::vector<std::size_t> chosen(std::size_t from, std::size_t count, std::mt19937_64& random) {
  std::vector<std::size_t> all(from);
  for (std::size_t j = 0; j < from; ++j) all[j] = j;
  for (std::size_t i = 0; i < count; ++i) std::swap(all[i], all[i + random() % (from - i)]);
  all.resize(count);
  return all;
}

}  // namespace

std::optional<ShortBasis> shortBasisOf(const BoxLattice& lattice) {
  ShortBasis result;
  Integer widest = 0;
  Integer common = 0;
  for (std::size_t j = 0; j < lattice.coordinates(); ++j)
    widest = std::max(widest, Integer(lattice.high[j] - lattice.low[j]));
  IntegerVector multipliers;
  for (std::size_t j = 0; j < lattice.coordinates(); ++j) {
    multipliers.push_back((widest << PLACES) / (lattice.high[j] - lattice.low[j]));
    common = gcd(common, multipliers.back());
  }
  for (Integer& multiplier : multipliers) {
    multiplier /= common;
    if (multiplier > ENTRY_LIMIT) return std::nullopt;
    result.multipliers.push_back(multiplier.get_si());
  }
  for (const IntegerVector& row : lattice.basis) {
    result.rows.emplace_back();
    for (std::size_t j = 0; j < row.size(); ++j) {
      const Integer entry = row[j] * multipliers[j];
      if (abs(entry) > ENTRY_LIMIT) return std::nullopt;
      result.rows.back().push_back(entry.get_si());
    }
  }
  return result;
}

// The basis of a cube that is stretched in some directions is another one from its first vector to its last:
// steps in these directions come last in it, and the first choices of a walk are those of the variables that
// random numbers have chosen. Adding rows to each other instead and reducing them brings back the old basis
// unless they are mixed so much that to reduce them takes several times as long.
std::optional<ShortMatrix> newBasis(const ShortBasis& from, std::mt19937_64& random) {
  const std::size_t n = from.multipliers.size();
  const std::vector<std::size_t> stretched = chosen(n, (n + STRETCHED - 1) / STRETCHED, random);
  ShortMatrix rows = from.rows;
  for (std::vector<long>& row : rows)
    for (const std::size_t j : stretched) row[j] *= STRETCH;
  try {
    Reduction other(rows);
    if (!other.reduceLLL()) return std::nullopt;
    rows = other.rows();
    for (std::vector<long>& row : rows)
      for (const std::size_t j : stretched) row[j] /= STRETCH;
    Reduction whole(rows);
    if (!whole.reduceLLL() || !whole.reduceBlocks()) return std::nullopt;
    return whole.rows();
  } catch (const std::runtime_error&) {
    // Its way to say that double does not do.
    return std::nullopt;
  }
}

IntegerMatrix inLattice(const ShortBasis& basis, const ShortMatrix& rows) {
  IntegerMatrix result;
  for (const std::vector<long>& row : rows) {
    result.emplace_back();
    for (std::size_t j = 0; j < row.size(); ++j) result.back().emplace_back(row[j] / basis.multipliers[j]);
  }
  return result;
}

}  // namespace latbox::complete
