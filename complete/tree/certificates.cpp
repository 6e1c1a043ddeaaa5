#include "complete/tree/certificates.h"

#include <algorithm>
#include <cmath>

namespace latbox::complete {
namespace {

constexpr double INFINITE = std::numeric_limits<double>::infinity();
// Sums of whole numbers up to this are exact; it is 2^52.
constexpr double LARGEST_WHOLE = 4503599627370496.0;
// Widens a computed sum of up to 2^20 terms of one sign by more than its own rounding.
constexpr double WIDER = 1.0 + 1.0 / (1 << 20);
// Smaller weights are taken for zero, so that no product underflows.
constexpr double SMALLEST_WEIGHT = 1e-100;

bool areShort(const IntegerVector& values) {
  return std::all_of(values.begin(), values.end(),
                     [](const Integer& value) { return abs(value) < (Integer(1) << 52); });
}

std::vector<double> toDouble(const IntegerVector& values) {
  std::vector<double> result;
  for (const Integer& value : values) result.push_back(value.get_d());
  return result;
}

}  // namespace

Certificates::Certificates(const BoxLattice& lattice, const std::vector<double>& reach)
    : lattice_(lattice), reach_(reach) {
  exist_ = takeNumbers();
}

// False: a number is too long, or a sum may be inexact.
bool Certificates::takeNumbers() {
  if (!areShort(lattice_.point) || !areShort(lattice_.low) || !areShort(lattice_.high)) return false;
  if (!std::all_of(lattice_.basis.begin(), lattice_.basis.end(), areShort)) return false;
  box_ = {toDouble(lattice_.low), toDouble(lattice_.high)};
  point_ = toDouble(lattice_.point);
  for (const IntegerVector& row : lattice_.basis) rows_.push_back(toDouble(row));
  errors_.resize(rows_.size());
  for (std::size_t j = 0; j < point_.size(); ++j) {
    entries_.emplace_back();
    double moves = 0;
    for (std::size_t i = 0; i < rows_.size(); ++i) {
      entries_[j].push_back(rows_[i][j]);
      moves += std::fabs(rows_[i][j]) * reach_[i];
    }
    const double end = std::max(std::fabs(box_.low[j]), std::fabs(box_.high[j]));
    sizes_.push_back((end + std::fabs(point_[j]) + 2 * moves * WIDER) * WIDER);
    if (!(sizes_[j] < LARGEST_WHOLE)) return false;
  }
  return true;
}

void Certificates::move(std::vector<double>& to, const std::vector<double>& from, std::size_t row,
                        double lambda) const {
  for (std::size_t j = 0; j < from.size(); ++j) to[j] = from[j] + lambda * rows_[row][j];
}

void Certificates::certify(Certificate& certificate, const SparseVector& d, std::size_t t, int sign) {
  SparseVector& weights = certificate.weights;
  weights.coordinates.clear();
  weights.entries.clear();
  std::fill(errors_.begin(), errors_.end(), 0);
  double sizes = sign == 0 ? 0 : reach_[t];
  for (std::size_t i = 0; i < d.entries.size(); ++i) {
    const double entry = d.entries[i];
    const std::size_t j = d.coordinates[i];
    if (std::fabs(entry) < SMALLEST_WEIGHT) continue;
    weights.coordinates.push_back(j);
    weights.entries.push_back(entry);
    sizes += std::fabs(entry) * sizes_[j];
    for (std::size_t l = 0; l <= t; ++l) errors_[l] += entry * entries_[j][l];
  }
  errors_[t] -= sign;
  double drift = 0;
  for (std::size_t l = 0; l <= t; ++l) drift += std::fabs(errors_[l]) * reach_[l];
  const double terms = static_cast<double>(weights.entries.size()) + 4;
  const double rounding = terms * std::numeric_limits<double>::epsilon() * sizes;
  const double slack = (drift + rounding) * WIDER + 1e-290;
  certificate.slack = std::isfinite(slack) ? slack : INFINITE;
}

double Certificates::evaluate(const Certificate& certificate, const std::vector<double>& partial) const {
  if (certificate.slack == INFINITE) return INFINITE;
  const SparseVector& d = certificate.weights;
  double sum = 0;
  for (std::size_t i = 0; i < d.entries.size(); ++i) {
    const std::size_t j = d.coordinates[i];
    sum += d.entries[i] * ((d.entries[i] > 0 ? box_.high[j] : box_.low[j]) - partial[j]);
  }
  const double bound = sum + certificate.slack;
  return std::isfinite(bound) ? bound : INFINITE;
}

}  // namespace latbox::complete
