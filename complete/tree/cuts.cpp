#include "complete/tree/cuts.h"

#include <cmath>

#include "complete/lattice/row_multipliers.h"

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

void assign(float& to, const Float& value) {
  to = static_cast<float>(value.get_d());
}

void assign(Float& to, const Float& value) {
  to = value;
}

// The greatest that a double may be, so that nothing overflows; and of multipliers, cut vectors and their
// sums, whose type is float then. Numbers of GMP have no such limit.
constexpr long EXPONENT_LIMIT = 900;
constexpr long WEIGHT_EXPONENT_LIMIT = 100;
// What the cap allows beyond N, as a part of it.
constexpr double ALLOWANCE = 1.0 / (1 << 14);

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
        weightUnit_(0, work),
        rows_(lattice, work) {
    // One bit for the rounding and one in hand. Numbers of GMP lose what stands beyond their last limb.
    unit_ = scaledBy(unit_, -(static_cast<long>(bits) - (bits > 53 ? 66 : 2)));
    weightUnit_ = IS_DOUBLE ? scaledBy(Float(1, work), -22) : unit_;
    takeCommonDenominator();
  }

  std::optional<CutTables<R>> result() {
    if (!boundReach()) return std::nullopt;
    for (std::size_t t = 0; t <= k_; ++t) addLevel(t);
    addMargin();
    if (!acceptable_) return std::nullopt;
    return std::move(tables_);
  }

 private:
  static constexpr bool IS_DOUBLE = std::is_same_v<R, double>;

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
    tables_.reach.resize(k_);
    for (std::size_t i = 0; i < k_; ++i) {
      Float& reach = reach_[i];
      reach += 2 * worst * most;
      assignUp(tables_.reach[i], reach);
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
    level.g.resize(lattice_.coordinates());
    level.weights.resize(paddedTo(lattice_.coordinates(), LANES));
    for (std::size_t j = 0; j < g.entries.size(); ++j) {
      const Float entry = scaledBy(Float(g.entries[j], work_), -g.shift);
      assign(level.g[j], entry);
      assign(level.weights[j], entry);
    }
    Float drift = zero();
    Float sizes = abs(productOf(g, k_));
    level.products.resize(k_ + PRODUCT_LANES);
    assign(level.constant, productOf(g, k_));
    for (std::size_t i = 0; i < k_; ++i) {
      const Float value = productOf(g, i);
      assign(level.products[i], value);
      (i < t ? drift : sizes) += abs(value) * reach_[i];
      if (i == t && value <= 0) acceptable_ = false;
    }
    const Float size = sizeOf(g);
    const Float slip = (drift + unit_ * (sizes + size) * (2 * (k_ - t) + 8)) * WIDER;
    const Float inverse = t == k_ && size == 0 ? zero() : Float(1 / gso_.norms[t]);
    assign(level.inverseNorm, inverse);
    assignUp(level.slip, slip);
    assignUp(level.most, size);
    level.least = level.most;
    if (t < k_) useRows(level, g);
    tables_.levels.push_back(std::move(level));
    bounds_.push_back({size, slip, inverse});
    vectors_.push_back(g);
    if (t < k_ && slip * 1000 > size) acceptable_ = false;
    if (IS_DOUBLE && scaledBy(Float(1, work_), EXPONENT_LIMIT) < sizes) acceptable_ = false;
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

  // How far the squared length of a W may be from its value, as a part of it: with q_i = |p_i| / |g_i| it is
  // sum q_i^2 and the sum of q_i q_j (g_i g_j) / (|g_i| |g_j|), at most the largest sum of such a row.
  Float skewness() const {
    Float worst = zero();
    for (std::size_t i = 0; i <= k_; ++i) {
      Float sum = zero();
      for (std::size_t j = 0; j <= k_; ++j) {
        Integer product = 0;
        for (std::size_t c = 0; c < lattice_.coordinates(); ++c)
          mpz_addmul(product.get_mpz_t(), vectors_[i].entries[c].get_mpz_t(),
                     vectors_[j].entries[c].get_mpz_t());
        const Float g = scaledBy(Float(product, work_), -vectors_[i].shift - vectors_[j].shift);
        const Float scaled = g * sqrt(Float(bounds_[i].inverse * bounds_[j].inverse));
        sum += abs(scaled - (i == j && bounds_[i].inverse > 0 ? 1 : 0));
      }
      worst = std::max(worst, sum);
    }
    return worst * WIDER;
  }

  // Any candidate that is tested has sum p_i^2 / norm_i <= Q: its parent has kept the cap, and its own part
  // is bounded by the range of its level. The factors 1.1 cover errors of errors.
  void addMargin() {
    const Float n(lattice_.coordinates(), work_);
    const Float cap = n * (1 + ALLOWANCE) + ALLOWANCE;
    Float own = zero();
    Float slips = zero();
    Float sizes = zero();
    Float longest = zero();
    Float multipliers = zero();
    for (const Bounds& b : bounds_) {
      const Float part = (b.size + b.slip) * (b.size + b.slip) * b.inverse;
      own = std::max(own, part);
      slips += b.slip * b.slip * b.inverse;
      sizes += b.size * b.size * b.inverse;
      longest = std::max(longest, b.size);
      multipliers = std::max(multipliers, Float((b.size + b.slip) * b.inverse));
    }
    const Float q = (cap + own) * WIDER;
    const Float terms(2 * k_ + 8, work_);
    // Of W u less the value, and of a computed value, that is.
    const Float drift = 1.1 * (sqrt(Float(q * slips)) + unit_ * terms * q);
    const Float length = sqrt(Float(n * q * 1.1));
    const Float additions(k_ + 2 + sumDepth(tables_.levels[0].weights.size(), R{}), work_);
    const Float rounding = 1.1 * weightUnit_ * (4 * sqrt(Float(q * sizes)) + additions * length);
    // With the squared length at most (1 + skewness) times the value, a value above this bound exceeds
    // sqrt(N) times the length by more than the drift.
    const Float needed = n * (1 + skewness()) * (1 + 4 * terms * unit_) + 2 * drift;
    if (needed > cap || drift + rounding > 0.01 * (n + 1)) acceptable_ = false;
    if (IS_DOUBLE && scaledBy(Float(1, work_), WEIGHT_EXPONENT_LIMIT) < sizes + longest + multipliers)
      acceptable_ = false;
    assignUp(tables_.cap, cap);
    // What is too small for its type loses up to 2^-149: entries, times a multiplier below 2^100, and
    // multipliers, times an entry below 2^100.
    assignUp(tables_.margin, Float(2 * (drift + rounding) + scaledBy(n * terms, -40)));
  }

  struct Bounds {
    Float size;
    Float slip;
    Float inverse;
  };

  const BoxLattice& lattice_;
  const GramSchmidt& gso_;
  unsigned long bits_;
  unsigned long work_;
  std::size_t k_;
  // One rounding of R, and of the entries of cut vectors.
  Float unit_;
  Float weightUnit_;
  RowMultipliers rows_;
  Integer common_ = 1;
  IntegerMatrix scaled_;
  FloatVector reach_;
  std::vector<Bounds> bounds_;
  std::vector<Dyadic> vectors_;
  bool acceptable_ = true;
  CutTables<R> tables_;
};

