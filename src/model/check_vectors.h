// What a lattice vector is judged by: the range of the embedding and the bounds of each coordinate, as
// generated or read.
//
// Coordinates are those of the lattice, in unit coordinates and numbered from 1; each vector has one
// component for each.
#pragma once

#include <limits>

#include "numbers/pair.h"
#include "numbers/vector.h"

namespace latbox {

// Values of checkMode.
inline constexpr long CHECK_MODE_NONE = 0;       // no check vectors: nothing can be judged
inline constexpr long CHECK_MODE_EQUATIONS = 1;  // the lattice of the equations
inline constexpr long CHECK_MODE_FINAL = 2;      // the lattice that is searched

template <class T>
struct CheckVectors {
  T R = T(0);                      // common range of the centred embedding
  Vector<T> lbnd, ubnd;            // allowed range per coordinate
  Vector<T> lbndSaved, ubndSaved;  // as generated
  bool symmetricBounds = false;    // lbnd == -ubnd
  // From here to dim - 1 all bounds are finite and the same, with lbnd == -ubnd; dim where there are none.
  long evenFrom = std::numeric_limits<long>::max();
  long checkMode = CHECK_MODE_NONE;
  T normBound = T(0);        // 3 * max squared length of lbnd, ubnd; infinite where a bound is
  Vector<T> c;               // multiplier per coordinate of the embedding
  bool generatedTu = false;  // the base part's tu when the basis was generated: fixes the layout
  // `program`'s bounds when the basis was generated, which the .lat file holds. `program` itself may be ahead
  // of the lattice: bounds that a new vector improves move at once.
  Vector<T> generatedLx, generatedRx;
  SerializablePair<T, T> generatedLrtu;

  CheckVectors();
  // Throws PrecisionException with "Precision lost during conversion".
  template <class U>
  void convertFrom(const CheckVectors<U>& other);

  // lbnd, ubnd and c for `dim` coordinates, all zero.
  void resizeCheckVectors(long dim);
  // lbnd and ubnd are final: their copies, symmetry, even part and norm bound, and the mode. Whoever changes
  // them behind this has to call it again.
  void takeBounds(long mode);
  void computeNormBound();
  // Longer than any vector that is kept.
  bool isTooLong(const Vector<T>& w) const { return w * w > normBound; }
  void findEvenPart();
};

}  // namespace latbox
