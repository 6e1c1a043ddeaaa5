// E. H. Bareiss, "Sylvester's identity and multistep integer-preserving Gaussian elimination", 1968: below
// the pivots each entry is a minor of the matrix, and the entry that plain elimination would have is that
// minor over the last pivot. The divisor is the same for all rows, so the same pivots are chosen. Fractions
// would take two to four greatest common divisors for every entry of every step; this takes one exact
// division.
//
// What the entries of a column have in common is taken out first, and put back where the tolerance is asked:
// the widths of a program stand in whole columns of its basis, and their product would be a factor of every
// minor.
#include "numbers/integer_elimination.h"

#include <vector>

#include "numbers/number.h"

namespace latbox {
namespace {

class WholeElimination {
 public:
  // False if an entry is no whole number.
  bool take(const Matrix<QQ>& M) {
    columns_ = static_cast<std::size_t>(M.N);
    for (long i = 1; i <= M.M; ++i) {
      std::vector<ZZ>& row = rows_.emplace_back();
      for (long j = 1; j <= M.N; ++j) {
        const QQ& x = M.rows[i].data[j];
        if (!x.isWhole()) return false;
        row.push_back(signedGanze(x));
      }
    }
    for (std::size_t col = 0; col < columns_; ++col) takeOutFactor(col);
    return true;
  }

  // False if the tolerance leaves an entry standing below a pivot.
  bool run() {
    for (std::size_t col = 0; col < columns_ && pivots_ < rows_.size(); ++col) {
      std::swap(rows_[pivots_], rows_[pivotRow(col)]);
      if (isNull(rows_[pivots_][col], col)) continue;
      for (std::size_t i = pivots_ + 1; i < rows_.size(); ++i) {
        if (!rows_[i][col].isZero() && isNull(rows_[i][col], col)) return false;
        clearEntry(rows_[i], rows_[pivots_], col);
      }
      divisor_ = rows_[pivots_++][col];
    }
    return true;
  }

  long pivots() const { return static_cast<long>(pivots_); }

 private:
  void takeOutFactor(std::size_t col) {
    ZZ factor(0);
    for (const std::vector<ZZ>& row : rows_)
      if (!factor.isOne()) factor = gcd(factor, row[col]);
    if (!factor.isOne() && !factor.isZero())
      for (std::vector<ZZ>& row : rows_) row[col] = row[col] / factor;
    factors_.push_back(std::move(factor));
  }

  // isZero of what the entry stands for: factor * entry / divisor.
  bool isNull(const ZZ& entry, std::size_t col) const {
    static const ZZ INVERSE_EPS(1'000'000'000);
    return entry.isZero() || abs(entry) * factors_[col] * INVERSE_EPS <= abs(divisor_);
  }

  // The first of the largest.
  std::size_t pivotRow(std::size_t col) const {
    std::size_t best = pivots_;
    for (std::size_t i = pivots_ + 1; i < rows_.size(); ++i)
      if (abs(rows_[i][col]) > abs(rows_[best][col])) best = i;
    return best;
  }

  // row = (pivot * row - entry * pivotRow) / divisor, from the column of the pivot on.
  void clearEntry(std::vector<ZZ>& row, const std::vector<ZZ>& pivotRow, std::size_t col) {
    const ZZ& pivot = pivotRow[col];
    const ZZ entry = row[col];
    if (entry.isZero() && pivot == divisor_) return;
    for (std::size_t j = col + 1; j < columns_; ++j) {
      const bool takes = !entry.isZero() && !pivotRow[j].isZero();
      if (!takes && row[j].isZero()) continue;
      ZZ::mul(row[j], pivot, row[j]);
      if (takes) {
        ZZ::mul(entry, pivotRow[j], product_);
        ZZ::sub(row[j], product_, row[j]);
      }
      if (!divisor_.isOne()) ZZ::div(row[j], divisor_, row[j], rest_);
    }
    row[col] = ZZ(0);
  }

  std::vector<std::vector<ZZ>> rows_;
  std::vector<ZZ> factors_;  // of the columns
  std::size_t columns_ = 0;
  std::size_t pivots_ = 0;
  ZZ divisor_ = 1;  // the last pivot
  ZZ product_, rest_;
};

}  // namespace

bool wholeRank(const Matrix<QQ>& M, long& rank) {
  WholeElimination elimination;
  if (!elimination.take(M) || !elimination.run()) return false;
  rank = elimination.pivots();
  return true;
}

}  // namespace latbox
