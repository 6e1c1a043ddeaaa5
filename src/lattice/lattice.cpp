// The lattice as a whole: construction, copies, sizes.
#include "lattice/lattice.h"

#include <cassert>
#include <type_traits>

#include "numbers/number.h"
#include "params/statistics.h"

namespace latbox {

template <class T, class F>
Lattice<T, F>::Lattice() {
  this->recordBy(params.consistency);
  this->homogeneousVectors.limit = this->inhomogeneousVectors.limit = params.collectLimit.get();
}

template <class T, class F>
Lattice<T, F>::Lattice(const Lattice& other) : Lattice() {
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
  if (!keepParameters) params = source.params;
  LatticeState<T, F>::operator=(source);
  events = source.events;
}

template <class T, class F>
template <class U>
void LatticeState<T, F>::convertFrom(const LatticeState<U, F>& other) {
  Tessik<T>::convertFrom(other);
  CheckVectors<T>::convertFrom(other);
  Finds<T, F>::convertFrom(other);
  WeightMap<T>::convertFrom(other);
  GramSchmidt<T, F>::convertFrom(other);
  EnumerationState<T, F>::convertFrom(other);
  savedSeconds = other.savedSeconds;
  latFile = other.latFile;
  program.convertFrom(other.program);
  interval_tt = other.interval_tt;
}

template <class T, class F>
template <class U>
void Lattice<T, F>::convertFrom(const Lattice<U, F>& other) {
  mainVars = other.mainVars;
  params.convertFrom(other.params);
  LatticeState<T, F>::convertFrom(other);
  if constexpr (std::is_same_v<T, QQ>) restoreMultipliers();
  this->measureRows();
}

template <class T, class F>
void Lattice<T, F>::reinitialise() {
  const long limit = this->homogeneousVectors.limit;
  LatticeState<T, F>::operator=(LatticeState<T, F>());
  this->homogeneousVectors.limit = this->inhomogeneousVectors.limit = limit;
}

template <class T, class F>
void Lattice<T, F>::resizeLattice(long newRank, long newDim) {
  this->resize(newRank, newDim);
  this->resizeCheckVectors(newDim);
  this->resizeWeights(newDim);
  resizeWork();
}

template <class T, class F>
void Lattice<T, F>::resizeWork() {
  GramSchmidt<T, F>::resizeWork();
  this->resizeStages(this->rank);
}

template <class T, class F>
void Lattice<T, F>::enterBasis(const Matrix<T>& unit) {
  assert(unit.N == this->scaleFactor.MN);
  this->setOrigin(unit, this->rescaled(unit));
  resizeWork();
}

template <class T, class F>
long Lattice<T, F>::stamp(DiscoveryTime time) const {
  return time.known ? time.seconds : stampNow<T>(params.bench.get());
}

template <class T, class F>
void Lattice<T, F>::orthogonalisationRefresh() {
  this->clearStatus();
  this->updateGso(1, 0);
}

#define LATBOX_INSTANTIATE(T)                                               \
  template Lattice<T, dbl_t>::Lattice();                                    \
  template Lattice<T, dbl_t>::Lattice(const Lattice&);                      \
  template Lattice<T, dbl_t>& Lattice<T, dbl_t>::operator=(const Lattice&); \
  template void Lattice<T, dbl_t>::copyFrom(const Lattice&, bool);          \
  template void Lattice<T, dbl_t>::reinitialise();                          \
  template void Lattice<T, dbl_t>::resizeLattice(long, long);               \
  template void Lattice<T, dbl_t>::enterBasis(const Matrix<T>&);            \
  template long Lattice<T, dbl_t>::stamp(DiscoveryTime) const;              \
  template void Lattice<T, dbl_t>::orthogonalisationRefresh();
LATBOX_INSTANTIATE(dbl_t)
LATBOX_INSTANTIATE(QQ)
template void Lattice<dbl_t, dbl_t>::convertFrom(const Lattice<QQ, dbl_t>&);
template void Lattice<QQ, dbl_t>::convertFrom(const Lattice<dbl_t, dbl_t>&);

}  // namespace latbox
