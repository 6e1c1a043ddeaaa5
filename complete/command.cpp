#include "complete/command.h"

#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <sstream>
#include <thread>

#include "complete/options.h"
#include "complete/points_file.h"
#include "complete/watch.h"

namespace latbox::complete {
namespace {

std::string readFile(const std::string& path) {
  errno = std::filesystem::is_directory(path) ? EISDIR : 0;
  std::ifstream file;
  if (errno == 0) file.open(path, std::ios::binary);
  std::ostringstream text;
  if (file.is_open() && file.peek() != std::ifstream::traits_type::eof()) text << file.rdbuf();
  if (!file.is_open() || file.bad() || text.bad())
    throw BadInput(path + ": " + (errno != 0 ? std::strerror(errno) : "cannot be read"));
  return std::move(text).str();
}

bool isSameFile(const std::string& a, const std::string& b) {
  std::error_code error;
  return std::filesystem::weakly_canonical(a, error) == std::filesystem::weakly_canonical(b, error) ||
         std::filesystem::equivalent(a, b, error);
}

// Files that the solver or the user keeps are not written over, nor taken for the one that is kept or put
// together beside the points.
std::string outputPath(const Options& options) {
  std::string out = options.out;
  if (out.empty()) out = std::filesystem::path(options.file).replace_extension(".all").string();
  const std::string extension = std::filesystem::path(out).extension().string();
  const bool reserved = extension == ".opt" || extension == ".sol" || extension == ".lat";
  bool isInput = false;
  for (const char* suffix : {"", PointsFile::KEPT, PointsFile::NEXT})
    isInput = isInput || isSameFile(out + suffix, options.file);
  if (reserved || isInput)
    throw BadInput("--out=" + out + ": points are not written over a program or a file of the solver");
  // A file is renamed in the end, which a folder, a device or a pipe must never be.
  for (const char* suffix : {"", PointsFile::KEPT, PointsFile::NEXT})
    if (std::filesystem::exists(out + suffix) && !std::filesystem::is_regular_file(out + suffix))
      throw BadInput("--out=" + out + ": " + (*suffix == 0 ? "" : out + suffix + " ") +
                     "is there and is no regular file");
  return out;
}

void print(const std::string& text) {
  if (std::fputs(text.c_str(), stdout) == EOF || std::fflush(stdout) == EOF)
    throw WriteFailure("standard output cannot be written");
}

int printVerdict(const std::string& text, int status) {
  print("verdict: " + text + "\n");
  return status;
}

class Run {
 public:
  explicit Run(const Options& options)
      : options_(options),
        program_(readProgram(readFile(options.file), options.file)),
        results_(program_, options.count ? "" : outputPath(options), options.text) {}

  int result() {
    control_.threads = threads();
    const Watch watch({options_.rtime, options_.quiet}, results_, control_, [this] { endNow(); });
    const Outcome outcome = solve(program_, task(), results_, control_);
    if (!results_.close()) waitForEnd();
    return tell(outcome);
  }

 private:
  bool listsAll() const { return options_.all || program_.targets.empty(); }

  unsigned threads() const {
    constexpr unsigned long MOST = 1024;
    if (options_.threads != 0) return static_cast<unsigned>(std::min(options_.threads, MOST));
    return std::max(1u, std::thread::hardware_concurrency());
  }

  Task task() const { return {options_.all, options_.ties, options_.first, options_.limit}; }

  int tell(Outcome outcome) const {
    if (outcome == Outcome::STOPPED) return tellStopped();
    if (outcome == Outcome::NONE) return printVerdict("none", NONE);
    if (listsAll()) return printVerdict("all " + std::to_string(results_.count()), PROVEN);
    if (options_.ties) print("best points: " + std::to_string(results_.count()) + "\n");
    const Norms norms = *results_.best();
    return printVerdict(
        "optimum " + toText(norms.target) + (norms.slack == 0 ? "" : " " + toText(norms.slack)), PROVEN);
  }

  int tellStopped() const {
    const unsigned long count = results_.count();
    return count > 0 ? printVerdict("found " + std::to_string(count), FOUND)
                     : printVerdict("unknown", UNKNOWN);
  }

  // On the watch's thread: the search does not answer, and what is known is told without it.
  void endNow() {
    int status = FAILURE;
    try {
      if (!results_.close()) return;
      status = tellStopped();
    } catch (const std::exception& e) {
      std::fprintf(stderr, "latbox-all: %s\n", e.what());
    }
    _exit(status);
  }

  [[noreturn]] static void waitForEnd() {
    while (true) pause();
  }

  Options options_;
  Program program_;
  SearchControl control_;
  Results results_;
};

int run(const std::vector<std::string>& arguments) {
  const Options options = parseOptions(arguments);
  if (options.help) {
    print(helpText());
    return 0;
  }
  if (options.version) {
    print(std::string("latbox-all v") + VERSION + "\n");
    return 0;
  }
  return Run(options).result();
}

int fail(const std::exception& e, int status) {
  std::fprintf(stderr, "latbox-all: %s\n", e.what());
  return status;
}

}  // namespace

int runCommand(const std::vector<std::string>& arguments) {
  Watch::takeSignals();
  try {
    return run(arguments);
  } catch (const BadInput& e) {
    return fail(e, BAD_INPUT);
  } catch (const std::exception& e) {
    return fail(e, FAILURE);
  }
}

}  // namespace latbox::complete
