// The hot loop of a walk. Everything stands in a nameless namespace: the files that include this are compiled
// for different processors, and what one of them makes must never be taken for another's.
//
// Sums are formed in one order everywhere, and no product is added unrounded, so that a walk visits the same
// nodes on every processor.
#pragma once

#include "complete/tree/walk_data.h"

namespace latbox::complete {
namespace {

// GCC's vectors become what the processor has: one register or several.
using Floats = float __attribute__((vector_size(LANES * sizeof(float))));
using Bits = int __attribute__((vector_size(LANES * sizeof(int))));
using Doubles = double __attribute__((vector_size(PRODUCT_LANES * sizeof(double))));

// to = from + a g; returns the sum of the sizes of the entries.
inline float addScaled(float* __restrict to, const float* from, const float* g, float a, std::size_t size) {
  const Bits withoutSign = Bits{} + 0x7fffffff;
  Floats sums{};
  for (std::size_t j = 0; j < size; j += LANES) {
    Floats f;
    Floats h;
    __builtin_memcpy(&f, __builtin_assume_aligned(from + j, sizeof f), sizeof f);
    __builtin_memcpy(&h, __builtin_assume_aligned(g + j, sizeof h), sizeof h);
    f += a * h;
    __builtin_memcpy(__builtin_assume_aligned(to + j, sizeof f), &f, sizeof f);
    sums += (Floats)((Bits)f & withoutSign);
  }
  // Halves upon halves.
  const Bits half = {8, 9, 10, 11, 12, 13, 14, 15, 0, 1, 2, 3, 4, 5, 6, 7};
  const Bits quarter = {4, 5, 6, 7, 0, 1, 2, 3, 4, 5, 6, 7, 0, 1, 2, 3};
  sums += __builtin_shuffle(sums, half);
  sums += __builtin_shuffle(sums, quarter);
  return (sums[0] + sums[1]) + (sums[2] + sums[3]);
}

// The sum of a[i] b[i] for i from `begin` to `end`, and of the zeros behind.
inline double partialProduct(const double* a, const double* b, std::size_t begin, std::size_t end) {
  Doubles sums{};
  for (std::size_t i = begin; i < end; i += PRODUCT_LANES) {
    Doubles f;
    Doubles h;
    __builtin_memcpy(&f, a + i, sizeof f);
    __builtin_memcpy(&h, b + i, sizeof h);
    sums += f * h;
  }
  return ((sums[0] + sums[1]) + (sums[2] + sums[3])) + ((sums[4] + sums[5]) + (sums[6] + sums[7]));
}

inline double roundDown(double value) {
  return __builtin_floor(value);
}

template <class R, class W>
inline void enter(const WalkData<R, W>& data, std::size_t t) {
  WalkLevel<R, W>& level = data.levels[t];
  const R sum = level.constant + partialProduct(data.lambda, level.products, t + 1, data.k);
  level.base = sum;
  level.centre = (level.nearest - sum) / level.step;
  level.down = roundDown(level.centre);
  level.up = level.down + 1;
  level.closedUp = level.closedDown = false;
  level.isNew = true;
}

// The value grows in the direction in which g u has its sign, and so does W u with the same multiplier: what
// refutes this candidate refutes all further ones there. The other way the candidates are looked at one by
// one.
template <class R, class W>
inline bool refute(WalkLevel<R, W>& level, bool up, const R& product) {
  if (up && product >= 0) level.closedUp = true;
  if (!up && product <= 0) level.closedDown = true;
  return false;
}

// Tests what lambda has at this level. True: not refuted.
template <class R, class W>
inline bool choose(const WalkData<R, W>& data, std::size_t t, bool up) {
  WalkLevel<R, W>& level = data.levels[t];
  const WalkLevel<R, W>& parent = data.levels[t + 1];
  const R product = level.base + data.lambda[t] * level.step;
  const bool above = product > level.most;
  const bool below = -product > level.least;
  if (above || below) {
    level.closedUp = level.closedUp || (above && up);
    level.closedDown = level.closedDown || (below && !up);
    return false;
  }
  const R a = product * level.inverseNorm;
  level.value = parent.value + a * product;
  if (level.value > level.cap) return refute(level, up, product);
  const R size = addScaled(level.w, parent.w, level.g, static_cast<W>(a), data.width);
  if (level.value > size + data.margin) return refute(level, up, product);
  return true;
}

// Takes the candidate nearest to the centre. True: not refuted.
template <class R, class W>
inline bool step(const WalkData<R, W>& data, std::size_t t) {
  WalkLevel<R, W>& level = data.levels[t];
  const bool up =
      level.closedDown || (!level.closedUp && level.up - level.centre <= level.centre - level.down);
  data.lambda[t] = up ? level.up : level.down;
  (up ? level.up : level.down) += up ? 1 : -1;
  return choose(data, t, up);
}

// Goes on to the next pause.
template <class R, class W>
inline WalkPause walkOn(WalkData<R, W>& data) {
  std::size_t t = data.level;
  WalkPause pause = WalkPause::END;
  while (t < data.k) {
    if (!data.levels[t].isOpen()) {
      if (++t < data.ceiling) continue;
      pause = WalkPause::CEILING;
      break;
    }
    if (++data.sinceLook >= data.nextLook) {
      pause = WalkPause::LOOK;
      break;
    }
    if (!step(data, t)) continue;
    if (data.levels[t].asks) {
      pause = WalkPause::CANDIDATE;
      break;
    }
    if (t == 0) {
      pause = WalkPause::LEAF;
      break;
    }
    enter(data, --t);
  }
  data.level = t;
  return pause;
}

}  // namespace
}  // namespace latbox::complete
