// Gram-Schmidt data of the basis: the incremental update from inner products, and the wrappers that bring the
// two factorisations into the lattice's members.
#include <algorithm>
#include <vector>

#include "lattice/inner_product.h"
#include "lattice/lattice.h"
#include "numbers/number.h"

namespace latbox {

namespace {

// Scratch of the thread that reduces. Thread-local and not static: the process may exit while it works.
template <class F>
std::vector<F>& projections(long n) {
  thread_local std::vector<F> r;
  if (r.size() <= static_cast<std::size_t>(n)) r.resize(static_cast<std::size_t>(n) + 1);
  return r;
}

template <class F>
void closeMuRow(Vector<F>& row, long i) {
  row.data[i] = F(1);
  for (long j = i + 1; j <= row.MN; ++j) row.data[j] = F(0);
}

// r[j..j+3] -= mu[..][l] r[l] for l = 1..j-1. Four rows side by side: each keeps its order of summation, and
// none waits for its own last subtraction.
template <class F>
void takeOffFour(const Vector<F>* muRows, long j, F* r) {
  const F *const a = muRows[0].data, *const b = muRows[1].data;
  const F *const c = muRows[2].data, *const d = muRows[3].data;
  F restA = r[j], restB = r[j + 1], restC = r[j + 2], restD = r[j + 3];
  for (long l = 1; l < j; ++l) {
    restA -= a[l] * r[l];
    restB -= b[l] * r[l];
    restC -= c[l] * r[l];
    restD -= d[l] * r[l];
  }
  r[j] = restA, r[j + 1] = restB, r[j + 2] = restC, r[j + 3] = restD;
}

// r[1..i-1] and mu row i from the inner products of b_i with its predecessors; returns sum mu[i][j] r[j].
template <class T, class F>
F projectRow(Lattice<T, F>& lattice, long i) {
  F* const r = projections<F>(lattice.rank).data();
  F* const muI = lattice.mu.rows[i].data;
  const F* const bstarSq = lattice.bstarSq.data;
  innerProducts(lattice.B, i, r);
  F taken(0);
  const long grouped = (i - 1) / 4 * 4;  // the rest, less than four rows, goes one by one
  for (long j = 1; j < i; ++j) {
    const long group = (j - 1) / 4 * 4 + 1;
    if (j == group && j <= grouped) takeOffFour(&lattice.mu.rows[j], j, r);
    const F* const muJ = lattice.mu.rows[j].data;
    F value = r[j];
    for (long l = j <= grouped ? group : 1; l < j; ++l) value -= muJ[l] * r[l];
    r[j] = value;
    muI[j] = value / bstarSq[j];
    taken += muI[j] * value;
  }
  return taken;
}

}  // namespace

template <class T, class F>
bool Lattice<T, F>::updateGso(long first, long last) {
  if (last == 0) last = rank;
  for (long i = first; i <= last; ++i) {
    if (status[i] & STATUS_GSO) continue;
    const F taken = projectRow(*this, i);
    squaredLength(B.rows[i], bNormSq[i]);
    bstarSq[i] = toDouble(bNormSq[i]) - taken;
    closeMuRow(mu[i], i);
    // Written so that a value that is no number counts as dependent.
    if (!(bstarSq[i] > EPS)) {
      status[i] = STATUS_DEPENDENT;
      return false;
    }
    setStatusBits(i, STATUS_GSO);
  }
  return true;
}

template <class T, class F>
void Lattice<T, F>::orthogonalisationRefresh() {
  clearStatus();
  updateGso(1, 0);
}

// The two factorisations share Bstar and lqL and resize them to the rows they are asked for. So where one of
// them starts, no row from there on is a valid row of either.
template <class T, class F>
void Lattice<T, F>::forgetFactorisation(long first) {
  constexpr short marks = (STATUS_FULL | STATUS_LQ) & ~STATUS_GSO;
  for (long i = first; i <= rank; ++i) status[i] = static_cast<short>(status[i] & ~marks);
}

template <class T, class F>
void Lattice<T, F>::takeFactorRow(long i, short bits) {
  for (long j = 1; j < i; ++j) mu[i][j] = lqL[i][j] / lqL[j][j];
  closeMuRow(mu[i], i);
  setStatusBits(i, bits);
}

template <class T, class F>
long Lattice<T, F>::gsoByReduced(long first, long last, bool failOnDependency) {
  if (last == 0) last = rank;
  while (first <= last && hasStatus(first, STATUS_LQ)) ++first;
  if (first > last) return 0;
  forgetFactorisation(first);
  long dependent = lq_reduced(B, lqL, Bstar, lqStages, lqNorms, first, last);
  const long top = dependent == 0 ? last : dependent - 1;
  for (long i = first; i <= top; ++i) {
    squaredLength(B.rows[i], bNormSq[i]);
    bstarSq[i] = lqNorms[i];
    if (!(bstarSq[i] > EPS)) {
      dependent = i;
      break;
    }
    takeFactorRow(i, STATUS_LQ);
  }
  if (dependent != 0 && failOnDependency) fail("Linear dependency detected - remove these first!");
  return dependent;
}

template <class T, class F>
long Lattice<T, F>::gsoByFull(long first, long last, bool failOnDependency) {
  if (last == 0) last = rank;
  while (first <= last && hasStatus(first, STATUS_FULL)) ++first;
  if (first > last) return 0;
  forgetFactorisation(first);
  lq_full(B, lqL, Bstar, lqReflections, first, last);
  const long top = std::min(last, dim);
  long dependent = top < last ? top + 1 : 0;
  for (long i = first; i <= top; ++i) {
    squaredLength(B.rows[i], bNormSq[i]);
    bstarSq[i] = lqL[i][i] * lqL[i][i];
    if (!(bstarSq[i] > EPS)) {
      dependent = i;
      break;
    }
    takeFactorRow(i, STATUS_FULL);
    if (lqL[i][i] < F(0)) Bstar[i] *= F(-1);
  }
  if (dependent != 0 && failOnDependency) fail("Linear dependency detected - remove first!");
  return dependent;
}

#define LATBOX_INSTANTIATE(T)                                      \
  template bool Lattice<T, dbl_t>::updateGso(long, long);          \
  template void Lattice<T, dbl_t>::orthogonalisationRefresh();     \
  template void Lattice<T, dbl_t>::forgetFactorisation(long);      \
  template long Lattice<T, dbl_t>::gsoByReduced(long, long, bool); \
  template long Lattice<T, dbl_t>::gsoByFull(long, long, bool);
LATBOX_INSTANTIATE(dbl_t)
LATBOX_INSTANTIATE(QQ)

}  // namespace latbox
