// The end of a run by `rtime`.
#pragma once

#include "driver/ylattice.h"

namespace latbox {

// The body of the timer thread: waits until the seconds of `rtime`, counted from the start of the process,
// are over, then ends the run. A changed `rtime` is seen within a second.
void timerBody(YLattice<dbl_t>& y);

}  // namespace latbox
