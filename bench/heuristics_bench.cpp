// Cost of the measure of a near-solution, which every search that works on pools pays per candidate.
#include <benchmark/benchmark.h>

#include <random>

#include "lattice/lattice.h"
#include "numbers/number.h"

namespace {

using namespace latbox;

constexpr long DIM = 100;

// A box lattice of bounded variables, half of whose coordinates a vector misses.
template <class T>
struct Candidate {
  Lattice<T, dbl_t> lattice;
  Vector<T> v{DIM};

  Candidate() {
    std::mt19937 random(1);
    lattice.resizeLattice(DIM, DIM);
    lattice.fx.resize(DIM - 11, false);
    for (long i = 1; i <= lattice.fx.MN; ++i) lattice.fx[i] = FreedomDegree::bounded;
    for (long i = 1; i <= DIM; ++i) {
      lattice.lbnd[i] = T(-50);
      lattice.ubnd[i] = T(50);
      v[i] = T(static_cast<long>(random() % 201) - 100);
    }
    lattice.takeBounds(2);
  }
};

template <class T>
void oneSign(benchmark::State& state) {
  Candidate<T> c;
  for (auto _ : state) benchmark::DoNotOptimize(c.lattice.computeDeviation(c.v));
}
BENCHMARK(oneSign<dbl_t>);
BENCHMARK(oneSign<QQ>);

template <class T>
void bothSigns(benchmark::State& state) {
  Candidate<T> c;
  HeuristicDeviation<dbl_t> plus, minus;
  for (auto _ : state) {
    c.lattice.computeDeviations(c.v, plus, minus);
    benchmark::DoNotOptimize(plus);
    benchmark::DoNotOptimize(minus);
  }
}
BENCHMARK(bothSigns<dbl_t>);
BENCHMARK(bothSigns<QQ>);

// A candidate that a full collection refuses: measured and dropped.
template <class T>
void refused(benchmark::State& state) {
  Candidate<T> c;
  c.lattice.normBound = infinity<T>();
  c.lattice.params.collectLimit.set(1);
  Vector<T> centre(DIM);
  for (long i = 1; i <= DIM; ++i) centre[i] = T(1);
  c.lattice.collect(centre);
  for (auto _ : state) c.lattice.collect(c.v);
}
BENCHMARK(refused<dbl_t>);
BENCHMARK(refused<QQ>);

}  // namespace
