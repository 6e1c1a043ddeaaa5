// A lattice from the one of the other precision. The way to exact arithmetic loses nothing; the way back is
// taken only if every value of the state converts and comes back, but for values that the lattice can
// recompute.
#include <algorithm>
#include <type_traits>
#include <utility>

#include "lattice/inner_product.h"
#include "lattice/lattice.h"
#include "lib/exceptions.h"
#include "model/conversion.h"
#include "numbers/number.h"

namespace latbox {

namespace {

// Without a guard: for bounds of lengths, which guide and decide nothing.
void convertLoosely(dbl_t from, QQ& to) {
  to = QQ(from);
}
void convertLoosely(const QQ& from, dbl_t& to) {
  to = toDouble(from);
}

// What is kept is compared with its source again on the way up, too: a find must change neither its place nor
// its norms by a conversion.
void convertKept(const QQ& from, dbl_t& to) {
  convertValue(from, to);
}
void convertKept(dbl_t from, QQ& to) {
  convertValue(from, to);
  const dbl_t back = toDouble(to);
  if (back != from && !isZero(back - from)) throw PrecisionException(CONVERSION_LOST);
}

template <class T, class U>
void convertKept(const TimeVector<U>& from, TimeVector<T>& to) {
  to.assignConverted(from, [](const U& x) {
    T value{};
    convertKept(x, value);
    return value;
  });
  to.secondsUntilDiscovered = from.secondsUntilDiscovered;
}

template <class T, class U>
void convertTarget(const TargetVector<U>& from, TargetVector<T>& to) {
  convertKept<T, U>(from, to);
  convertKept(from.targetNorm, to.targetNorm);
  convertKept(from.slackNorm, to.slackNorm);
}

template <class T, class U>
void convertHeuristic(const HeuristicVector<U, dbl_t>& from, HeuristicVector<T, dbl_t>& to) {
  convertKept<T, U>(from, to);
  to.deviation = from.deviation;
  convertKept(from.targetNorm, to.targetNorm);
  convertKept(from.slackNorm, to.slackNorm);
  convertValue(from.combinedTarget, to.combinedTarget);
}

template <class T, class U>
void convertSet(const SortedSet<HeuristicVector<U, dbl_t>>& from, SortedSet<HeuristicVector<T, dbl_t>>& to) {
  to.clear();
  to.limit = from.limit;
  for (const auto* node = from.head; node != nullptr; node = node->next) {
    HeuristicVector<T, dbl_t> vector;
    convertHeuristic(node->value, vector);
    to.append(vector);
  }
}

}  // namespace

template <class T, class F>
template <class U>
void Lattice<T, F>::convertFrom(const Lattice<U, F>& other) {
  Tessik<T>::convertFrom(other);
  mainVars = other.mainVars;
  params.convertFrom(other.params);
  convertResults(other);
  convertBasis(other);
  if constexpr (std::is_same_v<T, QQ>) restoreMultipliers();
  convertDerived(other);
}

template <class T, class F>
template <class U>
void Lattice<T, F>::convertResults(const Lattice<U, F>& other) {
  savedSeconds = other.savedSeconds;
  latFile = other.latFile;
  convertHeuristic(other.bestInhomogeneous, bestInhomogeneous);
  convertHeuristic(other.bestSlack, bestSlack);
  solutions.resize(other.solutions.MN, false);
  for (long i = 1; i <= solutions.MN; ++i) convertTarget(other.solutions[i], solutions[i]);
  program.convertFrom(other.program);
  convertValue(other.R, R);
  convertVector(other.lbnd, lbnd);
  convertVector(other.ubnd, ubnd);
  convertVector(other.lbndSaved, lbndSaved);
  convertVector(other.ubndSaved, ubndSaved);
  symmetricBounds = other.symmetricBounds;
  checkMode = other.checkMode;
  convertLoosely(other.normBound, normBound);
  generatedTu = other.generatedTu;
  convertVector(other.generatedLx, generatedLx);
  convertVector(other.generatedRx, generatedRx);
  convertValue(other.generatedLrtu.left, generatedLrtu.left);
  convertValue(other.generatedLrtu.right, generatedLrtu.right);
  convertSet(other.homogeneousVectors, homogeneousVectors);
  convertSet(other.inhomogeneousVectors, inhomogeneousVectors);
}

template <class T, class F>
template <class U>
void Lattice<T, F>::convertBasis(const Lattice<U, F>& other) {
  rank = other.rank;
  dim = other.dim;
  convertValue(other.inhomBase, inhomBase);
  convertValue(other.inhomScaled, inhomScaled);
  convertVector(other.c, c);
  TT.resize(other.TT.MN, false);
  for (long i = 1; i <= TT.MN; ++i) convertMatrix(other.TT[i], TT[i]);
  convertMatrix(other.B_save, B_save);
  convertMatrix(other.B, B);
  coordSolver.clear();
  convertVector(other.scaleFactor, scaleFactor);
  convertVector(other.translation, translation);
  convertVector(other.stepAverage, stepAverage);
  stepCount = other.stepCount;
}

// What lives in F is taken as it is. Lengths are computed again, factorisations are made again on demand, and
// the enumeration's scratch means nothing between steps.
template <class T, class F>
template <class U>
void Lattice<T, F>::convertDerived(const Lattice<U, F>& other) {
  const Matrix<F> coefficients = other.mu;
  const Vector<F> lengths = other.bstarSq;
  resizeWork(rank);
  mu = coefficients;
  bstarSq = lengths;
  for (long i = 1; i <= rank; ++i) squaredLength(B[i], bNormSq[i]);
  status = other.status;
  forgetFactorisation(1);
  interval_tt = other.interval_tt;
  blended = other.blended;
  enumBound = other.enumBound;
}

template void Lattice<dbl_t, dbl_t>::convertFrom(const Lattice<QQ, dbl_t>&);
template void Lattice<QQ, dbl_t>::convertFrom(const Lattice<dbl_t, dbl_t>&);

}  // namespace latbox
