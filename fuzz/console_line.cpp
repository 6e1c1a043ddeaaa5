// The console: every line of the input is acted on, in standard and in extended precision. No line is
// refused, and the answers are held against a second reading of the commands, by regular expressions.
#include "driver/console.h"

#include <regex>
#include <sstream>

#include "driver/run_state.h"
#include "refusal.h"

namespace latbox::fuzzing {
namespace {

// The matcher of the library recurses per character.
constexpr std::size_t MATCHED_LENGTH = 500;

std::string trimmed(const std::string& line) {
  static const std::string BLANKS = " \t\n\r\f\v";
  std::size_t begin = 0;
  std::size_t end = line.size();
  while (begin < end && BLANKS.find(line[begin]) != std::string::npos) ++begin;
  while (end > begin && BLANKS.find(line[end - 1]) != std::string::npos) --end;
  return line.substr(begin, end - begin);
}

struct Answer {
  std::string out;
  std::string err;
};

Answer expectedSetting(YLattice<dbl_t>& y, const std::string& setting) {
  static const std::regex ASSIGNMENT("^(.*)=(.*)$");
  std::smatch match;
  if (!std::regex_match(setting, match, ASSIGNMENT)) return {};
  const std::string key = match[1];
  const bool known = y.live([&key](auto& lattice) {
    for (long i = 1; i <= lattice.params.keys.MN; ++i)
      if (lattice.params.keys[i] == key) return true;
    return false;
  });
  if (!known) return {"", "\n*** No such setting: " + key + "\n"};
  return {"> Setting: " + key + " = " + match[2].str() + "\n", ""};
}

Answer expected(YLattice<dbl_t>& y, const std::string& line) {
  static const std::regex SETTING("^SET[ \t]+(.*)$");
  if (line == "STATUS") return {"> Status: " + runState(y) + "\n", ""};
  if (line == "STOP") return {"> Status: stopped\n", ""};
  if (line == "RUN") return {"> Status: running\n", ""};
  if (line == "HELP") {
    std::ostringstream table;
    y.live([&table](auto& lattice) { lattice.params.optionTable(table); });
    return {table.str() + "\n", ""};
  }
  std::smatch match;
  return std::regex_match(line, match, SETTING) ? expectedSetting(y, match[1]) : Answer{};
}

void serve(const std::string& text, bool extended) {
  Output output;
  YLattice<dbl_t> y;
  y.extendedActive = extended;
  std::istringstream lines(text);
  for (std::string line; std::getline(lines, line);) {
    const std::string command = trimmed(line);
    const bool matched = command.size() <= MATCHED_LENGTH;
    const Answer wanted = matched ? expected(y, command) : Answer{};
    if (!accepted([&] { actOnLine(y, line); })) broken("a line was refused");
    const Answer given{output.take(), output.takeErrors()};
    if (!matched) continue;
    require(given.out == wanted.out, "the answer");
    require(given.err == wanted.err, "the error answer");
  }
}

}  // namespace
}  // namespace latbox::fuzzing

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  const std::string text = latbox::fuzzing::textOf(bytes, size);
  latbox::fuzzing::serve(text, false);
  latbox::fuzzing::serve(text, true);
  return 0;
}
