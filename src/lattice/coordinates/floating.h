// Coordinates by rows = L U on as many columns as there are rows, in long double with column pivoting,
// rounded. Cheap, and no proof: a proposal that does not confirm says nothing.
#pragma once

#include <vector>

#include "numbers/matrix.h"

namespace latbox {

class FloatingForm {
 public:
  template <class T>
  explicit FloatingForm(const Matrix<T>& rows);
  // False where a pivot vanished.
  bool exists() const { return exists_; }

  // x gets the rounded coordinates of v, one a row. False when one is too large to be rounded to an integer.
  template <class T>
  bool solve(const Vector<T>& v, Vector<T>& x);

 private:
  long n_;
  bool exists_ = false;
  std::vector<long> pivot_;   // column of each row, from 0
  std::vector<dbl_t> upper_;  // upper_[i * n + k] = U[k][pivot of i]
  std::vector<dbl_t> lower_;  // lower_[i * n + r] = L[r][i]
  std::vector<dbl_t> work_;

  bool eliminate(std::vector<dbl_t>& a, long columns);
};

}  // namespace latbox
