#include "complete/tree/workers.h"

#include <chrono>
#include <condition_variable>
#include <deque>
#include <exception>
#include <mutex>
#include <thread>

namespace latbox::complete {
namespace {

using Clock = std::chrono::steady_clock;

class Crew {
 public:
  Crew(const std::function<std::unique_ptr<PieceWalk>()>& make, std::vector<Piece> pieces,
       SearchControl& control, unsigned long trial)
      : make_(make), control_(control), trial_(trial), queue_(pieces.begin(), pieces.end()) {
    if (queue_.empty()) queue_.emplace_back();
  }

  bool run() {
    control_.done = -1;
    auto first = make_();
    if (walkAlone(*first)) return finish();
    share_ = 0;
    workers_.push_back(std::move(first));
    while (workers_.size() < std::max(1u, control_.threads)) workers_.push_back(make_());
    std::vector<std::thread> threads;
    try {
      for (std::size_t i = 0; i < workers_.size(); ++i)
        threads.emplace_back([this, i] { work(*workers_[i]); });
      coordinate();
    } catch (...) {
      fail();
    }
    for (std::thread& thread : threads) thread.join();
    if (failure_) std::rethrow_exception(failure_);
    return finish();
  }

 private:
  // The beginning, in the calling thread. True: it was all, or it was stopped.
  bool walkAlone(PieceWalk& walk) {
    unsigned long nodes = 0;
    while (!queue_.empty()) {
      walk.start(queue_.front());
      queue_.pop_front();
      while (true) {
        const auto pause = walk.goOn();
        nodes += count(walk);
        if (pause == PieceWalk::Pause::END) break;
        stopped_ = stopped_ || pause == PieceWalk::Pause::STOP || control_.isOver();
        // What is slow is kept too; a trial ends after so many candidates whatever the clock says.
        const bool isSmall = trial_ > 0 ? nodes < trial_ : nodes < SMALL_TREE && !control_.isKeepDue();
        if (!stopped_ && isSmall) continue;
        stopped_ = stopped_ || trial_ > 0;
        share_ += walk.share();
        queue_.push_front(walk.rest());
        return stopped_;
      }
    }
    return true;
  }

  unsigned long count(PieceWalk& walk) {
    const unsigned long nodes = walk.takeNodes();
    control_.nodes += nodes;
    return nodes;
  }

  // Of one thread: pieces until there are none and nobody has any that could be shared.
  void work(PieceWalk& walk) {
    try {
      while (take(walk)) walkPiece(walk);
    } catch (...) {
      fail();
    }
  }

  // Whoever has caught something: all others end, and the first failure is thrown on.
  void fail() {
    const std::lock_guard lock(mutex_);
    if (!failure_) failure_ = std::current_exception();
    stopped_ = true;
    changed_.notify_all();
  }

  // False: the work is done, or stopped.
  bool take(PieceWalk& walk) {
    std::unique_lock lock(mutex_);
    ++idle_;
    changed_.notify_all();
    changed_.wait(lock, [this] { return stopped_ || (!queue_.empty() && !pausing_) || isDone(); });
    --idle_;
    if (stopped_ || queue_.empty()) return false;
    walk.start(queue_.front());
    queue_.pop_front();
    ++busy_;
    return true;
  }

  bool isDone() const { return queue_.empty() && busy_ == 0; }

  void walkPiece(PieceWalk& walk) {
    while (true) {
      const auto pause = walk.goOn();
      count(walk);
      if (pause != PieceWalk::Pause::END && pause != PieceWalk::Pause::STOP && !control_.isOver() &&
          !pausing_ && !wanted())
        continue;
      std::unique_lock lock(mutex_);
      if (pause == PieceWalk::Pause::END) {
        --busy_;
        changed_.notify_all();
        return;
      }
      if (pause == PieceWalk::Pause::STOP || control_.isOver()) stopped_ = true;
      if (stopped_) return leave(walk);
      if (pausing_) rest(walk, lock);
      if (stopped_) return leave(walk);
      if (Piece other; wanted() && queue_.empty() && walk.split(other)) {
        queue_.push_back(std::move(other));
        changed_.notify_all();
      }
    }
  }

  bool wanted() const { return idle_ > 0; }

  // What was not walked through goes back.
  void leave(PieceWalk& walk) {
    share_ += walk.share();
    queue_.push_back(walk.rest());
    --busy_;
    changed_.notify_all();
  }

  // Stands still until the frontier has been told. The next pause may have begun when this thread wakes up:
  // it waits for the end of this one.
  void rest(PieceWalk& walk, std::unique_lock<std::mutex>& lock) {
    resting_.push_back(&walk);
    changed_.notify_all();
    changed_.wait(lock, [this, before = pauses_] { return stopped_ || pauses_ != before; });
  }

  // The calling thread keeps the time.
  void coordinate() {
    constexpr auto BETWEEN_SHARES = std::chrono::seconds(1);
    auto nextShare = Clock::now() + BETWEEN_SHARES;
    std::unique_lock lock(mutex_);
    while (!stopped_ && !isDone()) {
      changed_.wait_until(lock, std::min(nextShare, control_.nextKeep()));
      const bool keep = control_.isKeepDue();
      if (stopped_ || isDone() || (!keep && Clock::now() < nextShare)) continue;
      pauseFor(lock, keep);
      nextShare = Clock::now() + BETWEEN_SHARES;
    }
  }

  // All walks stand still at their next look.
  void pauseFor(std::unique_lock<std::mutex>& lock, bool keep) {
    pausing_ = true;
    changed_.wait(lock, [this] { return stopped_ || resting_.size() == busy_; });
    // All may have come to their ends meanwhile, and a frontier without pieces is the whole tree.
    if (!stopped_ && !isDone()) {
      Frontier frontier;
      frontier.share = 0;
      // Pieces that nobody has begun have their share in it only then.
      for (const PieceWalk* walk : resting_) frontier.share += walk->share();
      control_.done = std::max(0.0, 1 - frontier.share);
      if (keep) {
        frontier.pieces.assign(queue_.begin(), queue_.end());
        for (const PieceWalk* walk : resting_) frontier.pieces.push_back(walk->rest());
        control_.keep(frontier);
        control_.lastKeep = Clock::now();
      }
    }
    resting_.clear();
    pausing_ = false;
    ++pauses_;
    changed_.notify_all();
  }

  // Whether all was walked through.
  bool finish() {
    if (queue_.empty() && !stopped_) {
      control_.done = 1;
      return true;
    }
    control_.left = {{queue_.begin(), queue_.end()}, share_};
    return false;
  }

  const std::function<std::unique_ptr<PieceWalk>()>& make_;
  SearchControl& control_;
  unsigned long trial_;
  std::vector<std::unique_ptr<PieceWalk>> workers_;
  std::mutex mutex_;
  std::condition_variable changed_;
  std::deque<Piece> queue_;
  // Threads that have a piece, that wait for one, and whose walks stand still.
  std::size_t busy_ = 0;
  std::atomic<std::size_t> idle_ = 0;
  std::vector<PieceWalk*> resting_;
  std::atomic<bool> pausing_ = false;
  // That have ended.
  unsigned long pauses_ = 0;
  std::atomic<bool> stopped_ = false;
  double share_ = 0;
  std::exception_ptr failure_;
};

}  // namespace

bool walkThrough(const std::function<std::unique_ptr<PieceWalk>()>& make, std::vector<Piece> pieces,
                 SearchControl& control, unsigned long trial) {
  return Crew(make, std::move(pieces), control, trial).run();
}

}  // namespace latbox::complete
