// The weight map: between unit coordinates, in which results live, and the weighted ones in which the basis
// is reduced.
//
// weighted = scaleFactor * unit, componentwise, plus (unit[dim] / inhomBase) * translation. It is linear, and
// the coordinate `dim` itself is never shifted, so the inverse can read the share of the shift off the
// weighted vector. Whoever changes it has to give the basis its new coordinates: Lattice::setScale,
// setTranslation and resetScales do.
#pragma once

#include "numbers/matrix.h"
#include "numbers/number.h"

namespace latbox {

template <class T>
class WeightMap {
 public:
  T inhomBase = T(1);      // inhomogeneous coordinate in unit coordinates
  T inhomScaled = T(1);    // scaleFactor[dim] * inhomBase
  Vector<T> scaleFactor;   // weight per coordinate, never 0; all 1 after generation
  Vector<T> translation;   // shift per coordinate; empty reads as zeros; [dim] is 0
  Vector<T> stepAverage;   // running mean of the scale steps per coordinate
  Vector<long> stepCount;  // how many there were

  // Throws: PrecisionException with "Precision lost during conversion".
  template <class U>
  void convertFrom(const WeightMap<U>& other);

  // For `dim` coordinates: weights 1, no shift, no steps; inhomBase stays.
  void resizeWeights(long dim);
  void resetWeights();  // weights 1 and their steps forgotten; shifts stay
  void setWeight(long p, const T& value);
  void setShift(long p, const T& value);  // p < dim
  // A step of weight p joins its mean.
  void noteStep(long p, const T& step);

  // Whether w, in unit coordinates, has inhomBase in its last one, with either sign.
  bool carriesBase(const Vector<T>& w) const { return isZero(T(abs(w[w.MN]) - abs(inhomBase))); }
  bool unweighted() const;  // all weights 1 and no shift: both maps are the identity
  // Both arguments may be one object.
  // Requires: `dim` coordinates.
  // Throws: to weighted coordinates, PrecisionException with "vector precisison overflow".
  void unscaledVector(const Vector<T>& weighted, Vector<T>& unit) const;
  void rescaledVector(const Vector<T>& unit, Vector<T>& weighted) const;
  // Row by row; row 0, which is scratch, is copied.
  Matrix<T> unscaled(const Matrix<T>& basis) const;
  Matrix<T> rescaled(const Matrix<T>& basis) const;
};

}  // namespace latbox
