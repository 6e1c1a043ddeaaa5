// SIGINT and SIGTERM: the final report and the normal end of every run.
#pragma once

#include "driver/ylattice.h"

namespace latbox {

// Prints the final report and ends the process with status 0, once per process: a second call returns at
// once. Safe in the handler of the termination signals (lib/os/signals.h). It prints what the solver has
// published, and allocates nothing unless there are solutions that could not be written before.
void signalReport(YLattice<dbl_t>& y, int signal);

// Both signals lead to signalReport for as long as the object lives; then the previous handlers are back, in
// the reverse order.
// Requires: one at a time.
class SignalHandlers {
 public:
  explicit SignalHandlers(YLattice<dbl_t>& y);
  ~SignalHandlers();
  SignalHandlers(const SignalHandlers&) = delete;
  SignalHandlers& operator=(const SignalHandlers&) = delete;

 private:
  using Handler = void (*)(int);
  Handler previousInt_;
  Handler previousTerm_;
};

}  // namespace latbox
