// Cost of what happens to a program before there is a lattice: reading (which has to be linear in the size of
// the file), conversion, both stages of the preparation, and the search for dependent equations.
#include <benchmark/benchmark.h>

#include <random>
#include <string>

#include "model/tessik.h"
#include "numbers/number.h"
#include "support/program_text.h"

namespace {

using namespace latbox;

// `rows` equations of `columns` coefficients of four digits.
std::string equations(long rows, long columns) {
  std::mt19937 random(1);
  std::string text = "[]\n[]\n[\n";
  for (long i = 0; i < rows; ++i) {
    text += "[ ";
    for (long j = 0; j < columns; ++j) text += std::to_string(random() % 10000) + ' ';
    text += "]\n";
  }
  text += "]\n[ ";
  for (long i = 0; i < rows; ++i) text += "100000 ";
  text += "]\n[]\n[]\n[]\n";
  for (const char* value : {"0 ", "0 ", "1 "}) {
    text += "[ ";
    for (long j = 0; j < columns; ++j) text += value;
    text += "]\n";
  }
  return text;
}

// Bytes per second stay the same while the file grows.
void readProgram(benchmark::State& state) {
  const std::string text = equations(state.range(0), 1000);
  const testing::MemoryFile file(text);
  for (auto _ : state) benchmark::DoNotOptimize(testing::readProgramFile(file.path()));
  state.SetBytesProcessed(state.iterations() * static_cast<long>(text.size()));
}
BENCHMARK(readProgram)->Arg(10)->Arg(100)->Arg(1000)->Unit(benchmark::kMillisecond);

void convertDown(benchmark::State& state) {
  const Tessik<QQ> exact = testing::readProgram(equations(100, 1000));
  Tessik<dbl_t> standard;
  for (auto _ : state) standard.convertFrom(exact);
}
BENCHMARK(convertDown)->Unit(benchmark::kMillisecond);

template <class T>
void prepare(benchmark::State& state) {
  const Tessik<T> program = testing::programOf<T>(equations(state.range(0), 4 * state.range(0)));
  for (auto _ : state) {
    Tessik<T> copy = program;
    copy.prepareStageOne(true, false);
    copy.prepareStageTwo(false);
  }
}
BENCHMARK(prepare<dbl_t>)->Arg(20)->Arg(100)->Unit(benchmark::kMillisecond);
BENCHMARK(prepare<QQ>)->Arg(20)->Arg(100)->Unit(benchmark::kMillisecond);

// Every row twice: half of the rows are removed.
template <class T>
void removeDoubledRows(benchmark::State& state) {
  const Tessik<QQ> exact = testing::readProgram(equations(state.range(0), 4 * state.range(0)));
  Matrix<T> doubled(2 * state.range(0), exact.Ag.N);
  for (long i = 1; i <= doubled.M; ++i)
    for (long j = 1; j <= doubled.N; ++j) doubled[i][j] = fromExact<T>(exact.Ag[(i + 1) / 2][j]);
  for (auto _ : state) {
    Matrix<T> copy = doubled;
    eliminateDependentRows(copy);
    if (copy.M != state.range(0)) state.SkipWithError("wrong rank");
  }
}
BENCHMARK(removeDoubledRows<dbl_t>)->Arg(20)->Arg(100)->Unit(benchmark::kMillisecond);
BENCHMARK(removeDoubledRows<QQ>)->Arg(20)->Arg(100)->Unit(benchmark::kMillisecond);

}  // namespace
