// Dictionaries of the levels of a basis: what the simplex method of relaxation.h exchanges.
//
// For level t and t + 1 coordinates on which rows K_0, ..., K_t of the basis are independent, the columns,
// the combinations w = sum_{i <= t} lambda_i K_i have all other coordinates, the rows, and lambda_t as linear
// functions of w_j on the columns:
//
//     w_r = sum_j A_rj w_j,    lambda_t = sum_j d_j w_j.
//
// One more row of the basis brings one column: the coordinate in which it leaves the span of the others
// farthest. So the dictionaries of all levels come from one elimination, some N k^2 multiplications.
#pragma once

#include <cstddef>
#include <vector>

namespace latbox::complete {

struct Dictionary {
  // The coordinates of rows and columns.
  std::vector<std::size_t> rows;
  std::vector<std::size_t> columns;
  // By rows, the objective behind them, padded with zeros to `stride` entries each.
  std::size_t stride = 0;
  std::vector<double> entries;

  double* row(std::size_t r) { return entries.data() + r * stride; }
  const double* row(std::size_t r) const { return entries.data() + r * stride; }
  const double* objective() const { return row(rows.size()); }
};

// The variables of a row and a column change places.
void exchange(Dictionary& dictionary, std::size_t r, std::size_t column);

class DictionaryBuilder {
 public:
  // For rows of one length, which outlive this; levels below `levels` are wanted, none exists yet.
  DictionaryBuilder(const std::vector<std::vector<double>>& basis, std::size_t levels);
  // With these coordinates as columns, in whatever order.
  DictionaryBuilder(const std::vector<std::vector<double>>& basis, const std::vector<std::size_t>& columns);

  // Goes on to the next level. False: its row is not independent of the others, as far as double can see.
  bool addLevel();
  // Of the last level that was added, with sign * lambda_t as its objective.
  Dictionary dictionary(int sign) const;

 private:
  const std::vector<std::vector<double>>& basis_;
  std::size_t stride_;
  // A by all coordinates; rows of columns are 0.
  std::vector<double> table_;
  std::vector<double> objective_;
  std::vector<std::size_t> columns_;
  // Of each coordinate: whether it can still become a column, and whether it is one.
  std::vector<char> isOpen_;
  std::vector<char> isColumn_;
};

}  // namespace latbox::complete
