// Coordinates with respect to the rows of a matrix. Three ways of finding a candidate, from cheap to dear,
// and one exact confirmation: an integer combination that gives the vector back is the answer, whoever
// proposed it.
//
//  - Substitution, when the rows are triangular up to the choice of columns, which bases as generated are.
//  - A long double LU factorisation, rounded. It may fail to confirm; then
//  - residues modulo primes near 2^61. No solution there proves that there is none at all, which settles the
//    vectors that are not in the lattice. Coordinates up to the product of the primes are put together.
//  - Exact rational elimination, for what is left: combinations that exist but are not integral, or are huge.
#include "lattice/coord_solver.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <vector>

#include "lib/modular.h"
#include "numbers/elimination.h"
#include "numbers/number.h"
#include "numbers/residues.h"

namespace latbox {

namespace {

using Index = std::size_t;
Index at(long i) {
  return static_cast<Index>(i);
}

// Sums of products stay exact integers of a dbl_t below this.
constexpr dbl_t EXACT_SUM = 9.2e18L;

enum class Answer { yes, no, unsure };

// Rows without their zeros, to confirm a combination at the price of the entries that are there.
template <class T>
struct SparseRows {
  struct Entry {
    long column;
    T value;
  };
  std::vector<std::vector<Entry>> row;
  long columns = 0;

  explicit SparseRows(const Matrix<T>& rows) : row(at(rows.M) + 1), columns(rows.N) {
    for (long i = 1; i <= rows.M; ++i)
      for (long j = 1; j <= rows.N; ++j)
        if (!isExactZero(rows.rows[i].data[j])) row[at(i)].push_back({j, rows.rows[i].data[j]});
  }
  long count() const { return static_cast<long>(row.size()) - 1; }
};

bool vanishes(const dbl_t& rest) {
  return std::fabs(rest) <= EPS;
}
bool vanishes(const QQ& rest) {
  return rest.isExactZero() || isZero(rest);
}

// Whether x * rows gives v. In dbl_t sums that may have been rounded decide nothing.
Answer confirms(const SparseRows<dbl_t>& rows, const Vector<dbl_t>& x, const Vector<dbl_t>& v) {
  thread_local Vector<dbl_t> rest;
  rest = v;
  dbl_t largest = 0;
  for (long i = 1; i <= rows.count(); ++i) {
    if (x.data[i] == 0) continue;
    for (const auto& e : rows.row[at(i)]) {
      const dbl_t product = x.data[i] * e.value;
      largest = std::max(largest, std::fabs(product));
      rest.data[e.column] -= product;
    }
  }
  if (!(largest * static_cast<dbl_t>(rows.count() + 1) < EXACT_SUM)) return Answer::unsure;
  for (long j = 1; j <= rest.MN; ++j)
    if (!vanishes(rest.data[j])) return Answer::no;
  return Answer::yes;
}

Answer confirms(const SparseRows<QQ>& rows, const Vector<QQ>& x, const Vector<QQ>& v) {
  thread_local Vector<QQ> rest;
  rest = v;
  for (long i = 1; i <= rows.count(); ++i) {
    if (x.data[i].isExactZero()) continue;
    for (const auto& e : rows.row[at(i)]) QQ::submul(rest.data[e.column], x.data[i], e.value);
  }
  for (long j = 1; j <= rest.MN; ++j)
    if (!vanishes(rest.data[j])) return Answer::no;
  return Answer::yes;
}

// Substitution: in each step one column in which of the rows that are left only one has an entry.
template <class T>
class TriangularForm {
 public:
  explicit TriangularForm(const Matrix<T>& rows) { peel(rows); }
  bool exists() const { return exists_; }

  void solve(const Vector<T>& v, Vector<T>& x) const {
    for (const Step& step : steps_) {
      T rest = v.data[step.column];
      for (const auto& earlier : step.earlier) rest -= x.data[earlier.row] * earlier.value;
      rest /= step.pivot;
      x.data[step.row] = roundNearest(rest);
    }
  }

 private:
  struct Earlier {
    long row;
    T value;
  };
  struct Step {
    long row;
    long column;
    T pivot;
    std::vector<Earlier> earlier;
  };
  std::vector<Step> steps_;
  bool exists_ = false;

