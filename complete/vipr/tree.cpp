#include "complete/vipr/tree.h"

#include <stdexcept>

#include "complete/lattice/elimination.h"
#include "complete/lattice/equations.h"

namespace latbox::complete::vipr {
namespace {

constexpr unsigned long UNIT = 1024;

}  // namespace

Tree::Tree(Ranges& ranges, const proof::Derivation& derivation, const proof::ProofLattice& lattice,
           const proof::CutVectors& cuts)
    : ranges_(ranges),
      derivation_(derivation),
      lattice_(lattice),
      cuts_(cuts),
      lambda_(lattice.rank()),
      assumptions_(lattice.rank()),
      sums_(lattice.rank() + 1) {
  for (const IntegerVector& dual : lattice.dual) {
    forms_.push_back(std::make_shared<IntegerVector>(overAll(dual)));
    constants_.push_back(innerProduct(dual, lattice.box.point));
  }
  IntegerMatrix columns(lattice.box.variables.size());
  for (std::size_t j = 0; j < columns.size(); ++j)
    for (const std::size_t i : lattice.equations)
      columns[j].push_back(ranges.rowForm(i)[lattice.box.variables[j]]);
  // Without sides nothing can be contradictory.
  const auto independent = independentRows(columns, IntegerVector(columns.size()));
  for (const std::size_t j : *independent) {
    pivots_.push_back(lattice.box.variables[j]);
    square_.push_back(columns[j]);
  }
  listColumns();
  listReach();
}

// ---------------------------------------------------------------------------------------- forms and rows

// A vector over the columns as a form of all variables.
IntegerVector Tree::overAll(const IntegerVector& w) const {
  const std::vector<std::size_t>& variables = lattice_.box.variables;
  IntegerVector form(ranges_.certificate().variables());
  for (std::size_t j = 0; j < variables.size(); ++j) form[variables[j]] = w[j];
  for (std::size_t r = 0; r < lattice_.coordinates.size(); ++r) {
    const Integer& factor = w[variables.size() + r];
    const IntegerVector& row = ranges_.rowForm(lattice_.coordinates[r]);
    for (std::size_t j = 0; factor != 0 && j < form.size(); ++j) form[j] += factor * row[j];
  }
  return form;
}

// The equations in w, which is orthogonal to the rows below the level, less what the forms of the levels say.
std::vector<std::pair<std::size_t, Rational>> Tree::rowsOf(const IntegerVector& w, std::size_t level) const {
  IntegerVector rest = overAll(w);
  for (std::size_t i = level; i < lattice_.rank(); ++i) {
    const Integer count = innerProduct(w, lattice_.box.basis[i]);
    for (std::size_t j = 0; count != 0 && j < rest.size(); ++j) rest[j] -= count * (*forms_[i])[j];
  }
  std::vector<std::pair<std::size_t, Rational>> rows;
  if (pivots_.empty()) return rows;
  const std::vector<Rational> factors = solveSquare(square_, partOf(rest, pivots_));
  for (std::size_t e = 0; e < factors.size(); ++e)
    if (factors[e] != 0) rows.emplace_back(lattice_.equations[e], factors[e]);
  return rows;
}

void Tree::listColumns() {
  const BoxLattice& box = lattice_.box;
  for (std::size_t c = 0; c < lattice_.columns(); ++c) {
    const bool isVariable = c < box.variables.size();
    EndLines ends = isVariable ? ranges_.variable(box.variables[c])
                               : ranges_.row(lattice_.coordinates[c - box.variables.size()]);
    const Certificate& certificate = ranges_.certificate();
    if (certificate[ends.low.value()].side != box.low[c] ||
        certificate[ends.high.value()].side != box.high[c])
      narrowColumn(c, ends);
    columns_.push_back(ends);
    start_.push_back(2 * box.point[c] - box.low[c] - box.high[c]);
    widths_.push_back(lattice_.width(c));
  }
}

// The column is a whole multiple of a combination of the forms, and what the equations say.
void Tree::narrowColumn(std::size_t c, EndLines& ends) {
  IntegerVector unit(lattice_.columns());
  unit[c] = 1;
  Integer period = 0;
  for (const IntegerVector& row : lattice_.box.basis) period = gcd(period, row[c]);
  IntegerVector part(ranges_.certificate().variables());
  for (std::size_t i = 0; i < lattice_.rank(); ++i) {
    const Integer count = lattice_.box.basis[i][c] / period;
    for (std::size_t j = 0; count != 0 && j < part.size(); ++j) part[j] += count * (*forms_[i])[j];
  }
  ranges_.narrow(ends, {overAll(unit), 1, part, period, rowsOf(unit, 0)});
}

void Tree::listReach() {
  for (std::size_t i = 0; i < lattice_.rank(); ++i) {
    Integer least = -constants_[i];
    Integer most = least;
    for (std::size_t c = 0; c < lattice_.columns(); ++c) {
      const Integer& d = lattice_.dual[i][c];
      least += d * (d > 0 ? lattice_.box.low[c] : lattice_.box.high[c]);
      most += d * (d > 0 ? lattice_.box.high[c] : lattice_.box.low[c]);
    }
    least_.push_back(least);
    most_.push_back(most);
  }
}

// --------------------------------------------------------------------------------------------------- cuts

// w u at a node that has chosen the levels from t up.
Integer Tree::valueOf(const IntegerVector& w, std::size_t t) const {
  Integer value = innerProduct(w, start_);
  for (std::size_t i = t; i < lattice_.rank(); ++i)
    value += 2 * lambda_[i] * innerProduct(w, lattice_.box.basis[i]);
  return value;
}

Integer Tree::sizeOf(const IntegerVector& w) const {
  Integer size = 0;
  for (std::size_t c = 0; c < w.size(); ++c) size += abs(w[c]) * widths_[c];
  return size;
}

std::optional<Tree::Cut> Tree::excess(const IntegerVector& w, std::size_t t) const {
  const Integer value = valueOf(w, t);
  if (abs(value) <= sizeOf(w)) return std::nullopt;
  return Cut{w, sgn(value)};
}

// By the tests of a walk.
std::optional<Tree::Cut> Tree::cutOf(std::size_t t, const Integer& value) {
  lambda_[t] = value;
  if (value > most_[t] || value < least_[t]) return Cut{lattice_.dual[t], value > most_[t] ? 1 : -1};
  const proof::Level& level = cuts_.levels[t];
  if (auto cut = excess(level.main, t)) return cut;
  const Integer product = valueOf(level.main, t);
  const Integer a = floorOf(Integer(2 * UNIT * product + level.divisor), Integer(2 * level.divisor));
  sums_[t] = sums_[t + 1];
  for (std::size_t c = 0; c < sums_[t].size(); ++c) sums_[t][c] += a * level.main[c];
  if (auto cut = excess(sums_[t], t)) return cut;
  for (const IntegerVector& side : level.sides)
    if (auto cut = excess(side, t)) return cut;
  return std::nullopt;
}

// The line of a cut, or of an end of its own that the form of w is beyond.
std::size_t Tree::refuteBy(const Cut& cut, const EndLines* own, std::size_t t) {
  Combination combination;
  if (own != nullptr)
    add(combination, *own, cut.sign, Sense::LESS);
  else
    for (std::size_t c = 0; c < cut.w.size(); ++c)
      add(combination, columns_[c], Integer(cut.sign * cut.w[c]), Sense::LESS);
  for (std::size_t i = t; i < lattice_.rank(); ++i)
    add(combination, assumptions_[i], Integer(-cut.sign * innerProduct(cut.w, lattice_.box.basis[i])),
        Sense::LESS);
  for (const auto& [row, factor] : rowsOf(cut.w, t))
    add(combination, ranges_.row(row), -cut.sign * factor, Sense::LESS);
  if (lattice_.box.variables.size() < derivation_.box().size())
    ranges_.cancel(combination, *ranges_.certificate().zero(), Sense::LESS);
  return ranges_.certificate().refute(combination);
}

std::size_t Tree::assume(std::size_t t, const Integer& value, Sense sense) {
  return ranges_.certificate().assume({sense, Integer(value + constants_[t]), forms_[t]});
}

// --------------------------------------------------------------------------------------------------- walk

std::optional<std::size_t> Tree::refute(unsigned long most, const std::atomic<bool>& stop) {
  mostNodes_ = most;
  stop_ = &stop;
  sums_[lattice_.rank()] = cuts_.constant;
  for (Integer& entry : sums_[lattice_.rank()]) entry *= UNIT;
  try {
    return lattice_.rank() == 0 ? refuteLeaf() : refuteChildren(lattice_.rank() - 1);
  } catch (const TooLarge&) {
    return std::nullopt;
  }
}

std::size_t Tree::refuteChildren(std::size_t t) {
  lambda_[t] = 0;
  const Integer step = 2 * innerProduct(cuts_.levels[t].main, lattice_.box.basis[t]);
  Integer down = floorOf(Integer(-valueOf(cuts_.levels[t].main, t)), step);
  down = std::max(std::min(down, most_[t]), Integer(least_[t] - 1));
  Integer up = down + 1;
  Children children;
  for (; !children.node && !children.above; ++up) tryChild(children, t, up);
  for (; !children.node && !children.below; --down) tryChild(children, t, down);
  assumptions_[t] = {};
  return children.node ? *children.node : join(children);
}

void Tree::tryChild(Children& children, std::size_t t, const Integer& value) {
  if (*stop_) throw proof::NoProof("the run was stopped");
  if (++nodes_ > mostNodes_) throw TooLarge();
  const std::optional<Cut> cut = cutOf(t, value);
  if (!cut) {
    Between between;
    between.greater = assume(t, value, Sense::GREATER);
    between.less = assume(t, value, Sense::LESS);
    assumptions_[t] = {between.greater, between.less};
    between.line = t == 0 ? refuteLeaf() : refuteChildren(t - 1);
    children.between[value] = between;
    return;
  }
  const int direction = cut->sign * sgn(innerProduct(cut->w, lattice_.box.basis[t]));
  if (direction == 0) {
    assumptions_[t] = {};
    children.node = refuteBy(*cut, nullptr, t);
    return;
  }
  Side side{value, 0, assume(t, value, direction > 0 ? Sense::GREATER : Sense::LESS)};
  assumptions_[t] = {};
  (direction > 0 ? assumptions_[t].low : assumptions_[t].high) = side.assumption;
  side.line = refuteBy(*cut, nullptr, t);
  (direction > 0 ? children.above : children.below) = side;
}

// From above down: all from a value on, and then the one below it.
std::size_t Tree::join(const Children& children) {
  Certificate& certificate = ranges_.certificate();
  const Side& below = *children.below;
  Side above = *children.above;
  while (above.value > below.value + 1) {
    const Integer value = above.value - 1;
    const Between& between = children.between.at(value);
    above = {value, certificate.split(between.line, between.less, above.line, above.assumption),
             between.greater};
  }
  return certificate.split(below.line, below.assumption, above.line, above.assumption);
}

// All is chosen: some range is not kept.
std::size_t Tree::refuteLeaf() {
  const BoxLattice& box = lattice_.box;
  IntegerVector v = box.point;
  for (std::size_t i = 0; i < lattice_.rank(); ++i)
    for (std::size_t c = 0; c < v.size(); ++c) v[c] += lambda_[i] * box.basis[i][c];
  IntegerVector w(v.size());
  for (std::size_t c = 0; c < v.size(); ++c) {
    if (v[c] >= box.low[c] && v[c] <= box.high[c]) continue;
    w[c] = 1;
    return refuteBy({w, v[c] > box.high[c] ? 1 : -1}, &columns_[c], 0);
  }
  IntegerVector z = box.fixed;
  for (std::size_t j = 0; j < box.variables.size(); ++j) z[box.variables[j]] = v[j];
  for (std::size_t i = 0; i < derivation_.rows().size(); ++i) {
    const Integer value = innerProduct(derivation_.rows()[i], z);
    const Range& range = derivation_.ranges()[i];
    const bool isAbove = range.high && value > *range.high;
    if (!isAbove && (!range.low || value >= *range.low)) continue;
    for (std::size_t j = 0; j < box.variables.size(); ++j) w[j] = derivation_.rows()[i][box.variables[j]];
    return refuteBy({w, isAbove ? 1 : -1}, &ranges_.row(i), 0);
  }
  return refuteNorm(z);
}

// The signs of the distances say what the norm is.
std::size_t Tree::refuteNorm(const IntegerVector& z) {
  const auto [form, ends] = ranges_.normRow(z);
  IntegerVector w(lattice_.columns());
  for (std::size_t j = 0; j < lattice_.box.variables.size(); ++j) w[j] = form[lattice_.box.variables[j]];
  return refuteBy({w, 1}, &ends, 0);
}

}  // namespace latbox::complete::vipr
