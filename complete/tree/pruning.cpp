#include "complete/tree/pruning.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <iterator>
#include <limits>
#include <numbers>
#include <numeric>
#include <random>

namespace latbox::complete {
namespace {

constexpr std::size_t WAYS = 2000;
// A share that rests on fewer of them is chance, and a descent would chase it.
constexpr double LEAST_WAYS = 30;
// Deeper down, centres lie anywhere between the whole numbers, and a level is a continuum.
constexpr std::size_t DISCRETE_LEVELS = 24;
// Caps are straight lines between so many of them, which begin where this share of the points is kept.
constexpr double FIRST_SHARES[] = {0.9, 0.8, 0.6, 0.5, 0.5, 0.6, 0.7, 0.9, 0.97, 0.99};
constexpr std::size_t KNOTS = std::size(FIRST_SHARES);
// Candidates for each node that keeps its cap: its children, of which most do not keep theirs.
constexpr double CANDIDATES = 3;
// Ways of one kind may be drawn with variances that are smaller and larger by so much.
constexpr double LEAST_TILT = 0.25;
// What rounding leaves of the length of a point must not cost it.
constexpr double WIDER = 1 + 1e-5;

// One random way after the other. The steps lambda of a level are drawn with probabilities that fall with
// their squared length as in a normal distribution (Klein, Finding the closest lattice vector when it's
// unusually close, 2000), so that it is known what a node stands for: one over its own probability. Half of
// the ways have even variances, as points have, the other half those of the ways that the caps keep; each
// counts by the mean of its probabilities of both kinds (Veach and Guibas, Optimally combining sampling
// techniques, 1995).
class WayDrawer {
 public:
  static constexpr std::size_t KINDS = 2;

  // By depth, from 1 on: the squared length, as a node and as a point, and the logarithm of the number of
  // nodes.
  struct Way {
    std::vector<double> node;
    std::vector<double> point;
    std::vector<double> logNodes;
    double logPoints = 0;
  };

  WayDrawer(const Descent& descent, PointLength length, const std::vector<double>& tilt)
      : d_(descent), length_(length), k_(d_.norms.size()), lambda_(k_) {
    const double even = (length.mean - d_.root) / static_cast<double>(k_);
    for (std::size_t t = 0; t < k_; ++t) variances_.push_back({even, even * tilt[k_ - 1 - t]});
  }

  Way draw() {
    way_ = {};
    kind_ = (kind_ + 1) % KINDS;
    sum_ = logSpacing_ = 0;
    log_ = {};
    const std::size_t continuous = k_ - std::min(DISCRETE_LEVELS, k_);
    for (std::size_t t = k_; t-- > continuous;) choose(t);
    way_.point = way_.node;
    spread(continuous);
    return std::move(way_);
  }

 private:
  using Logs = std::array<double, KINDS>;

  double uniform() { return (static_cast<double>(random_() >> 11) + 0.5) * 0x1p-53; }

  double normal() { return std::sqrt(-2 * std::log(uniform())) * std::cos(2 * std::numbers::pi * uniform()); }

  // Of the mean of the probabilities.
  static double mean(const Logs& logs) {
    const double most = std::max(logs[0], logs[1]);
    return most + std::log((std::exp(logs[0] - most) + std::exp(logs[1] - most)) / KINDS);
  }

  void tell() {
    way_.node.push_back(sum_);
    way_.logNodes.push_back(logSpacing_ - mean(log_));
  }

  // A step of one of the first levels.
  void choose(std::size_t t) {
    double centre = -d_.mu[k_][t];
    for (std::size_t i = t + 1; i < k_; ++i) centre -= lambda_[i] * d_.mu[i][t];
    const double norm = d_.norms[t];
    const double reach = std::min(50.0, std::ceil(5 * std::sqrt(variances_[t][0] / norm)));
    const double first = std::floor(centre) - reach;
    const double last = std::floor(centre) + reach + 1;
    const auto logWeight = [&](double lambda, std::size_t kind) {
      return -(lambda - centre) * (lambda - centre) * norm / (2 * variances_[t][kind]);
    };
    Logs all{};
    for (double lambda = first; lambda <= last; ++lambda)
      for (std::size_t kind = 0; kind < KINDS; ++kind) all[kind] += std::exp(logWeight(lambda, kind));
    double rest = uniform() * all[kind_];
    double lambda = first;
    while (lambda < last && (rest -= std::exp(logWeight(lambda, kind_))) > 0) ++lambda;
    lambda_[t] = lambda;
    sum_ += (lambda - centre) * (lambda - centre) * norm;
    for (std::size_t kind = 0; kind < KINDS; ++kind)
      log_[kind] += logWeight(lambda, kind) - std::log(all[kind]);
    tell();
  }

