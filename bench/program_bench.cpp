// Cost of what happens to a program before there is a lattice: reading (which has to be linear in the size of
// the file), conversion, both stages of the preparation, and the search for dependent equations.
#include <benchmark/benchmark.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <random>
#include <string>

#include "model/tessik.h"
#include "numbers/number.h"

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

class ProgramFile {
 public:
  explicit ProgramFile(const std::string& text)
      : path_(std::filesystem::temp_directory_path() /
              ("program_bench_" + std::to_string(getpid()) + ".opt")),
        size_(text.size()) {
    std::ofstream(path_, std::ios::binary) << text;
  }
  ~ProgramFile() { unlink(path_.c_str()); }
  ProgramFile(const ProgramFile&) = delete;
  ProgramFile& operator=(const ProgramFile&) = delete;

  std::size_t size() const { return size_; }
  Tessik<QQ> read() const {
    Tessik<QQ> program;
    program.optFile = path_;
    program.readOpt();
    return program;
  }

 private:
  std::string path_;
  std::size_t size_;
};

// Bytes per second stay the same while the file grows.
void readProgram(benchmark::State& state) {
  const ProgramFile file(equations(state.range(0), 1000));
  for (auto _ : state) benchmark::DoNotOptimize(file.read());
  state.SetBytesProcessed(state.iterations() * static_cast<long>(file.size()));
}
BENCHMARK(readProgram)->Arg(10)->Arg(100)->Arg(1000)->Unit(benchmark::kMillisecond);

void convertDown(benchmark::State& state) {
  const Tessik<QQ> exact = ProgramFile(equations(100, 1000)).read();
  Tessik<dbl_t> standard;
  for (auto _ : state) standard.convertFrom(exact);
}
BENCHMARK(convertDown)->Unit(benchmark::kMillisecond);

template <class T>
void prepare(benchmark::State& state) {
  const Tessik<QQ> exact = ProgramFile(equations(state.range(0), 4 * state.range(0))).read();
  Tessik<T> program;
  if constexpr (std::is_same_v<T, QQ>)
    program = exact;
  else
    program.convertFrom(exact);
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
  const Tessik<QQ> exact = ProgramFile(equations(state.range(0), 4 * state.range(0))).read();
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
