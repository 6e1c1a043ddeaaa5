#include "complete/linear/linear_bounds.h"

#include <algorithm>
#include <cmath>

#include "complete/program/presolve.h"

namespace latbox::complete {
namespace {

constexpr int ROUNDS = 3;
// Multipliers below this, in scaled units, are noise.
constexpr double NOISE = 1e-11;
// A bound that moves by less is not worth a proof: in scaled units, and in steps.
constexpr double SCALED_GAIN = 1e-9;
constexpr double GAIN = 1e-6;
constexpr int MANTISSA = 53;

// value / 2^exponent.
double scaledDown(const Integer& value, long exponent) {
  long own = 0;
  const double mantissa = mpz_get_d_2exp(&own, value.get_mpz_t());
  return std::ldexp(mantissa, static_cast<int>(own - exponent));
}

// factor * y * 2^exponent, exactly: whole * 2^shift.
struct Multiplier {
  std::size_t row;
  Integer whole;
  long shift;
};

Multiplier multiplierOf(std::size_t row, double y, const Integer& factor, long exponent) {
  int own = 0;
  const double mantissa = std::frexp(y, &own);
  return {row, Integer(std::ldexp(mantissa, MANTISSA)) * factor, own - MANTISSA + exponent};
}

}  // namespace

LinearBounds::LinearBounds(const IntegerProgram& program, unsigned long effort)
    : program_(program), simplex_(scaled(effort)), atHigh_(bounds_.size()), atLow_(bounds_.size()) {
  const Simplex<double>::End end = simplex_.makeFeasible();
  gaveUp_ = end != Simplex<double>::End::OPTIMAL;
  if (end == Simplex<double>::End::INFEASIBLE)
    if (const auto most = proven()) {
      const Range& range = rangeOf(simplex_.variable());
      isEmpty_ = simplex_.sign() > 0 ? *most < *range.low : *most < -*range.high;
    }
  noteVertex();
}

const Range& LinearBounds::rangeOf(std::size_t variable) const {
  const std::size_t n = program_.box.size();
  return variable < n ? program_.box[variable] : program_.rows[variable - n].range;
}

Simplex<double> LinearBounds::scaled(unsigned long effort) {
  for (const Range& range : program_.box) {
    widths_.push_back(*range.high - *range.low);
    bounds_.push_back({0.0, range.isFixed() ? 0.0 : 1.0});
  }
  std::vector<std::vector<double>> rows;
  for (const Row& row : program_.rows) {
    Integer start = 0;
    std::size_t bits = 0;
    IntegerVector a;
    for (std::size_t j = 0; j < row.a.size(); ++j) {
      start += row.a[j] * *program_.box[j].low;
      a.push_back(row.a[j] * widths_[j]);
      bits = std::max(bits, mpz_sizeinbase(a.back().get_mpz_t(), 2));
    }
    exponents_.push_back(static_cast<long>(bits));
    rows.emplace_back();
    for (const Integer& entry : a) rows.back().push_back(scaledDown(entry, exponents_.back()));
    bounds_.push_back({scaledDown(*row.range.low - start, exponents_.back()),
                       scaledDown(*row.range.high - start, exponents_.back())});
  }
  return Simplex<double>(std::move(rows), bounds_, effort);
}

void LinearBounds::noteVertex() {
  for (std::size_t v = 0; !gaveUp_ && v < bounds_.size(); ++v) {
    if (isAtEnd(v, 1)) atHigh_[v] = true;
    if (isAtEnd(v, -1)) atLow_[v] = true;
  }
}

// Whether so little is missing that a bound would not move.
bool LinearBounds::isAtEnd(std::size_t variable, int sign) const {
  const double value = simplex_.value(variable);
  const double missing = sign > 0 ? *bounds_[variable].high - value : value - *bounds_[variable].low;
  const std::size_t n = widths_.size();
  const double unit =
      variable < n ? widths_[variable].get_d() : std::ldexp(1, static_cast<int>(exponents_[variable - n]));
  return !(missing > SCALED_GAIN) || !(missing * unit > GAIN);
}

std::optional<Integer> LinearBounds::greatest(std::size_t variable, int sign) {
  if (gaveUp_ || rangeOf(variable).isFixed() || (sign > 0 ? atHigh_ : atLow_)[variable]) return std::nullopt;
  gaveUp_ = simplex_.maximise(variable, sign) != Simplex<double>::End::OPTIMAL;
  noteVertex();
  if (gaveUp_ || isAtEnd(variable, sign)) return std::nullopt;
  const std::optional<Integer> most = proven();
  const Range& range = rangeOf(variable);
  if (!most || *most >= (sign > 0 ? *range.high : Integer(-*range.low))) return std::nullopt;
  return most;
}

// The bound of what was asked for last, from the multipliers that came out.
std::optional<Integer> LinearBounds::proven() {
  const std::size_t n = widths_.size();
  const std::size_t v = simplex_.variable();
  const Integer factor = v < n ? widths_[v] : Integer(1);
  const long exponent = v < n ? 0 : exponents_[v - n];
  const std::vector<double> scaled = simplex_.multipliers();
  std::vector<Multiplier> multipliers;
  long places = 0;
  for (std::size_t i = 0; i < scaled.size(); ++i) {
    if (!std::isfinite(scaled[i])) return std::nullopt;
    if (std::fabs(scaled[i]) < NOISE) continue;
    multipliers.push_back(multiplierOf(i, scaled[i], factor, exponent - exponents_[i]));
    places = std::max(places, -multipliers.back().shift);
  }
  // All in units of 2^-places.
  IntegerVector rest = v < n ? IntegerVector(n) : program_.rows[v - n].a;
  if (v < n) rest[v] = 1;
  for (Integer& r : rest) r *= Integer(simplex_.sign()) << static_cast<unsigned long>(places);
  IntegerVector y(scaled.size());
  for (const Multiplier& multiplier : multipliers) {
    y[multiplier.row] = multiplier.whole << static_cast<unsigned long>(multiplier.shift + places);
    const IntegerVector& a = program_.rows[multiplier.row].a;
    for (std::size_t j = 0; j < n; ++j)
      mpz_submul(rest[j].get_mpz_t(), y[multiplier.row].get_mpz_t(), a[j].get_mpz_t());
  }
  Integer most = valueOf(y, rest);
  mpz_fdiv_q_2exp(most.get_mpz_t(), most.get_mpz_t(), static_cast<unsigned long>(places));
  proof_ = {v, simplex_.sign(), Integer(1) << static_cast<unsigned long>(places), std::move(y)};
  return most;
}

// The greatest sum y_i (a_i z) + sum rest_j z_j by the ranges.
Integer LinearBounds::valueOf(const IntegerVector& y, const IntegerVector& rest) const {
  Integer most = 0;
  const auto add = [&most](const Integer& count, const Range& range) {
    if (count != 0) most += count * (count > 0 ? *range.high : *range.low);
  };
  for (std::size_t i = 0; i < y.size(); ++i) add(y[i], program_.rows[i].range);
  for (std::size_t j = 0; j < rest.size(); ++j) add(rest[j], program_.box[j]);
  return most;
}

namespace {

// One round of narrowByRelaxation.
class Round {
 public:
  Round(IntegerProgram& program, unsigned long effort) : p_(program), relaxation_(program, effort) {}

