#include "complete/run/run.h"

#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <thread>

#include "complete/files/left_points.h"
#include "complete/files/points_file.h"
#include "complete/files/write_failure.h"
#include "complete/lattice/reduction.h"
#include "complete/run/exit_status.h"
#include "complete/run/outlook.h"
#include "complete/run/watch.h"
#include "complete/vipr/vipr.h"

namespace latbox::complete {
namespace {

bool isSameFile(const std::string& a, const std::string& b) {
  std::error_code error;
  return std::filesystem::weakly_canonical(a, error) == std::filesystem::weakly_canonical(b, error) ||
         std::filesystem::equivalent(a, b, error);
}

constexpr const char* RESUME = ".resume";
constexpr const char* RESUME_COUNT = ".count.resume";

std::string basePath(const Options& options) {
  if (!options.out.empty()) return options.out;
  return std::filesystem::path(options.file).replace_extension(".all").string();
}

std::string checkpointPath(const Options& options) {
  return basePath(options) + (options.count ? RESUME_COUNT : RESUME);
}

// All that a run may write over, rename or put together.
std::vector<std::string> ownPaths(const Options& options) {
  std::vector<std::string> paths;
  for (const std::string& path : {basePath(options), checkpointPath(options)})
    if (path == checkpointPath(options) || !options.count)
      for (const char* suffix : {"", PointsFile::KEPT, PointsFile::NEXT}) paths.push_back(path + suffix);
  return paths;
}

// Files that the solver or the user keeps are not written over, nor taken for one that is kept or put
// together beside the points. A file is renamed in the end, which a folder, a device or a pipe must never be.
void guardPaths(const Options& options) {
  const std::string out = basePath(options);
  const std::string extension = std::filesystem::path(out).extension().string();
  bool refused = !options.count && (extension == ".opt" || extension == ".sol" || extension == ".lat");
  for (const std::string& path : ownPaths(options)) refused = refused || isSameFile(path, options.file);
  if (refused)
    throw BadInput("--out=" + out + ": points are not written over a program or a file of the solver");
  for (const std::string& path : ownPaths(options))
    if (std::filesystem::exists(path) && !std::filesystem::is_regular_file(path))
      throw BadInput("--out=" + out + ": " + (path == out ? "" : path + " ") +
                     "is there and is no regular file");
}

// A proof takes the place of a file that is none of the run's own.
void guardProof(const Options& options) {
  if (options.proof.empty()) return;
  const std::string extension = std::filesystem::path(options.proof).extension().string();
  bool refused = extension == ".opt" || extension == ".sol" || extension == ".lat";
  for (const std::string& path : {options.proof, options.proof + BESIDE}) {
    refused = refused || isSameFile(path, options.file) || isSameFile(path, basePath(options));
    for (const std::string& own : ownPaths(options)) refused = refused || isSameFile(path, own);
  }
  if (refused)
    throw BadInput("--proof=" + options.proof +
                   ": a proof is not written over a program, a file of the solver, or the points");
  for (const std::string& path : {options.proof, options.proof + BESIDE})
    if (std::filesystem::exists(path) && !std::filesystem::is_regular_file(path))
      throw BadInput("--proof=" + options.proof + ": " + (path == options.proof ? "" : path + " ") +
                     "is there and is no regular file");
}

// What a verdict of this form claims.
Norms normsOfVerdict(const std::string& text) {
  std::istringstream words(text);
  std::string optimum;
  std::string target;
  std::string slack = "0";
  words >> optimum >> target >> slack;
  return {parseRational(target), parseRational(slack.empty() ? "0" : slack)};
}

// The text that the file of this run goes by in a checkpoint: the program, and what may not change.
std::string identityOf(const Options& options, const std::string& program) {
  std::string text = VERSION;
  for (const bool option : {options.all, options.ties, options.first, options.count})
    text += option ? '1' : '0';
  return digestOf(text + program);
}

class Run {
 public:
  Run(const Options& options, const Answers& answers) : Run(options, answers, readFile(options.file)) {}

  int result() {
    if (past_ && !past_->verdict.empty()) {
      const Verdict verdict{past_->verdict, past_->status, true};
      tell(verdict, past_->file.count);
      return proven(verdict, past_->file.count);
    }
    control_.threads = threads();
    control_.keepEvery = options_.checkpoint;
    if (!options_.quiet)
      control_.announce = [this](double nodes, double points, std::size_t coordinates) {
        tellOutlook(nodes, points, coordinates);
      };
    if (past_) takeUp(*past_);
    Journal journal(control_, keeping(), past_.value_or(Checkpoint()));
    const Outcome outcome = watched([&] { return answers_.solve(program_, task(), results_, journal); });
    const Verdict verdict = verdictOf(outcome);
    if (verdict.isLast) verdict_ = &verdict;
    journal.save();
    tell(verdict, results_.count());
    return proven(verdict, results_.count());
  }

