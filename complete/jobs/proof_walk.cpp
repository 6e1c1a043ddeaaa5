#include "complete/jobs/proof_walk.h"

#include <map>

#include "complete/files/digest.h"
#include "complete/files/words.h"
#include "complete/jobs/sealed_lines.h"

namespace latbox::complete::jobs {
namespace {

constexpr const char* HEAD = "latbox-all proof 1";
constexpr const char* TEXT = "text";

void write(std::ostream& out, const proof::Beginning& beginning) {
  const BoxLattice& box = beginning.lattice->box;
  writeLine(out, "fixed", box.fixed);
  writeLine(out, "variables", box.variables);
  writeLine(out, "low", box.low);
  writeLine(out, "high", box.high);
  writeLine(out, "point", box.point);
  writeLines(out, "basis", box.basis);
  writeLines(out, "dual", beginning.lattice->dual);
  writeLine(out, "constant", beginning.cuts.constant);
  for (const proof::Level& level : beginning.cuts.levels) {
    writeLine(out, "level " + level.divisor.get_str(), level.main);
    writeLines(out, "side", level.sides);
  }
}

void takeLine(const std::string& name, Words& words, ProofWalk& walk) {
  proof::Beginning& beginning = walk.beginning;
  if (name == "parts") {
    walk.parts = words.next<std::size_t>();
    return;
  }
  if (!beginning.lattice) beginning.lattice.emplace();
  BoxLattice& box = beginning.lattice->box;
  const std::map<std::string, IntegerVector*> vectors = {{"fixed", &box.fixed},
                                                         {"low", &box.low},
                                                         {"high", &box.high},
                                                         {"point", &box.point},
                                                         {"constant", &beginning.cuts.constant}};
  if (const auto vector = vectors.find(name); vector != vectors.end()) {
    *vector->second = words.all<Integer>();
  } else if (name == "variables") {
    box.variables = words.all<std::size_t>();
  } else if (name == "basis") {
    box.basis.push_back(words.all<Integer>());
  } else if (name == "dual") {
    beginning.lattice->dual.push_back(words.all<Integer>());
  } else if (name == "level") {
    proof::Level level;
    level.divisor = words.next<Integer>();
    level.main = words.all<Integer>();
    beginning.cuts.levels.push_back(std::move(level));
  } else if (name == "side" && !beginning.cuts.levels.empty()) {
    beginning.cuts.levels.back().sides.push_back(words.all<Integer>());
  } else {
    throw BadWords("a line that begins with '" + name + "'");
  }
}

}  // namespace

std::string textOf(const ProofWalk& walk) {
  std::ostringstream out;
  out << HEAD << "\nparts " << walk.parts << '\n';
  if (walk.beginning.lattice) write(out, walk.beginning);
  out << TEXT << '\n' << walk.beginning.text;
  return sealed(out.str());
}

ProofWalk parseProofWalk(const std::string& text) {
  std::istringstream lines = linesBehind(HEAD, text);
  ProofWalk walk;
  for (std::string line; std::getline(lines, line) && line != TEXT;) {
    Words words(line);
    takeLine(words.next<std::string>(), words, walk);
  }
  std::ostringstream rest;
  if (lines.peek() != std::istringstream::traits_type::eof()) rest << lines.rdbuf();
  walk.beginning.text = rest.str();
  return walk;
}

}  // namespace latbox::complete::jobs
