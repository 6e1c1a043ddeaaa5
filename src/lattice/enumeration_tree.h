// The walk over the nodes of one enumeration block, in F alone.
//
// The stages of the lattice hold their integers in T. While a block is walked they live here in F, which
// holds whole numbers up to 2^63 exactly; they are written back before anyone reads or exchanges stages: at a
// new minimum and at the block's end. So a node costs no arithmetic in T, and the tree is the same in both
// number types.
#pragma once

#include <vector>

#include "numbers/number.h"
#include "numbers/vector.h"

namespace latbox {

// One stage in F; the fields of Stage<T,F> but for u, which the sums for a centre want side by side.
template <class F>
struct TreeNode {
  F c = F(0);
  F y = F(0);
  F v = F(0);
  F delta = F(0);
  F sign = F(1);
};

template <class F>
struct EnumerationTree {
  std::vector<TreeNode<F>> nodes;  // by position of the basis, up to rank + 2
  std::vector<F> u;                // current coefficient, by position
  std::vector<F> limit;            // share of the bound that a stage may use, times the bound: a node's test
  std::vector<F> factor;           // that share, by position
  std::vector<F> muT;              // muT[t' * stride + i] = mu[i][t']: the sum for a centre runs along a row
  long stride = 0;

  // Room for `rank` stages; allocates only when the rank has grown.
  void reserve(long rank);
  // Fresh stages j..k + 2. The two above the block are sentinels: no node is there, and c is 0.
  void reset(long j, long k);
  // Copies mu[j..k][j..k], transposed.
  template <class Mu>
  void loadCoefficients(const Mu& mu, long j, long k);
  // The share of the bound per stage for pruning level `eprune` in the block j..k; levels outside 0..3 count
  // as the nearest. `beta` is the effective block size, also in the last, shorter blocks: an asymmetry that
  // stays.
  void computeFactors(long eprune, long j, long k, long beta);
  void setBound(const F& bound, long j, long k);

  // The squared length at stage t, from the stage above; true when it is within the bound.
  bool enter(long t, const F* norms) {
    TreeNode<F>& node = nodes.data()[t];
    const F offset = u.data()[t] + node.y;
    node.c = offset * offset * norms[t] + nodes.data()[t + 1].c;
    return node.c < limit.data()[t];
  }

  // Sets stage t - 1 up at the centre that the stages t..s give it. The sum runs upward from t, so that
  // results repeat; above s all coefficients are 0. `shift` is null, or the target's coordinates: v is
  // rounded from the lattice part only. With the target in the rounding the zigzag would begin elsewhere and
  // other nodes would come first.
  void descend(long t, long s, const F* shift) {
    const F* const row = muT.data() + (t - 1) * stride;
    const F* const coefficient = u.data();
    F y = F(0);
    for (long i = t; i <= s; ++i) y += coefficient[i] * row[i];
    TreeNode<F>& next = nodes.data()[t - 1];
    next.v = roundNearest(-y);
    next.delta = F(0);
    next.sign = next.v <= -y ? F(1) : F(-1);
    u.data()[t - 1] = next.v;
    next.y = shift == nullptr ? y : y - shift[t - 1];
  }

  // One zigzag step at stage t, s being the highest stage reached so far. At the highest stage no reversal
  // takes place, so a vector and its negative are not both enumerated. Always true.
  bool enumNext(long t, long s) {
    TreeNode<F>& node = nodes.data()[t];
    if (t < s) node.delta = -node.delta;
    if (node.delta * node.sign >= 0) node.delta += node.sign;
    u.data()[t] = node.v + node.delta;
    return true;
  }
};

}  // namespace latbox
