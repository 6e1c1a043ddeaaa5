#include "check/judging/rewriting.h"

#include <algorithm>

namespace latbox::check {
namespace {

constexpr std::size_t LISTED = 5;

std::string numbered(const char* what, std::size_t i) {
  return what + std::to_string(i + 1);
}

// The solver takes sides for equal that differ by no more than this.
bool equalSides(const Number& low, const Number& high) {
  static const Rational tolerance = 1 / powerOfTen(9);
  if (!low.isFinite() || !high.isFinite()) return false;
  return high.value() - low.value() <= tolerance;
}

// "a, b, c and 4 more"
std::string listed(const std::vector<std::string>& names) {
  std::string text;
  for (std::size_t i = 0; i < std::min(names.size(), LISTED); ++i) text += (i > 0 ? ", " : "") + names[i];
  if (names.size() > LISTED) text += " and " + std::to_string(names.size() - LISTED) + " more";
  return text;
}

Rational rounded(const Rational& value, bool up) {
  const mpq_class exact = value.exact();
  mpz_class whole;
  (up ? mpz_cdiv_q : mpz_fdiv_q)(whole.get_mpz_t(), exact.get_num_mpz_t(), exact.get_den_mpz_t());
  return Rational(mpq_class(whole));
}

}  // namespace

Rewriting::Rewriting(const Program& program)
    : program_(program), replacedEquations_(program.Ag.size()), replacedInequations_(program.Au.size()) {
  for (std::size_t i = 0; i < program.Ag.size(); ++i)
    system_.push_back({&program.Ag[i], program.bg[i], &replacedEquations_[i]});
  for (std::size_t i = 0; i < program.Au.size(); ++i) inequations_.push_back(i);
  transferEqualSides();
  insertSlacks();
  insertDeviations();
}

// The system gains a zero row, and the inequation is put in the place of its own number.
void Rewriting::transferEqualSides() {
  for (std::size_t i = 0; i < inequations_.size();) {
    const std::size_t source = inequations_[i];
    if (!equalSides(program_.lu[source], program_.ru[source])) {
      ++i;
      continue;
    }
    system_.emplace_back();
    SystemRow& place = system_[std::min(i, system_.size() - 1)];
    if (place.replaced != nullptr) *place.replaced = numbered("inequation ", source);
    place = {&program_.Au[source], program_.lu[source].value(), &replacedInequations_[source]};
    inequations_.erase(inequations_.begin() + static_cast<std::ptrdiff_t>(i));
  }
}

// An inequation with one side becomes an equation, and the last inequation takes its place.
void Rewriting::insertSlacks() {
  for (std::size_t i = 0; i < inequations_.size();) {
    const Number& low = program_.lu[inequations_[i]];
    const Number& high = program_.ru[inequations_[i]];
    if (low.isFinite() == high.isFinite()) {
      ++i;
      continue;
    }
    system_.push_back({&program_.Au[inequations_[i]], low.isFinite() ? low.value() : high.value()});
    inequations_[i] = inequations_.back();
    inequations_.pop_back();
  }
}

// A target with a value becomes an equation, and changes places with the last target that has not; where its
// number meets the count of those before it, it stays.
void Rewriting::insertDeviations() {
  const std::size_t count = program_.dt.size();
  for (std::size_t i = 0; i < count; ++i) order_.push_back(i);
  std::vector<bool> done(count);
  for (std::size_t i = 0; i < count;) {
    const std::size_t target = order_[i];
    if (done[target] || !program_.dt[target].isFinite()) {
      ++i;
      continue;
    }
    done[target] = true;
    system_.push_back({&program_.At[target], program_.dt[target].value()});
    const std::size_t before = deviations_++;
    if (before != i + 1)
      std::swap(order_[i], order_[count - 1 - before]);
    else
      ++i;
  }
}

// For each of the last places of the target values the row of that number counts. Only where there is none it
// is that of a target with a value, the first one's for the very last place.
Rational Rewriting::slackNorm(const Scaled& x) const {
  Rational norm;
  const std::size_t count = program_.dt.size();
  const std::size_t firstDeviation = system_.size() - deviations_;
  for (std::size_t i = count - deviations_; i < count; ++i) {
    const std::size_t row = i < system_.size() ? i : firstDeviation + count - 1 - i;
    if (system_[row].row != nullptr) norm += abs(system_[row].row->times(x) - system_[row].side);
  }
  return norm;
}

std::optional<Rewriting::Box> Rewriting::ownBox(std::size_t i) const {
  const Number& lower = program_.lx[i];
  const Number& upper = program_.rx[i];
  if (!lower.isFinite() || !upper.isFinite() || lower == upper) return std::nullopt;
  const Rational scale = powerOfTen(program_.dx[i]);
  const Rational low = rounded(lower.value() * scale, true);
  const Rational high = rounded(upper.value() * scale, false);
  if (low == 0) return std::nullopt;
  const Rational other = high - low;
  return Box{std::min(low, other) / scale, std::max(low, other) / scale};
}

std::string Rewriting::replacementWarning() const {
  std::vector<std::string> lost;
  for (std::size_t i = 0; i < replacedEquations_.size(); ++i)
    if (!replacedEquations_[i].empty())
      lost.push_back(numbered("equation ", i) + " by " + replacedEquations_[i]);
  for (std::size_t i = 0; i < replacedInequations_.size(); ++i)
    if (!replacedInequations_[i].empty())
      lost.push_back(numbered("inequation ", i) + " by " + replacedInequations_[i]);
  if (lost.empty()) return "";
  return "inequations with equal sides take the place of other rows in the solver, which then heeds these no "
         "more: " +
         listed(lost) + "; write them as equations";
}

std::string Rewriting::boxWarning() const {
  std::vector<std::string> names;
  for (std::size_t i = 0; i < program_.variables(); ++i)
    if (const auto box = ownBox(i))
      names.push_back(numbered("x", i) + " within " + toText(box->low) + " .. " + toText(box->high) +
                      " instead of " + toText(program_.lx[i]) + " .. " + toText(program_.rx[i]));
  if (names.empty()) return "";
  return "lower bounds that are not 0 make the solver search another box: " + listed(names) +
         "; it may claim points outside the bounds and miss points within; shift such variables to begin at "
         "0";
}

std::vector<std::string> Rewriting::warnings() const {
  std::vector<std::string> texts;
  if (program_.trailingText) texts.push_back("the text behind rx is not read");
  for (const std::string& text : {replacementWarning(), boxWarning()})
    if (!text.empty()) texts.push_back(text);
  return texts;
}

}  // namespace latbox::check
