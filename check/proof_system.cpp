#include "check/proof_system.h"

namespace latbox::check::proof {
namespace {

mpz_class floorOf(const mpq_class& value) {
  mpz_class whole;
  mpz_fdiv_q(whole.get_mpz_t(), value.get_num_mpz_t(), value.get_den_mpz_t());
  return whole;
}

mpz_class ceilingOf(const mpq_class& value) {
  return -floorOf(-value);
}

// The sides times the factor, rounded inwards.
Range rangeOf(const Number& low, const Number& high, const mpq_class& factor) {
  Range range;
  if (low.isFinite()) range.low = ceilingOf(low.value().exact() * factor);
  if (high.isFinite()) range.high = floorOf(high.value().exact() * factor);
  return range;
}

// The coefficients of the z_j.
std::vector<mpq_class> scaled(const Row& row, const Program& program) {
  std::vector<mpq_class> coefficients;
  for (std::size_t j = 0; j < row.size(); ++j)
    coefficients.push_back(row[j] == 0 ? mpq_class() : (row[j] / powerOfTen(program.dx[j])).exact());
  return coefficients;
}

void widen(mpz_class& common, const mpq_class& value) {
  common = lcm(common, value.get_den());
}

// Requires: the factor is a multiple of all denominators.
Form wholeForm(const std::vector<mpq_class>& coefficients, const mpz_class& factor) {
  Form form;
  for (const mpq_class& value : coefficients)
    form.coefficients.push_back(value.get_num() * (factor / value.get_den()));
  return form;
}

void add(Form& sum, const Form& form, const mpz_class& factor) {
  for (std::size_t j = 0; j < form.coefficients.size(); ++j)
    sum.coefficients[j] += factor * form.coefficients[j];
  sum.constant += factor * form.constant;
}

SystemRow rowOf(const Program& program, const Row& row, const Number& low, const Number& high) {
  const std::vector<mpq_class> coefficients = scaled(row, program);
  // Nothing keeps a lower side inf or an upper side -inf.
  if (low.infinite() > 0 || high.infinite() < 0)
    return {{Integers(coefficients.size()), 0}, {mpz_class(1), mpz_class(0)}};
  mpz_class common = 1;
  for (const mpq_class& value : coefficients) widen(common, value);
  return {wholeForm(coefficients, common), rangeOf(low, high, common)};
}

}  // namespace

mpz_class Form::at(const Integers& z) const {
  mpz_class sum = constant;
  for (std::size_t j = 0; j < coefficients.size(); ++j) sum += coefficients[j] * z[j];
  return sum;
}

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

Norms normsOf(const Program& program) {
  Norms norms;
  std::vector<std::vector<mpq_class>> targets;
  for (std::size_t i = 0; i < program.At.size(); ++i) {
    targets.push_back(scaled(program.At[i], program));
    for (const mpq_class& value : targets[i]) widen(norms.unit, value);
    if (program.dt[i].isFinite()) widen(norms.unit, program.dt[i].value().exact());
  }
  norms.linear.coefficients.resize(program.variables());
  for (std::size_t i = 0; i < targets.size(); ++i) {
    Form form = wholeForm(targets[i], norms.unit);
    if (program.dt[i].isFinite()) {
      const mpq_class wanted = program.dt[i].value().exact() * norms.unit;
      form.constant = -wanted.get_num();
      norms.distances.push_back(std::move(form));
    } else {
      add(norms.linear, form, program.dt[i].infinite() < 0 ? 1 : -1);
      for (const mpq_class& value : targets[i]) norms.hasLinear = norms.hasLinear || value != 0;
    }
  }
  return norms;
}

SystemRow rowOf(const ObjectiveRow& line, Goal goal, const Norms& norms, const Bounds& bounds) {
  const bool isNorm = line.kind == Objective::NORM;
  if (goal == Goal::POINTS || (goal == Goal::BETTER && !isNorm))
    throw Refused(line.line, std::string("no such row is kept by all points of a search ") + nameOf(goal));
  SystemRow row;
  row.form.coefficients.resize(norms.linear.coefficients.size());
  if (line.kind != Objective::DISTANCE) add(row.form, norms.linear, 1);
  if (line.kind == Objective::LINEAR) {
    const mpz_class value = bounds.target - bounds.slack;
    row.range.low = goal == Goal::EQUAL ? value : value + 1;
    if (goal == Goal::EQUAL) row.range.high = value;
    return row;
  }
  if (line.signs.size() != norms.distances.size())
    throw Refused(line.line, std::to_string(line.signs.size()) + " signs, not " +
                                 std::to_string(norms.distances.size()));
  for (std::size_t i = 0; i < line.signs.size(); ++i) {
    if (abs(line.signs[i]) > 1) throw Refused(line.line, "a sign is not -1, 0 or 1");
    add(row.form, norms.distances[i], line.signs[i]);
  }
  mpz_class high = isNorm ? bounds.target : bounds.slack;
  if (goal == (isNorm ? Goal::BETTER : Goal::SLACK)) high -= 1;
  row.range.high = high - row.form.constant;
  row.form.constant = 0;
  return row;
}

bool isFeasible(const System& system, const Integers& z) {
  for (std::size_t j = 0; j < z.size(); ++j)
    if (!system.variables[j].holds(z[j])) return false;
  for (const SystemRow& row : system.rows)
    if (!row.range.holds(row.form.at(z))) return false;
  return true;
}

Bounds normsAt(const Norms& norms, const Integers& z) {
  Bounds at{norms.linear.at(z), 0};
  for (const Form& distance : norms.distances) at.slack += abs(distance.at(z));
  at.target += at.slack;
  return at;
}

}  // namespace latbox::check::proof
