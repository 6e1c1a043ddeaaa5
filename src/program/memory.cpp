#include "program/memory.h"

#include <cassert>

#include "lib/exceptions.h"
#include "lib/progress.h"
#include "lib/scope_value.h"
#include "program/embedding.h"
#include "program/generation.h"

namespace latbox {
namespace {

// The vector in unit coordinates; false where it does not fit the lattice.
template <class T, class F>
bool inUnitCoordinates(const Lattice<T, F>& l, const Matrix<T>& rows, const Vector<T>& kept, int mode,
                       Vector<T>& v) {
  if (mode == MODE_PROGRAM) return l.tryOpt2lat(kept, v, false);
  v = kept;
  if (mode != MODE_COEFFICIENTS) return v.MN == l.dim;
  for (long i = v.MN + 1; i <= l.rank; ++i) v.append(T(0));
  v.resize(l.rank, false);
  v = v * rows;
  return true;
}

}  // namespace

template <class T, class F>
Memory<T, F>::Memory(const Lattice<T, F>& l, Vectors vectors) : stars_(l.program.stars) {
  inhomogeneous_.limit = l.inhomogeneousVectors.limit;
  if (vectors == Vectors::none) return;
  keepVector(l, l.bestInhomogeneous, nearMisses_);
  keepVector(l, l.bestSlack, vectors_);
  for (long i = 1; i <= l.solutions.MN; ++i) keepVector(l, l.solutions[i], vectors_);
  for (const auto* node = l.inhomogeneousVectors.head; node != nullptr; node = node->next) {
    Vector<T> x;
    if (node->value.MN != l.dim || l.lat2opt(node->value, x, false) != 1) continue;
    HeuristicVector<T, F> h = node->value;
    h = x;
    inhomogeneous_.append(h);
  }
}

template <class T, class F>
void Memory<T, F>::keepVector(const Lattice<T, F>& l, const TimeVector<T>& v, std::vector<Star<T>>& kept) {
  Star<T> star;
  if (v.MN != l.dim || v.MN == 0 || l.lat2opt(v, star, false) != 1) return;
  star.secondsUntilDiscovered = v.secondsUntilDiscovered;
  kept.push_back(star);
}

template <class T, class F>
void Memory<T, F>::reinstate(Lattice<T, F>& lattice) const {
  {
    const ScopeValue<bool> quiet(lattice.search.reinserting, true);
    Vector<T> v;
    for (const Star<T>& star : nearMisses_)
      if (embedNearMiss(lattice, star, v))
        lattice.checkSolution(v, false, foundAfter(star.secondsUntilDiscovered), true);
  }
  latbox::reinstate(lattice, ConversionArray<Star<T>>(), vectors_, SortedSet<HeuristicVector<T, F>>(),
                    inhomogeneous_, MODE_PROGRAM);
}

template <class T, class F>
void forget(Lattice<T, F>& l) {
  l.program.stars.clear();
  l.stars.clear();
  l.forgetFinds();
  ++l.output->resultsVersion;
}

template <class T, class F>
void reinstate(Lattice<T, F>& l, const ConversionArray<Star<T>>& records, const std::vector<Star<T>>& vectors,
               const SortedSet<HeuristicVector<T, F>>& setA, const SortedSet<HeuristicVector<T, F>>& setB,
               int mode) {
  for (long i = 1; i <= records.MN; ++i) l.program.stars.append(records[i]);
  if (vectors.empty() && setA.count == 0 && setB.count == 0) return;
  const ScopeValue<bool> quiet(l.search.reinserting, true);
  const Matrix<T> rows = mode == MODE_COEFFICIENTS ? l.unscaled(l.B) : Matrix<T>();
  Vector<T> v;
  for (const Star<T>& star : vectors)
    if (inUnitCoordinates(l, rows, star, mode, v))
      l.checkSolution(v, false, foundAfter(star.secondsUntilDiscovered), true);
  for (const auto* set : {&setA, &setB})
    for (auto* node = set->head; node != nullptr; node = node->next)
      // What a changed preparation fixes otherwise isn't in the lattice any more, and nobody asks later.
      if (inUnitCoordinates(l, rows, node->value, mode, v) && l.isMember(v))
        l.collect(v, nullptr, nullptr, foundAfter(node->value.secondsUntilDiscovered));
}

template <class T, class F>
void regenerateLattice(Lattice<T, F>& l) {
  assert(l.search.pending.empty() || !l.finishEnabled);
  const ProgressScope level(l.verb() == 2, "Regenerating lattice ...");
  const Memory<T, F> memory(l, Memory<T, F>::Vectors::all);
  forget(l);
  try {
    const ScopeValue writing(l.writeEnabled, false);
    const ScopeValue finishing(l.finishEnabled, false);
    prepare(l, false, false);
    prepareLattice(l);
    for (long i = 1; i <= memory.stars().MN; ++i) l.program.stars.append(memory.stars()[i]);
    memory.reinstate(l);
  } catch (const PrecisionException&) {
    // On the exact side there is no copy to go back to, and the file follows the stars.
    l.program.stars = memory.stars();
    throw;
  }
  if (l.events != nullptr) l.events->found(l);
  l.writeLatFile();
}

template class Memory<dbl_t, dbl_t>;
template class Memory<QQ, dbl_t>;
LATBOX_BOTH_TYPES(forget)
LATBOX_BOTH_TYPES(reinstate)
LATBOX_BOTH_TYPES(regenerateLattice)

}  // namespace latbox
