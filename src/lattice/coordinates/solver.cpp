// Coordinates with respect to the rows of a matrix. Three ways of finding a candidate, from cheap to dear,
// and one exact confirmation: an integer combination that gives the vector back is the answer, whoever
// proposed it.
//
//  - Substitution (triangular.h), where the rows allow it.
//  - A long double LU factorisation (floating.h), rounded. It may fail to confirm; then
//  - residues (modular.h), which settle the vectors that are not in the lattice.
//  - Exact rational elimination, for what is left: combinations that exist but are not integral, or are huge.
#include "lattice/coordinates/solver.h"

#include "lattice/coordinates/combination.h"
#include "lattice/coordinates/floating.h"
#include "lattice/coordinates/modular.h"
#include "lattice/coordinates/triangular.h"
#include "numbers/elimination.h"
#include "numbers/number.h"

namespace latbox {

namespace {

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
    return sparse_.confirm(x, v);
  }

  Answer byFloating(const Vector<T>& v, Vector<T>& x) {
    if (floating_ == nullptr) floating_ = std::make_unique<FloatingForm>(dense_);
    if (!floating_->exists() || !floating_->solve(v, x)) return Answer::unsure;
    return sparse_.confirm(x, v) == Answer::yes ? Answer::yes : Answer::unsure;
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
    if (SparseRows<QQ>(rows).confirm(exact, exactVector(v)) != Answer::yes) return false;
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
