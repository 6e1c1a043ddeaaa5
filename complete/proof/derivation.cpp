#include "complete/proof/derivation.h"

#include <algorithm>
#include <utility>

namespace latbox::complete::proof {
namespace {

// The greatest or least count * value.
bool addEnd(Integer& sum, const Integer& count, const Range& range, bool greatest) {
  if (count == 0) return true;
  const std::optional<Integer>& end = (count > 0) == greatest ? range.high : range.low;
  if (!end) return false;
  sum += count * *end;
  return true;
}

// The first number that is residue modulo step, from low up or from high down.
Integer firstFrom(const Integer& low, const Integer& residue, const Integer& step) {
  Integer rest;
  mpz_fdiv_r(rest.get_mpz_t(), Integer(residue - low).get_mpz_t(), step.get_mpz_t());
  return low + rest;
}

Integer lastTo(const Integer& high, const Integer& residue, const Integer& step) {
  return -firstFrom(-high, -residue, step);
}

}  // namespace

Derivation::Derivation(System system)
    : system_(std::move(system)), boxMakers_(system_.box.size()), rowMakers_(system_.rows.size()) {
  for (const auto* ranges : {&system_.box, &system_.ranges})
    for (const Range& range : *ranges) isContradiction_ = isContradiction_ || range.isEmpty();
}

const Range& Derivation::rangeOf(const Form& form) const {
  if (form.kind == Form::Kind::VARIABLE) return system_.box[form.index];
  return form.kind == Form::Kind::ROW ? system_.ranges[form.index] : zero_;
}

// c = q f - sum y_i r_i.
IntegerVector Derivation::restOf(const Step& step) const {
  IntegerVector c(system_.box.size());
  if (step.form.kind == Form::Kind::VARIABLE) c[step.form.index] = step.q;
  if (step.form.kind == Form::Kind::ROW)
    for (std::size_t j = 0; j < c.size(); ++j) c[j] = step.q * system_.rows[step.form.index][j];
  for (const Term& term : step.terms)
    for (std::size_t j = 0; j < c.size(); ++j)
      mpz_submul(c[j].get_mpz_t(), term.count.get_mpz_t(), system_.rows[term.row][j].get_mpz_t());
  return c;
}

std::optional<Integer> Derivation::endOf(const Step& step) const {
  const bool upper = step.kind == Step::Kind::UPPER;
  Integer sum = 0;
  for (const Term& term : step.terms)
    if (!addEnd(sum, term.count, system_.ranges[term.row], upper)) return std::nullopt;
  const IntegerVector c = restOf(step);
  for (std::size_t j = 0; j < c.size(); ++j)
    if (!addEnd(sum, c[j], system_.box[j], upper)) return std::nullopt;
  return upper ? floorOf(sum, step.q) : ceilOf(sum, step.q);
}

bool Derivation::take(Step step) {
  if (isContradiction_) return false;
  std::erase_if(step.terms, [](const Term& term) { return term.count == 0; });
  return step.kind == Step::Kind::CLASS ? takeClass(step) : takeEnd(step);
}

bool Derivation::takeEnd(const Step& step) {
  const std::optional<Integer> end = endOf(step);
  Range range = rangeOf(step.form);
  if (!end) return false;
  std::optional<Integer>& old = step.kind == Step::Kind::UPPER ? range.high : range.low;
  if (old && (step.kind == Step::Kind::UPPER ? *end >= *old : *end <= *old)) return false;
  old = *end;
  return keep(step, range);
}

bool Derivation::takeClass(const Step& step) {
  Integer residue = 0;
  for (const Term& term : step.terms) {
    if (!system_.ranges[term.row].isFixed()) return false;
    residue += term.count * *system_.ranges[term.row].low;
  }
  const IntegerVector c = restOf(step);
  for (std::size_t j = 0; j < c.size(); ++j) {
    if (system_.box[j].isFixed())
      residue += c[j] * *system_.box[j].low;
    else if (!mpz_divisible_p(c[j].get_mpz_t(), step.modulus.get_mpz_t()))
      return false;
  }
  const Integer common = gcd(step.q, step.modulus);
  if (!mpz_divisible_p(residue.get_mpz_t(), common.get_mpz_t())) return keep(step, {Integer(1), Integer(0)});
  const Integer width = step.modulus / common;
  if (width == 1) return false;
  // q / common f = residue / common modulo width.
  Integer inverse;
  mpz_invert(inverse.get_mpz_t(), Integer(step.q / common).get_mpz_t(), width.get_mpz_t());
  const Integer value = residue / common * inverse;
  Range range = rangeOf(step.form);
  if (range.low) range.low = firstFrom(*range.low, value, width);
  if (range.high) range.high = lastTo(*range.high, value, width);
  const Range& old = rangeOf(step.form);
  if (range.low == old.low && range.high == old.high) return false;
  return keep(step, range);
}

bool Derivation::keep(const Step& step, const Range& range) {
  bases_.push_back(basesOf(step, range));
  Makers& makers = makersOf(step.form);
  if (step.kind != Step::Kind::LOWER) makers.high = steps_.size();
  if (step.kind != Step::Kind::UPPER) makers.low = steps_.size();
  if (step.form.kind == Form::Kind::VARIABLE) system_.box[step.form.index] = range;
  if (step.form.kind == Form::Kind::ROW) system_.ranges[step.form.index] = range;
  steps_.push_back(step);
  isContradiction_ = range.isEmpty();
  return true;
}

Derivation::Makers& Derivation::makersOf(const Form& form) {
  if (form.kind == Form::Kind::VARIABLE) return boxMakers_[form.index];
  return form.kind == Form::Kind::ROW ? rowMakers_[form.index] : zeroMakers_;
}

// The makers of all ends that the step looks at. What is dropped of the others leaves wider ranges, in which
// it says the same.
std::vector<std::size_t> Derivation::basesOf(const Step& step, const Range& range) {
  std::vector<std::size_t> bases;
  const auto add = [&bases](const Maker& maker) {
    if (maker) bases.push_back(*maker);
  };
  const auto addBoth = [&add](const Makers& makers) {
    add(makers.low);
    add(makers.high);
  };
  const bool isClass = step.kind == Step::Kind::CLASS;
  const auto addFor = [&](const Integer& count, const Makers& makers) {
    if (count == 0) return;
    if (isClass)
      addBoth(makers);
    else
      add((count > 0) == (step.kind == Step::Kind::UPPER) ? makers.high : makers.low);
  };
  for (const Term& term : step.terms) addFor(term.count, rowMakers_[term.row]);
  const IntegerVector c = restOf(step);
  for (std::size_t j = 0; j < c.size(); ++j)
    if (!isClass || system_.box[j].isFixed()) addFor(c[j], boxMakers_[j]);
  if (isClass || range.isEmpty()) addBoth(makersOf(step.form));
  return bases;
}

std::vector<Step> Derivation::stepsFor(const std::vector<std::size_t>& rows) const {
  std::vector<bool> needed(steps_.size());
  const auto need = [&needed](const Makers& makers) {
    for (const Maker& maker : {makers.low, makers.high})
      if (maker) needed[*maker] = true;
  };
  for (const Makers& makers : boxMakers_) need(makers);
  for (const std::size_t row : rows) need(rowMakers_[row]);
  return stepsBehind(std::move(needed));
}

std::vector<Step> Derivation::stepsOfContradiction() const {
  std::vector<bool> needed(steps_.size());
  // Without any the system itself has an empty range.
  if (!needed.empty()) needed.back() = true;
  return stepsBehind(std::move(needed));
}

std::vector<Step> Derivation::stepsBehind(std::vector<bool> needed) const {
  std::vector<Step> steps;
  for (std::size_t i = steps_.size(); i-- > 0;) {
    if (!needed[i]) continue;
    for (const std::size_t base : bases_[i]) needed[base] = true;
    steps.push_back(steps_[i]);
  }
  std::reverse(steps.begin(), steps.end());
  return steps;
}

}  // namespace latbox::complete::proof
