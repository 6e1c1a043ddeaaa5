// What the solver makes of a program before it searches, as far as that shows in its solutions.
//
// The search works on a rewritten program, and some rules of that rewriting a user does not expect. They
// decide nothing about right and wrong here: solutions are judged by the program as written. They tell why a
// solution may be wrong, and in which order and with which figures a program with targets that have a value
// is reported.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "check/files/program.h"

namespace latbox::check {

class Rewriting {
 public:
  // The program must outlive its rewriting.
  explicit Rewriting(const Program& program);

  // The target whose value stands at each place of a solution's target values. Targets with a value gather at
  // the end, in an order that follows from how they are moved there.
  const std::vector<std::size_t>& targetOrder() const { return order_; }

  // The slack norm that the solver reports for x. It is the distance from the targets with a value where no
  // other row stands in their way; otherwise the residuals of the rows that do. Requires x of the program's
  // dimension.
  Rational slackNorm(const Scaled& x) const;

  // The row that took this one's place in the search, "inequation 2", or nothing. An inequation with equal
  // sides becomes an equation in the place of the equation of its own number.
  const std::string& replacedEquation(std::size_t i) const { return replacedEquations_[i]; }
  const std::string& replacedInequation(std::size_t i) const { return replacedInequations_[i]; }

  // The values of variable i that the solver searches, if they differ from the user's bounds: the box reaches
  // to the upper less the lower bound.
  struct Box {
    Rational low;
    Rational high;
  };
  std::optional<Box> ownBox(std::size_t i) const;

  // What the user should know of the program, one text each, whatever its solutions.
  std::vector<std::string> warnings() const;

 private:
  // A row of the rewritten equation system without the columns that the rewriting adds; no row is a zero row.
  struct SystemRow {
    const Row* row = nullptr;
    Rational side;
    // Where this row's source is told when another takes its place; null if nobody asks.
    std::string* replaced = nullptr;
  };

  void transferEqualSides();
  void insertSlacks();
  void insertDeviations();
  std::string replacementWarning() const;
  std::string boxWarning() const;

  const Program& program_;
  std::vector<std::string> replacedEquations_;
  std::vector<std::string> replacedInequations_;
  std::vector<SystemRow> system_;
  // Inequations that are left, by their number in the program.
  std::vector<std::size_t> inequations_;
  std::vector<std::size_t> order_;
  // Targets with a value; their rows are the last ones of the system.
  std::size_t deviations_ = 0;
};

}  // namespace latbox::check
