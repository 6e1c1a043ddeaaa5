// Gram-Schmidt data of the basis: the incremental update from inner products, and the wrappers that bring the
// two factorisations into the members.
#include <algorithm>
#include <cassert>
#include <cmath>
#include <vector>

#include "lattice/gram_schmidt.h"
#include "lattice/inner_product.h"
#include "lattice/orthogonal_factorisation.h"
#include "lattice/row_operation.h"
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

// target[1..n] -= q * source[1..n]; most multipliers are units.
template <class F>
void subtractCoefficients(F* target, F q, const F* source, long n) {
  if (q == F(1)) {
    for (long i = 1; i <= n; ++i) target[i] -= source[i];
  } else if (q == F(-1)) {
    for (long i = 1; i <= n; ++i) target[i] += source[i];
  } else {
    for (long i = 1; i <= n; ++i) target[i] -= q * source[i];
  }
}

// The number of leading rows whose words hold the whole mask.
long validPrefix(const Array<short>& status, short mask) {
  long i = 0;
  while (i < status.MN && (status.data[i + 1] & mask) == mask) ++i;
  return i;
}

// The first `count` rows, shape and storage kept otherwise.
template <class F>
void copyRows(Matrix<F>& target, const Matrix<F>& source, long count) {
  target.resize(count, source.N);
  for (long i = 1; i <= count; ++i) target.rows[i] = source.rows[i];
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
F projectRow(GramSchmidt<T, F>& gso, long i) {
  F* const r = projections<F>(gso.rank).data();
  F* const muI = gso.mu.rows[i].data;
  const F* const bstarSq = gso.bstarSq.data;
  innerProducts(gso.B, i, r);
  F taken(0);
  const long grouped = (i - 1) / 4 * 4;  // the rest, less than four rows, goes one by one
  for (long j = 1; j < i; ++j) {
    const long group = (j - 1) / 4 * 4 + 1;
    if (j == group && j <= grouped) takeOffFour(&gso.mu.rows[j], j, r);
    const F* const muJ = gso.mu.rows[j].data;
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
bool GramSchmidt<T, F>::updateGso(long first, long last) {
  if (last == 0) last = this->rank;
  assert(mu.M == this->rank && bstarSq.MN == this->rank && bNormSq.MN == this->rank);
  for (long i = first; i <= last; ++i) {
    if (this->status[i] & STATUS_GSO) continue;
    const F taken = projectRow<T, F>(*this, i);
    squaredLength(this->B.rows[i], bNormSq[i]);
    bstarSq[i] = toDouble(bNormSq[i]) - taken;
    closeMuRow(mu[i], i);
    // Written so that a value that is no number counts as dependent.
    if (!(bstarSq[i] > EPS)) {
      this->setDependent(i);
      return false;
    }
    this->setStatusBits(i, STATUS_GSO);
  }
  return true;
}

template <class T, class F>
void GramSchmidt<T, F>::takeFactorRow(long i, short bits) {
  for (long j = 1; j < i; ++j) mu[i][j] = lqL[i][j] / lqL[j][j];
  closeMuRow(mu[i], i);
  this->setStatusBits(i, bits);
}

template <class T, class F>
long GramSchmidt<T, F>::gsoByReduced(long first, long last, bool failOnDependency) {
  if (last == 0) last = this->rank;
  while (first <= last && this->hasStatus(first, STATUS_LQ)) ++first;
  if (first > last) return 0;
  this->forgetFactorisation(first);
  long dependent = lq_reduced(this->B, lqL, Bstar, lqStages, lqNorms, first, last);
  const long top = dependent == 0 ? last : dependent - 1;
  for (long i = first; i <= top; ++i) {
    squaredLength(this->B.rows[i], bNormSq[i]);
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
long GramSchmidt<T, F>::gsoByFull(long first, long last, bool failOnDependency) {
  if (last == 0) last = this->rank;
  while (first <= last && this->hasStatus(first, STATUS_FULL)) ++first;
  if (first > last) return 0;
  this->forgetFactorisation(first);
  lq_full(this->B, lqL, Bstar, lqReflections, first, last);
  const long top = std::min(last, this->dim);
  long dependent = top < last ? top + 1 : 0;
  for (long i = first; i <= top; ++i) {
    squaredLength(this->B.rows[i], bNormSq[i]);
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

// Brings the data of row k up to date, by the stable way where the cheap one meets a dependency.
template <class T, class F>
bool GramSchmidt<T, F>::orthogonaliseRow(long k) {
  if (updateGso(k, k)) return true;
  const long last = k == 0 ? this->rank : k;
  long p = 1;
  while (p <= last && this->hasStatus(p, STATUS_LQ)) ++p;
  if (p > last) return true;
  return gsoByReduced(p, k, false) == 0 && bstarSq[k] > EPS;
}

template <class T, class F>
void GramSchmidt<T, F>::reduceRow(long k, F q, long j) {
  assert(j >= 1 && j < k && q == std::round(q));
  F* const muK = mu.rows[k].data;
  subtractCoefficients(muK, q, mu.rows[j].data, j - 1);
  muK[j] -= q;
  this->subtract(k, wholeNumber<T>(q), j);
}

template <class T, class F>
void GramSchmidt<T, F>::resizeWork() {
  mu.resizeZero(this->rank, this->rank);
  bNormSq.resizeZero(this->rank);
  bstarSq.resizeZero(this->rank);
  Bstar.resize(0, this->dim);
  lqL.resize(0, 0);
  lqNorms.resize(0, false);
  lqStages.resize(0, false);
  lqReflections.resize(0, false);
}

// mu, bstarSq and bNormSq are carried whole: a row that is not marked may be right in value, and a sweep that
// starts behind an insertion relies on that. The level matrices of lq_reduced are rebuilt by every resume,
// and the reflections count only as far as the words say, so the bulk of the scratch never travels.
template <class T, class F>
GramSchmidt<T, F>& GramSchmidt<T, F>::operator=(const GramSchmidt& other) {
  if (this == &other) return *this;
  Basis<T>::operator=(other);
  mu = other.mu;
  bNormSq = other.bNormSq;
  bstarSq = other.bstarSq;
  const long reflected = validPrefix(this->status, STATUS_FULL);
  const long factored = std::max(reflected, validPrefix(this->status, STATUS_LQ));
  copyRows(Bstar, other.Bstar, factored);
  copyRows(lqL, other.lqL, factored);
  lqNorms = other.lqNorms;
  lqReflections.resize(std::min(reflected, other.lqReflections.MN), false);
  for (long t = 1; t <= lqReflections.MN; ++t) lqReflections.data[t] = other.lqReflections.data[t];
  return *this;
}

// What lives in F is taken as it is. Lengths are computed again, and factorisations are made again on demand.
template <class T, class F>
template <class U>
void GramSchmidt<T, F>::convertFrom(const GramSchmidt<U, F>& other) {
  Basis<T>::convertFrom(other);
  resizeWork();
  mu = other.mu;
  bstarSq = other.bstarSq;
  this->forgetFactorisation(1);
}

template <class T, class F>
void GramSchmidt<T, F>::measureRows() {
  for (long i = 1; i <= this->rank; ++i) squaredLength(this->B.rows[i], bNormSq[i]);
}

template class GramSchmidt<dbl_t, dbl_t>;
template class GramSchmidt<QQ, dbl_t>;
template void GramSchmidt<dbl_t, dbl_t>::convertFrom(const GramSchmidt<QQ, dbl_t>&);
template void GramSchmidt<QQ, dbl_t>::convertFrom(const GramSchmidt<dbl_t, dbl_t>&);

}  // namespace latbox
