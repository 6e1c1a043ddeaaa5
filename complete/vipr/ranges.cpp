#include "complete/vipr/ranges.h"

#include <stdexcept>
#include <utility>

namespace latbox::complete::vipr {
namespace {

using proof::Form;
using proof::ObjectiveRow;
using proof::Step;

Rational ratio(const Integer& a, const Integer& b) {
  Rational quotient(a, b);
  quotient.canonicalize();
  return quotient;
}

}  // namespace

void add(Combination& combination, const EndLines& ends, const Rational& factor, Sense sense) {
  if (factor == 0) return;
  const std::optional<std::size_t>& line = (factor > 0) == (sense == Sense::LESS) ? ends.high : ends.low;
  if (!line) throw std::logic_error("a certificate lacks the end of a range");
  Rational& sum = combination[*line];
  sum += factor;
  if (sum == 0) combination.erase(*line);
}

Ranges::Ranges(const Program& program, const proof::System& system, const std::optional<Integer>& limit)
    : system_(system),
      norm_(program),
      certificate_(system.box.size() + (limit ? norm_.distances().size() : 0)) {
  IntegerVector objective(certificate_.variables());
  if (limit) {
    objective = overAll(norm_.linear().coefficients);
    for (std::size_t j = system_.box.size(); j < objective.size(); ++j) objective[j] = 1;
  }
  objective_ = std::make_shared<IntegerVector>(std::move(objective));
  giveBounds();
  giveRows();
  if (limit) assumeLimit(*limit);
}

IntegerVector Ranges::overAll(IntegerVector z) const {
  z.resize(certificate_.variables());
  return z;
}

FormPointer Ranges::unit(std::size_t j) const {
  auto form = std::make_shared<IntegerVector>(certificate_.variables());
  (*form)[j] = 1;
  return form;
}

void Ranges::giveBounds() {
  for (std::size_t j = 0; j < system_.box.size(); ++j) {
    const FormPointer form = unit(j);
    EndLines ends;
    if (system_.box[j].low) ends.low = certificate_.give({Sense::GREATER, *system_.box[j].low, form});
    if (system_.box[j].high) ends.high = certificate_.give({Sense::LESS, *system_.box[j].high, form});
    variables_.push_back(ends);
  }
  boundCount_ = certificate_.givenCount();
}

// An equation is given as one; what is needed of it later are its two sides, which nothing given may stand
// behind.
void Ranges::giveRows() {
  std::vector<std::pair<std::size_t, std::size_t>> equations;
  const std::size_t conditions = system_.rows.size() - system_.objective.size();
  for (std::size_t i = 0; i < system_.rows.size(); ++i) rowForms_.push_back(overAll(system_.rows[i]));
  rows_.resize(system_.rows.size());
  for (std::size_t i = 0; i < conditions; ++i) {
    const Range& range = system_.ranges[i];
    const auto form = std::make_shared<IntegerVector>(rowForms_[i]);
    if (range.isFixed())
      equations.emplace_back(i, certificate_.give({Sense::EQUAL, *range.low, form}));
    else
      rows_[i] = giveRange(form, range);
  }
  if (certificate_.variables() > system_.box.size()) giveDistances();
  for (const auto& [i, line] : equations)
    rows_[i] = {certificate_.relax(line, Sense::GREATER), certificate_.relax(line, Sense::LESS)};
}

EndLines Ranges::giveRange(const FormPointer& form, const Range& range) {
  EndLines ends;
  if (range.low) ends.low = certificate_.give({Sense::GREATER, *range.low, form});
  if (range.high) ends.high = certificate_.give({Sense::LESS, *range.high, form});
  return ends;
}

void Ranges::giveDistances() {
  for (std::size_t i = 0; i < norm_.distances().size(); ++i) {
    const complete::Form& distance = norm_.distances()[i];
    for (const int sign : {1, -1}) {
      auto form = std::make_shared<IntegerVector>(overAll(distance.coefficients));
      for (Integer& a : *form) a *= -sign;
      (*form)[system_.box.size() + i] = 1;
      (sign > 0 ? above_ : below_)
          .push_back(certificate_.give({Sense::GREATER, Rational(sign * distance.constant), form}));
    }
  }
}

void Ranges::assumeLimit(const Integer& limit) {
  limitLine_ = certificate_.assume({Sense::LESS, limit, objective_});
  const std::size_t conditions = system_.rows.size() - system_.objective.size();
  for (std::size_t i = 0; i < system_.objective.size(); ++i)
    rows_[conditions + i] = objectiveRow(system_.objective[i]);
}

// The sum of the signed distances is at most that of the distances.
EndLines Ranges::objectiveRow(const ObjectiveRow& row) {
  if (row.kind != ObjectiveRow::Kind::NORM) throw std::logic_error("a certificate is of the target norm");
  Combination combination{{limitLine_, 1}};
  for (std::size_t i = 0; i < row.signs.size(); ++i) {
    const Rational half(1, 2);
    if (row.signs[i] >= 0) combination[above_[i]] = row.signs[i] > 0 ? Rational(-1) : Rational(-half);
    if (row.signs[i] <= 0) combination[below_[i]] = row.signs[i] < 0 ? Rational(-1) : Rational(-half);
  }
  EndLines ends;
  ends.high = certificate_.derive(combination, Sense::LESS);
  return ends;
}

std::pair<IntegerVector, EndLines> Ranges::normRow(const IntegerVector& z) {
  ObjectiveRow row{ObjectiveRow::Kind::NORM, {}};
  IntegerVector form = norm_.linear().coefficients;
  if (certificate_.variables() > z.size())
    for (const complete::Form& distance : norm_.distances()) {
      Integer value = distance.constant;
      for (std::size_t j = 0; j < z.size(); ++j) value += distance.coefficients[j] * z[j];
      row.signs.push_back(value < 0 ? -1 : 1);
      for (std::size_t j = 0; j < z.size(); ++j) form[j] += row.signs.back() * distance.coefficients[j];
    }
  return {form, objectiveRow(row)};
}

IntegerVector Ranges::solutionOf(const IntegerVector& z) const {
  IntegerVector solution = z;
  for (std::size_t i = 0; i < certificate_.variables() - z.size(); ++i) {
    const complete::Form& distance = norm_.distances()[i];
    Integer value = distance.constant;
    for (std::size_t j = 0; j < z.size(); ++j) value += distance.coefficients[j] * z[j];
    solution.push_back(abs(value));
  }
  return solution;
}

// ------------------------------------------------------------------------------------------------ steps

std::optional<std::size_t> Ranges::replay(const proof::Derivation& derivation) {
  proof::Derivation before(system_);
  if (before.isContradiction()) {
    for (const auto* ends : {&variables_, &rows_})
      for (const EndLines& range : *ends)
        if (const auto line = contradiction(range)) return line;
  }
  for (const Step& step : derivation.steps()) {
    if (const auto line = take(before, step)) return line;
    before.take(step);
  }
  if (derivation.isContradiction()) throw std::logic_error("a certificate lacks a contradiction");
  return std::nullopt;
}

std::optional<std::size_t> Ranges::take(const proof::Derivation& before, const Step& step) {
  return step.kind == Step::Kind::CLASS ? takeClass(before, step) : takeEnd(step);
}

EndLines* Ranges::endsOf(const Form& form) {
  if (form.kind == Form::Kind::VARIABLE) return &variables_[form.index];
  return form.kind == Form::Kind::ROW ? &rows_[form.index] : nullptr;
}

IntegerVector Ranges::formOf(const Form& form) const {
  if (form.kind == Form::Kind::VARIABLE) return *unit(form.index);
  return form.kind == Form::Kind::ROW ? rowForms_[form.index] : *certificate_.zero();
}

std::optional<std::size_t> Ranges::contradiction(const EndLines& ends) {
  if (!ends.low || !ends.high || certificate_[*ends.low].side <= certificate_[*ends.high].side)
    return std::nullopt;
  return certificate_.refute({{*ends.low, -1}, {*ends.high, 1}});
}

std::optional<std::size_t> Ranges::takeEnd(const Step& step) {
  const Sense sense = step.kind == Step::Kind::UPPER ? Sense::LESS : Sense::GREATER;
  IntegerVector rest = formOf(step.form);
  for (Integer& a : rest) a *= step.q;
  Combination combination;
  for (const proof::Term& term : step.terms) {
    add(combination, rows_[term.row], ratio(term.count, step.q), sense);
    for (std::size_t j = 0; j < rest.size(); ++j) rest[j] -= term.count * rowForms_[term.row][j];
  }
  for (std::size_t j = 0; j < system_.box.size(); ++j)
    add(combination, variables_[j], ratio(rest[j], step.q), sense);
  const std::size_t line = certificate_.derive(combination, sense);
  EndLines* ends = endsOf(step.form);
  if (ends == nullptr) return line;
  (sense == Sense::LESS ? ends->high : ends->low) = line;
  return contradiction(*ends);
}

Congruence Ranges::congruenceOf(const proof::Derivation& before, const Step& step) const {
  Congruence congruence{formOf(step.form), step.q, {}, step.modulus, {}};
  congruence.part = congruence.form;
  for (Integer& a : congruence.part) a *= step.q;
  for (const proof::Term& term : step.terms) {
    congruence.rows.emplace_back(term.row, term.count);
    for (std::size_t j = 0; j < congruence.part.size(); ++j)
      congruence.part[j] -= term.count * rowForms_[term.row][j];
  }
  for (std::size_t j = 0; j < congruence.part.size(); ++j)
    if (j < system_.box.size() && before.box()[j].isFixed())
      congruence.part[j] = 0;
    else
      congruence.part[j] /= step.modulus;
  return congruence;
}

std::optional<std::size_t> Ranges::takeClass(const proof::Derivation& before, const Step& step) {
  const Congruence congruence = congruenceOf(before, step);
  if (const auto line = impossible(congruence)) return line;
  EndLines* ends = endsOf(step.form);
  if (ends == nullptr) throw std::logic_error("a certificate lacks a contradiction");
  narrow(*ends, congruence);
  return contradiction(*ends);
}

void Ranges::cancel(Combination& combination, const IntegerVector& wanted, Sense sense) const {
  std::vector<Rational> rest(wanted.begin(), wanted.end());
  for (const auto& [line, factor] : combination) {
    const IntegerVector& form = *certificate_[line].form;
    for (std::size_t j = 0; j < rest.size(); ++j)
      if (form[j] != 0) rest[j] -= factor * form[j];
  }
  for (std::size_t j = 0; j < rest.size(); ++j)
    if (rest[j] != 0) add(combination, variables_.at(j), rest[j], sense);
}

// (count form - period part) / g is whole, g the common divisor, and has one value. If that is not whole, it
// is rounded up and down.
std::optional<std::size_t> Ranges::impossible(const Congruence& congruence) {
  const Integer common = gcd(congruence.count, congruence.period);
  IntegerVector wanted = congruence.form;
  for (std::size_t j = 0; j < wanted.size(); ++j)
    wanted[j] = (congruence.count * wanted[j] - congruence.period * congruence.part[j]) / common;
  EndLines ends;
  for (const Sense sense : {Sense::LESS, Sense::GREATER}) {
    Combination combination;
    for (const auto& [row, factor] : congruence.rows)
      add(combination, rows_[row], factor / Rational(common), sense);
    cancel(combination, wanted, sense);
    // 0 = 0.
    if (combination.empty()) return std::nullopt;
    Rational side = 0;
    for (const auto& [line, factor] : combination) side += factor * certificate_[line].side;
    if (side.get_den() == 1) return std::nullopt;
    (sense == Sense::LESS ? ends.high : ends.low) = certificate_.derive(combination, sense);
  }
  return contradiction(ends);
}

void Ranges::narrow(EndLines& ends, const Congruence& congruence) {
  while (ends.high && moves(ends.high, ends, congruence, Sense::LESS)) {
  }
  while (ends.low && moves(ends.low, ends, congruence, Sense::GREATER)) {
  }
}

// Bounds the part by the form, and then the form by the part.
bool Ranges::moves(std::optional<std::size_t>& end, const EndLines& ends, const Congruence& congruence,
                   Sense sense) {
  const auto [form, count, part, period, rows] = congruence;
  Combination combination;
  add(combination, ends, ratio(count, period), sense);
  for (const auto& [row, factor] : rows)
    add(combination, rows_[row], Rational(-factor) / Rational(period), sense);
  cancel(combination, part, sense);
  const std::size_t partLine = certificate_.derive(combination, sense);
  EndLines partEnds;
  (sense == Sense::LESS ? partEnds.high : partEnds.low) = partLine;
  combination.clear();
  add(combination, partEnds, ratio(period, count), sense);
  for (const auto& [row, factor] : rows) add(combination, rows_[row], factor / Rational(count), sense);
  cancel(combination, form, sense);
  const std::size_t line = certificate_.derive(combination, sense);
  const Rational old = certificate_[*end].side;
  if (old == certificate_[line].side) return false;
  end = line;
  return true;
}

}  // namespace latbox::complete::vipr
