// Nodes per second of the enumeration, and block reduction run to its end, beside fplll and NTL on the same
// basis.
//
// LATBOX_BENCH_OPT names a program to reduce instead of the generated market splits.
#include <benchmark/benchmark.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <memory>
#include <random>
#include <string>

#ifdef LATBOX_WITH_FPLLL
#include <fplll.h>
#endif
#ifdef LATBOX_WITH_NTL
#include <NTL/LLL.h>
#include <NTL/version.h>
#endif

#include "lattice/lattice.h"
#include "lib/os/clock.h"
#include "numbers/number.h"
#include "program/generation.h"
#include "support/rows.h"

namespace {

using namespace latbox;

template <class T>
using Plain = Lattice<T, dbl_t>;

// Of the processor: what else runs on the machine does not count.
double seconds() {
  timespec time{};
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
  return static_cast<double>(time.tv_sec) + 1e-9 * static_cast<double>(time.tv_nsec);
}

// The search reads the clock once per node. This one counts the nodes, reads the system's clock as the
// product does, and ends the block after a number of them.
struct NodeCount {
  static inline long nodes = 0;
  static inline long limit = 0;
  static long read() {
    const long time = static_cast<long>(::time(nullptr));
    return ++nodes > limit ? time + 1'000'000 : time;
  }
};

// Rows (1, 0, .., a_i) with large a_i, swept until nothing changes.
template <class T>
std::unique_ptr<Plain<T>> reducedKnapsack(long n) {
  std::mt19937_64 random(static_cast<unsigned long>(n));
  auto lattice = std::make_unique<Plain<T>>();
  lattice->resizeLattice(n, n + 1);
  for (long i = 1; i <= n; ++i) {
    testing::rows(*lattice).B[i][i] = T(1);
    testing::rows(*lattice).B[i][n + 1] = T(static_cast<long>(random() % 10000000));
  }
  testing::rows(*lattice).B_save = lattice->B;
  lattice->newTransformation(false);
  lattice->checkMode = CHECK_MODE_FINAL;
  lattice->lbnd[n + 1] = T(1);
  lattice->ubnd[n + 1] = T(-1);
  lattice->params.pair.set(false);
  lattice->params.verb.set(0);
  lattice->params.eprune.set(0);
  lattice->interval_tt = 1000000;
  for (int sweep = 0; sweep < 20; ++sweep) lattice->lll(1, 0, 0);
  return lattice;
}

// One block over the whole lattice, ended after two million nodes.
template <class T>
void BM_Nodes(benchmark::State& state) {
  const long n = state.range(0);
  const auto source = reducedKnapsack<T>(n);
  source->params.beta.set(n);
  source->params.btime.set(1000);
  Plain<T> work;
  double nodes = 0;
  NodeCount::limit = 2'000'000;
  for (auto _ : state) {
    work = *source;
    work.updateGso(1, 0);
    for (long i = 1; i <= n; ++i) testing::setWord(work, i, STATUS_GSO | STATUS_REDUCED | STATUS_SWEPT);
    NodeCount::nodes = 0;
    setClock(NodeCount::read);
    const double start = seconds();
    work.enumerate(nullptr);
    state.SetIterationTime(seconds() - start);
    setClock(nullptr);
    nodes += static_cast<double>(NodeCount::nodes);
  }
  state.counters["nodes"] = benchmark::Counter(nodes, benchmark::Counter::kAvgIterations);
  state.counters["nodes_per_second"] = benchmark::Counter(nodes, benchmark::Counter::kIsRate);
}

std::string row(std::mt19937& random, int columns, long& sum) {
  std::string text = "[ ";
  for (int j = 0; j < columns; ++j) {
    const unsigned long value = random() % 100;
    sum += static_cast<long>(value);
    text += std::to_string(value) + ' ';
  }
  return text + "]\n";
}

std::string constants(int columns, const std::string& value) {
  std::string text = "[ ";
  for (int j = 0; j < columns; ++j) text += value + ' ';
  return text + "]\n";
}

// Equations with coefficients 0..99 and half their sum on the right, over variables 0..1.
std::string marketSplit(int rows, int columns) {
  std::mt19937 random(1);
  std::string left = "[\n", right = "[ ";
  for (int i = 0; i < rows; ++i) {
    long sum = 0;
    left += row(random, columns, sum);
    right += std::to_string(sum / 2) + ' ';
  }
  return "[]\n[]\n" + left + "]\n" + right + "]\n[]\n[]\n[]\n" + constants(columns, "0") +
         constants(columns, "0") + constants(columns, "1");
}

// The kernel lattice as the search starts from it.
template <class T>
std::unique_ptr<Plain<T>> kernelLattice(int rows, int columns) {
  const char* given = std::getenv("LATBOX_BENCH_OPT");
  const std::string own =
      std::filesystem::temp_directory_path() / ("enumeration_bench_" + std::to_string(getpid()) + ".opt");
  if (given == nullptr) std::ofstream(own) << marketSplit(rows, columns);
  Plain<QQ> exact;
  exact.program.optFile = given == nullptr ? own : given;
  exact.program.readOpt();
  if (given == nullptr) std::remove(own.c_str());
  exact.program.optFile.clear();
  exact.params.pair.set(false);
  exact.params.verb.set(0);
  prepare(exact, true, false);
  prepareLattice(exact);
  auto lattice = std::make_unique<Plain<T>>();
  if constexpr (std::is_same_v<T, QQ>)
    *lattice = exact;
  else
    lattice->convertFrom(exact);
  lattice->params.eprune.set(0);
  lattice->params.beta.set(20);
  return lattice;
}

template <class T>
void BM_Bkz20(benchmark::State& state) {
  const auto source = kernelLattice<T>(static_cast<int>(state.range(0)), static_cast<int>(state.range(1)));
  Plain<T> work;
  for (auto _ : state) {
    work = *source;
    const double start = seconds();
    work.enumerate(nullptr);
    state.SetIterationTime(seconds() - start);
  }
  state.counters["rank"] = static_cast<double>(source->rank);
  state.counters["first_row_squared"] = static_cast<double>(toDouble(work.B[1] * work.B[1]));
}

#ifdef LATBOX_WITH_FPLLL
const bool fplllNamed = (benchmark::AddCustomContext("fplll", std::to_string(FPLLL_MAJOR_VERSION) + "." +
                                                                  std::to_string(FPLLL_MINOR_VERSION) + "." +
                                                                  std::to_string(FPLLL_MICRO_VERSION)),
                         true);

fplll::ZZ_mat<mpz_t> peerBasis(const Plain<dbl_t>& lattice) {
  fplll::ZZ_mat<mpz_t> basis(static_cast<int>(lattice.rank), static_cast<int>(lattice.dim));
  for (long i = 1; i <= lattice.rank; ++i)
    for (long p = 1; p <= lattice.dim; ++p)
      basis(static_cast<int>(i - 1), static_cast<int>(p - 1)) = static_cast<long>(lattice.B[i][p]);
  return basis;
}

// The same block, searched to its end; double precision and no clock. It counts the nodes within the bound
// alone, about half of those tested, which are what the other count is of.
void BM_PeerNodes(benchmark::State& state) {
  using Float = fplll::FP_NR<double>;
  const int n = static_cast<int>(state.range(0));
  fplll::ZZ_mat<mpz_t> basis = peerBasis(*reducedKnapsack<dbl_t>(n));
  fplll::ZZ_mat<mpz_t> none;
  fplll::MatGSO<fplll::Z_NR<mpz_t>, Float> gso(basis, none, none, fplll::GSO_INT_GRAM);
  gso.update_gso();
  double nodes = 0;
  for (auto _ : state) {
    fplll::FastEvaluator<Float> evaluator;
    fplll::Enumeration<fplll::Z_NR<mpz_t>, Float> search(gso, evaluator);
    Float bound;
    long exponent = 0;
    bound = gso.get_r_exp(0, 0, exponent);
    const double start = seconds();
    search.enumerate(0, n, bound, exponent);
    state.SetIterationTime(seconds() - start);
    for (const auto count : search.get_nodes_array()) nodes += static_cast<double>(count);
  }
  state.counters["nodes"] = benchmark::Counter(nodes, benchmark::Counter::kAvgIterations);
  state.counters["nodes_per_second"] = benchmark::Counter(nodes, benchmark::Counter::kIsRate);
}

void BM_PeerBkz20(benchmark::State& state) {
  const auto source =
      kernelLattice<dbl_t>(static_cast<int>(state.range(0)), static_cast<int>(state.range(1)));
  fplll::ZZ_mat<mpz_t> none;
  double first = 0;
  for (auto _ : state) {
    fplll::ZZ_mat<mpz_t> basis = peerBasis(*source);
    std::vector<fplll::Strategy> strategies;
    const fplll::BKZParam parameters(20, strategies, 1 - 1e-9);
    const double start = seconds();
    fplll::bkz_reduction(&basis, nullptr, parameters, fplll::FT_LONG_DOUBLE);
    state.SetIterationTime(seconds() - start);
    first = 0;
    for (int p = 0; p < basis.get_cols(); ++p) first += basis(0, p).get_d() * basis(0, p).get_d();
  }
  state.counters["first_row_squared"] = first;
}

BENCHMARK(BM_PeerNodes)->Arg(20)->Arg(30)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(BM_PeerBkz20)->Args({6, 50})->Args({4, 30})->UseManualTime()->Unit(benchmark::kMillisecond);
#endif

#ifdef LATBOX_WITH_NTL
const bool ntlNamed = (benchmark::AddCustomContext("NTL", NTL_VERSION), true);

// In double, without pruning.
void BM_NtlBkz20(benchmark::State& state) {
  const auto source =
      kernelLattice<dbl_t>(static_cast<int>(state.range(0)), static_cast<int>(state.range(1)));
  double first = 0;
  for (auto _ : state) {
    NTL::mat_ZZ basis;
    basis.SetDims(source->rank, source->dim);
    for (long i = 1; i <= source->rank; ++i)
      for (long j = 1; j <= source->dim; ++j) basis(i, j) = static_cast<long>(source->B[i][j]);
    const double start = seconds();
    NTL::BKZ_FP(basis, 1 - 1e-9, 20);
    state.SetIterationTime(seconds() - start);
    first = NTL::to_double(basis(1) * basis(1));
  }
  state.counters["first_row_squared"] = first;
}
BENCHMARK(BM_NtlBkz20)->Args({6, 50})->Args({4, 30})->UseManualTime()->Unit(benchmark::kMillisecond);
#endif

BENCHMARK(BM_Nodes<dbl_t>)->Arg(20)->Arg(30)->Arg(45)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Nodes<QQ>)->Arg(20)->Arg(30)->Arg(45)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Bkz20<dbl_t>)->Args({6, 50})->Args({4, 30})->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Bkz20<QQ>)->Args({6, 50})->Args({4, 30})->UseManualTime()->Unit(benchmark::kMillisecond);

}  // namespace
