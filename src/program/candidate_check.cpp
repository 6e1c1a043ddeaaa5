#include "program/candidate_check.h"

#include <cassert>

#include "numbers/tolerance.h"
#include "params/statistics.h"
#include "program/exact_product.h"
#include "program/sol_file.h"
#include "program/target_order.h"

namespace latbox {
namespace {

// Standard precision carries multipliers such as 4/3 rounded: an excess that is zero by the tolerance must
// not push a corner out of the box.
template <class T>
bool within(const T& low, const T& x, const T& high) {
  return !exceeds(low, x) && !exceeds(x, high);
}

}  // namespace

// Finds count outside a benchmark run, and unless kept vectors are coming back.
template <class T>
bool CandidateCheck<T>::findsCount() const {
  return !isBenchmark(l_.params.bench.get()) && !l_.search.reinserting;
}

// The last coordinate alone rules most vectors out, before anything is copied: homogeneous ones and multiples
// are neither feasible nor near.
template <class T>
bool CandidateCheck<T>::isRuledOut(const Vector<T>& vec, bool scaled) const {
  const long dim = l_.dim;
  if (isZero(T(abs(vec[dim]) - abs(scaled ? l_.inhomScaled : l_.inhomBase)))) return false;
  return l_.lbnd[dim] == l_.inhomBase && l_.ubnd[dim] == l_.inhomBase;
}

// Copies `vec` into the lattice's scratch, in unit coordinates and with the sign of inhomBase in the last
// one: a consistency check further down may rewrite the row of B that it came from. A zero there counts as
// positive. True when the sign was changed.
template <class T>
bool CandidateCheck<T>::takeCandidate(const Vector<T>& vec, bool scaled) {
  const bool negated = (vec[l_.dim] < T(0)) != ((scaled ? l_.inhomScaled : l_.inhomBase) < T(0));
  Vector<T>& w = l_.candidate_;
  if (scaled && !l_.unweighted())
    l_.unscaledVector(vec, w);
  else
    w = vec;
  if (!negated) return false;
  for (long i = 1; i <= l_.dim; ++i) w.data[i] = T(0) - w.data[i];
  return true;
}

template <class T>
bool CandidateCheck<T>::isFeasible(const Vector<T>& w) const {
  const Vector<T>& low = l_.lbnd;
  const Vector<T>& high = l_.ubnd;
  if (!within(low[l_.dim], w[l_.dim], high[l_.dim])) return false;
  const long variables = l_.fx.MN;
  const long before = l_.dim - 1 - variables;
  for (long i = 1; i <= variables; ++i) {
    const FreedomDegree freedom = l_.fx.data[i];
    if (freedom == FreedomDegree::free) continue;
    const T& value = w.data[before + i];
    if (freedom != FreedomDegree::noLower && exceeds(low.data[before + i], value)) return false;
    if (freedom != FreedomDegree::noUpper && exceeds(value, high.data[before + i])) return false;
  }
  // The combined target bounds nothing.
  const long first = l_.checkMode == CHECK_MODE_FINAL && l_.generatedTu ? 2 : 1;
  for (long k = before; k >= first; --k)
    if (!within(low.data[k], w.data[k], high.data[k])) return false;
  return true;
}

// A near miss may be worth a place in the collections and be the best that carries the inhomogeneous
// coordinate. Both go by the measure, which is taken once, and not at all where neither asks.
template <class T>
void CandidateCheck<T>::remember(const Vector<T>& w, bool collecting, bool feasible,
                                 const HeuristicDeviation<dbl_t>* measure, DiscoveryTime time) {
  const bool collected = collecting && !l_.isTooLong(w);
  const bool offered = !feasible && l_.carriesBase(w);
  if (!collected && !offered) return;
  HeuristicDeviation<dbl_t> own;
  if (measure == nullptr) {
    own = l_.computeDeviation(w);
    measure = &own;
  }
  if (collected) l_.collectMeasured(w, *measure, nullptr, nullptr, time);
  if (offered) l_.offerMeasured(w, *measure, time);
}

// What is recorded has always taken the real test: a vector that has been recorded in this lattice took it
// then.
template <class T>
bool CandidateCheck<T>::isForeign(const Vector<T>& w, Membership membership) {
  return membership == Membership::byConstruction && !l_.isKnown(w) && !l_.isMember(w);
}

template <class T>
unsigned CandidateCheck<T>::check(const Vector<T>& vec, bool scaled, DiscoveryTime time, bool keepBounds,
                                  Membership membership, const BothDeviations<dbl_t>* measures) {
  if (l_.checkMode == CHECK_MODE_NONE) fail("checkSolution: You should set the check vectors!");
  if (vec.MN == 0) return 0;
  assert(vec.MN == l_.dim && l_.lbnd.MN == l_.dim && l_.ubnd.MN == l_.dim);
  const bool collecting = l_.params.pair.get() || l_.params.sieve.get();
  if (membership == Membership::byConstruction && !collecting && isRuledOut(vec, scaled)) return 0;
  const bool negated = takeCandidate(vec, scaled);
  const Vector<T>& w = l_.candidate_;
  if (membership == Membership::unknown && !l_.isMember(w)) return CHECK_FOREIGN;
  const bool feasible = isFeasible(w);
  const auto* const measure = measures == nullptr ? nullptr : negated ? &measures->minus : &measures->plus;
  remember(w, collecting, feasible, measure, time);
  if (!feasible) return 0;
  if (isForeign(w, membership)) return CHECK_FOREIGN;
  Candidate h;
  const unsigned judged = judge(w, h, time, keepBounds);
  // Behind an event the scratch is not looked at any more: other vectors may have been judged in it.
  if (judged & CHECK_LOOKED) return record(h, time, judged);
  if ((judged & CHECK_BOUND) && l_.events != nullptr) l_.events->boundMoved(l_);
  return judged;
}

// By its targets, or without any by the bounds that it may move. A vector of the equations alone is no point
// of the program: only bounds hear of it.
template <class T>
unsigned CandidateCheck<T>::judge(const Vector<T>& w, Candidate& h, DiscoveryTime time, bool keepBounds) {
  const bool final = l_.checkMode == CHECK_MODE_FINAL;
  if (final && l_.program.At.M > 0) {
    const unsigned judged = judgeVector(w, h, time, keepBounds) | CHECK_FEASIBLE;
    return judged & CHECK_BOUND ? judged | CHECK_LOOKED : judged;
  }
  Vector<T> x;
  unsigned result = CHECK_FEASIBLE;
  if (l_.lat2opt(w, x, false) == 1 && updateBounds(x)) result |= CHECK_BOUND;
  if (!final) return result;
  h = w;
  return result | CHECK_LOOKED;
}

// Records h if it is a solution, and writes what is new.
template <class T>
unsigned CandidateCheck<T>::record(const Candidate& h, DiscoveryTime time, unsigned result) {
  const bool changed = (result & CHECK_BOUND) != 0;
  bool added = false;
  if (isSolution(h)) {
    added = addSolution(h, time);
    const long limit = l_.params.sol.get();
    if (limit >= 1 && limit <= l_.solutions.MN) {
      if (l_.events != nullptr) l_.events->limitReached(l_);
      result |= CHECK_LIMIT;
    } else if (added) {
      result |= CHECK_NEW;
    }
  }
  if (changed) {
    if (l_.events != nullptr) l_.events->boundMoved(l_);
    return result;
  }
  if (l_.writeEnabled) {
    writeSolFile(l_, false);
    if (added) l_.checkConsistency(false, false);
  }
  return result;
}

// -1 where a point x with this target norm is better than the best one, 0 where it is as good.
template <class T>
int CandidateCheck<T>::orderAgainstBest(const Vector<T>& x, const T& norm) const {
  const Candidate& best = l_.bestSlack;
  if (!best.notEmpty() || exceeds(best.targetNorm, norm)) return -1;
  if (exceeds(norm, best.targetNorm)) return 1;
  Vector<T> bestX;
  l_.lat2opt(best, bestX, true);
  return compareTargetNorms(l_.program, x, norm, bestX, best.targetNorm);
}

template <class T>
unsigned CandidateCheck<T>::judgeVector(const Vector<T>& w, Candidate& h, DiscoveryTime time,
                                        bool keepBounds) {
  Candidate& best = l_.bestSlack;
  if (best.notEmpty() && sameVector<T>(best, w)) return CHECK_FEASIBLE;
  Vector<T> x;
  if (l_.lat2opt(w, x, true) == 0) fail("is not within lattice1");
  const Vector<T> values = exactProduct(l_.program.At, x);
  const auto norms = l_.program.targetNorms(values, x);
  const int order = orderAgainstBest(x, norms.left);
  if (order > 0) return CHECK_FEASIBLE;
  h = w;
  h.targetNorm = norms.left;
  h.slackNorm = norms.right;
  h.secondsUntilDiscovered = l_.stamp(time);
  unsigned result = updateBounds(x) ? CHECK_BOUND : CHECK_LOOKED;
  if (order < 0) {
    if (findsCount()) ++statisticsOf<T>().targetImprovements;
    h.combinedTarget = exactProduct(l_.program.atu, x);
    best = h;
    l_.program.setTargetBound(values, h.combinedTarget);
    noteFind(w, h.secondsUntilDiscovered);
    result = CHECK_BOUND;
  }
  if (keepBounds) {
    if (best.combinedTarget <= l_.program.rtu())
      fail("This case should not happen between a backup / restore!");
    result = CHECK_LOOKED;
  }
  return result;
}

// Solutions or best vectors have changed.
template <class T>
void CandidateCheck<T>::noteFind(const Vector<T>& w, long seconds) {
  ++l_.output->resultsVersion;
  if (!l_.search.reinserting) {
    TimeVector<T> found(w);
    found.secondsUntilDiscovered = seconds;
    l_.search.journal.push_back(starOf(l_, found));
  }
  if (l_.events != nullptr) l_.events->found(l_);
}

template <class T>
bool CandidateCheck<T>::updateBounds(const Vector<T>& x) {
  Tessik<T>& program = l_.program;
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

template <class T>
bool CandidateCheck<T>::isSolution(const Candidate& h) const {
  if (l_.program.At.M == 0) return true;
  if (l_.program.allTargetsFinite && isZero(h.slackNorm)) return true;
  const T slackLimit = l_.params.snorm.get();
  const T targetLimit = l_.params.tnorm.get();
  const T unset = -infinity<T>();
  const bool slackSet = slackLimit != unset;
  const bool targetSet = targetLimit != unset;
  if (slackSet && targetSet) return !exceeds(h.targetNorm, targetLimit) && !exceeds(h.slackNorm, slackLimit);
  if (!targetSet) return slackSet && !exceeds(h.slackNorm, slackLimit);
  return !exceeds(h.targetNorm, targetLimit);
}

template <class T>
bool CandidateCheck<T>::addSolution(const Candidate& h, DiscoveryTime time) {
  for (long i = 1; i <= l_.solutions.MN; ++i)
    if (sameVector<T>(l_.solutions.data[i], h)) return false;
  TargetVector<T> solution;
  solution = static_cast<const Vector<T>&>(h);
  solution.targetNorm = h.targetNorm;
  solution.slackNorm = h.slackNorm;
  solution.secondsUntilDiscovered = l_.stamp(time);
  l_.solutions.append(solution);
  if (findsCount()) ++statisticsOf<T>().solutionsFound;
  noteFind(h, solution.secondsUntilDiscovered);
  if (l_.params.gui.get()) {
    l_.mainVars[MainMutexVariable::reserved6].set(std::to_string(l_.solutions.MN));
    l_.mainVars[MainMutexVariable::reserved7].set(starReport(l_));
  }
  return true;
}

template <class T, class F>
unsigned Lattice<T, F>::checkSolution(const Vector<T>& latVec, DiscoveryTime time, bool flag,
                                      Membership membership) {
  return checkSolution(latVec, false, time, flag, membership);
}

template <class T, class F>
unsigned Lattice<T, F>::checkSolution(const Vector<T>& vec, bool scaled, DiscoveryTime time, bool flag,
                                      Membership membership) {
  return CandidateCheck<T>(*this).check(vec, scaled, time, flag, membership);
}

template <class T, class F>
unsigned Lattice<T, F>::checkMeasured(const Vector<T>& vec, const BothDeviations<F>& measures,
                                      DiscoveryTime time) {
  return CandidateCheck<T>(*this).check(vec, false, time, false, Membership::byConstruction, &measures);
}

#define LATBOX_INSTANTIATE(T)                                                                            \
  template class CandidateCheck<T>;                                                                      \
  template unsigned Lattice<T, dbl_t>::checkSolution(const Vector<T>&, DiscoveryTime, bool, Membership); \
  template unsigned Lattice<T, dbl_t>::checkSolution(const Vector<T>&, bool, DiscoveryTime, bool,        \
                                                     Membership);                                        \
  template unsigned Lattice<T, dbl_t>::checkMeasured(const Vector<T>&, const BothDeviations<dbl_t>&,     \
                                                     DiscoveryTime);
LATBOX_INSTANTIATE(dbl_t)
LATBOX_INSTANTIATE(QQ)

}  // namespace latbox
