// Removal of dependent vectors from the basis.
#include "lattice/lattice.h"

namespace latbox {

template <class T, class F>
long Lattice<T, F>::removeDependentVectors() {
  Matrix<T> M = this->unscaled(this->B);
  eliminateDependentRows(M);
  const long removed = this->B.M - M.M;
  if (removed == 0) return 0;
  // The rest may have been rewritten, so it is the basis that all transformations start from again.
  enterBasis(M);
  this->emptyCollections();
  return removed;
}

template long Lattice<dbl_t, dbl_t>::removeDependentVectors();
template long Lattice<QQ, dbl_t>::removeDependentVectors();

}  // namespace latbox
