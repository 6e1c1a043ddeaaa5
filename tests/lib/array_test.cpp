#include "lib/array.h"

#include <gtest/gtest.h>

#include <limits>
#include <new>
#include <string>

#include "support/failure.h"

namespace latbox {
namespace {

template <class A>
void fill(A& array, long n) {
  array.resize(n, false);
  for (long i = 1; i <= n; ++i) array.data[i] = i;
}

TEST(Array, FreshArrayAllocatesNothing) {
  Array<long> array;
  array.resize(0, false);
  EXPECT_EQ(array.data, nullptr);
  EXPECT_EQ(array.capacity(), 0);
  EXPECT_FALSE(array.notEmpty());
}

TEST(Array, GrowthReservesOneOrAHundred) {
  Array<long> exact, spare;
  exact.resize(5, false);
  spare.resize(5, true);
  EXPECT_EQ(exact.capacity(), 6);
  EXPECT_EQ(spare.capacity(), 105);
}

TEST(Array, ElementZeroPassesTheCheckWhereStorageExists) {
  Array<long> array(3);
  array.resize(0, false);
  array[0] = 7;
  EXPECT_EQ(array[0], 7);
}

TEST(Array, ElementZeroWithoutStorageFails) {
  Array<long> array;
  EXPECT_FAILURE(array[0], "Array: index out of range");
}

TEST(Array, TheCheckGoesByCountAndNotByCapacity) {
  Array<long> array;
  array.resize(3, true);
  EXPECT_FAILURE(array[4], "Array: index out of range");
  EXPECT_FAILURE(array[-1], "Array: index out of range");
}

TEST(Array, ShrinkingAndGrowingShowsTheOldElements) {
  Array<long> array;
  fill(array, 5);
  array.resize(2, false);
  array.resize(5, false);
  for (long i = 3; i <= 5; ++i) EXPECT_EQ(array[i], i);
}

TEST(Array, GrowthKeepsElementsAndElementZero) {
  Array<long> array;
  fill(array, 3);
  array[0] = 42;
  array.resize(1000, false);
  EXPECT_EQ(array[0], 42);
  EXPECT_EQ(array[3], 3);
  EXPECT_EQ(array[1000], 0);
}

TEST(Array, NegativeSizeFails) {
  Array<long> array;
  EXPECT_FAILURE(array.resize(-1, false), "array: dimension < 0");
}

TEST(Array, SizeBeyondTheAllocatorThrows) {
  Array<long> array;
  EXPECT_THROW(array.resize(std::numeric_limits<long>::max(), true), std::bad_array_new_length);
  EXPECT_EQ(array.MN, 0);
}

TEST(Array, FirstRequiresAnElement) {
  Array<long> array;
  EXPECT_FAILURE(array.first(), "Array: index out of range");
  fill(array, 2);
  EXPECT_EQ(array.first(), 1);
}

TEST(Array, SwapExchangesAndChecks) {
  Array<std::string> array(2);
  array[0] = "zero";
  array[1] = "one";
  array.swap(0, 1);
  EXPECT_EQ(array[0], "one");
  EXPECT_EQ(array[1], "zero");
  array.swap(9, 9);
  EXPECT_FAILURE(array.swap(1, 3), "Array: swap index out of range");
  EXPECT_FAILURE(array.swap(-1, 1), "Array: swap index out of range");
}

TEST(Array, RemoveComponentClosesTheGap) {
  Array<long> array;
  fill(array, 4);
  array.removeComponent(2);
  EXPECT_EQ(array.MN, 3);
  EXPECT_EQ(array[2], 3);
  EXPECT_EQ(array[3], 4);
  array.removeComponent(3);
  EXPECT_EQ(array.MN, 2);
  array.removeComponent(0);
  EXPECT_EQ(array[0], 1);
  EXPECT_FAILURE(array.removeComponent(2), "removeComponent: invalid index");
  EXPECT_FAILURE(array.removeComponent(-1), "removeComponent: invalid index");
}

TEST(Array, InsertComponentOpensAGap) {
  Array<long> array;
  array.insertComponent(1, 10);
  array.insertComponent(1, 20);
  array.insertComponent(3, 30);
  array.insertComponent(2, array[1]);
  ASSERT_EQ(array.MN, 4);
  EXPECT_EQ(array[1], 20);
  EXPECT_EQ(array[2], 20);
  EXPECT_EQ(array[3], 10);
  EXPECT_EQ(array[4], 30);
  EXPECT_FAILURE(array.insertComponent(6, 0), "insertComponent: invalid index");
  EXPECT_FAILURE(array.insertComponent(-1, 0), "insertComponent: invalid index");
}

TEST(Array, CopyReusesStorageThatIsLargeEnough) {
  Array<long> source, target;
  fill(source, 3);
  fill(target, 10);
  const long* storage = target.data;
  target = source;
  EXPECT_EQ(target.data, storage);
  EXPECT_EQ(target.MN, 3);
  EXPECT_EQ(target[3], 3);
  const Array<long>& self = target;
  target = self;
  EXPECT_EQ(target[2], 2);
}

TEST(Array, MoveStealsAndLeavesTheSourceEmpty) {
  Array<long> source;
  fill(source, 3);
  const long* storage = source.data;
  Array<long> target(std::move(source));
  EXPECT_EQ(target.data, storage);
  EXPECT_EQ(source.MN, 0);
  EXPECT_EQ(source.capacity(), 0);
  EXPECT_EQ(source.data, nullptr);
}

TEST(Array, ReserveKeepsTheCount) {
  Array<long> array;
  fill(array, 2);
  array.reserve(100);
  EXPECT_EQ(array.MN, 2);
  EXPECT_GE(array.capacity(), 100);
  EXPECT_EQ(array[2], 2);
}

TEST(ConversionArray, ConvertsElementByElement) {
  ConversionArray<long> source;
  fill(source, 3);
  source.converted = true;
  ConversionArray<std::string> target;
  target.assignConverted(source, [](long x) { return std::to_string(x); });
  EXPECT_EQ(target.MN, 3);
  EXPECT_EQ(target[3], "3");
  EXPECT_TRUE(target.converted);
  const ConversionArray<std::string> copy(target);
  EXPECT_TRUE(copy.converted);
}

}  // namespace
}  // namespace latbox
