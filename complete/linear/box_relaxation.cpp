#include "complete/linear/box_relaxation.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>

#include "complete/linear/row_operations.h"

namespace latbox::complete {
namespace {

constexpr std::size_t NOWHERE = std::numeric_limits<std::size_t>::max();
// Runs of the simplex method for one box; who needs more is going in circles.
constexpr int MOST_PARTS = 40;
// How much is drawn for each variable beside the goal.
constexpr double SLANT = 1e-3;

// The divisor: the size of the largest, or 0, and then nothing happens.
double divideByLargest(std::vector<double>& entries) {
  double largest = 0;
  for (const double entry : entries) largest = std::max(largest, std::fabs(entry));
  for (double& entry : entries) entry /= largest > 0 ? largest : 1;
  return largest;
}

}  // namespace

std::vector<std::size_t> BoxRelaxation::freeVariables(const WordProgram& program) {
  std::vector<std::size_t> free;
  for (std::size_t j = 0; j < program.box.size(); ++j)
    if (!program.box[j].isFixed()) free.push_back(j);
  return free;
}

std::size_t BoxRelaxation::sizeOf(const WordProgram& program) {
  return (freeVariables(program).size() + WIDTH) * (program.rows.size() + 1);
}

BoxRelaxation::BoxRelaxation(const WordProgram& program, const std::vector<double>& goal, unsigned seed)
    : program_(program),
      variables_(freeVariables(program)),
      coordinateOf_(program.box.size(), NOWHERE),
      values_(program.box.size()),
      multipliers_(program.rows.size()),
      relaxation_(dictionary(goal, seed)) {
  const std::size_t n = variables_.size();
  box_.low.resize(scales_.size());
  box_.high.resize(scales_.size());
  for (std::size_t i = 0; i < program.rows.size(); ++i) {
    box_.low[n + i] = scaled(program.rows[i].range.low, n + i);
    box_.high[n + i] = scaled(program.rows[i].range.high, n + i);
  }
  zeros_.resize(scales_.size());
  moves_.resize(scales_.size());
  places_.resize(scales_.size());
}

Dictionary BoxRelaxation::dictionary(const std::vector<double>& goal, unsigned seed) {
  Dictionary result;
  result.stride = (variables_.size() + WIDTH - 1) / WIDTH * WIDTH;
  for (std::size_t c = 0; c < variables_.size(); ++c) {
    const WordRange& range = program_.box[variables_[c]];
    coordinateOf_[variables_[c]] = c;
    scales_.push_back(static_cast<double>(range.high - range.low));
    starts_.push_back(static_cast<double>(range.low));
    result.columns.push_back(c);
  }
  for (std::size_t i = 0; i < program_.rows.size(); ++i) {
    result.rows.push_back(variables_.size() + i);
    append(result, scaledRow(program_.rows[i]));
  }
  append(result, slanted(goal, seed));
  return result;
}

void BoxRelaxation::append(Dictionary& dictionary, std::vector<double> entries) {
  entries.resize(dictionary.stride);
  dictionary.entries.insert(dictionary.entries.end(), entries.begin(), entries.end());
}

std::vector<double> BoxRelaxation::scaledRow(const WordRow& row) {
  std::vector<double> entries(variables_.size());
  double start = 0;
  for (const auto& [j, count] : row.terms) {
    start += static_cast<double>(count) * static_cast<double>(program_.box[j].low);
    const std::size_t c = coordinateOf_[j];
    if (c != NOWHERE) entries[c] = static_cast<double>(count) * scales_[c];
  }
  const double largest = divideByLargest(entries);
  scales_.push_back(largest > 0 ? largest : 1);
  starts_.push_back(start);
  return entries;
}

// Steps that cost nothing lead in circles, and points that are all as good are as a rule not whole: so what
// is raised is never quite the goal, and all but draws where there is none.
std::vector<double> BoxRelaxation::slanted(const std::vector<double>& goal, unsigned seed) const {
  std::vector<double> entries;
  for (std::size_t c = 0; c < variables_.size(); ++c) entries.push_back(-goal[variables_[c]] * scales_[c]);
  const bool isDrawn = divideByLargest(entries) == 0;
  std::mt19937 random(seed);
  for (double& entry : entries)
    entry -= (isDrawn ? 1 : SLANT) * (0.5 + static_cast<double>(random()) * 0x1p-32);
  return entries;
}

double BoxRelaxation::scaled(std::int64_t value, std::size_t coordinate) const {
  return (static_cast<double>(value) - starts_[coordinate]) / scales_[coordinate];
}

void BoxRelaxation::place(const std::vector<WordRange>& box) {
  for (std::size_t c = 0; c < variables_.size(); ++c) {
    box_.low[c] = scaled(box[variables_[c]].low, c);
    box_.high[c] = scaled(box[variables_[c]].high, c);
  }
}

// What rounding has spoilt is tried once more without it.
BoxRelaxation::Outcome BoxRelaxation::run(const std::vector<WordRange>& box,
                                          const std::function<bool()>& isOver) {
  place(box);
  for (int attempt = 0; attempt < 2 && !isOver(); ++attempt) {
    const Relaxation::Outcome outcome = runToEnd(isOver);
    if (outcome == Relaxation::Outcome::BOUND && relaxation_.hasEnded()) {
      takeValues();
      return Outcome::POINT;
    }
    if (outcome == Relaxation::Outcome::EMPTY && isProvenEmpty(box)) return Outcome::EMPTY;
    relaxation_.refresh();
  }
  return Outcome::UNDECIDED;
}

Relaxation::Outcome BoxRelaxation::runToEnd(const std::function<bool()>& isOver) {
  auto outcome = Relaxation::Outcome::BOUND;
  for (int part = 0; part < MOST_PARTS; ++part) {
    outcome = relaxation_.run(zeros_, box_, -std::numeric_limits<double>::infinity());
    if (outcome != Relaxation::Outcome::BOUND || relaxation_.hasEnded() || isOver()) break;
  }
  return outcome;
}

void BoxRelaxation::takeValues() {
  relaxation_.takePoint(moves_);
  for (std::size_t j = 0; j < values_.size(); ++j) {
    const std::size_t c = coordinateOf_[j];
    values_[j] =
        c == NOWHERE ? static_cast<double>(program_.box[j].low) : starts_[c] + moves_[c] * scales_[c];
  }
  const Dictionary& dictionary = relaxation_.dictionary();
  std::fill(places_.begin(), places_.end(), NOWHERE);
  for (std::size_t r = 0; r < dictionary.rows.size(); ++r) places_[dictionary.rows[r]] = r;
}

// The weights of a row are a form that is 0 everywhere, of which the part of the variables is what that of
// the rows makes it.
bool BoxRelaxation::isProvenEmpty(const std::vector<WordRange>& box) {
  const SparseVector& weights = relaxation_.weights();
  const std::size_t n = variables_.size();
  const auto factorOf = [&](std::size_t entry) {
    return weights.entries[entry] / scales_[weights.coordinates[entry]];
  };
  double most = 0;
  for (std::size_t e = 0; e < weights.entries.size(); ++e) {
    if (weights.coordinates[e] < n) continue;
    if (!std::isfinite(factorOf(e))) return false;
    most = std::max(most, std::fabs(factorOf(e)));
  }
  const double unit = static_cast<double>(MOST_MULTIPLIER) / most;
  if (!std::isfinite(unit)) return false;
  std::fill(multipliers_.begin(), multipliers_.end(), 0);
  for (std::size_t e = 0; e < weights.entries.size(); ++e)
    if (weights.coordinates[e] >= n)
      multipliers_[weights.coordinates[e] - n] = std::llround(factorOf(e) * unit);
  for (const WordRow& row : program_.rows) work_ += row.terms.size();
  return isContradiction(program_, box, multipliers_);
}

double BoxRelaxation::lossDown(std::size_t variable) const {
  return lossOf(variable, values_[variable] - std::floor(values_[variable]), -1);
}

double BoxRelaxation::lossUp(std::size_t variable) const {
  return lossOf(variable, std::ceil(values_[variable]) - values_[variable], 1);
}

double BoxRelaxation::lossOf(std::size_t variable, double distance, double direction) const {
  const std::size_t c = coordinateOf_[variable];
  if (places_[c] == NOWHERE) return 0;
  return relaxation_.lossOf(places_[c], box_, direction) * distance / scales_[c];
}

}  // namespace latbox::complete
