// SIGINT and SIGTERM: who may receive them, and what they wait for.
//
// The two are blocked before any thread starts and let in only on the thread that waits for input or joins,
// and around a raise. So their handler never interrupts the allocator or a computation, and may print. What
// may not be cut in two, the writing of files, stands in a SignalHold, which the handler waits for.
#pragma once

namespace latbox {

// Installs `handler` for SIGINT and SIGTERM.
void installTerminationHandler(void (*handler)(int));
// Restores the default action, so that a second signal ends the process at once, or ignores them.
void ignoreTerminationSignals();

// For the calling thread, and for those that it starts.
void blockTermination();
void unblockTermination();

// Lets the two signals in on the calling thread while it lives; then the mask is as before.
class TerminationWindow {
 public:
  TerminationWindow();
  ~TerminationWindow();
  TerminationWindow(const TerminationWindow&) = delete;
  TerminationWindow& operator=(const TerminationWindow&) = delete;

 private:
  bool wasBlocked_[2];
};

// Raises `signal` on the calling thread with the two signals let in for the time of the call.
void raiseTermination(int signal);

// A section that the end of the process waits for: files are written in it. Nests within one thread. The two
// signals are blocked on the thread meanwhile. Once closeSignalHolds has been called by another thread, a
// thread that enters waits for the end of the process.
class SignalHold {
 public:
  SignalHold();
  ~SignalHold();
  SignalHold(const SignalHold&) = delete;
  SignalHold& operator=(const SignalHold&) = delete;

 private:
  bool wasBlocked_[2];
};

// For the handler: waits until no other thread is within a SignalHold and keeps every other thread out from
// then on. Async-signal-safe. If the calling thread itself is within one, it does not wait. openSignalHolds
// takes it back (tests).
void closeSignalHolds();
void openSignalHolds();

}  // namespace latbox
