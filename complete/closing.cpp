#include "complete/closing.h"

#include "complete/equations.h"
#include "complete/linear_program.h"
#include "complete/opt_reader.h"

namespace latbox::complete {

std::vector<std::size_t> openVariables(const IntegerProgram& program) {
  std::vector<std::size_t> open;
  for (std::size_t j = 0; j < program.box.size(); ++j)
    if (!program.box[j].isFinite()) open.push_back(j);
  return open;
}

bool closeByRows(IntegerProgram& program) {
  const std::vector<std::size_t> open = openVariables(program);
  if (open.empty()) return true;
  const auto equations = equationsOf(program);
  if (!equations || !equations->solutions()) return false;
  LinearProgram relaxation(program);
  if (!relaxation.isFeasible()) return false;
  for (const std::size_t j : open) {
    Range& range = program.box[j];
    if (!range.high) {
      const LinearOptimum most = relaxation.greatest(j, 1);
      if (most.kind == LinearOptimum::OPTIMAL) range.high = floorOf(most.value);
    }
    if (!range.low) {
      const LinearOptimum most = relaxation.greatest(j, -1);
      if (most.kind == LinearOptimum::OPTIMAL) range.low = ceilOf(Rational(-most.value));
    }
    if (range.isEmpty()) return false;
  }
  return true;
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
