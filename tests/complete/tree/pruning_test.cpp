#include "complete/tree/pruning.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>
#include <numeric>

namespace latbox::complete {
namespace {

// Rows that are orthogonal, the same length each, in a cube of as many coordinates.
Descent gridOf(std::size_t rank, double norm) {
  Descent descent;
  descent.norms.assign(rank, norm);
  for (std::size_t i = 0; i <= rank; ++i) descent.mu.emplace_back(i < rank ? i : rank, i < rank ? 0.0 : 0.25);
  descent.coordinates = static_cast<double>(rank);
  return descent;
}

// A profile that falls as that of a reduced basis does.
Descent reducedOf(std::size_t rank) {
  Descent descent = gridOf(rank, 1);
  for (std::size_t i = 0; i < rank; ++i)
    descent.norms[i] = 100 * std::pow(0.03, static_cast<double>(i) / static_cast<double>(rank));
  return descent;
}

PruningModel evenModel(const Descent& descent) {
  return {descent, {descent.coordinates, 0}, std::vector<double>(descent.norms.size(), 1.0)};
}

std::vector<double> evenCaps(std::size_t rank, double slope) {
  std::vector<double> caps;
  for (std::size_t t = 0; t < rank; ++t)
    caps.push_back(std::min(1.0, slope * static_cast<double>(rank - t) / static_cast<double>(rank)) *
                   static_cast<double>(rank));
  caps[0] = static_cast<double>(rank) * 1.001;
  return caps;
}

// Nodes whose squared length is at most `most`, of a grid with this centre: by listing them.
double nodesWithin(std::size_t depth, double norm, double most) {
  if (most < 0) return 0;
  if (depth == 0) return 1;
  double sum = 0;
  for (int step = -20; step <= 20; ++step)
    sum += nodesWithin(depth - 1, norm, most - (step + 0.25) * (step + 0.25) * norm);
  return sum;
}

TEST(PruningModel, CountsTheNodesOfTheFirstLevels) {
  constexpr std::size_t RANK = 6;
  const Descent descent = gridOf(RANK, 3);
  // Caps that close all but the first levels leave what can be listed. Shares are none then.
  for (const std::size_t depth : {1, 2, 3}) {
    std::vector<double> caps(RANK, -1);
    for (std::size_t t = RANK - depth; t < RANK; ++t) caps[t] = 3;
    double nodes = 0;
    for (std::size_t d = 1; d <= depth; ++d) nodes += nodesWithin(d, 3, 3);
    // The model counts candidates, a fixed number for each node, and leaves out what Hoelder's inequality
    // refutes.
    const Pruning one = evenModel(descent).judged(caps);
    EXPECT_GT(one.nodes, 1.0 * nodes) << depth;
    EXPECT_LT(one.nodes, 3.2 * nodes) << depth;
  }
}

TEST(PruningModel, AllPointsKeepTheWidestCaps) {
  const Descent descent = reducedOf(50);
  const Pruning all = evenModel(descent).judged(std::vector<double>(50, 50.01));
  EXPECT_DOUBLE_EQ(all.share, 1);
}

TEST(PruningModel, WiderCapsLeaveMore) {
  const PruningModel model = evenModel(reducedOf(50));
  Pruning before = model.judged(evenCaps(50, 1.2));
  EXPECT_GT(before.share, 0);
  EXPECT_GT(before.nodes, 0);
  for (const double slope : {1.4, 1.7, 2.0, 3.0}) {
    const Pruning next = model.judged(evenCaps(50, slope));
    EXPECT_GT(next.share, before.share) << slope;
    EXPECT_GT(next.nodes, before.nodes) << slope;
    before = next;
  }
}

double costOf(const Pruning& pruning, double preparation) {
  return (preparation + pruning.nodes) / pruning.share;
}

TEST(BestPruning, IsCheaperThanStraightLines) {
  const Descent descent = reducedOf(60);
  const Pruning best = bestPruning(descent, {60, 0}, 1e5);
  ASSERT_EQ(best.caps.size(), 60u);
  const PruningModel model = evenModel(descent);
  for (const double slope : {0.8, 1.0, 1.2, 1.5, 2.0, 100.0}) {
    const Pruning line = model.judged(evenCaps(60, slope));
    if (line.share > 0) {
      EXPECT_LT(costOf(best, 1e5), costOf(line, 1e5)) << slope;
    }
  }
}

TEST(BestPruning, GrowsFromTheLastLevelDownAndLosesNoPointAtTheEnd) {
  const Pruning best = bestPruning(reducedOf(60), {60, 0}, 1e5);
  for (std::size_t t = 1; t < 60; ++t) EXPECT_LE(best.caps[t], best.caps[t - 1]) << t;
  EXPECT_GE(best.caps[0], 60);
  EXPECT_GT(best.share, 0);
  EXPECT_LT(best.share, 1);
}

TEST(BestPruning, DearerBasesAreWorthLargerShares) {
  const Descent descent = reducedOf(60);
  double before = 0;
  for (const double preparation : {1e3, 1e5, 1e7}) {
    const double share = bestPruning(descent, {60, 0}, preparation).share;
    EXPECT_GT(share, before) << preparation;
    before = share;
  }
}

TEST(BestPruning, IsAlwaysTheSame) {
  const Pruning one = bestPruning(reducedOf(40), {40, 0}, 1e5);
  const Pruning other = bestPruning(reducedOf(40), {40, 0}, 1e5);
  EXPECT_EQ(one.caps, other.caps);
  EXPECT_EQ(one.share, other.share);
}

// Of wide boxes the length of a point is known only roughly.
TEST(BestPruning, LengthsThatDeviate) {
  const Pruning best = bestPruning(reducedOf(50), {25, 3}, 1e5);
  EXPECT_GT(best.share, 0);
  EXPECT_LE(best.share, 1);
  EXPECT_GE(best.caps[0], 25 + 2 * 3);
}

}  // namespace
}  // namespace latbox::complete
