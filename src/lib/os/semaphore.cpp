#include "lib/os/semaphore.h"

#include <cerrno>
#include <cstring>
#include <iostream>

#include "lib/failure.h"

namespace latbox {

Semaphore::Semaphore() : handle_(new sem_t) {
  if (sem_init(handle_, 0, 1) == 0) return;
  delete handle_;
  handle_ = nullptr;
}

Semaphore::~Semaphore() {
  if (handle_ == nullptr) return;
  if (sem_destroy(handle_) != 0) {
    std::cerr << "ERRNO = " << std::strerror(errno);
    fail("SEM could not be destroyed");
  }
  delete handle_;
}

void Semaphore::lock(const std::string& name) {
  if (handle_ == nullptr) fail("No semaphore available for lock!");
  while (sem_wait(handle_) != 0) {
    // Interrupted by a handled signal: the wait goes on.
  }
  lockOwner = name;
}

void Semaphore::unlock(const std::string& name) {
  if (name.empty() || name == lockOwner) sem_post(handle_);
}

}  // namespace latbox
