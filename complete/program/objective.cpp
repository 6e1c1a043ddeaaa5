#include "complete/program/objective.h"

namespace latbox::complete {

Objective::Objective(const Program& program) : exists_(!program.targets.empty()) {
  const std::size_t n = program.variables();
  std::vector<Rational> linear(n);
  for (std::size_t i = 0; i < program.targets.size(); ++i) {
    const std::vector<Rational> row = perStep(program, program.targets[i]);
    scale_ = lcm(scale_, commonDenominator(row));
    if (program.wanted[i].finite()) scale_ = lcm(scale_, program.wanted[i].value.get_den());
    for (std::size_t j = 0; j < n && !program.wanted[i].finite(); ++j)
      linear[j] += program.wanted[i].infinite < 0 ? row[j] : Rational(-row[j]);
  }
  linear_ = whole(linear, 0);
  for (const Integer& a : linear_.coefficients) hasLinear_ = hasLinear_ || a != 0;
  for (std::size_t i = 0; i < program.targets.size(); ++i)
    if (program.wanted[i].finite())
      distances_.push_back(whole(perStep(program, program.targets[i]), -program.wanted[i].value));
}

Form Objective::whole(const std::vector<Rational>& coefficients, const Rational& constant) const {
  Form form;
  for (const Rational& a : coefficients) form.coefficients.push_back(Rational(a * scale_).get_num());
  form.constant = Rational(constant * scale_).get_num();
  return form;
}

Objective Objective::slackNorm() const {
  Objective slack = *this;
  slack.isSlackNorm_ = true;
  slack.hasLinear_ = false;
  slack.linear_ = {IntegerVector(linear_.coefficients.size()), 0};
  return slack;
}

Rational Objective::normOf(const Integer& value) const {
  Rational norm(value, scale_);
  norm.canonicalize();
  return norm;
}

Integer Objective::valueOf(const Norms& norms) const {
  return floorOf(Rational((isSlackNorm_ ? norms.slack : norms.target) * scale_));
}

void Objective::add(Form& form, const Form& other, int sign) const {
  for (std::size_t j = 0; j < form.coefficients.size(); ++j)
    form.coefficients[j] += sign * other.coefficients[j];
  form.constant += sign * other.constant;
}

// least <= form <= most.
Row Objective::rowOf(const Form& form, const std::optional<Integer>& least, const Integer& most) {
  Row row;
  row.a = form.coefficients;
  if (least) row.range.low = *least - form.constant;
  row.range.high = most - form.constant;
  return row;
}

// A sum of absolute values is the greatest of the sums with signs. With many targets only one distance at a
// time is taken, the others counting 0.
std::vector<Form> Objective::patterns() const {
  const std::size_t count = distances_.size();
  std::vector<Form> forms;
  if (count <= MOST_PATTERNS) {
    for (std::size_t pattern = 0; pattern >> count == 0; ++pattern) {
      forms.push_back(linear_);
      for (std::size_t i = 0; i < count; ++i)
        add(forms.back(), distances_[i], (pattern >> i & 1) != 0 ? -1 : 1);
    }
    return forms;
  }
  for (const Form& distance : distances_)
    for (const int sign : {1, -1}) {
      forms.push_back(linear_);
      add(forms.back(), distance, sign);
    }
  return forms;
}

std::vector<Row> Objective::rows(const Integer& limit, const std::optional<Integer>& least) const {
  // A row that is the norm itself has both sides.
  if (distances_.empty()) return {rowOf(linear_, least, limit)};
  std::vector<Row> rows;
  if (!hasLinear_)
    for (const Form& distance : distances_) rows.push_back(rowOf(distance, -limit, limit));
  if (hasLinear_ || distances_.size() > 1)
    for (const Form& form : patterns()) rows.push_back(rowOf(form, {}, limit));
  return rows;
}

}  // namespace latbox::complete
