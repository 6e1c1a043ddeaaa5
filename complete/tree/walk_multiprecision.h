// The operations of the hot loop in numbers of GMP: walk_steps.h, included behind this, finds them.
#pragma once

#include "complete/tree/weights.h"

namespace latbox::complete {
namespace {

inline Float addScaled(Float* to, const Float* from, const Float* g, const Float& a, std::size_t size) {
  Float sum(0);
  for (std::size_t j = 0; j < size; ++j) {
    to[j] = from[j] + a * g[j];
    sum += abs(to[j]);
  }
  return sum;
}

inline Float partialProduct(const Float* a, const Float* b, std::size_t begin, std::size_t end) {
  Float sum(0);
  for (std::size_t i = begin; i < end; ++i) sum += a[i] * b[i];
  return sum;
}

inline Float roundDown(const Float& value) {
  return floor(value);
}

}  // namespace
}  // namespace latbox::complete