  void peel(const Matrix<T>& rows) {
    std::vector<std::vector<long>> columnRows(at(rows.N) + 1), rowColumns(at(rows.M) + 1);
    std::vector<long> active(at(rows.N) + 1, 0), ready;
    for (long j = 1; j <= rows.N; ++j) {
      for (long i = 1; i <= rows.M; ++i) {
        if (isExactZero(rows.rows[i].data[j])) continue;
        columnRows[at(j)].push_back(i);
        rowColumns[at(i)].push_back(j);
      }
      active[at(j)] = static_cast<long>(columnRows[at(j)].size());
      if (active[at(j)] == 1) ready.push_back(j);
    }
    std::vector<bool> done(at(rows.M) + 1, false);
    while (!ready.empty()) {
      const long column = ready.back();
      ready.pop_back();
      if (active[at(column)] != 1) continue;
      const long row = takeStep(rows, column, columnRows[at(column)], done);
      for (const long j : rowColumns[at(row)])
        if (--active[at(j)] == 1) ready.push_back(j);
    }
    exists_ = static_cast<long>(steps_.size()) == rows.M;
  }

  // The row that is left in `column` is solved by it, from those that came before.
  long takeStep(const Matrix<T>& rows, long column, const std::vector<long>& inColumn,
                std::vector<bool>& done) {
    Step step{0, column, T(), {}};
    for (const long i : inColumn) {
      if (done[at(i)])
        step.earlier.push_back({i, rows.rows[i].data[column]});
      else
        step.row = i;
    }
    step.pivot = rows.rows[step.row].data[column];
    done[at(step.row)] = true;
    steps_.push_back(std::move(step));
    return steps_.back().row;
  }
};

// rows = L U on as many columns as there are rows, in long double with column pivoting.
class FloatingForm {
 public:
  template <class T>
  explicit FloatingForm(const Matrix<T>& rows) : n_(rows.M) {
    std::vector<dbl_t> work(at(n_ * rows.N));
    for (long i = 0; i < n_; ++i)
      for (long j = 0; j < rows.N; ++j) work[at(i * rows.N + j)] = toDouble(rows.rows[i + 1].data[j + 1]);
    exists_ = eliminate(work, rows.N);
    work_.resize(at(n_));
  }
  bool exists() const { return exists_; }

  // False when a coordinate is too large to be rounded to an integer.
  template <class T>
  bool solve(const Vector<T>& v, Vector<T>& x) {
    for (long i = 0; i < n_; ++i) {
      dbl_t y = toDouble(v.data[pivot_[at(i)] + 1]);
      for (long k = 0; k < i; ++k) y -= work_[at(k)] * upper_[at(i * n_ + k)];
      work_[at(i)] = y / upper_[at(i * n_ + i)];
    }
    for (long i = n_ - 1; i >= 0; --i) {
      dbl_t y = work_[at(i)];
      for (long r = i + 1; r < n_; ++r) y -= work_[at(r)] * lower_[at(i * n_ + r)];
      work_[at(i)] = y;
    }
    for (long i = 0; i < n_; ++i) {
      const dbl_t rounded = std::round(work_[at(i)]);
      if (!(std::fabs(rounded) < EXACT_SUM)) return false;
      x.data[i + 1] = T(static_cast<long long>(rounded));
    }
    return true;
  }

 private:
  long n_;
  bool exists_ = false;
  std::vector<long> pivot_;   // column of each row, from 0
  std::vector<dbl_t> upper_;  // upper_[i * n + k] = U[k][pivot of i]
  std::vector<dbl_t> lower_;  // lower_[i * n + r] = L[r][i]
  std::vector<dbl_t> work_;

