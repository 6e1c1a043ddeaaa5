#include "complete/proof/nearest_plane.h"

namespace latbox::complete::proof {
namespace {

constexpr unsigned long BITS = 192;
constexpr int MOST_PASSES = 40;

Float product(const FloatVector& a, const FloatVector& b) {
  Float sum(0, BITS);
  for (std::size_t j = 0; j < a.size(); ++j) sum += a[j] * b[j];
  return sum;
}

}  // namespace

NearestPlane::NearestPlane(const IntegerMatrix& rows, const IntegerVector& weights) : rows_(rows) {
  std::vector<FloatVector> vectors;
  FloatVector norms;
  for (const IntegerVector& row : rows) {
    FloatVector vector;
    for (std::size_t j = 0; j < row.size(); ++j) vector.emplace_back(Integer(row[j] * weights[j]), BITS);
    for (int round = 0; round < 2; ++round)
      for (std::size_t i = 0; i < vectors.size(); ++i) {
        const Float part(product(vector, vectors[i]) / norms[i], BITS);
        for (std::size_t j = 0; j < vector.size(); ++j) vector[j] -= part * vectors[i][j];
      }
    norms.push_back(product(vector, vector));
    if (norms.back() <= 0) norms.back() = 1;
    vectors.push_back(vector);
    for (std::size_t j = 0; j < vector.size(); ++j)
      vector[j] = vector[j] * Float(weights[j], BITS) / norms.back();
    directions_.push_back(std::move(vector));
  }
}

void NearestPlane::reduce(IntegerVector& vector, const Integer& scale) const {
  const Float whole(scale, BITS);
  for (int pass = 0; pass < MOST_PASSES; ++pass) {
    bool changed = false;
    for (std::size_t i = rows_.size(); i-- > 0;) {
      Float part(0, BITS);
      for (std::size_t j = 0; j < vector.size(); ++j)
        if (vector[j] != 0) part += directions_[i][j] * Float(vector[j], BITS);
      const Float rounded = floor(Float(part / whole + 0.5, BITS));
      const Integer count = Integer(rounded) * scale;
      if (count == 0) continue;
      changed = true;
      for (std::size_t j = 0; j < vector.size(); ++j)
        mpz_submul(vector[j].get_mpz_t(), count.get_mpz_t(), rows_[i][j].get_mpz_t());
    }
    if (!changed) return;
  }
}

}  // namespace latbox::complete::proof
