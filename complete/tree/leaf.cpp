#include "complete/tree/leaf.h"

#include <cmath>

namespace latbox::complete {
namespace {

bool isBelow(const Integer& value, long limit) {
  return abs(value) < limit;
}

}  // namespace

Leaf::Leaf(const BoxLattice& lattice)
    : lattice_(lattice), steps_(lattice.rank()), values_(lattice.coordinates()), z_(lattice.fixed) {
  listShort();
}

void Leaf::listShort() {
  if (lattice_.rank() > MOST_ROWS) return;
  std::vector<Coordinate> coordinates;
  for (std::size_t j = 0; j < lattice_.coordinates(); ++j) {
    for (const Integer* end : {&lattice_.point[j], &lattice_.low[j], &lattice_.high[j]})
      if (!isBelow(*end, END_LIMIT)) return;
    coordinates.push_back(
        {lattice_.point[j].get_si(), lattice_.low[j].get_si(), lattice_.high[j].get_si(), {}});
    for (const IntegerVector& row : lattice_.basis) {
      if (!isBelow(row[j], ENTRY_LIMIT)) return;
      coordinates.back().entries.push_back(row[j].get_si());
    }
  }
  coordinates_ = std::move(coordinates);
}

// Into steps_; false: a number is too long.
bool Leaf::takeShort(const std::vector<double>& lambda) {
  if (coordinates_.empty()) return false;
  for (std::size_t i = 0; i < steps_.size(); ++i) {
    if (!(std::fabs(lambda[i]) < MULTIPLIER_LIMIT)) return false;
    steps_[i] = static_cast<long>(lambda[i]);
  }
  return true;
}

// Of what steps_ holds, in machine words.
const IntegerVector* Leaf::shortPoint() {
  for (std::size_t j = 0; j < coordinates_.size(); ++j) {
    const Coordinate& coordinate = coordinates_[j];
    long value = coordinate.point;
    for (std::size_t i = 0; i < steps_.size(); ++i) value += steps_[i] * coordinate.entries[i];
    if (value < coordinate.low || value > coordinate.high) return nullptr;
    values_[j] = value;
  }
  for (std::size_t j = 0; j < lattice_.variables.size(); ++j) z_[lattice_.variables[j]] = values_[j];
  return &z_;
}

const IntegerVector* Leaf::pointOf(const IntegerVector& lambda) {
  IntegerVector v = lattice_.point;
  for (std::size_t i = 0; i < lambda.size(); ++i)
    for (std::size_t j = 0; lambda[i] != 0 && j < v.size(); ++j)
      mpz_addmul(v[j].get_mpz_t(), lambda[i].get_mpz_t(), lattice_.basis[i][j].get_mpz_t());
  for (std::size_t j = 0; j < v.size(); ++j)
    if (v[j] < lattice_.low[j] || v[j] > lattice_.high[j]) return nullptr;
  for (std::size_t j = 0; j < lattice_.variables.size(); ++j) z_[lattice_.variables[j]] = v[j];
  return &z_;
}

const IntegerVector* Leaf::pointOf(const std::vector<double>& lambda) {
  if (takeShort(lambda)) return shortPoint();
  return pointOf(IntegerVector(lambda.begin(), lambda.begin() + static_cast<std::ptrdiff_t>(steps_.size())));
}

const IntegerVector* Leaf::pointOf(const std::vector<mpf_class>& lambda) {
  IntegerVector whole;
  for (std::size_t i = 0; i < steps_.size(); ++i) whole.emplace_back(lambda[i]);
  return pointOf(whole);
}

}  // namespace latbox::complete
