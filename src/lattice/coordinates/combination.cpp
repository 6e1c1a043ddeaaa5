#include "lattice/coordinates/combination.h"

#include <algorithm>
#include <cmath>

namespace latbox {

namespace {

template <class T>
bool allVanish(const Vector<T>& rest) {
  for (long j = 1; j <= rest.MN; ++j)
    if (!isExactZero(rest.data[j]) && !isZero(rest.data[j])) return false;
  return true;
}

}  // namespace

template <class T>
SparseRows<T>::SparseRows(const Matrix<T>& rows) : row_(static_cast<std::size_t>(rows.M) + 1) {
  for (long i = 1; i <= rows.M; ++i)
    for (long j = 1; j <= rows.N; ++j)
      if (!isExactZero(rows.rows[i].data[j]))
        row_[static_cast<std::size_t>(i)].push_back({j, rows.rows[i].data[j]});
}

template <>
Answer SparseRows<dbl_t>::confirm(const Vector<dbl_t>& x, const Vector<dbl_t>& v) const {
  thread_local Vector<dbl_t> rest;
  rest = v;
  dbl_t largest = 0;
  for (long i = 1; i <= count(); ++i) {
    if (x.data[i] == 0) continue;
    for (const auto& e : row_[static_cast<std::size_t>(i)]) {
      const dbl_t product = x.data[i] * e.value;
      largest = std::max(largest, std::fabs(product));
      rest.data[e.column] -= product;
    }
  }
  if (!(largest * static_cast<dbl_t>(count() + 1) < EXACT_SUM)) return Answer::unsure;
  return allVanish(rest) ? Answer::yes : Answer::no;
}

template <>
Answer SparseRows<QQ>::confirm(const Vector<QQ>& x, const Vector<QQ>& v) const {
  thread_local Vector<QQ> rest;
  rest = v;
  for (long i = 1; i <= count(); ++i) {
    if (x.data[i].isExactZero()) continue;
    for (const auto& e : row_[static_cast<std::size_t>(i)])
      QQ::submul(rest.data[e.column], x.data[i], e.value);
  }
  return allVanish(rest) ? Answer::yes : Answer::no;
}

template class SparseRows<dbl_t>;
template class SparseRows<QQ>;

}  // namespace latbox
