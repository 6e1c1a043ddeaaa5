#include "complete/proof/side_vectors.h"

#include <cmath>

#include "complete/lattice/elimination.h"
#include "complete/linear/relaxation.h"
#include "complete/tree/search.h"

namespace latbox::complete::proof {
namespace {

// Trees of so many nodes need no help.
constexpr unsigned long SMALL = 200'000;
// Nodes that are looked at for side vectors.
constexpr unsigned long LOOKED_AT = 200'000;

class LinearRefuter {
 public:
  explicit LinearRefuter(const ProofLattice& lattice) : lattice_(lattice), rounding_(lattice) {
    const BoxLattice& box = lattice.box;
    for (std::size_t c = 0; c < lattice.columns(); ++c) stretch_.push_back(2 / lattice.width(c).get_d());
    for (const IntegerVector& row : box.basis) {
      cubeRows_.emplace_back();
      for (std::size_t c = 0; c < row.size(); ++c) cubeRows_.back().push_back(row[c].get_d() * stretch_[c]);
    }
    cube_.low.assign(lattice.columns(), -1);
    cube_.high.assign(lattice.columns(), 1);
    DictionaryBuilder builder(cubeRows_, cubeRows_.size());
    for (std::size_t t = 0; t < cubeRows_.size() && builder.addLevel(); ++t)
      relaxations_.emplace_back(cubeRows_, builder.dictionary(1), 1);
  }

  std::optional<IntegerVector> operator()(std::size_t t, const IntegerVector& lambda) {
    const IntegerVector u = centred(t, lambda);
    if (t == 0) return outside(u);
    if (t > relaxations_.size()) return std::nullopt;
    std::vector<double> partial;
    for (std::size_t c = 0; c < u.size(); ++c)
      partial.push_back(Float(Float(u[c], BITS) / Float(lattice_.width(c), BITS)).get_d());
    if (relaxations_[t - 1].run(partial, cube_, -INFINITE) != Relaxation::Outcome::EMPTY) return std::nullopt;
    return refuting(relaxations_[t - 1].weights(), t, u);
  }

 private:
  static constexpr double INFINITE = std::numeric_limits<double>::infinity();
  static constexpr unsigned long BITS = 128;

  // The point with lambda_t, lambda_{t+1}, ... and 0 below.
  IntegerVector centred(std::size_t t, const IntegerVector& lambda) const {
    const BoxLattice& box = lattice_.box;
    IntegerVector u;
    for (std::size_t c = 0; c < lattice_.columns(); ++c) {
      u.push_back(2 * box.point[c] - box.low[c] - box.high[c]);
      for (std::size_t i = t; i < lambda.size(); ++i) u.back() += 2 * lambda[i] * box.basis[i][c];
    }
    return u;
  }

  // A leaf: the column that is farthest out of its range.
  std::optional<IntegerVector> outside(const IntegerVector& u) const {
    std::optional<std::size_t> farthest;
    for (std::size_t c = 0; c < u.size(); ++c)
      if (abs(u[c]) > lattice_.width(c) &&
          (!farthest || abs(u[c]) * lattice_.width(*farthest) > abs(u[*farthest]) * lattice_.width(c)))
        farthest = c;
    if (!farthest) return std::nullopt;
    IntegerVector unit(u.size());
    unit[*farthest] = 1;
    return unit;
  }

  // The shortest rounding that refutes the candidate.
  std::optional<IntegerVector> refuting(const SparseVector& weights, std::size_t t,
                                        const IntegerVector& u) const {
    constexpr int FIRST = 4;
    constexpr int STEP = 4;
    constexpr int LAST = 60;
    FloatVector real(u.size(), Float(0, BITS));
    Float largest(0, BITS);
    for (std::size_t i = 0; i < weights.coordinates.size(); ++i) {
      if (!std::isfinite(weights.entries[i])) return std::nullopt;
      const std::size_t c = weights.coordinates[i];
      real[c] = Float(weights.entries[i], BITS) / Float(lattice_.width(c), BITS);
      if (abs(real[c]) > largest) largest = abs(real[c]);
    }
    if (largest == 0) return std::nullopt;
    for (int bits = FIRST; bits <= LAST; bits += STEP) {
      IntegerVector fixedPoint;
      for (const Float& entry : real) {
        Float scaled(entry / largest, BITS);
        mpf_mul_2exp(scaled.get_mpf_t(), scaled.get_mpf_t(), static_cast<unsigned long>(bits) + PLACES);
        fixedPoint.emplace_back(scaled);
      }
      IntegerVector side = rounding_.rounded(std::move(fixedPoint), t);
      Integer size = 0;
      for (std::size_t c = 0; c < side.size(); ++c) size += abs(side[c]) * lattice_.width(c);
      if (abs(innerProduct(side, u)) > size) return side;
    }
    return std::nullopt;
  }

  const ProofLattice& lattice_;
  CutRounding rounding_;
  std::vector<double> stretch_;
  std::vector<std::vector<double>> cubeRows_;
  RealBox cube_;
  // [t]: of the multipliers 0 to t.
  std::vector<Relaxation> relaxations_;
};

}  // namespace

void addSideVectors(const ProofLattice& lattice, CutVectors& cuts, const std::atomic<bool>& stop) {
  if (lattice.rank() == 0) return;
  const Judge judge = [](const IntegerVector&) { return false; };
  if (walk(lattice, cuts, judge, {1, &stop, SMALL}) || stop) return;
  // The search asks the relaxation wherever that pays.
  BoxLattice helpful = lattice.box;
  if (!isSmall(helpful, LOOKED_AT)) return;
  LinearRefuter refuter(lattice);
  CutVectors helped = cuts;
  if (collectSides(lattice, helped, std::ref(refuter), {1, &stop, LOOKED_AT})) cuts = std::move(helped);
}

}  // namespace latbox::complete::proof
