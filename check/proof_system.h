// The program in whole numbers: z_j = 10^d_j x_j, rows with whole coefficients, and the norms in whole units.
// docs/proof.md, "The system", says which.
#pragma once

#include <optional>
#include <vector>

#include "check/program.h"
#include "check/proof_text.h"

namespace latbox::check::proof {

// low .. high; an end that is not there is open.
struct Range {
  std::optional<mpz_class> low;
  std::optional<mpz_class> high;

  bool isEmpty() const { return low && high && *low > *high; }
  bool isFixed() const { return low && high && *low == *high; }
  bool isClosed() const { return low && high; }
  bool holds(const mpz_class& value) const { return (!low || value >= *low) && (!high || value <= *high); }
};

// Sum of coefficient times z_j, and a constant, which rows with a range do not have.
struct Form {
  Integers coefficients;
  mpz_class constant;

  mpz_class at(const Integers& z) const;
};

struct SystemRow {
  Form form;
  Range range;
};

struct System {
  std::vector<Range> variables;
  std::vector<SystemRow> rows;
};

// The norms of z times `unit`: s is the sum of the sizes of the distances, t that and `linear`.
struct Norms {
  mpz_class unit = 1;
  Form linear;
  std::vector<Form> distances;
  // Some target without a wanted value has a coefficient that is not 0.
  bool hasLinear = false;
};

// Equations and inequations.
System systemOf(const Program& program);
Norms normsOf(const Program& program);

// T and S in whole units.
struct Bounds {
  mpz_class target;
  mpz_class slack;
};

// The row that a line "norm", "distance" or "linear" stands for.
// Throws: Refused.
SystemRow rowOf(const ObjectiveRow& line, Goal goal, const Norms& norms, const Bounds& bounds);

// Whether norms t and s count.
template <class Number>
bool counts(Goal goal, const Number& t, const Number& s, const Number& T, const Number& S) {
  if (goal == Goal::BETTER) return t < T;
  if (goal == Goal::SLACK) return t == T && s < S;
  if (goal == Goal::EQUAL) return t == T && s == S;
  return true;
}

// Whether z is feasible, its ranges, its rows, and its norms count for the goal.
bool isFeasible(const System& system, const Integers& z);
Bounds normsAt(const Norms& norms, const Integers& z);

}  // namespace latbox::check::proof
