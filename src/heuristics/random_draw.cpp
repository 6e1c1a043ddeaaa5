#include "heuristics/random_draw.h"

#include <algorithm>
#include <cstdlib>

#include "lib/failure.h"
#include "numbers/number.h"

namespace latbox {
namespace {

// The greatest value of rand(), and the number of draws that a range may have beyond which one is too few.
constexpr long DRAW_MAX = 2147483647;
static_assert(RAND_MAX == DRAW_MAX);

}  // namespace

long rand_eq(long a, long b) {
  if (a == b) return b;
  long d = 0;
  if (__builtin_sub_overflow(b, a, &d) || d < 0) fail("invalid input for rand_eq");
  const int r = std::rand();
  const long x = static_cast<long>(floor(static_cast<dbl_t>(d) / static_cast<dbl_t>(DRAW_MAX) * r + 0.5L));
  if (d <= DRAW_MAX || x >= d) return a + x;
  // One draw reaches only every so-many-th integer of a range that wide; a second one fills the gaps.
  const long gap = static_cast<long>(floor(static_cast<dbl_t>(d - 1) / static_cast<dbl_t>(DRAW_MAX)));
  const long w = rand_eq(0L, gap);
  return a + (w > d - x ? d : x + w);
}

template <class T>
requires(!std::integral<T>) T rand_eq(const T& a, const T& b) {
  if (a == b) return b;
  const T d = b - a;
  if (signOf(d) < 0) fail("invalid input for rand_eq");
  const T r(static_cast<long>(std::rand()));
  return a + floor(d * r / T(DRAW_MAX) + T(1) / T(2));
}

template dbl_t rand_eq(const dbl_t&, const dbl_t&);
template QQ rand_eq(const QQ&, const QQ&);

}  // namespace latbox
