#include "lattice/coordinates/floating.h"

#include <cmath>

#include "lattice/coordinates/combination.h"
#include "numbers/number.h"

namespace latbox {

namespace {

std::size_t at(long i) {
  return static_cast<std::size_t>(i);
}

}  // namespace

template <class T>
FloatingForm::FloatingForm(const Matrix<T>& rows) : n_(rows.M) {
  std::vector<dbl_t> work(at(n_ * rows.N));
  for (long i = 0; i < n_; ++i)
    for (long j = 0; j < rows.N; ++j) work[at(i * rows.N + j)] = toDouble(rows.rows[i + 1].data[j + 1]);
  exists_ = eliminate(work, rows.N);
  work_.resize(at(n_));
}

template <class T>
bool FloatingForm::solve(const Vector<T>& v, Vector<T>& x) {
  for (long i = 0; i < n_; ++i) {
    dbl_t y = toDouble(v.data[pivot_[at(i)] + 1]);
    for (long k = 0; k < i; ++k) y -= work_[at(k)] * upper_[at(i * n_ + k)];
    work_[at(i)] = y / upper_[at(i * n_ + i)];
  }
  for (long i = n_ - 1; i >= 0; --i) {
    dbl_t y = work_[at(i)];
    for (long r = i + 1; r < n_; ++r) y -= work_[at(r)] * lower_[at(i * n_ + r)];
    work_[at(i)] = y;
  }
  for (long i = 0; i < n_; ++i) {
    const dbl_t rounded = std::round(work_[at(i)]);
    if (!(std::fabs(rounded) < EXACT_SUM)) return false;
    x.data[i + 1] = T(static_cast<long long>(rounded));
  }
  return true;
}

bool FloatingForm::eliminate(std::vector<dbl_t>& a, long columns) {
  pivot_.assign(at(n_), 0);
  upper_.assign(at(n_ * n_), 0);
  lower_.assign(at(n_ * n_), 0);
  for (long i = 0; i < n_; ++i) {
    const dbl_t* const row = a.data() + i * columns;
    long best = 0;
    for (long j = 1; j < columns; ++j)
      if (std::fabs(row[j]) > std::fabs(row[best])) best = j;
    if (columns == 0 || !(std::fabs(row[best]) > EPS)) return false;
    pivot_[at(i)] = best;
    for (long k = 0; k <= i; ++k) upper_[at(i * n_ + k)] = a[at(k * columns + best)];
    for (long r = i + 1; r < n_; ++r) {
      dbl_t* const below = a.data() + r * columns;
      const dbl_t factor = below[best] / row[best];
      lower_[at(i * n_ + r)] = factor;
      if (factor == 0) continue;
      for (long j = 0; j < columns; ++j) below[j] -= factor * row[j];
      below[best] = 0;
    }
  }
  return true;
}

#define LATBOX_INSTANTIATE(T)                            \
  template FloatingForm::FloatingForm(const Matrix<T>&); \
  template bool FloatingForm::solve(const Vector<T>&, Vector<T>&);
LATBOX_INSTANTIATE(dbl_t)
LATBOX_INSTANTIATE(QQ)

}  // namespace latbox
