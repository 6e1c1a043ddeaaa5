// What the tests of recombination and sieving share: lattices whose collections hold random combinations of
// their rows, and a way to look into a collection.
#pragma once

#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

#include "lattice/support.h"
#include "lib/progress.h"
#include "support/lattice.h"

namespace latbox::testing {

template <class T>
using Collection = SortedSet<HeuristicVector<T, dbl_t>>;

// Six variables under two two-sided rows that few points satisfy.
inline std::string randomProgram(unsigned long long seed) {
  Draws draw(seed);
  std::string rows, low, high;
  for (int i = 0; i < 2; ++i) {
    rows += "[ ";
    for (int j = 0; j < 6; ++j) rows += std::to_string(draw.next(10, 60)) + " ";
    rows += "] ";
    const long middle = draw.next(150, 250);
    low += std::to_string(middle) + " ";
    high += std::to_string(middle + draw.next(1, 3)) + " ";
  }
  return "[ ] [ ] [ ] [ ] [ " + rows + "] [ " + low + "] [ " + high +
         "] [ 0 0 0 0 0 0 ] [ 0 0 0 0 0 0 ] [ 3 3 3 3 3 3 ]";
}

// A reduced lattice of such a program with `count` small random combinations of its rows in the collections.
template <class T>
LatticePointer<T> pooledLattice(unsigned long long seed, int count) {
  auto lattice = latticeOf<T>(randomProgram(seed));
  lattice->params.sol.set(0);
  lattice->params.pair.set(false);
  lattice->lll(1, 0, 0);
  Draws draw(seed + 1000);
  for (int i = 0; i < count; ++i) {
    Vector<T> v = Vector<T>::zeros(lattice->dim);
    for (long j = 1; j <= lattice->rank; ++j) v += lattice->B[j] * T(draw.next(-1, 1));
    lattice->collect(v, nullptr, nullptr);
  }
  lattice->params.pair.set(true);
  return lattice;
}

// The vectors from head to tail, without their times, which the clock gives.
template <class T>
std::vector<std::string> contents(const Collection<T>& set) {
  std::vector<std::string> texts;
  for (const auto* node = set.head; node != nullptr; node = node->next)
    texts.push_back(shown<T>(node->value));
  return texts;
}

// Worst first, within its limit, each of its kind and a vector of the lattice.
template <class T>
void expectInOrder(Lattice<T, dbl_t>& lattice, const Collection<T>& set, int kind) {
  EXPECT_TRUE(set.limit == 0 || set.count <= set.limit);
  for (const auto* node = set.head; node != nullptr; node = node->next) {
    EXPECT_EQ(static_cast<int>(node->value.deviation.kind), kind);
    EXPECT_TRUE(lattice.isMember(node->value));
    EXPECT_TRUE(node->next == nullptr || !better(node->value, node->next->value));
  }
}

template <class T>
void expectSameResults(const Lattice<T, dbl_t>& a, const Lattice<T, dbl_t>& b) {
  EXPECT_EQ(contents(a.homogeneousVectors), contents(b.homogeneousVectors));
  EXPECT_EQ(contents(a.inhomogeneousVectors), contents(b.inhomogeneousVectors));
  EXPECT_EQ(shown<T>(a.bestInhomogeneous), shown<T>(b.bestInhomogeneous));
  ASSERT_EQ(a.solutions.MN, b.solutions.MN);
  for (long i = 1; i <= a.solutions.MN; ++i) EXPECT_EQ(shown<T>(a.solutions[i]), shown<T>(b.solutions[i]));
}

// What `step` prints at this verbosity.
template <class T, class Step>
std::string printedAt(Lattice<T, dbl_t>& lattice, long verb, Step step) {
  lattice.params.verb.set(verb);
  ::testing::internal::CaptureStdout();
  step();
  lattice.params.verb.set(0);
  return ::testing::internal::GetCapturedStdout();
}

}  // namespace latbox::testing
