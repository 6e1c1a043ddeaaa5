// LLL on the bases that real programs lead to, beside fplll's long double LLL and NTL's double LLL on the
// same rows; the pieces it is made of; the copy of a lattice before each step; and membership by cached
// factorisation.
//
// LATBOX_BENCH_OPT names a program to measure instead of the generated market split.
#include <benchmark/benchmark.h>

#include <cstdlib>
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
#include "numbers/number.h"
#include "program/generation.h"
#include "support/program_text.h"
#include "support/rows.h"

namespace {

using namespace latbox;

template <class T>
using Plain = Lattice<T, dbl_t>;

std::string row(std::mt19937& random, int columns, int low, int high, long* sum = nullptr) {
  std::string text = "[ ";
  for (int j = 0; j < columns; ++j) {
    const int value = low + static_cast<int>(random() % static_cast<unsigned>(high - low + 1));
    if (sum != nullptr) *sum += value;
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
    left += row(random, columns, 0, 99, &sum);
    right += std::to_string(sum / 2) + ' ';
  }
  return "[]\n[]\n" + left + "]\n" + right + "]\n[]\n[]\n[]\n" + constants(columns, "0") +
         constants(columns, "0") + constants(columns, "1");
}

// Five two-sided rows of different widths and one maximised target: the common multiple of the widths is
// beyond what dbl_t holds exactly.
std::string knapsacks(int columns) {
  std::mt19937 random(2);
  std::string text = "[ inf ]\n[\n" + row(random, columns, 47, 103) + "]\n[]\n[]\n[\n";
  for (int i = 0; i < 5; ++i) text += row(random, columns, 5, 99);
  return text + "]\n[ 250 250 250 250 250 ]\n[ 756 830 636 805 736 ]\n" + constants(columns, "0") +
         constants(columns, "0") + constants(columns, "1");
}

// A lattice from the text of a program; `equations` stops before the kernel is reduced.
template <class T>
std::unique_ptr<Plain<T>> latticeOf(const std::string& path, bool equations) {
  Plain<QQ> exact;
  exact.program.optFile = path;
  exact.program.readOpt();
  exact.params.pair.set(false);
  prepare(exact, true, false);
  if (equations)
    generateLattice(exact, true);
  else
    prepareLattice(exact);
  auto lattice = std::make_unique<Plain<T>>();
  if constexpr (std::is_same_v<T, QQ>)
    *lattice = exact;
  else
    lattice->convertFrom(exact);
  return lattice;
}

template <class T>
std::unique_ptr<Plain<T>> latticeOfText(const std::string& text, bool equations) {
  return latticeOf<T>(testing::MemoryFile(text).path(), equations);
}

// The equation lattice of the market split, its equations weighted, as the kernel reduction meets it.
const Plain<dbl_t>& kernelMatrix() {
  static const auto lattice = [] {
    const char* path = std::getenv("LATBOX_BENCH_OPT");
    auto l = path == nullptr ? latticeOfText<dbl_t>(marketSplit(6, 50), true) : latticeOf<dbl_t>(path, true);
    for (long i = 1; i <= l->Ag.M; ++i) l->setScale(i, dbl_t(1000));
    return l;
  }();
  return *lattice;
}

// The kernel itself, as the search starts from it.
const Plain<dbl_t>& kernelLattice() {
  static const auto lattice = [] {
    const char* path = std::getenv("LATBOX_BENCH_OPT");
    return path == nullptr ? latticeOfText<dbl_t>(marketSplit(6, 50), false) : latticeOf<dbl_t>(path, false);
  }();
  return *lattice;
}

const Plain<QQ>& knapsackLattice() {
  static const auto lattice = latticeOfText<QQ>(knapsacks(20), false);
  return *lattice;
}

// One sweep with a budget that does not end it.
template <class T>
void reduceWhole(benchmark::State& state, const Plain<T>& source) {
  Plain<T> work;
  for (auto _ : state) {
    state.PauseTiming();
    work = source;
    work.clearStatus();
    work.interval_tt = 1000000000;
    state.ResumeTiming();
    benchmark::DoNotOptimize(work.lll(1, 0, 0));
  }
  state.counters["rank"] = static_cast<double>(source.rank);
  state.counters["first_row_squared"] = static_cast<double>(toDouble(work.B[1] * work.B[1]));
}

void BM_LllKernelMatrix(benchmark::State& state) {
  reduceWhole(state, kernelMatrix());
}
void BM_LllKernelLattice(benchmark::State& state) {
  reduceWhole(state, kernelLattice());
}
void BM_LllKnapsacksExact(benchmark::State& state) {
  reduceWhole(state, knapsackLattice());
  state.counters["R"] = static_cast<double>(toDouble(knapsackLattice().R));
}
BENCHMARK(BM_LllKernelMatrix)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_LllKernelLattice)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_LllKnapsacksExact)->Unit(benchmark::kMillisecond);

