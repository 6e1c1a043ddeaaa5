// The false position method for a monotonous function on [0, 1].
#pragma once

#include "lib/failure.h"
#include "numbers/number.h"

namespace latbox {

// x in [0, 1] with f(x) = y, to a relative step of EPS. Call it only when y lies between f(0) and f(1); fails
// with "f(a)*f(b) >= 0!" when both lie on one side. Warns with "regula_falsi: LOOP_LIMIT reached!" when it
// does not settle.
template <class T, class Function>
T regula_falsi(const Function& f, const T& y) {
  constexpr long LOOP_LIMIT = 1000000000;
  const T eps = fromDouble<T>(EPS);
  T a(0), b(1), x(1);
  T atA = f(a) - y;
  const T first = f(b) - y;
  T atB = first;
  if (signOf(atA) * signOf(atB) > 0) fail("f(a)*f(b) >= 0!");
  for (long loop = 0; loop < LOOP_LIMIT; ++loop) {
    const T before = x;
    x = a - (b - a) * atA / (atB - atA);
    if (abs(T(x - before)) <= eps * abs(x)) return x;
    const T atX = f(x) - y;
    if (signOf(atA) * signOf(atX) > 0) {
      a = x;
      atA = atX;
    } else {
      b = x;
      atB = atX;
    }
  }
  warn("regula_falsi: LOOP_LIMIT reached!");
  return x;
}

}  // namespace latbox
