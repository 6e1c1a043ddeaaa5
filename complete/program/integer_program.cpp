#include "complete/program/integer_program.h"

namespace latbox::complete {
namespace {

Row scaledRow(const std::vector<Rational>& coefficients, const Number& low, const Number& high) {
  Row row;
  const Integer scale = commonDenominator(coefficients);
  for (const Rational& a : coefficients) row.a.push_back(Rational(a * scale).get_num());
  if (low.finite()) row.range.low = ceilOf(Rational(low.value * scale));
  if (high.finite()) row.range.high = floorOf(Rational(high.value * scale));
  // A lower side of inf, an upper side of -inf: nothing keeps the row.
  if (low.infinite > 0 || high.infinite < 0) row = {IntegerVector(coefficients.size()), {1, 0}};
  return row;
}

Range scaledRange(const Number& low, const Number& high, const Integer& scale) {
  Range range;
  if (low.finite()) range.low = ceilOf(Rational(low.value * scale));
  if (high.finite()) range.high = floorOf(Rational(high.value * scale));
  return range;
}

}  // namespace

std::vector<Rational> perStep(const Program& program, const std::vector<Rational>& row) {
  std::vector<Rational> coefficients;
  for (std::size_t j = 0; j < row.size(); ++j)
    coefficients.push_back(Rational(row[j] / powerOfTen(program.digits[j])));
  return coefficients;
}

Integer commonDenominator(const std::vector<Rational>& values) {
  Integer common = 1;
  for (const Rational& value : values) common = lcm(common, value.get_den());
  return common;
}

IntegerProgram integerProgramOf(const Program& program) {
  IntegerProgram whole;
  for (std::size_t j = 0; j < program.variables(); ++j)
    whole.box.push_back(scaledRange(program.lower[j], program.upper[j], powerOfTen(program.digits[j])));
  for (std::size_t i = 0; i < program.equations.size(); ++i) {
    const Number side{0, program.sides[i]};
    whole.rows.push_back(scaledRow(perStep(program, program.equations[i]), side, side));
  }
  for (std::size_t i = 0; i < program.inequations.size(); ++i)
    whole.rows.push_back(
        scaledRow(perStep(program, program.inequations[i]), program.lowerSides[i], program.upperSides[i]));
  return whole;
}

Point pointOf(const Program& program, const IntegerVector& z) {
  Point x;
  takePoint(x, program, z);
  return x;
}

void takePoint(Point& x, const Program& program, const IntegerVector& z) {
  x.resize(z.size());
  for (std::size_t j = 0; j < z.size(); ++j) {
    x[j] = z[j];
    if (program.digits[j] != 0) x[j] /= powerOfTen(program.digits[j]);
  }
}

}  // namespace latbox::complete
