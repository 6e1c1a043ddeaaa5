#include "program/trivial.h"

#include "lib/progress.h"
#include "lib/scope_value.h"
#include "numbers/number.h"
#include "program/generation.h"

namespace latbox {
namespace {

// A missing bound takes the point nearest to zero on the side that is there.
template <class T>
void makeFinite(T& low, T& high) {
  if (isInfinite(low) && isInfinite(high)) {
    low = high = T(0);
  } else if (isInfinite(low)) {
    low = high < T(0) ? high : T(0);
  } else if (isInfinite(high)) {
    high = low > T(0) ? low : T(0);
  }
}

// A fixed variable left the program before its digits were looked at, and they may be anything.
template <class T>
bool isFixed(const Tessik<T>& program, long i) {
  return program.fx[i] == FreedomDegree::bounded && program.lx[i] == program.rx[i];
}

// Half way between the two, on the grid of the variable's digits.
template <class T>
T centre(const T& low, const T& high, const T& digits) {
  const T scale = digits > T(0) ? powerOfTen<T>(static_cast<long>(toDouble(digits))) : T(1);
  const T sum = low * scale + high * scale;
  return roundNearest(T(sum / T(2))) / scale;
}

}  // namespace

template <class T, class F>
void checkTrivialSolutions(Lattice<T, F>& l) {
  const ProgressScope level(l.verb() == 2, "Checking trivial solutions ...");
  Vector<T> a = l.program.lx, b = l.program.rx, m;
  m.resizeZero(a.MN);
  for (long i = 1; i <= a.MN; ++i) {
    makeFinite(a[i], b[i]);
    m[i] = isFixed(l.program, i) ? a[i] : centre(a[i], b[i], l.program.dx[i]);
  }
  unsigned results = 0;
  {
    // No candidate ends the run by itself.
    const ScopeValue<bool> unfinished(l.finishEnabled, false);
    const long added = l.program.prepared ? l.program.slackCount + l.program.deviationCount : 0;
    for (Vector<T>* x : {&a, &b, &m}) {
      Vector<T> v;
      x->resize(x->MN - added, false);
      l.opt2lat(*x, v, true);
      results |= l.checkSolution(v, true, NOW, false);
    }
  }
  // Stars that were read back may have moved a bound, too: the lattice must not be searched or saved behind
  // them.
  if (programAhead(l)) results |= CHECK_BOUND;
  if (l.events == nullptr) return;
  if (results & CHECK_LIMIT) {
    l.events->limitReached(l);
  } else if (results & CHECK_BOUND) {
    l.events->boundMoved(l);
  }
}

LATBOX_BOTH_TYPES(checkTrivialSolutions)

}  // namespace latbox
