#include "check/proof/ranges.h"

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
    Range& range = rangeOf(step, zero);
    const Integers rest = restOf(step);
    if (step.rule == Rule::CLASS) return takeClass(range, rest);
    step.rule == Rule::UPPER ? takeUpper(range, rest) : takeLower(range, rest);
    return range.isEmpty();
  }

 private:
  [[noreturn]] void refuse(const std::string& reason) const { throw Refused(step_->line, reason); }

  std::size_t placeOf(const mpz_class& number, std::size_t size) const {
    if (number < 1 || number > size) refuse("there is no variable or row " + number.get_str());
    return number.get_ui() - 1;
  }

  SystemRow& row(const mpz_class& number) { return system_.rows[placeOf(number, system_.rows.size())]; }

  Range& rangeOf(const Step& step, Range& zero) {
    if (step.form == '0') return zero;
    if (step.form == 'r') return row(step.number).range;
    return system_.variables[placeOf(step.number, system_.variables.size())];
  }

  // c = q f - sum y_i r_i.
  Integers restOf(const Step& step) {
    Integers rest(system_.variables.size());
    const auto add = [&](const mpz_class& number, const mpz_class& factor) {
      const Integers& coefficients = row(number).coefficients;
      for (std::size_t j = 0; j < rest.size(); ++j) rest[j] += factor * coefficients[j];
    };
    if (step.form == 'x') rest[placeOf(step.number, rest.size())] = step.divisor;
    if (step.form == 'r') add(step.number, step.divisor);
    for (std::size_t i = 0; i < step.rows.size(); ++i) add(step.rows[i], -step.factors[i]);
    if (std::set<mpz_class>(step.rows.begin(), step.rows.end()).size() < step.rows.size())
      refuse("a row stands twice");
    return rest;
  }

  // The greatest (sign 1) or the least (sign -1) that sum y_i r_i + sum c_j z_j may be.
  mpz_class extreme(const Integers& rest, int sign) {
    mpz_class sum;
    const auto add = [&](const mpz_class& factor, const Range& range, const std::string& name) {
      if (factor == 0) return;
      const std::optional<mpz_class>& end = sgn(factor) == sign ? range.high : range.low;
      if (!end) refuse("an end of " + name + " is open");
      sum += factor * *end;
    };
    for (std::size_t i = 0; i < step_->rows.size(); ++i)
      add(step_->factors[i], row(step_->rows[i]).range, "r" + step_->rows[i].get_str());
    for (std::size_t j = 0; j < rest.size(); ++j)
      add(rest[j], system_.variables[j], "x" + std::to_string(j + 1));
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
    for (std::size_t i = 0; i < step_->rows.size(); ++i) {
      const Range& range = row(step_->rows[i]).range;
      if (!range.isFixed()) refuse("r" + step_->rows[i].get_str() + " has more than one value");
      residue += step_->factors[i] * *range.low;
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
