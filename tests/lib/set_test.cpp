#include "lib/set.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

#include "support/failure.h"

namespace latbox {
namespace {

// The greater k the better; equal k is equal.
struct Graded {
  long k = 0;
  bool operator==(const Graded& other) const { return k == other.k; }
  bool better(const Graded& other) const { return k > other.k; }
};

template <class S>
std::string listed(const S& set) {
  std::string forward, backward;
  for (auto* node = set.head; node != nullptr; node = node->next)
    forward += std::to_string(node->value.k) + " ";
  for (auto* node = set.tail; node != nullptr; node = node->prev)
    backward = std::to_string(node->value.k) + " " + backward;
  EXPECT_EQ(forward, backward);
  return forward;
}

TEST(Set, AppendsAndRefusesEquals) {
  Set<long> set;
  EXPECT_TRUE(set.insert(5));
  EXPECT_TRUE(set.insert(3));
  EXPECT_FALSE(set.insert(5));
  EXPECT_EQ(set.count, 2);
  EXPECT_EQ(set.head->value, 5);
  EXPECT_EQ(set.tail->value, 3);
}

TEST(Set, AFullSetRefuses) {
  Set<long> set;
  set.limit = 2;
  EXPECT_TRUE(set.insert(1));
  EXPECT_TRUE(set.insert(2));
  EXPECT_FALSE(set.insert(3));
  EXPECT_EQ(set.count, 2);
}

TEST(Set, WithoutALimitItGrows) {
  Set<long> set;
  for (long i = 0; i < 500; ++i) EXPECT_TRUE(set.insert(i));
  EXPECT_EQ(set.count, 500);
}

TEST(Set, PopFrontHandsTheNodeOver) {
  Set<long> set;
  EXPECT_EQ(set.popFront(), nullptr);
  EXPECT_EQ(set.count, 0);
  set.insert(1);
  set.insert(2);
  const auto node = set.popFront();
  EXPECT_EQ(node->value, 1);
  EXPECT_EQ(node->next, nullptr);
  EXPECT_EQ(set.count, 1);
  EXPECT_EQ(set.head->prev, nullptr);
  set.popFront();
  EXPECT_EQ(set.tail, nullptr);
}

TEST(SortedSet, TheWorstStandsAtTheHead) {
  SortedSet<Graded> set;
  for (const long k : {3, 1, 2, 5, 4}) EXPECT_TRUE(set.insert(Graded{k}));
  EXPECT_EQ(listed(set), "1 2 3 4 5 ");
}

TEST(SortedSet, TheSameVectorTwiceIsRefused) {
  SortedSet<Graded> set;
  EXPECT_TRUE(set.insert(Graded{3}));
  EXPECT_FALSE(set.insert(Graded{3}));
  EXPECT_EQ(set.count, 1);
}

TEST(SortedSet, AFullSetKeepsTheBest) {
  SortedSet<Graded> set;
  set.limit = 2;
  EXPECT_TRUE(set.insert(Graded{1}));
  EXPECT_TRUE(set.insert(Graded{2}));
  EXPECT_TRUE(set.insert(Graded{3}));
  EXPECT_EQ(listed(set), "2 3 ");
  EXPECT_FALSE(set.insert(Graded{1}));
  EXPECT_EQ(listed(set), "2 3 ");
}

// A limit that leaves no room leaves room for one all the same: it goes when another takes its place.
TEST(SortedSet, AnEmptySetKeepsItsFirstElementWhateverTheLimit) {
  SortedSet<Graded> set;
  set.limit = -1;
  EXPECT_TRUE(set.insert(Graded{2}));
  EXPECT_EQ(listed(set), "2 ");
  EXPECT_FALSE(set.insert(Graded{1}));
  EXPECT_EQ(listed(set), "2 ");
  EXPECT_TRUE(set.insert(Graded{3}));
  EXPECT_EQ(listed(set), "3 ");
  EXPECT_FALSE(set.insert(Graded{3}));
  EXPECT_EQ(listed(set), "3 ");
}

// Equal vectors whose measures differ can't be, but the walk does stop at the first better element.
struct Oddity {
  long id;
  long grade;
  bool operator==(const Oddity& other) const { return id == other.id; }
  bool better(const Oddity& other) const { return grade > other.grade; }
};

TEST(SortedSet, AnEqualBehindABetterOneIsNotFound) {
  SortedSet<Oddity> set;
  set.insert(Oddity{1, 5});
  set.insert(Oddity{2, 9});
  EXPECT_TRUE(set.insert(Oddity{2, 3}));
  EXPECT_EQ(set.count, 3);
}

TEST(SortedSet, AssignmentTakesLimitAndOrder) {
  SortedSet<Graded> source, target;
  source.limit = 3;
  for (const long k : {3, 1, 2}) source.insert(Graded{k});
  for (const long k : {8, 9, 7, 6}) target.insert(Graded{k});
  target = source;
  EXPECT_EQ(listed(target), "1 2 3 ");
  EXPECT_EQ(target.limit, 3);
  source.popFront();
  EXPECT_EQ(target.count, 3);
  const SortedSet<Graded>& self = target;
  target = self;
  EXPECT_EQ(listed(target), "1 2 3 ");
  SortedSet<Graded> small;
  small.insert(Graded{4});
  small = target;
  EXPECT_EQ(listed(small), "1 2 3 ");
}

TEST(SortedSet, MoveLeavesNoSharing) {
  SortedSet<Graded> source;
  source.insert(Graded{1});
  const SortedSet<Graded> target(std::move(source));
  EXPECT_EQ(target.count, 1);
  EXPECT_EQ(source.count, 0);
  EXPECT_EQ(source.head, nullptr);
}

struct Exposed : SortedSet<Graded> {
  void linkBeforeStranger() {
    Node node(Graded{1}), stranger(Graded{2});
    this->linkBefore(&node, &stranger);
  }
};

TEST(SortedSet, LinkingBeforeAStrangerFails) {
  Exposed set;
  set.insert(Graded{5});
  EXPECT_FAILURE(set.linkBeforeStranger(), "Set: before_element is not in the given set!");
}

// A copy that fails half-way leaves nothing behind (the leak checker looks on).
struct Brittle {
  long k = 0;
  explicit Brittle(long key) : k(key) {}
  Brittle(const Brittle& other) : k(other.k) {
    if (copies++ == limit) throw std::runtime_error("copy");
  }
  Brittle& operator=(const Brittle&) = default;
  bool operator==(const Brittle& other) const { return k == other.k; }
  bool better(const Brittle& other) const { return k > other.k; }
  static inline long copies = 0;
  static inline long limit = 1000;
};

TEST(SortedSet, ACopyThatThrowsLeaksNothing) {
  SortedSet<Brittle> source;
  for (long k = 1; k <= 5; ++k) source.insert(Brittle(k));
  Brittle::copies = 0;
  Brittle::limit = 3;
  EXPECT_THROW(SortedSet<Brittle>{source}, std::runtime_error);
  Brittle::copies = 0;
  EXPECT_THROW(
      {
        SortedSet<Brittle> target;
        target = source;
      },
      std::runtime_error);
  Brittle::limit = 1000;
}

}  // namespace
}  // namespace latbox
