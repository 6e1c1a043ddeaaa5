// What the equations of a derivation say over the rationals and modulo whole numbers, as steps.
#pragma once

#include <optional>

#include "complete/lattice/kernel.h"
#include "complete/proof/derivation.h"

namespace latbox::complete::proof {

class Equations {
 public:
  // Independent ones, in the variables that are not fixed. A contradiction, over the rationals or of
  // divisibility, is taken as a step; then the rest means nothing.
  explicit Equations(Derivation& derivation);

  const std::vector<std::size_t>& variables() const { return variables_; }
  const std::vector<std::size_t>& rows() const { return rows_; }
  // Over the variables.
  const Split& split() const { return split_; }
  const IntegerVector& point() const { return point_; }

  // Takes what the kernel says of a form, if that leaves one value or none: true. Requires the coefficients
  // of the form over the variables.
  bool fix(const Form& form, const IntegerVector& a);

 private:
  void choose();
  void contradict(std::size_t row, const std::vector<Rational>& counts);
  void solve();
  std::vector<Rational> multipliersOf(const IntegerVector& products) const;
  std::vector<Term> termsOf(const std::vector<Rational>& y, const Integer& scale) const;

  Derivation& d_;
  std::vector<std::size_t> variables_;
  std::vector<std::size_t> rows_;
  IntegerMatrix a_;
  IntegerVector sides_;
  Split split_;
  IntegerVector point_;
};

}  // namespace latbox::complete::proof
