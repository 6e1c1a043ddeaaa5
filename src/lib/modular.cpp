#include "lib/modular.h"

#include <algorithm>
#include <utility>

#include "lib/failure.h"

namespace latbox {
namespace {

void swapRows(ModularMatrix& m, long i, long j) {
  if (i != j) std::swap_ranges(m.row(i) + 1, m.row(i) + 1 + m.N, m.row(j) + 1);
}

// Takes multiples of row k off the rows below it. The multipliers stay in column k: the lower factor.
void eliminateBelow(ModularMatrix& m, long k, std::uint64_t inverse, std::uint64_t p) {
  for (long i = k + 1; i <= m.M; ++i) {
    const std::uint64_t q = multiplyModulo(m.at(i, k), inverse, p);
    if (q != 0) subtractRowModulo(m.row(i), q, m.row(k), k + 1, m.N, p);
    m.at(i, k) = q;
  }
}

// The first row from..M with an entry in column `col`, 0 if there is none.
long findPivot(const ModularMatrix& m, long from, long col) {
  for (long i = from; i <= m.M; ++i)
    if (m.at(i, col) != 0) return i;
  return 0;
}

}  // namespace

std::uint64_t powerModulo(std::uint64_t base, std::uint64_t exponent, std::uint64_t p) {
  return powerBy(base, exponent, [p](std::uint64_t a, std::uint64_t b) { return multiplyModulo(a, b, p); });
}

std::uint64_t powerModuloAny(std::uint64_t base, std::uint64_t exponent, std::uint64_t n) {
  return powerBy(base, exponent,
                 [n](std::uint64_t a, std::uint64_t b) { return multiplyModuloAny(a, b, n); });
}

std::uint64_t inverseModulo(std::uint64_t a, std::uint64_t p) {
  return powerModulo(a, p - 2, p);
}

void subtractRowModulo(std::uint64_t* row, std::uint64_t q, const std::uint64_t* other, long from, long last,
                       std::uint64_t p) {
  for (long j = from; j <= last; ++j) row[j] = subtractModulo(row[j], multiplyModulo(q, other[j], p), p);
}

std::uint64_t modularDeterminant(ModularMatrix work, std::uint64_t p) {
  if (work.M != work.N) fail("Matrix: a non-quadratic matrix determinant is not defined");
  std::uint64_t result = 1;
  for (long k = 1; k <= work.N; ++k) {
    const long found = findPivot(work, k, k);
    if (found == 0) return 0;
    swapRows(work, found, k);
    if (found != k) result = subtractModulo(0, result, p);
    result = multiplyModulo(result, work.at(k, k), p);
    eliminateBelow(work, k, inverseModulo(work.at(k, k), p), p);
  }
  return result;
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
    eliminateBelow(work, k, inverse, p);
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
