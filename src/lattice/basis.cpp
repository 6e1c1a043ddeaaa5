#include "lattice/basis.h"

#include <algorithm>
#include <cassert>
#include <utility>

#include "lattice/row_operation.h"
#include "numbers/conversion.h"
#include "numbers/number.h"

namespace latbox {

template <class T>
template <class U>
void Basis<T>::convertFrom(const Basis<U>& other) {
  s_.rank = other.rank;
  s_.dim = other.dim;
  s_.TT.resize(other.TT.MN, false);
  for (long i = 1; i <= s_.TT.MN; ++i) convertMatrix(other.TT[i], s_.TT[i]);
  convertMatrix(other.B_save, s_.B_save);
  convertMatrix(other.B, s_.B);
  s_.coordSolver.clear();
  s_.status = other.status;
  s_.marked = s_.rank;
  s_.blended = other.blended;
}

template <class T>
void Basis<T>::resize(long newRank, long newDim) {
  s_.rank = newRank;
  s_.dim = newDim;
  s_.B.resizeZero(newRank, newDim);
  s_.B_save.resizeZero(newRank, newDim);
  s_.TT.resize(0, false);
  s_.status.resize(newRank, false);
  s_.blended = false;
  s_.marked = newRank;
  clearStatus();
  s_.coordSolver.clear();
}

template <class T>
void Basis<T>::setOrigin(const Matrix<T>& unit, const Matrix<T>& weighted) {
  assert(unit.M == weighted.M && unit.N == weighted.N);
  s_.rank = unit.M;
  s_.dim = unit.N;
  s_.B_save = unit;
  s_.B = weighted;
  s_.status.resize(s_.rank, false);
  s_.blended = false;
  s_.marked = s_.rank;
  clearStatus();
  s_.coordSolver.clear();
  s_.TT.resize(0, false);
  newTransformation(false);
}

template <class T>
void Basis<T>::swap(long i, long j, bool keepMarks) {
  assert(i != j && i >= 0 && i <= s_.rank && j >= 0 && j <= s_.rank);
  s_.B.swapRows(i, j);
  if (recording()) transformation().swapRows(i, j);
  std::swap(s_.status[i], s_.status[j]);
  s_.marked = std::max({s_.marked, i, j});
  s_.coordSolver.dropCurrent();
  // A vector that comes in from the scratch row (j = 0) leaves nothing of before.
  if (!keepMarks) invalidateFrom(i == 0 ? j : std::min(i, j));
}

template <class T>
void Basis<T>::recordSwap(long i, long j) {
  if (!recording()) transformation().swapRows(i, j);
}

template <class T>
void Basis<T>::subtract(long i, const T& q, long j) {
  assert(i != j && i >= 1 && i <= s_.rank && j >= 1 && j <= s_.rank);
  invalidateFrom(i);
  s_.coordSolver.dropCurrent();
  subtractChecked(s_.B.rows[i], q, s_.B.rows[j]);
  if (recording()) subtractChecked(transformation().rows[i], q, transformation().rows[j]);
}

template <class T>
void Basis<T>::replace(long p, const Vector<T>& x, long first, long last) {
  assert(first >= 1 && first <= p && p <= last && last <= s_.rank && abs(x[p]) == T(1));
  invalidateFrom(p);
  s_.coordSolver.dropCurrent();
  if (x[p] == T(-1)) {
    s_.B.rows[p] *= T(-1);
    if (recording()) transformation().rows[p] *= T(-1);
  }
  for (long i = first; i <= last; ++i)
    if (i != p && !isExactZero(x[i])) subtract(p, T(-x[i]), i);
}

template <class T>
const Vector<T>& Basis<T>::combine(const Vector<T>& x, long first, long last) {
  assert(first >= 1 && last <= s_.rank && last <= x.MN);
  Vector<T>& row = s_.B.rows[0];
  row.resize(s_.dim, false);
  row.setZero();
  for (long i = first; i <= last; ++i)
    if (!isExactZero(x[i])) subtractChecked(row, T(-x[i]), s_.B.rows[i]);
  return row;
}

template <class T>
void Basis<T>::recordCombined(const Vector<T>& x, long first, long last) {
  if (!recording()) return;
  Vector<T>& row = transformation().rows[0];
  row.resize(transformation().N, false);
  row.setZero();
  for (long i = first; i <= last; ++i)
    if (!isExactZero(x[i])) row.addMultiple(x[i], transformation().rows[i]);
}

// Row 0, which is scratch, keeps its storage.
template <class T>
void Basis<T>::takeRows(const Matrix<T>& weighted) {
  if (s_.B.M != weighted.M || s_.B.N != weighted.N) s_.B.resize(weighted.M, weighted.N);
  for (long i = 1; i <= weighted.M; ++i) s_.B.rows[i] = weighted.rows[i];
}

template <class T>
void Basis<T>::assignAll(const Matrix<T>& weighted) {
  s_.coordSolver.dropCurrent();
  takeRows(weighted);
  clearStatus();
}

template <class T>
void Basis<T>::reweigh(const Matrix<T>& weighted) {
  assert(weighted.M == s_.rank && weighted.N == s_.dim);
  takeRows(weighted);
  clearStatus();
}

template <class T>
void Basis<T>::restoreDigits(const Matrix<T>& unit, const Matrix<T>& weighted) {
  s_.B_save = unit;
  s_.coordSolver.clear();
  takeRows(weighted);
}

template <class T>
void Basis<T>::setStatusBits(long i, short bits) {
  if (s_.status[i] == STATUS_DEPENDENT) s_.status.data[i] = 0;
  s_.status.data[i] = static_cast<short>(s_.status.data[i] | bits);
  s_.marked = std::max(s_.marked, i);
}

template <class T>
void Basis<T>::setDependent(long i) {
  s_.status[i] = STATUS_DEPENDENT;
  s_.marked = std::max(s_.marked, i);
}

template <class T>
void Basis<T>::clearStatus() {
  for (long i = 1; i <= s_.status.MN; ++i) s_.status.data[i] = 0;
  s_.marked = 0;
}

// Each row operation comes here, and a row is reduced by many in turn: what has been cleared is not visited
// again.
template <class T>
void Basis<T>::invalidateFrom(long from) {
  long last = std::max(from, 1L) - 1;
  for (long p = last + 1; p <= std::min(s_.marked, s_.rank); ++p) {
    const bool stays = p > 1 && s_.blended && s_.status.data[p] == STATUS_DEPENDENT;
    if (stays)
      last = p;
    else
      s_.status.data[p] = 0;
  }
  s_.marked = std::min(s_.marked, last);
  assert(noMarkBehind(s_.marked));
}

template <class T>
bool Basis<T>::noMarkBehind(long last) const {
  for (long i = last + 1; i <= s_.rank; ++i)
    if (s_.status.data[i] != 0) return false;
  return true;
}

// The two factorisations share their matrices and resize them to the rows they are asked for. So where one of
// them starts, no row from there on is a valid row of either.
template <class T>
void Basis<T>::forgetFactorisation(long first) {
  constexpr short marks = (STATUS_FULL | STATUS_LQ) & ~STATUS_GSO;
  for (long i = first; i <= s_.rank; ++i) s_.status.data[i] = static_cast<short>(s_.status.data[i] & ~marks);
}

template <class T>
void Basis<T>::setBlended(bool on) {
  s_.blended = on;
}

template <class T>
void Basis<T>::forgetDerived() {
  s_.coordSolver.dropCurrent();
  clearStatus();
}

template class Basis<dbl_t>;
template class Basis<QQ>;
template void Basis<dbl_t>::convertFrom(const Basis<QQ>&);
template void Basis<QQ>::convertFrom(const Basis<dbl_t>&);

}  // namespace latbox
