// Random sampling after C. P. Schnorr, "Lattice reduction by random sampling and birthday methods", 2003;
// without the birthday methods. A sample is a row of the basis, size-reduced against the rows before it, but
// with a wider choice of coefficients at the last u of them. Behind, where the orthogonal parts of a reduced
// basis are short, the choice costs little length and gives 2^u samples. sample_bounds.h finds the least u
// that can be expected to give one short enough.
//
// Two things differ from the source. The row that is varied is the first that carries the inhomogeneous
// coordinate: each sample carries it too, so it may be a solution and is judged. And a sample is compared
// with every position up to that row, not with the first alone, and enters where it is shorter. Where the
// sampled range begins is drawn anew in each call, so that iterations differ.
//
// It pays where the block enumeration has nothing left to improve and the rank is far beyond `beta`. It does
// not pay on small ranks, which enumeration searches whole, nor where the orthogonal lengths hardly fall off:
// there u goes to its limit, and `sampleLimit` samples are drawn of which hardly one is shorter.
//
// Cost: a sweep over the rows up to the one that is varied, m of them; then at most `sampleLimit` samples of
// up to m row operations of `dim` entries each. 200 iterations on five packing rows took 4.1 s with it and
// 1.0 s without, for a target of -651 and one of -650 (docs/search.md).
#include "heuristics/sampling.h"

#include <algorithm>
#include <cassert>
#include <string>

#include "heuristics/carrier.h"
#include "heuristics/random_draw.h"
#include "heuristics/sample_bounds.h"
#include "lattice/row_operation.h"
#include "lib/progress.h"
#include "numbers/number.h"
#include "params/statistics.h"

namespace latbox {
namespace {

// Rows 1..m swept, with valid Gram-Schmidt data. False where they are dependent.
template <class T, class F>
bool reducePositions(Lattice<T, F>& lattice, long m) {
  lattice.lll(1, m, 0, false);
  return lattice.updateGso(1, m) || lattice.gsoByReduced(1, m, false) == 0;
}

// One sample for each choice in the wider range; from 2^62 on the limit alone counts.
long numberOfSamples(long u, long limit) {
  constexpr long WORD = 62;
  return u >= WORD ? limit : std::min(1L << u, limit);
}

// A uniform integer about x, `reach` to both sides before rounding.
template <class T>
T drawAbout(dbl_t x, dbl_t reach) {
  return rand_eq(fromDouble<T>(roundNearest(x - reach)), fromDouble<T>(roundNearest(x + reach)));
}

template <class T, class F>
void subtractBasisVector(const Lattice<T, F>& lattice, Sample<T>& s, long j, const T& c) {
  const F q = toDouble(c);
  if (q == F(0)) return;
  subtractChecked(s.vector, c, lattice.B[j]);
  s.coordinates[j] -= c;
  for (long i = 1; i < j; ++i) s.mu[i] -= q * lattice.mu[j][i];
  s.mu[j] -= q;
}

// The first position at which the projected sample beats the basis vector, 0 if there is none.
template <class T>
long improvedPosition(const Sample<T>& s, const Vector<dbl_t>& r, const Vector<dbl_t>& thresholds) {
  dbl_t p = toDouble(T(s.vector * s.vector));
  for (long i = 1; i <= thresholds.MN; ++i) {
    if (i > 1) p -= s.mu[i - 1] * s.mu[i - 1] * r[i - 1];
    if (p < thresholds[i]) return i;
  }
  return 0;
}

template <class T, class F>
void replaceBaseVector(Lattice<T, F>& lattice, Sample<T>& s, long i, long m) {
  lattice.insertCombination(s.coordinates, i, m);
  ++statisticsOf<T>().samplingBasisExtensions;
  progressLine(lattice.verb() > 1, "Replacing base vector (idx = " + std::to_string(i) + ")");
}

std::string samplingLine(long k, long m, long u) {
  return "Random Sampling ( k = " + std::to_string(k) + ", m = " + std::to_string(m) +
         ", u = " + std::to_string(u) + " ) ... ";
}

template <class T, class F>
void drawSamples(Lattice<T, F>& lattice, long k, long m, long u) {
  Vector<dbl_t> thresholds(m);
  for (long i = 1; i <= m; ++i) thresholds[i] = SAMPLE_DELTA * lattice.bstarSq[i];
  Sample<T> s;
  for (long n = numberOfSamples(u, lattice.params.sampleLimit.get()); n >= 1; --n) {
    sampleVector(lattice, s, k, m, u);
    const unsigned flags = lattice.checkSolution(s.vector, true, NOW, false, Membership::byConstruction);
    if (flags & CHECK_FEASIBLE) ++statisticsOf<T>().samplingCollections;
    const long i = improvedPosition(s, lattice.bstarSq, thresholds);
    if (i != 0) return replaceBaseVector(lattice, s, i, m);
  }
}

}  // namespace

template <class T, class F>
void sampleVector(const Lattice<T, F>& lattice, Sample<T>& result, long k, long m, long u) {
  assert(k >= 1 && m <= lattice.rank && u >= 0);
  result.coordinates.resizeZero(lattice.rank);
  result.coordinates[m] = T(1);
  result.mu = lattice.mu[m];
  result.vector = lattice.B[m];
  for (long j = m - 1; j >= k; --j) {
    const dbl_t reach = j >= m - u ? 1.0L : 0.5L;
    subtractBasisVector(lattice, result, j, drawAbout<T>(result.mu[j], reach));
  }
}

template <class T, class F>
void randomSampling(Lattice<T, F>& lattice) {
  const long m = carrierOfInhom(lattice);
  if (m == 0) return;
  const long k = rand_eq(1L, m);
  if (!reducePositions(lattice, m)) return;
  const long u = std::min(freeBound(lattice, k, m), m - 1);
  const ProgressScope scope(lattice.verb() > 1, samplingLine(k, m, u));
  drawSamples(lattice, k, m, u);
}

LATBOX_BOTH_TYPES(sampleVector)
LATBOX_BOTH_TYPES(randomSampling)

}  // namespace latbox
