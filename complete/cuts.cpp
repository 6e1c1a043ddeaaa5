#include "complete/cuts.h"

#include <cmath>

#include "complete/row_multipliers.h"

namespace latbox::complete {
namespace {

// Rounds bounds up: they are computed with many more digits than they need, and then widened by more than
// those computations can have lost.
const double WIDER = 1.0 + 1.0 / (1 << 20);

// A vector of whole numbers over 2^shift.
struct Dyadic {
  IntegerVector entries;
  long shift = 0;
};

Float scaledBy(const Float& value, long shift) {
  Float result(value);
  if (shift >= 0)
    mpf_mul_2exp(result.get_mpf_t(), value.get_mpf_t(), static_cast<unsigned long>(shift));
  else
    mpf_div_2exp(result.get_mpf_t(), value.get_mpf_t(), static_cast<unsigned long>(-shift));
  return result;
}

// The vector with entries of at most `bits` bits, the largest just below that; of zeros only if it is one.
Dyadic roundedTo(const FloatVector& vector, long bits) {
  long largest = 0;
  bool zero = true;
  for (const Float& entry : vector) {
    if (entry == 0) continue;
    long exponent = 0;
    mpf_get_d_2exp(&exponent, entry.get_mpf_t());
    largest = zero ? exponent : std::max(largest, exponent);
    zero = false;
  }
  Dyadic rounded;
  rounded.shift = zero ? 0 : bits - 1 - largest;
  for (const Float& entry : vector)
    rounded.entries.emplace_back(floor(Float(scaledBy(entry, rounded.shift) + 0.5)));
  return rounded;
}

void assignUp(double& to, const Float& bound) {
  to = bound.get_d() * WIDER + 1e-290;
}

void assignUp(Float& to, const Float& bound) {
  to = bound * WIDER;
}

void assign(double& to, const Float& value) {
  to = value.get_d();
}

void assign(Float& to, const Float& value) {
  to = value;
}

// The greatest that a number may be, so that nothing overflows, and whole numbers stay exact.
constexpr long EXPONENT_LIMIT = 900;

template <class R>
class TableBuilder {
 public:
  TableBuilder(const BoxLattice& lattice, const GramSchmidt& gso, unsigned long bits, unsigned long work)
      : lattice_(lattice),
        gso_(gso),
        bits_(bits),
        work_(work),
        k_(lattice.rank()),
        unit_(1, work),
        rows_(lattice, work) {
    // One bit for the rounding and one in hand. Numbers of GMP lose what stands beyond their last limb.
    unit_ = scaledBy(unit_, -(static_cast<long>(bits) - (bits > 53 ? 66 : 2)));
    takeCommonDenominator();
  }

  std::optional<CutTables<R>> result() {
    if (!boundReach()) return std::nullopt;
    for (std::size_t t = 0; t <= k_; ++t) addLevel(t);
    addMargins();
    if (!acceptable_) return std::nullopt;
    tables_.reach.resize(k_);
    for (std::size_t i = 0; i < k_; ++i) assignUp(tables_.reach[i], reach_[i]);
    return std::move(tables_);
  }

 private:
  Float zero() const { return Float(0, work_); }

  // The rows as whole numbers over one denominator.
  void takeCommonDenominator() {
    for (std::size_t j = 0; j < lattice_.coordinates(); ++j)
      common_ = lcm(common_, Integer(lattice_.high[j] - lattice_.low[j]));
    for (std::size_t i = 0; i <= k_; ++i) {
      const IntegerVector& row = i < k_ ? lattice_.basis[i] : lattice_.point;
      scaled_.emplace_back();
      for (std::size_t j = 0; j < row.size(); ++j) {
        Integer twice = 2 * row[j];
        if (i == k_) twice -= lattice_.low[j] + lattice_.high[j];
        scaled_.back().push_back(twice * (common_ / (lattice_.high[j] - lattice_.low[j])));
      }
    }
  }

  // Exact up to the last of many bits: the sum is a whole number.
  Float productOf(const Dyadic& vector, std::size_t row) const {
    Integer sum = 0;
    for (std::size_t j = 0; j < vector.entries.size(); ++j)
      mpz_addmul(sum.get_mpz_t(), vector.entries[j].get_mpz_t(), scaled_[row][j].get_mpz_t());
    Float value(sum, work_);
    value /= Float(common_, work_);
    return scaledBy(value, -vector.shift);
  }

  Float sizeOf(const Dyadic& vector) const {
    Float sum = zero();
    for (const Integer& entry : vector.entries) sum += Float(Integer(abs(entry)), work_);
    return scaledBy(sum, -vector.shift);
  }

  // With D_i K_j = [i = j] + e_ij exactly, lambda_i = D_i (u - u0) - sum_j e_ij lambda_j. Where the sums of
  // |e_ij| are below 1/2, that bounds all lambda_i by what D_i (u - u0) can be.
  bool boundReach() {
    Float most = zero();
    Float worst = zero();
    for (std::size_t i = 0; i < k_; ++i) {
      const Dyadic dual = roundedTo(gso_.dual[i], static_cast<long>(work_) / 2);
      reach_.push_back((abs(productOf(dual, k_)) + sizeOf(dual)) * WIDER);
      Float error = zero();
      for (std::size_t j = 0; j < k_; ++j) error += abs(productOf(dual, j) - (i == j ? 1 : 0));
      most = std::max(most, reach_.back());
      worst =
          std::max(worst, Float(error * WIDER + scaledBy(Float(1, work_), -static_cast<long>(work_) / 2)));
    }
    if (worst > 0.001) return false;
    for (Float& reach : reach_) {
      reach += 2 * worst * most;
      // Steps must be exact numbers.
      if (scaledBy(reach, 10) > scaledBy(Float(1, work_), static_cast<long>(bits_))) return false;
    }
    return true;
  }

