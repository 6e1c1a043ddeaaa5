// From the prepared program to the lattice. The embedding is centred: each constraint l <= a x <= r becomes
// the coordinate c (2 a x - (l + r)), which for a feasible x lies between -R and R.
#include "program/generation.h"

#include <vector>

#include "numbers/number.h"
#include "program/extraction.h"
#include "program/file_items.h"
#include "program/memory.h"
#include "program/sol_file.h"
#include "program/widths.h"

namespace latbox {
namespace {

// Equations are coordinates 1 to e of the equation lattice only; feasible means zero there.
template <class T, class F>
void embedEquations(Lattice<T, F>& l, Matrix<T>& M) {
  for (long i = 1; i <= l.Ag.M; ++i) {
    l.c[i] = l.lbnd[i] = l.ubnd[i] = T(0);
    M[1][i] = -l.bg[i];
    for (long j = 1; j <= l.n(); ++j) M[j + 1][i] = l.Ag[i][j];
  }
}

// The combined target bounds nothing: both check bounds are 0, and its length keeps it near the centre.
template <class T, class F>
void embedTarget(Lattice<T, F>& l, Matrix<T>& M) {
  const T width = l.rtu() - l.ltu();
  l.lbnd[1] = l.ubnd[1] = T(0);
  l.c[1] = isZero(width) ? l.R : T(l.R / width);
  M[1][1] = -(l.ltu() + l.rtu()) * l.c[1];
  for (long j = 1; j <= l.n(); ++j) M[j + 1][1] = T(2) * l.c[1] * l.atu[j];
}

template <class T, class F>
void embedInequation(Lattice<T, F>& l, Matrix<T>& M, long i, long k) {
  const T width = l.ru[i] - l.lu[i];
  if (isZero(width)) fail("ineq bounds error2");
  l.lbnd[k] = -l.R;
  l.ubnd[k] = l.R;
  l.c[k] = l.R / width;
  M[1][k] = -(l.lu[i] + l.ru[i]) * l.c[k];
  for (long j = 1; j <= l.n(); ++j) M[j + 1][k] = T(2) * l.c[k] * l.Au[i][j];
}

template <class T, class F>
void embedVariable(Lattice<T, F>& l, Matrix<T>& M, long i, long k) {
  const FreedomDegree freedom = l.fx[i];
  l.lbnd[k] = freedom == FreedomDegree::free ? T(-infinity<T>()) : T(-l.R);
  if (i > l.n() - l.deviationCount) {
    l.ubnd[k] = infinity<T>();
    l.c[k] = l.R;
  } else if (freedom == FreedomDegree::noUpper || freedom == FreedomDegree::free) {
    l.ubnd[k] = infinity<T>();
    l.c[k] = T(1);
  } else {
    // The translated upper bound against the untranslated lower one. Range and multipliers of every saved
    // lattice rest on this width. A variable whose lower bound is not 0 is searched in another box by it, of
    // which latbox-check warns.
    const T width = l.rx[i] - l.lx[i];
    if (isZero(width)) fail("sol bounds error");
    l.ubnd[k] = l.R;
    l.c[k] = l.R / width;
  }
  M[1][k] = -l.R;
  M[i + 1][k] = T(2) * l.c[k];
}

template <class T, class F>
void embedInhomogeneous(Lattice<T, F>& l, Matrix<T>& M) {
  l.lbnd[l.dim] = l.ubnd[l.dim] = l.inhomBase;
  l.c[l.dim] = T(1);
  M[1][l.dim] = l.inhomBase;
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

// The generated basis behind the transformations of the kernel reduction, without the rows that carry
// equation values, the last e.
template <class T, class F>
void enterKernel(Lattice<T, F>& l, const SerializableArray<Matrix<T>>& transformations) {
  Matrix<T> kernel = l.B;
  for (long k = 1; k <= transformations.MN; ++k) kernel = transformed(transformations[k], kernel);
  kernel.resize(l.rank - l.Ag.M, l.dim);
  l.enterBasis(kernel);
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
  generateLattice(l, true);
  SerializableArray<Matrix<T>> transformations = l.kernelReduce();
  judgeCollections(l);
  if (l.solutions.MN == 0 && !l.bestSlack.notEmpty()) {
    const Vector<T> particular = extractInhom(l);
    const bool solved = particular.notEmpty() && isZero(T(abs(particular[l.dim]) - abs(l.inhomBase)));
    if (!solved) fail("The equation system has no integer solution :(");
  }
  return transformations;
}

// Whether stage one has work to do. It runs once per program: run twice, it would take its own slacks for
// variables of the user.
template <class T, class F>
bool needsStageOne(const Lattice<T, F>& lattice, bool full, bool force) {
  if (lattice.program.prepared) return false;
  return full || force || (lattice.tu && !lattice.atu.notEmpty());
}

}  // namespace

template <class T, class F>
void prepare(Lattice<T, F>& l, bool full, bool force) {
  const bool verbose = l.verb() == 2;
  if (needsStageOne(l, full, force)) l.program.prepareStageOne(full, verbose);
  const std::string ownOptFile = l.optFile;
  const std::string ownSolFile = l.solFile;
  static_cast<Tessik<T>&>(l) = l.program;
  // The names belong to the object that reads and writes the files.
  if (!ownOptFile.empty()) l.optFile = ownOptFile;
  if (!ownSolFile.empty()) l.solFile = ownSolFile;
  l.prepareStageTwo(verbose);
}

template <class T, class F>
void generateLattice(Lattice<T, F>& l, bool equations) {
  l.R = computeRange(l, equations);
  const long targets = l.tu ? 1 : 0;
  const long m = equations ? l.Ag.M : targets + l.Au.M;
  l.resizeLattice(l.n() + 1, m + l.n() + 1);
  Matrix<T> M(l.rank, l.dim);
  l.generatedTu = l.tu;
  if (equations) {
    embedEquations(l, M);
  } else {
    if (l.tu) embedTarget(l, M);
    for (long i = 1; i <= l.Au.M; ++i) embedInequation(l, M, i, targets + i);
  }
  for (long i = 1; i <= l.n(); ++i) embedVariable(l, M, i, m + i);
  embedInhomogeneous(l, M);
  finishBasis(M);
  requireTextual(M, l.R);
  l.takeBounds(equations ? CHECK_MODE_EQUATIONS : CHECK_MODE_FINAL);
  l.enterBasis(M);
}

template <class T, class F>
void prepareLattice(Lattice<T, F>& l) {
  l.printProgram(l.verb() == 2);
  l.generatedLx = l.program.lx;
  l.generatedRx = l.program.rx;
  l.generatedLrtu = l.program.lrtu;
  SerializableArray<Matrix<T>> transformations;
  if (l.Ag.M > 0) transformations = solveEquations(l);
  // Vectors are only carried from the equation lattice: one of an older lattice does not fit the program as
  // it has been prepared since.
  const Memory<T, F> memory(
      l, l.checkMode == CHECK_MODE_EQUATIONS ? Memory<T, F>::Vectors::all : Memory<T, F>::Vectors::none);
  forget(l);
  generateLattice(l, false);
  if (transformations.MN > 0) enterKernel(l, transformations);
  memory.reinstate(l);
  readmitStars(l, memory.stars(), false);
}

template <class T, class F>
bool programAhead(const Lattice<T, F>& l) {
  const Tessik<T>& program = l.program;
  if (l.generatedLx.MN != program.lx.MN || l.generatedRx.MN != program.rx.MN) return true;
  return program.tu != l.generatedTu || l.generatedLx != program.lx || l.generatedRx != program.rx ||
         l.generatedLrtu.left != program.ltu() || l.generatedLrtu.right != program.rtu();
}

LATBOX_BOTH_TYPES(prepare)
LATBOX_BOTH_TYPES(generateLattice)
LATBOX_BOTH_TYPES(prepareLattice)
LATBOX_BOTH_TYPES(programAhead)

}  // namespace latbox
