#include "lattice/finds.h"

#include "lib/exceptions.h"
#include "numbers/conversion.h"
#include "numbers/number.h"

namespace latbox {

namespace {

// What is kept is compared with its source again on the way up, too.
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
void Finds<T, F>::convertFrom(const Finds<U, F>& other) {
  convertHeuristic(other.bestInhomogeneous, bestInhomogeneous);
  convertHeuristic(other.bestSlack, bestSlack);
  solutions.resize(other.solutions.MN, false);
  for (long i = 1; i <= solutions.MN; ++i) convertTarget(other.solutions[i], solutions[i]);
  convertSet(other.homogeneousVectors, homogeneousVectors);
  convertSet(other.inhomogeneousVectors, inhomogeneousVectors);
}

template <class T, class F>
void Finds<T, F>::emptyCollections() {
  homogeneousVectors.clear();
  inhomogeneousVectors.clear();
}

template <class T, class F>
void Finds<T, F>::forgetFinds() {
  bestInhomogeneous.clear();
  bestSlack.clear();
  solutions.clear();
  emptyCollections();
}

template <class T, class F>
bool Finds<T, F>::isKnown(const Vector<T>& w) const {
  if (sameVector<T>(bestSlack, w)) return true;
  for (long i = 1; i <= solutions.MN; ++i)
    if (sameVector<T>(solutions.data[i], w)) return true;
  return false;
}

template struct Finds<dbl_t, dbl_t>;
template struct Finds<QQ, dbl_t>;
template void Finds<dbl_t, dbl_t>::convertFrom(const Finds<QQ, dbl_t>&);
template void Finds<QQ, dbl_t>::convertFrom(const Finds<dbl_t, dbl_t>&);

}  // namespace latbox
