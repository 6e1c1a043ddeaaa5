// The target norm as rows: what a bound on it means for whole variables.
#pragma once

#include "complete/integer_program.h"

namespace latbox::complete {

class Objective {
 public:
  explicit Objective(const Program& program);

  bool exists() const { return exists_; }
  // Whether two points of one target norm can differ in the slack norm.
  bool needsSlackNorm() const { return hasLinear_ && !distances_.empty(); }

  // The bound, in the units of the rows, for points as good as a known one, or better by at least one unit.
  Integer asGood(const Norms& norms) const;
  Integer better(const Norms& norms) const { return asGood(norms) - 1; }

  // Rows that every point with a target norm of at most `limit` keeps. They say exactly that for up to
  // MOST_PATTERNS targets with a value; with more of them they say less.
  std::vector<Row> rows(const Integer& limit) const;
  static constexpr std::size_t MOST_PATTERNS = 4;

 private:
  // coefficients z + constant, in units of 1 / scale_.
  struct Form {
    IntegerVector coefficients;
    Integer constant = 0;
  };

  void add(Form& form, const Form& other, int sign) const;
  Form whole(const std::vector<Rational>& coefficients, const Rational& constant) const;
  static Row rowOf(const Form& form, RowKind kind, const Integer& limit);
  std::vector<Form> patterns() const;

  bool exists_ = false;
  bool hasLinear_ = false;
  Integer scale_ = 1;
  Form linear_;
  // Signed distances from wanted values.
  std::vector<Form> distances_;
};

}  // namespace latbox::complete
