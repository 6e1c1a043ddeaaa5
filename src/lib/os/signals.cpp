#include "lib/os/signals.h"

#include <pthread.h>
#include <string.h>
#include <time.h>

#include <atomic>

namespace latbox {
namespace {

// Who is within a section: the address of the thread's own mark, null for nobody. An atomic and a short sleep
// instead of a semaphore, since only these are safe in a handler.
constinit std::atomic<const char*> holder{nullptr};
int depth = 0;  // of the holder's nesting; read and written by the holder alone
thread_local char threadMark = 0;

void enterSection() {
  const char* const self = &threadMark;
  if (holder.load(std::memory_order_acquire) == self) {
    ++depth;
    return;
  }
  const timespec pause = {0, 200'000};
  for (const char* nobody = nullptr; !holder.compare_exchange_weak(nobody, self, std::memory_order_acquire);
       nobody = nullptr)
    nanosleep(&pause, nullptr);
  depth = 1;
}

void leaveSection() {
  if (--depth == 0) holder.store(nullptr, std::memory_order_release);
}

sigset_t terminationSignals() {
  sigset_t set;
  sigemptyset(&set);
  sigaddset(&set, SIGINT);
  sigaddset(&set, SIGTERM);
  return set;
}

void changeMask(int how, sigset_t* before) {
  const sigset_t set = terminationSignals();
  pthread_sigmask(how, &set, before);
}

}  // namespace

void blockTermination() {
  changeMask(SIG_BLOCK, nullptr);
}

const char* keptSignalName(int signal) {
  return ::strdup(::strsignal(signal));
}

TerminationMask::TerminationMask(int how) {
  changeMask(how, &before_);
}
TerminationMask::~TerminationMask() {
  pthread_sigmask(SIG_SETMASK, &before_, nullptr);
}

void raiseTermination(int signal) {
  const TerminationWindow window;
  std::raise(signal);
}

SignalHold::SignalHold() : TerminationMask(SIG_BLOCK) {
  enterSection();
}
SignalHold::~SignalHold() {
  leaveSection();
}

void closeSignalHolds() {
  enterSection();
}

}  // namespace latbox
