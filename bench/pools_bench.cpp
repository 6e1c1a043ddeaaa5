// Cost of one run of pairwise recombination and of sieving, on a lattice of rank 100. The aims: 0.3 s for the
// one with default options, a second for the other with 200 vectors.
#include <benchmark/benchmark.h>

#include <cstdlib>
#include <memory>
#include <random>
#include <string>

#include "heuristics/recombination.h"
#include "heuristics/sieving.h"
#include "lattice/lattice.h"
#include "numbers/number.h"
#include "params/statistics.h"
#include "program/generation.h"
#include "support/program_text.h"

namespace {

using namespace latbox;

template <class T>
using Pool = SortedSet<HeuristicVector<T, dbl_t>>;

// `n` variables in 0..1 under three equal rows that hold at half their sums, within `slack`.
std::string program(long n, long slack) {
  std::mt19937 random(7);
  std::string rows, low, high;
  for (int i = 0; i < 3; ++i) {
    long sum = 0;
    rows += "[ ";
    for (long j = 0; j < n; ++j) {
      const long a = static_cast<long>(random() % 1000);
      sum += a;
      rows += std::to_string(a) + ' ';
    }
    rows += "] ";
    low += std::to_string(sum / 2) + ' ';
    high += std::to_string(sum / 2 + slack) + ' ';
  }
  std::string text = "[ ] [ ] [ ] [ ] [ " + rows + "] [ " + low + "] [ " + high + "] ";
  for (const char* value : {"0 ", "0 ", "1 "}) {
    text += "[ ";
    for (long j = 0; j < n; ++j) text += value;
    text += "] ";
  }
  return text;
}

template <class T>
std::unique_ptr<Lattice<T, dbl_t>> reducedLattice(long rank) {
  auto lattice = std::make_unique<Lattice<T, dbl_t>>();
  lattice->params.verb.set(0);
  lattice->params.sol.set(0);
  lattice->program = testing::programOf<T>(program(rank - 1, 1));
  lattice->program.optFile.clear();
  prepare(*lattice, true, false);
  prepareLattice(*lattice);
  for (int sweep = 0; sweep < 5; ++sweep) lattice->lll(1, 0, 0);
  return lattice;
}

// Sums of three rows, `count` of each kind at most.
template <class T>
void fillCollections(Lattice<T, dbl_t>& lattice, long count) {
  std::mt19937 random(11);
  lattice.emptyCollections();
  lattice.params.collectLimit.set(2 * count);
  const auto rank = static_cast<unsigned long>(lattice.rank);
  for (int tries = 0; tries < 100000; ++tries) {
    Vector<T> v = lattice.B[static_cast<long>(1 + random() % rank)];
    v += lattice.B[static_cast<long>(1 + random() % rank)];
    v -= lattice.B[static_cast<long>(1 + random() % rank)];
    const bool homogeneous = isZero(v[lattice.dim]);
    const auto& set = homogeneous ? lattice.homogeneousVectors : lattice.inhomogeneousVectors;
    if (set.count < count) lattice.collect(v);
  }
}

// One run of `pair` with default options, the collections as the runs before have left them.
template <class T>
void recombination(benchmark::State& state) {
  auto lattice = reducedLattice<T>(state.range(0));
  const long long before = statisticsOf<T>().pairwiseCollections;
  for (auto _ : state) pairwiseRecombination(*lattice);
  const auto collected = static_cast<double>(statisticsOf<T>().pairwiseCollections - before);
  state.counters["rank"] = static_cast<double>(lattice->rank);
  state.counters["counted"] = benchmark::Counter(collected, benchmark::Counter::kAvgIterations);
}
BENCHMARK(recombination<dbl_t>)->Arg(50)->Arg(100)->Unit(benchmark::kMillisecond);
BENCHMARK(recombination<QQ>)->Arg(50)->Unit(benchmark::kMillisecond);

// The rounds once more, with the measure of each combination by itself: what the routine does not tell.
template <class T>
class RoundCount {
 public:
  explicit RoundCount(const Lattice<T, dbl_t>& lattice) : lattice_(lattice) {
    for (auto* v = lattice.homogeneousVectors.head; v != nullptr; v = v->next) pool_.insert(v->value);
    for (auto* v = lattice.inhomogeneousVectors.head; v != nullptr; v = v->next) pool_.insert(v->value);
    while (takeBound() && round()) {
    }
  }
  long rounds = 0;
  long centres() const { return centres_.count; }

 private:
  using Candidate = HeuristicVector<T, dbl_t>;
  const Lattice<T, dbl_t>& lattice_;
  Pool<T> pool_, next_, centres_;
  HeuristicDeviation<dbl_t> bound_;

  bool takeBound() {
    const Candidate* worst = nullptr;
    for (auto* v = pool_.head; v != nullptr; v = v->next)
      if (v->value.deviation.kind == KIND_INHOMOGENEOUS && (worst == nullptr || !better(v->value, *worst)))
        worst = &v->value;
    if (worst != nullptr) bound_ = worst->deviation;
    return worst != nullptr;
  }
  bool round() {
    ++rounds;
    next_.clear();
    for (auto* v = pool_.head; v != nullptr; v = v->next)
      if (!passes(v->value)) centres_.insert(v->value);
    if (next_.count == 0) return false;
    pool_ = next_;
    return true;
  }
  bool passes(const Candidate& v) {
    if (better(v.deviation, bound_)) return enter(v);
    for (auto* c = centres_.head; c != nullptr; c = c->next) {
      const Vector<T> difference = v - c->value, sum = v + c->value;
      for (const Vector<T>& t : {difference, sum, -sum, -difference}) {
        Candidate candidate(t);
        candidate.deviation = lattice_.computeDeviation(t);
        if (better(candidate.deviation, bound_)) return enter(candidate);
      }
    }
    return false;
  }
  bool enter(const Candidate& v) {
    next_.insert(v);
    return true;
  }
};

// `range` vectors, half of them of each kind.
template <class T>
void sieving(benchmark::State& state) {
  auto lattice = reducedLattice<T>(100);
  lattice->params.pair.set(false);
  fillCollections(*lattice, state.range(0) / 2);
  for (auto _ : state) sieve(*lattice);
  const RoundCount<T> count(*lattice);
  state.counters["vectors"] =
      static_cast<double>(lattice->homogeneousVectors.count + lattice->inhomogeneousVectors.count);
  state.counters["rounds"] = static_cast<double>(count.rounds);
  state.counters["centres"] = static_cast<double>(count.centres());
}
BENCHMARK(sieving<dbl_t>)->Arg(50)->Arg(200)->Unit(benchmark::kMillisecond);
BENCHMARK(sieving<QQ>)->Arg(50)->Unit(benchmark::kMillisecond);

}  // namespace
