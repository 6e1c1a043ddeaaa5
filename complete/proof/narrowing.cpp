#include "complete/proof/narrowing.h"

namespace latbox::complete::proof {
namespace {

constexpr int MOST_ROUNDS = 60;

// The least or greatest value of a row, some variables being open.
struct Activity {
  Integer sum = 0;
  std::size_t open = 0;
};

const std::optional<Integer>& endOf(const Range& range, bool high) {
  return high ? range.high : range.low;
}

Activity activityOf(const Derivation& derivation, std::size_t row, bool greatest) {
  Activity activity;
  const IntegerVector& a = derivation.rows()[row];
  for (std::size_t j = 0; j < a.size(); ++j) {
    if (a[j] == 0) continue;
    const std::optional<Integer>& end = endOf(derivation.box()[j], greatest == (a[j] > 0));
    if (end)
      activity.sum += a[j] * *end;
    else
      ++activity.open;
  }
  return activity;
}

class Propagation {
 public:
  explicit Propagation(Derivation& derivation) : d_(derivation) {}

  void run() {
    bool changed = true;
    for (int round = 0; round < MOST_ROUNDS && changed; ++round) {
      changed = false;
      for (std::size_t i = 0; i < d_.rows().size() && !d_.isContradiction(); ++i)
        changed = settle(i) || changed;
    }
  }

 private:
  bool settle(std::size_t i) {
    const Integer divisor = divisorOf(d_, i);
    bool changed = false;
    if (divisor == 0) {
      closeRow(i);
      return false;
    }
    if (divisor > 1) changed = d_.take({Step::Kind::CLASS, {Form::Kind::ROW, i}, 1, divisor, {}});
    if (d_.isContradiction() || isImplied(d_, i)) return changed;
    for (std::size_t j = 0; j < d_.box().size() && !d_.isContradiction(); ++j)
      for (const bool upper : {true, false})
        if (d_.rows()[i][j] != 0) changed = narrow(i, j, upper) || changed;
    return changed;
  }

  // A row of fixed variables is kept or is not.
  void closeRow(std::size_t i) {
    const Activity value = activityOf(d_, i, true);
    const Range& range = d_.ranges()[i];
    if (range.high && value.sum > *range.high) d_.take({Step::Kind::LOWER, {Form::Kind::ROW, i}, 1, 0, {}});
    if (range.low && value.sum < *range.low) d_.take({Step::Kind::UPPER, {Form::Kind::ROW, i}, 1, 0, {}});
  }

  // The row less the others. Only a step that changes something is formed.
  bool narrow(std::size_t i, std::size_t j, bool upper) {
    const Integer& a = d_.rows()[i][j];
    const Range& own = d_.box()[j];
    if (own.isFixed()) return false;
    const bool high = upper == (a > 0);
    const std::optional<Integer>& side = endOf(d_.ranges()[i], high);
    if (!side) return false;
    // The others do their least where the row's upper side is used.
    Activity rest = activityOf(d_, i, !high);
    const std::optional<Integer>& end = endOf(own, !upper);
    if (end)
      rest.sum -= a * *end;
    else
      --rest.open;
    if (rest.open > 0) return false;
    const Integer size = abs(a);
    Integer left = *side - rest.sum;
    if (a < 0) left = -left;
    const Integer bound = upper ? floorOf(left, size) : ceilOf(left, size);
    const std::optional<Integer>& old = endOf(own, upper);
    if (old && (upper ? bound >= *old : bound <= *old)) return false;
    return d_.take({upper ? Step::Kind::UPPER : Step::Kind::LOWER,
                    {Form::Kind::VARIABLE, j},
                    size,
                    0,
                    {{i, Integer(sgn(a))}}});
  }

  Derivation& d_;
};

}  // namespace

void propagate(Derivation& derivation) {
  Propagation(derivation).run();
}

void closeRows(Derivation& derivation) {
  for (std::size_t i = 0; i < derivation.rows().size(); ++i) {
    if (isImplied(derivation, i)) continue;
    for (const Step::Kind kind : {Step::Kind::UPPER, Step::Kind::LOWER})
      derivation.take({kind, {Form::Kind::ROW, i}, 1, 0, {}});
  }
}

bool isImplied(const Derivation& derivation, std::size_t row) {
  const Range& range = derivation.ranges()[row];
  if (range.low) {
    const Activity least = activityOf(derivation, row, false);
    if (least.open > 0 || least.sum < *range.low) return false;
  }
  if (range.high) {
    const Activity most = activityOf(derivation, row, true);
    if (most.open > 0 || most.sum > *range.high) return false;
  }
  return true;
}

Integer divisorOf(const Derivation& derivation, std::size_t row) {
  Integer divisor = 0;
  const IntegerVector& a = derivation.rows()[row];
  for (std::size_t j = 0; j < a.size(); ++j)
    if (!derivation.box()[j].isFixed()) divisor = gcd(divisor, a[j]);
  return divisor;
}

void divideByContent(Step& step) {
  Integer divisor = step.q;
  for (const Term& term : step.terms) divisor = gcd(divisor, term.count);
  if (step.modulus != 0 || divisor <= 1) return;
  step.q /= divisor;
  for (Term& term : step.terms) term.count /= divisor;
}

}  // namespace latbox::complete::proof
