// The tables of the cuts against exact arithmetic: at every node above a point, what the walk computes in
// double and float is as near to the truth as slips and margin say, and no cut takes the node. Without slips
// and margin this fails: there is rounding at nearly every node.
#include "complete/tree/cuts.h"

#include "complete/tree/walk_steps.h"
#include "small_lattice.h"

namespace latbox::complete {
namespace {

using testing::SmallLattice;

using RationalVector = std::vector<Rational>;

RationalVector inCube(const BoxLattice& lattice, const std::vector<double>& lambda) {
  RationalVector u;
  for (std::size_t j = 0; j < lattice.coordinates(); ++j) {
    Integer v = lattice.point[j];
    for (std::size_t i = 0; i < lattice.rank(); ++i) v += Integer(lambda[i]) * lattice.basis[i][j];
    u.emplace_back(2 * v - lattice.low[j] - lattice.high[j], lattice.high[j] - lattice.low[j]);
    u.back().canonicalize();
  }
  return u;
}

Rational product(const RationalVector& a, const RationalVector& b) {
  Rational sum = 0;
  for (std::size_t j = 0; j < a.size(); ++j) sum += a[j] * b[j];
  return sum;
}

// The way from the root to one point.
class Way {
 public:
  Way(const BoxLattice& lattice, const CutTables<double>& tables, const std::vector<double>& point)
      : tables_(tables),
        lambda_(point),
        u_(inCube(lattice, point)),
        exactW_(u_.size()),
        w_(tables.levels[0].weights.size()) {
    lambda_.resize(point.size() + PRODUCT_LANES);
  }

  void check() {
    const std::size_t k = tables_.reach.size();
    for (std::size_t i = 0; i < k; ++i) EXPECT_LE(std::abs(lambda_[i]), tables_.reach[i]);
    for (std::size_t t = k + 1; t-- > 0;) checkLevel(tables_.levels[t], t, k);
  }

 private:
  void checkLevel(const CutTables<double>::Level& level, std::size_t t, std::size_t k) {
    double p = level.constant + (t < k ? partialProduct(lambda_.data(), level.products.data(), t + 1, k) : 0);
    if (t < k) p += lambda_[t] * level.products[t];
    const RationalVector g(level.g.begin(), level.g.end());
    EXPECT_LE(abs(Rational(product(g, u_) - p)), level.slip);
    EXPECT_LE(p, level.most + level.slip);
    EXPECT_LE(-p, level.least + level.slip);
    const double a = p * level.inverseNorm;
    value_ += a * p;
    const float size =
        addScaled(next_.data(), w_.data(), level.weights.data(), static_cast<float>(a), w_.size());
    w_ = next_;
    for (std::size_t j = 0; j < g.size(); ++j) exactW_[j] += Rational(a) * g[j];
    Rational exactSize = 0;
    for (const Rational& entry : exactW_) exactSize += abs(entry);
    EXPECT_LE(abs(Rational(product(exactW_, u_) - value_)) + abs(Rational(exactSize - size)), tables_.margin);
    EXPECT_LE(value_, tables_.cap);
    EXPECT_LE(value_, size + tables_.margin);
  }

  const CutTables<double>& tables_;
  std::vector<double> lambda_;
  RationalVector u_;
  RationalVector exactW_;
  Weights<double> w_;
  Weights<double> next_ = w_;
  double value_ = 0;
};

// In boxes of width 1 all points are corners, where the cuts leave nothing to spare.
TEST(Cuts, KeepWhatIsAboveAPoint) {
  for (const long width : {1, 2, 9, 1000}) {
    std::size_t ways = 0;
    for (unsigned seed = 0; seed < 400; ++seed) {
      SmallLattice small(seed, width < 9 ? 2 : width < 1000 ? 5 : 700, width);
      const auto tables = cutTablesOf<double>(small.lattice, 53);
      if (!tables || !SmallLattice::isShort(tables->reach)) continue;
      for (const std::vector<double>& point : small.points(tables->reach)) {
        Way(small.lattice, *tables, point).check();
        ++ways;
      }
    }
    EXPECT_GT(ways, 100u) << width;
  }
}

}  // namespace
}  // namespace latbox::complete
