// The target norm as rows: what a bound on it means for whole variables.
#pragma once

#include "complete/program/integer_program.h"

namespace latbox::complete {

// coefficients z + constant.
struct Form {
  IntegerVector coefficients;
  Integer constant = 0;
};

// A norm of whole variables, in whole units.
class Objective {
 public:
  // The target norm.
  explicit Objective(const Program& program);
  // The slack norm of the same program, in the same units.
  Objective slackNorm() const;

  bool exists() const { return exists_; }
  // Whether two points of one target norm can differ in the slack norm.
  bool needsSlackNorm() const { return hasLinear_ && !distances_.empty(); }

  Integer valueOf(const Norms& norms) const;
  // The norm that has this value.
  Rational normOf(const Integer& value) const;

  // Rows that every point with a value of at most `limit` keeps. They say exactly that for up to
  // MOST_PATTERNS targets with a value; with more of them they say less. That no point has less than `least`
  // is known already, and may say more.
  std::vector<Row> rows(const Integer& limit, const std::optional<Integer>& least = {}) const;
  static constexpr std::size_t MOST_PATTERNS = 4;

  // The norm is the value of linear() and the absolute values of distances().
  const Form& linear() const { return linear_; }
  const std::vector<Form>& distances() const { return distances_; }

 private:
  void add(Form& form, const Form& other, int sign) const;
  Form whole(const std::vector<Rational>& coefficients, const Rational& constant) const;
  static Row rowOf(const Form& form, const std::optional<Integer>& least, const Integer& most);
  std::vector<Form> patterns() const;

  bool exists_ = false;
  bool hasLinear_ = false;
  bool isSlackNorm_ = false;
  Integer scale_ = 1;
  Form linear_;
  // Signed distances from wanted values.
  std::vector<Form> distances_;
};

}  // namespace latbox::complete
