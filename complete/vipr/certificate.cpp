#include "complete/vipr/certificate.h"

#include <stdexcept>

namespace latbox::complete::vipr {

Certificate::Certificate(std::size_t variables)
    : variables_(variables), zero_(std::make_shared<IntegerVector>(variables)) {}

std::size_t Certificate::give(Constraint constraint) {
  ++givenCount_;
  return add(given_, std::move(constraint), "");
}

std::size_t Certificate::assume(Constraint constraint) {
  return add(derived_, std::move(constraint), " { asm } -1");
}

std::size_t Certificate::derive(const Combination& combination, Sense sense) {
  std::vector<Rational> sum(variables_);
  for (const auto& [line, factor] : combination) {
    const IntegerVector& form = *lines_[line].form;
    for (std::size_t j = 0; j < variables_; ++j)
      if (form[j] != 0) sum[j] += factor * form[j];
  }
  auto whole = std::make_shared<IntegerVector>();
  for (const Rational& a : sum) whole->push_back(a.get_num());
  const Rational side = sideOf(combination);
  const Integer rounded = sense == Sense::LESS ? floorOf(side) : ceilOf(side);
  // Of nothing the sum is an equation, 0 = 0, which is not rounded.
  const char* kind = combination.empty() ? "lin" : "rnd";
  return add(derived_, {sense, rounded, std::move(whole)}, reasonOf(kind, combination));
}

std::size_t Certificate::refute(const Combination& combination) {
  const Rational side = sideOf(combination);
  if (side >= 0) throw std::logic_error("a certificate lacks a contradiction");
  return add(derived_, {Sense::LESS, side, zero_}, reasonOf("lin", combination));
}

std::size_t Certificate::relax(std::size_t line, Sense sense) {
  const Constraint constraint = lines_[line];
  return add(derived_, {sense, constraint.side, constraint.form}, reasonOf("lin", {{line, 1}}));
}

Rational Certificate::sideOf(const Combination& combination) const {
  Rational side = 0;
  for (const auto& [line, factor] : combination) side += factor * lines_[line].side;
  return side;
}

std::string Certificate::reasonOf(const char* kind, const Combination& combination) {
  std::string reason = std::string(" { ") + kind + " " + std::to_string(combination.size());
  for (const auto& [line, factor] : combination)
    reason += "  " + std::to_string(line) + " " + factor.get_str();
  return reason + " } -1";
}

std::size_t Certificate::split(std::size_t first, std::size_t less, std::size_t second, std::size_t greater) {
  return split(first, less, second, greater, {Sense::GREATER, 1, zero_});
}

std::size_t Certificate::split(std::size_t first, std::size_t less, std::size_t second, std::size_t greater,
                               Constraint constraint) {
  std::string reason = " { uns";
  for (const std::size_t line : {first, less, second, greater}) reason += " " + std::to_string(line);
  return add(derived_, std::move(constraint), reason + " } -1");
}

std::size_t Certificate::add(std::string& text, Constraint constraint, const std::string& reason) {
  constexpr const char* LETTERS[] = {"L", "E", "G"};
  text += "C" + std::to_string(lines_.size()) + " " + LETTERS[static_cast<int>(constraint.sense)] + " " +
          constraint.side.get_str() + "  " + textOf(*constraint.form) + reason + "\n";
  lines_.push_back(std::move(constraint));
  return lines_.size() - 1;
}

std::string textOf(const IntegerVector& form) {
  std::size_t count = 0;
  std::string terms;
  for (std::size_t j = 0; j < form.size(); ++j) {
    if (form[j] == 0) continue;
    ++count;
    terms += "  " + std::to_string(j) + " " + form[j].get_str();
  }
  return std::to_string(count) + terms;
}

}  // namespace latbox::complete::vipr
