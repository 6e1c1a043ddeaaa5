#include "check/proof.h"

#include "check/proof_ranges.h"

namespace latbox::check::proof {
namespace {

// z of a point; nothing if it is off the grid.
std::optional<Integers> gridOf(const Program& program, const std::vector<mpq_class>& x) {
  Integers z;
  for (std::size_t j = 0; j < x.size(); ++j) {
    const mpq_class value = x[j] * powerOfTen(program.dx[j]).exact();
    if (value.get_den() != 1) return std::nullopt;
    z.push_back(value.get_num());
  }
  return z;
}

class Checking {
 public:
  Checking(const Program& program, const Proof& proof)
      : program_(program), proof_(proof), system_(systemOf(program)), norms_(normsOf(program)) {}

  Met result(const Plan& plan) {
    if (proof_.verdict.kind == Kind::OPTIMUM) takeOptimum();
    requireCount();
    requireSearches();
    Met met;
    for (const Search& search : proof_.searches) {
      const Counts counts = check(search, plan);
      met.goals.push_back(search.goal);
      met.nodes.emplace_back(counts.nodes);
      met.points.emplace_back(counts.points);
    }
    return met;
  }

 private:
  [[noreturn]] void refuse(const std::string& reason) const { throw Refused(proof_.verdict.line, reason); }

  void takeOptimum() {
    if (program_.dt.empty()) refuse("the program has no targets");
    bounds_ = {inUnits(proof_.verdict.targetNorm), inUnits(proof_.verdict.slackNorm)};
    requirePoint();
  }

  mpz_class inUnits(const mpq_class& norm) const {
    const mpq_class value = norm * norms_.unit;
    if (value.get_den() != 1) refuse(norm.get_str() + " is no norm of a point");
    return value.get_num();
  }

  void requirePoint() const {
    const auto wrong = [this](const std::string& reason) { throw Refused(proof_.pointLine, reason); };
    if (proof_.point.size() != program_.variables())
      wrong(std::to_string(proof_.point.size()) + " numbers, not " + std::to_string(program_.variables()));
    const auto z = gridOf(program_, proof_.point);
    if (!z || !isFeasible(system_, *z)) wrong("the point is not feasible");
    const Bounds at = normsAt(norms_, *z);
    if (at.target != bounds_.target) wrong("the point has another target norm");
    if (at.slack != bounds_.slack) wrong("the point has another slack norm");
  }

  void requireCount() const {
    if (proof_.verdict.count && *proof_.verdict.count == 0) refuse("the number of points is not positive");
  }

  std::vector<Goal> wantedGoals() const {
    if (proof_.verdict.kind != Kind::OPTIMUM) return {Goal::POINTS};
    std::vector<Goal> goals{Goal::BETTER};
    if (proof_.verdict.slackNorm != 0 && norms_.hasLinear) goals.push_back(Goal::SLACK);
    if (proof_.verdict.count) goals.push_back(Goal::EQUAL);
    return goals;
  }

  void requireSearches() const {
    const std::vector<Goal> wanted = wantedGoals();
    const std::vector<Search>& found = proof_.searches;
    for (std::size_t i = 0; i < found.size(); ++i)
      if (i >= wanted.size() || found[i].goal != wanted[i])
        throw Refused(found[i].line,
                      std::string("the verdict has no search ") + nameOf(found[i].goal) + " here");
    if (found.size() < wanted.size())
      refuse(std::string("the verdict needs a search ") + nameOf(wanted[found.size()]));
  }

  Counts check(const Search& search, const Plan& plan) const {
    System narrowed = system_;
    for (const ObjectiveRow& row : search.objective)
      narrowed.rows.push_back(rowOf(row, search.goal, norms_, bounds_));
    const bool contradiction = narrow(narrowed, search.steps);
    if (contradiction != search.contradiction)
      throw Refused(search.endLine,
                    contradiction ? "there is a contradiction, and no walk" : "there is no contradiction");
    if (contradiction) return {};
    const Condition condition{system_, norms_, search.goal, bounds_};
    return walk(boxOf(narrowed, search.lattice), search, condition, plan);
  }

  const Program& program_;
  const Proof& proof_;
  System system_;
  Norms norms_;
  Bounds bounds_;
};

void requireEqual(const Search& search, const char* what, const mpz_class& found, const mpz_class& wanted) {
  if (found == wanted) return;
  throw Refused(search.endLine, "the walk of the search " + std::string(nameOf(search.goal)) + " has " +
                                    found.get_str() + " " + what + ", not " + wanted.get_str());
}

}  // namespace

Met checkSearches(const Program& program, const Proof& proof, const Plan& plan) {
  return Checking(program, proof).result(plan);
}

void requireStated(const Proof& proof, const Met& met) {
  for (std::size_t i = 0; i < proof.searches.size(); ++i) {
    const Search& search = proof.searches[i];
    // A contradiction states none of both.
    requireEqual(search, "nodes", met.nodes[i], search.nodes);
    requireEqual(search, "points", met.points[i], search.points);
    const bool counts = search.goal == Goal::POINTS || search.goal == Goal::EQUAL;
    if (search.points != (counts ? proof.verdict.count.value_or(0) : mpz_class(0)))
      throw Refused(search.endLine, "the verdict states another number of points");
  }
}

std::string toText(const Verdict& verdict) {
  if (verdict.kind == Kind::NONE) return "none";
  if (verdict.kind == Kind::ALL) return "all " + verdict.count->get_str();
  std::string text = "optimum " + verdict.targetNorm.get_str();
  if (verdict.slackNorm != 0) text += " " + verdict.slackNorm.get_str();
  if (verdict.count) text += ", " + verdict.count->get_str() + " points";
  return text;
}

bool Listed::holds(const std::vector<mpq_class>& x) const {
  if (verdict_.kind != Kind::OPTIMUM) return true;
  const auto z = gridOf(program_, x);
  if (!z) return false;
  const Bounds at = normsAt(norms_, *z);
  return at.target == verdict_.targetNorm * norms_.unit && at.slack == verdict_.slackNorm * norms_.unit;
}

mpz_class Listed::count() const {
  return verdict_.kind == Kind::OPTIMUM ? verdict_.count.value_or(1) : verdict_.count.value_or(0);
}

}  // namespace latbox::check::proof
