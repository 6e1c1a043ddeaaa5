#include "complete/proof/text.h"

namespace latbox::complete::proof {
namespace {

std::string line(const std::string& word, const IntegerVector& values) {
  std::string text = word;
  for (const Integer& value : values) text += " " + value.get_str();
  return text + "\n";
}

std::string line(const std::string& word, const std::vector<std::size_t>& rows) {
  std::string text = word;
  for (const std::size_t row : rows) text += " " + std::to_string(row + 1);
  return text + "\n";
}

std::string nameOf(Goal goal) {
  switch (goal) {
    case Goal::POINTS:
      return "points";
    case Goal::BETTER:
      return "better";
    case Goal::SLACK:
      return "slack";
    case Goal::EQUAL:
      break;
  }
  return "equal";
}

std::string textOf(const ObjectiveRow& row) {
  using Kind = ObjectiveRow::Kind;
  if (row.kind == Kind::LINEAR) return "linear\n";
  return line(row.kind == Kind::NORM ? "norm" : "distance",
              IntegerVector(row.signs.begin(), row.signs.end()));
}

std::string textOf(const Form& form) {
  if (form.kind == Form::Kind::ZERO) return "0";
  return (form.kind == Form::Kind::VARIABLE ? "x" : "r") + std::to_string(form.index + 1);
}

std::string textOf(const Step& step) {
  std::string text = step.kind == Step::Kind::UPPER   ? "upper"
                     : step.kind == Step::Kind::LOWER ? "lower"
                                                      : "class";
  text += " " + textOf(step.form) + " " + step.q.get_str();
  if (step.kind == Step::Kind::CLASS) text += " " + step.modulus.get_str();
  for (const Term& term : step.terms)
    text += " r" + std::to_string(term.row + 1) + " " + term.count.get_str();
  return text + "\n";
}

std::string textOf(const ProofLattice& lattice) {
  std::string text = "lattice " + std::to_string(lattice.rank()) + " " +
                     std::to_string(lattice.equations.size()) + " " +
                     std::to_string(lattice.coordinates.size()) + "\n";
  text += line("equations", lattice.equations) + line("coordinates", lattice.coordinates);
  text += line("point", lattice.box.point);
  for (const IntegerVector& row : lattice.box.basis) text += line("basis", row);
  for (const IntegerVector& row : lattice.dual) text += line("dual", row);
  return text;
}

std::string textOf(const CutVectors& cuts) {
  std::string text = line("constant", cuts.constant);
  for (std::size_t t = cuts.levels.size(); t-- > 0;) {
    const Level& level = cuts.levels[t];
    text += line("level " + std::to_string(t) + " " + level.divisor.get_str() + " " +
                     std::to_string(level.sides.size()),
                 level.main);
    for (const IntegerVector& side : level.sides) text += line("side", side);
  }
  return text;
}

std::vector<Step> stepsOf(const Derivation& derivation, const Tree* tree) {
  if (!tree) return derivation.stepsOfContradiction();
  std::vector<std::size_t> rows = tree->lattice.equations;
  rows.insert(rows.end(), tree->lattice.coordinates.begin(), tree->lattice.coordinates.end());
  return derivation.stepsFor(rows);
}

}  // namespace

std::string textOf(const Point& point) {
  std::string text = "point";
  for (const Rational& value : point) text += " " + value.get_str();
  return text + "\n";
}

std::string textOf(const WalkCount& count) {
  return "walk nodes " + std::to_string(count.nodes) + " points " + std::to_string(count.points) + "\n";
}

std::string textOf(Goal goal, const Derivation& derivation, const Tree* tree) {
  std::string text =
      "search " + nameOf(goal) + "\nobjective " + std::to_string(derivation.objective().size()) + "\n";
  for (const ObjectiveRow& row : derivation.objective()) text += textOf(row);
  const std::vector<Step> steps = stepsOf(derivation, tree);
  text += "derive " + std::to_string(steps.size()) + "\n";
  for (const Step& step : steps) text += textOf(step);
  if (!tree) return text + "contradiction\n";
  return text + textOf(tree->lattice) + textOf(tree->cuts) + textOf(tree->count);
}

}  // namespace latbox::complete::proof
