// Removal of dependent rows without losing their integer span.
//
// Which row depends on its predecessors, and how, is found modulo a prime of 61 bits: a floating
// factorisation of integer rows carries rounding of 10^-10 to 10^-8 in its diagonal and errs in both
// directions. A row that is independent modulo the prime is independent. A dependency is confirmed by exact
// arithmetic before anything is removed: by the integer combination itself, or by the row of zeros that
// Euclid's algorithm leaves.
#include "model/dependent_rows.h"

#include <cstdint>
#include <vector>

#include "lib/exceptions.h"
#include "lib/failure.h"
#include "lib/modular.h"
#include "numbers/residues.h"
#include "numbers/tolerance.h"

namespace latbox {

namespace {

using Residues = std::vector<std::uint64_t>;  // numbered from 1

template <class T>
bool rowVanishes(const Vector<T>& row) {
  for (long j = 1; j <= row.MN; ++j)
    if (!vanishes(row[j])) return false;
  return true;
}

void subtractRow(Residues& from, std::uint64_t q, const Residues& row, std::uint64_t p) {
  subtractRowModulo(from.data(), q, row.data(), 1, static_cast<long>(row.size()) - 1, p);
}

// Independent rows, taken in one by one, in echelon form modulo p, each with the combination of the given
// rows that it is. So a row that reduces to zero shows its coordinates at no further cost.
class Echelon {
 public:
  explicit Echelon(std::uint64_t p) : p_(p) {}

  long size() const { return static_cast<long>(rows_.size()); }
  void cutTo(long size) {
    const auto kept = static_cast<std::size_t>(size);
    if (kept < rows_.size()) rows_.resize(kept);
  }

  // True if `row` is independent of the rows taken in, and then it is one of them. Otherwise
  // coordinates[1..size()] are those of the row.
  bool take(Residues row, Residues& coordinates) {
    Residues combination(rows_.size() + 2, 0);
    for (const Row& reduced : rows_) {
      const std::uint64_t q = row[reduced.pivot];
      if (q == 0) continue;
      subtractRow(row, q, reduced.entries, p_);
      subtractRow(combination, q, reduced.combination, p_);
    }
    const std::size_t pivot = firstEntry(row);
    if (pivot == 0) {
      negate(combination);
      coordinates = std::move(combination);
      return false;
    }
    combination.back() = 1;
    append(std::move(row), std::move(combination), pivot);
    return true;
  }

 private:
  struct Row {
    Residues entries;      // entries[pivot] is 1
    Residues combination;  // of the given rows
    std::size_t pivot;
  };

  static std::size_t firstEntry(const Residues& row) {
    for (std::size_t j = 1; j < row.size(); ++j)
      if (row[j] != 0) return j;
    return 0;
  }
  void negate(Residues& row) const {
    for (std::uint64_t& entry : row) entry = subtractModulo(0, entry, p_);
  }
  void append(Residues entries, Residues combination, std::size_t pivot) {
    const std::uint64_t inverse = inverseModulo(entries[pivot], p_);
    for (std::uint64_t& entry : entries) entry = multiplyModulo(entry, inverse, p_);
    for (std::uint64_t& entry : combination) entry = multiplyModulo(entry, inverse, p_);
    rows_.push_back({std::move(entries), std::move(combination), pivot});
  }

