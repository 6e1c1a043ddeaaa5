// Gives a regenerated lattice its memory back. Nothing enters the basis.
#include "lattice/lattice.h"
#include "lib/scope_value.h"
#include "params/statistics.h"

namespace latbox {
namespace {

// In which form the vectors come.
constexpr int MODE_COEFFICIENTS = 2;  // of the rows of B
constexpr int MODE_PROGRAM = 3;       // the variables of the .opt file

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
void Lattice<T, F>::reinstate(const ConversionArray<Star<T>>& records, const std::vector<Star<T>>& vectors,
                              const SortedSet<HeuristicVector<T, F>>& setA,
                              const SortedSet<HeuristicVector<T, F>>& setB, int mode) {
  for (long i = 1; i <= records.MN; ++i) program.stars.append(records[i]);
  if (vectors.empty() && setA.count == 0 && setB.count == 0) return;
  const ScopeValue<bool> quiet(statisticsOf<T>().reinserting, true);
  const Matrix<T> rows = mode == MODE_COEFFICIENTS ? unscaled(B) : Matrix<T>();
  Vector<T> v;
  for (const Star<T>& star : vectors)
    if (inUnitCoordinates(*this, rows, star, mode, v))
      checkSolution(v, false, foundAfter(star.secondsUntilDiscovered), true);
  for (const auto* set : {&setA, &setB})
    for (auto* node = set->head; node != nullptr; node = node->next)
      // What a changed preparation fixes otherwise isn't in the lattice any more, and nobody asks later.
      if (inUnitCoordinates(*this, rows, node->value, mode, v) && isMember(v))
        collect(v, nullptr, nullptr, foundAfter(node->value.secondsUntilDiscovered));
}

#define LATBOX_INSTANTIATE(T)                                                                              \
  template void Lattice<T, dbl_t>::reinstate(const ConversionArray<Star<T>>&, const std::vector<Star<T>>&, \
                                             const SortedSet<HeuristicVector<T, dbl_t>>&,                  \
                                             const SortedSet<HeuristicVector<T, dbl_t>>&, int);
LATBOX_INSTANTIATE(dbl_t)
LATBOX_INSTANTIATE(QQ)

}  // namespace latbox
