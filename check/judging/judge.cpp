#include "check/judging/judge.h"

#include <algorithm>
#include <utility>

namespace latbox::check {
namespace {

// A sum with the error that standard precision may have made in it.
struct Figure {
  Rational value;
  Rational tolerance;
};

std::string numbered(const char* what, std::size_t i) {
  return what + std::to_string(i + 1);
}

std::string range(const Number& low, const Number& high) {
  return shown(low) + " .. " + shown(high);
}

std::string range(const Rewriting::Box& box) {
  return range(Number(box.low), Number(box.high));
}

// The most that a rounding may make out in any figure.
const Rational& mostRounding() {
  static const Rational most = 1 / powerOfTen(9);
  return most;
}

bool isWithin(const Number& claimed, const Rational& exact, const Rational& tolerance) {
  return claimed.isFinite() && abs(claimed.value() - exact) <= tolerance;
}

// a x - side. Sums of whole numbers are exact in every precision.
Figure figure(const Row& a, const Scaled& x, const Rational& side) {
  static const Rational relative = 1 / powerOfTen(15);
  const Rational value = a.times(x) - side;
  if (side.isWhole() && a.isWhole() && x.isWhole()) return {value, 0};
  Rational sizes = abs(side);
  for (std::size_t j = 0; j < a.size(); ++j) sizes += abs(a[j] * x[j]);
  return {value, std::min(sizes * relative, mostRounding())};
}

class Judge {
 public:
  Judge(const Program& program, const Rewriting& rewriting, const Solution& solution)
      : p_(program), rewriting_(rewriting), s_(solution) {}

  Judgement result() {
    if (!takePoint()) return std::move(judgement_);
    for (std::size_t i = 0; i < x_.size(); ++i) judgeVariable(i);
    for (std::size_t i = 0; i < p_.Ag.size(); ++i) judgeEquation(i);
    for (std::size_t i = 0; i < p_.Au.size(); ++i) judgeInequation(i);
    judgeTargets();
    return std::move(judgement_);
  }

 private:
  void fault(const std::string& text) { judgement_.faults.push_back(text); }
  void note(const std::string& text) { judgement_.notes.push_back(text); }

  bool takePoint() {
    if (s_.x.size() != p_.variables()) {
      fault("x has " + std::to_string(s_.x.size()) + " components, not " + std::to_string(p_.variables()));
      return false;
    }
    std::vector<Rational> values;
    for (std::size_t i = 0; i < s_.x.size(); ++i) {
      if (!s_.x[i].isFinite()) fault(numbered("x", i) + " is infinite");
      values.push_back(s_.x[i].isFinite() ? s_.x[i].value() : Rational(0));
    }
    x_ = Scaled(std::move(values));
    return judgement_.faults.empty();
  }

  void judgeVariable(std::size_t i) {
    const auto is = [this, i] { return numbered("x", i) + " = " + shown(x_[i]) + " is "; };
    if (!x_[i].isWhole() && !(x_[i] * powerOfTen(p_.dx[i])).isWhole())
      fault(is() + "off its grid of " + std::to_string(p_.dx[i]) + " digits" + fixedReason(i));
    if (s_.x[i] < p_.lx[i] || s_.x[i] > p_.rx[i])
      fault(is() + "outside " + range(p_.lx[i], p_.rx[i]) + boxReason(i));
  }

  std::string fixedReason(std::size_t i) const {
    return p_.lx[i] == p_.rx[i] ? " (it is fixed, and the solver takes fixed variables as they are)" : "";
  }

  std::string boxReason(std::size_t i) const {
    const auto box = rewriting_.ownBox(i);
    if (!box || x_[i] < box->low || x_[i] > box->high) return "";
    return " (its lower bound is not 0, so the solver searches within " + range(*box) + ")";
  }

  static std::string replacedReason(const std::string& by) {
    return by.empty() ? "" : " (" + by + ", with equal sides, took its place in the solver)";
  }

  void judgeEquation(std::size_t i) {
    const Rational value = p_.Ag[i].times(x_);
    if (value != p_.bg[i])
      fault(numbered("equation ", i) + " gives " + shown(value) + ", not " + shown(p_.bg[i]) +
            replacedReason(rewriting_.replacedEquation(i)));
  }

  void judgeInequation(std::size_t i) {
    const Number value(p_.Au[i].times(x_));
    if (value < p_.lu[i] || value > p_.ru[i])
      fault(numbered("inequation ", i) + " gives " + shown(value) + ", outside " + range(p_.lu[i], p_.ru[i]) +
            replacedReason(rewriting_.replacedInequation(i)));
  }

  void judgeTargets() {
    const bool shown = s_.targets.size() == p_.dt.size();
    if (!shown)
      fault(std::to_string(s_.targets.size()) + " target values, not " + std::to_string(p_.dt.size()));
    for (std::size_t place = 0; place < p_.dt.size(); ++place)
      judgeTarget(rewriting_.targetOrder()[place], shown ? &s_.targets[place] : nullptr);
    compare("target norm", s_.targetNorm, norm_);
    judgeSlackNorm();
  }

  // Adds the target to the norms, and compares its value where one is claimed.
  void judgeTarget(std::size_t i, const Number* claimed) {
    const Number& wanted = p_.dt[i];
    Figure value = figure(p_.At[i], x_, wanted.isFinite() ? wanted.value() : Rational(0));
    if (wanted.isFinite()) value.value = abs(value.value);
    norm_.value += wanted.infinite() > 0 ? -value.value : value.value;
    norm_.tolerance += value.tolerance;
    if (wanted.isFinite()) addDistance(value);
    if (claimed == nullptr) return;
    const std::string name = numbered(wanted.isFinite() ? "distance from target " : "value of target ", i);
    if (wanted.isFinite()) allowExcess(name, *claimed, value);
    compare(name, *claimed, value);
  }

  void addDistance(const Figure& distance) {
    slack_.value += distance.value;
    slack_.tolerance += distance.tolerance;
  }

  // Both deviations above zero: the claim is their sum, and the norm follows the claim.
  void allowExcess(const std::string& name, const Number& claimed, Figure& distance) {
    if (!claimed.isFinite()) return;
    const Rational excess = claimed.value() - distance.value;
    if (excess <= 0 || !(excess / 2).isWhole()) return;
    note(name + ": " + shown(distance.value) + ", claimed with both deviations above 0 as " + shown(claimed));
    distance.value = claimed.value();
    norm_.value += excess;
  }

  void judgeSlackNorm() {
    const Rational taken = rewriting_.slackNorm(x_);
    if (!isWithin(s_.slackNorm, slack_.value, slack_.tolerance) &&
        isWithin(s_.slackNorm, taken, mostRounding()))
      note("slack norm " + shown(taken) + " is what the solver takes from other rows; the distance is " +
           shown(slack_.value));
    else
      compare("slack norm", s_.slackNorm, slack_);
  }

  void compare(const std::string& name, const Number& claimed, const Figure& exact) {
    if (claimed == Number(exact.value)) return;
    const std::string text = name + ": claimed " + shown(claimed) + ", exactly " + shown(exact.value);
    isWithin(claimed, exact.value, exact.tolerance) ? note(text + ", a rounding") : fault(text);
  }

  const Program& p_;
  const Rewriting& rewriting_;
  const Solution& s_;
  Scaled x_{{}};
  Figure norm_;
  Figure slack_;
  Judgement judgement_;
};

}  // namespace

Judgement judge(const Program& program, const Rewriting& rewriting, const Solution& solution) {
  return Judge(program, rewriting, solution).result();
}

}  // namespace latbox::check
