// The lattice object: construction, copies, sizes and the words that tell what is valid.
#include "lattice/lattice.h"

#include <algorithm>

#include "numbers/number.h"

namespace latbox {

namespace {

// The number of leading rows whose words hold the whole mask.
long validPrefix(const Array<short>& status, short mask) {
  long i = 0;
  while (i < status.MN && (status.data[i + 1] & mask) == mask) ++i;
  return i;
}

// The first `count` rows, shape and storage kept otherwise.
template <class F>
void copyRows(Matrix<F>& target, const Matrix<F>& source, long count) {
  target.resize(count, source.N);
  for (long i = 1; i <= count; ++i) target.rows[i] = source.rows[i];
}

}  // namespace

template <class T, class F>
Lattice<T, F>::Lattice() {
  homogeneousVectors.limit = inhomogeneousVectors.limit = params.collectLimit.get();
}

template <class T, class F>
Lattice<T, F>::Lattice(const Lattice& other) : Tessik<T>(), ParamOwner() {
  *this = other;
}

template <class T, class F>
Lattice<T, F>& Lattice<T, F>::operator=(const Lattice& other) {
  if (this == &other) return *this;
  copyFrom(other, false);
  mainVars = other.mainVars;
  return *this;
}

template <class T, class F>
void Lattice<T, F>::copyFrom(const Lattice& source, bool keepParameters) {
  if (this == &source) return;
  Tessik<T>::operator=(source);
  if (!keepParameters) params = source.params;
  copyResults(source);
  copyBasis(source);
  copyDerived(source);
}

// What was found, and the bounds it is judged by.
template <class T, class F>
void Lattice<T, F>::copyResults(const Lattice& source) {
  savedSeconds = source.savedSeconds;
  latFile = source.latFile;
  bestInhomogeneous = source.bestInhomogeneous;
  bestSlack = source.bestSlack;
  solutions = source.solutions;
  program = source.program;
  R = source.R;
  lbnd = source.lbnd;
  ubnd = source.ubnd;
  lbndSaved = source.lbndSaved;
  ubndSaved = source.ubndSaved;
  symmetricBounds = source.symmetricBounds;
  checkMode = source.checkMode;
  normBound = source.normBound;
  generatedTu = source.generatedTu;
  generatedLx = source.generatedLx;
  generatedRx = source.generatedRx;
  generatedLrtu = source.generatedLrtu;
  homogeneousVectors = source.homogeneousVectors;
  inhomogeneousVectors = source.inhomogeneousVectors;
}

template <class T, class F>
void Lattice<T, F>::copyBasis(const Lattice& source) {
  rank = source.rank;
  dim = source.dim;
  inhomBase = source.inhomBase;
  inhomScaled = source.inhomScaled;
  c = source.c;
  TT = source.TT;
  B_save = source.B_save;
  B = source.B;
  coordSolver = source.coordSolver;
  scaleFactor = source.scaleFactor;
  translation = source.translation;
  stepAverage = source.stepAverage;
  stepCount = source.stepCount;
}

// mu, bstarSq and bNormSq are carried whole: a row that is not marked may be right in value, and a sweep that
// starts behind an insertion relies on that. The level matrices of lq_reduced are rebuilt by every resume,
// and the reflections count only as far as the words say, so the bulk of the scratch never travels.
template <class T, class F>
void Lattice<T, F>::copyDerived(const Lattice& source) {
  mu = source.mu;
  bNormSq = source.bNormSq;
  bstarSq = source.bstarSq;
  interval_tt = source.interval_tt;
  status = source.status;
  blended = source.blended;
  enumBound = source.enumBound;
  enumCoeffs.resize(source.enumCoeffs.MN, false);
  stages.resize(source.stages.MN, false);
  const long reflected = validPrefix(status, STATUS_FULL);
  const long factored = std::max(reflected, validPrefix(status, STATUS_LQ));
  copyRows(Bstar, source.Bstar, factored);
  copyRows(lqL, source.lqL, factored);
  lqNorms = source.lqNorms;
  lqReflections.resize(std::min(reflected, source.lqReflections.MN), false);
  for (long t = 1; t <= lqReflections.MN; ++t) lqReflections.data[t] = source.lqReflections.data[t];
}

template <class T, class F>
void Lattice<T, F>::reinitialise() {
  Tessik<T>::reset(false);
  program.reset(false);
  latFile.clear();
  savedSeconds = 0;
  inhomBase = T(1);
  resizeLattice(0, 0);
  bestInhomogeneous.clear();
  bestSlack.clear();
  solutions.clear();
  emptyCollections();
  R = T(0);
  lbnd.clear();
  ubnd.clear();
  lbndSaved.clear();
  ubndSaved.clear();
  symmetricBounds = false;
  checkMode = 0;
  normBound = T(0);
  generatedTu = false;
  generatedLx.clear();
  generatedRx.clear();
  generatedLrtu = program.lrtu;
  interval_tt = 100;
}

template <class T, class F>
void Lattice<T, F>::resizeLattice(long newRank, long newDim) {
  dim = newDim;
  B.resizeZero(newRank, newDim);
  B_save.resizeZero(newRank, newDim);
  TT.resize(0, false);
  c.resizeZero(newDim);
  lbnd.resizeZero(newDim);
  ubnd.resizeZero(newDim);
  scaleFactor.resize(newDim, false);
  for (long i = 1; i <= newDim; ++i) scaleFactor.data[i] = T(1);
  translation.clear();
  stepAverage.resizeZero(newDim);
  stepCount.resizeZero(newDim);
  inhomScaled = inhomBase;
  coordSolver.dropSaved();
  resizeWork(newRank);
}

template <class T, class F>
void Lattice<T, F>::resizeWork(long newRank) {
  rank = newRank;
  mu.resizeZero(newRank, newRank);
  bNormSq.resizeZero(newRank);
  bstarSq.resizeZero(newRank);
  enumCoeffs.resizeZero(newRank);
  enumBound = F(0);
  status.resize(newRank, false);
  clearStatus();
  blended = false;
  stages.resize(newRank + 1, false);
  for (long t = 0; t <= newRank + 1; ++t) stages.data[t].reset();
  Bstar.resize(0, dim);
  lqL.resize(0, 0);
  lqNorms.resize(0, false);
  lqStages.resize(0, false);
  lqReflections.resize(0, false);
  coordSolver.dropCurrent();
}

template <class T, class F>
void Lattice<T, F>::clearStatus() {
  for (long i = 1; i <= status.MN; ++i) status.data[i] = 0;
}

template <class T, class F>
void Lattice<T, F>::invalidateFrom(long from) {
  for (long p = std::max(from, 1L); p <= rank; ++p) {
    const bool stays = p > 1 && blended && status[p] == STATUS_DEPENDENT;
    if (!stays) status.data[p] = 0;
  }
}

template <class T, class F>
void Lattice<T, F>::emptyCollections() {
  homogeneousVectors.clear();
  inhomogeneousVectors.clear();
}

#define LATBOX_INSTANTIATE(T)                                               \
  template Lattice<T, dbl_t>::Lattice();                                    \
  template Lattice<T, dbl_t>::Lattice(const Lattice&);                      \
  template Lattice<T, dbl_t>& Lattice<T, dbl_t>::operator=(const Lattice&); \
  template void Lattice<T, dbl_t>::copyFrom(const Lattice&, bool);          \
  template void Lattice<T, dbl_t>::reinitialise();                          \
  template void Lattice<T, dbl_t>::resizeLattice(long, long);               \
  template void Lattice<T, dbl_t>::resizeWork(long);                        \
  template void Lattice<T, dbl_t>::clearStatus();                           \
  template void Lattice<T, dbl_t>::invalidateFrom(long);                    \
  template void Lattice<T, dbl_t>::emptyCollections();
LATBOX_INSTANTIATE(dbl_t)
LATBOX_INSTANTIATE(QQ)

}  // namespace latbox
