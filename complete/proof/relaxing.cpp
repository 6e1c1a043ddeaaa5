#include "complete/proof/relaxing.h"

#include <algorithm>

#include "complete/linear/linear_bounds.h"
#include "complete/linear/linear_program.h"
#include "complete/proof/narrowing.h"

namespace latbox::complete::proof {
namespace {

constexpr int ROUNDS = 3;

// The rows that say more than the box, as a program.
struct Relaxed {
  IntegerProgram program;
  std::vector<std::size_t> rows;

  explicit Relaxed(const Derivation& derivation) {
    program.box = derivation.box();
    for (std::size_t i = 0; i < derivation.rows().size(); ++i) {
      if (divisorOf(derivation, i) == 0 || isImplied(derivation, i)) continue;
      rows.push_back(i);
      program.rows.push_back({derivation.rows()[i], derivation.ranges()[i]});
    }
  }

  std::size_t variables() const { return program.box.size(); }
  Form formOf(std::size_t variable) const {
    if (variable < variables()) return {Form::Kind::VARIABLE, variable};
    return {Form::Kind::ROW, rows[variable - variables()]};
  }
  // scale * sign * variable, bounded by these multipliers of sign * variable.
  Step stepOf(std::size_t variable, int sign, const Integer& scale, const IntegerVector& y) const {
    Step step{sign > 0 ? Step::Kind::UPPER : Step::Kind::LOWER, formOf(variable), scale, 0, {}};
    for (std::size_t i = 0; i < y.size(); ++i)
      if (y[i] != 0 && variable != variables() + i) step.terms.push_back({rows[i], Integer(sign * y[i])});
    return step;
  }
};

// The same end by multipliers of fewer digits.
Step shortened(const Derivation& derivation, const Step& step) {
  const std::optional<Integer> end = derivation.endOf(step);
  const std::size_t bits = mpz_sizeinbase(step.q.get_mpz_t(), 2);
  for (unsigned long kept = 0; end && kept + 4 < bits; kept += 3) {
    Step other = step;
    other.q = Integer(1) << kept;
    for (Term& term : other.terms) term.count = nearest(Integer(term.count * other.q), step.q);
    std::erase_if(other.terms, [](const Term& term) { return term.count == 0; });
    const std::optional<Integer> otherEnd = derivation.endOf(other);
    if (!otherEnd) continue;
    if (step.kind == Step::Kind::UPPER ? *otherEnd <= *end : *otherEnd >= *end) {
      divideByContent(other);
      return other;
    }
  }
  return step;
}

// One round in double.
class Round {
 public:
  Round(Derivation& derivation, unsigned long effort)
      : d_(derivation), relaxed_(derivation), bounds_(relaxed_.program, effort) {}

  bool run() {
    if (bounds_.isEmpty()) return take();
    bool changed = false;
    const std::size_t n = relaxed_.variables();
    const std::size_t total = n + relaxed_.rows.size();
    for (std::size_t i = 0; i < total && !d_.isContradiction(); ++i) {
      const std::size_t v = i < relaxed_.rows.size() ? n + i : i - relaxed_.rows.size();
      for (const int sign : {1, -1})
        if (!d_.isContradiction() && bounds_.greatest(v, sign)) changed = take() || changed;
    }
    return changed;
  }

  unsigned long work() const { return bounds_.work(); }

 private:
  bool take() {
    const LinearBounds::Proof& proof = bounds_.proof();
    Step step = shortened(d_, relaxed_.stepOf(proof.variable, proof.sign, proof.scale, proof.y));
    const bool changed = d_.take(std::move(step));
    // What it has proven itself may stand.
    const Range& range = d_.rangeOf(relaxed_.formOf(proof.variable));
    if (proof.variable < relaxed_.variables())
      relaxed_.program.box[proof.variable] = range;
    else
      relaxed_.program.rows[proof.variable - relaxed_.variables()].range = range;
    return changed;
  }

  Derivation& d_;
  Relaxed relaxed_;
  LinearBounds bounds_;
};

// The exact relaxation where something is open.
class Closing {
 public:
  explicit Closing(Derivation& derivation)
      : d_(derivation), relaxed_(derivation), relaxation_(relaxed_.program) {}

  void run() {
    if (!relaxation_.isFeasible()) {
      take();
      return;
    }
    const std::size_t total = relaxed_.variables() + relaxed_.rows.size();
    for (std::size_t v = 0; v < total; ++v) first_.push_back(relaxation_.value(v));
    varies_.assign(total, false);
    for (std::size_t v = 0; v < relaxed_.variables(); ++v) {
      if (!d_.box()[v].high) ask(v, 1);
      if (!d_.box()[v].low) ask(v, -1);
      if (d_.isContradiction()) return;
    }
    if (hasOpenVariables(d_)) fixConstants();
  }

 private:
  bool ask(std::size_t variable, int sign) {
    const bool bounded = relaxation_.greatest(variable, sign).has_value();
    for (std::size_t v = 0; v < first_.size(); ++v)
      if (relaxation_.value(v) != first_[v]) varies_[v] = true;
    if (bounded && !varies_[variable]) take();
    if (bounded && varies_[variable] && variable < relaxed_.variables()) take();
    return bounded;
  }

  void fixConstants() {
    for (std::size_t v = 0; v < first_.size() && !d_.isContradiction(); ++v) {
      if (varies_[v] || d_.rangeOf(relaxed_.formOf(v)).isFixed()) continue;
      for (const int sign : {1, -1})
        if (!varies_[v]) ask(v, sign);
    }
  }

  void take() {
    const std::vector<Rational> multipliers = relaxation_.multipliers();
    const Integer scale = commonDenominator(multipliers);
    IntegerVector y;
    for (const Rational& multiplier : multipliers) y.push_back(Rational(multiplier * scale).get_num());
    d_.take(relaxed_.stepOf(relaxation_.variable(), relaxation_.sign(), scale, y));
  }

  Derivation& d_;
  Relaxed relaxed_;
  LinearProgram relaxation_;
  std::vector<Rational> first_;
  std::vector<bool> varies_;
};

}  // namespace

bool hasOpenVariables(const Derivation& derivation) {
  return std::any_of(derivation.box().begin(), derivation.box().end(),
                     [](const Range& range) { return !range.isFinite(); });
}

bool narrowByRelaxation(Derivation& derivation) {
  closeRows(derivation);
  bool changed = false;
  unsigned long done = 0;
  for (int r = 0; r < ROUNDS && done < RELAXATION_EFFORT && !derivation.isContradiction(); ++r) {
    Round round(derivation, RELAXATION_EFFORT - done);
    if (!round.run()) return changed;
    changed = true;
    propagate(derivation);
    closeRows(derivation);
    done += round.work();
  }
  return changed;
}

void closeVariables(Derivation& derivation) {
  if (hasOpenVariables(derivation) && !derivation.isContradiction()) Closing(derivation).run();
}

}  // namespace latbox::complete::proof
