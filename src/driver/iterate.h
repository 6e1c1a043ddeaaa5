// The iterations of a run.
#pragma once

#include "driver/ylattice.h"

namespace latbox {

// Iterates until another input is asked for or the run state is "stopped" at the top of an iteration. Each
// step runs on the ladder. RestartException and the end conditions leave through it.
void iterate(YLattice<dbl_t>& y);

}  // namespace latbox
