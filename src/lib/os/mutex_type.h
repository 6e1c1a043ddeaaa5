// A value that several threads share. A caller never holds a reference into it.
#pragma once

#include <istream>
#include <ostream>
#include <string>

#include "lib/os/semaphore.h"
#include "lib/serializable.h"

namespace latbox {

// Instantiated for std::string and long.
template <class T>
class MutexType : public Serializable {
 public:
  MutexType() = default;
  explicit MutexType(const T& value) : value_(value) {}
  // The value crosses by get and set; the semaphore stays each object's own.
  MutexType(const MutexType& other) : Serializable(other), value_(other.get()) {}
  MutexType& operator=(const MutexType& other) {
    if (this != &other) set(other.get());
    return *this;
  }

  void lock(const std::string& name) const { semaphore_.lock(name); }
  void unlock(const std::string& name) const { semaphore_.unlock(name); }

  T get() const;
  void set(const T& value);
  // Sets the value unless it is `unlessValue`.
  void compareAndSetUnless(const T& newValue, const T& unlessValue);

  // The current value, read under the lock.
  void write(std::ostream& out) const override;
  // One token delimited by white space, stored under the lock.
  void read(std::istream& in) override;

  bool operator==(const MutexType& other) const { return this == &other || get() == other.get(); }

 private:
  mutable Semaphore semaphore_;
  T value_{};
};

}  // namespace latbox
