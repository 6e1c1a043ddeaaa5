// The check of candidates sees every vector that reduction touches: one that fails must not cost an
// allocation.
#include <cstdlib>
#include <new>

#include "support/lattice.h"

namespace {
long allocations = 0;
}

[[gnu::noinline]] void* operator new(std::size_t size) {
  ++allocations;
  if (void* storage = std::malloc(size == 0 ? 1 : size)) return storage;
  throw std::bad_alloc();
}
[[gnu::noinline]] void operator delete(void* storage) noexcept {
  std::free(storage);
}
[[gnu::noinline]] void operator delete(void* storage, std::size_t) noexcept {
  std::free(storage);
}

namespace latbox {
namespace {

template <class T>
class CheckAllocation : public ::testing::Test {};
using NumberTypes = ::testing::Types<dbl_t, QQ>;
TYPED_TEST_SUITE(CheckAllocation, NumberTypes);

TYPED_TEST(CheckAllocation, VectorsThatFail) {
  using T = TypeParam;
  auto l = testing::latticeOf<T>(testing::SMALL);
  for (const bool weighted : {false, true}) {
    if (weighted) l->setScale(1, T(3));
    const Vector<T> rows[] = {Vector<T>("[ 3 2 0 0 ]"), Vector<T>("[ 90 1 4 1 ]"),
                              Vector<T>("[ 90 -4 -4 -1 ]")};
    for (const bool collecting : {false, true}) {
      l->params.pair.set(collecting);
      for (const auto& row : rows) l->checkSolution(row, true, NOW, false, Membership::byConstruction);
      const long before = allocations;
      for (int k = 0; k < 100; ++k)
        for (const auto& row : rows)
          ASSERT_EQ(l->checkSolution(row, true, NOW, false, Membership::byConstruction), 0u);
      EXPECT_EQ(allocations, before);
    }
  }
}

}  // namespace
}  // namespace latbox
