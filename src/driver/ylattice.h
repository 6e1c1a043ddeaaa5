// The pair of precisions, and the pattern by which a step runs in one of them and is repeated in the other.
#pragma once

#include <atomic>

#include "lattice/lattice.h"
#include "lib/exceptions.h"
#include "lib/progress.h"
#include "numbers/qq.h"
#include "params/statistics.h"

namespace latbox {

// One object for the process, on the stack of main. Shared by all threads without a lock of its own.
template <class D>
class YLattice {
 public:
  Lattice<D, D> standard;        // live while extendedActive is false
  Lattice<D, D> standardBackup;  // copy of `standard` before each step in standard precision
  Lattice<QQ, D> extended;       // live while extendedActive is true; receives every .opt file
  std::atomic<bool> extendedActive{false};

  YLattice() = default;
  YLattice(const YLattice&) = delete;
  YLattice& operator=(const YLattice&) = delete;
  virtual ~YLattice() = default;

  // Calls f with the live lattice; f is generic over the number type and returns the same type for both.
  template <class Function>
  decltype(auto) live(Function&& f) {
    return extendedActive ? f(extended) : f(standard);
  }
  // Of the live side.
  long verb() {
    return live([](auto& lattice) { return lattice.verb(); });
  }
  Statistics& statistics() { return extendedActive ? statisticsExtended() : statisticsStandard(); }
};

// To the exact side, from `standard`, unless it is live already. Prints "Switching to extended precision" at
// verb above 1. Throws PrecisionException with "Precision lost during conversion".
void switchToExtended(YLattice<dbl_t>& y);

// To the fast side, unless it is live already. Throws PrecisionException with "Precision lost during
// conversion" where a value does not convert and come back; extended stays live then. Prints "Using standard
// precision".
void useStandardPrecision(YLattice<dbl_t>& y);

// As useStandardPrecision, the exception swallowed: the run stays in extended precision.
void tryStandardPrecision(YLattice<dbl_t>& y);

// Puts `standard` back to its copy. What the step found until then stays among the stars: it has been shown
// and written, the step in exact arithmetic need not find it again, and the file follows the stars.
void restoreStandard(YLattice<dbl_t>& y);

// The ladder around a step. In standard precision a whole copy is taken first, and a PrecisionException
// restores it, converts it and repeats the step in exact arithmetic; after every extended step the way back
// is tried. RestartException and all others pass. Statistics, random draws and files are not rolled back.
// What the console writes stays, too: parameters and mainVars are not restored from the copy, since a command
// that arrived while the step ran would be lost.
template <class Step>
void oneStep(YLattice<dbl_t>& y, Step&& step) {
  if (!y.extendedActive) {
    const int depth = progressDepth();
    y.standardBackup = y.standard;
    try {
      step(y.standard);
      return;
    } catch (const PrecisionException&) {
      restoreStandard(y);
    }
    switchToExtended(y);
    setProgressDepth(depth);
  }
  step(y.extended);
  tryStandardPrecision(y);
}

}  // namespace latbox
