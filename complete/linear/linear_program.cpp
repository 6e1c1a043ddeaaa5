#include "complete/linear/linear_program.h"

namespace latbox::complete {
namespace {

Bounds<Rational> boundsOf(const Range& range) {
  Bounds<Rational> bounds;
  if (range.low) bounds.low = *range.low;
  if (range.high) bounds.high = *range.high;
  return bounds;
}

Simplex<Rational> simplexOf(const IntegerProgram& program) {
  std::vector<Bounds<Rational>> bounds;
  for (const Range& range : program.box) bounds.push_back(boundsOf(range));
  std::vector<std::vector<Rational>> rows;
  for (const Row& row : program.rows) {
    rows.emplace_back(row.a.begin(), row.a.end());
    bounds.push_back(boundsOf(row.range));
  }
  return Simplex<Rational>(std::move(rows), std::move(bounds));
}

}  // namespace

LinearProgram::LinearProgram(const IntegerProgram& program)
    : simplex_(simplexOf(program)), feasible_(simplex_.makeFeasible() == Simplex<Rational>::End::OPTIMAL) {}

std::optional<Rational> LinearProgram::greatest(std::size_t variable, int sign) {
  if (simplex_.maximise(variable, sign) != Simplex<Rational>::End::OPTIMAL) return std::nullopt;
  return Rational(sign * simplex_.value(variable));
}

}  // namespace latbox::complete
