// The lattice of all points: v = x0 + sum lambda_i K_i, its columns, and the ends of these; docs/proof.md,
// "The lattice". What leaves this file is shown to hold every point that counts.
#pragma once

#include "check/proof/system.h"

namespace latbox::check::proof {

// The products of two vectors, summed.
mpz_class product(const Integers& a, const Integers& b);

struct Box {
  // The variable of each column that is one; behind these stand the coordinate rows.
  std::vector<std::size_t> variables;
  // The values of the fixed variables, 0 for the others.
  Integers fixed;
  // Of each column. No point counts if a column has low > high, as `isEmpty` says.
  Integers low;
  Integers high;
  bool isEmpty = false;
  Integers point;
  std::vector<Integers> basis;
  // Of each lambda; without meaning if the box is empty.
  Integers alpha;
  Integers beta;

  std::size_t columns() const { return low.size(); }
  // w_c, and U_c.
  mpz_class width(std::size_t c) const { return high[c] - low[c]; }
  mpz_class centred(std::size_t c) const { return 2 * point[c] - low[c] - high[c]; }
};

// The columns and the lattice of a search, all conditions verified. The system is narrowed, and without an
// empty range.
// Throws: Refused.
Box boxOf(const System& system, const Search& search);

}  // namespace latbox::check::proof
