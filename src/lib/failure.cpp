#include "lib/failure.h"

#include <atomic>
#include <cstdlib>
#include <iostream>

#include "lib/os/process.h"
#include "lib/progress.h"

namespace latbox {

namespace {

// exit() must not run twice. A failure while another thread ends the process waits for that end; one inside a
// static destructor has nobody to wait for.
void becomeTheOneThatEnds() {
  static constinit std::atomic<bool> ending{false};
  static thread_local bool mine = false;
  if (mine) std::_Exit(1);
  if (ending.exchange(true)) waitForTheEnd();
  mine = true;
}

}  // namespace

void fail(const std::string& message) {
  becomeTheOneThatEnds();
  // The last line end comes from the trace, so that the level that was open counts as finished.
  std::cerr << "\n*** FAIL: " << message << progressBreak() << std::flush;
  std::exit(1);
}

void warn(const std::string& message) {
  std::cerr << "*** " << message << '\n' << std::flush;
}

}  // namespace latbox
