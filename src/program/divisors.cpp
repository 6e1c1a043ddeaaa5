#include "program/divisors.h"

#include <algorithm>
#include <vector>

#include "lib/modular.h"
#include "numbers/number.h"

namespace latbox {
namespace {

using Word = unsigned long long;
__extension__ using Wide = unsigned __int128;

constexpr Word MERSENNE_61 = (1ULL << 61) - 1;  // numbers below it are their own residue
constexpr Word TRIAL_LIMIT_WORD = 1ULL << 21;   // above the cube root of 2^61: at most two primes are left
constexpr Word TRIAL_LIMIT_LONG = 1ULL << 16;
constexpr long NODE_LIMIT = 1'000'000;  // of the search; every number below 2^61 needs far fewer

// Whether `base` proves n composite (M. O. Rabin, "Probabilistic algorithm for testing primality", 1980).
bool isWitness(Word base, Word n) {
  Word odd = n - 1;
  int twos = 0;
  for (; odd % 2 == 0; odd /= 2) ++twos;
  Word x = powerModuloAny(base, odd, n);
  if (x == 1 || x == n - 1) return false;
  for (; twos > 1; --twos) {
    x = multiplyModuloAny(x, x, n);
    if (x == n - 1) return false;
  }
  return true;
}

// n is odd and has no prime factor up to 37; these bases decide every n below 2^64.
bool isPrime(Word n) {
  for (const Word base : {2, 3, 5, 7, 11, 13, 17, 19, 23, 29, 31, 37})
    if (isWitness(base, n)) return false;
  return true;
}

Word gcdWord(Word a, Word b) {
  while (b != 0) a = std::exchange(b, a % b);
  return a;
}

// A proper factor of an odd composite n (J. M. Pollard, "A Monte Carlo method for factorization", 1975).
Word properFactor(Word n) {
  for (Word shift = 1;; ++shift) {
    Word slow = 2, fast = 2, factor = 1;
    auto step = [&](Word x) { return static_cast<Word>((static_cast<Wide>(x) * x + shift) % n); };
    while (factor == 1) {
      slow = step(slow);
      fast = step(step(fast));
      factor = gcdWord(slow > fast ? slow - fast : fast - slow, n);
    }
    if (factor != n) return factor;
  }
}

// The number as a word, 0 when it is too large for one.
template <class T>
Word wordOf(const T& n) {
  Word residue = 0;
  const T limit = fromExact<T>(QQ(static_cast<long long>(MERSENNE_61 - 1)));
  if (n > limit || !modulo(n, MERSENNE_61, residue)) return 0;
  return residue;
}

template <class T>
T fromWord(Word n) {
  return fromExact<T>(QQ(static_cast<long long>(n)));
}

// The prime factors of a range, equal ones side by side; the last may be composite (see the header).
template <class T>
class Factors {
 public:
  explicit Factors(const T& n) : rest_(n) {
    long_ = wordOf(rest_) == 0;
    Word p = 2;
    for (; long_ && p < TRIAL_LIMIT_LONG; p += p == 2 ? 1 : 2) divideLong(p);
    if (long_) {
      primes.push_back(rest_);
    } else {
      factoriseWord(wordOf(rest_), p);
    }
  }

  std::vector<T> primes;

 private:
  T rest_;
  bool long_;

  void divideLong(Word p) {
    Word residue = 0;
    while (modulo(rest_, p, residue) && residue == 0) {
      primes.push_back(fromWord<T>(p));
      rest_ = floor(T(rest_ / fromWord<T>(p)));
    }
    long_ = wordOf(rest_) == 0;
  }

  void factoriseWord(Word n, Word p) {
    for (; p < TRIAL_LIMIT_WORD && p * p <= n; p += p == 2 ? 1 : 2)
      for (; n % p == 0; n /= p) primes.push_back(fromWord<T>(p));
    if (n == 1) return;
    if (n < TRIAL_LIMIT_WORD * TRIAL_LIMIT_WORD || isPrime(n)) {
      primes.push_back(fromWord<T>(n));
      return;
    }
    const Word factor = properFactor(n);
    primes.push_back(fromWord<T>(factor));
    primes.push_back(fromWord<T>(n / factor));
  }
};

// Depth first over the sets of prime factors, cut off where even all the remaining ones stay below `least`.
template <class T>
class DivisorSearch {
 public:
  DivisorSearch(const T& n, const T& least, std::vector<T> primes)
      : best(n), least_(least), primes_(std::move(primes)), remaining_(primes_.size() + 1, T(1)) {
    std::sort(primes_.begin(), primes_.end(), [](const T& a, const T& b) { return a > b; });
    for (std::size_t i = primes_.size(); i > 0; --i) remaining_[i - 1] = remaining_[i] * primes_[i - 1];
    visit(0, T(1));
  }

  T best;

 private:
  const T least_;
  std::vector<T> primes_;
  std::vector<T> remaining_;  // product of the primes from i on
  long nodes_ = 0;

  void visit(std::size_t i, const T& product) {
    if (product >= least_) {
      if (product < best) best = product;
      return;
    }
    if (i == primes_.size() || product * remaining_[i] < least_ || ++nodes_ > NODE_LIMIT) return;
    std::size_t next = i + 1;
    while (next < primes_.size() && primes_[next] == primes_[i]) ++next;
    T multiple = product;
    visit(next, multiple);
    for (std::size_t k = i; k < next; ++k) {
      multiple *= primes_[i];
      visit(next, multiple);
      if (multiple >= least_) return;
    }
  }
};

}  // namespace

template <class T>
T divisorFrom(const T& n, const T& least) {
  return DivisorSearch<T>(n, least, Factors<T>(n).primes).best;
}

template dbl_t divisorFrom(const dbl_t&, const dbl_t&);
template QQ divisorFrom(const QQ&, const QQ&);

}  // namespace latbox
