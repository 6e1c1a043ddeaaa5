// The text of a VIPR 1.1 certificate, line by line (Cheung, Gleixner and Steffy, Verifying integer
// programming results, 2017): constraints that are given, and constraints that follow from those before by a
// linear combination, a rounded one, or by both sides of a split.
#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "complete/program/integer_program.h"

namespace latbox::complete::vipr {

// Of which many lines may have the same.
using FormPointer = std::shared_ptr<const IntegerVector>;

enum class Sense { LESS, EQUAL, GREATER };

struct Constraint {
  Sense sense;
  Rational side;
  FormPointer form;
};

// Lines by their index, each with the factor that it counts with.
using Combination = std::map<std::size_t, Rational>;

class Certificate {
 public:
  explicit Certificate(std::size_t variables);

  // Bounds first. The index of the line, as of all that follow.
  std::size_t give(Constraint constraint);
  std::size_t assume(Constraint constraint);
  // What the combination says in this sense, LESS or GREATER, rounded to whole numbers. Requires that the
  // factors fit the sense, a line that is no equation, and a whole sum of forms.
  std::size_t derive(const Combination& combination, Sense sense);
  // The same where the forms are known to add up to 0 and the sides to less than that: a contradiction.
  std::size_t refute(const Combination& combination);
  // An equation as an inequation.
  std::size_t relax(std::size_t line, Sense sense);
  // 0 >= 1, from two lines that say so under the assumptions `less` and `greater`, which are the two sides of
  // a split.
  std::size_t split(std::size_t first, std::size_t less, std::size_t second, std::size_t greater);
  // The same for any constraint that both lines dominate.
  std::size_t split(std::size_t first, std::size_t less, std::size_t second, std::size_t greater,
                    Constraint constraint);

  const Constraint& operator[](std::size_t line) const { return lines_[line]; }
  std::size_t variables() const { return variables_; }
  const FormPointer& zero() const { return zero_; }

  // Given constraints, and derived ones; how many these are.
  const std::string& givenText() const { return given_; }
  const std::string& derivedText() const { return derived_; }
  std::size_t givenCount() const { return givenCount_; }
  std::size_t derivedCount() const { return lines_.size() - givenCount_; }

 private:
  Rational sideOf(const Combination& combination) const;
  static std::string reasonOf(const char* kind, const Combination& combination);
  std::size_t add(std::string& text, Constraint constraint, const std::string& reason);

  std::size_t variables_;
  FormPointer zero_;
  std::vector<Constraint> lines_;
  std::size_t givenCount_ = 0;
  std::string given_;
  std::string derived_;
};

// "2  0 4  1 -1": how many coefficients are not 0, and which.
std::string textOf(const IntegerVector& form);

}  // namespace latbox::complete::vipr
