// The parts of a lattice, together.
#pragma once

#include <string>

#include "lattice/enumeration_state.h"
#include "lattice/finds.h"
#include "lattice/gram_schmidt.h"
#include "lattice/weights.h"
#include "model/check_vectors.h"
#include "model/tessik.h"

namespace latbox {

// The mathematical state, whole: what a step may change and a restore puts back. Copies are memberwise.
template <class T, class F>
struct LatticeState : Tessik<T>,
                      CheckVectors<T>,
                      Finds<T, F>,
                      WeightMap<T>,
                      GramSchmidt<T, F>,
                      EnumerationState<T, F> {
  long savedSeconds = 0;  // seconds read from a .lat file
  std::string latFile;
  Tessik<T> program;       // as read; prepared by stage one
  long interval_tt = 100;  // adaptive swap budget of a sweep

  // Part by part. Throws: PrecisionException with "Precision lost during conversion". Lengths follow by
  // measureRows.
  template <class U>
  void convertFrom(const LatticeState<U, F>& other);
};

}  // namespace latbox
