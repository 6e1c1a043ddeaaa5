#include "lib/modular.h"

#include <algorithm>
#include <utility>

#include "lib/failure.h"

namespace latbox {
namespace {

void swapRows(ModularMatrix& m, long i, long j) {
  if (i != j) std::swap_ranges(m.row(i) + 1, m.row(i) + 1 + m.N, m.row(j) + 1);
}

// row[from..n] -= q * pivot[from..n].
void subtractMultiple(std::uint64_t* row, const std::uint64_t* pivot, std::uint64_t q, long from, long n,
                      std::uint64_t p) {
  for (long j = from; j <= n; ++j) row[j] = subtractModulo(row[j], multiplyModulo(q, pivot[j], p), p);
}

// The first row from..M with an entry in column `col`, 0 if there is none.
long findPivot(const ModularMatrix& m, long from, long col) {
  for (long i = from; i <= m.M; ++i)
    if (m.at(i, col) != 0) return i;
  return 0;
}

struct Echelon {
  long rank = 0;
  bool odd = false;           // number of row exchanges
  std::uint64_t product = 1;  // of the pivots
};

Echelon eliminate(ModularMatrix& m, std::uint64_t p) {
  Echelon result;
  for (long col = 1; col <= m.N && result.rank < m.M; ++col) {
    const long found = findPivot(m, result.rank + 1, col);
    if (found == 0) continue;
    const long k = ++result.rank;
    if (found != k) result.odd = !result.odd;
    swapRows(m, found, k);
    result.product = multiplyModulo(result.product, m.at(k, col), p);
    const std::uint64_t inverse = inverseModulo(m.at(k, col), p);
    for (long i = k + 1; i <= m.M; ++i) {
      const std::uint64_t q = multiplyModulo(m.at(i, col), inverse, p);
      if (q != 0) subtractMultiple(m.row(i), m.row(k), q, col, m.N, p);
    }
  }
  return result;
}

}  // namespace

std::uint64_t powerModulo(std::uint64_t base, std::uint64_t exponent, std::uint64_t p) {
  std::uint64_t result = 1;
  for (; exponent != 0; exponent >>= 1, base = multiplyModulo(base, base, p))
    if (exponent & 1) result = multiplyModulo(result, base, p);
  return result;
}

std::uint64_t inverseModulo(std::uint64_t a, std::uint64_t p) {
  return powerModulo(a, p - 2, p);
}

long modularRank(ModularMatrix work, std::uint64_t p) {
  return eliminate(work, p).rank;
}

std::uint64_t modularDeterminant(ModularMatrix work, std::uint64_t p) {
  if (work.M != work.N) fail("Matrix: a non-quadratic matrix determinant is not defined");
  const Echelon echelon = eliminate(work, p);
  if (echelon.rank < work.M) return 0;
  return echelon.odd ? subtractModulo(0, echelon.product, p) : echelon.product;
}

// Each row is reduced by those before it and never exchanged: the order of the rows is the question.
long modularIndependentPrefix(ModularMatrix work, std::uint64_t p) {
  std::vector<std::pair<long, std::uint64_t>> pivots;  // column and inverse, per row
  for (long i = 1; i <= work.M; ++i) {
    std::uint64_t* row = work.row(i);
    for (std::size_t k = 0; k < pivots.size(); ++k) {
      const std::uint64_t q = multiplyModulo(row[pivots[k].first], pivots[k].second, p);
      if (q != 0) subtractMultiple(row, work.row(static_cast<long>(k) + 1), q, 1, work.N, p);
    }
    long col = 1;
    while (col <= work.N && row[col] == 0) ++col;
    if (col > work.N) return i - 1;
    pivots.emplace_back(col, inverseModulo(row[col], p));
  }
  return work.M;
}

bool ModularFactor::factorise(const ModularMatrix& basis, std::uint64_t p) {
  clear();
  ModularMatrix work(basis.N, basis.M);
  for (long i = 1; i <= basis.M; ++i)
    for (long j = 1; j <= basis.N; ++j) work.at(j, i) = basis.at(i, j);
  order_.resize(static_cast<std::size_t>(basis.N) + 1);
  for (long j = 0; j <= basis.N; ++j) order_[static_cast<std::size_t>(j)] = j;
  inverses_.assign(static_cast<std::size_t>(basis.M) + 1, 0);
  for (long k = 1; k <= work.N; ++k) {
    const long found = findPivot(work, k, k);
    if (found == 0) return false;
    swapRows(work, found, k);
    std::swap(order_[static_cast<std::size_t>(found)], order_[static_cast<std::size_t>(k)]);
    const std::uint64_t inverse = inverses_[static_cast<std::size_t>(k)] = inverseModulo(work.at(k, k), p);
    for (long i = k + 1; i <= work.M; ++i) {
      const std::uint64_t q = multiplyModulo(work.at(i, k), inverse, p);
      if (q != 0) subtractMultiple(work.row(i), work.row(k), q, k + 1, work.N, p);
      work.at(i, k) = q;
    }
  }
  factors_ = std::move(work);
  permuted_.assign(static_cast<std::size_t>(basis.N) + 1, 0);
  rank_ = basis.M;
  dim_ = basis.N;
  p_ = p;
  return true;
}

bool ModularFactor::solve(const std::vector<std::uint64_t>& vector, std::vector<std::uint64_t>& x) {
  std::uint64_t* y = permuted_.data();
  for (long i = 1; i <= dim_; ++i) {
    const std::uint64_t* row = factors_.row(i);
    std::uint64_t value = vector[static_cast<std::size_t>(order_[static_cast<std::size_t>(i)])];
    const long last = std::min(i - 1, rank_);
    for (long j = 1; j <= last; ++j) value = subtractModulo(value, multiplyModulo(row[j], y[j], p_), p_);
    if (i > rank_ && value != 0) return false;
    y[i] = value;
  }
  x.resize(static_cast<std::size_t>(rank_) + 1);
  for (long k = rank_; k >= 1; --k) {
    const std::uint64_t* row = factors_.row(k);
    std::uint64_t value = y[k];
    for (long j = k + 1; j <= rank_; ++j)
      value = subtractModulo(value, multiplyModulo(row[j], x[static_cast<std::size_t>(j)], p_), p_);
    x[static_cast<std::size_t>(k)] = multiplyModulo(value, inverses_[static_cast<std::size_t>(k)], p_);
  }
  return true;
}

}  // namespace latbox