  bool eliminate(std::vector<dbl_t>& a, long columns) {
    pivot_.assign(at(n_), 0);
    upper_.assign(at(n_ * n_), 0);
    lower_.assign(at(n_ * n_), 0);
    for (long i = 0; i < n_; ++i) {
      const dbl_t* const row = a.data() + i * columns;
      long best = 0;
      for (long j = 1; j < columns; ++j)
        if (std::fabs(row[j]) > std::fabs(row[best])) best = j;
      if (columns == 0 || !(std::fabs(row[best]) > EPS)) return false;
      pivot_[at(i)] = best;
      for (long k = 0; k <= i; ++k) upper_[at(i * n_ + k)] = a[at(k * columns + best)];
      for (long r = i + 1; r < n_; ++r) {
        dbl_t* const below = a.data() + r * columns;
        const dbl_t factor = below[best] / row[best];
        lower_[at(i * n_ + r)] = factor;
        if (factor == 0) continue;
        for (long j = 0; j < columns; ++j) below[j] -= factor * row[j];
        below[best] = 0;
      }
    }
    return true;
  }
};

QQ exactInteger(std::uint64_t value) {
  return QQ(static_cast<long long>(value));
}

// The rows modulo the primes, factorised. Answers `no` when a modulus proves that there are no coordinates.
class ModularForm {
 public:
  template <class T>
  explicit ModularForm(const Matrix<T>& rows) {
    ModularMatrix residues;
    for (Index k = 0; k < MODULAR_PRIMES.size(); ++k) {
      exists_ =
          residuesOf(rows, MODULAR_PRIMES[k], residues) && factor_[k].factorise(residues, MODULAR_PRIMES[k]);
      if (!exists_) return;
    }
  }
  bool exists() const { return exists_; }

  template <class T>
  Answer solve(const Vector<T>& v, Vector<QQ>& x) {
    for (Index k = 0; k < MODULAR_PRIMES.size(); ++k) {
      if (!residuesOf(v, MODULAR_PRIMES[k], vector_)) return Answer::unsure;
      if (!factor_[k].solve(vector_, solution_[k])) return Answer::no;
    }
    for (long i = 1; i <= x.MN; ++i) x.data[i] = lift(at(i));
    return Answer::yes;
  }

 private:
  bool exists_ = false;
  std::array<ModularFactor, MODULAR_PRIMES.size()> factor_;
  std::array<std::vector<std::uint64_t>, MODULAR_PRIMES.size()> solution_;
  std::vector<std::uint64_t> vector_;

  // The integer of least magnitude with the residues of coordinate i, digit by digit in the mixed base of the
  // primes (H. L. Garner, "The residue number system", 1959).
  QQ lift(Index i) const {
    std::array<std::uint64_t, MODULAR_PRIMES.size()> digit{};
    for (Index k = 0; k < digit.size(); ++k) {
      const std::uint64_t p = MODULAR_PRIMES[k];
      std::uint64_t rest = solution_[k][i];
      for (Index j = 0; j < k; ++j) {
        rest = subtractModulo(rest, digit[j] % p, p);
        rest = multiplyModulo(rest, inverseModulo(MODULAR_PRIMES[j] % p, p), p);
      }
      digit[k] = rest;
    }
    QQ value, product(1);
    for (Index k = 0; k < digit.size(); ++k) {
      QQ::addmul(value, product, exactInteger(digit[k]));
      product *= exactInteger(MODULAR_PRIMES[k]);
    }
    if (value + value > product) value -= product;
    return value;
  }
};

template <class T>
Vector<QQ> exactVector(const Vector<T>& v) {
  Vector<QQ> result(v.MN);
  for (long j = 1; j <= v.MN; ++j) result.data[j] = QQ(v.data[j]);
  return result;
}

// A coordinate in either type. One that a dbl_t can't hold is a coordinate all the same: to answer that there
// is none would lose what has it.
void takeWhole(const QQ& value, QQ& x) {
  x = value;
}
void takeWhole(const QQ& value, dbl_t& x) {
  if (!convertStrict(value, x)) throwPrecision("transformation coord error");
}

}  // namespace

// One matrix and the forms of it, each made when it is first needed.
template <class T>
class RowFactor {
 public:
  explicit RowFactor(const Matrix<T>& rows) : dense_(rows), sparse_(rows), triangular_(rows) {}

  // `v` and `x` are two objects.
  bool solve(const Vector<T>& v, Vector<T>& x) {
    x.resizeZero(dense_.M);
    if (v.MN != dense_.N || !isFinite(v)) return false;
    const Answer quick = triangular_.exists() ? bySubstitution(v, x) : byFloating(v, x);
    if (quick != Answer::unsure) return quick == Answer::yes;
    return byResidues(v, x);
  }

 private:
  Matrix<T> dense_;
  SparseRows<T> sparse_;
  TriangularForm<T> triangular_;
  std::unique_ptr<FloatingForm> floating_;
  std::unique_ptr<ModularForm> modular_;

