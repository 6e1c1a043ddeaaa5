#include "lattice/weights.h"

#include <cassert>

#include "numbers/conversion.h"
#include "numbers/number.h"

namespace latbox {

namespace {

constexpr const char* OVERFLOW_TEXT = "vector precisison overflow";

}  // namespace

template <class T>
template <class U>
void WeightMap<T>::convertFrom(const WeightMap<U>& other) {
  convertValue(other.inhomBase, inhomBase);
  convertValue(other.inhomScaled, inhomScaled);
  convertVector(other.scaleFactor, scaleFactor);
  convertVector(other.translation, translation);
  convertVector(other.stepAverage, stepAverage);
  stepCount = other.stepCount;
}

template <class T>
void WeightMap<T>::resizeWeights(long dim) {
  scaleFactor.resize(dim, false);
  stepAverage.resize(dim, false);
  stepCount.resize(dim, false);
  translation.clear();
  resetWeights();
}

template <class T>
void WeightMap<T>::resetWeights() {
  for (long i = 1; i <= scaleFactor.MN; ++i) {
    scaleFactor.data[i] = T(1);
    stepAverage[i] = T(0);
    stepCount[i] = 0;
  }
  inhomScaled = inhomBase;
}

template <class T>
void WeightMap<T>::setWeight(long p, const T& value) {
  assert(!isExactZero(value));
  scaleFactor[p] = value;
  if (p == scaleFactor.MN) inhomScaled = value * inhomBase;
}

template <class T>
void WeightMap<T>::setShift(long p, const T& value) {
  assert(p < scaleFactor.MN);
  if (translation.MN == 0) translation.resizeZero(scaleFactor.MN);
  translation[p] = value;
}

template <class T>
void WeightMap<T>::noteStep(long p, const T& step) {
  const T count(stepCount[p]);
  stepAverage[p] = (stepAverage[p] * count + step) / (count + T(1));
  ++stepCount[p];
}

template <class T>
bool WeightMap<T>::unweighted() const {
  const T one(1);
  for (long i = 1; i <= scaleFactor.MN; ++i)
    if (scaleFactor.data[i] != one) return false;
  for (long i = 1; i <= translation.MN; ++i)
    if (!isExactZero(translation.data[i])) return false;
  return true;
}

template <class T>
void WeightMap<T>::unscaledVector(const Vector<T>& weighted, Vector<T>& unit) const {
  unit = weighted;
  if (unweighted()) return;
  const long dim = scaleFactor.MN;
  const T share = unit[dim] / inhomScaled;
  for (long i = 1; i <= dim; ++i) {
    if (i <= translation.MN && !isExactZero(share)) unit.data[i] -= share * translation.data[i];
    unit.data[i] /= scaleFactor[i];
  }
}

template <class T>
void WeightMap<T>::rescaledVector(const Vector<T>& unit, Vector<T>& weighted) const {
  weighted = unit;
  if (unweighted()) return;
  const long dim = scaleFactor.MN;
  const T share = weighted[dim] / inhomBase;
  for (long i = 1; i <= dim; ++i) {
    weighted.data[i] *= scaleFactor[i];
    if (i <= translation.MN && !isExactZero(share)) weighted.data[i] += share * translation.data[i];
    checkPrecision(weighted.data[i], OVERFLOW_TEXT);
  }
}

template <class T>
Matrix<T> WeightMap<T>::unscaled(const Matrix<T>& basis) const {
  Matrix<T> result = basis;
  if (unweighted()) return result;
  for (long i = 1; i <= basis.M; ++i) unscaledVector(basis.rows[i], result.rows[i]);
  return result;
}

template <class T>
Matrix<T> WeightMap<T>::rescaled(const Matrix<T>& basis) const {
  Matrix<T> result = basis;
  if (unweighted()) return result;
  for (long i = 1; i <= basis.M; ++i) rescaledVector(basis.rows[i], result.rows[i]);
  return result;
}

template class WeightMap<dbl_t>;
template class WeightMap<QQ>;
template void WeightMap<dbl_t>::convertFrom(const WeightMap<QQ>&);
template void WeightMap<QQ>::convertFrom(const WeightMap<dbl_t>&);

}  // namespace latbox
