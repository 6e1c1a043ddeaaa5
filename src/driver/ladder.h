// The two conversions between the precisions, and the step that is taken back and repeated exactly.
#pragma once

#include <vector>

#include "driver/ylattice.h"
#include "lib/exceptions.h"
#include "lib/progress.h"

namespace latbox {

// To the exact side, from `standard`, unless it is live already. Prints "Switching to extended precision" at
// verb above 1.
// Throws: PrecisionException with "Precision lost during conversion".
void switchToExtended(YLattice<dbl_t>& y);

// To the fast side, unless it is live already. Prints "Using standard precision".
// Throws: PrecisionException with "Precision lost during conversion" where a value does not convert and come
// back; extended stays live then.
void useStandardPrecision(YLattice<dbl_t>& y);

// As useStandardPrecision, the exception swallowed: the run stays in extended precision.
void tryStandardPrecision(YLattice<dbl_t>& y);

// A step in standard precision that may be taken back.
//
// takeBack puts the lattice and the counts of finds back to what they were; parameters and mainVars stay, for
// a command that arrived while the step ran would be lost, and so do all other statistics, the random draws
// and the files. What the step had found waits in `extended.search.pending`, and nothing is written or told
// until settleFinds has had it judged: so the file, the report and the lattice tell the same at every moment,
// and nothing that was found is lost.
class StandardStep {
 public:
  explicit StandardStep(YLattice<dbl_t>& y);  // copies the lattice
  void takeBack();
  // Behind takeBack, where the exact side can't be reached: the finds are judged in standard precision, which
  // stays live.
  void settleInStandard();

 private:
  YLattice<dbl_t>& y_;
  FindCounts before_;
  std::vector<Star<dbl_t>> finds_;
};

// The ladder around a step. In standard precision a whole copy is taken first, and a PrecisionException takes
// the step back, converts the lattice and repeats the step in exact arithmetic; after every extended step the
// way back is tried.
// Throws: RestartException, and whatever else comes out of the step.
template <class Step>
void oneStep(YLattice<dbl_t>& y, Step&& step) {
  if (!y.extendedActive) {
    const int depth = progressDepth();
    StandardStep standard(y);
    try {
      step(y.standard);
      return;
    } catch (const PrecisionException&) {
      standard.takeBack();
    }
    switchToExtended(y);
    setProgressDepth(depth);
  }
  step(y.extended);
  settleFinds(y.extended);
  tryStandardPrecision(y);
}

}  // namespace latbox
