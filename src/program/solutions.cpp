// The one road from search to results: each vector that reduction or a heuristic touches is judged here.
#include "driver/report.h"
#include "lattice/lattice.h"
#include "numbers/number.h"
#include "params/statistics.h"
#include "program/exact_product.h"
#include "program/file_items.h"
#include "program/results_version.h"

namespace latbox {
namespace {

// a > b. Standard precision carries multipliers such as 4/3 rounded: an excess that is zero by the tolerance
// must not push a corner out of the box, nor count as a better target.
inline bool exceeds(dbl_t a, dbl_t b) {
  return a > b && !isZero(a - b);
}
inline bool exceeds(const QQ& a, const QQ& b) {
  return a > b;
}

template <class T>
bool within(const T& low, const T& x, const T& high) {
  return !exceeds(low, x) && !exceeds(x, high);
}

template <class T, class F>
bool benchmarkRun(const Lattice<T, F>& l) {
  return isBenchmark(l.params.bench.get());
}

// Finds count outside a benchmark run, and unless kept vectors are coming back.
template <class T, class F>
bool findsCount(const Lattice<T, F>& l) {
  return !benchmarkRun(l) && !statisticsOf<T>().reinserting;
}

template <class T, class F>
long discoveryTime(const Lattice<T, F>& l, DiscoveryTime time) {
  return time.known ? time.seconds : stampNow<T>(l.params.bench.get());
}

}  // namespace

// The last coordinate alone rules most vectors out, before anything is copied: homogeneous ones and multiples
// are neither feasible nor near.
template <class T, class F>
bool Lattice<T, F>::isRuledOut(const Vector<T>& vec, bool scaled) const {
  if (isZero(T(abs(vec[dim]) - abs(scaled ? inhomScaled : inhomBase)))) return false;
  return lbnd[dim] == inhomBase && ubnd[dim] == inhomBase;
}

// Copies `vec` into candidate_, in unit coordinates and with the sign of inhomBase in the last one: a
// consistency check further down may rewrite the row of B that it came from. A zero there counts as positive.
template <class T, class F>
void Lattice<T, F>::takeCandidate(const Vector<T>& vec, bool scaled) {
  const bool negated = (vec[dim] < T(0)) != ((scaled ? inhomScaled : inhomBase) < T(0));
  if (scaled && !unweighted()) {
    unscaledVector(vec, candidate_);
  } else {
    candidate_ = vec;
  }
  if (!negated) return;
  for (long i = 1; i <= dim; ++i) candidate_.data[i] = T(0) - candidate_.data[i];
}

template <class T, class F>
bool Lattice<T, F>::isFeasible(const Vector<T>& w) const {
  if (!within(lbnd[dim], w[dim], ubnd[dim])) return false;
  const long variables = this->fx.MN;
  const long before = dim - 1 - variables;
  for (long i = 1; i <= variables; ++i) {
    const FreedomDegree freedom = this->fx.data[i];
    if (freedom == FreedomDegree::free) continue;
    const T& value = w.data[before + i];
    if (freedom != FreedomDegree::noLower && exceeds(lbnd.data[before + i], value)) return false;
    if (freedom != FreedomDegree::noUpper && exceeds(value, ubnd.data[before + i])) return false;
  }
  // The combined target bounds nothing.
  const long first = checkMode == 2 && generatedTu ? 2 : 1;
  for (long k = before; k >= first; --k)
    if (!within(lbnd.data[k], w.data[k], ubnd.data[k])) return false;
  return true;
}

// Whether the vector has been recorded in this lattice already: it took the membership test then.
template <class T, class F>
bool Lattice<T, F>::isKnown(const Vector<T>& w) const {
  if (sameVector<T>(bestSlack, w)) return true;
  for (long i = 1; i <= solutions.MN; ++i)
    if (sameVector<T>(solutions.data[i], w)) return true;
  return false;
}

template <class T, class F>
unsigned Lattice<T, F>::checkSolution(const Vector<T>& latVec, DiscoveryTime time, bool flag,
                                      Membership membership) {
  return checkSolution(latVec, false, time, flag, membership);
}

template <class T, class F>
unsigned Lattice<T, F>::checkSolution(const Vector<T>& vec, bool scaled, DiscoveryTime time, bool flag,
                                      Membership membership) {
  if (checkMode == 0) fail("checkSolution: You should set the check vectors!");
  if (vec.MN == 0) return 0;
  const bool collecting = params.pair.get() || params.sieve.get();
  if (membership == Membership::byConstruction && !collecting && isRuledOut(vec, scaled)) return 0;
  takeCandidate(vec, scaled);
  return checkCandidate(time, flag, membership);
}

template <class T, class F>
unsigned Lattice<T, F>::checkCandidate(DiscoveryTime time, bool flag, Membership membership) {
  const Vector<T>& w = candidate_;
  if (membership == Membership::unknown && !isMember(w)) return CHECK_FOREIGN;
  if (params.pair.get() || params.sieve.get()) collect(w, nullptr, nullptr, time);
  if (!isFeasible(w)) {
    offerInhomogeneous(w, time);
    return 0;
  }
  // What is recorded has always taken the real test.
  if (membership == Membership::byConstruction && !isKnown(w) && !isMember(w)) return CHECK_FOREIGN;
  HeuristicVector<T, F> h;
  if (checkMode == 2 && program.At.M > 0) {
    const unsigned judged = judgeVector(w, h, time, flag);
    if (judged & CHECK_BOUND) return recordCandidate(h, time, judged | CHECK_FEASIBLE | CHECK_LOOKED, true);
    if (!(judged & CHECK_LOOKED)) return judged | CHECK_FEASIBLE;
    return recordCandidate(h, time, judged | CHECK_FEASIBLE, false);
  }
  Vector<T> x;
  const bool changed = lat2opt(w, x, false) == 1 && updateBounds(x);
  const unsigned result = CHECK_FEASIBLE | (changed ? CHECK_BOUND : 0U);
  if (checkMode == 2) {
    h = w;
    return recordCandidate(h, time, result | CHECK_LOOKED, changed);
  }
  if (changed) restartHandling(false);
  return result;
}

// Records h if it is a solution, and writes what is new. The candidate's scratch is not looked at any more:
// the restart may have judged other vectors in it.
template <class T, class F>
unsigned Lattice<T, F>::recordCandidate(const HeuristicVector<T, F>& h, DiscoveryTime time, unsigned result,
                                        bool changed) {
  bool added = false;
  if (isSolution(h)) {
    added = addSolution(h, time);
    const long limit = params.sol.get();
    if (limit >= 1 && limit <= solutions.MN) {
      restartHandling(true);
      result |= CHECK_LIMIT;
    } else if (added) {
      result |= CHECK_NEW;
    }
  }
  if (changed) {
    restartHandling(false);
    return result;
  }
  if (this->writeEnabled) {
    writeSolFile(false);
    if (added) checkConsistency(false, false);
  }
  return result;
}

template <class T, class F>
unsigned Lattice<T, F>::judgeVector(const Vector<T>& w, HeuristicVector<T, F>& h, DiscoveryTime time,
                                    bool flag) {
  if (bestSlack.notEmpty() && sameVector<T>(bestSlack, w)) return CHECK_FEASIBLE;
  Vector<T> x;
  if (lat2opt(w, x, true) == 0) fail("is not within lattice1");
  const Vector<T> values = exactProduct(program.At, x);
  const auto norms = program.targetNorms(values, x);
  if (bestSlack.notEmpty() && exceeds(norms.left, bestSlack.targetNorm)) return CHECK_FEASIBLE;
  h = w;
  h.targetNorm = norms.left;
  h.slackNorm = norms.right;
  h.secondsUntilDiscovered = discoveryTime(*this, time);
  unsigned result = updateBounds(x) ? CHECK_BOUND : CHECK_LOOKED;
  if (!bestSlack.notEmpty() || exceeds(bestSlack.targetNorm, norms.left)) {
    if (findsCount(*this)) ++statisticsOf<T>().targetImprovements;
    h.combinedTarget = exactProduct(program.atu, x);
    bestSlack = h;
    program.setTargetBound(values, h.combinedTarget);
    ++resultsVersion();
    publishSummary(*this);
    result = CHECK_BOUND;
  }
  if (flag) {
    if (bestSlack.combinedTarget <= program.rtu())
      fail("This case should not happen between a backup / restore!");
    result = CHECK_LOOKED;
  }
  return result;
}

template <class T, class F>
bool Lattice<T, F>::updateBounds(const Vector<T>& x) {
  bool changed = false;
  for (long i = 1; i <= x.MN; ++i) {
    const FreedomDegree freedom = program.fx[i];
    T& low = program.lx[i];
    T& high = program.rx[i];
    const bool noLower = freedom == FreedomDegree::noLower || freedom == FreedomDegree::free;
    const bool noUpper = freedom == FreedomDegree::noUpper || freedom == FreedomDegree::free;
    if (noLower && (isInfinite(low) || exceeds(low, x[i]))) {
      low = x[i];
      changed = true;
    }
    if (noUpper && (isInfinite(high) || exceeds(x[i], high))) {
      high = x[i];
      changed = true;
    }
  }
  if (changed) program.boundTargetByVariables();
  return changed;
}

template <class T, class F>
bool Lattice<T, F>::isSolution(const HeuristicVector<T, F>& h) const {
  if (program.At.M == 0) return true;
  if (program.allTargetsFinite && isZero(h.slackNorm)) return true;
  const T slackLimit = params.snorm.get();
  const T targetLimit = params.tnorm.get();
  const T unset = -infinity<T>();
  const bool slackSet = slackLimit != unset;
  const bool targetSet = targetLimit != unset;
  if (slackSet && targetSet) return !exceeds(h.targetNorm, targetLimit) && !exceeds(h.slackNorm, slackLimit);
  if (!targetSet) return slackSet && !exceeds(h.slackNorm, slackLimit);
  return !exceeds(h.targetNorm, targetLimit);
}

template <class T, class F>
bool Lattice<T, F>::addSolution(const HeuristicVector<T, F>& h, DiscoveryTime time) {
  for (long i = 1; i <= solutions.MN; ++i)
    if (sameVector<T>(solutions.data[i], h)) return false;
  TargetVector<T> solution;
  solution = static_cast<const Vector<T>&>(h);
  solution.targetNorm = h.targetNorm;
  solution.slackNorm = h.slackNorm;
  solution.secondsUntilDiscovered = discoveryTime(*this, time);
  solutions.append(solution);
  ++resultsVersion();
  if (findsCount(*this)) ++statisticsOf<T>().solutionsFound;
  publishSummary(*this);
  if (params.gui.get()) {
    mainVars[MainMutexVariable::reserved6].set(std::to_string(solutions.MN));
    mainVars[MainMutexVariable::reserved7].set(starReport());
  }
  return true;
}

#define LATBOX_INSTANTIATE(T)                                                                            \
  template bool Lattice<T, dbl_t>::isRuledOut(const Vector<T>&, bool) const;                             \
  template void Lattice<T, dbl_t>::takeCandidate(const Vector<T>&, bool);                                \
  template bool Lattice<T, dbl_t>::isFeasible(const Vector<T>&) const;                                   \
  template bool Lattice<T, dbl_t>::isKnown(const Vector<T>&) const;                                      \
  template unsigned Lattice<T, dbl_t>::checkSolution(const Vector<T>&, DiscoveryTime, bool, Membership); \
  template unsigned Lattice<T, dbl_t>::checkSolution(const Vector<T>&, bool, DiscoveryTime, bool,        \
                                                     Membership);                                        \
  template unsigned Lattice<T, dbl_t>::checkCandidate(DiscoveryTime, bool, Membership);                  \
  template unsigned Lattice<T, dbl_t>::recordCandidate(const HeuristicVector<T, dbl_t>&, DiscoveryTime,  \
                                                       unsigned, bool);                                  \
  template unsigned Lattice<T, dbl_t>::judgeVector(const Vector<T>&, HeuristicVector<T, dbl_t>&,         \
                                                   DiscoveryTime, bool);                                 \
  template bool Lattice<T, dbl_t>::updateBounds(const Vector<T>&);                                       \
  template bool Lattice<T, dbl_t>::isSolution(const HeuristicVector<T, dbl_t>&) const;                   \
  template bool Lattice<T, dbl_t>::addSolution(const HeuristicVector<T, dbl_t>&, DiscoveryTime);
LATBOX_INSTANTIATE(dbl_t)
LATBOX_INSTANTIATE(QQ)

}  // namespace latbox
