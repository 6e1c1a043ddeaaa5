// Ranges of variables and rows, narrowed by steps that anybody can follow.
//
// A step is a form f (a variable, a row or 0), a positive q and multipliers y of rows: with c = q f - sum y_i
// r_i the ends of the rows and variables bound q f, or, where all but fixed variables have coefficients that
// are multiples of Q in c, tell its class. docs/proof.md says exactly what a step does, and this does that; a
// step that changes nothing is not written down.
#pragma once

#include "complete/proof/system.h"

namespace latbox::complete::proof {

struct Form {
  enum class Kind { VARIABLE, ROW, ZERO };
  Kind kind = Kind::ZERO;
  std::size_t index = 0;
};

struct Term {
  std::size_t row;
  Integer count;
};

struct Step {
  enum class Kind { UPPER, LOWER, CLASS };
  Kind kind;
  Form form;
  Integer q = 1;
  // Of a class.
  Integer modulus = 0;
  std::vector<Term> terms;
};

class Derivation {
 public:
  explicit Derivation(System system);

  const std::vector<Range>& box() const { return system_.box; }
  const IntegerMatrix& rows() const { return system_.rows; }
  const std::vector<Range>& ranges() const { return system_.ranges; }
  const std::vector<ObjectiveRow>& objective() const { return system_.objective; }
  const std::vector<Step>& steps() const { return steps_; }
  // The steps on which the ranges of all variables and of these rows rest; those on which a contradiction
  // does.
  std::vector<Step> stepsFor(const std::vector<std::size_t>& rows) const;
  std::vector<Step> stepsOfContradiction() const;
  // A range is empty: nothing counts, by proof.
  bool isContradiction() const { return isContradiction_; }

  // True: it changed something. Without effect once there is a contradiction.
  bool take(Step step);
  // What the step says of q f, rounded; nothing if an end is missing. For UPPER and LOWER.
  std::optional<Integer> endOf(const Step& step) const;
  const Range& rangeOf(const Form& form) const;

 private:
  IntegerVector restOf(const Step& step) const;
  bool takeEnd(const Step& step);
  bool takeClass(const Step& step);
  bool keep(const Step& step, const Range& range);

  // Of an end: the step that has made it, if one has.
  using Maker = std::optional<std::size_t>;
  struct Makers {
    Maker low;
    Maker high;
  };
  Makers& makersOf(const Form& form);
  std::vector<std::size_t> basesOf(const Step& step, const Range& range);
  std::vector<Step> stepsBehind(std::vector<bool> needed) const;

  System system_;
  Range zero_{Integer(0), Integer(0)};
  std::vector<Step> steps_;
  // Of each step those on which it rests.
  std::vector<std::vector<std::size_t>> bases_;
  std::vector<Makers> boxMakers_;
  std::vector<Makers> rowMakers_;
  Makers zeroMakers_;
  bool isContradiction_ = false;
};

}  // namespace latbox::complete::proof
