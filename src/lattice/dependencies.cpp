// Removal of dependent vectors from the basis.
#include "lattice/lattice.h"

namespace latbox {

template <class T, class F>
long Lattice<T, F>::removeDependentVectors() {
  Matrix<T> M = unscaled(B);
  eliminateDependentRows(M);
  const long removed = B.M - M.M;
  if (removed == 0) return 0;
  // The rest may have been rewritten, so it is the basis that all transformations start from again.
  rank = M.M;
  B_save = M;
  B = rescaled(B_save);
  coordSolver.dropSaved();
  resizeWork(rank);
  emptyCollections();
  TT.clear();
  newTransformation(false);
  return removed;
}

template long Lattice<dbl_t, dbl_t>::removeDependentVectors();
template long Lattice<QQ, dbl_t>::removeDependentVectors();

}  // namespace latbox