#ifdef LATBOX_WITH_FPLLL
const bool fplllNamed = (benchmark::AddCustomContext("fplll", std::to_string(FPLLL_MAJOR_VERSION) + "." +
                                                                  std::to_string(FPLLL_MINOR_VERSION) + "." +
                                                                  std::to_string(FPLLL_MICRO_VERSION)),
                         true);

void peer(benchmark::State& state, const Plain<dbl_t>& source) {
  using Number = fplll::Z_NR<mpz_t>;
  using Float = fplll::FP_NR<long double>;
  double first = 0;
  for (auto _ : state) {
    state.PauseTiming();
    fplll::ZZ_mat<mpz_t> B(static_cast<int>(source.rank), static_cast<int>(source.dim)), none;
    for (long i = 1; i <= source.rank; ++i)
      for (long j = 1; j <= source.dim; ++j)
        B(static_cast<int>(i - 1), static_cast<int>(j - 1)) = static_cast<long>(source.B[i][j]);
    state.ResumeTiming();
    fplll::MatGSO<Number, Float> gso(B, none, none, 0);
    fplll::LLLReduction<Number, Float> reduction(gso, 1 - 1e-9, 0.5 + 1e-9, 0);
    benchmark::DoNotOptimize(reduction.lll());
    first = 0;
    for (int j = 0; j < B.get_cols(); ++j) first += B(0, j).get_d() * B(0, j).get_d();
  }
  state.counters["first_row_squared"] = first;
}
void BM_PeerKernelMatrix(benchmark::State& state) {
  peer(state, kernelMatrix());
}
void BM_PeerKernelLattice(benchmark::State& state) {
  peer(state, kernelLattice());
}
BENCHMARK(BM_PeerKernelMatrix)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_PeerKernelLattice)->Unit(benchmark::kMillisecond);
#endif

#ifdef LATBOX_WITH_NTL
const bool ntlNamed = (benchmark::AddCustomContext("NTL", NTL_VERSION), true);

void ntl(benchmark::State& state, const Plain<dbl_t>& source) {
  double first = 0;
  for (auto _ : state) {
    state.PauseTiming();
    NTL::mat_ZZ B;
    B.SetDims(source.rank, source.dim);
    for (long i = 1; i <= source.rank; ++i)
      for (long j = 1; j <= source.dim; ++j) B(i, j) = static_cast<long>(source.B[i][j]);
    state.ResumeTiming();
    benchmark::DoNotOptimize(NTL::LLL_FP(B, 1 - 1e-9));
    first = NTL::to_double(B(1) * B(1));
  }
  state.counters["first_row_squared"] = first;
}
void BM_NtlKernelMatrix(benchmark::State& state) {
  ntl(state, kernelMatrix());
}
void BM_NtlKernelLattice(benchmark::State& state) {
  ntl(state, kernelLattice());
}
BENCHMARK(BM_NtlKernelMatrix)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_NtlKernelLattice)->Unit(benchmark::kMillisecond);
#endif

