#include "complete/run/options.h"

#include <algorithm>
#include <charconv>
#include <functional>
#include <iomanip>
#include <set>
#include <sstream>
#include <utility>

namespace latbox::complete {
namespace {

// Room for the longest form of an option in the usage, and blanks behind it.
constexpr int WIDEST = 22;

[[noreturn]] void refuseValue(const std::string& key, const std::string& value, const char* wanted) {
  throw BadInput("--" + key + "=" + value + ": " + wanted + " is wanted");
}

bool switchOf(const std::string& key, const std::string& value) {
  if (value != "0" && value != "1") refuseValue(key, value, "0 or 1");
  return value == "1";
}

unsigned long countOf(const std::string& key, const std::string& value) {
  unsigned long number = 0;
  const auto [end, error] = std::from_chars(value.data(), value.data() + value.size(), number);
  if (error != std::errc() || end != value.data() + value.size())
    refuseValue(key, value, "a whole number, 0 or more,");
  return number;
}

unsigned long numberOf(const std::string& key, const std::string& value) {
  const unsigned long number = countOf(key, value);
  if (number == 0) refuseValue(key, value, "a whole number, 1 or more,");
  return number;
}

unsigned long piecesOf(const std::string& key, const std::string& value) {
  constexpr unsigned long MOST = 10'000'000;
  const unsigned long number = numberOf(key, value);
  if (number > MOST) refuseValue(key, value, "a number of pieces, 10000000 or fewer,");
  return number;
}

// Digits with at most one point among them.
double secondsOf(const std::string& key, const std::string& value) {
  const bool digits = !value.empty() && value.find_first_not_of("0123456789.") == std::string::npos &&
                      std::count(value.begin(), value.end(), '.') <= 1 && value != ".";
  double number = 0;
  const auto [end, error] = std::from_chars(value.data(), value.data() + value.size(), number);
  if (!digits || error != std::errc() || end != value.data() + value.size())
    refuseValue(key, value, "a number of seconds, 0 or more,");
  return number;
}

std::string nonEmpty(const std::string& key, const std::string& value) {
  if (value.empty()) refuseValue(key, value, "the name of a file");
  return value;
}

bool viprOf(const std::string& key, const std::string& value) {
  if (value != "latbox" && value != "vipr") refuseValue(key, value, "latbox or vipr");
  return value == "vipr";
}

struct Key {
  OptionHelp help;
  std::function<void(Options&, const std::string& value)> take;
};

template <class Value>
Key key(const OptionHelp& help, Value Options::*member,
        Value (*parse)(const std::string&, const std::string&)) {
  return {help,
          [=](Options& options, const std::string& value) { options.*member = parse(help.name, value); }};
}

// The order is that of the usage and of the manual page.
const std::vector<Key>& keys() {
  static const std::vector<Key> table = {
      key({"all", "1", "List all points, also where there are targets."}, &Options::all, switchOf),
      key({"ties", "1", "List all best points, not one of them."}, &Options::ties, switchOf),
      key({"count", "1", "Count what would be listed, and write no file."}, &Options::count, switchOf),
      key({"first", "1", "End with the first point, whatever its targets."}, &Options::first, switchOf),
      key({"limit", "N", "End with N points, where points are listed; 0: no limit."}, &Options::limit,
          countOf),
      key({"out", "FILE", "Where points are written; NAME.all unless given."}, &Options::out, nonEmpty),
      key({"best", "FILE",
           "Look into this file, while it grows, for points that others find; no checkpoint."},
          &Options::best, nonEmpty),
      key({"proof", "FILE", "Write a proof of the verdict that latbox-check can check."}, &Options::proof,
          nonEmpty),
      key({"proof-format", "vipr",
           "Write the proof as a VIPR 1.1 certificate: of none or an optimum, by small trees."},
          &Options::vipr, viprOf),
      key({"rtime", "SECONDS", "End after so many seconds of the clock, decimals allowed; 0: no limit."},
          &Options::rtime, secondsOf),
      key({"threads", "N", "Search with at most N threads; 0, the default: one for each core."},
          &Options::threads, countOf),
      key({"seed", "N", "Where the random bases of --first=1 begin; what is proven does not depend on it."},
          &Options::seed, countOf),
      key({"resume", "0", "Begin anew, and do not go on from the checkpoint of the same command."},
          &Options::resume, switchOf),
      key({"checkpoint", "SECONDS",
           "Write a checkpoint each so many seconds of the clock; 60 unless given, 0: at the end alone."},
          &Options::checkpoint, secondsOf),
      key({"jobs", "FOLDER", "A folder of pieces that several machines search."}, &Options::jobs, nonEmpty),
      key({"split", "N",
           "Make the folder: about N pieces; with --job=K, of what is left of that piece. With --proof=1 "
           "also "
           "of the proof."},
          &Options::split, piecesOf),
      key({"job", "K", "Do piece K of the folder."}, &Options::job, numberOf),
      key({"job-rtime", "SECONDS",
           "After so many seconds of the clock a piece ends with what is left of it; 0: no limit."},
          &Options::jobRtime, secondsOf),
      key({"take", "FILE", "Check a result of piece K that was made elsewhere, and put it in its place."},
          &Options::take, nonEmpty),
      key({"pieces", "1", "List the pieces: number, state, estimated nodes, points, nodes."},
          &Options::pieces, switchOf),
      key({"join", "1", "Check that all is done, and tell the verdict of the undivided run."}, &Options::join,
          switchOf),
      key({"quiet", "1", "No lines of progress on standard error."}, &Options::quiet, switchOf),
      key({"help", "", "Show this text."}, &Options::help, switchOf),
      key({"version", "", "Show the version."}, &Options::version, switchOf),
  };
  return table;
}

const Key& find(const std::string& name, const std::string& argument) {
  for (const Key& candidate : keys())
    if (name == candidate.help.name) return candidate;
  throw BadInput(argument + ": unknown option; --help shows them");
}

// The last field of a line: neither a separator of fields nor the end of a line may stand in it.
std::string asField(std::string text) {
  for (char& c : text)
    if (c == '|' || c == '\n' || c == '\r') c = ' ';
  return text;
}

void takeOption(Options& options, const std::string& argument, std::set<std::string>& seen) {
  const std::size_t sign = argument.find('=');
  const std::string name = argument.substr(2, sign == std::string::npos ? sign : sign - 2);
  const Key& known = find(name, argument);
  if (!seen.insert(name).second) throw BadInput(argument + ": --" + name + " was given before");
  if (sign == std::string::npos && *known.help.value != '\0')
    throw BadInput(argument + ": a value is wanted, --" + name + "=...");
  known.take(options, sign == std::string::npos ? "1" : argument.substr(sign + 1));
  options.text += (options.text.empty() ? "" : " ") + asField(argument);
}

void exclude(bool a, const char* nameA, bool b, const char* nameB) {
  if (a && b) throw BadInput(std::string("--") + nameA + " and --" + nameB + " exclude each other");
}

// What is done with a folder of pieces, and the options that go with it.
struct Action {
  const char* name;
  bool isWanted;
  std::set<std::string> others;
};

// The first that is wanted is done: taking and splitting have the number of a job, too.
std::vector<Action> actionsOf(const Options& options) {
  const bool isDivided = options.split > 0 && options.job > 0;
  return {{"pieces", options.pieces, {}},
          {"join", options.join, {"out", "proof", "rtime", "threads"}},
          {"take", !options.take.empty(), {"job"}},
          {"split", isDivided, {"job"}},
          {"split", options.split > 0, {"all", "ties", "count", "proof"}},
          {"job", options.job > 0, {"job-rtime", "threads", "checkpoint"}}};
}

// Every option of pieces goes with a folder, and with what is done there.
void checkFolder(const Options& options, const std::set<std::string>& seen) {
  for (const Action& action : actionsOf(options)) {
    if (!action.isWanted) continue;
    if (options.jobs.empty())
      throw BadInput(std::string("--") + action.name + ": a folder is wanted, --jobs=FOLDER");
    for (const std::string& name : seen)
      if (name != action.name && name != "jobs" && name != "quiet" && !action.others.contains(name))
        exclude(true, action.name, true, name.c_str());
    if (!options.take.empty() && options.job == 0)
      throw BadInput("--take: the number of a piece is wanted, --job=K");
    const bool begins = options.split > 0 && options.job == 0;
    if (begins && !options.proof.empty() && options.proof != "0" && options.proof != "1")
      refuseValue("proof", options.proof, "0 or 1, for a folder of pieces,");
    if (!begins && !options.file.empty()) throw BadInput(options.file + ": the folder has its program");
    return;
  }
  if (!options.jobs.empty()) throw BadInput("--jobs: --split, --job, --take, --pieces or --join is wanted");
  if (seen.contains("job-rtime")) throw BadInput("--job-rtime: a piece is wanted, --job=K");
}

bool needsFile(const Options& options) {
  return options.jobs.empty() || (options.split > 0 && options.job == 0);
}

void requireOneFile(const Options& options) {
  if (options.file.empty()) throw BadInput("a file is wanted: latbox-all [--key=value ...] FILE.opt");
}

}  // namespace

Options parseOptions(const std::vector<std::string>& arguments) {
  Options options;
  std::set<std::string> seen;
  for (const std::string& argument : arguments) {
    if (argument.starts_with("--")) {
      takeOption(options, argument, seen);
    } else if (argument.starts_with("-")) {
      throw BadInput(argument + ": unknown option; --help shows them");
    } else {
      if (!options.file.empty())
        throw BadInput(argument + ": one file is wanted, and " + options.file + " was given");
      options.file = argument;
    }
  }
  exclude(options.first, "first", options.ties, "ties");
  exclude(options.first, "first", options.limit != 0, "limit");
  exclude(options.first, "first", options.count, "count");
  exclude(!options.proof.empty(), "proof", options.first, "first");
  exclude(!options.proof.empty(), "proof", options.limit != 0, "limit");
  exclude(options.all, "all", options.ties, "ties");
  if (options.vipr && options.proof.empty())
    throw BadInput("--proof-format=vipr: a proof is wanted, --proof=FILE");
  if (options.help || options.version) return options;
  checkFolder(options, seen);
  if (needsFile(options)) requireOneFile(options);
  return options;
}

std::vector<OptionHelp> optionHelp() {
  std::vector<OptionHelp> all;
  for (const Key& known : keys()) all.push_back(known.help);
  return all;
}

std::string helpText() {
  std::ostringstream text;
  text << R"(usage: latbox-all [--key=value ...] FILE.opt

Finds all points of a program, or the best one, or proves that there is none.

)";
  for (const OptionHelp& option : optionHelp()) {
    const std::string form = std::string("--") + option.name + (*option.value != '\0' ? "=" : "");
    text << "  " << std::left << std::setw(WIDEST) << form + option.value << option.text << '\n';
  }
  text << R"(
The last line of standard output is the verdict:

  verdict: all N         status 10   all N points are in the file
  verdict: optimum T     status 10   the best target norm, proven; behind it the slack norm where it is not 0
  verdict: none          status 20   there is no point, proven
  verdict: found N       status 11   stopped; N points are in the file, or counted
  verdict: unknown       status 12   stopped, no point known

Status 1 is a failure, 2 a usage error or an input that cannot be taken; then there is no verdict.
)";
  return std::move(text).str();
}

}  // namespace latbox::complete
