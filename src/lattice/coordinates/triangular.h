// Coordinates by substitution, where the rows are triangular up to the choice of columns, which bases as
// generated are: in each step one column in which of the rows that are left only one has an entry. Costs one
// multiplication per entry.
#pragma once

#include <vector>

#include "numbers/matrix.h"

namespace latbox {

template <class T>
class TriangularForm {
 public:
  explicit TriangularForm(const Matrix<T>& rows) { peel(rows); }
  // False where the rows have no such order; then there is nothing to solve by.
  bool exists() const { return exists_; }

  // x gets the rounded coordinates of v, one a row. Each follows from those before it, so that a combination
  // that does not give v back proves that none exists.
  void solve(const Vector<T>& v, Vector<T>& x) const;

 private:
  struct Earlier {
    long row;
    T value;
  };
  struct Step {
    long row;
    long column;
    T pivot;
    std::vector<Earlier> earlier;
  };
  std::vector<Step> steps_;
  bool exists_ = false;

  void peel(const Matrix<T>& rows);
  long takeStep(const Matrix<T>& rows, long column, const std::vector<long>& inColumn,
                std::vector<bool>& done);
};

}  // namespace latbox
