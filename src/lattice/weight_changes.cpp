// The one rule for a weight or a shift: the basis keeps its unit coordinates, whatever was derived is void.
#include <utility>

#include "lattice/lattice.h"
#include "numbers/number.h"

namespace latbox {

namespace {

// The map is replaced once the rows are known under the new one: what does not fit the number type changes
// nothing.
template <class T, class F, class Change>
void changeWeights(Lattice<T, F>& lattice, Change change) {
  WeightMap<T> weights = lattice;
  change(weights);
  const Matrix<T> rows = weights.rescaled(lattice.unscaled(lattice.B));
  static_cast<WeightMap<T>&>(lattice) = std::move(weights);
  lattice.reweigh(rows);
}

}  // namespace

template <class T, class F>
void Lattice<T, F>::setScale(long p, const T& value) {
  if (this->scaleFactor[p] == value) return;
  const T wanted(value);  // `value` may be an element of what changes
  changeWeights(*this, [&](WeightMap<T>& weights) { weights.setWeight(p, wanted); });
}

template <class T, class F>
void Lattice<T, F>::setFirstScales(const Vector<T>& values) {
  long p = 1;
  while (p <= values.MN && values[p] == this->scaleFactor[p]) ++p;
  if (p > values.MN) return;
  changeWeights(*this, [&](WeightMap<T>& weights) {
    for (; p <= values.MN; ++p) weights.setWeight(p, values[p]);
  });
}

template <class T, class F>
void Lattice<T, F>::setTranslation(long p, const T& value) {
  // A guard: the routine that translates leaves this coordinate out.
  if (p == this->dim) fail("The inhomogenous component can not get translated!");
  const T wanted(value);
  changeWeights(*this, [&](WeightMap<T>& weights) { weights.setShift(p, wanted); });
}

template <class T, class F>
void Lattice<T, F>::resetScales(bool resetFactors, bool resetTranslation) {
  changeWeights(*this, [&](WeightMap<T>& weights) {
    if (resetFactors) weights.resetWeights();
    if (resetTranslation) weights.translation.clear();
  });
  if (resetFactors) search.scaleLimit = T(SCALE_LIMIT_START);
}

#define LATBOX_INSTANTIATE(T)                                        \
  template void Lattice<T, dbl_t>::setScale(long, const T&);         \
  template void Lattice<T, dbl_t>::setFirstScales(const Vector<T>&); \
  template void Lattice<T, dbl_t>::setTranslation(long, const T&);   \
  template void Lattice<T, dbl_t>::resetScales(bool, bool);
LATBOX_INSTANTIATE(dbl_t)
LATBOX_INSTANTIATE(QQ)

}  // namespace latbox
