#include "driver/timer.h"

#include "lib/os/clock.h"

namespace latbox {
namespace {

bool timeIsUp(YLattice<dbl_t>& y) {
  const long elapsed = now() - y.statistics().startTime.get();
  return elapsed >= y.live([](auto& lattice) { return lattice.params.rtime.get(); });
}

}  // namespace

// No copy of the lattice is taken before the end, as a step would: it would race with the solver, and nobody
// could see it.
void timerBody(YLattice<dbl_t>& y) {
  while (!timeIsUp(y)) sleepSeconds(1);
  y.live([](auto& lattice) { terminateRun(lattice); });
}

}  // namespace latbox
