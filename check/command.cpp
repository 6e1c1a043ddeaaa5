#include "check/command.h"

#include <cerrno>
#include <cstring>
#include <exception>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "check/judge_file.h"

namespace latbox::check {
namespace {

constexpr const char* HELP =
    R"(usage: latbox-check [--quiet] FILE.opt [FILE.sol]

Checks the solutions that latbox or latbox-all has written for a program, without trusting them: reads both files by
itself and computes every figure again, exactly. FILE.sol is NAME.sol beside NAME.opt unless it is given; latbox-all
writes NAME.all.

A solution is right if it keeps the program as it is written, its bounds, digits, equations and inequations, and if
its target values, target norm and slack norm are those of the point. One line is printed for each solution, and a
verdict. A line with the x and the target values of an earlier one is wrong too.

A file may have millions of lines: it is read twice, and memory is needed for 16 bytes a line. One that can be read only
once, such as a pipe, is copied to a temporary file. A last line that breaks off without a line end, as a kill leaves it,
is no solution; the verdict says that it is there.

The solver has rules by which a solution can break the program. Such a solution is wrong, and its line says why:
  - a variable with a lower bound other than 0 is searched in another box, up to the upper less the lower bound;
  - an inequation with equal sides takes the place of the equation of the same number.
Programs with such rows or bounds are warned of, whether a solution is wrong or not.

A figure that holds with a reservation has a note: a distance from a target with a value that is claimed too large
by an even number, a slack norm that the solver takes from other rows, the rounding of standard precision.

  --quiet     the verdict only
  --help      this text
  --version   the version

Exit status: 0 all well, also where there is no solution to check; 1 a solution is wrong; 2 a file is missing,
unreadable or no such file by its content. A NAME.sol that is not there is no error unless it was given: the solver
removes it when it has no solutions.
)";

struct Settings {
  bool quiet = false;
  bool help = false;
  bool version = false;
  std::vector<std::string> files;
};

// Throws Unreadable.
Settings parseArguments(const std::vector<std::string>& arguments) {
  Settings settings;
  for (const std::string& argument : arguments) {
    if (argument == "--quiet")
      settings.quiet = true;
    else if (argument == "--help")
      settings.help = true;
    else if (argument == "--version")
      settings.version = true;
    else if (argument.starts_with("-"))
      throw Unreadable("unknown option " + argument + "; --help shows them");
    else
      settings.files.push_back(argument);
  }
  const bool asks = settings.help || settings.version;
  if (!asks && (settings.files.empty() || settings.files.size() > 2))
    throw Unreadable("one or two files are needed: FILE.opt [FILE.sol]");
  return settings;
}

std::string readFile(const std::string& path) {
  errno = std::filesystem::is_directory(path) ? EISDIR : 0;
  std::ifstream file;
  if (errno == 0) file.open(path, std::ios::binary);
  std::ostringstream text;
  if (file.is_open() && file.peek() != std::ifstream::traits_type::eof()) text << file.rdbuf();
  if (!file.is_open() || file.bad() || text.bad())
    throw Unreadable(errno != 0 ? std::strerror(errno) : "cannot be read");
  return std::move(text).str();
}

// Does what reads the file; the file's name stands before what is wrong with it.
template <class Reading>
auto named(const std::string& path, Reading reading) {
  try {
    return reading();
  } catch (const Unreadable& unreadable) {
    throw Unreadable(path + ": " + unreadable.what());
  }
}

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

std::string verdict(std::size_t count, std::size_t wrong, long tornLine) {
  std::string text = counted(count) + ", all well";
  if (count == 0) text = "no solutions to check";
  if (wrong > 0) text = std::to_string(wrong) + " of " + counted(count) + " wrong";
  if (tornLine > 0) text += "; line " + std::to_string(tornLine) + " is torn, and no solution";
  return text;
}

class Run {
 public:
  Run(Settings settings, std::ostream& out) : settings_(std::move(settings)), out_(out) {}

  ExitStatus result() {
    const std::string& opt = settings_.files.front();
    program_ = named(opt, [&opt] { return readProgram(readFile(opt)); });
    printWarnings();
    const bool given = settings_.files.size() == 2;
    const std::string sol = given ? settings_.files.back() : beside(opt);
    if (!given && isMissing(sol)) {
      out_ << sol << " does not exist: no solutions to check\n";
      return ALL_WELL;
    }
    return named(sol, [this, &sol] { return judge(sol); });
  }

 private:
  static std::string beside(const std::string& opt) {
    return std::filesystem::path(opt).replace_extension(".sol").string();
  }

  static bool isMissing(const std::string& path) {
    std::error_code error;
    return std::filesystem::status(path, error).type() == std::filesystem::file_type::not_found;
  }

  void printWarnings() {
    if (settings_.quiet) return;
    for (const std::string& warning : Rewriting(program_).warnings()) out_ << "warning: " << warning << '\n';
  }

  ExitStatus judge(const std::string& sol) {
    SolutionFile file(sol);
    std::size_t count = 0;
    std::size_t wrong = 0;
    judgeFile(program_, file, [&](std::size_t number, const Solution& solution, const Judgement& judgement) {
      count = number;
      wrong += judgement.faults.empty() ? 0 : 1;
      if (!settings_.quiet) print(out_, number, solution, judgement);
    });
    out_ << sol << ": " << verdict(count, wrong, file.tornLine()) << '\n';
    return wrong == 0 ? ALL_WELL : SOMETHING_WRONG;
  }

  Settings settings_;
  std::ostream& out_;
  Program program_;
};

ExitStatus run(const std::vector<std::string>& arguments, std::ostream& out) {
  const Settings settings = parseArguments(arguments);
  if (settings.help) {
    out << HELP;
    return ALL_WELL;
  }
  if (settings.version) {
    out << "latbox-check v" << VERSION << '\n';
    return ALL_WELL;
  }
  return Run(settings, out).result();
}

}  // namespace

ExitStatus runCommand(const std::vector<std::string>& arguments, std::ostream& out, std::ostream& err) {
  try {
    const ExitStatus status = run(arguments, out);
    out.flush();
    // A verdict that nobody got is none.
    if (!out) throw Unreadable("the output cannot be written");
    return status;
  } catch (const std::exception& e) {
    out.flush();
    err << "latbox-check: " << e.what() << '\n';
    return UNREADABLE;
  }
}

}  // namespace latbox::check
