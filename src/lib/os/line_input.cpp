#include "lib/os/line_input.h"

#include <poll.h>
#include <unistd.h>

#include <cerrno>

#include "lib/os/signals.h"

namespace latbox {
namespace {

// A descriptor that can't be waited for counts as ready: the read tells what is wrong with it.
void waitForInput(int descriptor) {
  pollfd request{descriptor, POLLIN, 0};
  const TerminationWindow window;
  while (poll(&request, 1, -1) < 0 && errno == EINTR) {
  }
}

}  // namespace

bool LineInput::next(std::string& line) {
  while (!takeLine(line)) {
    if (fill()) continue;
    if (pending_.empty() || overlong_) return false;
    line.swap(pending_);
    pending_.clear();
    searched_ = 0;
    return true;
  }
  return true;
}

// False at the end of the input.
bool LineInput::fill() {
  char buffer[4096];
  for (;;) {
    waitForInput(descriptor_);
    const ssize_t count = read(descriptor_, buffer, sizeof buffer);
    if (count > 0) {
      pending_.append(buffer, static_cast<std::size_t>(count));
      return true;
    }
    if (count == 0 || (errno != EINTR && errno != EAGAIN)) return false;
  }
}

bool LineInput::takeLine(std::string& line) {
  for (;;) {
    const std::size_t end = pending_.find('\n', searched_);
    if (end == std::string::npos) {
      searched_ = pending_.size();
      if (searched_ <= MAX_LENGTH) return false;
      overlong_ = true;
      pending_.clear();
      searched_ = 0;
      return false;
    }
    const bool whole = !overlong_ && end <= MAX_LENGTH;
    if (whole) line.assign(pending_, 0, end);
    pending_.erase(0, end + 1);
    searched_ = 0;
    overlong_ = false;
    if (whole) return true;
  }
}

}  // namespace latbox
