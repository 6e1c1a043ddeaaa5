#include "check/proof/system.h"

namespace latbox::check::proof {
namespace {

mpz_class floorOf(const mpq_class& value) {
  mpz_class whole;
  mpz_fdiv_q(whole.get_mpz_t(), value.get_num_mpz_t(), value.get_den_mpz_t());
  return whole;
}

// The sides times the factor, rounded inwards.
Range rangeOf(const Number& low, const Number& high, const mpq_class& factor) {
  Range range;
  if (low.isFinite()) range.low = -floorOf(-low.value().exact() * factor);
  if (high.isFinite()) range.high = floorOf(high.value().exact() * factor);
  return range;
}

// The row's coefficient of z_j.
mpq_class coefficient(const Program& program, const Row& row, std::size_t j) {
  return row[j] == 0 ? mpq_class() : (row[j] / powerOfTen(program.dx[j])).exact();
}

SystemRow rowOf(const Program& program, const Row& row, const Number& low, const Number& high) {
  SystemRow result{Integers(program.variables()), {mpz_class(1), mpz_class(0)}};
  // Nothing keeps a lower side inf or an upper side -inf.
  if (low.infinite() > 0 || high.infinite() < 0) return result;
  mpz_class common = 1;
  for (std::size_t j = 0; j < row.size(); ++j) common = lcm(common, coefficient(program, row, j).get_den());
  for (std::size_t j = 0; j < row.size(); ++j)
    result.coefficients[j] = mpq_class(coefficient(program, row, j) * common).get_num();
  result.range = rangeOf(low, high, common);
  return result;
}

}  // namespace

System systemOf(const Program& program) {
  System system;
  for (std::size_t j = 0; j < program.variables(); ++j)
    system.variables.push_back(rangeOf(program.lx[j], program.rx[j], powerOfTen(program.dx[j]).exact()));
  for (std::size_t i = 0; i < program.Ag.size(); ++i)
    system.rows.push_back(rowOf(program, program.Ag[i], program.bg[i], program.bg[i]));
  for (std::size_t i = 0; i < program.Au.size(); ++i)
    system.rows.push_back(rowOf(program, program.Au[i], program.lu[i], program.ru[i]));
  return system;
}

mpz_class unitOf(const Program& program) {
  mpz_class unit = 1;
  for (std::size_t i = 0; i < program.At.size(); ++i) {
    for (std::size_t j = 0; j < program.variables(); ++j)
      unit = lcm(unit, coefficient(program, program.At[i], j).get_den());
    if (program.dt[i].isFinite()) unit = lcm(unit, program.dt[i].value().exact().get_den());
  }
  return unit;
}

bool hasLinear(const Program& program) {
  for (std::size_t i = 0; i < program.At.size(); ++i)
    for (std::size_t j = 0; j < program.variables(); ++j)
      if (!program.dt[i].isFinite() && program.At[i][j] != 0) return true;
  return false;
}

SystemRow rowOf(const Program& program, const ObjectiveRow& line, Goal goal, const Verdict& verdict) {
  const bool isNorm = line.kind == Objective::NORM;
  const bool isLinear = line.kind == Objective::LINEAR;
  const Integers& signs = line.signs.values;
  if (goal == Goal::POINTS || (goal == Goal::BETTER && !isNorm))
    throw Refused(line.signs.line, std::string("not a row of a search ") + nameOf(goal));
  const mpq_class unit = unitOf(program);
  mpq_class side = unit * (isNorm     ? verdict.target
                           : isLinear ? verdict.target - verdict.slack
                                      : verdict.slack);
  std::vector<mpq_class> sum(program.variables());
  std::size_t valued = 0;
  for (std::size_t i = 0; i < program.At.size(); ++i) {
    mpq_class factor = line.kind == Objective::DISTANCE ? 0 : -program.dt[i].infinite();
    if (program.dt[i].isFinite() && !isLinear) {
      factor = valued < signs.size() ? signs[valued++] : throw Refused(line.signs.line, "too few signs");
      if (abs(factor) > 1) throw Refused(line.signs.line, "a sign is not -1, 0 or 1");
      // The constant moves to the sides.
      side += unit * factor * program.dt[i].value().exact();
    }
    for (std::size_t j = 0; j < sum.size() && factor != 0; ++j)
      sum[j] += unit * factor * coefficient(program, program.At[i], j);
  }
  if (valued < signs.size()) throw Refused(line.signs.line, "too many signs");
  SystemRow row;
  for (const mpq_class& value : sum) row.coefficients.push_back(value.get_num());
  const bool isStrict = goal == (isNorm ? Goal::BETTER : Goal::SLACK);
  if (isLinear) row.range.low = side.get_num() + (isStrict ? 1 : 0);
  if (!isLinear || goal == Goal::EQUAL) row.range.high = side.get_num() - (isStrict ? 1 : 0);
  return row;
}

std::optional<Norms> normsOf(const Program& program, const std::vector<Rational>& x) {
  for (std::size_t j = 0; j < x.size(); ++j) {
    if (!x[j].isWhole() && !(x[j] * powerOfTen(program.dx[j])).isWhole()) return std::nullopt;
    if (program.lx[j] > x[j] || program.rx[j] < x[j]) return std::nullopt;
  }
  const Scaled point(x);
  for (std::size_t i = 0; i < program.Ag.size(); ++i)
    if (program.Ag[i].times(point) != program.bg[i]) return std::nullopt;
  for (std::size_t i = 0; i < program.Au.size(); ++i) {
    const Number value = program.Au[i].times(point);
    if (value < program.lu[i] || value > program.ru[i]) return std::nullopt;
  }
  Norms norms;
  for (std::size_t i = 0; i < program.At.size(); ++i) {
    const Number& wanted = program.dt[i];
    Rational value = program.At[i].times(point);
    if (wanted.isFinite()) norms.slack += value = abs(value - wanted.value());
    norms.target += wanted.infinite() > 0 ? -value : value;
  }
  return norms;
}

bool counts(Goal goal, const Norms& norms, const Norms& verdict) {
  if (goal == Goal::BETTER) return norms.target < verdict.target;
  if (goal == Goal::SLACK) return norms.target == verdict.target && norms.slack < verdict.slack;
  if (goal == Goal::EQUAL) return norms.target == verdict.target && norms.slack == verdict.slack;
  return true;
}

}  // namespace latbox::check::proof
