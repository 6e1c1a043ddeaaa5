// A search visits millions of nodes: neither a node nor a block minimum that is no candidate may cost an
// allocation, and a sweep none once its scratch has grown.
#include "lattice/support.h"
#include "lib/os/clock.h"
#include "support/allocations.h"

namespace latbox::testing {
namespace {

// The search reads the clock at each node, and nothing else does once the block is open.
struct NodeWatch {
  static inline long nodes = 0;
  static inline long first = 0;
  static inline long last = 0;
  static long read() {
    if (++nodes == 4) first = allocations;
    last = allocations;
    return 0;
  }
};

template <class T>
class ReductionAllocation : public ::testing::Test {};
TYPED_TEST_SUITE(ReductionAllocation, NumberTypes);

TYPED_TEST(ReductionAllocation, NodesOfABlock) {
  using T = TypeParam;
  Lattice<T, dbl_t> lattice;
  setBasis(lattice, matrixOf<T>(knapsackRows(14, 100000, 3)));
  // No vector with this last coordinate is in the lattice: all that the search meets is ruled out.
  lattice.inhomBase = lattice.inhomScaled = lattice.lbnd[15] = lattice.ubnd[15] = T(1) / T(2);
  lattice.params.verb.set(0);
  lattice.params.eprune.set(0);
  lattice.params.beta.set(14);
  lattice.params.btime.set(0);
  lattice.lll(1, 0, 0);
  lattice.updateGso(1, 0);
  for (long i = 1; i <= 14; ++i) setWord(lattice, i, STATUS_GSO | STATUS_REDUCED | STATUS_SWEPT);
  // A first run makes room for the block.
  lattice.enumerate(nullptr);
  lattice.updateGso(1, 0);
  for (long i = 1; i <= 14; ++i) setWord(lattice, i, STATUS_GSO | STATUS_REDUCED | STATUS_SWEPT);
  NodeWatch::nodes = 0;
  setClock(NodeWatch::read);
  lattice.enumerate(nullptr);
  setClock(nullptr);
  EXPECT_GT(NodeWatch::nodes, 20);
  EXPECT_EQ(NodeWatch::last, NodeWatch::first);
}

TYPED_TEST(ReductionAllocation, SweepOfABasisThatFitsTheScratch) {
  using T = TypeParam;
  for (const bool deep : {false, true}) {
    Lattice<T, dbl_t> lattice;
    const Matrix<T> raw = matrixOf<T>(knapsackRows(14, 1000000, 3));
    setBasis(lattice, raw);
    // All that the sweep meets is ruled out here too.
    lattice.inhomBase = lattice.inhomScaled = lattice.lbnd[15] = lattice.ubnd[15] = T(1) / T(2);
    lattice.params.verb.set(0);
    lattice.params.btime.set(0);
    lattice.params.deep.set(deep);
    lattice.lll(1, 0, 0);
    rows(lattice).B = raw;
    lattice.clearStatus();
    const long before = allocations;
    lattice.lll(1, 0, 0);
    EXPECT_EQ(allocations, before) << deep;
    EXPECT_FALSE(lattice.B == raw);
  }
}

}  // namespace
}  // namespace latbox::testing
