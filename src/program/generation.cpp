// From the prepared program to the lattice. The embedding is centred: each constraint l <= a x <= r becomes
// the coordinate c (2 a x - (l + r)), which for a feasible x lies between -R and R.
#include <vector>

#include "lattice/lattice.h"
#include "numbers/number.h"
#include "program/file_items.h"

namespace latbox {
namespace {

// Equations are coordinates 1 to e of the equation lattice only; feasible means zero there.
template <class T, class F>
void embedEquations(Lattice<T, F>& l) {
  for (long i = 1; i <= l.Ag.M; ++i) {
    l.c[i] = l.lbnd[i] = l.ubnd[i] = T(0);
    l.B_save[1][i] = -l.bg[i];
    for (long j = 1; j <= l.n(); ++j) l.B_save[j + 1][i] = l.Ag[i][j];
  }
}

// The combined target bounds nothing: both check bounds are 0, and its length keeps it near the centre.
template <class T, class F>
void embedTarget(Lattice<T, F>& l) {
  const T width = l.rtu() - l.ltu();
  l.lbnd[1] = l.ubnd[1] = T(0);
  l.c[1] = isZero(width) ? l.R : T(l.R / width);
  l.B_save[1][1] = -(l.ltu() + l.rtu()) * l.c[1];
  for (long j = 1; j <= l.n(); ++j) l.B_save[j + 1][1] = T(2) * l.c[1] * l.atu[j];
}

template <class T, class F>
void embedInequation(Lattice<T, F>& l, long i, long k) {
  const T width = l.ru[i] - l.lu[i];
  if (isZero(width)) fail("ineq bounds error2");
  l.lbnd[k] = -l.R;
  l.ubnd[k] = l.R;
  l.c[k] = l.R / width;
  l.B_save[1][k] = -(l.lu[i] + l.ru[i]) * l.c[k];
  for (long j = 1; j <= l.n(); ++j) l.B_save[j + 1][k] = T(2) * l.c[k] * l.Au[i][j];
}

template <class T, class F>
void embedVariable(Lattice<T, F>& l, long i, long k) {
  const FreedomDegree freedom = l.fx[i];
  l.lbnd[k] = freedom == FreedomDegree::free ? T(-infinity<T>()) : T(-l.R);
  if (i > l.n() - l.deviationCount) {
    l.ubnd[k] = infinity<T>();
    l.c[k] = l.R;
  } else if (freedom == FreedomDegree::noUpper || freedom == FreedomDegree::free) {
    l.ubnd[k] = infinity<T>();
    l.c[k] = T(1);
  } else {
    // A rule of this design: the translated upper bound against the untranslated lower one.
    const T width = l.rx[i] - l.lx[i];
    if (isZero(width)) fail("sol bounds error");
    l.ubnd[k] = l.R;
    l.c[k] = l.R / width;
  }
  l.B_save[1][k] = -l.R;
  l.B_save[i + 1][k] = T(2) * l.c[k];
}

template <class T, class F>
void embedInhomogeneous(Lattice<T, F>& l) {
  l.lbnd[l.dim] = l.ubnd[l.dim] = l.inhomBase;
  l.c[l.dim] = T(1);
  l.B_save[1][l.dim] = l.inhomBase;
  l.inhomScaled = l.inhomBase;
}

// Beyond its limit standard precision would carry a wrong basis without a word; and its negative zeros would
// show in the file.
template <class T>
void finishBasis(Matrix<T>& M) {
  for (long i = 1; i <= M.M; ++i) {
    for (long j = 1; j <= M.N; ++j) {
      checkPrecision(M[i][j], "B_save overflow");
      if (isExactZero(M[i][j])) M[i][j] = T(0);
    }
  }
}

// One row of T B. The terms are bounded as well as the sum: what cancels must have been exact before.
template <class T>
void combineRows(const Vector<T>& coefficients, const Matrix<T>& B, Vector<T>& row) {
  constexpr const char* OVERFLOW_TEXT = "Overflow when applying transformation";
  row.resizeZero(B.N);
  for (long k = 1; k <= B.M; ++k) {
    const T& factor = coefficients[k];
    if (isExactZero(factor)) continue;
    for (long j = 1; j <= B.N; ++j) row.data[j] += factor * B[k].data[j];
    // Sums up to 10^18 are exact in standard precision; precisionCheck throws beyond that.
    for (long j = 1; j <= B.N; ++j) precisionCheck(row.data[j]);
  }
  for (long j = 1; j <= B.N; ++j) checkPrecision(row[j], OVERFLOW_TEXT);
}

template <class T>
Matrix<T> transformed(const Matrix<T>& transformation, const Matrix<T>& B) {
  Matrix<T> result(transformation.M, B.N);
  for (long i = 1; i <= transformation.M; ++i) combineRows(transformation[i], B, result[i]);
  return result;
}

// Puts the generated basis through the transformations of the kernel reduction and drops the rows that carry
// equation values, the last e.
template <class T, class F>
void enterKernel(Lattice<T, F>& l, const SerializableArray<Matrix<T>>& transformations) {
  for (long k = 1; k <= transformations.MN; ++k) l.B = transformed(transformations[k], l.B);
  const long kept = l.rank - l.Ag.M;
  l.B.resize(kept, l.dim);
  l.B_save = l.unscaled(l.B);
  l.resizeWork(kept);
  l.clearStatus();
  l.coordSolver.dropCurrent();
  l.coordSolver.dropSaved();
}

// Vectors that outlive a generation, in the coordinates of the program.
template <class T, class F>
struct Remembered {
  ConversionArray<Star<T>> stars;
  std::vector<Star<T>> vectors;
  SortedSet<HeuristicVector<T, F>> homogeneous;
  SortedSet<HeuristicVector<T, F>> inhomogeneous;

