// SIGINT and SIGTERM: who may receive them, and what they wait for.
//
// The two are blocked before any thread starts and let in only on the thread that waits for input or joins,
// and around a raise. So their handler never interrupts the allocator or a computation, and may print. What
// may not be cut in two, the writing of files, stands in a SignalHold, which the handler waits for.
#pragma once

#include <csignal>

namespace latbox {

// For the calling thread, and for those that it starts.
void blockTermination();

// The system's name of the signal, in storage that is kept: strsignal may load a translation, and reuse its
// own. To be asked for before a handler needs it.
const char* keptSignalName(int signal);

// Keeps the two signals in or out on the calling thread while it lives; then the mask is as before.
class TerminationMask {
 public:
  TerminationMask(const TerminationMask&) = delete;
  TerminationMask& operator=(const TerminationMask&) = delete;

 protected:
  explicit TerminationMask(int how);
  ~TerminationMask();

 private:
  sigset_t before_;
};

// Lets the two signals in: around a wait for input or for the end of a thread.
class TerminationWindow : TerminationMask {
 public:
  TerminationWindow() : TerminationMask(SIG_UNBLOCK) {}
};

// Raises `signal` on the calling thread with the two signals let in for the time of the call; a raise in a
// blocked thread would stay pending for ever.
void raiseTermination(int signal);

// A section that the end of the process waits for: files are written in it, with the two signals blocked.
// Nests within one thread. Once another thread has called closeSignalHolds, a thread that enters waits for
// the end of the process.
class SignalHold : TerminationMask {
 public:
  SignalHold();
  ~SignalHold();
};

// For the handler: waits until no other thread is within a SignalHold and keeps every other thread out from
// then on. Async-signal-safe. Does not wait for the calling thread's own section.
void closeSignalHolds();

}  // namespace latbox
