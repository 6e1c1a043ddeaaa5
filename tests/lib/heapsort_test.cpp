#include "lib/heapsort.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <vector>

namespace latbox {
namespace {

std::vector<long> sorted(std::vector<long> values) {
  const auto at = [&](long i) -> long& { return values[static_cast<std::size_t>(i - 1)]; };
  heapsort(
      static_cast<long>(values.size()), [&](long i, long j) { return at(i) < at(j); },
      [&](long i, long j) {
        ASSERT_NE(i, j);
        std::swap(at(i), at(j));
      });
  return values;
}

TEST(Heapsort, SortsSmallCases) {
  EXPECT_EQ(sorted({}), std::vector<long>());
  EXPECT_EQ(sorted({1}), std::vector<long>({1}));
  EXPECT_EQ(sorted({2, 1}), std::vector<long>({1, 2}));
  EXPECT_EQ(sorted({3, 3, 1, 2}), std::vector<long>({1, 2, 3, 3}));
}

TEST(Heapsort, SortsRandomLists) {
  std::mt19937 random(5);
  std::uniform_int_distribution<long> value(-50, 50);
  for (std::size_t n = 0; n < 200; ++n) {
    std::vector<long> values(n);
    for (long& x : values) x = value(random);
    std::vector<long> expected(values);
    std::sort(expected.begin(), expected.end());
    EXPECT_EQ(sorted(values), expected);
  }
}

TEST(Heapsort, TheGreaterChildGoesUp) {
  std::vector<long> heap = {1, 5, 7};
  const auto at = [&](long i) -> long& { return heap[static_cast<std::size_t>(i - 1)]; };
  auto less = [&](long i, long j) { return at(i) < at(j); };
  auto swap = [&](long i, long j) { std::swap(at(i), at(j)); };
  heapSift(1, 3, less, swap);
  EXPECT_EQ(heap, std::vector<long>({7, 5, 1}));
}

}  // namespace
}  // namespace latbox
