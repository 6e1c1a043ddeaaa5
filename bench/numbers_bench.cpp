// Cost of ZZ and QQ per operation, against the peer library in the same run where it is installed. Each pass
// goes over a table of random operands, so that branches are not learnt from one pair.
#include <benchmark/benchmark.h>

#include <random>
#include <string>
#include <vector>

#include "numbers/number.h"

#ifdef LATBOX_WITH_GMP
#include "support/gmp.h"
#endif

namespace {

using namespace latbox;

constexpr std::size_t TABLE = 256;

void appendDigits(std::string& text, std::mt19937_64& random, long digits) {
  text += static_cast<char>('1' + random() % 9);
  for (long i = 1; i < digits; ++i) text += static_cast<char>('0' + random() % 10);
}

// Signed decimal integers of exactly `digits` digits.
std::vector<std::string> integers(long digits) {
  std::mt19937_64 random(static_cast<u64>(digits));
  std::vector<std::string> table(TABLE);
  for (std::string& text : table) {
    if (random() % 2 == 0) text += '-';
    appendDigits(text, random, digits);
  }
  return table;
}

// Proper and improper fractions with parts below 2^bits, or of `-bits` digits.
std::vector<std::string> fractions(long bits) {
  std::mt19937_64 random(static_cast<u64>(1000 + bits));
  const auto appendPart = [&](std::string& text) {
    if (bits < 0)
      appendDigits(text, random, -bits);
    else
      text.append(std::to_string(1 + random() % (1ULL << bits)));
  };
  std::vector<std::string> table(TABLE);
  for (std::string& text : table) {
    if (random() % 2 == 0) text += '-';
    appendPart(text);
    text += '/';
    appendPart(text);
  }
  return table;
}

template <class Number>
std::vector<Number> numbers(const std::vector<std::string>& texts) {
  std::vector<Number> table;
  for (const std::string& text : texts) table.emplace_back(text);
  return table;
}

template <class Number, class Operation>
void run(benchmark::State& state, const std::vector<std::string>& texts, Operation operation) {
  const auto table = numbers<Number>(texts);
  Number r;
  std::size_t i = 0;
  for (auto _ : state) {
    operation(r, table[i], table[(i + 1) % TABLE]);
    benchmark::DoNotOptimize(r);
    i = (i + 1) % TABLE;
  }
}

const auto zzAdd = [](ZZ& r, const ZZ& a, const ZZ& b) { ZZ::add(a, b, r); };
const auto zzMul = [](ZZ& r, const ZZ& a, const ZZ& b) { ZZ::mul(a, b, r); };
const auto qqAdd = [](QQ& r, const QQ& a, const QQ& b) { QQ::add(r, a, b); };
const auto qqMul = [](QQ& r, const QQ& a, const QQ& b) { QQ::mul(r, a, b); };
const auto qqAddValue = [](QQ& r, const QQ& a, const QQ& b) { r = a + b; };
const auto qqSubmul = [](QQ& r, const QQ& a, const QQ& b) {
  r = a;
  r -= a * b;
};
const auto qqToDouble = [](QQ&, const QQ& a, const QQ&) { benchmark::DoNotOptimize(toDouble(a)); };
const auto qqFromDouble = [](QQ& r, const QQ& a, const QQ&) {
  r = QQ(static_cast<dbl_t>(a.zaehler.magnitude64()) / 7);
};

void zzAddDigits(benchmark::State& state) {
  run<ZZ>(state, integers(state.range(0)), zzAdd);
}
void zzMulDigits(benchmark::State& state) {
  run<ZZ>(state, integers(state.range(0)), zzMul);
}
void qqAddIntegers(benchmark::State& state) {
  run<QQ>(state, integers(state.range(0)), qqAdd);
}
void qqMulIntegers(benchmark::State& state) {
  run<QQ>(state, integers(state.range(0)), qqMul);
}
void qqAddValueIntegers(benchmark::State& state) {
  run<QQ>(state, integers(state.range(0)), qqAddValue);
}
void qqSubmulIntegers(benchmark::State& state) {
  run<QQ>(state, integers(state.range(0)), qqSubmul);
}
void qqAddFractions(benchmark::State& state) {
  run<QQ>(state, fractions(state.range(0)), qqAdd);
}
void qqMulFractions(benchmark::State& state) {
  run<QQ>(state, fractions(state.range(0)), qqMul);
}
void qqToDoubleFractions(benchmark::State& state) {
  run<QQ>(state, fractions(state.range(0)), qqToDouble);
}
void qqFromDoubleFractions(benchmark::State& state) {
  run<QQ>(state, fractions(state.range(0)), qqFromDouble);
}

#ifdef LATBOX_WITH_GMP

using testing::Mpq;
using testing::Mpz;

const auto mpzAdd = [](Mpz& r, const Mpz& a, const Mpz& b) { mpz_add(r.value, a.value, b.value); };
const auto mpzMul = [](Mpz& r, const Mpz& a, const Mpz& b) { mpz_mul(r.value, a.value, b.value); };
const auto mpqAdd = [](Mpq& r, const Mpq& a, const Mpq& b) { mpq_add(r.value, a.value, b.value); };
const auto mpqMul = [](Mpq& r, const Mpq& a, const Mpq& b) { mpq_mul(r.value, a.value, b.value); };

void gmpAddDigits(benchmark::State& state) {
  run<Mpz>(state, integers(state.range(0)), mpzAdd);
}
void gmpMulDigits(benchmark::State& state) {
  run<Mpz>(state, integers(state.range(0)), mpzMul);
}
void gmpAddFractions(benchmark::State& state) {
  run<Mpq>(state, fractions(state.range(0)), mpqAdd);
}
void gmpMulFractions(benchmark::State& state) {
  run<Mpq>(state, fractions(state.range(0)), mpqMul);
}

const bool named = (benchmark::AddCustomContext("GMP", gmp_version), true);

BENCHMARK(gmpAddDigits)->Arg(5)->Arg(9)->Arg(18)->Arg(100)->Arg(400);
BENCHMARK(gmpMulDigits)->Arg(5)->Arg(9)->Arg(18)->Arg(100)->Arg(400);
BENCHMARK(gmpAddFractions)->Arg(15)->Arg(29)->Arg(50)->Arg(-25)->Arg(-100);
BENCHMARK(gmpMulFractions)->Arg(15)->Arg(29)->Arg(50)->Arg(-25)->Arg(-100);

#endif

BENCHMARK(zzAddDigits)->Arg(5)->Arg(9)->Arg(18)->Arg(100)->Arg(400);
BENCHMARK(zzMulDigits)->Arg(5)->Arg(9)->Arg(18)->Arg(100)->Arg(400);
BENCHMARK(qqAddIntegers)->Arg(5)->Arg(9)->Arg(18)->Arg(100);
BENCHMARK(qqMulIntegers)->Arg(5)->Arg(9)->Arg(18)->Arg(100);
BENCHMARK(qqAddValueIntegers)->Arg(5)->Arg(18);
BENCHMARK(qqSubmulIntegers)->Arg(5)->Arg(18);
BENCHMARK(qqAddFractions)->Arg(15)->Arg(29)->Arg(50)->Arg(-25)->Arg(-100);
BENCHMARK(qqMulFractions)->Arg(15)->Arg(29)->Arg(50)->Arg(-25)->Arg(-100);
BENCHMARK(qqToDoubleFractions)->Arg(29)->Arg(50)->Arg(-25);
BENCHMARK(qqFromDoubleFractions)->Arg(29);

}  // namespace
