#include "heuristics/sample_bounds.h"

#include <algorithm>
#include <cmath>
#include <functional>

#include "lattice/regula_falsi.h"
#include "numbers/tolerance.h"

namespace latbox {
namespace {

constexpr dbl_t TWELFTH = 1.0L / 12;
constexpr dbl_t THIRD = 1.0L / 3;
constexpr dbl_t LN2 = 0.693147180559945309417232121458176568L;

// Margin within which floating point does not decide for the exact type.
constexpr dbl_t SCREEN_MARGIN = 1e-6L;

// The sum of x^(j - t) a[t] over t < j, by Horner's rule.
template <class T>
T fallOff(const Vector<T>& a, long j, const T& x) {
  long t = 1;
  while (t < j && isExactZero(a[t])) ++t;
  T sum(0);
  for (; t < j; ++t) {
    sum = (sum + a[t]) * x;
    shorten(sum);
  }
  return sum;
}

template <class T>
T sumOf(const Vector<T>& a, long first, long last) {
  T sum(0);
  for (long t = std::max(first, 1L); t <= last; ++t) sum += a[t];
  return sum;
}

// What does not fall off: sampleLength at x = 0.
template <class T>
T fixedLength(const Vector<T>& a, long j, long u, long m) {
  return fromDouble<T>(TWELFTH) * sumOf(a, j, m - u - 1) + fromDouble<T>(THIRD) * sumOf(a, m - u, m - 1) +
         a[m];
}

// Floating point's view of one estimate, which spares most positions the search for their root.
class SampleScreen {
 public:
  SampleScreen(const Vector<dbl_t>& a, long u, long m, dbl_t target)
      : a_(a), before_(m), fixed_(m), target_(target * (1 + SCREEN_MARGIN)) {
    for (long t = 1; t < m; ++t) before_[t + 1] = before_[t] + a[t];
    fixed_[m] = THIRD * sumOf(a, m - u, m - 1) + a[m];
    for (long j = m - 1; j >= 1; --j) fixed_[j] = fixed_[j + 1] + (j < m - u ? TWELFTH * a[j] : 0);
  }

  // False only if sampleBits at j is certainly not above `bits`, which is -2 or less; j >= 2.
  bool mayExceed(long j, dbl_t bits) const {
    if (TWELFTH * before_[j] + fixed_[j] <= target_) return true;
    if (fixed_[j] > target_) return false;
    const dbl_t x = std::exp2(4 * (bits + 2) / static_cast<dbl_t>(j * (j - 1))) * (1 - SCREEN_MARGIN);
    return TWELFTH * fallOff(a_, j, x) + fixed_[j] <= target_;
  }

 private:
  const Vector<dbl_t>& a_;
  Vector<dbl_t> before_;  // [j]: sum of a[t] over t < j
  Vector<dbl_t> fixed_;   // [j]: fixedLength at j
  dbl_t target_;
};

// A point of (0, 1] where sampleLength is above `target`, but at most twice as high. From 1 itself the false
// position would take as many steps as the value there is a multiple of the target.
template <class T>
dbl_t upperEnd(const Vector<T>& a, long j, const T& fixed, const T& target) {
  Vector<dbl_t> b(j);
  for (long t = 1; t < j; ++t) b[t] = toDouble(a[t]);
  const dbl_t y = toDouble(target) - toDouble(fixed);
  const auto length = [&](dbl_t x) { return TWELFTH * fallOff(b, j, x); };
  dbl_t low = 0;
  dbl_t high = 1;
  while (length(high) > 2 * y) {
    const dbl_t middle = (low + high) / 2;
    if (middle <= low || middle >= high) break;
    (length(middle) > y * (1 + SCREEN_MARGIN) ? high : low) = middle;
  }
  return high;
}

}  // namespace

template <class T>
T sampleLength(const Vector<T>& a, long j, long u, long m, const T& x) {
  return fromDouble<T>(TWELFTH) * fallOff(a, j, x) + fixedLength(a, j, u, m);
}

template <class T>
T sampleBits(const Vector<T>& a, long j, long u, long m, const T& target) {
  if (sampleLength(a, j, u, m, T(1)) <= target) return T(-1);
  const T fixed = fixedLength(a, j, u, m);
  if (fixed >= target) return T(-m);
  const T high = fromDouble<T>(upperEnd(a, j, fixed, target));
  const T twelfth = fromDouble<T>(TWELFTH);
  const auto length = [&](const T& part) {
    T x = high * part;
    shorten(x);
    return T(twelfth * fallOff(a, j, x) + fixed);
  };
  T x = high * regula_falsi<T>(length, target);
  shorten(x);
  if (signOf(x) <= 0) return T(-m);
  const dbl_t factor = static_cast<dbl_t>(j * (j - 1)) * 0.25L;
  return floor(T(fromDouble<T>(factor) * (log(x) / fromDouble<T>(LN2)) - T(1)));
}

template <class T, class F>
T sampleEstimate(const Lattice<T, F>& lattice, long u, long k, long m, const T& target) {
  Vector<F> lengths(m);
  for (long t = k; t <= m; ++t) lengths[t] = lattice.bstarSq[t];
  if (k < m - u) std::sort(lengths.data + k, lengths.data + (m - u), std::greater<F>());
  Vector<T> a(m);
  for (long t = k; t <= m; ++t) a[t] = fromDouble<T>(lengths[t]);
  const SampleScreen screen(lengths, u, m, toDouble(target));
  T e = sampleBits(a, k, u, m, target);
  // No position gives more than -1.
  for (long j = k + 1; j <= m - u && e < T(-1); ++j)
    if (screen.mayExceed(j, toDouble(e))) e = std::max(e, sampleBits(a, j, u, m, target));
  return e;
}

template <class T, class F>
long freeBound(const Lattice<T, F>& lattice, long k, long m) {
  if (k >= m) return k;
  const T target = fromDouble<T>(SAMPLE_DELTA * lattice.bstarSq[k]);
  for (long u = k; u < m; ++u) {
    const T e = sampleEstimate(lattice, u, k, m, target);
    if (T(0) - e <= T(u)) return u;
  }
  return m;
}

#define LATBOX_INSTANTIATE(T)                                            \
  template T sampleLength(const Vector<T>&, long, long, long, const T&); \
  template T sampleBits(const Vector<T>&, long, long, long, const T&);
LATBOX_INSTANTIATE(dbl_t)
LATBOX_INSTANTIATE(QQ)
LATBOX_BOTH_TYPES(sampleEstimate)
LATBOX_BOTH_TYPES(freeBound)

}  // namespace latbox
