#include "complete/proof/system.h"

#include "complete/program/objective.h"

namespace latbox::complete::proof {
namespace {

using Kind = ObjectiveRow::Kind;

class Builder {
 public:
  Builder(const Program& program, Goal goal, const Norms& norms)
      : goal_(goal),
        objective_(program),
        target_(objective_.valueOf(norms)),
        slack_(objective_.slackNorm().valueOf(norms)) {
    IntegerProgram whole = integerProgramOf(program);
    system_.box = std::move(whole.box);
    for (Row& row : whole.rows) addRow(std::move(row.a), row.range);
  }

  System result() {
    if (goal_ == Goal::POINTS) return std::move(system_);
    const bool beside = goal_ == Goal::SLACK || (goal_ == Goal::EQUAL && objective_.needsSlackNorm());
    addPatterns(Kind::NORM, goal_ == Goal::BETTER ? Integer(target_ - 1) : target_);
    if (beside) {
      addPatterns(Kind::DISTANCE, goal_ == Goal::SLACK ? Integer(slack_ - 1) : slack_);
      addLinear();
    } else if (goal_ == Goal::EQUAL && objective_.distances().empty()) {
      addLinear();
    }
    return std::move(system_);
  }

 private:
  void addRow(IntegerVector a, Range range) {
    system_.rows.push_back(std::move(a));
    system_.ranges.push_back(std::move(range));
  }

  void addLinear() {
    const Integer value = target_ - slack_;
    system_.objective.push_back({Kind::LINEAR, {}});
    if (goal_ == Goal::SLACK)
      addRow(objective_.linear().coefficients, {Integer(value + 1), {}});
    else
      addRow(objective_.linear().coefficients, {value, value});
  }

  // A sum of sizes is the greatest of the sums with signs.
  void addPatterns(Kind kind, const Integer& limit) {
    const std::size_t count = objective_.distances().size();
    const bool few = count <= Objective::MOST_PATTERNS;
    // With linear targets they follow from few patterns.
    if (!few || (count > 1 && (kind == Kind::DISTANCE || !hasLinear()))) addSingles(kind, limit);
    if (!few) return;
    for (std::size_t pattern = 0; pattern >> count == 0; ++pattern) {
      std::vector<int> signs;
      for (std::size_t i = 0; i < count; ++i) signs.push_back((pattern >> i & 1) != 0 ? -1 : 1);
      addPattern({kind, std::move(signs)}, limit);
    }
  }

  bool hasLinear() const {
    for (const Integer& a : objective_.linear().coefficients)
      if (a != 0) return true;
    return false;
  }

  void addSingles(Kind kind, const Integer& limit) {
    const std::size_t count = objective_.distances().size();
    for (std::size_t i = 0; i < count; ++i)
      for (const int sign : {1, -1}) {
        std::vector<int> signs(count);
        signs[i] = sign;
        addPattern({kind, std::move(signs)}, limit);
      }
  }

  void addPattern(ObjectiveRow row, const Integer& limit) {
    Form form;
    form.coefficients.resize(system_.box.size());
    if (row.kind == Kind::NORM) form = objective_.linear();
    for (std::size_t i = 0; i < row.signs.size(); ++i) {
      const Form& distance = objective_.distances()[i];
      for (std::size_t j = 0; j < form.coefficients.size(); ++j)
        form.coefficients[j] += row.signs[i] * distance.coefficients[j];
      form.constant += row.signs[i] * distance.constant;
    }
    system_.objective.push_back(std::move(row));
    addRow(std::move(form.coefficients), {{}, Integer(limit - form.constant)});
  }

  Goal goal_;
  Objective objective_;
  Integer target_;
  Integer slack_;
  System system_;
};

}  // namespace

System systemOf(const Program& program, Goal goal, const Norms& norms) {
  return Builder(program, goal, norms).result();
}

bool needsSlack(const Program& program, const Norms& best) {
  if (best.slack == 0) return false;
  for (std::size_t i = 0; i < program.targets.size(); ++i)
    for (const Rational& a : program.targets[i])
      if (a != 0 && !program.wanted[i].finite()) return true;
  return false;
}

bool counts(Goal goal, const Norms& best, const Norms& norms) {
  switch (goal) {
    case Goal::POINTS:
      return true;
    case Goal::BETTER:
      return norms.target < best.target;
    case Goal::SLACK:
      return norms.target == best.target && norms.slack < best.slack;
    case Goal::EQUAL:
      break;
  }
  return norms == best;
}

}  // namespace latbox::complete::proof
