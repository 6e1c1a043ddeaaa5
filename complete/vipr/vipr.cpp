#include "complete/vipr/vipr.h"

#include "complete/proof/best_point.h"
#include "complete/proof/side_vectors.h"
#include "complete/vipr/tree.h"

namespace latbox::complete::vipr {
namespace {

// A line that is a contradiction.
std::size_t refute(Ranges& ranges, proof::Derivation& derivation, SearchControl& control) {
  std::optional<proof::ProofLattice> lattice;
  if (!derivation.isContradiction()) lattice = proof::latticeOf(derivation);
  if (control.stop) throw proof::NoProof("the run was stopped");
  if (const auto line = ranges.replay(derivation)) return *line;
  proof::CutVectors cuts = proof::cutVectorsOf(*lattice);
  proof::addSideVectors(*lattice, cuts, control.stop);
  const auto line = Tree(ranges, derivation, *lattice, cuts).refute(MOST_NODES, control.stop);
  if (!line)
    throw NotOfItsKind("a VIPR certificate is written of at most " + std::to_string(MOST_NODES) + " nodes");
  return *line;
}

// The best point's z with the distances behind it.
IntegerVector wholeOf(const Program& program, const Point& x) {
  IntegerVector z;
  for (std::size_t j = 0; j < x.size(); ++j)
    z.push_back(Rational(x[j] * powerOfTen(program.digits[j])).get_num());
  return z;
}

std::string head(const Program& program, const Ranges& ranges) {
  std::string text =
      "% written by latbox-all: variables count steps of their grids, those behind them are distances\n";
  const std::size_t count = ranges.certificate().variables();
  text += "VER 1.1\nVAR " + std::to_string(count) + "\n";
  for (std::size_t j = 0; j < count; ++j)
    text += j < program.variables() ? "x" + std::to_string(j + 1) + "\n"
                                    : "d" + std::to_string(j + 1 - program.variables()) + "\n";
  text += "INT " + std::to_string(count) + "\n";
  for (std::size_t j = 0; j < count; ++j) text += std::to_string(j) + "\n";
  text += "OBJ min\n" + textOf(ranges.objective()) + "\n";
  text += "CON " + std::to_string(ranges.certificate().givenCount()) + " " +
          std::to_string(ranges.boundCount()) + "\n";
  return text + ranges.certificate().givenText();
}

std::string derivedText(const Certificate& certificate) {
  return "DER " + std::to_string(certificate.derivedCount()) + "\n" + certificate.derivedText();
}

std::string noneText(const Program& program, SearchControl& control) {
  const proof::System system = proof::systemOf(program, proof::Goal::POINTS, {});
  proof::Derivation derivation(system);
  Ranges ranges(program, system, std::nullopt);
  refute(ranges, derivation, control);
  return head(program, ranges) + "RTP infeas\nSOL 0\n" + derivedText(ranges.certificate());
}

std::string optimumText(const Program& program, const Norms& norms, SearchControl& control) {
  const Point best = proof::bestPointOf(program, norms, control);
  const proof::System system = proof::systemOf(program, proof::Goal::BETTER, norms);
  const Integer value = Objective(program).valueOf(norms);
  proof::Derivation derivation(system);
  Ranges ranges(program, system, Integer(value - 1));
  const std::size_t contradiction = refute(ranges, derivation, control);
  Certificate& certificate = ranges.certificate();
  const Constraint least{Sense::GREATER, value, std::make_shared<IntegerVector>(ranges.objective())};
  const std::size_t other = certificate.assume(least);
  certificate.split(contradiction, ranges.limitLine(), other, other, least);
  return head(program, ranges) + "RTP range " + value.get_str() + " " + value.get_str() + "\nSOL 1\nbest " +
         textOf(ranges.solutionOf(wholeOf(program, best))) + "\n" + derivedText(certificate);
}

}  // namespace

std::string certificateOf(const Program& program, const proof::Claim& claim, SearchControl& control) {
  if (!claim.best && claim.count.value_or(0) > 0)
    throw NotOfItsKind("a VIPR certificate says that there is no point, or which is the best one");
  return claim.best ? optimumText(program, *claim.best, control) : noneText(program, control);
}

}  // namespace latbox::complete::vipr
