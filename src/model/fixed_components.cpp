// Variables with one possible value leave the program; what they contribute moves to the right-hand sides.
#include <vector>

#include "lib/exceptions.h"
#include "model/tessik.h"
#include "numbers/number.h"

namespace latbox {

namespace {

// Elements `keep`[j] of `array`, in their order. One pass for all variables: taking them out one by one would
// cost a move of every row per variable.
template <class Container>
void compact(Container& array, const std::vector<bool>& keep) {
  long kept = 0;
  for (long j = 1; j <= array.MN; ++j)
    if (keep[static_cast<std::size_t>(j)] && ++kept != j) array[kept] = std::move(array[j]);
  array.resize(kept, false);
}

template <class T>
void compactColumns(Matrix<T>& matrix, const std::vector<bool>& keep, long left) {
  for (long i = 1; i <= matrix.M; ++i) compact(matrix[i], keep);
  if (matrix.N > 0) matrix.resize(matrix.M, left);
}

// side -= coefficient * value, without rounding. Where decimals cancel, as in 1000.4 - 1000, floating point
// keeps too few digits of the rest, and the row would then be rounded inward past a point that meets it.
// Whole numbers are exact as they are.
void subtractExactly(dbl_t& side, dbl_t coefficient, dbl_t value, const char* message) {
  if (isInfinite(side)) return;
  if (isInteger(side) && isInteger(coefficient) && isInteger(value))
    side -= coefficient * value;
  else if (!convertStrict(QQ(side) - QQ(coefficient) * QQ(value), side))
    throw PrecisionException(message);
  checkPrecision(side, message);
}
void subtractExactly(QQ& side, const QQ& coefficient, const QQ& value, const char*) {
  side -= coefficient * value;
}

// The values of the fixed variables, in their order.
template <class T>
void subtractFixed(const Vector<T>& row, const Map<long, T>& fixed, T& side, const char* message) {
  for (long k = 1; k <= fixed.MN; ++k) subtractExactly(side, row[fixed[k].left], fixed[k].right, message);
}

template <class T>
void subtractFromTargets(Tessik<T>& p) {
  for (long k = 1; k <= p.fixedComponents.MN; ++k) {
    const Pair<long, T>& fixed = p.fixedComponents[k];
    for (long i = 1; i <= p.At.M; ++i) {
      const T coefficient = p.At[i][fixed.left] * p.targetSign(i);
      subtractExactly(p.ltu(), coefficient, fixed.right, "ltu overflow");
      subtractExactly(p.rtu(), coefficient, fixed.right, "rtu overflow");
    }
  }
}

template <class T>
std::vector<bool> findFixed(Tessik<T>& p) {
  std::vector<bool> keep(static_cast<std::size_t>(p.n()) + 1, true);
  p.fixedComponents.clear();
  for (long j = 1; j <= p.n(); ++j)
    if (p.fx[j] == FreedomDegree::bounded && p.lx[j] == p.rx[j]) {
      keep[static_cast<std::size_t>(j)] = false;
      p.fixedComponents.add(j, p.lx[j]);
    }
  return keep;
}

}  // namespace

template <class T>
void Tessik<T>::removeComponents() {
  const std::vector<bool> keep = findFixed(*this);
  if (!fixedComponents.notEmpty()) return;
  for (long i = 1; i <= Ag.M; ++i) subtractFixed(Ag[i], fixedComponents, bg[i], "bg overflow");
  for (long i = 1; i <= Au.M; ++i) {
    subtractFixed(Au[i], fixedComponents, lu[i], "lu overflow");
    subtractFixed(Au[i], fixedComponents, ru[i], "ru overflow");
  }
  subtractFromTargets(*this);
  const long left = n() - fixedComponents.MN;
  compactColumns(Ag, keep, left);
  compactColumns(Au, keep, left);
  compactColumns(At, keep, left);
  if (atu.notEmpty()) compact(atu, keep);
  compact(dx, keep);
  compact(lx, keep);
  compact(rx, keep);
  compact(fx, keep);
}

#define LATBOX_INSTANTIATE(T) template void Tessik<T>::removeComponents();
LATBOX_INSTANTIATE(dbl_t)
LATBOX_INSTANTIATE(QQ)

}  // namespace latbox