  // The other levels are a continuum, of nodes that are as dense as the vectors are short. Those of a node
  // are independent; a point's share what its length leaves, as the parts of a vector in a random direction
  // do.
  void spread(std::size_t levels) {
    const double before = sum_;
    const double left = length_.mean + length_.deviation * normal() - d_.root - before;
    Logs forPoint = log_;
    Logs scaled{};
    for (std::size_t t = levels; t-- > 0;) {
      const double deviation = normal();
      const double part = deviation * deviation * variances_[t][kind_];
      sum_ += part;
      logSpacing_ -= std::log(d_.norms[t]) / 2;
      for (std::size_t kind = 0; kind < KINDS; ++kind) {
        const double variance = variances_[t][kind];
        log_[kind] -= part / (2 * variance) + std::log(2 * std::numbers::pi * variance) / 2;
        forPoint[kind] -= std::log(variance) / 2;
        scaled[kind] += part / variance;
      }
      tell();
      way_.point.push_back(before + std::max(left, 0.0) * (sum_ - before));
    }
    const double dimension = static_cast<double>(levels);
    for (std::size_t i = way_.point.size() - levels; i < way_.point.size(); ++i)
      way_.point[i] = before + (way_.point[i] - before) / (sum_ - before);
    for (std::size_t kind = 0; kind < KINDS && levels > 0; ++kind)
      forPoint[kind] -= dimension / 2 * std::log(scaled[kind] / (sum_ - before));
    way_.logPoints = left > 0 ? std::max(dimension / 2 - 1, 0.0) * std::log(left) - mean(forPoint)
                              : -std::numeric_limits<double>::infinity();
  }

