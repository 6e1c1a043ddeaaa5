#include "complete/proof/prover.h"

#include <stdexcept>

#include "complete/proof/best_point.h"
#include "complete/proof/side_vectors.h"
#include "complete/proof/text.h"

namespace latbox::complete::proof {
namespace {

constexpr const char* HEAD = "latbox-proof 1\nverdict ";
constexpr const char* END = "end\n";

class Prover {
 public:
  Prover(const Program& program, const Claim& claim, SearchControl& control)
      : program_(program), claim_(claim), control_(control) {}

  std::string result() {
    std::string text = HEAD + verdict() + "\n";
    if (!claim_.best) return text + search(Goal::POINTS, claim_.count.value_or(0)) + END;
    text += textOf(bestPointOf(program_, *claim_.best, control_)) + search(Goal::BETTER, 0);
    if (needsSlack(program_, *claim_.best)) text += search(Goal::SLACK, 0);
    if (claim_.count) text += search(Goal::EQUAL, *claim_.count);
    return text + END;
  }

 private:
  std::string verdict() const {
    const std::string count = claim_.count ? " " + std::to_string(*claim_.count) : "";
    if (claim_.best)
      return "optimum " + claim_.best->target.get_str() + " " + claim_.best->slack.get_str() + count;
    return claim_.count.value_or(0) == 0 ? "none" : "all" + count;
  }

  // The part of one search, which must meet so many points.
  std::string search(Goal goal, unsigned long points) const {
    Derivation derivation(systemOf(program_, goal, claim_.best.value_or(Norms())));
    std::optional<ProofLattice> lattice;
    if (!derivation.isContradiction()) lattice = latticeOf(derivation);
    if (control_.stop) throw NoProof("the run was stopped");
    if (!lattice) {
      require(points == 0);
      return textOf(goal, derivation, nullptr);
    }
    constexpr double LONG = 1e7;
    if (control_.announce && lattice->nodes > LONG)
      control_.announce(lattice->nodes, static_cast<double>(points), lattice->columns());
    // Every point of the lattice in its ranges is feasible; the norms are another matter.
    const Judge judge = [&](const IntegerVector& z) {
      return goal == Goal::POINTS || counts(goal, *claim_.best, normsOf(program_, pointOf(program_, z)));
    };
    CutVectors cuts = cutVectorsOf(*lattice);
    addSideVectors(*lattice, cuts, control_.stop);
    const auto count = walk(*lattice, cuts, judge, {control_.threads, &control_.stop, 0});
    if (!count) throw NoProof("the run was stopped");
    require(count->points == points);
    const Tree tree{std::move(*lattice), std::move(cuts), *count};
    return textOf(goal, derivation, &tree);
  }

  static void require(bool agrees) {
    if (!agrees) throw std::logic_error("the proof does not meet the points that the search has told");
  }

  const Program& program_;
  const Claim& claim_;
  SearchControl& control_;
};

}  // namespace

Beginning beginningOf(const Program& program, SearchControl& control) {
  Beginning beginning;
  Derivation derivation(systemOf(program, Goal::POINTS, Norms()));
  if (!derivation.isContradiction()) beginning.lattice = latticeOf(derivation);
  if (!beginning.lattice) {
    beginning.text = textOf(Goal::POINTS, derivation, nullptr);
    return beginning;
  }
  beginning.cuts = cutVectorsOf(*beginning.lattice);
  addSideVectors(*beginning.lattice, beginning.cuts, control.stop);
  const Tree tree{*beginning.lattice, beginning.cuts, {}};
  const std::string text = textOf(Goal::POINTS, derivation, &tree);
  beginning.text = text.substr(0, text.size() - textOf(WalkCount()).size());
  return beginning;
}

std::string proofOf(const std::string& beginning, const std::optional<WalkCount>& count) {
  const std::string verdict =
      count && count->points > 0 ? "all " + std::to_string(count->points) : std::string("none");
  return HEAD + verdict + "\n" + beginning + (count ? textOf(*count) : "") + END;
}

std::string proofOf(const Program& program, const Claim& claim, SearchControl& control) {
  return Prover(program, claim, control).result();
}

}  // namespace latbox::complete::proof
