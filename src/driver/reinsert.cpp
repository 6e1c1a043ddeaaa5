#include "driver/reinsert.h"

#include "driver/ladder.h"
#include "heuristics/reinsertion.h"

namespace latbox {
namespace {

// False when precision was lost; the standard lattice is as before then.
bool reinsertStandard(YLattice<dbl_t>& y) {
  StandardStep step(y);
  try {
    reinsertBest(y.standard);
    return true;
  } catch (const PrecisionException&) {
    step.takeBack();
    return false;
  }
}

void reinsertExtended(YLattice<dbl_t>& y) {
  try {
    reinsertBest(y.extended);
  } catch (const PrecisionException&) {
    // Without a copy to go back to, the basis may have changed half a step: still a basis, but nothing that
    // was computed from it holds.
    y.extended.forgetDerived();
    settleFinds(y.extended);
    throw;
  }
  settleFinds(y.extended);
}

}  // namespace

void reinsert(YLattice<dbl_t>& y) {
  const int depth = progressDepth();
  if (!y.extendedActive) {
    if (reinsertStandard(y)) return;
    setProgressDepth(depth);
    switchToExtended(y);
  }
  reinsertExtended(y);
  useStandardPrecision(y);
}

}  // namespace latbox
