// The weight map. It is linear: weighted = scaleFactor * unit, componentwise, plus the share of the
// translation that belongs to the vector's inhomogeneous coordinate. The coordinate `dim` itself is never
// shifted, so the inverse can read that share off the weighted vector.
#include "lattice/lattice.h"
#include "lattice/scale_limit.h"
#include "numbers/number.h"

namespace latbox {

namespace {

constexpr const char* OVERFLOW_TEXT = "vector precisison overflow";

// Puts the weighted rows of U in place of the basis; row 0 stays.
template <class T, class F>
void replaceBasis(Lattice<T, F>& lattice, const Matrix<T>& U) {
  for (long i = 1; i <= U.M; ++i) lattice.rescaledVector(U.rows[i], lattice.B.rows[i]);
}

// The one rule for a weight or a shift: the basis keeps its unit coordinates, whatever was derived is void.
template <class T, class F, class Change>
void changeWeights(Lattice<T, F>& lattice, Change change) {
  const Matrix<T> U = lattice.unscaled(lattice.B);
  lattice.clearStatus();
  change();
  replaceBasis(lattice, U);
  lattice.clearStatus();
}

}  // namespace

template <class T>
T& scaleLimit() {
  // Never destroyed: the solver may still be running while the process exits.
  static T& limit = *new T(SCALE_LIMIT_START);
  return limit;
}

template <class T, class F>
bool Lattice<T, F>::unweighted() const {
  const T one(1);
  for (long i = 1; i <= scaleFactor.MN; ++i)
    if (scaleFactor.data[i] != one) return false;
  for (long i = 1; i <= translation.MN; ++i)
    if (!isExactZero(translation.data[i])) return false;
  return true;
}

template <class T, class F>
void Lattice<T, F>::unscaledVector(const Vector<T>& weighted, Vector<T>& unit) const {
  unit = weighted;
  if (unweighted()) return;
  const T share = unit[dim] / inhomScaled;
  for (long i = 1; i <= dim; ++i) {
    if (i <= translation.MN && !isExactZero(share)) unit.data[i] -= share * translation.data[i];
    unit.data[i] /= scaleFactor[i];
  }
}

template <class T, class F>
void Lattice<T, F>::rescaledVector(const Vector<T>& unit, Vector<T>& weighted) const {
  weighted = unit;
  if (unweighted()) return;
  const T share = weighted[dim] / inhomBase;
  for (long i = 1; i <= dim; ++i) {
    weighted.data[i] *= scaleFactor[i];
    if (i <= translation.MN && !isExactZero(share)) weighted.data[i] += share * translation.data[i];
    checkPrecision(weighted.data[i], OVERFLOW_TEXT);
  }
}

template <class T, class F>
Matrix<T> Lattice<T, F>::unscaled(const Matrix<T>& basis) const {
  Matrix<T> result = basis;
  if (unweighted()) return result;
  for (long i = 1; i <= basis.M; ++i) unscaledVector(basis.rows[i], result.rows[i]);
  return result;
}

template <class T, class F>
Matrix<T> Lattice<T, F>::rescaled(const Matrix<T>& basis) const {
  Matrix<T> result = basis;
  if (unweighted()) return result;
  for (long i = 1; i <= basis.M; ++i) rescaledVector(basis.rows[i], result.rows[i]);
  return result;
}

template <class T, class F>
void Lattice<T, F>::setScale(long p, const T& value) {
  if (scaleFactor[p] == value) return;
  const T wanted(value);  // `value` may be an element of what changes
  changeWeights(*this, [&] {
    scaleFactor[p] = wanted;
    if (p == dim) inhomScaled = scaleFactor[dim] * inhomBase;
  });
}

template <class T, class F>
void Lattice<T, F>::setTranslation(long p, const T& value) {
  // A guard: the routine that translates leaves this coordinate out.
  if (p == dim) fail("The inhomogenous component can not get translated!");
  const T wanted(value);
  changeWeights(*this, [&] {
    if (translation.MN == 0) translation.resizeZero(dim);
    translation[p] = wanted;
  });
}

template <class T, class F>
void Lattice<T, F>::resetScales(bool resetFactors, bool resetTranslation) {
  changeWeights(*this, [&] {
    if (resetFactors) {
      for (long i = 1; i <= dim; ++i) {
        scaleFactor[i] = T(1);
        stepAverage[i] = T(0);
        stepCount[i] = 0;
      }
      inhomScaled = inhomBase;
      scaleLimit<T>() = T(SCALE_LIMIT_START);
    }
    if (resetTranslation) translation.clear();
  });
}

#define LATBOX_INSTANTIATE(T)                                                          \
  template T& scaleLimit<T>();                                                         \
  template bool Lattice<T, dbl_t>::unweighted() const;                                 \
  template void Lattice<T, dbl_t>::unscaledVector(const Vector<T>&, Vector<T>&) const; \
  template void Lattice<T, dbl_t>::rescaledVector(const Vector<T>&, Vector<T>&) const; \
  template Matrix<T> Lattice<T, dbl_t>::unscaled(const Matrix<T>&) const;              \
  template Matrix<T> Lattice<T, dbl_t>::rescaled(const Matrix<T>&) const;              \
  template void Lattice<T, dbl_t>::setScale(long, const T&);                           \
  template void Lattice<T, dbl_t>::setTranslation(long, const T&);                     \
  template void Lattice<T, dbl_t>::resetScales(bool, bool);
LATBOX_INSTANTIATE(dbl_t)
LATBOX_INSTANTIATE(QQ)

}  // namespace latbox
