// Linear programs over the rationals, solved exactly.
#pragma once

#include <optional>

#include "complete/integer_program.h"

namespace latbox::complete {

struct LinearOptimum {
  enum { INFEASIBLE, UNBOUNDED, OPTIMAL } kind = INFEASIBLE;
  // The greatest value, if OPTIMAL.
  Rational value;
};

// The simplex method on a dictionary of rationals with Bland's rule (New finite pivoting rules for the
// simplex method, 1977), which cannot cycle. Its first phase runs once for all questions about one program.
// For programs of some dozens of rows and variables: all entries are rationals.
class LinearProgram {
 public:
  // The rational relaxation of the program.
  explicit LinearProgram(const IntegerProgram& program);

  bool isFeasible() const { return feasible_; }
  // The greatest value of sign * z[j]. Requires isFeasible.
  LinearOptimum greatest(std::size_t j, int sign);

 private:
  // z[j] = shift + sign * y[first], less y[second] where there is no bound at all.
  struct Substitution {
    Integer shift = 0;
    int sign = 1;
    std::size_t first = 0;
    std::optional<std::size_t> second;
  };

  void substitute(const IntegerProgram& program);
  void addRow(const IntegerVector& a, int sign, const Integer& side);
  void addUpperBounds(const IntegerProgram& program);
  void makeFeasible();
  void removeAuxiliary(std::size_t auxiliary);
  // Raises the objective row to its maximum; false if it has none.
  bool maximise();
  void pivot(std::size_t row, std::size_t column);
  std::optional<std::size_t> entering() const;
  std::optional<std::size_t> leaving(std::size_t column) const;

  std::vector<Substitution> substitutions_;
  std::size_t columns_ = 0;
  // basic[i] = constant + sum entries * nonbasic, the constant behind the entries; the last row is the
  // objective.
  std::vector<std::vector<Rational>> dictionary_;
  std::vector<std::size_t> basic_;
  std::vector<std::size_t> nonbasic_;
  bool feasible_ = true;
};

}  // namespace latbox::complete
