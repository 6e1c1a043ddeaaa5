// Caps on the squared length of a point's projections that make a search for one point cheap.
//
// A walk knows at a node the squared length of the projection that all points below it have in common. That
// of a random point grows evenly from level to level, with a spread. Nodes that are long for their level are
// many and hold few points: without them a share of the points is left and a far smaller part of the tree,
// and where the walk fails, the next one has another basis, for which the point lies elsewhere. Which caps
// are the best for the cost of a success, that of the basis included, was asked by Gama, Nguyen and Regev
// (Lattice enumeration using extreme pruning, 2010), who integrate volumes. Here the share of the points and
// the number of nodes are sums over random ways down the tree, since the first levels of this one are no
// continuum: their Gram-Schmidt vectors are often near those of single variables, whose two values are
// equally far from the centre, and caps for a continuum cut both off.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace latbox::complete {

// What of a reduced basis decides how a walk branches, in the coordinates of the cube.
struct Descent {
  // Squared lengths of the Gram-Schmidt vectors; the walk begins at the last one.
  std::vector<double> norms;
  // mu[i][j], j < i: the part of row i along vector j; the last row: of the point.
  std::vector<std::vector<double>> mu;
  // The squared length of what of the point is orthogonal to all rows.
  double root = 0;
  // The number of coordinates: no point is longer.
  double coordinates = 0;
};

// The squared length of the points, as far as it is known: where all variables are 0/1, nothing deviates.
struct PointLength {
  double mean = 0;
  double deviation = 0;
};

struct Pruning {
  // The greatest squared length of a node at each level.
  std::vector<double> caps;
  // The share of the points that keep all caps, and the candidates of a walk that heeds them, by the model.
  double share = 0;
  double nodes = 0;
};

// Caps for which (preparation + nodes) / share is as small as a descent makes it. Requires at least one row.
// The same arguments bring the same caps.
Pruning bestPruning(const Descent& descent, PointLength length, double preparation);

// The ways down of a lattice, by which caps are judged.
class PruningModel {
 public:
  // `tilt`: how the variances of half of the ways differ from the even ones, by the depth.
  PruningModel(const Descent& descent, PointLength length, const std::vector<double>& tilt);

  Pruning best(double preparation) const;
  Pruning judged(std::vector<double> caps) const;
  // The tilt of the ways that keep the caps of a pruning whose share is not 0.
  std::vector<double> tiltOf(const Pruning& pruning) const;

 private:
  // At one depth, which is the number of levels that are chosen: what each way has as a node and as a point,
  // and how many nodes it stands for.
  struct Depth {
    std::vector<float> node;
    std::vector<float> point;
    std::vector<double> nodes;
  };

  std::vector<double> capsAt(const std::vector<double>& knots) const;
  std::vector<double> firstKnots() const;
  double quantile(std::size_t depth, double share) const;
  static std::vector<std::uint32_t> allWays();

  std::size_t rank_;
  double root_;
  // What a level has of the length on average, and what no point exceeds.
  double even_;
  double longest_;
  std::vector<Depth> depths_;
  // How many points each way stands for.
  std::vector<double> points_;
  double allPoints_ = 0;
};

}  // namespace latbox::complete
