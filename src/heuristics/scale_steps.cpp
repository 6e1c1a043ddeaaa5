#include "heuristics/scale_steps.h"

#include <algorithm>

#include "heuristics/random_draw.h"
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
template <class T>
T randomSign(const T& value) {
  return rand_eq(0L, 1L) == 0 ? value : T(-value);
}

template <class T, class F>
bool normalizeScales(Lattice<T, F>& l, long p) {
  const T one(1);
  for (long i = 1; i <= l.dim; ++i)
    if (i != p && abs(l.scaleFactor[i]) <= one) return false;
  for (long i = 1; i <= l.dim; ++i) {
    if (i == p) continue;
    const T step = l.scaleFactor[i] > one ? T(-one) : one;
    l.setScale(i, l.scaleFactor[i] + step);
    // Against all others it is the weight of p that moves, so its mean takes the step. Only the state shows
    // it: nothing is decided by the mean.
    l.noteStep(p, step);
  }
  return true;
}

namespace {

template <class T, class F>
void scaleBeyondLimit(Lattice<T, F>& l, long p, const T& value, const T& step) {
  if (normalizeScales(l, p)) return;
  const T magnitude = abs(value);
  if (magnitude >= T(WEIGHT_CEILING)) {
    l.resetScales(true, false);
    return;
  }
  l.search.scaleLimit = magnitude;
  l.setScale(p, value);
  l.noteStep(p, step);
}

}  // namespace

template <class T, class F>
void scaleStep(Lattice<T, F>& l, long p, const T& step) {
  if (isExactZero(step)) fail("zero step inconsistency");
  const T zero(0), old = l.scaleFactor[p], limit = l.search.scaleLimit;
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
    scaleBeyondLimit(l, p, value, d);
    return;
  }
  l.setScale(p, value);
  l.noteStep(p, d);
}

template dbl_t randomSign(const dbl_t&);
template QQ randomSign(const QQ&);
LATBOX_BOTH_TYPES(normalizeScales)
LATBOX_BOTH_TYPES(scaleStep)

}  // namespace latbox
