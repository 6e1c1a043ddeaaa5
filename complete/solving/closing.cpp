#include "complete/solving/closing.h"

#include "complete/lattice/equations.h"
#include "complete/linear/linear_bounds.h"
#include "complete/linear/linear_program.h"
#include "complete/program/opt_reader.h"
#include "complete/program/presolve.h"

namespace latbox::complete {

std::vector<std::size_t> openVariables(const IntegerProgram& program) {
  std::vector<std::size_t> open;
  for (std::size_t j = 0; j < program.box.size(); ++j)
    if (!program.box[j].isFinite()) open.push_back(j);
  return open;
}

namespace {

bool haveWholeSolutions(const IntegerProgram& program) {
  const auto equations = equationsOf(program);
  return equations && equations->solutions();
}

// The exact relaxation of a program with open variables. Rows count as variables behind the others.
class Closing {
 public:
  explicit Closing(IntegerProgram& program)
      : p_(program), total_(totalOf(program)), relaxation_(withTotal()), varies_(total_) {
    if (!isFeasible()) return;
    for (std::size_t v = 0; v < total_; ++v) first_.push_back(relaxation_.value(v));
  }

  bool isFeasible() const { return relaxation_.isFeasible(); }

  // False: a range is empty.
  bool closeVariables() {
    if (closeAtOnce()) return true;
    for (const std::size_t j : openVariables(p_)) {
      Range& range = p_.box[j];
      if (!range.high)
        if (const auto most = greatest(j, 1)) range.high = floorOf(*most);
      if (!range.low)
        if (const auto most = greatest(j, -1)) range.low = ceilOf(Rational(-*most));
      if (range.isEmpty()) return false;
    }
    return true;
  }

  // Variables and rows that have one value in all rational points become fixed: `fixed` tells whether there
  // are any. Two points with different values spare most of the questions. False: such a value is not whole.
  bool fixConstants(bool& fixed) {
    for (std::size_t v = 0; v < total_; ++v) {
      Range& range = v < p_.box.size() ? p_.box[v] : p_.rows[v - p_.box.size()].range;
      if (range.isFixed() || !isConstant(v)) continue;
      if (first_[v].get_den() != 1) return false;
      range = {first_[v].get_num(), first_[v].get_num()};
      fixed = true;
    }
    return true;
  }

 private:
  static std::size_t totalOf(const IntegerProgram& program) {
    return program.box.size() + program.rows.size();
  }

  // With a row behind the others: the sum of all variables that are open on one side, each counted in that
  // direction.
  IntegerProgram withTotal() const {
    IntegerProgram program = p_;
    Row total;
    for (const Range& range : p_.box) total.a.emplace_back(openSide(range));
    program.rows.push_back(std::move(total));
    return program;
  }

  // Of a variable with one open side.
  static int openSide(const Range& range) {
    if (range.low.has_value() == range.high.has_value()) return 0;
    return range.low ? 1 : -1;
  }

  // One question in place of many: the others being at their ends, the sum bounds each of its variables. The
  // ranges are wider than need be, which others narrow faster. False: something stays open.
  bool closeAtOnce() {
    for (const std::size_t j : openVariables(p_))
      if (openSide(p_.box[j]) == 0) return false;
    const auto most = greatest(total_, 1);
    if (!most) return false;
    Integer room = floorOf(*most);
    for (const std::size_t j : openVariables(p_))
      room -= p_.box[j].low ? *p_.box[j].low : Integer(-*p_.box[j].high);
    for (const std::size_t j : openVariables(p_)) {
      Range& range = p_.box[j];
      if (range.low)
        range.high = *range.low + room;
      else
        range.low = *range.high - room;
    }
    return true;
  }

  std::optional<Rational> greatest(std::size_t variable, int sign) {
    auto most = relaxation_.greatest(variable, sign);
    for (std::size_t v = 0; v < total_; ++v)
      if (relaxation_.value(v) != first_[v]) varies_[v] = true;
    return most;
  }

  bool isConstant(std::size_t variable) {
    for (const int sign : {1, -1})
      if (varies_[variable] || !greatest(variable, sign)) return false;
    return !varies_[variable];
  }

  IntegerProgram& p_;
  std::size_t total_;
  LinearProgram relaxation_;
  // The values at the first vertex, and which of them others do not have.
  std::vector<Rational> first_;
  std::vector<bool> varies_;
};

}  // namespace

bool closeByRows(IntegerProgram& program) {
  if (openVariables(program).empty()) return true;
  if (!haveWholeSolutions(program)) return false;
  Closing closing(program);
  if (!closing.isFeasible() || !closing.closeVariables()) return false;
  if (openVariables(program).empty()) return tighten(program) && narrowByRelaxation(program);
  bool fixed = false;
  if (!closing.fixConstants(fixed) || !tighten(program)) return false;
  return !fixed || haveWholeSolutions(program);
}

void requireBounds(const IntegerProgram& program) {
  std::string names;
  for (const std::size_t j : openVariables(program))
    names += (names.empty() ? "x" : ", x") + std::to_string(j + 1);
  if (!names.empty()) throw BadInput("these variables need finite bounds: " + names);
}

void clip(IntegerProgram& program, const Integer& size) {
  for (Range& range : program.box) {
    if (!range.low) range.low = (range.high && *range.high < 0 ? *range.high : Integer(0)) - size;
    if (!range.high) range.high = (*range.low > 0 ? *range.low : Integer(0)) + size;
  }
}

}  // namespace latbox::complete