 private:
  struct Verdict {
    std::string text;
    int status;
    // Nothing is left to be searched.
    bool isLast;
  };

  Run(const Options& options, const Answers& answers, const std::string& text)
      : options_(options),
        answers_(answers),
        program_(readProgram(text, options.file)),
        identity_(identityOf(options, text)),
        results_(program_, options.count ? "" : basePath(options), options.text,
                 [this] { keepOther(checkpointPath(options_)); }) {
    guardPaths(options);
    guardProof(options);
    if (!options.best.empty())
      known_.emplace(program_, options.best, control_.known);
    else if (options.resume)
      past_ = pastRun();
  }

  // Of what another run has left: what this one can go on from.
  std::optional<Checkpoint> pastRun() const {
    std::optional<Checkpoint> past = readCheckpoint(checkpointPath(options_));
    if (!past || past->identity != identity_) return std::nullopt;
    if (options_.count || isFileOf(*past, basePath(options_), !listsAll(), program_)) return past;
    if (!options_.quiet)
      std::fprintf(stderr,
                   "%s is not the file that %s was written beside: the run begins anew, and what is there is "
                   "kept as .old\n",
                   basePath(options_).c_str(), checkpointPath(options_).c_str());
    return std::nullopt;
  }

  bool listsAll() const { return options_.all || program_.targets.empty(); }

  unsigned threads() const {
    constexpr unsigned long MOST = 1024;
    if (options_.threads != 0) return static_cast<unsigned>(std::min(options_.threads, MOST));
    return std::max(1u, std::thread::hardware_concurrency());
  }

  Task task() {
    return {options_.all, options_.ties, options_.first, options_.limit, options_.seed, known()};
  }

  KnownPoints* known() { return known_ ? &*known_ : nullptr; }

  void takeUp(const Checkpoint& past) {
    control_.nodes = past.nodes;
    results_.resume(past.file, past.seconds, !listsAll());
    if (options_.quiet) return;
    std::fprintf(stderr, "goes on from %s, after %.0f s and %lu points\n", checkpointPath(options_).c_str(),
                 past.seconds, past.file.count);
  }

  // The line of a point has little beside its values.
  void tellOutlook(double nodes, double points, std::size_t coordinates) const {
    constexpr double SPEED = 1.5e9;
    constexpr double BESIDE = 40;
    Outlook outlook;
    outlook.nodes = nodes;
    outlook.points = listsAll() ? points : -1;
    outlook.lineBytes = options_.count ? 0 : 2 * static_cast<double>(program_.variables()) + BESIDE;
    outlook.speed = SPEED * control_.threads / static_cast<double>(coordinates + 20);
    std::fputs(textOf(outlook).c_str(), stderr);
  }

  // The watch is over before the verdict is told.
  template <class Search>
  Outcome watched(Search search) {
    const Watch watch({options_.rtime, options_.quiet, known()}, results_, control_, [this] { endNow(); });
    const Outcome outcome = search();
    if (!results_.close()) waitForEnd();
    return outcome;
  }

  Journal::Keeping keeping() {
    return {[this](Checkpoint checkpoint) { save(std::move(checkpoint)); },
            [this] { return results_.state(); }, [this](const FileState& state) { results_.rewind(state); },
            [this] { results_.goLive(); }};
  }

  // Of a run that has not begun its file there is nothing to go on from, and one that others have helped
  // would not come to the same searches again. What is written each minute is to outlast the machine; at the
  // end of a run of moments that would take longer than the run.
  void save(Checkpoint checkpoint) {
    constexpr double MOMENTS = 1;
    if (!results_.hasBegun() || known_) return;
    checkpoint.identity = identity_;
    checkpoint.seconds = results_.allSeconds();
    checkpoint.nodes = control_.nodes;
    const bool surely = checkpoint.seconds > MOMENTS;
    checkpoint.file = results_.state(surely);
    if (verdict_) {
      checkpoint.verdict = verdict_->text;
      checkpoint.status = verdict_->status;
    }
    writeCheckpoint(checkpointPath(options_), checkpoint, surely);
  }

