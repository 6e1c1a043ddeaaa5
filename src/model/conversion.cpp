// A program from one number type to the other.
#include "model/conversion.h"

#include "model/tessik.h"

namespace latbox {

namespace {

template <class T, class U>
Star<T> starFields(const Star<U>& from) {
  Star<T> to;
  convertVector(from, static_cast<Vector<T>&>(to));
  convertVector(from.targetValues, to.targetValues);
  to.secondsUntilDiscovered = from.secondsUntilDiscovered;
  to.slackNorm = converted<T>(from.slackNorm);
  to.targetNorm = converted<T>(from.targetNorm);
  to.parameters = from.parameters;
  to.version = from.version;
  return to;
}

template <class T>
bool sameValue(const T& a, const T& b) {
  return a == b || (!isInfinite(a) && !isInfinite(b) && isZero(T(a - b)));
}

template <class T>
bool sameNumbers(const Star<T>& a, const Star<T>& b) {
  return static_cast<const Vector<T>&>(a) == b && a.targetValues == b.targetValues &&
         sameValue(a.slackNorm, b.slackNorm) && sameValue(a.targetNorm, b.targetNorm);
}

template <class T, class U>
void convertNumbers(const Tessik<U>& from, Tessik<T>& to) {
  convertVector(from.dt, to.dt);
  convertVector(from.kt, to.kt);
  to.lrtu.left = converted<T>(from.lrtu.left);
  to.lrtu.right = converted<T>(from.lrtu.right);
  convertMatrix(from.At, to.At);
  convertVector(from.atu, to.atu);
  convertVector(from.bg, to.bg);
  convertVector(from.lu, to.lu);
  convertVector(from.ru, to.ru);
  convertMatrix(from.Ag, to.Ag);
  convertMatrix(from.Au, to.Au);
  convertVector(from.dx, to.dx);
  convertVector(from.lx, to.lx);
  convertVector(from.rx, to.rx);
  to.fixedComponents.assignConverted(from.fixedComponents, [](const Pair<long, U>& entry) {
    return Pair<long, T>(entry.left, converted<T>(entry.right));
  });
}

template <class T, class U>
void copyTypeless(const Tessik<U>& from, Tessik<T>& to) {
  to.optFile = from.optFile;
  to.solFile = from.solFile;
  to.tu = from.tu;
  to.fx = from.fx;
  to.swappedComponents = from.swappedComponents;
  to.allTargetsFinite = from.allTargetsFinite;
  to.slackCount = from.slackCount;
  to.deviationCount = from.deviationCount;
  to.writeEnabled = from.writeEnabled;
  to.finishEnabled = from.finishEnabled;
  to.prepared = from.prepared;
}

}  // namespace

template <class T, class U>
Star<T> convertedStar(const Star<U>& from) {
  Star<T> to = starFields<T>(from);
  if (!sameNumbers(from, starFields<U>(to))) throw PrecisionException(CONVERSION_LOST);
  return to;
}

template <class T>
template <class U>
void Tessik<T>::convertFrom(const Tessik<U>& other) {
  convertNumbers(other, *this);
  stars.assignConverted(other.stars, convertedStar<T, U>);
  copyTypeless(other, *this);
}

#define LATBOX_INSTANTIATE(T, U)                  \
  template Star<T> convertedStar(const Star<U>&); \
  template void Tessik<T>::convertFrom(const Tessik<U>&);
LATBOX_INSTANTIATE(dbl_t, QQ)
LATBOX_INSTANTIATE(QQ, dbl_t)

}  // namespace latbox
