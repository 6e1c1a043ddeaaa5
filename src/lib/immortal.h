// An object of static lifetime that is never destroyed: exit() may run while other threads still use it.
#pragma once

#include <cstddef>
#include <new>

namespace latbox {

// As a static variable. The object lies in storage of the variable's own, so that the handler of a signal may
// be the first to ask for it where T's constructor allocates nothing.
template <class T>
class Immortal {
 public:
  Immortal() { ::new (static_cast<void*>(storage_)) T; }
  Immortal(const Immortal&) = delete;
  Immortal& operator=(const Immortal&) = delete;

  T& operator*() { return *std::launder(reinterpret_cast<T*>(storage_)); }

 private:
  alignas(T) std::byte storage_[sizeof(T)];
};

}  // namespace latbox
