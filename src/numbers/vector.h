// Vectors over long, dbl_t and QQ, numbered from 1.
//
// Every operator of two vectors requires equal MN and fails with its own text otherwise. The element loops
// run over the storage directly after that one test. Definitions that are not inline stand in vector.cpp,
// instantiated for the three element types.
#pragma once

#include "numbers/serializable_array.h"

namespace latbox {

// sum += a * b and sum -= a * b, in place where the type can: an exact number then keeps its storage.
template <class T>
void addProduct(T& sum, const T& a, const T& b) {
  if constexpr (requires { T::addmul(sum, a, b); }) {
    T::addmul(sum, a, b);
  } else {
    sum += a * b;
  }
}
template <class T>
void subtractProduct(T& sum, const T& a, const T& b) {
  if constexpr (requires { T::submul(sum, a, b); }) {
    T::submul(sum, a, b);
  } else {
    sum -= a * b;
  }
}

template <class T>
class Vector : public SerializableArray<T> {
 public:
  using Array<T>::MN;
  using Array<T>::data;

  Vector() = default;
  explicit Vector(long n) : SerializableArray<T>(n) {}
  explicit Vector(int n) : SerializableArray<T>(static_cast<long>(n)) {}
  // From its text form; a null pointer gives the empty vector.
  explicit Vector(const char* text);
  explicit Vector(const std::string& text) : Vector(text.c_str()) {}

  static Vector zeros(long n) {
    Vector result;
    result.resizeZero(n);
    return result;
  }

  // resize that writes zeros into all n elements; for those who gain components.
  void resizeZero(long n) {
    this->resize(n, false);
    setZero();
  }
  // In place: no storage moves.
  void setZero() {
    for (long i = 1; i <= MN; ++i) data[i] = T();
  }

  // "[ ", each element and a blank, "]".
  void write(std::ostream& out) const override;
  // Leaves the vector empty if no "[" comes next (and the stream failed at the end of the file). Elements are
  // numbers and "inf" with an optional "-". Throws ReadException("Vector: bad stream") on a failed stream;
  // fails with "Vector: bad input", "Vector: bad input2", "Vector: bad input3".
  void read(std::istream& in) override;

  Vector& operator+=(const Vector& v) {
    requireSame(v, "Vector: dimension mismatch1");
    for (long i = 1; i <= MN; ++i) data[i] += v.data[i];
    return *this;
  }
  Vector& operator-=(const Vector& v) {
    requireSame(v, "Vector: dimension mismatch2");
    for (long i = 1; i <= MN; ++i) data[i] -= v.data[i];
    return *this;
  }
  Vector& operator*=(const Vector& v);  // element by element; "Vector: dimension mismatch3"
  Vector& operator/=(const Vector& v);  // element by element; "Vector: dimension mismatch4"
  Vector& operator*=(const T& factor);
  Vector& operator/=(const T& divisor);

  // this -= q * v and this += q * v, from component `from` on, without a temporary vector: the inner loops of
  // reduction. "Vector: dimension mismatch2", "Vector: dimension mismatch1".
  void subtractMultiple(const T& q, const Vector& v, long from = 1) {
    requireSame(v, "Vector: dimension mismatch2");
    for (long i = from; i <= MN; ++i) subtractProduct(data[i], q, v.data[i]);
  }
  void addMultiple(const T& q, const Vector& v, long from = 1) {
    requireSame(v, "Vector: dimension mismatch1");
    for (long i = from; i <= MN; ++i) addProduct(data[i], q, v.data[i]);
  }

  Vector operator+(const Vector& v) const;  // "Vector: dimension mismatch5"
  Vector operator-(const Vector& v) const;  // "Vector: dimension mismatch6"
  Vector operator-() const;
  Vector operator*(const T& factor) const;
  Vector operator/(const T& divisor) const;

  // Dot product, summed from element 1 upward in T. "Vector: dimension mismatch8".
  T operator*(const Vector& v) const {
    requireSame(v, "Vector: dimension mismatch8");
    T sum = T();
    for (long i = 1; i <= MN; ++i) addProduct(sum, data[i], v.data[i]);
    return sum;
  }

  // Equal element by element, exactly or by an amount for which isZero holds; infinities are compared before
  // they are subtracted. "Vector: dimension mismatch9".
  bool operator==(const Vector& v) const;
  bool operator!=(const Vector& v) const { return !(*this == v); }
  // No element less (greater) than its partner, exactly. "Vector: dimension mismatch10" and "11".
  bool operator>=(const Vector& v) const;
  bool operator<=(const Vector& v) const;

  // Prints "( ", the elements from..to with a blank each, ")" and a line end on standard output.
  // "Vector: dimension mismatch12" unless 1 <= from <= to <= MN.
  void print(long from, long to) const;

 private:
  void requireSame(const Vector& v, const char* message) const {
    if (MN != v.MN) [[unlikely]]
      fail(message);
  }
};

template <class T>
Vector<T> operator*(const T& factor, const Vector<T>& v) {
  return v * factor;
}

// Equal shape and elements; vectors of different lengths differ.
template <class T>
bool sameVector(const Vector<T>& a, const Vector<T>& b) {
  return a.MN == b.MN && a == b;
}

// Each element rounded through the library's round at double width: a known narrowing of the value.
Vector<dbl_t> round(const Vector<dbl_t>& v);

}  // namespace latbox
