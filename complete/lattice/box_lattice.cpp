#include "complete/lattice/box_lattice.h"

#include <algorithm>

#include "complete/lattice/elimination.h"
#include "complete/lattice/equations.h"
#include "complete/lattice/reduction.h"
#include "complete/linear/linear_bounds.h"
#include "complete/program/presolve.h"

namespace latbox::complete {
namespace {

// Blocks of this size are reduced in less time than the search then takes, where it takes any.
constexpr int SMALL_BLOCK = 20;

class Builder {
 public:
  explicit Builder(IntegerProgram& program) : p_(program) {}

  std::optional<BoxLattice> result() {
    do {
      lattice_ = {};
      if (!tighten(p_) || !narrowByRelaxation(p_)) return std::nullopt;
      listFixed();
      if (!solveEquations()) return std::nullopt;
      addRows();
      if (!useResidues()) return std::nullopt;
    } while (again_);
    listEquations();
    return std::move(lattice_);
  }

 private:
  void listFixed() {
    lattice_.fixed.resize(p_.box.size());
    for (std::size_t j = 0; j < p_.box.size(); ++j)
      if (p_.box[j].isFixed()) lattice_.fixed[j] = *p_.box[j].low;
  }

  IntegerVector free(const Row& row) const { return partOf(row.a, lattice_.variables); }

  bool solveEquations() {
    auto equations = equationsOf(p_);
    if (!equations) return false;
    auto solutions = equations->solutions();
    if (!solutions) return false;
    equations_ = std::move(equations->rows);
    lattice_.variables = std::move(equations->variables);
    lattice_.point = std::move(solutions->point);
    lattice_.basis = std::move(solutions->basis);
    return true;
  }

  // The values of inequations become coordinates.
  void addRows() {
    rowIndices_.clear();
    const IntegerVector point = lattice_.point;
    const IntegerMatrix basis = lattice_.basis;
    for (const std::size_t j : lattice_.variables) addRange(p_.box[j]);
    for (std::size_t i = 0; i < p_.rows.size(); ++i) {
      const Row& row = p_.rows[i];
      if (row.range.isFixed()) continue;
      const IntegerVector a = free(row);
      rowIndices_.push_back(i);
      addRange(row.range);
      lattice_.point.push_back(innerProduct(a, point));
      for (std::size_t k = 0; k < basis.size(); ++k) lattice_.basis[k].push_back(innerProduct(a, basis[k]));
    }
  }

  void addRange(const Range& range) {
    lattice_.low.push_back(*range.low);
    lattice_.high.push_back(*range.high);
  }

  void listEquations() {
    const std::size_t n = lattice_.variables.size();
    lattice_.equations = equations_;
    for (std::size_t r = 0; r < lattice_.rows.size(); ++r) {
      lattice_.equations.push_back(free(lattice_.rows[r]));
      lattice_.equations.back().resize(n + r);
      lattice_.equations.back().emplace_back(-1);
    }
    for (IntegerVector& equation : lattice_.equations) {
      equation.resize(lattice_.coordinates());
      lattice_.sides.push_back(innerProduct(equation, lattice_.point));
    }
  }

  // In the lattice a coordinate takes values of one residue class only. Where one value is left, the program
  // gets a fixed variable or an equation more, and all begins again; a constant coordinate is dropped. False:
  // no value is left.
  bool useResidues() {
    again_ = false;
    std::vector<std::size_t> constants;
    for (std::size_t j = 0; j < lattice_.coordinates(); ++j) {
      Integer step = 0;
      for (const IntegerVector& row : lattice_.basis) step = gcd(step, row[j]);
      if (!narrow(j, step)) return false;
      if (step == 0) constants.push_back(j);
    }
    if (again_) return true;
    for (std::size_t c = constants.size(); c-- > 0;) dropRow(constants[c]);
    for (const std::size_t i : rowIndices_) lattice_.rows.push_back(p_.rows[i]);
    return true;
  }

