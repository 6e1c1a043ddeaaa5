// The rows of a lattice and their words as a test wants them, past the operations that keep them in step: for
// damage that must be noticed, and for states that take many steps to reach.
#pragma once

#include "lattice/basis.h"

namespace latbox {

struct BasisAccess {
  template <class T>
  static auto& state(Basis<T>& basis) {
    return basis.s_;
  }
};

namespace testing {

// B, B_save and TT for writing; nothing else follows.
template <class T>
auto& rows(Basis<T>& basis) {
  return BasisAccess::state(basis);
}

// The word of row i, whole.
template <class T>
void setWord(Basis<T>& basis, long i, int word) {
  BasisAccess::state(basis).status[i] = static_cast<short>(word);
  BasisAccess::state(basis).marked = basis.rank;
}

}  // namespace testing
}  // namespace latbox
