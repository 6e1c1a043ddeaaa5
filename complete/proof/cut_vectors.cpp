#include "complete/proof/cut_vectors.h"

#include "complete/elimination.h"
#include "complete/gram_schmidt.h"

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

CutVectors cutVectorsOf(ProofLattice& lattice, unsigned long bits) {
  GramSchmidt gso = gramSchmidtOf(lattice.box, BITS);
  if (centre(lattice.box, gso)) gso = gramSchmidtOf(lattice.box, BITS);
  const CutRounding rounding(lattice);
  const auto whole = [&](const FloatVector& vector, std::size_t level) {
    IntegerVector fixedPoint;
    for (std::size_t c = 0; c < vector.size(); ++c)
      fixedPoint.push_back(scaled(vector[c], bits + PLACES, lattice.width(c)));
    return rounding.rounded(std::move(fixedPoint), level);
  };
  CutVectors cuts;
  cuts.constant = whole(gso.vectors[lattice.rank()], lattice.rank());
  for (std::size_t t = 0; t < lattice.rank(); ++t) {
    Integer divisor = scaled(gso.norms[t], bits, 1);
    cuts.levels.push_back({whole(gso.vectors[t], t), divisor > 0 ? divisor : Integer(1), {}});
  }
  return cuts;
}

}  // namespace latbox::complete::proof