  // The checkpoint of another run goes before the points that it belongs to: it must not be found beside
  // those of this one.
  static void keepOther(const std::string& path) {
    std::error_code error;
    if (std::filesystem::exists(path)) std::filesystem::rename(path, path + PointsFile::KEPT, error);
    if (error)
      throw WriteFailure(path + ": cannot be kept as " + path + PointsFile::KEPT + ": " + error.message());
  }

  Verdict verdictOf(Outcome outcome) const {
    const unsigned long count = results_.count();
    if (outcome == Outcome::STOPPED) {
      if (count == 0) return {"unknown", UNKNOWN, false};
      return {"found " + std::to_string(count), FOUND, options_.first};
    }
    if (outcome == Outcome::NONE) return {"none", NONE, true};
    if (options_.first) return {"found " + std::to_string(count), FOUND, true};
    if (listsAll()) return {"all " + std::to_string(count), PROVEN, true};
    const Norms norms = *results_.best();
    return {"optimum " + toText(norms.target) + (norms.slack == 0 ? "" : " " + toText(norms.slack)), PROVEN,
            true};
  }

  void tell(const Verdict& verdict, unsigned long count) const {
    if (options_.ties && verdict.status == PROVEN) print("best points: " + std::to_string(count) + "\n");
    print("verdict: " + verdict.text + "\n");
  }

  // The exit status; before that the proof, if one is wanted. The verdict stands without it.
  int proven(const Verdict& verdict, unsigned long count) {
    if (options_.proof.empty()) return verdict.status;
    if (!verdict.isLast || (verdict.status != PROVEN && verdict.status != NONE)) {
      tellNoProof("the run was stopped");
      return verdict.status;
    }
    proof::Claim claim;
    if (verdict.status == PROVEN && !listsAll()) claim.best = normsOfVerdict(verdict.text);
    if (verdict.status == PROVEN && (listsAll() || options_.ties)) claim.count = count;
    control_.threads = threads();
    if (!options_.quiet)
      control_.announce = [](double nodes, double, std::size_t) {
        std::fprintf(stderr, "for the proof a walk of about %.2g nodes follows\n", nodes);
      };
    control_.done = -1;
    const Watch watch({options_.rtime, true}, results_, control_, [status = verdict.status] {
      tellNoProof("the run was stopped");
      _exit(status);
    });
    try {
      replaceFile(options_.proof,
                  options_.vipr ? vipr::certificateOf(program_, claim, control_)
                                : answers_.proof(program_, claim, control_),
                  true);
    } catch (const vipr::NotOfItsKind& e) {
      tellNoProof(e.what());
      return BAD_INPUT;
    } catch (const proof::NoProof& e) {
      tellNoProof(e.what());
    } catch (const ReductionFailure& e) {
      tellNoProof(e.what());
    } catch (const WriteFailure& e) {
      tellNoProof(e.what());
    }
    return verdict.status;
  }

  static void tellNoProof(const std::string& reason) {
    std::fprintf(stderr, "latbox-all: no proof was written: %s\n", reason.c_str());
  }

  // On the watch's thread: the search does not answer, and what is known is told without it. The last
  // checkpoint stands.
  void endNow() {
    int status = FAILURE;
    try {
      if (!results_.close()) return;
      const Verdict verdict = verdictOf(Outcome::STOPPED);
      status = verdict.status;
      tell(verdict, results_.count());
      if (!options_.proof.empty()) tellNoProof("the run was stopped");
    } catch (const std::exception& e) {
      std::fprintf(stderr, "latbox-all: %s\n", e.what());
    }
    _exit(status);
  }

  [[noreturn]] static void waitForEnd() {
    while (true) pause();
  }

  Options options_;
  const Answers& answers_;
  Program program_;
  std::string identity_;
  std::optional<Checkpoint> past_;
  SearchControl control_;
  Results results_;
  std::optional<KnownPoints> known_;
  // Of a run that has ended.
  const Verdict* verdict_ = nullptr;
};

}  // namespace

Answers plainAnswers() {
  return {solve, [](const Program& program, const proof::Claim& claim, SearchControl& control) {
            return proof::proofOf(program, claim, control);
          }};
}

int runProgram(const Options& options, const Answers& answers) {
  return Run(options, answers).result();
}

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

void print(const std::string& text) {
  if (std::fputs(text.c_str(), stdout) == EOF || std::fflush(stdout) == EOF)
    throw WriteFailure("standard output cannot be written");
}

}  // namespace latbox::complete
