// How the basis follows from the basis as generated: the recorded transformation, made anew from exact
// coordinates where it is not recorded, and what rests on it: the proof that the rows are a basis still, and
// the ways back.
#include <cmath>
#include <vector>

#include "lattice/basis.h"
#include "lattice/row_operation.h"
#include "lattice/unimodular.h"
#include "lib/exceptions.h"
#include "numbers/number.h"

namespace latbox {

namespace {

constexpr const char* TRANSFORMATION_OVERFLOW = "transformation overflow";

template <class T>
void clearNearZeros(Matrix<T>& m) {
  for (long i = 1; i <= m.M; ++i)
    for (long j = 1; j <= m.rows[i].MN; ++j)
      if (isZero(m.rows[i].data[j])) m.rows[i].data[j] = T(0);
}

template <class T>
bool isIdentity(const Matrix<T>& m) {
  if (m.M != m.N) return false;
  for (long i = 1; i <= m.M; ++i)
    for (long j = 1; j <= m.N; ++j)
      if (m.rows[i].data[j] != T(i == j ? 1 : 0)) return false;
  return true;
}

// The new origin must lie in the range in which dbl_t is exact; QQ has no such range.
template <class T>
void requireHeld(const Matrix<T>& basis) {
  for (long i = 1; i <= basis.M; ++i)
    for (long j = 1; j <= basis.N; ++j) {
      try {
        checkPrecision(basis.rows[i].data[j], "base matrix overflow");
      } catch (const FatalPrecisionException&) {
        // Not too late here: the copy is not made, and the driver goes back to what it kept.
        throw PrecisionException("base matrix overflow");
      }
    }
}

// Sums below 2^63 of products of whole numbers are exact in a dbl_t. A rounded product would be the basis of
// another lattice, and would take the place of one that is right.
void requireExactProduct(const Matrix<dbl_t>& transformation, const Matrix<dbl_t>& origin) {
  std::vector<dbl_t> largest(static_cast<std::size_t>(origin.M) + 1, 0);
  for (long k = 1; k <= origin.M; ++k) largest[static_cast<std::size_t>(k)] = supNorm(origin.rows[k]);
  const long terms = std::min(transformation.N, origin.M);
  for (long i = 1; i <= transformation.M; ++i) {
    dbl_t bound = 0;
    for (long k = 1; k <= terms; ++k)
      bound += std::fabs(transformation.rows[i].data[k]) * largest[static_cast<std::size_t>(k)];
    if (!(bound < 0x1p63L)) throw PrecisionException(TRANSFORMATION_OVERFLOW);
  }
}
void requireExactProduct(const Matrix<QQ>&, const Matrix<QQ>&) {}

// The basis that the transformation makes of the origin.
template <class T>
Matrix<T> transformed(const Matrix<T>& transformation, const Matrix<T>& origin) {
  requireExactProduct(transformation, origin);
  Matrix<T> result = transformation * origin;
  clearNearZeros(result);
  return result;
}

}  // namespace

template <class T>
bool Basis<T>::savedCoordinates(const Vector<T>& v, Vector<T>& result) {
  return s_.coordSolver.coordinates(CoordSolver<T>::Which::saved, s_.B_save, v, result);
}

template <class T>
bool Basis<T>::currentCoordinates(const Vector<T>& v, const Matrix<T>& rows, Vector<T>& result) {
  return s_.coordSolver.coordinates(CoordSolver<T>::Which::current, rows, v, result);
}

template <class T>
void Basis<T>::newTransformation(bool reuseIdentity) {
  const bool reuse = reuseIdentity && s_.TT.MN > 0 && isIdentity(transformation());
  if (!reuse) s_.TT.resize(s_.TT.MN + 1, false);
  transformation() = Matrix<T>::unit(s_.rank);
  if (!reuse && s_.TT.MN > T_MAT_NBR) warn("TT.MN > T_MAT_NBR");
}

template <class T>
bool Basis<T>::deriveTransformation(const Matrix<T>& unit) {
  transformation().resize(unit.M, transformation().N);
  for (long i = 1; i <= unit.M; ++i)
    if (!savedCoordinates(unit.rows[i], transformation().rows[i])) return false;
  return true;
}

template <class T>
bool Basis<T>::isTransformationUnimodular() {
  clearNearZeros(transformation());
  if (transformation().M != transformation().N)
    fail("Matrix: a non-quadratic matrix determinant is not defined");
  return isUnimodular(transformation());
}

template <class T>
Matrix<T> Basis<T>::transformedOrigin() const {
  return transformed(s_.TT[s_.TT.MN], s_.B_save);
}

template <class T>
void Basis<T>::rebase(const Matrix<T>& unit) {
  try {
    requireHeld(unit);
    s_.B_save = unit;
    newTransformation(true);
    s_.coordSolver.currentBecomesSaved();
  } catch (const FatalPrecisionException&) {
    throw PrecisionException(TRANSFORMATION_OVERFLOW);
  }
}

template <class T>
void Basis<T>::restoreOrigin(const Matrix<T>& weighted) {
  takeRows(weighted);
  clearStatus();
  s_.coordSolver.savedBecomesCurrent();
  transformation() = Matrix<T>::unit(s_.rank);
}

#define LATBOX_INSTANTIATE(T)                                                                 \
  template bool Basis<T>::savedCoordinates(const Vector<T>&, Vector<T>&);                     \
  template bool Basis<T>::currentCoordinates(const Vector<T>&, const Matrix<T>&, Vector<T>&); \
  template void Basis<T>::newTransformation(bool);                                            \
  template bool Basis<T>::deriveTransformation(const Matrix<T>&);                             \
  template bool Basis<T>::isTransformationUnimodular();                                       \
  template Matrix<T> Basis<T>::transformedOrigin() const;                                     \
  template void Basis<T>::rebase(const Matrix<T>&);                                           \
  template void Basis<T>::restoreOrigin(const Matrix<T>&);
LATBOX_INSTANTIATE(dbl_t)
LATBOX_INSTANTIATE(QQ)

}  // namespace latbox
