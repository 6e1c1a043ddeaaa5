// How trimming moves a weight: by steps within a limit that grows slowly, never through 0, and back to all
// ones when it has grown beyond use.
#include <algorithm>

#include "heuristics/random_draw.h"
#include "lattice/lattice.h"
#include "lattice/scale_limit.h"
#include "numbers/number.h"

namespace latbox {
namespace {

constexpr long WEIGHT_CEILING = 1000000;

template <class T>
T clamped(const T& step, const T& down, const T& up) {
  if (step < down) return down;
  return step > up ? up : step;
}

}  // namespace

// The sign of a weight is immaterial for the lattice, and turns the reduction in another direction at no
// cost.
template <class T, class F>
T Lattice<T, F>::randomSign(const T& value) {
  return rand_eq(0L, 1L) == 0 ? value : T(-value);
}

template <class T, class F>
void Lattice<T, F>::noteStep(long p, const T& step) {
  const T count(stepCount[p]);
  stepAverage[p] = (stepAverage[p] * count + step) / (count + T(1));
  ++stepCount[p];
}

template <class T, class F>
bool Lattice<T, F>::normalizeScales(long p) {
  const T one(1);
  for (long i = 1; i <= dim; ++i)
    if (i != p && abs(scaleFactor[i]) <= one) return false;
  for (long i = 1; i <= dim; ++i) {
    if (i == p) continue;
    const T step = scaleFactor[i] > one ? T(-one) : one;
    setScale(i, scaleFactor[i] + step);
    // The steps count for p, whose relative weight they move: a rule of this design.
    noteStep(p, step);
  }
  return true;
}

template <class T, class F>
void Lattice<T, F>::scaleStep(long p, const T& step) {
  if (isExactZero(step)) fail("zero step inconsistency");
  const T zero(0), old = scaleFactor[p], limit = scaleLimit<T>();
  const T outward = old < zero ? T(-step) : step;
  const T up = std::max(T(limit - old), zero);
  const T down = std::min(T(-limit - old), zero);
  T d = clamped(outward, down, up);
  if (isExactZero(d)) {
    d = outward;  // beyond the limit, which is dealt with below
  } else if (isExactZero(T(old + d))) {
    d += d > zero ? T(1) : T(-1);
  }
  const T value = randomSign(old + d);
  if (d < down || d > up) {
    scaleBeyondLimit(p, value, d);
    return;
  }
  setScale(p, value);
  noteStep(p, d);
}

template <class T, class F>
void Lattice<T, F>::scaleBeyondLimit(long p, const T& value, const T& step) {
  if (normalizeScales(p)) return;
  const T magnitude = abs(value);
  if (magnitude >= T(WEIGHT_CEILING)) {
    resetScales(true, false);
    return;
  }
  scaleLimit<T>() = magnitude;
  setScale(p, value);
  noteStep(p, step);
}

#define LATBOX_INSTANTIATE(T)                                 \
  template T Lattice<T, dbl_t>::randomSign(const T&);         \
  template void Lattice<T, dbl_t>::noteStep(long, const T&);  \
  template bool Lattice<T, dbl_t>::normalizeScales(long);     \
  template void Lattice<T, dbl_t>::scaleStep(long, const T&); \
  template void Lattice<T, dbl_t>::scaleBeyondLimit(long, const T&, const T&);
LATBOX_INSTANTIATE(dbl_t)
LATBOX_INSTANTIATE(QQ)

}  // namespace latbox
