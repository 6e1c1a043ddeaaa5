// Exact integer coordinates of vectors with respect to the rows of a matrix, from a cached factorisation.
//
// Two caches, one for the basis as saved and one for the current basis in unit coordinates. A cache is made
// when it is first asked for and lives until it is dropped, so that a change of the basis costs nothing.
#pragma once

#include <memory>

#include "numbers/matrix.h"
#include "numbers/vector.h"

namespace latbox {

// What a factorisation of one matrix offers; its form (triangular, modular, exact) is the solver's own
// matter.
template <class T>
class RowFactor;

template <class T>
class CoordSolver {
 public:
  CoordSolver();
  CoordSolver(const CoordSolver&);             // copies drop both caches: they are remade on demand
  CoordSolver& operator=(const CoordSolver&);  // likewise
  ~CoordSolver();

  enum class Which { saved, current };

  // Solves result * rows = v. False when v has no coordinates or they are not all integers. `rows` is
  // factorised if the cache is not valid.
  // Requires: `rows` is the matrix that the cache `which` belongs to.
  // Ensures: the combination that is returned gives v back, by the system's tolerance.
  // Throws: PrecisionException with "transformation coord error" where a dbl_t can't hold a coordinate.
  bool coordinates(Which which, const Matrix<T>& rows, const Vector<T>& v, Vector<T>& result);

  // The basis changed. Inline, for every row operation calls it.
  void dropCurrent() {
    if (current_ != nullptr) current_.reset();
  }
  void clear() {
    dropCurrent();
    dropSaved();
  }
  void dropSaved();            // the saved basis changed
  void currentBecomesSaved();  // rebase: drops the saved cache if there is no current one
  void savedBecomesCurrent();  // restore

 private:
  std::shared_ptr<RowFactor<T>> saved_;
  std::shared_ptr<RowFactor<T>> current_;
};

}  // namespace latbox