  void take(const Lattice<T, F>& l, const TimeVector<T>& v) {
    Star<T> star;
    if (v.MN != l.dim || l.lat2opt(v, star, false) != 1) return;
    star.secondsUntilDiscovered = v.secondsUntilDiscovered;
    vectors.push_back(star);
  }
};

template <class T, class F>
SortedSet<HeuristicVector<T, F>> inProgramCoordinates(const Lattice<T, F>& l,
                                                      const SortedSet<HeuristicVector<T, F>>& set) {
  SortedSet<HeuristicVector<T, F>> result;
  for (auto* node = set.head; node != nullptr; node = node->next) {
    if (node->value.MN != l.dim) continue;
    HeuristicVector<T, F> h = node->value;
    Vector<T> x;
    if (l.lat2opt(node->value, x, false) != 1) continue;
    h = x;
    result.append(h);
  }
  return result;
}

// Empties the lattice's memory. Vectors are only carried from the equation lattice: one of an older lattice
// does not fit the program as it has been prepared since.
template <class T, class F>
Remembered<T, F> takeRemembered(Lattice<T, F>& l) {
  Remembered<T, F> kept;
  kept.stars = std::move(l.program.stars);
  l.program.stars.clear();
  l.stars.clear();
  if (l.checkMode == 1) {
    kept.take(l, l.bestInhomogeneous);
    kept.take(l, l.bestSlack);
    for (long i = 1; i <= l.solutions.MN; ++i) kept.take(l, l.solutions[i]);
    kept.inhomogeneous = inProgramCoordinates(l, l.inhomogeneousVectors);
  }
  l.bestInhomogeneous.clear();
  l.bestSlack.clear();
  l.solutions.resize(0, false);
  l.emptyCollections();
  return kept;
}

// Each collected vector goes once more through the check; copies, since the check may change the collections.
template <class T, class F>
void judgeCollections(Lattice<T, F>& l) {
  std::vector<HeuristicVector<T, F>> collected;
  for (const auto* set : {&l.homogeneousVectors, &l.inhomogeneousVectors})
    for (auto* node = set->head; node != nullptr; node = node->next)
      if (node->value.MN == l.dim) collected.push_back(node->value);
  for (const auto& h : collected) l.checkSolution(h, foundAfter(h.secondsUntilDiscovered), false);
}

// Reduces the lattice of the equations until its kernel shows, and makes sure that they have an integer
// solution. Returns the transformations.
template <class T, class F>
SerializableArray<Matrix<T>> solveEquations(Lattice<T, F>& l) {
  l.generateLattice(true);
  SerializableArray<Matrix<T>> transformations = l.kernelReduce();
  judgeCollections(l);
  if (l.solutions.MN == 0 && !l.bestSlack.notEmpty()) {
    const Vector<T> particular = l.extractInhom();
    const bool solved = particular.notEmpty() && isZero(T(abs(particular[l.dim]) - abs(l.inhomBase)));
    if (!solved) fail("The equation system has no integer solution :(");
  }
  return transformations;
}

}  // namespace

template <class T, class F>
void Lattice<T, F>::computeNormBound() {
  T lower(0), upper(0);
  for (long i = 1; i <= dim; ++i) {
    if (isInfinite(lbnd[i]) || isInfinite(ubnd[i])) {
      normBound = infinity<T>();
      return;
    }
    lower += lbnd[i] * lbnd[i];
    upper += ubnd[i] * ubnd[i];
  }
  normBound = T(3) * (lower > upper ? lower : upper);
}

template <class T, class F>
void Lattice<T, F>::takeBounds(long mode) {
  lbndSaved = lbnd;
  ubndSaved = ubnd;
  symmetricBounds = true;
  for (long i = 1; i <= dim; ++i)
    if (lbnd[i] != T(-ubnd[i])) symmetricBounds = false;
  checkMode = mode;
  computeNormBound();
}

template <class T, class F>
void Lattice<T, F>::generateLattice(bool equations) {
  R = computeRange(equations);
  const long targets = this->tu ? 1 : 0;
  const long m = equations ? this->Ag.M : targets + this->Au.M;
  resizeLattice(this->n() + 1, m + this->n() + 1);
  B_save.setZero();
  generatedTu = this->tu;
  for (Vector<T>* v : {&lbnd, &ubnd, &c}) v->resizeZero(dim);
  if (equations) {
    embedEquations(*this);
  } else {
    if (this->tu) embedTarget(*this);
    for (long i = 1; i <= this->Au.M; ++i) embedInequation(*this, i, targets + i);
  }
  for (long i = 1; i <= this->n(); ++i) embedVariable(*this, i, m + i);
  embedInhomogeneous(*this);
  finishBasis(B_save);
  requireTextual(B_save, R);
  takeBounds(equations ? 1 : 2);
  clearStatus();
  TT.resize(0, false);
  newTransformation(false);
  B = B_save;
  coordSolver.dropCurrent();
  coordSolver.dropSaved();
}

template <class T, class F>
void Lattice<T, F>::prepareLattice() {
  this->printProgram(verb() == 2);
  generatedLx = program.lx;
  generatedRx = program.rx;
  generatedLrtu = program.lrtu;
  SerializableArray<Matrix<T>> transformations;
  if (this->Ag.M > 0) transformations = solveEquations(*this);
  Remembered<T, F> kept = takeRemembered(*this);
  generateLattice(false);
  if (transformations.MN > 0) enterKernel(*this, transformations);
  TT.resize(0, false);
  newTransformation(false);
  reinstate(ConversionArray<Star<T>>(), kept.vectors, kept.homogeneous, kept.inhomogeneous, 3);
  readmitStars(kept.stars, false);
}

template <class T, class F>
bool Lattice<T, F>::programAhead() const {
  if (generatedLx.MN != program.lx.MN || generatedRx.MN != program.rx.MN) return true;
  return program.tu != generatedTu || generatedLx != program.lx || generatedRx != program.rx ||
         generatedLrtu.left != program.ltu() || generatedLrtu.right != program.rtu();
}

#define LATBOX_INSTANTIATE(T)                             \
  template void Lattice<T, dbl_t>::computeNormBound();    \
  template void Lattice<T, dbl_t>::takeBounds(long);      \
  template void Lattice<T, dbl_t>::generateLattice(bool); \
  template void Lattice<T, dbl_t>::prepareLattice();      \
  template bool Lattice<T, dbl_t>::programAhead() const;
LATBOX_INSTANTIATE(dbl_t)
LATBOX_INSTANTIATE(QQ)

}  // namespace latbox
