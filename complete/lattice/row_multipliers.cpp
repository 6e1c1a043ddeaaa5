#include "complete/lattice/row_multipliers.h"

#include <algorithm>
#include <cmath>

namespace latbox::complete {
namespace {

constexpr int ROUNDS = 12;
// A step that gains less than this is not worth another round.
constexpr double GAIN = 1e-6;

}  // namespace

RowMultipliers::RowMultipliers(const BoxLattice& lattice, unsigned long bits) : bits_(bits) {
  for (std::size_t i = 0; i < lattice.equations.size(); ++i) {
    Equation equation;
    equation.side = 2 * lattice.sides[i];
    Integer largest = 1;
    for (std::size_t j = 0; j < lattice.coordinates(); ++j) {
      const Integer& a = lattice.equations[i][j];
      equation.entries.push_back(a * (lattice.high[j] - lattice.low[j]));
      equation.side -= a * (lattice.low[j] + lattice.high[j]);
      largest = std::max(largest, Integer(abs(equation.entries.back())));
    }
    const Float scale(largest, bits);
    for (const Integer& entry : equation.entries)
      equation.roughEntries.push_back(Float(Float(entry, bits) / scale).get_d());
    equation.roughSide = Float(Float(equation.side, bits) / scale).get_d();
    equations_.push_back(std::move(equation));
  }
}

// The least of sum |rest_j + y s_j| - y c lies where the slope changes its sign.
bool RowMultipliers::descend(std::vector<double>& rest, const Equation& equation, double& y) const {
  std::vector<std::pair<double, double>> breaks;
  double slope = -equation.roughSide;
  double before = 0;
  for (std::size_t j = 0; j < rest.size(); ++j) {
    const double s = equation.roughEntries[j];
    before += std::fabs(rest[j]);
    if (s == 0) continue;
    breaks.emplace_back(-rest[j] / s, std::fabs(s));
    slope -= std::fabs(s);
  }
  std::sort(breaks.begin(), breaks.end());
  for (const auto& [at, weight] : breaks) {
    slope += 2 * weight;
    if (slope < 0) continue;
    double after = -at * equation.roughSide;
    for (std::size_t j = 0; j < rest.size(); ++j) after += std::fabs(rest[j] + at * equation.roughEntries[j]);
    if (!(after < before - GAIN * before)) return false;
    for (std::size_t j = 0; j < rest.size(); ++j) rest[j] += at * equation.roughEntries[j];
    y += at;
    return true;
  }
  return false;
}

Float RowMultipliers::boundFor(const FloatVector& g, const std::vector<double>& y) const {
  FloatVector w = g;
  Float bound(0, bits_);
  Float sizes(0, bits_);
  for (const Float& entry : g) sizes += abs(entry);
  for (std::size_t i = 0; i < equations_.size(); ++i) {
    if (y[i] == 0) continue;
    const Equation& equation = equations_[i];
    // Any number will do; this one is near y over the scale of the rough entries.
    Integer largest = 1;
    for (const Integer& entry : equation.entries) largest = std::max(largest, Integer(abs(entry)));
    const Float factor(Float(y[i], bits_) / Float(largest, bits_), bits_);
    for (std::size_t j = 0; j < w.size(); ++j) {
      const Float part(factor * equation.entries[j], bits_);
      w[j] += part;
      sizes += abs(part);
    }
    const Float part(factor * equation.side, bits_);
    bound -= part;
    sizes += abs(part);
  }
  for (const Float& entry : w) bound += abs(entry);
  Float loss(sizes);
  mpf_div_2exp(loss.get_mpf_t(), loss.get_mpf_t(), bits_ / 2);
  return bound + loss;
}

std::optional<Float> RowMultipliers::bound(const FloatVector& g) const {
  std::vector<double> rest;
  for (const Float& entry : g) rest.push_back(entry.get_d());
  std::vector<double> y(equations_.size());
  bool helps = false;
  bool changed = true;
  for (int round = 0; round < ROUNDS && changed; ++round) {
    changed = false;
    for (std::size_t i = 0; i < equations_.size(); ++i)
      changed = descend(rest, equations_[i], y[i]) || changed;
    helps = helps || changed;
  }
  if (!helps) return std::nullopt;
  return boundFor(g, y);
}

}  // namespace latbox::complete
