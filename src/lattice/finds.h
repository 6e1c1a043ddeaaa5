// What a search has found and remembers: the best vectors, the solutions, the collections of near-solutions.
// All in unit coordinates of the present lattice.
#pragma once

#include "lattice/heuristic_vector.h"
#include "lib/set.h"

namespace latbox {

template <class T, class F>
struct Finds {
  HeuristicVector<T, F> bestInhomogeneous;  // best vector with inhomogeneous coordinate, empty when none
  HeuristicVector<T, F> bestSlack;          // best judged feasible vector, empty when none
  Array<TargetVector<T>> solutions;         // found in this run, in order of discovery
  SortedSet<HeuristicVector<T, F>> homogeneousVectors;
  SortedSet<HeuristicVector<T, F>> inhomogeneousVectors;

  // A find must change neither its place nor its norms on the way.
  // Throws: PrecisionException with "Precision lost during conversion" where a value, put back into its own
  // type, is another one.
  template <class U>
  void convertFrom(const Finds<U, F>& other);

  void emptyCollections();
  void forgetFinds();  // everything; the limits of the collections stay

  // Whether w (`dim` coordinates) is the best slack vector or one of the solutions.
  bool isKnown(const Vector<T>& w) const;
};

}  // namespace latbox
