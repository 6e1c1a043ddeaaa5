// Vectors that remember when they were found, and solutions as the .sol file shows them.
#pragma once

#include <string>

#include "numbers/vector.h"

namespace latbox {

// A vector with its time of discovery.
template <class T>
class TimeVector : public Vector<T> {
 public:
  // Seconds of run time at which the vector was found; -1 when unknown.
  long secondsUntilDiscovered = -1;

  using Vector<T>::Vector;
  TimeVector() = default;
  TimeVector(const Vector<T>& v) : Vector<T>(v) {}
  // Takes the elements and leaves the time.
  TimeVector& operator=(const Vector<T>& v) {
    Vector<T>::operator=(v);
    return *this;
  }
  void clear() override {
    Vector<T>::clear();
    secondsUntilDiscovered = -1;
  }
};

// A solution of this run in lattice coordinates, with the two norms that it was judged by.
template <class T>
class TargetVector : public TimeVector<T> {
 public:
  T targetNorm = T(0);
  T slackNorm = T(0);

  using TimeVector<T>::TimeVector;
  using TimeVector<T>::operator=;
  void clear() override {
    TimeVector<T>::clear();
    targetNorm = T(0);
    slackNorm = T(0);
  }
};

// A solution as the .sol file shows it: the variables as in the .opt file, fixed variables back in place.
template <class T>
class Star : public TimeVector<T> {
 public:
  Vector<T> targetValues;  // At x, one per target row
  T slackNorm = T(-1);     // -1: no targets were judged
  T targetNorm = T(0);
  std::string parameters;  // the run's parameters when it was found
  std::string version;     // the program version that found it

  using TimeVector<T>::TimeVector;
  using TimeVector<T>::operator=;
};

}  // namespace latbox
