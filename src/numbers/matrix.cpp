#include "numbers/matrix.h"

#include "lib/immortal.h"
#include "numbers/elimination.h"
#include "numbers/number.h"

namespace latbox {

template <class T>
Matrix<T>::Matrix(const char* text) {
  if (text == nullptr) return;
  std::istringstream in(text);
  read(in);
}

template <class T>
Matrix<T> Matrix<T>::unit(long n) {
  Matrix result(n, n);
  for (long i = 1; i <= n; ++i) result.data[i].data[i] = T(1);
  return result;
}

template <class T>
void Matrix<T>::resize(long rowCount, long columnCount) {
  if (rowCount < 0 || columnCount < 0) fail("Matrix: invalid size");
  Array<Vector<T>>::resize(rowCount, true);
  N = columnCount;
  if (data == nullptr) return;
  for (long i = 0; i <= rowCount; ++i) data[i].resize(columnCount, true);
}

template <class T>
void Matrix<T>::resizeZero(long rowCount, long columnCount) {
  resize(rowCount, columnCount);
  setZero();
}

template <class T>
void Matrix<T>::setZero() {
  for (long i = 1; i <= M; ++i) data[i].setZero();
}

template <class T>
void Matrix<T>::append(Vector<T> row) {
  if (M == 0 && N == 0) {
    N = row.MN;
  } else if (row.MN != N) {
    fail("Matrix row dimension mismatch");
  }
  Array<Vector<T>>::append(std::move(row));
  data[0].resize(N, false);
}

template <class T>
void Matrix<T>::write(std::ostream& out) const {
  out << "[\n";
  for (long i = 1; i <= M; ++i) out << data[i] << '\n';
  out << ']';
}

template <class T>
void Matrix<T>::read(std::istream& in) {
  clear();
  if (in.fail()) fail("Matrix: bad stream");
  skipSpaceAndComments(in);
  const int opener = nextCharacter(in);
  if (opener != '[') {
    if (opener == std::char_traits<char>::eof()) in.setstate(std::ios::failbit | std::ios::eofbit);
    return;
  }
  takeCharacter(in);
  skipSpaceAndComments(in);
  while (nextCharacter(in) != ']') {
    readRow(in);
    skipSpaceAndComments(in);
  }
  takeCharacter(in);
  if (N == 0) {
    clear();
  } else {
    data[0].resize(N, false);
  }
}

// Adds one row and leaves the earlier ones alone, so that a short row keeps its length. A text that does not
// go on with "[" would never advance: it ends here.
template <class T>
void Matrix<T>::readRow(std::istream& in) {
  if (nextCharacter(in) != '[') fail("Matrix: bad input");
  this->reserve(M + 1);
  Array<Vector<T>>::resize(M + 1, true);
  Vector<T>& row = data[M];
  row.reserve(N);
  row.read(in);
  if (in.fail()) fail("Matrix: bad input");
  if (row.MN <= N) return;
  if (N != 0) fail("Matrix row dimension mismatch");
  N = row.MN;
}

template <class T>
Vector<T> Matrix<T>::operator*(const Vector<T>& v) const {
  if (N != v.MN) fail("Matrix: mat-vec multiplication dimension mismatch");
  Vector<T> result(M);
  for (long i = 1; i <= M; ++i) result.data[i] = data[i] * v;
  return result;
}

template <class T>
Vector<T> operator*(const Vector<T>& v, const Matrix<T>& A) {
  if (v.MN != A.M) fail("vector-matrix dimension mismatch");
  Vector<T> result = Vector<T>::zeros(A.N);
  for (long i = 1; i <= A.M; ++i)
    if (!isExactZero(v.data[i])) result.addMultiple(v.data[i], A.data[i]);
  return result;
}

// Row by row of B, which lies in storage in that order; each element is still summed from 1 upward.
template <class T>
Matrix<T> Matrix<T>::operator*(const Matrix& B) const {
  if (N != B.M) fail("Matrix: dimension mismatch6");
  Matrix result(M, B.N);
  for (long i = 1; i <= M; ++i)
    for (long k = 1; k <= N; ++k)
      // Transformations are sparse: a zero adds nothing, and skipping it keeps the order of the sums.
      if (!isExactZero(data[i].data[k])) result.data[i].addMultiple(data[i].data[k], B.data[k]);
  return result;
}

template <class T>
Matrix<T>& Matrix<T>::operator*=(const Matrix& B) {
  if (N != B.M) fail("Matrix: dimension mismatch3");
  return *this = *this * B;
}

template <class T>
Matrix<T>& Matrix<T>::operator*=(const T& factor) {
  const T fixed(factor);
  for (long i = 1; i <= M; ++i) data[i] *= fixed;
  return *this;
}

template <class T>
Matrix<T> Matrix<T>::operator*(const T& factor) const {
  Matrix result(*this);
  result *= factor;
  return result;
}

template <class T>
Matrix<T> Matrix<T>::transposed() const {
  Matrix result(N, M);
  for (long i = 1; i <= M; ++i)
    for (long j = 1; j <= data[i].MN; ++j) result.data[j].data[i] = data[i].data[j];
  return result;
}

template <class T>
bool Matrix<T>::operator==(const Matrix& B) const {
  if (M != B.M || N != B.N) return false;
  for (long i = 1; i <= M; ++i)
    if (data[i].MN != B.data[i].MN || data[i] != B.data[i]) return false;
  return true;
}

template <class T>
void Matrix<T>::swapRows(long i, long j) {
  if (i < 0 || i > M || j < 0 || j > M) fail("Matrix: row swap index out of range");
  if (i == j) return;
  static Immortal<Vector<T>> scratch;
  Vector<T>& temporary = *scratch;
  temporary = std::move(data[i]);
  data[i] = std::move(data[j]);
  data[j] = std::move(temporary);
}

template <class T>
T Matrix<T>::determinant() const {
  if (M != N) fail("Matrix: a non-quadratic matrix determinant is not defined");
  Matrix work(*this);
  Matrix companion(M, 0);
  const long signedPivots = forwardEliminate(work, companion, true);
  if (signedPivots == 0) return T(0);
  T result(signedPivots < 0 ? -1 : 1);
  for (long i = 1; i <= M; ++i) result *= work.data[i].data[i];
  return result;
}

template class Matrix<dbl_t>;
template class Matrix<QQ>;
template Vector<dbl_t> operator*(const Vector<dbl_t>& v, const Matrix<dbl_t>& A);
template Vector<QQ> operator*(const Vector<QQ>& v, const Matrix<QQ>& A);

}  // namespace latbox
