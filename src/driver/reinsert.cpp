#include "driver/reinsert.h"

namespace latbox {
namespace {

// False when precision was lost; the standard lattice is as before then.
bool reinsertStandard(YLattice<dbl_t>& y) {
  y.standardBackup = y.standard;
  try {
    y.standard.reinsertBest();
    return true;
  } catch (const PrecisionException&) {
    restoreStandard(y);
    return false;
  }
}

void reinsertExtended(YLattice<dbl_t>& y) {
  try {
    y.extended.reinsertBest();
  } catch (const PrecisionException&) {
    // Without a copy to go back to, the basis may have changed half a step: still a basis, but nothing that
    // was computed from it holds.
    y.extended.coordSolver.dropCurrent();
    y.extended.clearStatus();
    throw;
  }
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
