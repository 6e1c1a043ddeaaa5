// Matrices over dbl_t and QQ: an array of row vectors. M and MN are the row count, N the column count,
// rows the storage of the rows; rows and columns are numbered from 1. Row 0 exists as soon as a row does, has
// N elements and is scratch.
#pragma once

#include "numbers/vector.h"

namespace latbox {

template <class T>
class Matrix : public ConversionArray<Vector<T>>, public Serializable {
 public:
  using Array<Vector<T>>::MN;
  using Array<Vector<T>>::data;

  long& M = Array<Vector<T>>::MN;
  long N = 0;
  // A reference, so that it follows the storage wherever that moves.
  Vector<T>*& rows = Array<Vector<T>>::data;

  Matrix() = default;
  Matrix(long rowCount, long columnCount) { resizeZero(rowCount, columnCount); }
  // From its text form; a null pointer gives the empty matrix.
  explicit Matrix(const char* text);
  explicit Matrix(const std::string& text) : Matrix(text.c_str()) {}

  // The references must stay those of this object.
  Matrix(const Matrix& other) : ConversionArray<Vector<T>>(other), Serializable(other), N(other.N) {}
  Matrix(Matrix&& other) noexcept
      : ConversionArray<Vector<T>>(std::move(other)),
        Serializable(std::move(other)),
        N(std::exchange(other.N, 0)) {}
  Matrix& operator=(const Matrix& other) {
    ConversionArray<Vector<T>>::operator=(other);
    Serializable::operator=(other);
    N = other.N;
    return *this;
  }
  Matrix& operator=(Matrix&& other) noexcept {
    if (this == &other) return *this;
    ConversionArray<Vector<T>>::operator=(std::move(other));
    Serializable::operator=(std::move(other));
    N = std::exchange(other.N, 0);
    return *this;
  }
  ~Matrix() override = default;

  static Matrix zeros(long rowCount, long columnCount) { return Matrix(rowCount, columnCount); }
  static Matrix unit(long n);

  // Sets the shape: every row, row 0 included, gets `columnCount` elements. Nothing is cleared; whoever gains
  // a row or a column writes its zeros. Fails with "Matrix: invalid size".
  void resize(long rowCount, long columnCount);
  // resize, then all elements 0.
  void resizeZero(long rowCount, long columnCount);
  void setZero();
  void clear() override { resize(0, 0); }
  bool notEmpty() const override { return N > 0 && M > 0; }

  // Appends a row of N elements; the first row of a 0 x 0 matrix sets N. "Matrix row dimension mismatch".
  void append(Vector<T> row);

  // "[", a line end, each row and a line end, "]".
  void write(std::ostream& out) const override;
  // Leaves the matrix empty if no "[" comes next (and the stream failed at the end of the file). A row longer
  // than the first fails with "Matrix row dimension mismatch"; a shorter one passes and keeps its length.
  // Fails with "Matrix: bad stream", "Matrix: bad input".
  void read(std::istream& in) override;

  Vector<T> operator*(const Vector<T>& v) const;  // "Matrix: mat-vec multiplication dimension mismatch"
  Matrix operator*(const Matrix& B) const;        // "Matrix: dimension mismatch6"
  Matrix& operator*=(const Matrix& B);            // "Matrix: dimension mismatch3"
  Matrix operator*(const T& factor) const;
  Matrix& operator*=(const T& factor);
  Matrix transposed() const;

  // Same shape and all rows equal by the tolerance of Vector ==.
  bool operator==(const Matrix& B) const;
  bool operator!=(const Matrix& B) const { return !(*this == B); }

  // Exchanges two rows at the cost of a few pointers. One thread at a time.
  // "Matrix: row swap index out of range" unless both lie in 0..M.
  void swapRows(long i, long j);

  // "Matrix: a non-quadratic matrix determinant is not defined" unless M == N. In dbl_t the value carries
  // rounding; modular.h decides exactly.
  T determinant() const;

  // Takes shape and elements of a matrix of another number type through `convert(const U&) -> T`.
  template <class U, class Convert>
  void assignConverted(const Matrix<U>& other, Convert convert) {
    resize(other.M, other.N);
    for (long i = 1; i <= M; ++i) data[i].assignConverted(other.data[i], convert);
    this->converted = other.converted;
  }

 private:
  void readRow(std::istream& in);
};

// Sum of v[i] times row i, without the rows whose v[i] is exactly zero.
// "vector-matrix dimension mismatch" unless v.MN == A.M.
template <class T>
Vector<T> operator*(const Vector<T>& v, const Matrix<T>& A);

}  // namespace latbox
