#include "lattice/regula_falsi.h"

#include <iostream>

#include "lib/failure.h"
#include "numbers/number.h"

namespace latbox {

template <class T>
T regula_falsi(const std::function<T(const T&)>& f, const T& y, long limit) {
  T a(0);
  T b(1);
  T atA = f(a) - y;
  T atB = f(b) - y;
  if (atA * atB > T(0)) fail("f(a)*f(b) >= 0!");
  T x(1);
  for (long step = 0; step < limit; ++step) {
    // Both ends are a root.
    if (isExactZero(T(atB - atA))) return x;
    const T previous = x;
    x = fromDouble<T>(toDouble(T(a - (b - a) * atA / (atB - atA))));
    if (abs(T(x - previous)) <= T(EPS) * abs(x)) return x;
    const T atX = f(x) - y;
    if (atA * atX > T(0)) {
      a = x;
      atA = atX;
    } else {
      b = x;
      atB = atX;
    }
  }
  std::cerr << "*** regula_falsi: LOOP_LIMIT reached!" << std::endl;
  return x;
}

#define LATBOX_INSTANTIATE(T) template T regula_falsi(const std::function<T(const T&)>&, const T&, long);
LATBOX_INSTANTIATE(dbl_t)
LATBOX_INSTANTIATE(QQ)

}  // namespace latbox