// From far away one step towards the centre is as rough as it is long.
template <class R, class Form>
std::optional<CutTables<R>> tablesBy(Form form, BoxLattice& lattice, unsigned long bits, unsigned long work) {
  constexpr int ROUNDS = 3;
  std::optional<GramSchmidt> gso = form(lattice, work);
  for (int round = 0; gso && round < ROUNDS && centre(lattice, *gso); ++round) gso = form(lattice, work);
  if (!gso) return std::nullopt;
  return TableBuilder<R>(lattice, *gso, bits, work).result();
}

}  // namespace

template <class R>
std::optional<CutTables<R>> cutTablesOf(BoxLattice& lattice, unsigned long bits) {
  const unsigned long work = 2 * bits + 2 * static_cast<unsigned long>(lattice.rank()) + 64;
  mpf_set_default_prec(work);
  std::optional<CutTables<R>> tables;
  // What was formed roughly does for most bases: a vector near the right one is as good.
  if (bits == 53) tables = tablesBy<R>(roughGramSchmidtOf, lattice, bits, work);
  if (!tables) tables = tablesBy<R>(gramSchmidtOf, lattice, bits, work);
  mpf_set_default_prec(bits);
  return tables;
}

template std::optional<CutTables<double>> cutTablesOf(BoxLattice&, unsigned long);
template std::optional<CutTables<Float>> cutTablesOf(BoxLattice&, unsigned long);

}  // namespace latbox::complete
