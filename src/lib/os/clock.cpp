#include "lib/os/clock.h"

#include <unistd.h>

#include <atomic>
#include <ctime>

namespace latbox {
namespace {

constinit std::atomic<long (*)()> standIn{nullptr};
constinit std::atomic<long> latest{0};

long secondsSinceBoot() {
  timespec time = {};
  clock_gettime(CLOCK_BOOTTIME, &time);
  return static_cast<long>(time.tv_sec);
}

// The system's time is asked for once. A limit that followed it would come early or never when it is set.
long steadySeconds() {
  static const long boot = static_cast<long>(::time(nullptr)) - secondsSinceBoot();
  return boot + secondsSinceBoot();
}

}  // namespace

long now() {
  long (*const clock)() = standIn.load(std::memory_order_relaxed);
  const long time = clock != nullptr ? clock() : steadySeconds();
  long before = latest.load(std::memory_order_relaxed);
  while (before < time && !latest.compare_exchange_weak(before, time, std::memory_order_relaxed)) {
  }
  return before < time ? time : before;
}

void setClock(long (*clock)()) {
  standIn.store(clock);
  latest.store(0);
}

void sleepSeconds(unsigned seconds) {
  ::sleep(seconds);
}

}  // namespace latbox
