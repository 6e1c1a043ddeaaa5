// What survives a regeneration of the lattice. Lattice coordinates lose their meaning with the lattice, so
// vectors are kept in the variables of the program; slack and deviation variables are left out, as in the
// .sol file: they follow from the others. The collection of homogeneous vectors isn't kept: a difference of
// two points is no point, and the variables of the program hold points alone.
#pragma once

#include <vector>

#include "lattice/lattice.h"

namespace latbox {

template <class T, class F>
class Memory {
 public:
  enum class Vectors { none, all };

  // The stars and, with `all`, the best vectors, the solutions and the inhomogeneous collection with its
  // limit. Vectors that no point of the program belongs to are left out.
  Memory(const Lattice<T, F>& lattice, Vectors vectors);

  const ConversionArray<Star<T>>& stars() const { return stars_; }
  // The kept vectors go through the check as such, the collected ones into the collections; those that do not
  // fit the lattice any more are dropped. Nothing enters the basis, and no find counts.
  void reinstate(Lattice<T, F>& lattice) const;

 private:
  ConversionArray<Star<T>> stars_;
  std::vector<Star<T>> nearMisses_;  // the best inhomogeneous vector
  std::vector<Star<T>> vectors_;     // the best slack vector and the solutions
  SortedSet<HeuristicVector<T, F>> inhomogeneous_;

  static void keepVector(const Lattice<T, F>& lattice, const TimeVector<T>& v, std::vector<Star<T>>& kept);
};

// Empties what the lattice remembers: stars, solutions, best vectors, collections.
template <class T, class F>
void forget(Lattice<T, F>& lattice);

// In which form the vectors of `reinstate` come.
inline constexpr int MODE_COEFFICIENTS = 2;  // of the rows of B
inline constexpr int MODE_PROGRAM = 3;       // the variables of the .opt file; any other: unit coordinates

// Appends `records` to program.stars, judges `vectors` and collects the sets, in that order.
template <class T, class F>
void reinstate(Lattice<T, F>& lattice, const ConversionArray<Star<T>>& records,
               const std::vector<Star<T>>& vectors, const SortedSet<HeuristicVector<T, F>>& setA,
               const SortedSet<HeuristicVector<T, F>>& setB, int mode);

// The lattice of `program` as it stands now, with what is remembered of the old one, and its .lat file. The
// basis starts anew: no index, coordinate or weight of before holds.
// Throws: PrecisionException; the lattice is not to be used then.
template <class T, class F>
void regenerateLattice(Lattice<T, F>& lattice);

}  // namespace latbox
