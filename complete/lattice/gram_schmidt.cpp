#include "complete/lattice/gram_schmidt.h"

#include <cmath>
#include <stdexcept>
#include <utility>

namespace latbox::complete {
namespace {

// One number type in which the vectors are formed, and how it is rounded to.
struct Multiprecision {
  using Number = Float;
  unsigned long bits;
  Number of(const Integer& a, const Integer& b) const {
    Number value(a, bits);
    value /= Number(b, bits);
    return value;
  }
  Number of(long value) const { return Number(value, bits); }
  Float wide(const Number& value) const { return value; }
};

// The long double of the processor, some thousand times as fast.
struct Extended {
  using Number = long double;
  unsigned long bits;
  static Number of(const Integer& a, const Integer& b) {
    // Both as a fraction of 64 bits and an exponent.
    const auto [x, i] = split(a);
    const auto [y, j] = split(b);
    return std::ldexp(x / y, static_cast<int>(i - j));
  }
  static Number of(long value) { return static_cast<Number>(value); }
  // What double cannot hold GMP takes for an invalid operation, and the inverse of what vanishes there for a
  // division by 0.
  Float wide(Number value) const {
    const double high = static_cast<double>(value);
    if (!std::isfinite(high) || (high == 0 && value != 0)) throw std::range_error("too long for double");
    return Float(high, bits) + Float(static_cast<double>(value - static_cast<Number>(high)), bits);
  }

 private:
  static std::pair<Number, long> split(const Integer& a) {
    constexpr std::size_t BITS = 64;
    const std::size_t size = mpz_sizeinbase(a.get_mpz_t(), 2);
    const long shift = size > BITS ? static_cast<long>(size - BITS) : 0;
    Integer top;
    mpz_tdiv_q_2exp(top.get_mpz_t(), a.get_mpz_t(), static_cast<unsigned long>(shift));
    const auto magnitude = static_cast<Number>(mpz_get_ui(top.get_mpz_t()));
    return {sgn(a) < 0 ? -magnitude : magnitude, shift};
  }
};

template <class Kind>
class Formation {
 public:
  using Number = typename Kind::Number;
  using Vector = std::vector<Number>;

  Formation(const BoxLattice& lattice, Kind kind) : lattice_(lattice), kind_(kind), k_(lattice.rank()) {}

  GramSchmidt result() {
    orthogonalise();
    formDuals();
    GramSchmidt gso;
    gso.norms = wide(norms_);
    for (const Vector& vector : vectors_) gso.vectors.push_back(wide(vector));
    for (const Vector& part : mu_) gso.mu.push_back(wide(part));
    for (const Vector& vector : dual_) gso.dual.push_back(wide(vector));
    return gso;
  }

 private:
  // A row in the coordinates of the cube.
  Vector scaled(const IntegerVector& row, bool isPoint) const {
    Vector u;
    for (std::size_t j = 0; j < row.size(); ++j) {
      Integer twice = 2 * row[j];
      if (isPoint) twice -= lattice_.low[j] + lattice_.high[j];
      u.push_back(kind_.of(twice, Integer(lattice_.high[j] - lattice_.low[j])));
    }
    return u;
  }

  // Twice over: what rounding left of the parts goes the second time.
  void orthogonalise() {
    for (std::size_t i = 0; i <= k_; ++i) {
      Vector vector = scaled(i < k_ ? lattice_.basis[i] : lattice_.point, i == k_);
      mu_.emplace_back(i, kind_.of(0));
      for (int round = 0; round < 2; ++round)
        for (std::size_t j = 0; j < i; ++j) {
          const Number part = product(vector, vectors_[j]) / norms_[j];
          mu_[i][j] += part;
          subtract(vector, part, vectors_[j]);
        }
      norms_.push_back(product(vector, vector));
      if (i < k_ && norms_[i] <= 0) norms_[i] = 1;
      vectors_.push_back(std::move(vector));
    }
  }

  void formDuals() {
    dual_.resize(k_);
    for (std::size_t i = k_; i-- > 0;) {
      dual_[i] = Vector(lattice_.coordinates(), kind_.of(0));
      subtract(dual_[i], Number(-1 / norms_[i]), vectors_[i]);
      for (std::size_t t = i + 1; t < k_; ++t) subtract(dual_[i], mu_[t][i], dual_[t]);
    }
  }

  Number product(const Vector& a, const Vector& b) const {
    Number sum = kind_.of(0);
    for (std::size_t j = 0; j < a.size(); ++j) sum += a[j] * b[j];
    return sum;
  }

  static void subtract(Vector& a, const Number& factor, const Vector& b) {
    for (std::size_t j = 0; j < a.size(); ++j) a[j] -= factor * b[j];
  }

  FloatVector wide(const Vector& vector) const {
    FloatVector result;
    for (const Number& value : vector) result.push_back(kind_.wide(value));
    return result;
  }

  const BoxLattice& lattice_;
  Kind kind_;
  std::size_t k_;
  std::vector<Vector> vectors_;
  std::vector<Vector> mu_;
  std::vector<Vector> dual_;
  Vector norms_;
};

}  // namespace

GramSchmidt gramSchmidtOf(const BoxLattice& lattice, unsigned long bits) {
  return Formation(lattice, Multiprecision{bits}).result();
}

std::optional<GramSchmidt> roughGramSchmidtOf(const BoxLattice& lattice, unsigned long bits) {
  try {
    return Formation(lattice, Extended{bits}).result();
  } catch (const std::range_error&) {
    return std::nullopt;
  }
}

bool centre(BoxLattice& lattice, const GramSchmidt& gso) {
  // Half a step to either side is as near, and rounding must not send the point to and fro between them.
  constexpr double ENOUGH = 0.5 + 1e-6;
  FloatVector parts = gso.mu.back();
  bool moved = false;
  for (std::size_t t = lattice.rank(); t-- > 0;) {
    if (abs(parts[t]) <= ENOUGH) continue;
    const Float rounded = floor(Float(parts[t] + 0.5));
    const Integer steps(rounded);
    moved = true;
    for (std::size_t j = 0; j < lattice.coordinates(); ++j) lattice.point[j] -= steps * lattice.basis[t][j];
    for (std::size_t j = 0; j < t; ++j) parts[j] -= rounded * gso.mu[t][j];
  }
  return moved;
}

}  // namespace latbox::complete
