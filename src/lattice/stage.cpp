#include "lattice/stage.h"

#include <utility>

#include "numbers/qq.h"

namespace latbox {

template <class T, class F>
void Stage<T, F>::reset() {
  w.resize(0, false);
  c = F(0);
  y = F(0);
  v = T(0);
  u = T(0);
  delta = T(0);
  sign = T(1);
}

template <class T, class F>
void Stage<T, F>::swap(Stage& other) {
  using std::swap;
  swap(c, other.c);
  swap(y, other.y);
  swap(v, other.v);
  swap(u, other.u);
  swap(delta, other.delta);
  swap(sign, other.sign);
}

template struct Stage<dbl_t, dbl_t>;
template struct Stage<QQ, dbl_t>;

}  // namespace latbox