  // False: the program has no point.
  bool run() {
    if (relaxation_.isEmpty()) return false;
    const std::size_t n = p_.box.size();
    for (std::size_t i = 0; i < p_.rows.size(); ++i)
      if (!narrow(n + i, p_.rows[i].range)) return false;
    for (std::size_t j = 0; j < n; ++j)
      if (!narrow(j, p_.box[j])) return false;
    return true;
  }

  bool hasNarrowed() const { return hasNarrowed_; }
  unsigned long work() const { return relaxation_.work(); }

 private:
  bool narrow(std::size_t variable, Range& range) {
    if (const auto most = relaxation_.greatest(variable, 1)) {
      range.high = *most;
      hasNarrowed_ = true;
    }
    if (range.isEmpty()) return false;
    if (const auto most = relaxation_.greatest(variable, -1)) {
      range.low = -*most;
      hasNarrowed_ = true;
    }
    return !range.isEmpty();
  }

  IntegerProgram& p_;
  LinearBounds relaxation_;
  bool hasNarrowed_ = false;
};

}  // namespace

bool closeRows(IntegerProgram& program) {
  for (Row& row : program.rows) {
    Integer least = 0;
    Integer most = 0;
    for (std::size_t j = 0; j < row.a.size(); ++j) {
      if (row.a[j] == 0) continue;
      const Range& box = program.box[j];
      least += row.a[j] * (row.a[j] > 0 ? *box.low : *box.high);
      most += row.a[j] * (row.a[j] > 0 ? *box.high : *box.low);
    }
    if (!row.range.low || *row.range.low < least) row.range.low = least;
    if (!row.range.high || *row.range.high > most) row.range.high = most;
    if (row.range.isEmpty()) return false;
  }
  return true;
}

bool narrowByRelaxation(IntegerProgram& program) {
  if (!closeRows(program)) return false;
  unsigned long done = 0;
  for (int r = 0; r < ROUNDS && done < RELAXATION_EFFORT && !program.rows.empty(); ++r) {
    Round round(program, RELAXATION_EFFORT - done);
    if (!round.run()) return false;
    if (!round.hasNarrowed()) return true;
    if (!tighten(program) || !closeRows(program)) return false;
    done += round.work();
  }
  return true;
}

}  // namespace latbox::complete
