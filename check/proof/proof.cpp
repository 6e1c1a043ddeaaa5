#include "check/proof/proof.h"

#include "check/proof/ranges.h"

namespace latbox::check::proof {
namespace {

class Checking {
 public:
  Checking(const Program& program, const Proof& proof)
      : program_(program), proof_(proof), verdict_(proof.verdict), system_(systemOf(program)) {}

  std::vector<Counts> result(const Plan& plan) const {
    if (verdict_.kind == Kind::OPTIMUM) requireOptimum();
    require(!verdict_.count || *verdict_.count > 0, verdict_.line, "the number of points is not positive");
    requireSearches();
    std::vector<Counts> met;
    for (const Search& search : proof_.searches) met.push_back(check(search, plan));
    return met;
  }

 private:
  static void require(bool holds, std::size_t line, const std::string& fault) {
    if (!holds) throw Refused(line, fault);
  }

  void requireOptimum() const {
    require(!program_.dt.empty(), verdict_.line, "the program has no targets");
    const mpz_class unit = unitOf(program_);
    for (const mpq_class& norm : {verdict_.target, verdict_.slack})
      require(mpq_class(norm * unit).get_den() == 1, verdict_.line,
              norm.get_str() + " is no norm of a point");
    require(proof_.point.size() == program_.variables(), proof_.pointLine,
            std::to_string(proof_.point.size()) + " numbers, not " + std::to_string(program_.variables()));
    const auto norms = normsOf(program_, {proof_.point.begin(), proof_.point.end()});
    require(norms.has_value(), proof_.pointLine, "the point is not feasible");
    require(counts(Goal::EQUAL, *norms, normsOf(verdict_)), proof_.pointLine, "the point has other norms");
  }

  void requireSearches() const {
    std::vector<Goal> wanted{Goal::POINTS};
    if (verdict_.kind == Kind::OPTIMUM) {
      wanted = {Goal::BETTER};
      if (verdict_.slack != 0 && hasLinear(program_)) wanted.push_back(Goal::SLACK);
      if (verdict_.count) wanted.push_back(Goal::EQUAL);
    }
    const std::vector<Search>& found = proof_.searches;
    for (std::size_t i = 0; i < found.size(); ++i)
      require(i < wanted.size() && found[i].goal == wanted[i], found[i].line,
              std::string("not the search that the verdict needs: ") + nameOf(found[i].goal));
    require(found.size() == wanted.size(), verdict_.line, "the verdict needs more searches");
  }

  Counts check(const Search& search, const Plan& plan) const {
    System narrowed = system_;
    for (const ObjectiveRow& row : search.objective)
      narrowed.rows.push_back(rowOf(program_, row, search.goal, verdict_));
    const bool contradiction = narrow(narrowed, search.steps);
    require(search.contradiction || !contradiction, search.endLine, "there is a contradiction, and no walk");
    require(contradiction || !search.contradiction, search.endLine, "there is no contradiction");
    if (contradiction) return {};
    return walk(program_, boxOf(narrowed, search), search, normsOf(verdict_), plan);
  }

  const Program& program_;
  const Proof& proof_;
  const Verdict& verdict_;
  System system_;
};

}  // namespace

std::vector<Counts> checkSearches(const Program& program, const Proof& proof, const Plan& plan) {
  return Checking(program, proof).result(plan);
}

void requireStated(const Proof& proof, const std::vector<Counts>& met) {
  for (std::size_t i = 0; i < proof.searches.size(); ++i) {
    const Search& search = proof.searches[i];
    const auto require = [&search](const mpz_class& found, const mpz_class& wanted, const char* what) {
      if (found != wanted)
        throw Refused(search.endLine, std::string("the search ") + nameOf(search.goal) + " has " +
                                          found.get_str() + " " + what + ", not " + wanted.get_str());
    };
    require(met[i].nodes, search.nodes, "nodes");
    require(met[i].points, search.points, "points");
    const bool isCounted = search.goal == Goal::POINTS || search.goal == Goal::EQUAL;
    require(search.points, isCounted ? proof.verdict.count.value_or(0) : 0, "points");
  }
}

std::string toText(const Verdict& verdict) {
  if (verdict.kind == Kind::NONE) return "none";
  if (verdict.kind == Kind::ALL) return "all " + verdict.count->get_str();
  std::string text = "optimum " + verdict.target.get_str();
  if (verdict.slack != 0) text += " " + verdict.slack.get_str();
  if (verdict.count) text += ", " + verdict.count->get_str() + " points";
  return text;
}

mpz_class listedPoints(const Verdict& verdict) {
  return verdict.count.value_or(verdict.kind == Kind::OPTIMUM ? 1 : 0);
}

Norms normsOf(const Verdict& verdict) {
  return {Rational(verdict.target), Rational(verdict.slack)};
}

}  // namespace latbox::check::proof
