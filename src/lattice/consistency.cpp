// The check that the basis is still a basis of the lattice as generated, and its repair.
#include "lattice/lattice.h"
#include "lib/exceptions.h"
#include "lib/progress.h"
#include "numbers/number.h"

namespace latbox {

namespace {

// Whether TT[TT.MN] tells how the basis, U in unit coordinates, comes from the origin; false where the basis
// can't be repaired by it and has to go back.
template <class T, class F>
bool settleTransformation(Lattice<T, F>& l, const Matrix<T>& U) {
  if (!l.consistencyOn()) {
    const int depth = progressDepth();
    try {
      if (!l.deriveTransformation(U)) return false;
    } catch (const PrecisionException&) {
      setProgressDepth(depth);
      return false;
    }
  }
  if (l.isTransformationUnimodular()) return true;
  if (l.consistencyOn()) throw PrecisionException("unimodular error");
  return false;
}

}  // namespace

template <class T, class F>
bool Lattice<T, F>::coordinates(const Vector<T>& unitVector, Vector<T>& result, bool useSaved,
                                bool throughTT) {
  bool found = false;
  if (useSaved)
    found = this->savedCoordinates(unitVector, result);
  else if (this->unweighted())
    found = this->currentCoordinates(unitVector, this->B, result);
  else
    found = this->currentCoordinates(unitVector, this->unscaled(this->B), result);
  if (found && throughTT) result = result * this->TT[this->TT.MN];
  return found;
}

template <class T, class F>
bool Lattice<T, F>::isMember(const Vector<T>& v) {
  Vector<T> unused;
  return this->savedCoordinates(v, unused);
}

template <class T, class F>
void Lattice<T, F>::transformationCoordinates(const Vector<T>& v, Vector<T>& result, bool check,
                                              bool positive) {
  if (check && !this->deriveTransformation(this->unscaled(this->B)))
    throw PrecisionException("transformation coord error");
  Vector<T> side(v);
  for (long i = 1; i <= side.MN; ++i) checkPrecision(side.data[i], "rt overflow");
  // A zero inhomogeneous coordinate counts as positive.
  if (positive && signOf(side[this->dim]) * signOf(this->inhomBase) < 0) side = -side;
  if (!this->savedCoordinates(side, result)) throw PrecisionException("transformation coord error");
}

template <class T, class F>
void Lattice<T, F>::checkConsistency(bool rebase, bool keepFile) {
  const ProgressScope scope(verb() == 2, "Lattice consistency checking / fixing ...");
  if (!rebase && this->TT.MN != 1) fail("In the non-aardal case TT.MN should always be == 1");
  const Matrix<T> U = this->unscaled(this->B);
  if (!settleTransformation(*this, U)) {
    this->restoreOrigin(this->rescaled(this->B_save));
    return;
  }
  const Matrix<T> W = this->transformedOrigin();
  // Where both agree the basis is left alone: no status is lost, no rounding comes in.
  if (W != U) this->assignAll(this->rescaled(W));
  if (rebase) this->rebase(W);
  if (!keepFile) writeLatFile();
}

#define LATBOX_INSTANTIATE(T)                                                                           \
  template bool Lattice<T, dbl_t>::coordinates(const Vector<T>&, Vector<T>&, bool, bool);               \
  template bool Lattice<T, dbl_t>::isMember(const Vector<T>&);                                          \
  template void Lattice<T, dbl_t>::transformationCoordinates(const Vector<T>&, Vector<T>&, bool, bool); \
  template void Lattice<T, dbl_t>::checkConsistency(bool, bool);
LATBOX_INSTANTIATE(dbl_t)
LATBOX_INSTANTIATE(QQ)

}  // namespace latbox
