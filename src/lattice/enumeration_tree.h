// The walk over the nodes of one enumeration block, in F alone.
//
// The stages of the lattice hold their integers in T. While a block is walked they live here in F, which
// holds whole numbers up to 2^63 exactly; they are written back before anyone reads or exchanges stages: at a
// new minimum and at the block's end. So a node costs no arithmetic in T, and the tree is the same in both
// number types.
#pragma once

#include <vector>

#include "lib/vector.h"

namespace latbox {

// One stage in F; the fields of Stage<T,F>.
template <class F>
struct TreeNode {
  F c = F(0);
  F y = F(0);
  F v = F(0);
  F u = F(0);
  F delta = F(0);
  F sign = F(1);
};

template <class F>
struct EnumerationTree {
  std::vector<TreeNode<F>> nodes;  // by position of the basis, up to rank + 1
  std::vector<F> factor;           // share of the bound that a stage may use, by position
  std::vector<F> limit;            // factor * bound: the test of a node
  std::vector<F> muT;              // muT[t' * stride + i] = mu[i][t']: the sum for a centre runs along a row
  long stride = 0;

  // Room for `rank` stages; allocates only when the rank has grown.
  void reserve(long rank);
  // Copies mu[j..k][j..k], transposed.
  template <class Mu>
  void loadCoefficients(const Mu& mu, long j, long k);
  // The share of the bound per stage for pruning level `eprune` 0..3 in the block j..k; `beta` is the
  // effective block size, also in the last, shorter blocks: an asymmetry that stays.
  void computeFactors(long eprune, long j, long k, long beta);
  void setBound(const F& bound, long j, long k);

  // One zigzag step at stage t, s being the highest stage reached so far. At the highest stage no reversal
  // takes place, so a vector and its negative are not both enumerated. Always true.
  bool enumNext(long t, long s) {
    TreeNode<F>& node = nodes[static_cast<std::size_t>(t)];
    if (t < s) node.delta = -node.delta;
    if (node.delta * node.sign >= 0) node.delta += node.sign;
    node.u = node.v + node.delta;
    return true;
  }
};

}  // namespace latbox
