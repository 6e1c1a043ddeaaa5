// The scratch of block enumeration. Between steps it means nothing: a copy takes its shape, and the bound,
// alone.
#pragma once

#include <utility>

#include "lattice/enumeration_tree.h"
#include "lattice/stage.h"

namespace latbox {

template <class T, class F>
struct EnumerationState {
  Vector<T> enumCoeffs;       // coefficients of the best vector of the block, by position
  F enumBound = F(0);         // current squared bound
  Array<Stage<T, F>> stages;  // up to rank + 1 used
  EnumerationTree<F> tree;    // the block's stages while its nodes are walked

  EnumerationState() = default;
  EnumerationState(const EnumerationState& other) { *this = other; }
  EnumerationState& operator=(const EnumerationState& other) {
    enumCoeffs.resize(other.enumCoeffs.MN, false);
    enumBound = other.enumBound;
    stages.resize(other.stages.MN, false);
    return *this;
  }

  template <class U>
  void convertFrom(const EnumerationState<U, F>& other) {
    resizeStages(other.enumCoeffs.MN);
    enumBound = other.enumBound;
  }

  void resizeStages(long rank) {
    enumCoeffs.resizeZero(rank);
    enumBound = F(0);
    stages.resize(rank + 1, false);
    for (long t = 0; t <= rank + 1; ++t) stages.data[t].reset();
  }
  // What belongs to two positions of the basis changes places with them.
  void exchangeStages(long i, long j) {
    std::swap(enumCoeffs[i], enumCoeffs[j]);
    stages[i].swap(stages[j]);
  }
};

}  // namespace latbox
