// Candidates of recombination and sieving outnumber everything else: none may cost an allocation.
#include "heuristics/recombination.h"
#include "heuristics/sieving.h"
#include "pools.h"
#include "support/allocations.h"

namespace latbox::testing {

template <class T>
class PoolAllocation : public ::testing::Test {
 public:
  // After one run, in which the scratch of the lattice gets its storage.
  template <class Step>
  static long allocatedBy(Lattice<T, dbl_t>& lattice, Step step) {
    step(lattice);
    const long before = allocations;
    step(lattice);
    return allocations - before;
  }
};
TYPED_TEST_SUITE(PoolAllocation, NumberTypes);

// No point of the program is met: a find is written down, and that allocates.
template <class T>
LatticePointer<T> barrenLattice(long collectLimit) {
  auto lattice = latticeOf<T>(randomProgram(3));
  lattice->params.pair.set(false);
  lattice->params.pairLimit.set(collectLimit);
  lattice->params.collectLimit.set(collectLimit);
  lattice->lbnd[1] = T(1000);
  lattice->ubnd[1] = T(1000);
  Draws draw(5);
  for (int i = 0; i < 4000; ++i) {
    Vector<T> v = Vector<T>::zeros(lattice->dim);
    for (long j = 1; j <= lattice->rank; ++j) v += lattice->B[j] * T(draw.next(-3, 3));
    lattice->normBound = v * v;
    lattice->collect(v);
  }
  return lattice;
}

TYPED_TEST(PoolAllocation, RecombinationAllocatesForItsPoolsAlone) {
  using T = TypeParam;
  auto lattice = barrenLattice<T>(60);
  const long pools = lattice->homogeneousVectors.count + lattice->inhomogeneousVectors.count + lattice->rank;
  const long candidates = 2 * lattice->homogeneousVectors.count * lattice->inhomogeneousVectors.count;
  const long allocated = this->allocatedBy(*lattice, [](auto& l) { pairwiseRecombination(l); });
  EXPECT_GT(candidates, 20 * pools);
  EXPECT_LT(allocated, 4 * pools + 50);
}

TYPED_TEST(PoolAllocation, SievingAllocatesForWhatGoesOnAlone) {
  using T = TypeParam;
  auto lattice = barrenLattice<T>(60);
  const long pool = std::min(60L, lattice->homogeneousVectors.count + lattice->inhomogeneousVectors.count);
  // Each round enters each vector once at most, and its pool is a copy; the first round tries each with each.
  const long allocated = this->allocatedBy(*lattice, [](auto& l) { sieve(l); });
  EXPECT_GT(pool, 50);
  EXPECT_LT(allocated, 6 * pool * pool);
}

}  // namespace latbox::testing
