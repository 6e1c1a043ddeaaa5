#include "lib/os/mutex_type.h"

#include <sstream>

namespace latbox {

template <class T>
T MutexType<T>::get() const {
  const SemaphoreLock guard(semaphore_);
  return value_;
}

template <class T>
void MutexType<T>::set(const T& value) {
  const SemaphoreLock guard(semaphore_);
  value_ = value;
}

template <class T>
void MutexType<T>::compareAndSetUnless(const T& newValue, const T& unlessValue) {
  const SemaphoreLock guard(semaphore_);
  if (value_ != unlessValue) value_ = newValue;
}

template <class T>
void MutexType<T>::write(std::ostream& out) const {
  out << get();
}

template <class T>
void MutexType<T>::read(std::istream& in) {
  std::string token;
  in >> token;
  T value{};
  std::istringstream(token) >> value;
  set(value);
}

template class MutexType<std::string>;
template class MutexType<long>;

}  // namespace latbox
