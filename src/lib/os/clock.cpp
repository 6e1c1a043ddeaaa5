#include "lib/os/clock.h"

#include <unistd.h>

#include <atomic>
#include <ctime>

namespace latbox {
namespace {

constinit std::atomic<long (*)()> standIn{nullptr};

}  // namespace

long now() {
  long (*const clock)() = standIn.load(std::memory_order_relaxed);
  return clock != nullptr ? clock() : static_cast<long>(::time(nullptr));
}

void setClock(long (*clock)()) {
  standIn.store(clock);
}

void sleepSeconds(unsigned seconds) {
  ::sleep(seconds);
}

}  // namespace latbox
