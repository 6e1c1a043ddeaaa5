// Multipliers such as 4/3 after they came through 17 digits, in the file or from standard precision: put back
// as exactly as the type holds them, with all that are multiples of them. Otherwise long combinations would
// differ from the vectors that they stand for, and solutions would no longer be part of the lattice.
#include "lattice/lattice.h"
#include "numbers/number.h"

namespace latbox {
namespace {

// 17 digits of a number below 10^9 are nearer than a millionth. What lies further away is no rounding.
template <class T>
bool isRounding(const T& difference) {
  constexpr long NOISE = 1000;
  return isZero(T(difference / T(NOISE)));
}

// One coordinate of the lattice: whole multiples of `step`, shifted by the share of the inhomogeneous one.
template <class T>
class Grid {
 public:
  Grid(long coordinate, const T& step, const T& shift)
      : coordinate_(coordinate), step_(step), shift_(shift) {}

  void restore(Vector<T>& v) const {
    if (v.MN < coordinate_) return;
    const T share = v[v.MN] * shift_;
    const T multiple = (v[coordinate_] + share) / step_;
    const T nearest = roundNearest(multiple);
    if (isRounding(T(multiple - nearest))) v[coordinate_] = nearest * step_ - share;
  }
  void restore(Matrix<T>& M) const {
    for (long i = 1; i <= M.M; ++i) restore(M[i]);
  }
  template <class V>
  void restore(SortedSet<V>& set) const {
    for (auto* node = set.head; node != nullptr; node = node->next) restore(node->value);
  }

 private:
  long coordinate_;
  T step_;
  T shift_;
};

template <class T, class F>
void restoreFinds(Finds<T, F>& finds, const Grid<T>& grid) {
  grid.restore(finds.bestSlack);
  grid.restore(finds.bestInhomogeneous);
  for (long i = 1; i <= finds.solutions.MN; ++i) grid.restore(finds.solutions[i]);
  grid.restore(finds.homogeneousVectors);
  grid.restore(finds.inhomogeneousVectors);
}

// Whether the multiplier of variable i is the range by a width.
template <class T, class F>
bool hasWidth(const Lattice<T, F>& l, long i) {
  const FreedomDegree freedom = l.fx[i];
  return i <= l.n() - l.deviationCount && freedom != FreedomDegree::noUpper && freedom != FreedomDegree::free;
}

}  // namespace

template <class T, class F>
void Lattice<T, F>::restoreMultipliers() {
  if (this->checkMode == CHECK_MODE_NONE) return;
  Matrix<T> origin, basis;
  const long before = this->dim - 1 - this->n();
  for (long i = 1; i <= this->n(); ++i) {
    T& multiplier = this->c[before + i];
    if (!hasWidth(*this, i) || isInteger(T(T(2) * multiplier))) continue;
    const T exact = this->R / (this->rx[i] - this->lx[i]);
    if (!isRounding(T(exact - multiplier))) continue;
    multiplier = exact;
    const Grid<T> grid(before + i, T(T(2) * exact), T(this->R / this->inhomBase));
    restoreFinds<T, F>(*this, grid);
    if (!basis.notEmpty()) {
      origin = this->B_save;
      basis = this->unscaled(this->B);
    }
    grid.restore(origin);
    grid.restore(basis);
  }
  if (basis.notEmpty()) this->restoreDigits(origin, this->rescaled(basis));
}

template void Lattice<dbl_t, dbl_t>::restoreMultipliers();
template void Lattice<QQ, dbl_t>::restoreMultipliers();

}  // namespace latbox
