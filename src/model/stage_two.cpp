// Stage two of the preparation, on the working copy: no fixed variables, integers throughout, independent
// equations, lower bounds 0.
#include "lib/progress.h"
#include "model/columns.h"
#include "model/tessik.h"

namespace latbox {

namespace {

// side -= row t. Each partial sum is tested: large ones that cancel would lose digits unnoticed.
template <class T>
void shift(T& side, const Vector<T>& row, const Vector<T>& t, const char* message) {
  for (long j = 1; j <= t.MN; ++j) {
    side -= row[j] * t[j];
    checkPrecision(side, message);
  }
}

template <class T>
void swapComponent(Tessik<T>& p, long i) {
  negateColumn(p.At, i);
  negateColumn(p.Ag, i);
  negateColumn(p.Au, i);
  const T working = negated(p.lx[i]);
  p.lx[i] = negated(p.rx[i]);
  p.rx[i] = working;
  p.fx[i] = FreedomDegree::noUpper;
  p.swappedComponents.append(i);
}

// The right-hand side in column 1, so that the elimination, which works from the last column on, meets the
// coefficients first.
template <class T>
Matrix<T> augmentedEquations(const Tessik<T>& p) {
  Matrix<T> M(p.Ag.M, p.Ag.N + 1);
  for (long i = 1; i <= p.Ag.M; ++i) {
    M[i][1] = p.bg[i];
    for (long j = 1; j <= p.Ag.N; ++j) M[i][j + 1] = p.Ag[i][j];
  }
  return M;
}

}  // namespace

// A dependency of the coefficients alone, with a contradiction on the right, shows up as a row that does not
// vanish; it stays, and the generation finds no integer solution.
template <class T>
void Tessik<T>::removeDependencies(bool verbose) {
  Matrix<T> M = augmentedEquations(*this);
  eliminateDependentRows(M);
  if (M.M >= Ag.M) return;
  Ag.resize(M.M, Ag.N);
  bg.resize(M.M, false);
  for (long i = 1; i <= M.M; ++i) {
    bg[i] = M[i][1];
    for (long j = 1; j <= Ag.N; ++j) Ag[i][j] = M[i][j + 1];
  }
  progressLine(verbose, "Linear dependencies detected and removed");
}

// A missing lower bound stays missing when a solution has given the variable a working one: left unswapped,
// the variable would get a box of that width, and points that were solutions would no longer count.
template <class T>
void Tessik<T>::swapHalfFree(bool verbose) {
  swappedComponents.clear();
  for (long i = 1; i <= n(); ++i) {
    const bool missing = isMinusInfinity(lx[i]) || fx[i] == FreedomDegree::noLower;
    if (!missing || isInfinite(rx[i])) continue;
    swapComponent(*this, i);
    progressLine(verbose, "Swapped half-free variable detected");
  }
}

// lx keeps its values: they are the offsets that the way back to the variables adds.
template <class T>
void Tessik<T>::translate() {
  Vector<T> t = lx;
  for (long i = 1; i <= t.MN; ++i)
    if (isMinusInfinity(t[i])) t[i] = T(0);
  for (long i = 1; i <= t.MN; ++i) {
    rx[i] -= t[i];
    checkPrecision(rx[i], "this->ru overflow");
  }
  if (tu) {
    shift(ltu(), atu, t, "ltu overflow");
    shift(rtu(), atu, t, "rtu overflow");
  }
  for (long i = 1; i <= Ag.M; ++i) shift(bg[i], Ag[i], t, "this->bg overflow");
  for (long i = 1; i <= Au.M; ++i) {
    shift(lu[i], Au[i], t, "this->lu overflow");
    shift(ru[i], Au[i], t, "this->ru overflow");
  }
}

template <class T>
void Tessik<T>::prepareStageTwo(bool verbose) {
  removeComponents();
  applyDigits();
  makeIntegral();
  if (Ag.M > 0) removeDependencies(verbose);
  swapHalfFree(verbose);
  tightenRows(true);
  tightenRows(false);
  computeAtu();
  translate();
}

#define LATBOX_INSTANTIATE(T)                        \
  template void Tessik<T>::removeDependencies(bool); \
  template void Tessik<T>::swapHalfFree(bool);       \
  template void Tessik<T>::translate();              \
  template void Tessik<T>::prepareStageTwo(bool);
LATBOX_INSTANTIATE(dbl_t)
LATBOX_INSTANTIATE(QQ)

}  // namespace latbox
