#include "numbers/limb_array.h"

#include <limits>
#include <new>

#include "support/failure.h"

namespace latbox {
namespace {

using Limbs = Array<long long>;

TEST(LimbArray, NothingIsThereBeforeTheFirstGrowth) {
  Limbs a;
  a.resize(0, false);
  EXPECT_EQ(a.data, nullptr);
  EXPECT_EQ(a.capacity(), 0);
  EXPECT_FAILURE(a[0] = 1, "Array: index out of range");
}

TEST(LimbArray, SpareCountsAsFalse) {
  Limbs a;
  a.resize(3, true);
  EXPECT_EQ(a.capacity(), 4);
  a.resize(20, true);
  EXPECT_EQ(a.capacity(), 21);
  a.resize(21, false);
  EXPECT_EQ(a.capacity(), 21);
  a.resize(22, false);
  EXPECT_EQ(a.capacity(), 23);
}

TEST(LimbArray, ShrinkingAndGrowingShowsTheOldContents) {
  for (const long n : {5L, 30L}) {
    Limbs a(n);
    for (long i = 0; i <= n; ++i) a[i] = 10 + i;
    a.resize(2, false);
    EXPECT_FAILURE(a[3] = 1, "Array: index out of range");
    a.resize(n, false);
    for (long i = 0; i <= n; ++i) EXPECT_EQ(a[i], 10 + i);
  }
}

TEST(LimbArray, GrowthKeepsElementsAcrossTheStores) {
  Limbs a;
  for (long i = 1; i <= 40; ++i) {
    a.append(i);
    for (long j = 1; j <= i; ++j) ASSERT_EQ(a[j], j);
  }
  const Limbs copy(a);
  a.resize(1, false);
  Limbs moved(std::move(a));
  EXPECT_EQ(moved.MN, 1);
  EXPECT_EQ(a.MN, 0);
  EXPECT_EQ(a.data, nullptr);
  EXPECT_EQ(copy[40], 40);
}

TEST(LimbArray, CopiesBetweenStores) {
  Limbs small(2), large(30);
  small[1] = 1, small[2] = 2;
  for (long i = 1; i <= 30; ++i) large[i] = 100 + i;
  Limbs a(large);
  a = small;
  EXPECT_EQ(a.MN, 2);
  EXPECT_EQ(a[2], 2);
  a = large;
  EXPECT_EQ(a[30], 130);
  Limbs b(small);
  b = large;
  EXPECT_EQ(b[30], 130);
  b[1] = 5;
  EXPECT_EQ(large[1], 101);
}

// The eighth limb of a number lay on its sign: the copy of an array that filled the small store took one
// element more for free than the store has.
TEST(LimbArray, CopyOfAFullSmallStoreGrowsToTheHeap) {
  Limbs full(6);
  full.resize(7, false);
  for (long i = 1; i <= 7; ++i) full[i] = i;
  Limbs copy(full);
  EXPECT_EQ(copy.capacity(), 7);
  copy.resize(8, false);
  EXPECT_EQ(copy.capacity(), 9);
  copy[8] = 8;
  for (long i = 1; i <= 8; ++i) EXPECT_EQ(copy[i], i);
}

TEST(LimbArray, ElementOperations) {
  Limbs a(3);
  a[1] = 1, a[2] = 2, a[3] = 3;
  a.swap(1, 3);
  EXPECT_EQ(a[1], 3);
  a.insertComponent(2, 9);
  EXPECT_EQ(a.MN, 4);
  EXPECT_EQ(a[2], 9);
  EXPECT_EQ(a[4], 1);
  a.removeComponent(1);
  EXPECT_EQ(a[1], 9);
  EXPECT_EQ(a.first(), 9);
  a.clear();
  EXPECT_FALSE(a.notEmpty());
  EXPECT_FAILURE(a.first(), "Array: index out of range");
  EXPECT_FAILURE(a.swap(1, 2), "Array: swap index out of range");
  EXPECT_FAILURE(a.removeComponent(1), "removeComponent: invalid index");
  EXPECT_FAILURE(a.insertComponent(2, 1), "insertComponent: invalid index");
  EXPECT_FAILURE(a.resize(-1, false), "array: dimension < 0");
  EXPECT_FAILURE(a.removeComponent(0), "array: dimension < 0");
}

TEST(LimbArray, TheLastElementIsTakenOut) {
  Limbs a(2);
  a[1] = 1, a[2] = 2;
  a.removeComponent(2);
  EXPECT_EQ(a.MN, 1);
  EXPECT_EQ(a[1], 1);
}

TEST(LimbArray, SizeBeyondTheAllocatorIsABadArrayLength) {
  Limbs a(1);
  volatile long beyond = std::numeric_limits<long>::max();
  EXPECT_THROW(a.resize(beyond, false), std::bad_array_new_length);
  EXPECT_EQ(a.MN, 1);
}

}  // namespace
}  // namespace latbox
