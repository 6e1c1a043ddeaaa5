#include "lattice/coordinates/triangular.h"

#include <utility>

#include "numbers/number.h"

namespace latbox {

namespace {

std::size_t at(long i) {
  return static_cast<std::size_t>(i);
}

}  // namespace

template <class T>
void TriangularForm<T>::solve(const Vector<T>& v, Vector<T>& x) const {
  for (const Step& step : steps_) {
    T rest = v.data[step.column];
    for (const auto& earlier : step.earlier) rest -= x.data[earlier.row] * earlier.value;
    rest /= step.pivot;
    x.data[step.row] = roundNearest(rest);
  }
}

template <class T>
void TriangularForm<T>::peel(const Matrix<T>& rows) {
  std::vector<std::vector<long>> columnRows(at(rows.N) + 1), rowColumns(at(rows.M) + 1);
  std::vector<long> active(at(rows.N) + 1, 0), ready;
  for (long j = 1; j <= rows.N; ++j) {
    for (long i = 1; i <= rows.M; ++i) {
      if (isExactZero(rows.rows[i].data[j])) continue;
      columnRows[at(j)].push_back(i);
      rowColumns[at(i)].push_back(j);
    }
    active[at(j)] = static_cast<long>(columnRows[at(j)].size());
    if (active[at(j)] == 1) ready.push_back(j);
  }
  std::vector<bool> done(at(rows.M) + 1, false);
  while (!ready.empty()) {
    const long column = ready.back();
    ready.pop_back();
    if (active[at(column)] != 1) continue;
    const long row = takeStep(rows, column, columnRows[at(column)], done);
    for (const long j : rowColumns[at(row)])
      if (--active[at(j)] == 1) ready.push_back(j);
  }
  exists_ = static_cast<long>(steps_.size()) == rows.M;
}

// The row that is left in `column` is solved by it, from those that came before.
template <class T>
long TriangularForm<T>::takeStep(const Matrix<T>& rows, long column, const std::vector<long>& inColumn,
                                 std::vector<bool>& done) {
  Step step{0, column, T(), {}};
  for (const long i : inColumn) {
    if (done[at(i)])
      step.earlier.push_back({i, rows.rows[i].data[column]});
    else
      step.row = i;
  }
  step.pivot = rows.rows[step.row].data[column];
  done[at(step.row)] = true;
  steps_.push_back(std::move(step));
  return steps_.back().row;
}

template class TriangularForm<dbl_t>;
template class TriangularForm<QQ>;

}  // namespace latbox