  std::uint64_t p_;
  std::vector<Row> rows_;
};

// The integer of smallest absolute value with this residue.
template <class T>
T lifted(std::uint64_t residue, std::uint64_t p) {
  const bool negative = residue > p / 2;
  const auto size = static_cast<long>(negative ? p - residue : residue);
  return T(negative ? -size : size);
}

// Sums beyond this have left the integers that a dbl_t holds exactly.
bool exactSum(dbl_t x) {
  return abs(x) <= 1e18L;
}
bool exactSum(const QQ&) {
  return true;
}

// Whether row p of M is the integer combination of the rows before it that the residues name: decided in T.
template <class T>
bool isIntegerCombination(const Matrix<T>& M, long p, const Residues& coordinates, std::uint64_t prime) {
  Vector<T> rest = M[p];
  for (long i = 1; i < p; ++i) {
    const std::uint64_t residue = coordinates[static_cast<std::size_t>(i)];
    if (residue == 0) continue;
    const T factor = lifted<T>(residue, prime);
    for (long j = 1; j <= M.N; ++j) {
      const T product = factor * M[i][j];
      rest[j] -= product;
      if (!exactSum(product) || !exactSum(rest[j])) return false;
    }
  }
  return rowVanishes(rest);
}

// The rows that take part in a rational dependency, the dependent one last.
std::vector<long> takingPart(const Residues& coordinates, long p) {
  std::vector<long> indices;
  for (std::size_t i = 1; i < coordinates.size(); ++i) {
    if (coordinates[i] == 0) continue;
    if (static_cast<long>(i) >= p) fail("Coordinate inconsistency - index is too big!");
    indices.push_back(static_cast<long>(i));
  }
  indices.push_back(p);
  return indices;
}

// Among the rows 1..active of W the one with the smallest entry in column j, the last such; 0 if all vanish.
template <class T>
long smallestEntry(const Matrix<T>& W, long active, long j) {
  long pivot = 0;
  for (long i = active; i >= 1; --i)
    if (!vanishes(W[i][j]) && (pivot == 0 || abs(W[i][j]) < abs(W[pivot][j]))) pivot = i;
  return pivot;
}

template <class T>
void reduceRow(Vector<T>& row, const Vector<T>& pivotRow, long j) {
  const T q = floor(T(row[j] / pivotRow[j]));
  checkPrecision(q, "factor overflow");
  for (long k = 1; k <= row.MN; ++k) {
    row[k] -= q * pivotRow[k];
    checkPrecision(row[k], "row overflow");
  }
}

// One round of Euclid's algorithm on column j; true while another row than the pivot has an entry there.
template <class T>
bool reduceOthers(Matrix<T>& W, long active, long pivot, long j) {
  bool entries = false;
  for (long i = 1; i <= active; ++i) {
    if (i == pivot || vanishes(W[i][j])) continue;
    reduceRow(W[i], W[pivot], j);
    entries = entries || !vanishes(W[i][j]);
  }
  return entries;
}

// The row that keeps its entry in column j retires to the end of the active rows.
template <class T>
void reduceColumn(Matrix<T>& W, long& active, long j) {
  long pivot = smallestEntry(W, active, j);
  if (pivot == 0) return;
  while (reduceOthers(W, active, pivot, j)) pivot = smallestEntry(W, active, j);
  W.swapRows(pivot, active);
  --active;
}

template <class T>
long zeroRow(const Matrix<T>& W) {
  for (long i = 1; i <= W.M; ++i)
    if (rowVanishes(W[i])) return i;
  return 0;
}

// The row of W that the elimination has turned to zero, or 0 if none did.
template <class T>
long eliminate(Matrix<T>& W) {
  long active = W.M;
  for (long j = W.N; j >= 1; --j) {
    const long zero = zeroRow(W);
    if (zero != 0) return zero;
    reduceColumn(W, active, j);
  }
  return zeroRow(W);
}

// Row i goes; the last row takes its place.
template <class T>
void dropRow(Matrix<T>& M, long i) {
  M.swapRows(i, M.M);
  M.resize(M.M - 1, M.N);
}

// Rewrites the rows that take part such that one of them vanishes, and drops it. Returns false, with M as it
// was, if none vanishes: then the dependency held modulo the prime alone.
template <class T>
bool dropRational(Matrix<T>& M, const std::vector<long>& indices) {
  Matrix<T> W(static_cast<long>(indices.size()), M.N);
  for (long i = 1; i <= W.M; ++i) W[i] = M[indices[static_cast<std::size_t>(i - 1)]];
  const long zero = eliminate(W);
  if (zero == 0) return false;
  for (long i = 1; i <= W.M; ++i)
    if (i != zero) M[indices[static_cast<std::size_t>(i - 1)]] = W[i];
  dropRow(M, indices[static_cast<std::size_t>(zero - 1)]);
  return true;
}

enum class Outcome { done, noInverse, refuted };

// Passes until all rows are independent, with p as the first row not yet taken in.
template <class T>
Outcome eliminateModulo(Matrix<T>& M, std::uint64_t prime) {
  Echelon echelon(prime);
  Residues row, coordinates;
  while (echelon.size() < M.M) {
    const long p = echelon.size() + 1;
    if (!residuesOf(M[p], prime, row, Fractions::allowed)) return Outcome::noInverse;
    if (echelon.take(row, coordinates)) continue;
    if (isIntegerCombination(M, p, coordinates, prime)) {
      dropRow(M, p);
      continue;
    }
    const std::vector<long> indices = takingPart(coordinates, p);
    if (!dropRational(M, indices)) return Outcome::refuted;
    echelon.cutTo(indices.front() - 1);
  }
  return Outcome::done;
}

}  // namespace

// A prime that divides a denominator or a minor of the matrix misleads; another one then does the rest.
template <class T>
void eliminateDependentRows(Matrix<T>& M) {
  bool computed = false;
  for (const std::uint64_t prime : MODULAR_PRIMES) {
    const Outcome outcome = eliminateModulo(M, prime);
    if (outcome == Outcome::done) return;
    computed = computed || outcome == Outcome::refuted;
  }
  fail(computed ? "Dependent row could not be eliminated!"
                : "Coordinates of dependent row could not be computed!");
}

template void eliminateDependentRows(Matrix<dbl_t>& M);
template void eliminateDependentRows(Matrix<QQ>& M);

}  // namespace latbox
