#include "complete/solving/least_norm.h"

#include <algorithm>

#include "complete/linear/linear_bounds.h"
#include "complete/linear/linear_program.h"
#include "complete/solving/closing.h"

namespace latbox::complete {
namespace {

// The program with a variable for each distance and a last row for the norm.
class Extended {
 public:
  Extended(const IntegerProgram& program, const Objective& objective)
      : program_(program), n_(program.box.size()), q_(objective.distances().size()) {
    for (Row& row : program_.rows) row.a.resize(n_ + q_);
    for (std::size_t i = 0; i < q_; ++i) addDistance(objective.distances()[i], i);
    Row norm = rowOf(objective.linear());
    for (std::size_t i = 0; i < q_; ++i) norm.a[n_ + i] = 1;
    program_.rows.push_back(std::move(norm));
  }

  IntegerProgram& program() { return program_; }
  std::size_t norm() const { return n_ + q_ + program_.rows.size() - 1; }

 private:
  Row rowOf(const Form& form) const {
    Row row;
    row.a = form.coefficients;
    row.a.resize(n_ + q_);
    return row;
  }

  // d >= form and d >= -form; where the box is finite d is no greater than they can be.
  void addDistance(const Form& form, std::size_t i) {
    for (const int sign : {1, -1}) {
      Row row = rowOf(form);
      for (Integer& a : row.a) a *= -sign;
      row.a[n_ + i] = 1;
      row.range.low = sign * form.constant;
      program_.rows.push_back(std::move(row));
    }
    Range distance{Integer(0), abs(form.constant)};
    for (std::size_t j = 0; j < n_ && distance.high; ++j) {
      const Range& box = program_.box[j];
      if (form.coefficients[j] == 0) continue;
      if (box.isFinite())
        *distance.high += abs(form.coefficients[j]) * std::max<Integer>(abs(*box.low), abs(*box.high));
      else
        distance.high.reset();
    }
    program_.box.push_back(distance);
  }

  IntegerProgram program_;
  std::size_t n_;
  std::size_t q_;
};

}  // namespace

std::optional<Integer> leastNorm(const IntegerProgram& program, const Objective& objective) {
  Extended extended(program, objective);
  const Integer& constant = objective.linear().constant;
  if (openVariables(program).empty()) {
    // A row that cannot be kept: others find that out.
    if (!closeRows(extended.program())) return std::nullopt;
    const Integer least = *extended.program().rows.back().range.low;
    LinearBounds relaxation(extended.program(), RELAXATION_EFFORT);
    const auto most = relaxation.greatest(extended.norm(), -1);
    return Integer(constant + (most ? Integer(-*most) : least));
  }
  LinearProgram relaxation(extended.program());
  if (!relaxation.isFeasible()) return std::nullopt;
  const auto most = relaxation.greatest(extended.norm(), -1);
  if (!most) return std::nullopt;
  return Integer(constant + ceilOf(Rational(-*most)));
}

}  // namespace latbox::complete
