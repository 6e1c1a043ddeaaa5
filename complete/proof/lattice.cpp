#include "complete/proof/lattice.h"

#include <map>

#include "complete/lattice/elimination.h"
#include "complete/lattice/equations.h"
#include "complete/lattice/reduction.h"
#include "complete/proof/equations.h"
#include "complete/proof/narrowing.h"
#include "complete/proof/nearest_plane.h"
#include "complete/proof/relaxing.h"
#include "complete/solving/preparation.h"

namespace latbox::complete::proof {
namespace {

constexpr int SMALL_BLOCK = 20;

class Builder {
 public:
  explicit Builder(Derivation& derivation) : d_(derivation) {}

  std::optional<ProofLattice> result() {
    do {
      narrow();
      if (d_.isContradiction()) return std::nullopt;
      equations_.emplace(d_);
    } while (!d_.isContradiction() && fixByKernel());
    if (d_.isContradiction()) return std::nullopt;
    build();
    return std::move(lattice_);
  }

 private:
  void narrow() {
    propagate(d_);
    if (hasOpenVariables(d_)) {
      closeVariables(d_);
      propagate(d_);
      if (!d_.isContradiction()) requireEnds();
    }
    if (!d_.isContradiction()) narrowByRelaxation(d_);
    if (!d_.isContradiction()) joinRows();
  }

  // Of the rows and variables that all points share a value divisibility may still say that there are none.
  void requireEnds() {
    if (!hasOpenVariables(d_)) return;
    const Equations equations(d_);
    if (d_.isContradiction()) return;
    std::string names;
    for (std::size_t j = 0; j < d_.box().size(); ++j)
      if (!d_.box()[j].isFinite()) names += (names.empty() ? "x" : ", x") + std::to_string(j + 1);
    throw NoProof("no bounds were derived for " + names);
  }

  // Rows that are the same but for a factor tell the first of them what they know.
  void joinRows() {
    std::map<IntegerVector, std::size_t> first;
    coordinates_.clear();
    for (std::size_t i = 0; i < d_.rows().size() && !d_.isContradiction(); ++i) {
      const Integer divisor = signedDivisorOf(i);
      if (divisor == 0) continue;
      IntegerVector key = d_.rows()[i];
      for (std::size_t j = 0; j < key.size(); ++j)
        key[j] = d_.box()[j].isFixed() ? Integer(0) : Integer(key[j] / divisor);
      const auto [place, isNew] = first.emplace(std::move(key), i);
      if (isNew) {
        coordinates_.push_back(i);
        continue;
      }
      Step step{Step::Kind::UPPER, {Form::Kind::ROW, place->second}, abs(divisor), 0, {}};
      step.terms.push_back({i, Integer(signedDivisorOf(place->second) * sgn(divisor))});
      divideByContent(step);
      d_.take(step);
      step.kind = Step::Kind::LOWER;
      d_.take(step);
    }
    std::erase_if(coordinates_, [this](std::size_t i) { return isImplied(d_, i); });
    for (const std::size_t i : coordinates_) {
      d_.take({Step::Kind::UPPER, {Form::Kind::ROW, i}, 1, 0, {}});
      d_.take({Step::Kind::LOWER, {Form::Kind::ROW, i}, 1, 0, {}});
    }
    std::erase_if(coordinates_, [this](std::size_t i) { return d_.ranges()[i].isFixed(); });
  }

  // Positive, if the first free coefficient is.
  Integer signedDivisorOf(std::size_t row) const {
    const Integer divisor = divisorOf(d_, row);
    for (std::size_t j = 0; j < d_.box().size(); ++j)
      if (!d_.box()[j].isFixed() && d_.rows()[row][j] != 0) return sgn(d_.rows()[row][j]) * divisor;
    return 0;
  }

  // True: there is less to be found than before.
  bool fixByKernel() {
    bool fixed = false;
    const std::vector<std::size_t>& variables = equations_->variables();
    for (std::size_t j = 0; j < variables.size() && !d_.isContradiction(); ++j) {
      IntegerVector unit(variables.size());
      unit[j] = 1;
      fixed = equations_->fix({Form::Kind::VARIABLE, variables[j]}, unit) || fixed;
    }
    for (const std::size_t i : coordinates_)
      if (!d_.isContradiction() && !d_.ranges()[i].isFixed())
        fixed = equations_->fix({Form::Kind::ROW, i}, partOf(d_.rows()[i], variables)) || fixed;
    return fixed;
  }

  void build() {
    listColumns();
    listEquations();
    takeClasses();
    const std::size_t n = equations_->variables().size();
    IntegerMatrix unimodular = equations_->split().kernel;
    const IntegerMatrix& others = equations_->split().others;
    unimodular.insert(unimodular.end(), others.begin(), others.end());
    IntegerMatrix unit(n, IntegerVector(n));
    for (std::size_t j = 0; j < n; ++j) unit[j][j] = 1;
    const IntegerMatrix inverse = solveUnimodular(unimodular, unit);
    listOrthogonal(inverse);
    if (lattice_.rank() > 0) chooseBasis();
    listDual(inverse);
  }

