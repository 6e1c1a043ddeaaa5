// The program in whole numbers, z_j = 10^d_j x_j and rows with whole coefficients, as docs/proof.md builds it
// ("The system"); and, beside it, whether a point counts, by the program as it is written.
#pragma once

#include <optional>
#include <vector>

#include "check/files/program.h"
#include "check/proof/text.h"

namespace latbox::check::proof {

// low .. high; an end that is not there is open.
struct Range {
  std::optional<mpz_class> low;
  std::optional<mpz_class> high;

  bool isEmpty() const { return low && high && *low > *high; }
  bool isFixed() const { return low && high && *low == *high; }
};

struct SystemRow {
  Integers coefficients;
  Range range;
};

struct System {
  std::vector<Range> variables;
  std::vector<SystemRow> rows;
};

// The equations and inequations.
System systemOf(const Program& program);

// c, of which all norms are whole multiples of 1 / c.
mpz_class unitOf(const Program& program);
// Whether some target without a wanted value has a coefficient that is not 0.
bool hasLinear(const Program& program);
// The row that a line of an objective stands for. T and S of the verdict are multiples of the unit.
// Throws: Refused.
SystemRow rowOf(const Program& program, const ObjectiveRow& line, Goal goal, const Verdict& verdict);

struct Norms {
  Rational target;
  Rational slack;
};
// The norms of x, nothing if x is not feasible. Requires x of the program's dimension.
std::optional<Norms> normsOf(const Program& program, const std::vector<Rational>& x);
// Whether points with these norms count, for T and S of the verdict.
bool counts(Goal goal, const Norms& norms, const Norms& verdict);

}  // namespace latbox::check::proof
