#include "complete/program/program.h"

namespace latbox::complete {
namespace {

bool isBetween(const Number& low, const Rational& value, const Number& high) {
  const Number number{0, value};
  return compare(low, number) <= 0 && compare(number, high) <= 0;
}

bool keepsVariables(const Program& program, const Point& x) {
  for (std::size_t j = 0; j < x.size(); ++j) {
    const Rational steps = x[j] * powerOfTen(program.digits[j]);
    if (steps.get_den() != 1 || !isBetween(program.lower[j], x[j], program.upper[j])) return false;
  }
  return true;
}

bool keepsRows(const Program& program, const Point& x) {
  for (std::size_t i = 0; i < program.equations.size(); ++i)
    if (product(program.equations[i], x) != program.sides[i]) return false;
  for (std::size_t i = 0; i < program.inequations.size(); ++i)
    if (!isBetween(program.lowerSides[i], product(program.inequations[i], x), program.upperSides[i]))
      return false;
  return true;
}

}  // namespace

Rational product(const std::vector<Rational>& row, const Point& x) {
  Rational sum;
  for (std::size_t j = 0; j < x.size(); ++j)
    if (row[j] != 0 && x[j] != 0) sum += row[j] * x[j];
  return sum;
}

bool isFeasible(const Program& program, const Point& x) {
  return keepsVariables(program, x) && keepsRows(program, x);
}

std::vector<Rational> targetValues(const Program& program, const Point& x) {
  std::vector<Rational> values;
  for (std::size_t i = 0; i < program.targets.size(); ++i) {
    const Rational value = product(program.targets[i], x);
    const Number& wanted = program.wanted[i];
    values.push_back(wanted.finite() ? Rational(abs(value - wanted.value)) : value);
  }
  return values;
}

Norms normsOf(const Program& program, const Point& x) {
  Norms norms;
  const std::vector<Rational> values = targetValues(program, x);
  for (std::size_t i = 0; i < values.size(); ++i) {
    norms.target += program.wanted[i].infinite > 0 ? Rational(-values[i]) : values[i];
    if (program.wanted[i].finite()) norms.slack += values[i];
  }
  return norms;
}

}  // namespace latbox::complete