  void chooseBasis() {
    reduceAgain(lattice_.box, SMALL_BLOCK, 0);
    Prepared best = bestBasisOf(std::move(lattice_.box));
    lattice_.box = std::move(best.lattice);
    lattice_.nodes = best.nodes;
  }

  void listColumns() {
    BoxLattice& box = lattice_.box;
    box.fixed.resize(d_.box().size());
    for (std::size_t j = 0; j < d_.box().size(); ++j)
      if (d_.box()[j].isFixed()) box.fixed[j] = *d_.box()[j].low;
    box.variables = equations_->variables();
    box.point = equations_->point();
    box.basis = equations_->split().kernel;
    for (const std::size_t j : box.variables) addRange(d_.box()[j]);
    lattice_.equations = equations_->rows();
    lattice_.coordinates = coordinates_;
    for (const std::size_t i : coordinates_) {
      Row row{partOf(d_.rows()[i], box.variables), d_.ranges()[i]};
      Integer value = innerProduct(d_.rows()[i], box.fixed);
      value += innerProduct(row.a, equations_->point());
      box.point.push_back(value);
      for (std::size_t k = 0; k < box.basis.size(); ++k)
        box.basis[k].push_back(innerProduct(row.a, equations_->split().kernel[k]));
      addRange(d_.ranges()[i]);
      box.rows.push_back(std::move(row));
    }
  }

  void addRange(const Range& range) {
    lattice_.box.low.push_back(*range.low);
    lattice_.box.high.push_back(*range.high);
  }

  void listEquations() {
    BoxLattice& box = lattice_.box;
    for (const std::size_t i : lattice_.equations)
      box.equations.push_back(partOf(d_.rows()[i], box.variables));
    for (std::size_t r = 0; r < box.rows.size(); ++r) {
      box.equations.push_back(box.rows[r].a);
      box.equations.back().resize(box.variables.size() + r);
      box.equations.back().emplace_back(-1);
    }
    for (IntegerVector& equation : box.equations) {
      equation.resize(box.coordinates());
      box.sides.push_back(innerProduct(equation, box.point));
    }
  }

  void takeClasses() {
    BoxLattice& box = lattice_.box;
    for (std::size_t c = 0; c < box.coordinates(); ++c) {
      Integer step = 0;
      for (const IntegerVector& row : box.basis) step = gcd(step, row[c]);
      Integer rest;
      mpz_fdiv_r(rest.get_mpz_t(), Integer(box.point[c] - box.low[c]).get_mpz_t(), step.get_mpz_t());
      box.low[c] += rest;
      mpz_fdiv_r(rest.get_mpz_t(), Integer(box.high[c] - box.point[c]).get_mpz_t(), step.get_mpz_t());
      box.high[c] -= rest;
    }
  }

  IntegerVector widths() const {
    IntegerVector widths;
    for (std::size_t c = 0; c < lattice_.columns(); ++c) widths.push_back(lattice_.width(c));
    return widths;
  }

  // The columns of the inverse behind the kernel's, and of each coordinate the row that makes it.
  void listOrthogonal(const IntegerMatrix& inverse) {
    const BoxLattice& box = lattice_.box;
    const std::size_t n = box.variables.size();
    for (std::size_t i = box.rank(); i < n; ++i) {
      lattice_.orthogonal.emplace_back(box.coordinates());
      for (std::size_t j = 0; j < n; ++j) lattice_.orthogonal.back()[j] = inverse[j][i];
    }
    for (std::size_t i = lattice_.equations.size(); i < box.equations.size(); ++i)
      lattice_.orthogonal.push_back(box.equations[i]);
    const IntegerVector weights = widths();
    for (IntegerVector& row : lattice_.orthogonal)
      for (std::size_t c = 0; c < row.size(); ++c) row[c] *= weights[c];
    reduceLLL(lattice_.orthogonal);
    for (IntegerVector& row : lattice_.orthogonal)
      for (std::size_t c = 0; c < row.size(); ++c) row[c] /= weights[c];
  }

  // With basis = T kernel the vectors dual to the kernel become the inverse of T transposed times them.
  void listDual(const IntegerMatrix& inverse) {
    const BoxLattice& box = lattice_.box;
    const std::size_t k = box.rank();
    IntegerMatrix kernelDual(k, IntegerVector(box.coordinates()));
    for (std::size_t i = 0; i < k; ++i)
      for (std::size_t j = 0; j < box.variables.size(); ++j) kernelDual[i][j] = inverse[j][i];
    IntegerMatrix transposed(k, IntegerVector(k));
    for (std::size_t i = 0; i < k; ++i)
      for (std::size_t j = 0; j < k; ++j) transposed[i][j] = innerProduct(box.basis[j], kernelDual[i]);
    lattice_.dual = solveUnimodular(std::move(transposed), kernelDual);
    const NearestPlane plane(lattice_.orthogonal, widths());
    for (IntegerVector& row : lattice_.dual) plane.reduce(row, 1);
  }

  Derivation& d_;
  std::optional<Equations> equations_;
  std::vector<std::size_t> coordinates_;
  ProofLattice lattice_;
};

}  // namespace

std::optional<ProofLattice> latticeOf(Derivation& derivation) {
  return Builder(derivation).result();
}

}  // namespace latbox::complete::proof
