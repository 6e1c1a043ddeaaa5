#include "complete/lattice/equations.h"

#include "complete/lattice/elimination.h"

namespace latbox::complete {

std::vector<std::size_t> freeVariables(const IntegerProgram& program) {
  std::vector<std::size_t> variables;
  for (std::size_t j = 0; j < program.box.size(); ++j)
    if (!program.box[j].isFixed()) variables.push_back(j);
  return variables;
}

IntegerVector partOf(const IntegerVector& a, const std::vector<std::size_t>& variables) {
  IntegerVector part;
  for (const std::size_t j : variables) part.push_back(a[j]);
  return part;
}

std::optional<Equations> equationsOf(const IntegerProgram& program) {
  Equations all{freeVariables(program), {}, {}};
  for (const Row& row : program.rows) {
    if (!row.range.isFixed()) continue;
    all.rows.push_back(partOf(row.a, all.variables));
    all.sides.push_back(*row.range.low);
  }
  const auto independent = independentRows(all.rows, all.sides);
  if (!independent) return std::nullopt;
  Equations kept{all.variables, {}, {}};
  for (const std::size_t i : *independent) {
    kept.rows.push_back(std::move(all.rows[i]));
    kept.sides.push_back(all.sides[i]);
  }
  return kept;
}

}  // namespace latbox::complete
