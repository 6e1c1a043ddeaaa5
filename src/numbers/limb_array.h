// The storage of a big integer: Array<long long> with a small store inside the object.
//
// The interface and the growth rule are those of Array<T>, with two differences. `spare` counts as false
// whatever the caller passes: limbs are never appended one by one. And storage of up to SMALL elements lies
// in the object itself, so that numbers of few limbs never call the allocator: a sum of two small integers
// takes a few nanoseconds, which one allocation would multiply.
#pragma once

#include <algorithm>
#include <utility>

#include "lib/array.h"

namespace latbox {

template <>
class Array<long long> {
 public:
  static constexpr long SMALL = 7;  // highest element number of the in-object store

  long MN = 0;                // element count
  long long* data = nullptr;  // the in-object store or the heap; null before the first growth

  Array() = default;
  explicit Array(long n) { Array::resize(n, false); }
  Array(const Array& other) {
    if (other.onHeap())
      assign(other);
    else if (other.MN > 0)
      copyStore(other);
  }
  Array(Array&& other) noexcept { steal(other); }
  Array& operator=(const Array& other) {
    if (this != &other) assign(other);
    return *this;
  }
  Array& operator=(Array&& other) noexcept {
    if (this != &other) {
      release();
      steal(other);
    }
    return *this;
  }

  virtual void clear() { resize(0, false); }
  virtual ~Array() {
    MN = 0;
    release();
  }

  // Sets the element count; capacity grows to n + 1. Fails with "array: dimension < 0".
  virtual void resize(long n, bool spare) {
    static_cast<void>(spare);
    if (n > MN && n > capacity_) [[unlikely]]
      grow(n);
    else if (n < 0) [[unlikely]]
      fail("array: dimension < 0");
    MN = n;
  }
  virtual bool notEmpty() const { return MN > 0; }

  long capacity() const { return capacity_; }

  // 0 <= i <= MN, or it fails with "Array: index out of range".
  long long& operator[](long i) {
    check(i);
    return data[i];
  }
  const long long& operator[](long i) const {
    check(i);
    return data[i];
  }
  long long& first() {
    if (MN <= 0) fail("Array: index out of range");
    return data[1];
  }
  const long long& first() const { return const_cast<Array*>(this)->first(); }

  void swap(long i, long j) {
    if (i == j) return;
    if (i < 0 || i > MN || j < 0 || j > MN) fail("Array: swap index out of range");
    std::swap(data[i], data[j]);
  }

  // Takes element i out. 0 <= i <= MN, or it fails with "removeComponent: invalid index".
  void removeComponent(long i) {
    if (i < 0 || i > MN) fail("removeComponent: invalid index");
    if (i < MN) std::move(data + i + 1, data + MN + 1, data + i);
    resize(MN - 1, false);
  }

  // Puts `value` at position i. 0 <= i <= MN + 1, or it fails with "insertComponent: invalid index".
  void insertComponent(long i, long long value) {
    if (i < 0 || i > MN + 1) fail("insertComponent: invalid index");
    resize(MN + 1, false);
    std::move_backward(data + i, data + MN, data + MN + 1);
    data[i] = value;
  }

  void append(long long value) {
    resize(MN + 1, false);
    data[MN] = value;
  }

 protected:
  void check(long i) const {
    if (i < 0 || i > MN || data == nullptr) [[unlikely]]
      fail("Array: index out of range");
  }

 private:
  long capacity_ = 0;
  long long store_[SMALL + 1] = {};

  bool onHeap() const { return data != nullptr && data != store_; }

  void release() noexcept {
    if (onHeap()) delete[] data;
  }

  void grow(long n) {
    if (n < SMALL) {
      data = store_;
    } else {
      long long* fresh = new long long[static_cast<std::size_t>(n) + 2]();
      if (data != nullptr) {
        std::copy(data, data + std::min(MN, capacity_) + 1, fresh);
        release();
      }
      data = fresh;
    }
    capacity_ = n + 1;
  }

  // A copy of a number in its in-object store, into an object that has no storage yet.
  void copyStore(const Array& other) {
    MN = other.MN;
    capacity_ = std::min(MN + 1, SMALL);
    data = store_;
    std::copy(other.store_, other.store_ + SMALL + 1, store_);
  }

  void assign(const Array& other) {
    if (other.MN > capacity_) {
      MN = 0;
      Array::resize(other.MN, false);
    }
    MN = other.MN;
    if (other.data == nullptr || data == nullptr) return;
    if (!onHeap() && !other.onHeap())
      std::copy(other.store_, other.store_ + SMALL + 1, store_);  // of fixed length: a few wide moves
    else
      std::copy(other.data, other.data + MN + 1, data);
  }

  void steal(Array& other) noexcept {
    MN = std::exchange(other.MN, 0);
    capacity_ = std::exchange(other.capacity_, 0);
    if (other.onHeap()) {
      data = other.data;
    } else {
      data = other.data == nullptr ? nullptr : store_;
      if (data != nullptr) std::copy(other.store_, other.store_ + SMALL + 1, store_);
    }
    other.data = nullptr;
  }
};

}  // namespace latbox
