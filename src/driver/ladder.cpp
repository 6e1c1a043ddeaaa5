// The two conversions between the precisions.
#include "driver/ylattice.h"

namespace latbox {

// The flag is set last: an exception on the way leaves standard precision live, and the half-written other
// side is overwritten by the next attempt.
void switchToExtended(YLattice<dbl_t>& y) {
  if (y.extendedActive) return;
  progressLine(y.standard.verb() > 1, "Switching to extended precision");
  y.extended.convertFrom(y.standard);
  statisticsExtended() = statisticsStandard();
  y.extendedActive = true;
}

void useStandardPrecision(YLattice<dbl_t>& y) {
  if (!y.extendedActive) return;
  y.standard.convertFrom(y.extended);
  statisticsStandard() = statisticsExtended();
  y.extendedActive = false;
  progressLine(y.standard.verb() > 1, "Using standard precision");
}

void restoreStandard(YLattice<dbl_t>& y) {
  const ConversionArray<Star<dbl_t>> found = y.standard.program.stars;
  y.standard.copyFrom(y.standardBackup, true);
  if (found.MN > y.standard.program.stars.MN) y.standard.program.stars = found;
}

void tryStandardPrecision(YLattice<dbl_t>& y) {
  try {
    useStandardPrecision(y);
  } catch (const PrecisionException&) {
    // Some value of the state needs the exact type still; the next step tries again.
  }
}

}  // namespace latbox
