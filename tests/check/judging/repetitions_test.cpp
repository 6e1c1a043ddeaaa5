#include "check/judging/repetitions.h"

#include <gtest/gtest.h>

#include <map>
#include <random>
#include <set>

namespace latbox::check {
namespace {

Solution solution(const std::string& x, const std::string& targets = "") {
  return readSolution("[ " + x + " ] | 0 | [ " + targets + " ] | 0 | 0 | p", 1).value();
}

// For each of the points, in their order, the number of the earliest that says the same, 0 for none. The
// offsets are any that ascend.
std::vector<std::size_t> earliest(const std::vector<std::string>& points, Digest (*digest)(const Solution&)) {
  std::map<std::uint64_t, Solution> file;
  Digests digests;
  for (std::size_t i = 0; i < points.size(); ++i) {
    const Solution s = solution(points[i]);
    file[100 * i] = s;
    digests.add(digest(s), 100 * i);
  }
  Repetitions repetitions(std::move(digests), [&](std::uint64_t offset) { return file.at(offset); });
  std::vector<std::size_t> found;
  for (std::size_t i = 0; i < points.size(); ++i) found.push_back(repetitions.earlier(100 * i, i + 1));
  return found;
}

// The same by comparing all with all.
std::vector<std::size_t> expected(const std::vector<std::string>& points) {
  std::vector<std::size_t> found;
  for (std::size_t i = 0; i < points.size(); ++i) {
    std::size_t j = 0;
    while (!sayTheSame(solution(points[j]), solution(points[i]))) ++j;
    found.push_back(j == i ? 0 : j + 1);
  }
  return found;
}

Digest always(const Solution&) {
  return 7;
}

// Two digests for all solutions.
Digest weak(const Solution& s) {
  return digestOf(s) % 2;
}

TEST(Repetitions, the_same_point_far_apart_and_more_than_once) {
  const std::vector<std::string> points = {"1 2", "3 4", "5 6", "1 2", "7 8", "3 4", "1 2"};
  EXPECT_EQ(earliest(points, digestOf), (std::vector<std::size_t>{0, 0, 0, 1, 0, 2, 1}));
}

TEST(Repetitions, a_point_that_is_written_in_another_way) {
  const std::vector<std::string> points = {"3 1/2", "6/2 .5", "03 0:1/2", "+3 5e-1", "30e-1 0.5", "3 1/3"};
  EXPECT_EQ(earliest(points, digestOf), (std::vector<std::size_t>{0, 1, 1, 1, 1, 0}));
}

TEST(Repetitions, one_digest_for_different_points_accuses_none) {
  const std::vector<std::string> points = {"1 2", "2 1", "1 2 0", "inf 1", "-inf 1", "1/2 1"};
  EXPECT_EQ(earliest(points, always), std::vector<std::size_t>(points.size(), 0));
}

TEST(Repetitions, one_digest_for_different_points_hides_none) {
  const std::vector<std::string> points = {"1", "2", "2", "3", "1", "3", "2", "1"};
  EXPECT_EQ(earliest(points, always), (std::vector<std::size_t>{0, 0, 2, 0, 1, 4, 2, 1}));
}

TEST(Repetitions, random_points_with_good_and_bad_digests) {
  std::mt19937 draw(3);
  for (int round = 0; round < 50; ++round) {
    std::vector<std::string> points;
    const std::size_t count = draw() % 40;
    for (std::size_t i = 0; i < count; ++i)
      points.push_back(std::to_string(draw() % 4) + " " + std::to_string(draw() % 4) + "/3");
    for (const auto digest : {always, weak, static_cast<Digest (*)(const Solution&)>(digestOf)})
      EXPECT_EQ(earliest(points, digest), expected(points)) << round;
  }
}

TEST(Repetitions, different_digests_are_not_read_again) {
  Digests digests;
  for (std::uint64_t i = 0; i < 1000; ++i) digests.add(i * i, i);
  Repetitions repetitions(std::move(digests),
                          [](std::uint64_t) -> Solution { throw std::logic_error("read"); });
  for (std::uint64_t i = 0; i < 1000; ++i) EXPECT_EQ(repetitions.earlier(i, i + 1), 0U);
}

TEST(Repetitions, what_the_reader_throws_comes_through) {
  Digests digests;
  digests.add(1, 0);
  digests.add(1, 10);
  const auto read = [](std::uint64_t) -> Solution { throw Unreadable("gone"); };
  EXPECT_THROW(Repetitions(std::move(digests), read), Unreadable);
}

TEST(Digest, is_one_of_x_and_target_values_and_nothing_else) {
  const auto digest = [](const char* line) { return digestOf(readSolution(line, 1).value()); };
  const Digest first = digest("[ 1 2 ] | 3 | [ 4 ] | 5 | 6 | p | v");
  EXPECT_EQ(digest("[ 1 2 ] | 0 | [ 4 ] | 1 | 7 | q"), first);
  EXPECT_NE(digest("[ 1 3 ] | 3 | [ 4 ] | 5 | 6 | p | v"), first);
  EXPECT_NE(digest("[ 1 2 ] | 3 | [ 3 ] | 5 | 6 | p | v"), first);
  EXPECT_NE(digest("[ 2 1 ] | 3 | [ 4 ] | 5 | 6 | p | v"), first);
  EXPECT_NE(digest("[ 1 2 4 ] | 3 | [ ] | 5 | 6 | p | v"), first);
  EXPECT_NE(digest("[ 1 ] | 3 | [ 2 4 ] | 5 | 6 | p | v"), first);
}

// Points that differ in few places and by little, as those of a file do: a digest that were worse than chance
// would show here.
TEST(Digest, of_near_points_differ) {
  std::set<Digest> digests;
  for (int i = 0; i < 1 << 14; ++i) {
    std::string x;
    for (int bit = 0; bit < 14; ++bit) x += (i >> bit) % 2 == 0 ? "0 " : "1 ";
    digests.insert(digestOf(solution(x)));
  }
  EXPECT_EQ(digests.size(), 1U << 14);
}

}  // namespace
}  // namespace latbox::check
