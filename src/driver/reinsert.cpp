#include "driver/reinsert.h"

#include "driver/ladder.h"
#include "heuristics/reinsertion.h"

namespace latbox {
namespace {

// False when precision was lost: the exact side is live then, and the standard lattice as before.
bool reinsertStandard(YLattice<dbl_t>& y) {
  StandardStep step(y);
  const int depth = progressDepth();
  try {
    reinsertBest(y.standard);
    return true;
  } catch (const PrecisionException&) {
    step.takeBack();
  }
  setProgressDepth(depth);
  try {
    switchToExtended(y);
  } catch (const PrecisionException&) {
    // The caller goes on without the re-insertion, in standard precision.
    step.settleInStandard();
    throw;
  }
  return false;
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
  if (!y.extendedActive && reinsertStandard(y)) return;
  reinsertExtended(y);
  useStandardPrecision(y);
}

}  // namespace latbox
