#include "check/judging/report.h"

namespace latbox::check {
namespace {

std::string joined(const std::vector<std::string>& texts) {
  constexpr std::size_t SHOWN = 5;
  std::string line;
  for (std::size_t i = 0; i < texts.size() && i < SHOWN; ++i) line += (i > 0 ? "; " : "") + texts[i];
  if (texts.size() > SHOWN) line += "; and " + std::to_string(texts.size() - SHOWN) + " more";
  return line;
}

void print(std::ostream& out, std::size_t number, const Solution& solution, const Judgement& judgement) {
  out << "solution " << number << ": ";
  if (judgement.faults.empty())
    out << "ok, target norm " << shown(solution.targetNorm) << ", slack norm " << shown(solution.slackNorm);
  else
    out << "wrong (line " << solution.line << "): " << joined(judgement.faults);
  if (judgement.faults.empty() && !judgement.notes.empty()) out << "; note: " << joined(judgement.notes);
  out << '\n';
}

std::string counted(std::size_t number) {
  return number == 1 ? "1 solution" : std::to_string(number) + " solutions";
}

}  // namespace

std::string verdictOf(const Report& report) {
  std::string text = counted(report.count) + ", all well";
  if (report.count == 0) text = "no solutions to check";
  if (report.wrong > 0) text = std::to_string(report.wrong) + " of " + counted(report.count) + " wrong";
  if (report.tornLine > 0) text += "; line " + std::to_string(report.tornLine) + " is torn, and no solution";
  return text;
}

Report report(const Program& program, const std::string& path, bool quiet, std::ostream& out,
              const Objection& objection) {
  SolutionFile file(path);
  Report report;
  judgeFile(program, file, [&](std::size_t number, const Solution& solution, Judgement judgement) {
    if (objection && judgement.faults.empty()) objection(solution, judgement);
    report.count = number;
    report.wrong += judgement.faults.empty() ? 0 : 1;
    if (!quiet) print(out, number, solution, judgement);
  });
  report.tornLine = file.tornLine();
  return report;
}

}  // namespace latbox::check
