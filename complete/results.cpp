#include "complete/results.h"

#include <unistd.h>

namespace latbox::complete {

Results::Results(const Program& program, std::string path, std::string parameters)
    : program_(program), path_(std::move(path)), parameters_(std::move(parameters)) {}

void Results::open() {
  if (!path_.empty() && !file_) file_.emplace(path_);
}

void Results::begin() {
  const std::lock_guard lock(mutex_);
  open();
}

std::string Results::line(const Point& x, const Norms& norms) const {
  return lineOf(program_, x, norms, static_cast<long>(seconds()), parameters_);
}

// The verdict is out and says how many points there are: one more would make it untrue.
void Results::waitForEnd(std::unique_lock<std::mutex>& lock) const {
  if (!closed_) return;
  lock.unlock();
  while (true) pause();
}

void Results::list(const Point& x, const Norms& norms) {
  std::unique_lock lock(mutex_);
  waitForEnd(lock);
  if (file_) file_->append(line(x, norms));
  ++count_;
  if (!best_ || norms < *best_) best_ = norms;
}

void Results::replace(const Point& x, const Norms& norms) {
  std::unique_lock lock(mutex_);
  waitForEnd(lock);
  if (file_) file_->replace(line(x, norms));
  count_ = 1;
  best_ = norms;
}

unsigned long Results::count() const {
  const std::lock_guard lock(mutex_);
  return count_;
}

std::optional<Norms> Results::best() const {
  const std::lock_guard lock(mutex_);
  return best_;
}

double Results::seconds() const {
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start_).count();
}

bool Results::close() {
  const std::lock_guard lock(mutex_);
  if (closed_) return false;
  open();
  if (file_) file_->flush();
  closed_ = true;
  return true;
}

}  // namespace latbox::complete
