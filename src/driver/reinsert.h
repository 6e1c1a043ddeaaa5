// Re-insertion on a ladder of its own.
#pragma once

#include "driver/ylattice.h"

namespace latbox {

// Runs reinsertBest on the live lattice; what loses precision in standard precision is undone and repeated
// exactly.
// Throws: PrecisionException where the exact side fails or the way back to standard precision does not
// succeed; extended precision is live then, with no cache or status word that could be stale. The caller puts
// the progress nesting back.
void reinsert(YLattice<dbl_t>& y);

}  // namespace latbox