  const Descent& d_;
  PointLength length_;
  std::size_t k_;
  // By level, for each kind of way.
  std::vector<std::array<double, KINDS>> variances_;
  std::vector<double> lambda_;
  std::size_t kind_ = 0;
  double sum_ = 0;
  double logSpacing_ = 0;
  // The probability of the way so far, for each kind.
  Logs log_{};
  Way way_;
  std::mt19937_64 random_{1};
};

// Where it is unknown, or no point can be as short as that: in the middle of what is left.
PointLength possible(PointLength length, const Descent& d) {
  const double room = d.coordinates - d.root;
  if (length.mean >= d.root + room / 4) return length;
  return {d.root + room / 2, room / 8};
}

// The part of the nodes of this squared length that Hoelder's inequality leaves, their entries being as in a
// normal distribution.
double partLeft(double squaredLength, double coordinates) {
  const double sizes = std::sqrt(2 / std::numbers::pi * coordinates * squaredLength);
  const double deviation = std::sqrt((1 - 2 / std::numbers::pi) * squaredLength);
  return deviation > 0 ? std::erfc((squaredLength - sizes) / deviation / std::numbers::sqrt2) / 2 : 1;
}

}  // namespace

PruningModel::PruningModel(const Descent& descent, PointLength given, const std::vector<double>& tilt)
    : rank_(descent.norms.size()), root_(descent.root), depths_(rank_) {
  const PointLength length = possible(given, descent);
  even_ = (length.mean - root_) / static_cast<double>(rank_);
  longest_ = std::min(descent.coordinates, length.mean + 4 * length.deviation) * WIDER;
  WayDrawer drawer(descent, length, tilt);
  std::vector<double> logPoints;
  for (std::size_t i = 0; i < WAYS; ++i) {
    const WayDrawer::Way way = drawer.draw();
    for (std::size_t d = 0; d < rank_; ++d) {
      depths_[d].node.push_back(static_cast<float>(way.node[d]));
      depths_[d].point.push_back(static_cast<float>(way.point[d]));
      depths_[d].nodes.push_back(std::exp(way.logNodes[d]) / static_cast<double>(WAYS) *
                                 partLeft(root_ + way.node[d], descent.coordinates));
    }
    logPoints.push_back(way.logPoints);
  }
  const double most = *std::max_element(logPoints.begin(), logPoints.end());
  for (const double log : logPoints) points_.push_back(std::exp(log - most));
  allPoints_ = std::accumulate(points_.begin(), points_.end(), 0.0);
}

Pruning PruningModel::judged(std::vector<double> caps) const {
  Pruning pruning;
  // Ways that have kept the caps so far, as nodes and as points.
  std::vector<std::uint32_t> nodes = allWays();
  std::vector<std::uint32_t> points = nodes;
  for (std::size_t d = 0; d < rank_; ++d) {
    const Depth& depth = depths_[d];
    const auto cap = static_cast<float>(caps[rank_ - 1 - d] - root_);
    std::erase_if(nodes, [&](std::uint32_t i) { return depth.node[i] > cap; });
    std::erase_if(points, [&](std::uint32_t i) { return depth.point[i] > cap; });
    for (const std::uint32_t i : nodes) pruning.nodes += CANDIDATES * depth.nodes[i];
  }
  double squares = 0;
  for (const std::uint32_t i : points) {
    pruning.share += points_[i];
    squares += points_[i] * points_[i];
  }
  if (pruning.share * pruning.share < LEAST_WAYS * squares) pruning.share = 0;
  pruning.share /= allPoints_;
  pruning.caps = std::move(caps);
  return pruning;
}

// Of the points that keep the caps: what each level takes on average, beside its even part. A level takes the
// mean of some around it, for the ways are few.
std::vector<double> PruningModel::tiltOf(const Pruning& pruning) const {
  constexpr std::size_t AROUND = 4;
  std::vector<std::uint32_t> points = allWays();
  for (std::size_t d = 0; d < rank_; ++d)
    std::erase_if(points, [&](std::uint32_t i) {
      return depths_[d].point[i] > static_cast<float>(pruning.caps[rank_ - 1 - d] - root_);
    });
  double all = 0;
  for (const std::uint32_t i : points) all += points_[i];
  std::vector<double> sums(rank_ + 1);
  for (std::size_t d = 0; d < rank_; ++d)
    for (const std::uint32_t i : points) sums[d + 1] += points_[i] * depths_[d].point[i] / all;
  std::vector<double> tilt;
  for (std::size_t d = 0; d < rank_; ++d) {
    const std::size_t from = d > AROUND ? d - AROUND : 0;
    const std::size_t to = std::min(rank_, d + AROUND + 1);
    const double part = (sums[to] - sums[from]) / static_cast<double>(to - from) / even_;
    tilt.push_back(std::clamp(part, LEAST_TILT, 1 / LEAST_TILT));
  }
  return tilt;
}

// Knots are squared lengths beside the root; caps never fall from one depth to the next.
std::vector<double> PruningModel::capsAt(const std::vector<double>& knots) const {
  std::vector<double> caps(rank_);
  double before = 0;
  for (std::size_t d = 0; d < rank_; ++d) {
    const double at = static_cast<double>(d) / static_cast<double>(rank_) * static_cast<double>(KNOTS);
    const auto i = static_cast<std::size_t>(at);
    const double next = i + 1 < KNOTS ? knots[i + 1] : longest_ - root_;
    before = std::max(before, std::lerp(knots[i], next, at - static_cast<double>(i)));
    caps[rank_ - 1 - d] = std::min(longest_, root_ + before);
  }
  caps[0] = longest_;
  return caps;
}

std::vector<std::uint32_t> PruningModel::allWays() {
  std::vector<std::uint32_t> all(WAYS);
  std::iota(all.begin(), all.end(), 0);
  return all;
}

// The squared length that this share of the points keeps.
double PruningModel::quantile(std::size_t depth, double share) const {
  std::vector<std::pair<float, double>> lengths;
  for (std::size_t i = 0; i < WAYS; ++i) lengths.emplace_back(depths_[depth].point[i], points_[i]);
  std::sort(lengths.begin(), lengths.end());
  double sum = 0;
  for (const auto& [length, points] : lengths)
    if ((sum += points) >= share * allPoints_) return length;
  return lengths.back().first;
}

// Caps that the middle levels keep tighter than the others are near the best ones.
std::vector<double> PruningModel::firstKnots() const {
  std::vector<double> knots;
  for (std::size_t i = 0; i < KNOTS; ++i)
    knots.push_back(quantile(std::min(rank_ - 1, i * rank_ / KNOTS), FIRST_SHARES[i]));
  return knots;
}

Pruning PruningModel::best(double preparation) const {
  const auto cost = [&](const Pruning& p) {
    return p.share > 0 ? (preparation + p.nodes) / p.share : std::numeric_limits<double>::infinity();
  };
  std::vector<double> knots = firstKnots();
  Pruning best = judged(capsAt(knots));
  // All knots, and one after the other, up and down, in smaller and smaller steps.
  for (double step = 0.04 * (longest_ - root_); step > 0.005 * (longest_ - root_);) {
    bool better = false;
    for (std::size_t i = 0; i <= KNOTS; ++i)
      for (const double by : {-step, step}) {
        std::vector<double> moved = knots;
        for (std::size_t j = 0; j < KNOTS; ++j)
          if (i == KNOTS || i == j) moved[j] = std::max(0.0, moved[j] + by);
        Pruning other = judged(capsAt(moved));
        if (!(cost(other) < cost(best))) continue;
        best = std::move(other);
        knots = std::move(moved);
        better = true;
      }
    if (!better) step /= 2;
  }
  return best;
}

Pruning bestPruning(const Descent& descent, PointLength length, double preparation) {
  // Narrow caps keep ways that hardly ever are drawn. Those that some caps keep tell where those of narrower
  // ones are to be looked for.
  constexpr int ROUNDS = 4;
  constexpr double ENOUGH = 0.05;
  std::vector<double> tilt(descent.norms.size(), 1.0);
  const auto cost = [&](const Pruning& pruning) { return (preparation + pruning.nodes) / pruning.share; };
  Pruning best;
  for (int round = 0; round < ROUNDS; ++round) {
    const PruningModel model(descent, length, tilt);
    Pruning next = model.best(preparation);
    if (!(next.share > 0) || (round > 0 && cost(next) > cost(best))) break;
    best = std::move(next);
    if (best.share > ENOUGH) break;
    tilt = model.tiltOf(best);
  }
  return best;
}

}  // namespace latbox::complete
