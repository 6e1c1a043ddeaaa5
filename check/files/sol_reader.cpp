// The lines of a .sol file: numbers of any length, and what is behind them.
#include "check/files/solution.h"

namespace latbox::check {
namespace {

constexpr const char* BLANKS = " \t\r\n";

std::string trimmed(std::string_view text) {
  const std::size_t first = text.find_first_not_of(BLANKS);
  if (first == std::string_view::npos) return "";
  return std::string(text.substr(first, text.find_last_not_of(BLANKS) - first + 1));
}

void readTail(Scanner& scanner, Solution& solution) {
  const std::string_view rest = scanner.rest();
  const std::size_t bar = rest.find('|');
  solution.parameters = trimmed(rest.substr(0, bar));
  if (bar == std::string_view::npos) return;
  const std::string_view version = rest.substr(bar + 1);
  const std::size_t second = version.find('|');
  if (second != std::string_view::npos)
    scanner.refuse(scanner.position() + bar + 1 + second, "a field behind the version");
  solution.version = trimmed(version);
}

Solution readFields(Scanner& scanner, long line) {
  Solution solution;
  solution.line = line;
  solution.x = scanner.takeVector("x");
  scanner.take('|', "behind x");
  solution.targetNorm = scanner.takeNumber();
  scanner.take('|', "behind the target norm");
  solution.targets = scanner.takeVector("the target values");
  scanner.take('|', "behind the target values");
  solution.slackNorm = scanner.takeNumber();
  scanner.take('|', "behind the slack norm");
  solution.time = scanner.takeInteger();
  scanner.take('|', "behind the time");
  scanner.skip();
  readTail(scanner, solution);
  return solution;
}

}  // namespace

std::optional<Solution> readSolution(std::string_view text, long line) {
  Scanner scanner(text, line, true);
  if (scanner.atEnd()) return std::nullopt;
  return readFields(scanner, line);
}

}  // namespace latbox::check
