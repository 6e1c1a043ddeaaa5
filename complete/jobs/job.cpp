#include "complete/jobs/job.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <mutex>

#include "complete/files/checkpoint.h"
#include "complete/files/words.h"
#include "complete/files/write_failure.h"
#include "complete/jobs/best_job.h"
#include "complete/jobs/cover.h"
#include "complete/jobs/folder.h"
#include "complete/jobs/placing.h"
#include "complete/jobs/proof_job.h"
#include "complete/lattice/reduction.h"
#include "complete/program/verification.h"
#include "complete/run/exit_status.h"
#include "complete/run/run.h"
#include "complete/run/watch.h"

namespace latbox::complete::jobs {
namespace {

// One process at a time does a piece.
class JobLock {
 public:
  explicit JobLock(std::string path) : path_(std::move(path)) {
    while (!take()) ::close(file_);
  }
  ~JobLock() {
    ::unlink(path_.c_str());
    ::close(file_);
  }
  JobLock(const JobLock&) = delete;
  JobLock& operator=(const JobLock&) = delete;

 private:
  // False: who had it has just removed it, and who comes next makes another one.
  bool take() {
    file_ = ::open(path_.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0666);
    if (file_ < 0) throw WriteFailure(path_ + ": " + std::strerror(errno));
    if (::flock(file_, LOCK_EX | LOCK_NB) != 0) {
      ::close(file_);
      throw WriteFailure(path_ + ": another process does this piece");
    }
    struct stat mine {};
    struct stat there {};
    return ::fstat(file_, &mine) == 0 && ::stat(path_.c_str(), &there) == 0 && mine.st_ino == there.st_ino;
  }

  std::string path_;
  int file_ = -1;
};

class Listing : public Visitor {
 public:
  Listing(const Program& program, Finds& finds) : program_(program), verification_(program), finds_(finds) {}

  Next visit(const IntegerVector& z) override {
    static thread_local Point x;
    verification_.takePoint(x, z);
    finds_.list(x, normsOf(program_, x));
    return Next::GO_ON;
  }

 private:
  const Program& program_;
  Verification verification_;
  Finds& finds_;
};

class Job {
 public:
  Job(const Options& options, const Folder& folder, const Entry& entry)
      : options_(options),
        folder_(folder),
        entry_(entry),
        lattice_(folder.lattice()),
        results_(folder.program(), folder.wanted().count ? "" : pointsPath(), options.text),
        ending_(options, folder, entry, results_, control_) {
    control_.threads = threadsOf(options);
    control_.keepEvery = options.checkpoint;
    control_.keep = [this](const Frontier& left) { save(left, true); };
  }

  int result() {
    std::vector<Piece> pieces = takeUp();
    Listing listing(folder_.program(), results_);
    const IntegerVector point = lattice_.box.point;
    SearchSettings settings;
    settings.pieces = pieces.empty() ? entry_.pieces : std::move(pieces);
    bool isComplete = false;
    {
      const Watch watch({options_.jobRtime, options_.quiet}, results_, control_,
                        [this] { ending_.leaveStopped(); });
      isComplete = search(lattice_.box, listing, control_, settings);
    }
    if (lattice_.box.point != point) throw ReductionFailure("the lattice's point is not where it was left");
    if (!ending_.hasResult(isComplete)) {
      save(control_.left, true);
      return UNKNOWN;
    }
    place(isComplete ? std::vector<Piece>() : control_.left.pieces);
    return 0;
  }

 private:
  std::string pointsPath() const { return folder_.pathOf(entry_, ".points"); }
  std::string checkpointPath() const { return folder_.pathOf(entry_, ".checkpoint"); }

  // What another process has left of this piece; empty: nothing was begun.
  std::vector<Piece> takeUp() {
    const auto past = readCheckpoint(checkpointPath());
    const bool isOurs =
        past && past->identity == entry_.digest && past->open && !past->open->frontier.pieces.empty() &&
        (folder_.wanted().count || digestOfFile(pointsPath(), past->file.bytes) == past->file.digest);
    if (!isOurs) {
      std::filesystem::remove(checkpointPath());
      std::filesystem::remove(pointsPath());
      results_.begin();
      return {};
    }
    control_.nodes = past->nodes;
    results_.resume(past->file, past->seconds, false);
    results_.goLive();
    return past->open->frontier.pieces;
  }

  void save(const Frontier& left, bool surely) {
    Checkpoint checkpoint;
    ending_.sign(checkpoint);
    checkpoint.file = results_.state(surely);
    checkpoint.open.emplace();
    checkpoint.open->key = checkpoint.open->lattice = entry_.digest;
    checkpoint.open->frontier = left;
    writeCheckpoint(checkpointPath(), checkpoint, surely);
    control_.lastKeep = std::chrono::steady_clock::now();
  }

  void place(std::vector<Piece> open) {
    std::erase_if(open, isNothing);
    const FileState state = results_.state();
    Result result = ending_.result();
    result.open = std::move(open);
    result.points = state.count;
    if (!folder_.wanted().count && state.bytes > 0) result.lines = readFile(pointsPath());
    Digest digest;
    digest.add(result.lines);
    if (!folder_.wanted().count && digest != state.digest)
      throw WriteFailure(pointsPath() + ": is not as it was written");
    ending_.place(result);
  }

  const Options& options_;
  const Folder& folder_;
  const Entry& entry_;
  PieceLattice lattice_;
  SearchControl control_;
  Results results_;
  Ending ending_;
};

// True: there is a result already, and it was told.
bool isDone(const Folder& folder, const Entry& entry) {
  if (!folder.hasResult(entry)) return false;
  try {
    print(lineOf(folder, entry, folder.resultIn(folder.resultPath(entry.number), entry)));
    return true;
  } catch (const BadWords& e) {
    std::fprintf(stderr, "latbox-all: %s: the piece is done anew\n", e.what());
    return false;
  }
}

}  // namespace

int doJob(const Options& options) {
  const Folder folder(options.jobs);
  const Entry& entry = folder.entry(options.job);
  if (isDone(folder, entry)) return 0;
  const JobLock lock(folder.pathOf(entry, ".lock"));
  if (isDone(folder, entry)) return 0;
  if (entry.share) return doShare(options, folder, entry);
  return folder.isListing() ? Job(options, folder, entry).result() : doBestJob(options, folder, entry);
}

}  // namespace latbox::complete::jobs
