#include "lattice/enumeration_tree.h"

#include "lib/constants.h"
#include "numbers/matrix.h"

namespace latbox {
namespace {

// The share of the bound at stage t with depth d = k - t from the block's end. Level 1 is a straight line
// from 1 / beta to about 1, level 2 a step in the middle, level 3 two lines that meet near the middle, steep
// near the block's end.
template <class F>
F pruningFactor(long eprune, long t, long k, long mid, long beta) {
  const F one = F(1);
  const F two = F(2);
  const F half = one / two - EPS;
  const F d = static_cast<F>(k - t);
  const F size = static_cast<F>(beta);
  if (eprune <= 0) return one;
  if (eprune == 1) return (one + d) / size;
  if (eprune == 2) return t > mid ? half : one;
  if (t > mid) return (two * half * (d + one)) / size;
  return ((one - half) * (d * two + one)) / size + (two * half - one);
}

}  // namespace

template <class F>
void EnumerationTree<F>::reserve(long rank) {
  const auto wanted = static_cast<std::size_t>(rank) + 3;
  if (nodes.size() >= wanted) return;
  nodes.resize(wanted);
  u.resize(wanted);
  factor.resize(wanted);
  limit.resize(wanted);
  stride = static_cast<long>(wanted);
  muT.assign(wanted * wanted, F(0));
}

template <class F>
void EnumerationTree<F>::reset(long j, long k) {
  for (long t = j; t <= k + 2; ++t) {
    nodes.data()[t] = TreeNode<F>();
    u.data()[t] = F(0);
  }
}

template <class F>
template <class Mu>
void EnumerationTree<F>::loadCoefficients(const Mu& mu, long j, long k) {
  for (long i = j; i <= k; ++i) {
    const F* row = mu.rows[i].data;
    for (long t = j; t <= i; ++t) muT.data()[t * stride + i] = row[t];
  }
}

template <class F>
void EnumerationTree<F>::computeFactors(long eprune, long j, long k, long beta) {
  const long mid = (j + k) / 2;
  for (long t = j; t <= k; ++t) {
    factor.data()[t] = pruningFactor<F>(eprune, t, k, mid, beta);
  }
}

template <class F>
void EnumerationTree<F>::setBound(const F& bound, long j, long k) {
  for (long t = j; t <= k; ++t) limit.data()[t] = factor.data()[t] * bound;
}

template struct EnumerationTree<dbl_t>;
template void EnumerationTree<dbl_t>::loadCoefficients(const Matrix<dbl_t>& mu, long j, long k);

}  // namespace latbox
