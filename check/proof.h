// Whether a proof proves its verdict on a program; docs/proof.md says what that takes.
#pragma once

#include <string>
#include <vector>

#include "check/proof_walk.h"

namespace latbox::check::proof {

// What the walks of all searches have met, in the order of the proof.
struct Met {
  std::vector<Goal> goals;
  std::vector<mpz_class> nodes;
  std::vector<mpz_class> points;
};

// Everything but the numbers of nodes and points: that the searches are those of the verdict, the point, the
// derived ranges, lattices and cuts. Walks what the plan says.
// Throws: Refused.
Met checkSearches(const Program& program, const Proof& proof, const Plan& plan);

// That all walks together have met what the searches state, and these what the verdict needs.
// Throws: Refused.
void requireStated(const Proof& proof, const Met& met);

// "all 12", "optimum 3/2 1/2, 4 points".
std::string toText(const Verdict& verdict);

// Whether a point of a file of solutions is one of those that the verdict speaks of, if it is feasible: for
// an optimum it must have its norms. Requires x of the program's dimension, and feasible.
class Listed {
 public:
  Listed(const Program& program, const Verdict& verdict)
      : program_(program), verdict_(verdict), norms_(normsOf(program)) {}
  bool holds(const std::vector<mpq_class>& x) const;
  // How many there are.
  mpz_class count() const;

 private:
  const Program& program_;
  const Verdict& verdict_;
  Norms norms_;
};

}  // namespace latbox::check::proof
