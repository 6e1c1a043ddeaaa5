#include "complete/proof/walk_input.h"

#include "complete/lattice/elimination.h"

namespace latbox::complete::proof {
namespace {

Integer valueBound(const Product& product, std::size_t t, const IntegerVector& largest) {
  Integer bound = abs(product.start) + abs(product.steps[t]);
  for (std::size_t i = t; i < largest.size(); ++i) bound += abs(product.steps[i]) * largest[i];
  return 2 * bound;
}

}  // namespace

WalkInput::WalkInput(const ProofLattice& lattice, const CutVectors& cuts) : lattice_(lattice) {
  const BoxLattice& box = lattice.box;
  for (std::size_t c = 0; c < lattice.columns(); ++c) {
    widths_.push_back(lattice.width(c));
    start_.push_back(2 * box.point[c] - box.low[c] - box.high[c]);
  }
  for (const IntegerVector& dual : lattice.dual) addReach(dual);
  for (std::size_t t = 0; t < lattice.rank(); ++t) {
    mains.push_back(productOf(cuts.levels[t].main, t));
    weighted.push_back(weightedOf(cuts.levels[t].main, 1));
    divisors.push_back(cuts.levels[t].divisor);
    sides.emplace_back();
    for (const IntegerVector& side : cuts.levels[t].sides) sides.back().push_back(productOf(side, t));
  }
  top = weightedOf(cuts.constant, UNIT);
  topValue = Integer(UNIT) * innerProduct(cuts.constant, start_);
}

bool WalkInput::fitsShort() const {
  constexpr std::size_t DIGITS = 53;
  const auto isBelow = [](const Integer& value) { return mpz_sizeinbase(value.get_mpz_t(), 2) <= DIGITS; };
  Integer sum = abs(topValue);
  for (const Integer& entry : top) sum += abs(entry);
  IntegerVector largest;
  for (std::size_t i = 0; i < least.size(); ++i)
    largest.push_back(std::max<Integer>(abs(least[i]), abs(most[i])) + 1);
  for (std::size_t t = 0; t < mains.size(); ++t) {
    const Integer& n = divisors[t];
    const Integer& size = mains[t].size;
    if (!isBelow(Integer(2 * UNIT * size + 3 * n)) || !isBelow(valueBound(mains[t], t, largest)))
      return false;
    sum += (2 * UNIT * size / n + 2) * size;
    for (const Product& side : sides[t])
      if (!isBelow(valueBound(side, t, largest))) return false;
  }
  if (!isBelow(sum)) return false;
  for (std::size_t c = 0; c < widths_.size(); ++c) {
    Integer value = abs(lattice_.box.point[c]) + abs(lattice_.box.low[c]) + abs(lattice_.box.high[c]);
    for (std::size_t i = 0; i < largest.size(); ++i) value += largest[i] * abs(lattice_.box.basis[i][c]);
    if (!isBelow(value)) return false;
  }
  return true;
}

Product WalkInput::productOf(const IntegerVector& vector, std::size_t t) const {
  Product product;
  product.start = innerProduct(vector, start_);
  for (std::size_t i = 0; i < lattice_.rank(); ++i)
    product.steps.push_back(i < t ? Integer(0) : Integer(2 * innerProduct(vector, lattice_.box.basis[i])));
  for (std::size_t c = 0; c < vector.size(); ++c) product.size += abs(vector[c]) * widths_[c];
  return product;
}

IntegerVector WalkInput::weightedOf(const IntegerVector& vector, unsigned long factor) const {
  IntegerVector weighted;
  for (std::size_t c = 0; c < vector.size(); ++c) weighted.push_back(vector[c] * widths_[c] * factor);
  return weighted;
}

void WalkInput::addReach(const IntegerVector& dual) {
  const BoxLattice& box = lattice_.box;
  Integer low = -innerProduct(dual, box.point);
  Integer high = low;
  for (std::size_t c = 0; c < dual.size(); ++c) {
    low += dual[c] * (dual[c] > 0 ? box.low[c] : box.high[c]);
    high += dual[c] * (dual[c] > 0 ? box.high[c] : box.low[c]);
  }
  least.push_back(low);
  most.push_back(high);
}

}  // namespace latbox::complete::proof
