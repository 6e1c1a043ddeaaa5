#include "complete/jobs/lattice_text.h"

#include <map>

#include "complete/files/digest.h"
#include "complete/files/words.h"
#include "complete/jobs/sealed_lines.h"

namespace latbox::complete::jobs {
namespace {

constexpr const char* HEAD = "latbox-all lattice 1";

std::string wordOf(const std::optional<Integer>& end) {
  return end ? end->get_str() : "-";
}

std::optional<Integer> endOf(const std::string& word) {
  Integer value;
  if (word == "-") return std::nullopt;
  if (value.set_str(word, 10) != 0) throw BadWords("an end that is none");
  return value;
}

void takeLine(const std::string& name, Words& words, PieceLattice& lattice) {
  BoxLattice& box = lattice.box;
  const std::map<std::string, IntegerVector*> vectors = {{"fixed", &box.fixed},
                                                         {"point", &box.point},
                                                         {"sides", &box.sides},
                                                         {"low", &box.low},
                                                         {"high", &box.high}};
  const std::map<std::string, IntegerMatrix*> matrices = {
      {"basis", &box.basis}, {"equation", &box.equations}, {"dual", &lattice.dual}};
  if (const auto vector = vectors.find(name); vector != vectors.end()) {
    *vector->second = words.all<Integer>();
  } else if (const auto matrix = matrices.find(name); matrix != matrices.end()) {
    matrix->second->push_back(words.all<Integer>());
  } else if (name == "variables") {
    box.variables = words.all<std::size_t>();
  } else if (name == "row") {
    Row row;
    row.range.low = endOf(words.next<std::string>());
    row.range.high = endOf(words.next<std::string>());
    row.a = words.all<Integer>();
    box.rows.push_back(std::move(row));
  } else {
    throw BadWords("a line that begins with '" + name + "'");
  }
}

void require(bool fits) {
  if (!fits) throw BadWords("its parts do not belong together");
}

void requireLengths(const IntegerMatrix& rows, std::size_t length) {
  for (const IntegerVector& row : rows) require(row.size() == length);
}

void requireShape(const PieceLattice& lattice) {
  const BoxLattice& box = lattice.box;
  const std::size_t columns = box.variables.size() + box.rows.size();
  require(box.point.size() == columns && box.low.size() == columns && box.high.size() == columns);
  require(box.equations.size() == box.sides.size() && lattice.dual.size() == box.rank());
  requireLengths(box.basis, columns);
  requireLengths(box.equations, columns);
  requireLengths(lattice.dual, box.variables.size());
  for (const std::size_t j : box.variables) require(j < box.fixed.size());
  for (const Row& row : box.rows) require(row.a.size() == box.fixed.size());
}

}  // namespace

std::string textOf(const PieceLattice& lattice) {
  const BoxLattice& box = lattice.box;
  std::ostringstream out;
  out << HEAD << '\n';
  writeLine(out, "fixed", box.fixed);
  writeLine(out, "variables", box.variables);
  for (const Row& row : box.rows)
    writeLine(out, "row " + wordOf(row.range.low) + " " + wordOf(row.range.high), row.a);
  writeLine(out, "low", box.low);
  writeLine(out, "high", box.high);
  writeLine(out, "point", box.point);
  writeLines(out, "basis", box.basis);
  writeLines(out, "equation", box.equations);
  writeLine(out, "sides", box.sides);
  writeLines(out, "dual", lattice.dual);
  return sealed(out.str());
}

PieceLattice parseLattice(std::string_view text) {
  std::istringstream lines = linesBehind(HEAD, text);
  PieceLattice lattice;
  for (std::string line; std::getline(lines, line);) {
    Words words(line);
    takeLine(words.next<std::string>(), words, lattice);
  }
  requireShape(lattice);
  return lattice;
}

bool isDual(const PieceLattice& lattice) {
  const BoxLattice& box = lattice.box;
  for (std::size_t i = 0; i < box.rank(); ++i)
    for (std::size_t j = 0; j < box.rank(); ++j) {
      Integer sum = 0;
      for (std::size_t c = 0; c < box.variables.size(); ++c)
        mpz_addmul(sum.get_mpz_t(), lattice.dual[i][c].get_mpz_t(), box.basis[j][c].get_mpz_t());
      if (sum != (i == j ? 1 : 0)) return false;
    }
  return true;
}

}  // namespace latbox::complete::jobs
