// A vector with the inhomogeneous coordinate exactly once: Euclid's algorithm on the last column of a copy of
// the basis.
#include "program/extraction.h"

#include "lattice/row_operation.h"
#include "lib/progress.h"
#include "numbers/number.h"

namespace latbox {

namespace {

template <class T>
class Extraction {
 public:
  Extraction(Lattice<T, dbl_t>& lattice, long rows)
      : lattice_(lattice), M_(lattice.unscaled(lattice.B)), rows_(rows) {}

  Vector<T> run() {
    for (bool changed = true; changed;) {
      if (choosePivot()) return result_;
      changed = reduceByPivot();
    }
    // The greatest common divisor of the column is not inhomBase: no vector of the lattice carries it once.
    return Vector<T>();
  }

 private:
  Lattice<T, dbl_t>& lattice_;
  Matrix<T> M_;
  long rows_;
  long pivotRow_ = 0;
  Vector<T> result_;

  const T& last(long i) const { return M_.rows[i].data[lattice_.dim]; }

  // The row of smallest non-zero value; true when a vector that is sought has been met on the way.
  bool choosePivot() {
    pivotRow_ = 0;
    for (long i = 1; i <= rows_; ++i) {
      if (isZero(last(i))) continue;
      if (pivotRow_ != 0 && abs(last(pivotRow_)) <= abs(last(i))) continue;
      pivotRow_ = i;
      result_ = M_.rows[i];
      lattice_.checkSolution(result_, false, NOW, false, Membership::byConstruction);
      if (isZero(abs(result_[lattice_.dim]) - abs(lattice_.inhomBase))) return true;
    }
    return false;
  }

  bool reduceByPivot() {
    bool changed = false;
    for (long i = 1; i <= rows_ && pivotRow_ != 0; ++i) {
      if (i == pivotRow_ || isZero(last(i))) continue;
      const T q = floor(last(i) / last(pivotRow_));
      if (isExactZero(q)) continue;
      subtractChecked(M_.rows[i], q, M_.rows[pivotRow_]);
      changed = true;
    }
    return changed;
  }
};

}  // namespace

template <class T, class F>
Vector<T> extractInhom(Lattice<T, F>& l) {
  const ProgressScope scope(l.verb() > 1, "Extracting current inhomogenous vector ...");
  // In the equation lattice the kernel stands in front, and what lies behind it is no solution of the
  // equations.
  const long rows = l.checkMode == CHECK_MODE_EQUATIONS ? l.rank - l.Ag.M : l.rank;
  return Extraction<T>(l, rows).run();
}

LATBOX_BOTH_TYPES(extractInhom)

}  // namespace latbox
