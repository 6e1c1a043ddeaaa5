#include "numbers/map.h"

#include <gtest/gtest.h>

#include "numbers/number.h"

namespace latbox {
namespace {

TEST(Map, KeepsTheOrderOfInsertion) {
  Map<long, dbl_t> map;
  EXPECT_EQ(map.position(3), 0);
  map.add(7, 1);
  map.add(3, 2);
  map.add(7, 3);
  EXPECT_EQ(map.MN, 3);
  EXPECT_EQ(map.position(3), 2);
  EXPECT_EQ(map.position(7), 1);
  EXPECT_EQ(map[2].right, 2);
}

TEST(Hash, AGrownTableHoldsNoStalePointers) {
  int a = 1, b = 2;
  Hash<int*> hash;
  hash.add("a", &a);
  hash.add("b", &b);
  hash.resize(1, false);
  hash.resize(2, false);
  EXPECT_EQ(hash[2].right, nullptr);
  EXPECT_EQ(hash.find("a"), &a);
  EXPECT_EQ(hash.find("c"), nullptr);
}

}  // namespace
}  // namespace latbox