  // Each coordinate follows from those before it, so a combination that doesn't confirm proves that none
  // exists.
  Answer bySubstitution(const Vector<T>& v, Vector<T>& x) const {
    triangular_.solve(v, x);
    return confirms(sparse_, x, v);
  }

  Answer byFloating(const Vector<T>& v, Vector<T>& x) {
    if (floating_ == nullptr) floating_ = std::make_unique<FloatingForm>(dense_);
    if (!floating_->exists() || !floating_->solve(v, x)) return Answer::unsure;
    return confirms(sparse_, x, v) == Answer::yes ? Answer::yes : Answer::unsure;
  }

  bool byResidues(const Vector<T>& v, Vector<T>& x) {
    if (modular_ == nullptr) modular_ = std::make_unique<ModularForm>(dense_);
    Vector<QQ> lifted(dense_.M);
    const Answer residues = modular_->exists() ? modular_->solve(v, lifted) : Answer::unsure;
    if (residues == Answer::no) return false;
    if (residues == Answer::yes && takeIntegers(lifted, v, x)) return true;
    return byElimination(v, x);
  }

  bool byElimination(const Vector<T>& v, Vector<T>& x) const {
    // Fractions in dbl_t are roundings of what they stand for: exact arithmetic on them proves nothing, and
    // the floating factorisation has had its say.
    if (!isExact(dense_) || !isExact(v)) return false;
    Matrix<QQ> transposed(dense_.N, dense_.M);
    for (long i = 1; i <= dense_.M; ++i)
      for (long j = 1; j <= dense_.N; ++j) transposed[j][i] = QQ(dense_[i][j]);
    Vector<QQ> solution;
    if (!gauss(transposed, exactVector(v), solution, true)) return false;
    return takeIntegers(solution, v, x);
  }

  static bool isFinite(const Vector<T>& v) {
    for (long j = 1; j <= v.MN; ++j)
      if (isInfinite(v.data[j])) return false;
    return true;
  }
  static bool isExact(const Vector<QQ>&) { return true; }
  static bool isExact(const Vector<dbl_t>& v) {
    for (long j = 1; j <= v.MN; ++j)
      if (!isInteger(v.data[j])) return false;
    return true;
  }
  static bool isExact(const Matrix<T>& rows) {
    for (long i = 1; i <= rows.M; ++i)
      if (!isExact(rows.rows[i])) return false;
    return true;
  }

  // Confirmed in exact arithmetic, since sums of a dbl_t may not be exact here.
  bool takeIntegers(const Vector<QQ>& exact, const Vector<T>& v, Vector<T>& x) const {
    Matrix<QQ> rows;
    rows.assignConverted(dense_, [](const T& value) { return QQ(value); });
    if (confirms(SparseRows<QQ>(rows), exact, exactVector(v)) != Answer::yes) return false;
    for (long i = 1; i <= exact.MN; ++i)
      if (!exact.data[i].isWhole()) return false;
    for (long i = 1; i <= exact.MN; ++i) takeWhole(exact.data[i], x.data[i]);
    return true;
  }
};

template <class T>
CoordSolver<T>::CoordSolver() = default;
template <class T>
CoordSolver<T>::CoordSolver(const CoordSolver&) {}
template <class T>
CoordSolver<T>& CoordSolver<T>::operator=(const CoordSolver& other) {
  if (this == &other) return *this;
  dropCurrent();
  dropSaved();
  return *this;
}
template <class T>
CoordSolver<T>::~CoordSolver() = default;

template <class T>
bool CoordSolver<T>::coordinates(Which which, const Matrix<T>& rows, const Vector<T>& v, Vector<T>& result) {
  std::shared_ptr<RowFactor<T>>& factor = which == Which::saved ? saved_ : current_;
  if (factor == nullptr) factor = std::make_shared<RowFactor<T>>(rows);
  if (&v != &result) return factor->solve(v, result);
  const Vector<T> copy(v);
  return factor->solve(copy, result);
}

template <class T>
void CoordSolver<T>::dropSaved() {
  saved_.reset();
}

template <class T>
void CoordSolver<T>::currentBecomesSaved() {
  saved_ = current_;
}

template <class T>
void CoordSolver<T>::savedBecomesCurrent() {
  current_ = saved_;
}

template class CoordSolver<dbl_t>;
template class CoordSolver<QQ>;

}  // namespace latbox
