#include "model/check_vectors.h"

#include <cassert>
#include <limits>

#include "numbers/conversion.h"
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

}  // namespace

template <class T>
CheckVectors<T>::CheckVectors() : generatedLrtu(-infinity<T>(), infinity<T>()) {}

template <class T>
template <class U>
void CheckVectors<T>::convertFrom(const CheckVectors<U>& other) {
  convertValue(other.R, R);
  convertVector(other.lbnd, lbnd);
  convertVector(other.ubnd, ubnd);
  convertVector(other.lbndSaved, lbndSaved);
  convertVector(other.ubndSaved, ubndSaved);
  symmetricBounds = other.symmetricBounds;
  evenFrom = other.evenFrom;
  checkMode = other.checkMode;
  convertLoosely(other.normBound, normBound);
  convertVector(other.c, c);
  generatedTu = other.generatedTu;
  convertVector(other.generatedLx, generatedLx);
  convertVector(other.generatedRx, generatedRx);
  convertValue(other.generatedLrtu.left, generatedLrtu.left);
  convertValue(other.generatedLrtu.right, generatedLrtu.right);
}

template <class T>
void CheckVectors<T>::resizeCheckVectors(long dim) {
  for (Vector<T>* v : {&lbnd, &ubnd, &c}) v->resizeZero(dim);
  evenFrom = std::numeric_limits<long>::max();
}

template <class T>
void CheckVectors<T>::takeBounds(long mode) {
  assert(lbnd.MN == ubnd.MN && lbnd.MN == c.MN);
  lbndSaved = lbnd;
  ubndSaved = ubnd;
  symmetricBounds = true;
  for (long i = 1; i <= lbnd.MN; ++i)
    if (lbnd[i] != T(-ubnd[i])) symmetricBounds = false;
  checkMode = mode;
  computeNormBound();
  findEvenPart();
}

template <class T>
void CheckVectors<T>::findEvenPart() {
  evenFrom = lbnd.MN;
  const auto isEven = [this](long i) {
    return !isInfinite(ubnd[i]) && lbnd[i] == T(-ubnd[i]) && ubnd[i] == ubnd[ubnd.MN - 1];
  };
  while (evenFrom > 1 && isEven(evenFrom - 1)) --evenFrom;
}

template <class T>
void CheckVectors<T>::computeNormBound() {
  T lower(0), upper(0);
  for (long i = 1; i <= lbnd.MN; ++i) {
    if (isInfinite(lbnd[i]) || isInfinite(ubnd[i])) {
      normBound = infinity<T>();
      return;
    }
    lower += lbnd[i] * lbnd[i];
    upper += ubnd[i] * ubnd[i];
  }
  normBound = T(3) * (lower > upper ? lower : upper);
}

template struct CheckVectors<dbl_t>;
template struct CheckVectors<QQ>;
template void CheckVectors<dbl_t>::convertFrom(const CheckVectors<QQ>&);
template void CheckVectors<QQ>::convertFrom(const CheckVectors<dbl_t>&);

}  // namespace latbox