  void addLevel(std::size_t t) {
    FloatVector vector = gso_.vectors[t];
    // Without equations nothing is orthogonal to all rows; what stands here then is rounding.
    if (t == k_ && gso_.norms[k_] < scaledBy(Float(1, work_), -40)) vector.assign(vector.size(), zero());
    const Dyadic g = roundedTo(vector, bits_ > 53 ? static_cast<long>(bits_) - 66 : 52);
    typename CutTables<R>::Level level;
    level.g.resize((lattice_.coordinates() + LANES - 1) / LANES * LANES);
    for (std::size_t j = 0; j < g.entries.size(); ++j)
      assign(level.g[j], scaledBy(Float(g.entries[j], work_), -g.shift));
    Float drift = zero();
    Float sizes = abs(productOf(g, k_));
    level.products.resize(k_);
    assign(level.constant, productOf(g, k_));
    for (std::size_t i = 0; i < k_; ++i) {
      const Float value = productOf(g, i);
      assign(level.products[i], value);
      (i < t ? drift : sizes) += abs(value) * reach_[i];
      if (i == t && value <= 0) acceptable_ = false;
    }
    const Float size = sizeOf(g);
    const Float slip = (drift + unit_ * sizes * (2 * (k_ - t) + 8)) * WIDER;
    const Float inverse = t == k_ && size == 0 ? zero() : Float(1 / gso_.norms[t]);
    assign(level.inverseNorm, inverse);
    assignUp(level.size, size);
    assignUp(level.slip, slip);
    level.most = level.least = level.size;
    if (t < k_) useRows(level, g);
    tables_.levels.push_back(std::move(level));
    bounds_.push_back({size, slip, (size + slip) * inverse * WIDER});
    if (t < k_ && slip * 1000 > size) acceptable_ = false;
    if (scaledBy(Float(1, work_), EXPONENT_LIMIT) < sizes) acceptable_ = false;
  }

  void useRows(typename CutTables<R>::Level& level, const Dyadic& g) const {
    FloatVector vector;
    for (const Integer& entry : g.entries) vector.push_back(scaledBy(Float(entry, work_), -g.shift));
    lower(level.most, rows_.bound(vector));
    for (Float& entry : vector) entry = -entry;
    lower(level.least, rows_.bound(vector));
  }

  static void lower(R& to, const std::optional<Float>& bound) {
    if (!bound) return;
    R value{};
    // Away from 0 is up only for what is positive.
    assignUp(value, Float(*bound + abs(*bound) * (WIDER - 1)));
    to = std::min(to, value);
  }

  // From the root down: multipliers are at most `multiplier`, W is a sum of multiplier * g, its value one of
  // multiplier * (g u). The factor 2 covers errors of errors and of these sums.
  void addMargins() {
    Float drift = zero();
    Float value = zero();
    Float valueSums = zero();
    Float sizes = zero();
    Float sizeSums = zero();
    for (std::size_t t = k_ + 1; t-- > 0;) {
      const Bounds& b = bounds_[t];
      drift += b.multiplier * b.slip;
      value += b.multiplier * (b.size + b.slip);
      sizes += b.multiplier * b.size;
      valueSums += value;
      sizeSums += sizes;
      const Float rounding =
          unit_ * (4 * valueSums + 4 * sizeSums + (2 * lattice_.coordinates() + 16) * (sizes + value));
      const Float margin = 2 * (drift + rounding);
      assignUp(tables_.levels[t].margin, margin);
      if (t < k_ && margin > 0.01 * (1 + sizes)) acceptable_ = false;
      if (scaledBy(Float(1, work_), EXPONENT_LIMIT) < sizes + value) acceptable_ = false;
    }
  }

  struct Bounds {
    Float size;
    Float slip;
    Float multiplier;
  };

  const BoxLattice& lattice_;
  const GramSchmidt& gso_;
  unsigned long bits_;
  unsigned long work_;
  std::size_t k_;
  Float unit_;
  RowMultipliers rows_;
  Integer common_ = 1;
  IntegerMatrix scaled_;
  FloatVector reach_;
  std::vector<Bounds> bounds_;
  bool acceptable_ = true;
  CutTables<R> tables_;
};

}  // namespace

template <class R>
std::optional<CutTables<R>> cutTablesOf(BoxLattice& lattice, unsigned long bits) {
  const unsigned long work = 2 * bits + 2 * static_cast<unsigned long>(lattice.rank()) + 64;
  mpf_set_default_prec(work);
  centre(lattice, gramSchmidtOf(lattice, work));
  const GramSchmidt gso = gramSchmidtOf(lattice, work);
  auto tables = TableBuilder<R>(lattice, gso, bits, work).result();
  mpf_set_default_prec(bits);
  return tables;
}

template std::optional<CutTables<double>> cutTablesOf(BoxLattice&, unsigned long);
template std::optional<CutTables<Float>> cutTablesOf(BoxLattice&, unsigned long);

}  // namespace latbox::complete
