#include "complete/tree/node_bounds.h"

#include <algorithm>
#include <cmath>

namespace latbox::complete {
namespace {

constexpr double INFINITE = std::numeric_limits<double>::infinity();
// Of a bound on a whole number: with more slack the dictionary has lost too many digits.
constexpr double LARGE_SLACK = 1e-3;
// Of all dictionaries: 32 megabytes, which is a rank of some 230.
constexpr std::size_t MOST_ENTRIES = std::size_t{1} << 22;
// How far the simplex method goes below what is enough, so that the certified bound still is.
constexpr double BEYOND = 1e-5;

}  // namespace

NodeBounds::NodeBounds(const BoxLattice& lattice, const std::vector<double>& reach)
    : certificates_(lattice, reach) {
  if (!certificates_.exist() || lattice.rank() == 0) return;
  takeCube(lattice);
  partials_.assign(lattice.rank(), certificates_.point());
  chosen_.assign(lattice.rank(), 0);
  known_ = lattice.rank() - 1;
  startLevels();
}

void NodeBounds::startLevels() {
  DictionaryBuilder builder(cubeRows_, cubeRows_.size());
  std::size_t entries = 0;
  for (std::size_t t = 0; t < cubeRows_.size(); ++t) {
    entries += 2 * (t + 1) * (cubePartial_.size() - t);
    if (entries > MOST_ENTRIES || !builder.addLevel()) return;
    for (const int sign : {1, -1})
      sides_.push_back({Relaxation(cubeRows_, builder.dictionary(sign), sign), {}, {}});
  }
}

void NodeBounds::takeCube(const BoxLattice& lattice) {
  const RealBox& box = certificates_.box();
  for (std::size_t j = 0; j < lattice.coordinates(); ++j) {
    const double width = box.high[j] - box.low[j];
    stretch_.push_back(2 / width);
    shift_.push_back((box.high[j] + box.low[j]) / width);
  }
  for (const IntegerVector& row : lattice.basis) {
    cubeRows_.emplace_back();
    for (std::size_t j = 0; j < row.size(); ++j) cubeRows_.back().push_back(row[j].get_d() * stretch_[j]);
  }
  cube_.low.assign(lattice.coordinates(), -1);
  cube_.high.assign(lattice.coordinates(), 1);
  cubePartial_.resize(lattice.coordinates());
}

unsigned long NodeBounds::firstWork(std::size_t t) const {
  constexpr std::size_t STEPS = 10;
  return STEPS * 2 * (t + 1) * (cubePartial_.size() - t);
}

// Goes on from the last node's, as far as the choices are the same.
const std::vector<double>& NodeBounds::partialAt(std::size_t t, const std::vector<double>& lambda) {
  std::size_t level = partials_.size() - 1;
  while (level > t && level > known_ && chosen_[level] == lambda[level]) --level;
  if (level == t) return partials_[t];
  for (; level > t; --level) {
    chosen_[level] = lambda[level];
    certificates_.move(partials_[level - 1], partials_[level], level, lambda[level]);
    work_ += cubePartial_.size();
  }
  known_ = t;
  return partials_[t];
}

// Weights of the cube as such of the whole coordinates.
const SparseVector& NodeBounds::whole(const SparseVector& weights) {
  whole_ = weights;
  for (std::size_t i = 0; i < whole_.entries.size(); ++i)
    whole_.entries[i] *= stretch_[whole_.coordinates[i]];
  return whole_;
}

double NodeBounds::improve(Side& side, const std::vector<double>& partial, std::size_t t, int sign,
                           double enough) {
  for (std::size_t j = 0; j < partial.size(); ++j) cubePartial_[j] = stretch_[j] * partial[j] - shift_[j];
  const unsigned long before = side.relaxation.work();
  const auto outcome = side.relaxation.run(cubePartial_, cube_, enough - BEYOND);
  work_ += side.relaxation.work() - before + partial.size() + (t + 1) * (t + 1);
  if (outcome == Relaxation::Outcome::FAILED) return INFINITE;
  if (outcome == Relaxation::Outcome::EMPTY) {
    certificates_.certify(side.refutation, whole(side.relaxation.weights()), t, 0);
    if (certificates_.evaluate(side.refutation, partial) < 0) return -INFINITE;
    side.relaxation.refresh();
    return INFINITE;
  }
  if (!side.relaxation.isChanged()) return INFINITE;
  certificates_.certify(side.objective, whole(side.relaxation.weights()), t, sign);
  if (!(side.objective.slack < LARGE_SLACK)) side.relaxation.refresh();
  return std::floor(certificates_.evaluate(side.objective, partial));
}

double NodeBounds::bound(std::size_t t, int sign, const std::vector<double>& lambda, double enough) {
  Side& side = sides_[2 * t + (sign > 0 ? 0 : 1)];
  const std::vector<double>& partial = partialAt(t, lambda);
  work_ += 4 * (t + 1);
  if (certificates_.evaluate(side.refutation, partial) < 0) return -INFINITE;
  const double known = std::floor(certificates_.evaluate(side.objective, partial));
  if (known < enough) return known;
  return std::min(known, improve(side, partial, t, sign, enough));
}

}  // namespace latbox::complete
