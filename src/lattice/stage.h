// One level of the enumeration tree.
#pragma once

#include "numbers/vector.h"

namespace latbox {

template <class T, class F>
struct Stage {
  Vector<F> w;     // work vector, stays in place when stages are exchanged
  F c = F(0);      // squared length of the partial vector from this level up to the block's end
  F y = F(0);      // centre at this level
  T v = T(0);      // rounded centre
  T u = T(0);      // current coefficient
  T delta = T(0);  // current offset from v in the zigzag
  T sign = T(1);   // direction of the next zigzag step

  // Back to a fresh stage, storage kept.
  void reset();
  // Exchanges all fields but w.
  void swap(Stage& other);
};

}  // namespace latbox