// The pieces of one position: the row of Gram-Schmidt data, and the judging of a vector.
void BM_GsoRow(benchmark::State& state) {
  Plain<dbl_t> work = kernelMatrix();
  work.interval_tt = 1000000000;
  work.lll(1, 0, 0);
  work.clearStatus();
  work.updateGso(1, 0);
  const long i = work.rank / 2;
  for (auto _ : state) {
    testing::setWord(work, i, 0);
    benchmark::DoNotOptimize(work.updateGso(i, i));
  }
}
BENCHMARK(BM_GsoRow);

void BM_CheckSolution(benchmark::State& state) {
  Plain<dbl_t> work = kernelMatrix();
  for (auto _ : state)
    benchmark::DoNotOptimize(work.checkSolution(work.B[2], true, NOW, false, Membership::byConstruction));
}
BENCHMARK(BM_CheckSolution);

// A lattice of rank n with dense rows: a reduced basis of a knapsack with n columns.
template <class T>
std::unique_ptr<Plain<T>> denseLattice(long n) {
  std::mt19937 random(3);
  auto lattice = std::make_unique<Plain<T>>();
  lattice->resizeLattice(n, 2 * n);
  for (long i = 1; i <= n; ++i) {
    for (long j = 1; j <= 2 * n; ++j)
      testing::rows(*lattice).B[i][j] = T(static_cast<long>(random() % 21) - 10);
    testing::rows(*lattice).B[i][i] += T(100);
  }
  testing::rows(*lattice).B_save = lattice->B;
  lattice->newTransformation(false);
  return lattice;
}

template <class T>
void BM_CopyLattice(benchmark::State& state) {
  const auto source = denseLattice<T>(state.range(0));
  source->updateGso(1, 0);
  Plain<T> target = *source;
  for (auto _ : state) {
    target = *source;
    benchmark::DoNotOptimize(target.B.rows);
  }
}
BENCHMARK(BM_CopyLattice<dbl_t>)->Arg(50)->Arg(100)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_CopyLattice<QQ>)->Arg(50)->Unit(benchmark::kMicrosecond);

template <class T>
void BM_Membership(benchmark::State& state) {
  const auto lattice = denseLattice<T>(state.range(0));
  Vector<T> v = lattice->B[1] - lattice->B[2] + lattice->B[3];
  if (!lattice->isMember(v)) state.SkipWithError("not a member");
  for (auto _ : state) benchmark::DoNotOptimize(lattice->isMember(v));
}
BENCHMARK(BM_Membership<dbl_t>)->Arg(50)->Arg(100)->Arg(200)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_Membership<QQ>)->Arg(50)->Unit(benchmark::kMicrosecond);

template <class T>
void BM_NoMember(benchmark::State& state) {
  const auto lattice = denseLattice<T>(state.range(0));
  Vector<T> v = lattice->B[1];
  v[1] += T(1);
  if (lattice->isMember(v)) state.SkipWithError("a member");
  for (auto _ : state) benchmark::DoNotOptimize(lattice->isMember(v));
}
BENCHMARK(BM_NoMember<dbl_t>)->Arg(50)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_NoMember<QQ>)->Arg(50)->Unit(benchmark::kMicrosecond);

// Generated rows are triangular up to the choice of columns.
void BM_MembershipAsGenerated(benchmark::State& state) {
  Plain<dbl_t> lattice = kernelMatrix();
  Vector<dbl_t> v = lattice.B_save[1] + lattice.B_save[2] + lattice.B_save[4];
  if (!lattice.isMember(v)) state.SkipWithError("not a member");
  for (auto _ : state) benchmark::DoNotOptimize(lattice.isMember(v));
}
BENCHMARK(BM_MembershipAsGenerated)->Unit(benchmark::kMicrosecond);

}  // namespace
