#include "complete/first_point.h"

#include <algorithm>
#include <cmath>
#include <random>

#include "complete/estimate.h"
#include "complete/gram_schmidt.h"

namespace latbox::complete {
namespace {

// Random directions from which quantiles are taken.
constexpr std::size_t DIRECTIONS = 4000;
constexpr unsigned SAMPLE = 300;
// Passes may cost this part of the complete search.
constexpr double PART = 0.5;
// Levels of one or two values have no quantiles worth the name.
constexpr std::size_t LEAST_RANK = 30;

int blockFor(std::size_t rank) {
  return rank < 45 ? 20 : rank < 55 ? 30 : 40;
}

// Of what is orthogonal to all rows. Nothing: the numbers are too long for a model.
std::optional<double> squaredLength(const BoxLattice& lattice) {
  const auto gso = roughGramSchmidtOf(lattice, 128);
  if (!gso) return std::nullopt;
  return gso->norms.back().get_d();
}

// What the first rows of a random direction have of its squared length, sorted, for each number of rows.
std::vector<std::vector<double>> sortedParts(std::size_t rank) {
  std::mt19937_64 random(1);
  std::normal_distribution<double> normal;
  std::vector<std::vector<double>> parts(rank + 1, std::vector<double>(DIRECTIONS));
  for (std::size_t d = 0; d < DIRECTIONS; ++d) {
    double sum = 0;
    for (std::size_t i = 1; i <= rank; ++i) {
      const double x = normal(random);
      sum += x * x;
      parts[i][d] = sum;
    }
    for (std::size_t i = 1; i <= rank; ++i) parts[i][d] /= sum;
  }
  for (std::vector<double>& part : parts) std::sort(part.begin(), part.end());
  return parts;
}

}  // namespace

std::vector<double> quantileCaps(std::size_t rank, double constantPart, std::size_t coordinates,
                                 double share) {
  const std::vector<std::vector<double>> parts = sortedParts(rank);
  const auto length = static_cast<double>(coordinates);
  const auto index =
      std::min(DIRECTIONS - 1, static_cast<std::size_t>(share * static_cast<double>(DIRECTIONS)));
  std::vector<double> caps;
  // What rounding leaves of the length of a point must not cost it.
  constexpr double WIDER = 1 + 1e-6;
  for (std::size_t t = 0; t <= rank; ++t)
    caps.push_back((constantPart + (length - constantPart) * parts[rank - t][index]) * WIDER);
  // The first choice is a whole tree: all of them are looked at.
  for (std::size_t t = rank > 0 ? rank - 1 : 0; t <= rank; ++t) caps[t] = 2 * length;
  return caps;
}

bool findByPasses(const std::string& key, const BoxLattice& lattice, unsigned long seed, Journal& journal,
                  Visitor& visitor) {
  const std::optional<double> constantPart = squaredLength(lattice);
  if (lattice.rank() < LEAST_RANK || !constantPart) return false;
  SearchControl& control = journal.control();
  SearchSettings settings;
  settings.caps = quantileCaps(lattice.rank(), *constantPart, lattice.coordinates(), SHARE);
  BoxLattice whole = lattice;
  const double all = estimatedNodes(whole, SAMPLE);
  const unsigned long before = control.nodes;
  for (unsigned long pass = 1; !control.stop && static_cast<double>(control.nodes - before) < PART * all;
       ++pass) {
    const auto prepare = [&](const IntegerMatrix&) {
      std::optional<BoxLattice> other = lattice;
      // Of different seeds no pass is the same.
      constexpr unsigned long SEEDS = 1'000'003;
      reduceAgain(*other, blockFor(lattice.rank()), seed * SEEDS + pass);
      return other;
    };
    const std::string name = digestOf(key + " pass " + std::to_string(seed) + " " + std::to_string(pass));
    const bool complete = journal.searchThrough(name, prepare, visitor, settings).value_or(true);
    if (!complete && !control.stop) return true;
  }
  return false;
}

}  // namespace latbox::complete
