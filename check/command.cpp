#include "check/command.h"

#include <exception>
#include <filesystem>
#include <optional>

#include "check/files/text_file.h"
#include "check/judging/report.h"
#include "check/proof/command.h"

namespace latbox::check {
namespace {

constexpr const char* HELP =
    R"(usage: latbox-check [--quiet] FILE.opt [FILE.sol]
       latbox-check --proof=FILE [--threads=N] [--part=K/N | --join=FILE] [--quiet] FILE.opt [FILE.all]

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

With --proof the verdict of latbox-all is checked instead, by the proof that it has written: no point, all points, or
the optimum. The last line is the verdict behind the word "proof:", or why the proof is refused. If FILE.all is given
too, its lines must be exactly the points of the verdict.

  --proof=FILE  check this proof
  --threads=N   with so many threads (default 1)
  --part=K/N    only the K-th of N parts of the work; prints one line, which is no verdict
  --join=FILE   the verdict from the lines of all parts, instead of the work
  --quiet       no lines for single solutions
  --help        this text
  --version     the version

Exit status: 0 all well, also where there is no solution to check; 1 a solution is wrong, or a proof is refused; 2 a
file is missing, unreadable or no such file by its content. A NAME.sol that is not there is no error unless it was
given: the solver removes it when it has no solutions.
)";

struct Settings {
  bool quiet = false;
  bool help = false;
  bool version = false;
  std::vector<std::string> files;
  // With --proof.
  proof::Settings proof;
  // Given without --proof this one would do nothing: its name.
  std::string needsProof;
};

// The value behind "--name="; nothing for another argument. An empty value is none.
std::optional<std::string> valueOf(const std::string& argument, const std::string& name) {
  const std::string begin = "--" + name + "=";
  if (!argument.starts_with(begin)) return std::nullopt;
  if (argument.size() == begin.size()) throw Unreadable(begin + " has no value");
  return argument.substr(begin.size());
}

bool takeProofOption(const std::string& argument, Settings& settings) {
  if (const auto file = valueOf(argument, "proof")) {
    settings.proof.proof = *file;
    return true;
  }
  if (const auto file = valueOf(argument, "join"))
    settings.proof.join = *file;
  else if (const auto number = valueOf(argument, "threads"))
    proof::takeThreads(*number, settings.proof);
  else if (const auto part = valueOf(argument, "part"))
    proof::takePart(*part, settings.proof);
  else
    return false;
  settings.needsProof = argument;
  return true;
}

// Throws Unreadable.
void requireSense(Settings& settings) {
  if (settings.help || settings.version) return;
  const std::vector<std::string>& files = settings.files;
  if (files.empty() || files.size() > 2) throw Unreadable("one or two files are needed: FILE.opt [FILE.sol]");
  proof::Settings& proof = settings.proof;
  if (proof.proof.empty() && !settings.needsProof.empty())
    throw Unreadable(settings.needsProof + " needs --proof=FILE");
  if (proof.isPart && !proof.join.empty()) throw Unreadable("--part and --join exclude each other");
  if (proof.isPart && files.size() == 2)
    throw Unreadable("a part compares no points: leave " + files[1] + " out");
  proof.program = files[0];
  if (files.size() == 2) proof.points = files[1];
  proof.quiet = settings.quiet;
}

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
    else if (takeProofOption(argument, settings))
      continue;
    else if (argument.starts_with("-"))
      throw Unreadable("unknown option " + argument + "; --help shows them");
    else
      settings.files.push_back(argument);
  }
  requireSense(settings);
  return settings;
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
    const Report found = report(program_, sol, settings_.quiet, out_);
    out_ << sol << ": " << verdictOf(found) << '\n';
    return found.wrong == 0 ? ALL_WELL : SOMETHING_WRONG;
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
  if (!settings.proof.proof.empty()) return proof::runProof(settings.proof, out);
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
