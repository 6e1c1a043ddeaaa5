#include "complete/tree/parts.h"

#include <condition_variable>
#include <exception>
#include <mutex>
#include <set>
#include <thread>

namespace latbox::complete {
namespace {

class PartCrew {
 public:
  PartCrew(const Parts& parts, const SearchControl& control)
      : parts_(parts), control_(control), next_(parts.begin) {}

  bool run() {
    std::vector<std::thread> threads;
    try {
      for (unsigned i = 0; i < std::max(1u, control_.threads); ++i) {
        threads.emplace_back([this] { work(); });
        ++begun_;
      }
      tellWhileWorking();
    } catch (...) {
      fail();
    }
    for (std::thread& thread : threads) thread.join();
    if (failure_) std::rethrow_exception(failure_);
    parts_.tell(done());
    return done() >= parts_.end;
  }

 private:
  // Of one thread.
  void work() {
    try {
      while (const auto part = take()) parts_.make(*part) ? giveBack(*part) : breakOff();
    } catch (...) {
      fail();
    }
    const std::lock_guard lock(mutex_);
    ++ended_;
    changed_.notify_all();
  }

  std::optional<unsigned long> take() {
    const std::lock_guard lock(mutex_);
    if (isOver_ || control_.stop || next_ >= parts_.end) return std::nullopt;
    open_.insert(next_);
    return next_++;
  }

  void giveBack(unsigned long part) {
    const std::lock_guard lock(mutex_);
    open_.erase(part);
  }

  // The part stays open.
  void breakOff() {
    const std::lock_guard lock(mutex_);
    isOver_ = true;
  }

  // The first failure is thrown on when all threads have ended.
  void fail() {
    const std::lock_guard lock(mutex_);
    if (!failure_) failure_ = std::current_exception();
    isOver_ = true;
  }

  // All parts below this number are.
  unsigned long done() {
    const std::lock_guard lock(mutex_);
    return open_.empty() ? next_ : *open_.begin();
  }

  void tellWhileWorking() {
    constexpr auto BETWEEN = std::chrono::seconds(1);
    std::unique_lock lock(mutex_);
    while (!changed_.wait_for(lock, BETWEEN, [this] { return ended_ == begun_; })) {
      lock.unlock();
      parts_.tell(done());
      lock.lock();
    }
  }

  const Parts& parts_;
  const SearchControl& control_;
  std::mutex mutex_;
  std::condition_variable changed_;
  unsigned long next_;
  // That were taken, and are not done.
  std::set<unsigned long> open_;
  bool isOver_ = false;
  // Threads.
  std::size_t begun_ = 0;
  std::size_t ended_ = 0;
  std::exception_ptr failure_;
};

}  // namespace

bool goThrough(const Parts& parts, const SearchControl& control) {
  return PartCrew(parts, control).run();
}

}  // namespace latbox::complete
