#include "complete/proof/cut_vectors.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "complete/lattice/elimination.h"
#include "complete/lattice/gram_schmidt.h"
#include "complete/lattice/reduction.h"
#include "complete/proof/walk.h"

namespace latbox::complete::proof {
namespace {

IntegerVector widthsOf(const ProofLattice& lattice) {
  IntegerVector widths;
  for (std::size_t c = 0; c < lattice.columns(); ++c) widths.push_back(lattice.width(c));
  return widths;
}

// 2^exponent value / divisor, cut off.
Integer scaled(const Float& value, unsigned long exponent, const Integer& divisor) {
  Float product(value);
  mpf_mul_2exp(product.get_mpf_t(), product.get_mpf_t(), exponent);
  product /= divisor;
  return Integer(product);
}

constexpr unsigned long BITS = 256;

}  // namespace

CutRounding::CutRounding(const ProofLattice& lattice)
    : lattice_(lattice), plane_(lattice.orthogonal, widthsOf(lattice)) {}

IntegerVector CutRounding::rounded(IntegerVector fixedPoint, std::size_t level) const {
  const Integer one = Integer(1) << PLACES;
  IntegerVector rest = fixedPoint;
  for (std::size_t i = level; i < lattice_.rank(); ++i) {
    const Integer count = nearest(innerProduct(rest, lattice_.box.basis[i]), one) * one;
    for (std::size_t c = 0; count != 0 && c < rest.size(); ++c)
      mpz_submul(rest[c].get_mpz_t(), count.get_mpz_t(), lattice_.dual[i][c].get_mpz_t());
  }
  plane_.reduce(rest, one);
  for (std::size_t c = 0; c < rest.size(); ++c) {
    fixedPoint[c] -= rest[c];
    mpz_divexact(fixedPoint[c].get_mpz_t(), fixedPoint[c].get_mpz_t(), one.get_mpz_t());
  }
  return fixedPoint;
}

namespace {

// Cut vectors of one lattice in several scales.
class Making {
 public:
  explicit Making(ProofLattice& lattice) : lattice_(lattice), gso_(gramSchmidtOf(lattice.box, BITS)) {
    if (centre(lattice.box, gso_)) gso_ = gramSchmidtOf(lattice.box, BITS);
    rounding_.emplace(lattice);
  }

  // 2^bits times as long as in the cube; notes how near they are.
  CutVectors make(unsigned long bits) {
    const std::size_t k = lattice_.rank();
    CutVectors cuts;
    error_ = 0;
    cuts.constant = whole(gso_.vectors[k], bits, k, 1);
    for (std::size_t t = 0; t < k; ++t) {
      const Integer divisor = scaled(gso_.norms[t], bits, 1);
      error_ = std::max(error_, 1 / (2 * divisor.get_d()));
      double size = 0;
      for (const Float& entry : gso_.vectors[t]) size += std::fabs(entry.get_d());
      cuts.levels.push_back({whole(gso_.vectors[t], bits, t, size), divisor, {}});
      if (divisor == 0 || innerProduct(cuts.levels.back().main, lattice_.box.basis[t]) <= 0) error_ = USELESS;
    }
    return cuts;
  }

  // The greatest that a vector of the last ones, or a divisor, is away from the real one, as a part of it.
  double error() const { return error_; }
  static constexpr double USELESS = std::numeric_limits<double>::infinity();

 private:
  IntegerVector whole(const FloatVector& vector, unsigned long bits, std::size_t level, double size) {
    IntegerVector fixedPoint;
    for (std::size_t c = 0; c < vector.size(); ++c)
      fixedPoint.push_back(scaled(vector[c], bits + PLACES, lattice_.width(c)));
    const IntegerVector rounded = rounding_->rounded(fixedPoint, level);
    Integer away = 0;
    for (std::size_t c = 0; c < rounded.size(); ++c)
      away += abs(Integer((rounded[c] << PLACES) - fixedPoint[c])) * lattice_.width(c);
    long exponent = 0;
    const double mantissa = mpz_get_d_2exp(&exponent, away.get_mpz_t());
    error_ = std::max(
        error_, std::ldexp(mantissa / size, static_cast<int>(exponent - static_cast<long>(bits + PLACES))));
    return rounded;
  }

  ProofLattice& lattice_;
  GramSchmidt gso_;
  std::optional<CutRounding> rounding_;
  double error_ = 0;
};

}  // namespace

CutVectors cutVectorsOf(ProofLattice& lattice) {
  constexpr unsigned long FIRST = 12;
  constexpr unsigned long STEP = 4;
  constexpr unsigned long LAST = 2000;
  // Nearer than that they cut no better; farther away, hardly at all.
  constexpr double NEAR = 1.0 / 1024;
  constexpr double FAR = 1.0 / 16;
  Making making(lattice);
  std::optional<CutVectors> fitting;
  for (unsigned long bits = FIRST; bits <= LAST; bits += STEP) {
    CutVectors cuts = making.make(bits);
    const bool isNear = making.error() <= NEAR;
    const bool isUseful = making.error() <= FAR && fitsDouble(lattice, cuts);
    if (isNear && (isUseful || !fitting)) return cuts;
    if (isNear) return std::move(*fitting);
    if (isUseful) fitting = std::move(cuts);
  }
  throw ReductionFailure("the basis asks for more digits than there are");
}

}  // namespace latbox::complete::proof
