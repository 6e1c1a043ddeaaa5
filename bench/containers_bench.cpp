// The containers under the reduction: the copy of a basis, row operations, dot products, and the modular
// tests.
#include <benchmark/benchmark.h>

#include <sstream>
#include <string>

#include "lib/modular.h"
#include "numbers/matrix.h"
#include "numbers/number.h"

namespace latbox {
namespace {

constexpr long RANK = 100;
constexpr long DIM = 120;

template <class T>
Matrix<T> basis(long rank, long dim) {
  Matrix<T> result(rank, dim);
  for (long i = 1; i <= rank; ++i)
    for (long j = 1; j <= dim; ++j)
      result[i][j] = T((i * 7919 + j * j * 104729 + i * j * j * 31) % 2001 - 1000);
  return result;
}

template <class T>
void copyBasis(benchmark::State& state) {
  const Matrix<T> source = basis<T>(RANK, DIM);
  Matrix<T> target;
  for (auto _ : state) {
    target = source;
    benchmark::DoNotOptimize(target.data);
  }
}
BENCHMARK(copyBasis<dbl_t>);
BENCHMARK(copyBasis<QQ>);

template <class T>
void rowOperation(benchmark::State& state) {
  Matrix<T> B = basis<T>(2, DIM);
  const T q(3), back(-3);
  for (auto _ : state) {
    B[1].subtractMultiple(q, B[2]);
    B[1].subtractMultiple(back, B[2]);
  }
  state.SetItemsProcessed(state.iterations() * 2 * DIM);
}
BENCHMARK(rowOperation<dbl_t>);
BENCHMARK(rowOperation<QQ>);

template <class T>
void dotProduct(benchmark::State& state) {
  const Matrix<T> B = basis<T>(2, DIM);
  for (auto _ : state) benchmark::DoNotOptimize(B[1] * B[2]);
  state.SetItemsProcessed(state.iterations() * DIM);
}
BENCHMARK(dotProduct<dbl_t>);
BENCHMARK(dotProduct<QQ>);

void swapRows(benchmark::State& state) {
  Matrix<dbl_t> B = basis<dbl_t>(RANK, DIM);
  for (auto _ : state) B.swapRows(3, 4);
}
BENCHMARK(swapRows);

ModularMatrix residues(const Matrix<dbl_t>& m, std::uint64_t p) {
  ModularMatrix result(m.M, m.N);
  for (long i = 1; i <= m.M; ++i)
    for (long j = 1; j <= m.N; ++j) {
      unsigned long long residue = 0;
      modulo(m[i][j], p, residue);
      result.at(i, j) = residue;
    }
  return result;
}

void modularDeterminants(benchmark::State& state) {
  const long n = state.range(0);
  const ModularMatrix m = residues(basis<dbl_t>(n, n), MODULAR_PRIMES[0]);
  for (auto _ : state) benchmark::DoNotOptimize(modularDeterminant(m, MODULAR_PRIMES[0]));
}
BENCHMARK(modularDeterminants)->Arg(50)->Arg(100)->Arg(200)->Unit(benchmark::kMillisecond);

void modularCoordinates(benchmark::State& state) {
  const long rank = state.range(0), dim = rank + 20;
  Matrix<dbl_t> B = basis<dbl_t>(rank, dim);
  for (long i = 1; i <= rank; ++i) B[i][i] += 5000;
  ModularFactor factor;
  if (!factor.factorise(residues(B, MODULAR_PRIMES[0]), MODULAR_PRIMES[0])) state.SkipWithError("dependent");
  const ModularMatrix row = residues(B, MODULAR_PRIMES[0]);
  std::vector<std::uint64_t> v(row.row(1), row.row(1) + dim + 1), x;
  for (auto _ : state) benchmark::DoNotOptimize(factor.solve(v, x));
}
BENCHMARK(modularCoordinates)->Arg(50)->Arg(100)->Arg(200)->Unit(benchmark::kMicrosecond);

template <class T>
void readMatrix(benchmark::State& state) {
  std::ostringstream out;
  out << basis<T>(RANK, DIM);
  const std::string text = out.str();
  for (auto _ : state) benchmark::DoNotOptimize(Matrix<T>(text).M);
  state.SetBytesProcessed(state.iterations() * static_cast<long>(text.size()));
}
BENCHMARK(readMatrix<dbl_t>)->Unit(benchmark::kMillisecond);
BENCHMARK(readMatrix<QQ>)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace latbox
