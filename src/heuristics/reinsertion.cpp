#include "heuristics/reinsertion.h"

#include <string>

#include "lib/progress.h"
#include "numbers/number.h"
#include "params/statistics.h"

namespace latbox {
namespace {

template <class T, class F>
void insertRemembered(Lattice<T, F>& lattice, const Vector<T>& unit, const std::string& text) {
  const ProgressScope scope(lattice.verb() > 1, text);
  Vector<T> weighted;
  lattice.rescaledVector(unit, weighted);
  insertVector(lattice, weighted);
}

template <class T>
bool isTrivial(const Vector<T>& c) {
  T sum(0);
  for (long i = 1; i <= c.MN; ++i) sum += abs(c[i]);
  return sum <= T(1);
}

// c * mu: the coefficients on the Gram-Schmidt vectors.
template <class T, class F>
Vector<F> projectedCoefficients(const Vector<T>& c, const Matrix<F>& mu) {
  Vector<F> x(c.MN);
  for (long i = 1; i <= c.MN; ++i) x[i] = toDouble(c[i]);
  return x * mu;
}

// The first position whose vector is not shorter than the new one and whose orthogonal part is not either;
// without such a one the first of the former kind; 0 if the new vector is longer than all.
template <class T, class F>
long positionFor(const Lattice<T, F>& lattice, const T& length, const Vector<F>& t) {
  const Vector<F>& r = lattice.bstarSq;
  F projected = lattice.rank == 1 ? t[1] * t[1] * r[1] : toDouble(length);
  long fallback = 0;
  for (long i = 1; i <= lattice.rank; ++i) {
    if (i > 1) projected -= t[i - 1] * t[i - 1] * r[i - 1];
    if (length > lattice.bNormSq[i]) continue;
    if (projected <= r[i]) return i;
    if (fallback == 0) fallback = i;
  }
  return fallback;
}

}  // namespace

// The totals of the run choose, and not which vector is better now. So the choice moves on, from near misses
// to targets and to solutions, and does not fall back where a regeneration has emptied the lattice; by
// quality it would change with each find, and every run would take another path.
template <class T, class F>
void reinsertBest(Lattice<T, F>& l) {
  const Statistics& totals = statisticsOf<T>();
  if (totals.solutionsFound != 0) {
    if (l.solutions.MN == 0) return;
    long& turn = l.search.reinsertIndex;
    turn = (l.solutions.MN > turn ? turn : 0) + 1;
    insertRemembered(l, l.solutions[turn], "Inserting solution vector (" + std::to_string(turn) + ") ...");
  } else if (totals.targetImprovements != 0) {
    if (l.bestSlack.notEmpty()) insertRemembered(l, l.bestSlack, "Inserting best slack vector ... ");
  } else if (totals.inhomogeneousImprovements != 0 && l.bestInhomogeneous.notEmpty()) {
    insertRemembered(l, l.bestInhomogeneous, "Inserting best inhomogenous vector ... ");
  }
}

template <class T, class F>
void insertVector(Lattice<T, F>& l, const Vector<T>& weighted) {
  Vector<T> unit, c;
  l.unscaledVector(weighted, unit);
  if (!l.coordinates(unit, c, false)) return;
  if (isTrivial(c)) return;
  if (!l.updateGso(1, 0)) l.gsoByReduced(1, 0, false);
  const long position = positionFor(l, T(weighted * weighted), projectedCoefficients(c, l.mu));
  if (position != 0) l.replaceCombination(c, 1, l.rank, position);
}

LATBOX_BOTH_TYPES(reinsertBest)
LATBOX_BOTH_TYPES(insertVector)

}  // namespace latbox
