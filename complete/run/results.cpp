#include "complete/run/results.h"

#include <unistd.h>

#include <filesystem>

namespace latbox::complete {

Results::Results(const Program& program, std::string path, std::string parameters,
                 std::function<void()> clear)
    : program_(program),
      path_(std::move(path)),
      parameters_(std::move(parameters)),
      clear_(std::move(clear)) {}

void Results::open() {
  if (begun_) return;
  begun_ = true;
  if (clear_) clear_();
  if (!path_.empty()) file_.emplace(path_);
}

void Results::begin() {
  const std::lock_guard lock(mutex_);
  open();
}

std::string Results::line(const Point& x, const Norms& norms) const {
  return lineOf(program_, x, norms, static_cast<long>(allSeconds()), parameters_);
}

// The verdict is out and says how many points there are: one more would make it untrue.
void Results::waitForEnd(std::unique_lock<std::mutex>& lock) const {
  if (!closed_) return;
  lock.unlock();
  while (true) pause();
}

void Results::list(const Point& x, const Norms& norms) {
  const std::string text = path_.empty() ? "" : line(x, norms);
  std::unique_lock lock(mutex_);
  waitForEnd(lock);
  if (known_) return;
  if (file_) file_->append(text);
  ++count_;
  if (!best_ || norms < *best_) best_ = norms;
}

void Results::listLines(const std::string& lines, unsigned long points) {
  std::unique_lock lock(mutex_);
  waitForEnd(lock);
  if (known_) return;
  if (file_) file_->append(lines);
  count_ += points;
}

void Results::add(unsigned long points) {
  const std::lock_guard lock(mutex_);
  count_ += points;
}

void Results::replace(const Point& x, const Norms& norms) {
  const std::string text = path_.empty() ? "" : line(x, norms);
  std::unique_lock lock(mutex_);
  waitForEnd(lock);
  best_ = norms;
  if (known_) {
    replaced_ = text;
    return;
  }
  if (file_) file_->replace(text);
  count_ = 1;
}

// A single point takes the place of another, so that the file of a run that was killed may be one that came
// later, of any length: it stays until the one that is known is written over it.
void Results::resume(const FileState& state, double seconds, bool single) {
  const std::lock_guard lock(mutex_);
  begun_ = true;
  single_ = single && state.count <= 1;
  if (!path_.empty()) {
    const bool stays = single_ && state.count == 1;
    const unsigned long bytes = stays ? std::filesystem::file_size(path_) : state.bytes;
    file_.emplace(path_, bytes, stays ? digestOfFile(path_, bytes).value_or(Digest()) : state.digest);
  }
  count_ = state.count;
  before_ = seconds;
  known_ = true;
}

void Results::goLive() {
  const std::lock_guard lock(mutex_);
  if (!known_) return;
  known_ = false;
  if (single_) takeReplaced();
}

// The best point that is known already, alone.
void Results::takeReplaced() {
  count_ = replaced_.empty() ? 0 : 1;
  if (!file_) return;
  if (replaced_.empty())
    file_.emplace(path_, 0, Digest());
  else
    file_->replace(replaced_);
}

void Results::rewind(const FileState& state) {
  const std::lock_guard lock(mutex_);
  if (state.count <= 1) return takeReplaced();
  count_ = state.count;
  if (file_) file_.emplace(path_, state.bytes, state.digest);
}

// A disk may take its time, in which others may ask how far this is.
FileState Results::state(bool surely) {
  FileState state;
  {
    const std::lock_guard lock(mutex_);
    if (!file_) return {count_, 0, {}};
    file_->flush();
    state = {count_, file_->bytes(), file_->digest()};
  }
  if (surely) synchronise(path_);
  return state;
}

void Results::flush() {
  const std::lock_guard lock(mutex_);
  if (file_) file_->flush();
}

unsigned long Results::count() const {
  const std::lock_guard lock(mutex_);
  return count_;
}

void Results::prove(const Rational& least) {
  const std::lock_guard lock(mutex_);
  least_ = least;
}

std::optional<Rational> Results::least() const {
  const std::lock_guard lock(mutex_);
  return least_;
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
