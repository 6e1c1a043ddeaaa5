// The 1-based array under every container of the system.
//
// Valid elements are numbered 1 to MN. Element 0 exists once there is storage; by convention it carries
// nothing, and some routines use it as scratch. Storage grows and is never released by a smaller size, and no
// element is cleared: shrinking and growing again shows the old contents. Whoever gains a row or a component
// writes its zeros.
#pragma once

#include <algorithm>
#include <limits>
#include <new>
#include <type_traits>
#include <utility>

#include "lib/failure.h"

namespace latbox {

template <class T>
class Array {
 public:
  long MN = 0;        // element count
  T* data = nullptr;  // capacity + 1 elements, or null before the first growth

  Array() = default;
  explicit Array(long n) { Array::resize(n, false); }
  Array(const Array& other) { assign(other); }
  Array(Array&& other) noexcept { steal(other); }
  Array& operator=(const Array& other) {
    if (this != &other) assign(other);
    return *this;
  }
  Array& operator=(Array&& other) noexcept {
    if (this != &other) {
      delete[] data;
      steal(other);
    }
    return *this;
  }

  virtual void clear() { resize(0, false); }
  virtual ~Array() {
    MN = 0;
    delete[] data;
  }

  // Sets the element count. `spare` reserves 100 elements beyond `n` instead of one, for appenders.
  // Fails with "array: dimension < 0".
  virtual void resize(long n, bool spare) {
    if (n < 0) fail("array: dimension < 0");
    if (n > MN && n > capacity_) grow(n, spare);
    MN = n;
  }
  virtual bool notEmpty() const { return MN > 0; }

  // Room for n elements without a change of MN: half as much again as n where storage must grow, so that a
  // reader that appends one element at a time stays linear in a text of millions.
  void reserve(long n) {
    if (n > capacity_) growTo(n + n / 2);
  }

  long capacity() const { return capacity_; }

  // The checked access that the whole system runs with: 0 <= i <= MN, so element 0 passes.
  T& operator[](long i) {
    check(i);
    return data[i];
  }
  const T& operator[](long i) const {
    check(i);
    return data[i];
  }
  T& first() {
    if (MN <= 0) fail("Array: index out of range");
    return data[1];
  }
  const T& first() const { return const_cast<Array*>(this)->first(); }

  // Exchanges two elements through one static temporary, so that no storage is allocated per exchange.
  // One thread at a time.
  void swap(long i, long j) {
    if (i == j) return;
    if (i < 0 || i > MN || j < 0 || j > MN) fail("Array: swap index out of range");
    // Never destroyed: exit() may run in one thread while another still exchanges.
    static T& temporary = *new T();
    temporary = std::move(data[i]);
    data[i] = std::move(data[j]);
    data[j] = std::move(temporary);
  }

  // Takes element i out; the ones above move down a place. 0 <= i <= MN.
  void removeComponent(long i) {
    if (i < 0 || i > MN) fail("removeComponent: invalid index");
    if (i < MN) std::move(data + i + 1, data + MN + 1, data + i);
    resize(MN - 1, false);
  }

  // Puts `value` at position i; the ones from i on move up a place. 0 <= i <= MN + 1.
  void insertComponent(long i, const T& value) {
    if (i < 0 || i > MN + 1) fail("insertComponent: invalid index");
    T copy(value);
    resize(MN + 1, true);
    std::move_backward(data + i, data + MN, data + MN + 1);
    data[i] = std::move(copy);
  }

  // Appends one element, which may be one of this array's own.
  void append(T value) {
    resize(MN + 1, true);
    data[MN] = std::move(value);
  }

 protected:
  long capacity_ = 0;  // highest element number that the storage can hold

  void check(long i) const {
    if (i < 0 || i > MN || data == nullptr) [[unlikely]]
      fail("Array: index out of range");
  }

 private:
  void grow(long n, bool spare) {
    if (n > std::numeric_limits<long>::max() / 2) throw std::bad_array_new_length();
    growTo(n + (spare ? 100 : 1));
  }

  void growTo(long wanted) {
    T* fresh = new T[static_cast<std::size_t>(wanted) + 1]();
    if (data != nullptr) {
      std::move(data, data + std::min(MN, capacity_) + 1, fresh);
      delete[] data;
    }
    data = fresh;
    capacity_ = wanted;
  }

  // Reuses the storage where it is large enough: the whole-lattice copy before each step lives on this.
  void assign(const Array& other) {
    if (other.MN > capacity_) {
      delete[] data;
      data = nullptr;
      capacity_ = 0;
      MN = 0;
      Array::resize(other.MN, false);
    }
    MN = other.MN;
    if (other.data != nullptr && data != nullptr) std::copy(other.data, other.data + MN + 1, data);
  }

  void steal(Array& other) noexcept {
    MN = std::exchange(other.MN, 0);
    data = std::exchange(other.data, nullptr);
    capacity_ = std::exchange(other.capacity_, 0);
  }
};

// An array that can be filled from an array of another element type through the element's own conversion.
template <class T>
class ConversionArray : public Array<T> {
 public:
  bool converted = false;  // travels with the object; decides nothing

  using Array<T>::Array;

  // Element by element through `convert(const U&) -> T`; element 0 is left alone.
  template <class U, class Convert>
  void assignConverted(const ConversionArray<U>& other, Convert convert) {
    this->resize(other.MN, false);
    for (long i = 1; i <= other.MN; ++i) this->data[i] = convert(other.data[i]);
    converted = other.converted;
  }
};

}  // namespace latbox