  bool narrow(std::size_t j, const Integer& step) {
    Integer& low = lattice_.low[j];
    Integer& high = lattice_.high[j];
    const Integer& value = lattice_.point[j];
    if (step == 0) {
      if (value < low || value > high) return false;
      // A variable that is the same in all points; of a row nothing is left to ask.
      if (j < lattice_.variables.size()) fix(j, value, value);
      return true;
    }
    low += floorMod(value - low, step);
    high -= floorMod(high - value, step);
    if (low > high) return false;
    if (low == high) fix(j, low, high);
    return true;
  }

  static Integer floorMod(const Integer& value, const Integer& step) {
    Integer rest;
    mpz_fdiv_r(rest.get_mpz_t(), value.get_mpz_t(), step.get_mpz_t());
    return rest;
  }

  void fix(std::size_t j, const Integer& low, const Integer& high) {
    const std::size_t n = lattice_.variables.size();
    (j < n ? p_.box[lattice_.variables[j]] : p_.rows[rowIndices_[j - n]].range) = {low, high};
    again_ = true;
  }

  void dropRow(std::size_t j) {
    const auto at = static_cast<std::ptrdiff_t>(j);
    for (IntegerVector* vector : {&lattice_.point, &lattice_.low, &lattice_.high})
      vector->erase(vector->begin() + at);
    for (IntegerVector& row : lattice_.basis) row.erase(row.begin() + at);
    rowIndices_.erase(rowIndices_.begin() + (at - static_cast<std::ptrdiff_t>(lattice_.variables.size())));
  }

  IntegerProgram& p_;
  BoxLattice lattice_;
  IntegerMatrix equations_;
  // The row of each coordinate behind the variables.
  std::vector<std::size_t> rowIndices_;
  bool again_ = false;
};

// Reduction where the box is a cube, as far as whole multipliers make it one.
class Reducer {
 public:
  explicit Reducer(BoxLattice& lattice) : lattice_(lattice) {}

  void reduce(int blockSize, unsigned long seed) {
    IntegerMatrix rows = lattice_.basis;
    const IntegerVector multipliers = cubeMultipliers();
    for (IntegerVector& row : rows)
      for (std::size_t j = 0; j < row.size(); ++j) row[j] *= multipliers[j];
    if (seed != 0) {
      std::mt19937_64 random(seed);
      scramble(rows, random);
    }
    reduceBlocks(rows, blockSize);
    for (IntegerVector& row : rows)
      for (std::size_t j = 0; j < row.size(); ++j) divideBack(row[j], multipliers[j]);
    if (!takeBasis(lattice_, rows)) throw ReductionFailure("the reduced basis is another lattice's");
  }

 private:
  IntegerVector cubeMultipliers() const {
    constexpr int PLACES = 6;
    Integer widest = 0;
    for (std::size_t j = 0; j < lattice_.coordinates(); ++j)
      widest = std::max(widest, Integer(lattice_.high[j] - lattice_.low[j]));
    IntegerVector multipliers;
    for (std::size_t j = 0; j < lattice_.coordinates(); ++j)
      multipliers.push_back((widest << PLACES) / (lattice_.high[j] - lattice_.low[j]));
    return multipliers;
  }

  static void divideBack(Integer& value, const Integer& multiplier) {
    if (!mpz_divisible_p(value.get_mpz_t(), multiplier.get_mpz_t()))
      throw ReductionFailure("the reduced basis is another lattice's");
    value /= multiplier;
  }

  BoxLattice& lattice_;
};

}  // namespace

bool takeBasis(BoxLattice& lattice, const IntegerMatrix& rows) {
  for (const IntegerVector& row : rows)
    if (row.size() != lattice.coordinates()) return false;
  if (!isSameKernel(lattice.equations, lattice.basis, rows)) return false;
  lattice.basis = rows;
  return true;
}

void reduceAgain(BoxLattice& lattice, int blockSize, unsigned long seed) {
  Reducer(lattice).reduce(blockSize, seed);
}

std::optional<BoxLattice> unreducedLatticeOf(IntegerProgram program) {
  return Builder(program).result();
}

std::optional<BoxLattice> boxLatticeOf(IntegerProgram program) {
  auto lattice = unreducedLatticeOf(std::move(program));
  if (lattice) reduceAgain(*lattice, SMALL_BLOCK, 0);
  return lattice;
}

}  // namespace latbox::complete
