#include "check/proof_ranges.h"

#include <set>

namespace latbox::check::proof {
namespace {

class Narrowing {
 public:
  explicit Narrowing(System& system) : system_(system) {}

  bool isContradictory() const {
    for (const Range& range : system_.variables)
      if (range.isEmpty()) return true;
    for (const SystemRow& row : system_.rows)
      if (row.range.isEmpty()) return true;
    return false;
  }

  // True for a contradiction.
  bool take(const Step& step) {
    step_ = &step;
    if (step.divisor <= 0) refuse("the number behind the form is not positive");
    Range zero{mpz_class(0), mpz_class(0)};
    Range& range = step.form == '0' ? zero : rangeOf(step.form, step.number);
    const Integers rest = restOf(step);
    if (step.rule == Rule::CLASS) return takeClass(range, rest);
    step.rule == Rule::UPPER ? takeUpper(range, rest) : takeLower(range, rest);
    return range.isEmpty();
  }

 private:
  [[noreturn]] void refuse(const std::string& reason) const { throw Refused(step_->line, reason); }

  Range& rangeOf(char form, std::size_t number) {
    const std::size_t size = form == 'x' ? system_.variables.size() : system_.rows.size();
    if (number == 0 || number > size) refuse(std::string("there is no such ") + form);
    return form == 'x' ? system_.variables[number - 1] : system_.rows[number - 1].range;
  }

  // c = q f - sum y_i r_i.
  Integers restOf(const Step& step) {
    Integers rest(system_.variables.size());
    const auto add = [&](std::size_t row, const mpz_class& factor) {
      const Integers& coefficients = system_.rows[row - 1].form.coefficients;
      for (std::size_t j = 0; j < rest.size(); ++j) rest[j] += factor * coefficients[j];
    };
    if (step.form == 'x') rest[step.number - 1] = step.divisor;
    if (step.form == 'r') add(step.number, step.divisor);
    std::set<std::size_t> met;
    for (const Term& term : step.terms) {
      rangeOf('r', term.row);
      if (!met.insert(term.row).second) refuse("row " + std::to_string(term.row) + " stands twice");
      add(term.row, -term.factor);
    }
    return rest;
  }

  // Adds factor times the end that makes this the greatest (sign 1) or the least (sign -1).
  void addEnd(mpz_class& sum, const mpz_class& factor, int sign, char form, std::size_t number) {
    if (factor == 0) return;
    const Range& range = rangeOf(form, number);
    const std::optional<mpz_class>& end = sgn(factor) == sign ? range.high : range.low;
    if (!end) refuse(std::string("an end of ") + form + std::to_string(number) + " is open");
    sum += factor * *end;
  }

  mpz_class extreme(const Integers& rest, int sign) {
    mpz_class sum;
    for (const Term& term : step_->terms) addEnd(sum, term.factor, sign, 'r', term.row);
    for (std::size_t j = 0; j < rest.size(); ++j) addEnd(sum, rest[j], sign, 'x', j + 1);
    return sum;
  }

  void takeUpper(Range& range, const Integers& rest) {
    mpz_class end = extreme(rest, 1);
    mpz_fdiv_q(end.get_mpz_t(), end.get_mpz_t(), step_->divisor.get_mpz_t());
    if (!range.high || end < *range.high) range.high = end;
  }

  void takeLower(Range& range, const Integers& rest) {
    mpz_class end = extreme(rest, -1);
    mpz_cdiv_q(end.get_mpz_t(), end.get_mpz_t(), step_->divisor.get_mpz_t());
    if (!range.low || end > *range.low) range.low = end;
  }

  // q f = residue modulo Q.
  bool takeClass(Range& range, const Integers& rest) {
    if (step_->modulus <= 0) refuse("the modulus is not positive");
    mpz_class residue = residueOf(rest);
    const mpz_class common = gcd(step_->divisor, step_->modulus);
    if (residue % common != 0) return true;
    const mpz_class modulus = step_->modulus / common;
    const mpz_class divisor = step_->divisor / common;
    mpz_class inverse;
    // Modulo 1 all is 0; otherwise they have no common divisor, and there is an inverse.
    if (modulus > 1) mpz_invert(inverse.get_mpz_t(), divisor.get_mpz_t(), modulus.get_mpz_t());
    residue = residue / common * inverse;
    intoClass(range, residue, modulus);
    return range.isEmpty();
  }

  mpz_class residueOf(const Integers& rest) {
    mpz_class residue;
    for (const Term& term : step_->terms) {
      const Range& range = rangeOf('r', term.row);
      if (!range.isFixed()) refuse("row " + std::to_string(term.row) + " has more than one value");
      residue += term.factor * *range.low;
    }
    for (std::size_t j = 0; j < rest.size(); ++j) {
      const Range& range = system_.variables[j];
      if (range.isFixed())
        residue += rest[j] * *range.low;
      else if (rest[j] % step_->modulus != 0)
        refuse("the coefficient of x" + std::to_string(j + 1) + " is no multiple of the modulus");
    }
    return residue;
  }

  System& system_;
  const Step* step_ = nullptr;
};

}  // namespace

void intoClass(Range& range, const mpz_class& residue, const mpz_class& modulus) {
  mpz_class beyond;
  if (range.low) {
    const mpz_class distance = residue - *range.low;
    mpz_fdiv_r(beyond.get_mpz_t(), distance.get_mpz_t(), modulus.get_mpz_t());
    *range.low += beyond;
  }
  if (range.high) {
    const mpz_class distance = *range.high - residue;
    mpz_fdiv_r(beyond.get_mpz_t(), distance.get_mpz_t(), modulus.get_mpz_t());
    *range.high -= beyond;
  }
}

bool narrow(System& system, const std::vector<Step>& steps) {
  Narrowing narrowing(system);
  if (narrowing.isContradictory()) return true;
  for (const Step& step : steps)
    if (narrowing.take(step)) return true;
  return false;
}

}  // namespace latbox::check::proof
