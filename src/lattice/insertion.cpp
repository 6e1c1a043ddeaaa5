// A vector known as an integer combination of basis vectors enters the basis by unimodular steps alone.
#include "lattice/lattice.h"
#include "lattice/row_operation.h"
#include "lib/failure.h"
#include "numbers/elimination.h"
#include "numbers/number.h"
#include "params/statistics.h"

namespace latbox {
namespace {

// Position of the only non-zero coefficient, 0 if all are zero, -1 if there are more.
template <class T>
long onlyPosition(const Vector<T>& x, long first, long last) {
  long position = 0;
  for (long i = first; i <= last; ++i) {
    if (isExactZero(x[i])) continue;
    if (position != 0) return -1;
    position = i;
  }
  return position;
}

// Divides the coefficients first..top by their greatest common divisor, so that a multiple of a primitive
// vector inserts the primitive vector. All zero is left as it is.
template <class T>
void makePrimitive(Vector<T>& x, long first, long top) {
  for (long i = first; i <= top; ++i) checkPrecision(x[i], "coefficient overflow");
  T g = abs(x[top]);
  for (long i = top - 1; i >= first; --i) {
    if (!isExactZero(x[i])) g = gcd(g, x[i]);
  }
  if (g == T(1) || isExactZero(g)) return;
  for (long i = first; i <= top; ++i) x[i] /= g;
}

template <class T>
bool isUnit(const T& x) {
  return abs(x) == T(1);
}

// Euclid's algorithm on the coefficients, carried out on the basis: ends with x[top] = +-1 and the same
// vector.
template <class T, class F>
void reduceLeadingCoefficient(Lattice<T, F>& l, Vector<T>& x, long first, long top) {
  const bool exchanged = &x == &l.enumCoeffs;
  long i = top - 1;
  while (abs(x[top]) > T(1)) {
    while (i > first && isExactZero(x[i])) --i;
    if (i < first || isExactZero(x[i])) {
      x.print(first, top);
      fail("basis can't divide by zero!");
    }
    // From here each remainder is smaller than the coefficients before it.
    const T q = roundNearest(T(x[top] / x[i]));
    const T a = x[i];
    x[i] = x[top] - q * a;
    x[top] = a;
    // The exchange of positions below exchanges the entries of enumCoeffs once more.
    if (exchanged) x.swap(top, i);
    l.swapBase(top, i, false);
    l.subtract(top, T(-q), i);
  }
}

}  // namespace

template <class T, class F>
int Lattice<T, F>::trivialInsert(const Vector<T>& x, long first, long last) {
  const long p = onlyPosition(x, first, last);
  if (p < 0) return 0;
  if (p == 0) {
    if (rankOf(this->B) != this->rank) fail("lattice rank is too small!");
    return 0;
  }
  // A multiple lies in the lattice, but the basis vector is shorter.
  if (abs(x[p]) > T(1)) return -1;
  for (long t = p; t >= first + 1; --t) swapBase(t - 1, t, first + 1 < t);
  ++statisticsOf<T>().basisSubstitutionsTrivial;
  return 1;
}

template <class T, class F>
void Lattice<T, F>::insertCombination(Vector<T>& x, long first, long last) {
  long top = last;
  while (top > first && isExactZero(x[top])) --top;
  makePrimitive(x, first, top);
  reduceLeadingCoefficient(*this, x, first, top);
  const Vector<T>& vector = this->combine(x, first, top);
  if (isZeroVector(vector)) fail("basis can't insert the zero vector!");
  checkSolution(vector, true, NOW, false, Membership::byConstruction);
  this->recordCombined(x, first, top);
  // The row at `top`, whose coefficient is a unit and which the new vector replaces, arrives at `first`.
  for (long t = top; t >= first + 1; --t) swapBase(t, t - 1, true);
  // Row 0 moves in; since the lower index of the exchange is 0, all of `status` is cleared.
  swapBase(first, 0, false);
}

template <class T, class F>
void Lattice<T, F>::replaceCombination(Vector<T>& x, long first, long last, long pos) {
  long p = last;
  while (p >= first && !isUnit(x[p])) --p;
  if (trivialInsert(x, first, last) != 0) return;
  if (p < first) {
    insertCombination(x, first, last);
    ++statisticsOf<T>().nontrivialBasisExtensions;
    for (long t = first; t < pos; ++t) swapBase(t, t + 1, first < t);
    return;
  }
  this->replace(p, x, first, last);
  for (long t = p; t < pos; ++t) swapBase(t, t + 1, t > p);
  for (long t = p; t >= pos + 1; --t) swapBase(t, t - 1, pos + 1 < t);
  ++statisticsOf<T>().basisSubstitutionsNontrivial;
}

#define LATBOX_INSTANTIATE(T)                                                  \
  template int Lattice<T, dbl_t>::trivialInsert(const Vector<T>&, long, long); \
  template void Lattice<T, dbl_t>::insertCombination(Vector<T>&, long, long);  \
  template void Lattice<T, dbl_t>::replaceCombination(Vector<T>&, long, long, long);
LATBOX_INSTANTIATE(dbl_t)
LATBOX_INSTANTIATE(QQ)

}  // namespace latbox
