// The one lock primitive of the system: a binary POSIX semaphore.
#pragma once

#include <semaphore.h>

#include <string>

namespace latbox {

class Semaphore {
 public:
  std::string lockOwner;  // who holds it by name; empty for a nameless holder
  std::string purpose;    // set by nobody

  Semaphore();
  ~Semaphore();  // fails with "SEM could not be destroyed" after an "ERRNO = " line
  // A lock is never shared by copying: each object has its own.
  Semaphore(const Semaphore&) = delete;
  Semaphore& operator=(const Semaphore&) = delete;

  // Waits for the semaphore and notes the holder. A signal that is handled meanwhile does not end the wait.
  void lock(const std::string& name);
  // Posts if `name` is empty or the holder's; otherwise nothing happens, so that a nested holder can pass a
  // name through and only its own unlock counts.
  void unlock(const std::string& name);

 private:
  sem_t* handle_;
};

// Holds a semaphore namelessly for the length of a scope, on an exception too.
class SemaphoreLock {
 public:
  explicit SemaphoreLock(Semaphore& semaphore) : semaphore_(semaphore) { semaphore_.lock(""); }
  ~SemaphoreLock() { semaphore_.unlock(""); }
  SemaphoreLock(const SemaphoreLock&) = delete;
  SemaphoreLock& operator=(const SemaphoreLock&) = delete;

 private:
  Semaphore& semaphore_;
};

}  // namespace latbox
