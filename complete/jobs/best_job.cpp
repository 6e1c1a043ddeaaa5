#include "complete/jobs/best_job.h"

#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <mutex>

#include "complete/files/points_file.h"
#include "complete/files/write_failure.h"
#include "complete/jobs/best.h"
#include "complete/jobs/placing.h"
#include "complete/jobs/regions.h"
#include "complete/run/exit_status.h"
#include "complete/run/run.h"
#include "complete/run/watch.h"
#include "complete/solving/solver.h"

namespace latbox::complete::jobs {
namespace {

// Keeps the best point.
class Kept : public Finds {
 public:
  explicit Kept(Results& results) : results_(results) {}

  void begin() override { results_.begin(); }
  void list(const Point& x, const Norms& norms) override { replace(x, norms); }
  void replace(const Point& x, const Norms& norms) override {
    results_.replace(x, norms);
    const std::lock_guard lock(mutex_);
    best_ = BestPoint{x, norms};
  }
  unsigned long count() const override { return results_.count(); }
  std::optional<BestPoint> best() const {
    const std::lock_guard lock(mutex_);
    return best_;
  }

 private:
  Results& results_;
  mutable std::mutex mutex_;
  std::optional<BestPoint> best_;
};

class BestJob {
 public:
  BestJob(const Options& options, const Folder& folder, const Entry& entry)
      : options_(options),
        folder_(folder),
        entry_(entry),
        results_(folder.program(), "", options.text),
        ending_(options, folder, entry, results_, control_),
        kept_(results_) {
    control_.threads = threadsOf(options);
    control_.keepEvery = options.checkpoint;
  }

  int result() {
    const PieceLattice lattice = folder_.lattice();
    const auto past = takeUp();
    Journal journal(control_, keeping(), past.value_or(Checkpoint()));
    {
      const Watch watch({options_.jobRtime, options_.quiet}, results_, control_, [this] { endNow(); });
      while (done_ < entry_.pieces.size() && solvePiece(regionsOf(lattice, entry_.pieces[done_]), journal))
        ++done_;
    }
    if (!ending_.hasResult(done_ == entry_.pieces.size())) {
      journal.save();
      return UNKNOWN;
    }
    place();
    return 0;
  }

 private:
  std::string startPath() const { return folder_.pathOf(entry_, ".start"); }
  std::string checkpointPath() const { return folder_.pathOf(entry_, ".checkpoint"); }

  // A run that goes on must begin with the point that the first one began with, to come to the same searches.
  std::optional<Checkpoint> takeUp() {
    auto past = readCheckpoint(checkpointPath());
    if (past && (past->identity != entry_.digest || !std::filesystem::exists(startPath()))) past.reset();
    if (!past) {
      std::filesystem::remove(checkpointPath());
      start_ = bestIn(folder_.pathOf("best"), folder_.program());
      replaceFile(startPath(), start_ ? lineOf(folder_.program(), start_->x, start_->norms, 0, "") : "",
                  true);
    }
    start_ = bestIn(startPath(), folder_.program());
    if (past) control_.nodes = past->nodes;
    if (past) results_.resume({}, past->seconds, true);
    return past;
  }

  Journal::Keeping keeping() {
    return {[this](Checkpoint checkpoint) {
              ending_.sign(checkpoint);
              writeCheckpoint(checkpointPath(), checkpoint, false);
            },
            [] { return FileState(); }, [](const FileState&) {}, [this] { results_.goLive(); }};
  }

  bool solvePiece(const std::vector<std::vector<Row>>& regions, Journal& journal) {
    for (const std::vector<Row>& region : regions) {
      Task task;
      task.beside = region;
      task.normAlone = true;
      if (const auto best = betterOf(start_, kept_.best())) task.start = best->x;
      if (solve(folder_.program(), task, kept_, journal) == Outcome::STOPPED) return false;
    }
    return !control_.stop;
  }

  // By the watch, or when the search has ended: whoever comes first. The other one waits for the end.
  void place() {
    if (isPlacing_.exchange(true))
      while (true) pause();
    Result result = ending_.result();
    result.open.assign(entry_.pieces.begin() + static_cast<std::ptrdiff_t>(done_), entry_.pieces.end());
    const auto best = betterOf(start_, kept_.best());
    if (best) result.bound = toText(best->norms.target);
    if (best && (!start_ || best->norms < start_->norms)) {
      result.points = 1;
      result.lines = lineOf(folder_.program(), best->x, best->norms, static_cast<long>(results_.allSeconds()),
                            options_.text);
      offer(folder_, best);
    }
    ending_.place(result);
    std::filesystem::remove(startPath());
  }

  // On the watch's thread: a reduction does not answer.
  void endNow() {
    ending_.leaveStopped();
    try {
      place();
      _exit(0);
    } catch (const std::exception& e) {
      std::fprintf(stderr, "latbox-all: %s\n", e.what());
      _exit(FAILURE);
    }
  }

  const Options& options_;
  const Folder& folder_;
  const Entry& entry_;
  SearchControl control_;
  Results results_;
  Ending ending_;
  Kept kept_;
  std::optional<BestPoint> start_;
  // Pieces of the entry.
  std::atomic<std::size_t> done_ = 0;
  std::atomic<bool> isPlacing_ = false;
};

}  // namespace

int doBestJob(const Options& options, const Folder& folder, const Entry& entry) {
  return BestJob(options, folder, entry).result();
}

}  // namespace latbox::complete::jobs
