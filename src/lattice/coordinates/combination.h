// The confirmation of a combination: whoever proposed coordinates, they count only if they give the vector
// back.
#pragma once

#include <vector>

#include "numbers/matrix.h"
#include "numbers/number.h"

namespace latbox {

// Sums of products stay exact integers of a dbl_t below this.
inline constexpr dbl_t EXACT_SUM = 9.2e18L;

enum class Answer { yes, no, unsure };

// Rows without their zeros, to confirm a combination at the price of the entries that are there. Numbered
// from 1.
template <class T>
class SparseRows {
 public:
  explicit SparseRows(const Matrix<T>& rows);
  long count() const { return static_cast<long>(row_.size()) - 1; }

  // Whether x * rows gives v, by the system's tolerance. In dbl_t sums that may have been rounded decide
  // nothing: `unsure`.
  // Requires: x has an element a row, v one a column.
  Answer confirm(const Vector<T>& x, const Vector<T>& v) const;

 private:
  struct Entry {
    long column;
    T value;
  };
  std::vector<std::vector<Entry>> row_;
};

}  // namespace latbox
