#include "complete/proof/equations.h"

#include "complete/lattice/elimination.h"
#include "complete/lattice/equations.h"

namespace latbox::complete::proof {
namespace {

// A row reduced by those before it, behind it its side; what it is made of, one count for each row so far.
struct Echelon {
  std::vector<Rational> entries;
  std::vector<Rational> counts;
  std::size_t pivot;
};

void subtract(std::vector<Rational>& a, const Rational& factor, const std::vector<Rational>& b) {
  if (a.size() < b.size()) a.resize(b.size());
  for (std::size_t j = 0; j < b.size(); ++j)
    if (b[j] != 0) a[j] -= factor * b[j];
}

}  // namespace

Equations::Equations(Derivation& derivation) : d_(derivation) {
  for (std::size_t j = 0; j < d_.box().size(); ++j)
    if (!d_.box()[j].isFixed()) variables_.push_back(j);
  choose();
  if (!d_.isContradiction()) solve();
}

void Equations::choose() {
  std::vector<Echelon> echelon;
  for (std::size_t i = 0; i < d_.rows().size(); ++i) {
    if (!d_.ranges()[i].isFixed()) continue;
    const IntegerVector part = partOf(d_.rows()[i], variables_);
    Integer side = *d_.ranges()[i].low;
    for (std::size_t j = 0; j < d_.box().size(); ++j)
      if (d_.box()[j].isFixed()) side -= d_.rows()[i][j] * *d_.box()[j].low;
    Echelon row{{part.begin(), part.end()}, std::vector<Rational>(rows_.size() + 1), 0};
    row.entries.emplace_back(side);
    row.counts.back() = 1;
    for (const Echelon& earlier : echelon) {
      const Rational factor = row.entries[earlier.pivot];
      if (factor == 0) continue;
      subtract(row.entries, factor, earlier.entries);
      subtract(row.counts, factor, earlier.counts);
    }
    while (row.pivot < row.entries.size() && row.entries[row.pivot] == 0) ++row.pivot;
    if (row.pivot == row.entries.size()) continue;
    if (row.pivot + 1 == row.entries.size()) {
      contradict(i, row.counts);
      return;
    }
    const Rational lead = row.entries[row.pivot];
    for (Rational& value : row.entries) value /= lead;
    for (Rational& value : row.counts) value /= lead;
    echelon.push_back(std::move(row));
    rows_.push_back(i);
    a_.push_back(part);
    sides_.push_back(side);
  }
}

// The combination has no coefficients and a side other than 0.
void Equations::contradict(std::size_t row, const std::vector<Rational>& counts) {
  const Integer scale = commonDenominator(counts);
  std::vector<Term> terms;
  for (std::size_t i = 0; i < counts.size(); ++i)
    terms.push_back({i < rows_.size() ? rows_[i] : row, Rational(counts[i] * scale).get_num()});
  for (const Step::Kind kind : {Step::Kind::UPPER, Step::Kind::LOWER}) d_.take({kind, {}, 1, 0, terms});
}

void Equations::solve() {
  split_ = splitByKernel(a_, variables_.size());
  const std::vector<Rational> y = solveSquare(split_.images, sides_);
  point_.assign(variables_.size(), 0);
  for (std::size_t i = 0; i < y.size(); ++i) {
    if (y[i].get_den() != 1) {
      // y_i = u b for the i-th row u of the inverse, and u A is whole.
      IntegerVector unit(y.size());
      unit[i] = 1;
      const std::vector<Rational> u = multipliersOf(unit);
      const Integer scale = commonDenominator(u);
      d_.take({Step::Kind::CLASS, {}, scale, scale, termsOf(u, scale)});
      return;
    }
    for (std::size_t j = 0; j < point_.size(); ++j) point_[j] += y[i].get_num() * split_.others[i][j];
  }
}

// The y for which y A has these products with the others C.
std::vector<Rational> Equations::multipliersOf(const IntegerVector& products) const {
  const std::size_t m = rows_.size();
  IntegerMatrix transposed(m, IntegerVector(m));
  for (std::size_t i = 0; i < m; ++i)
    for (std::size_t j = 0; j < m; ++j) transposed[i][j] = split_.images[j][i];
  return solveSquare(transposed, products);
}

std::vector<Term> Equations::termsOf(const std::vector<Rational>& y, const Integer& scale) const {
  std::vector<Term> terms;
  for (std::size_t i = 0; i < y.size(); ++i) terms.push_back({rows_[i], Rational(y[i] * scale).get_num()});
  return terms;
}

bool Equations::fix(const Form& form, const IntegerVector& a) {
  Integer step = 0;
  for (const IntegerVector& row : split_.kernel) step = gcd(step, innerProduct(a, row));
  const Range& range = d_.rangeOf(form);
  if (step == 1 || (step != 0 && *range.high - *range.low >= 2 * step)) return false;
  // What the kernel does not see of a is y A.
  IntegerVector products;
  for (const IntegerVector& other : split_.others) products.push_back(innerProduct(other, a));
  const std::vector<Rational> y = multipliersOf(products);
  const Integer scale = commonDenominator(y);
  const std::vector<Term> terms = termsOf(y, scale);
  if (step == 0) {
    const bool upper = d_.take({Step::Kind::UPPER, form, scale, 0, terms});
    return d_.take({Step::Kind::LOWER, form, scale, 0, terms}) || upper;
  }
  Derivation trial = d_;
  trial.take({Step::Kind::CLASS, form, scale, scale * step, terms});
  if (!trial.isContradiction() && !trial.rangeOf(form).isFixed()) return false;
  d_ = std::move(trial);
  return true;
}

}  // namespace latbox::complete::proof
