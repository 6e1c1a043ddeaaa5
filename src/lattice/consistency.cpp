// Exact coordinates of vectors, and the check that the basis is still a basis of the lattice as generated.
#include <algorithm>
#include <cmath>
#include <vector>

#include "lattice/lattice.h"
#include "lattice/row_operation.h"
#include "lattice/unimodular.h"
#include "lib/exceptions.h"
#include "lib/progress.h"
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

template <class T, class F>
bool Lattice<T, F>::coordinates(const Vector<T>& unitVector, Vector<T>& result, bool useSaved,
                                bool throughTT) {
  using Which = typename CoordSolver<T>::Which;
  bool found = false;
  if (useSaved)
    found = coordSolver.coordinates(Which::saved, B_save, unitVector, result);
  else
    found = unweighted() ? coordSolver.coordinates(Which::current, B, unitVector, result)
                         : coordSolver.coordinates(Which::current, unscaled(B), unitVector, result);
  if (found && throughTT) result = result * TT[TT.MN];
  return found;
}

template <class T, class F>
bool Lattice<T, F>::isMember(const Vector<T>& v) {
  Vector<T> unused;
  return coordinates(v, unused, true);
}

// TT from the basis as it stands. False where a row of U is not in the lattice.
template <class T, class F>
bool Lattice<T, F>::rebuildTransformation(const Matrix<T>& U) {
  Matrix<T>& transformation = TT[TT.MN];
  transformation.resize(U.M, transformation.N);
  for (long i = 1; i <= U.M; ++i)
    if (!coordinates(U.rows[i], transformation.rows[i], true)) return false;
  return true;
}

template <class T, class F>
void Lattice<T, F>::transformationCoordinates(const Vector<T>& v, Vector<T>& result, bool check,
                                              bool positive) {
  if (check && !rebuildTransformation(unscaled(B))) throw PrecisionException("transformation coord error");
  Vector<T> side(v);
  for (long i = 1; i <= side.MN; ++i) checkPrecision(side.data[i], "rt overflow");
  // A zero inhomogeneous coordinate counts as positive.
  if (positive && signOf(side[dim]) * signOf(inhomBase) < 0) side = -side;
  if (!coordinates(side, result, true)) throw PrecisionException("transformation coord error");
}

template <class T, class F>
void Lattice<T, F>::newTransformation(bool reuseIdentity) {
  const bool reuse = reuseIdentity && TT.MN > 0 && isIdentity(TT[TT.MN]);
  if (!reuse) TT.resize(TT.MN + 1, false);
  TT[TT.MN] = Matrix<T>::unit(rank);
  if (!reuse && TT.MN > T_MAT_NBR) warn("TT.MN > T_MAT_NBR");
}

// The repair of last resort: back to the basis as generated or read.
template <class T, class F>
void Lattice<T, F>::restoreSavedBasis() {
  for (long i = 1; i <= B_save.M; ++i) rescaledVector(B_save.rows[i], B.rows[i]);
  clearStatus();
  coordSolver.savedBecomesCurrent();
  TT[TT.MN] = Matrix<T>::unit(rank);
}

// False where the basis can't be repaired by its transformation and has to be restored.
template <class T, class F>
bool Lattice<T, F>::settleTransformation(const Matrix<T>& U) {
  if (!consistencyOn()) {
    const int depth = progressDepth();
    try {
      if (!rebuildTransformation(U)) return false;
    } catch (const PrecisionException&) {
      setProgressDepth(depth);
      return false;
    }
  }
  Matrix<T>& transformation = TT[TT.MN];
  clearNearZeros(transformation);
  if (transformation.M != transformation.N) fail("Matrix: a non-quadratic matrix determinant is not defined");
  if (isUnimodular(transformation)) return true;
  if (consistencyOn()) throw PrecisionException("unimodular error");
  return false;
}

// The basis in unit coordinates becomes the new origin, and what follows is recorded in a matrix of its own.
template <class T, class F>
void Lattice<T, F>::rebaseOn(const Matrix<T>& U) {
  try {
    requireHeld(U);
    B_save = U;
    newTransformation(true);
    coordSolver.currentBecomesSaved();
  } catch (const FatalPrecisionException&) {
    throw PrecisionException(TRANSFORMATION_OVERFLOW);
  }
}

template <class T, class F>
void Lattice<T, F>::checkConsistency(bool rebase, bool keepFile) {
  const ProgressScope scope(verb() == 2, "Lattice consistency checking / fixing ...");
  if (!rebase && TT.MN != 1) fail("In the non-aardal case TT.MN should always be == 1");
  const Matrix<T> U = unscaled(B);
  if (!settleTransformation(U)) {
    restoreSavedBasis();
    return;
  }
  const Matrix<T> W = transformed(TT[TT.MN], B_save);
  // Where both agree the basis is left alone: no status is lost, no rounding comes in.
  if (W != U) {
    clearStatus();
    coordSolver.dropCurrent();
    if (B.M != W.M || B.N != W.N) B.resize(W.M, W.N);
    for (long i = 1; i <= W.M; ++i) rescaledVector(W.rows[i], B.rows[i]);
  }
  if (rebase) rebaseOn(W);
  if (!keepFile) writeLatFile();
}

#define LATBOX_INSTANTIATE(T)                                                                           \
  template bool Lattice<T, dbl_t>::coordinates(const Vector<T>&, Vector<T>&, bool, bool);               \
  template bool Lattice<T, dbl_t>::isMember(const Vector<T>&);                                          \
  template void Lattice<T, dbl_t>::transformationCoordinates(const Vector<T>&, Vector<T>&, bool, bool); \
  template void Lattice<T, dbl_t>::newTransformation(bool);                                             \
  template void Lattice<T, dbl_t>::checkConsistency(bool, bool);
LATBOX_INSTANTIATE(dbl_t)
LATBOX_INSTANTIATE(QQ)

}  // namespace latbox
