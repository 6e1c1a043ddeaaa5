// Pairwise recombination: all sums and differences of a homogeneous and an inhomogeneous vector. A
// homogeneous vector leads from a point to a point, so each combination is one step away from a point that is
// nearly good. No source: it is the plain search of a neighbourhood, in which lattice vectors are the steps.
//
// The rows of the basis are in the pools, all that could be part of a solution: after a reduction they are
// the shortest steps that are known. Of the collections a sample is taken, spread over the order of their
// measures, and not the best of them: in an iteration that has brought nothing new these would make the same
// pairs as before.
//
// It pays where reduction ends with several rows that carry the inhomogeneous coordinate. On five packing
// rows it made the difference between a target of -642 and one of -393 (docs/search.md). It does not pay
// where a point has to change by several steps at once, none of which improves it alone.
//
// Cost: the product of the two pools, two combinations a pair with their measures and a check, all of `dim`
// coordinates; so the square of `pairLimit`. On a lattice of rank 100 with default options: 8 ms.
#include "heuristics/recombination.h"

#include <algorithm>

#include "heuristics/random_draw.h"
#include "lib/progress.h"
#include "numbers/number.h"
#include "params/statistics.h"

namespace latbox {

namespace {

template <class T>
bool exactlyEqual(const Vector<T>& a, const Vector<T>& b) {
  return a.MN == b.MN && std::equal(a.data + 1, a.data + a.MN + 1, b.data + 1);
}

template <class T, class F>
bool holdsExactly(const SortedSet<HeuristicVector<T, F>>& set, const Vector<T>& v) {
  for (const auto* node = set.head; node != nullptr; node = node->next)
    if (exactlyEqual<T>(node->value, v)) return true;
  return false;
}

template <class T, class F>
class Recombination {
 public:
  explicit Recombination(Lattice<T, F>& lattice) : lattice_(lattice) {
    selectRandom(lattice_, lattice_.homogeneousVectors, homogeneousPool_);
    selectRandom(lattice_, lattice_.inhomogeneousVectors, inhomogeneousPool_);
    homogeneousPool_.limit = inhomogeneousPool_.limit = 0;
    for (long i = 1; i <= lattice_.rank; ++i) {
      lattice_.unscaledVector(lattice_.B[i], row_);
      lattice_.collect(row_, &homogeneousPool_, &inhomogeneousPool_);
    }
  }

  void run() {
    for (auto* a = homogeneousPool_.head; a != nullptr; a = a->next)
      for (auto* b = inhomogeneousPool_.head; b != nullptr; b = b->next) combine(a->value, b->value);
  }

 private:
  using Candidate = HeuristicVector<T, F>;
  // A combination with the measures of itself and of its negation, which one pass over it gives.
  struct Measured : BothDeviations<F> {
    Vector<T> vector;
  };

  Lattice<T, F>& lattice_;
  SortedSet<Candidate> homogeneousPool_, inhomogeneousPool_;
  Vector<T> row_;
  Measured difference_, sum_;

  // The sign pairs (-,-), (-,+), (+,-), (+,+) of a and b, in this order. -a - b and -a + b are the negations
  // of the other two: they are counted, and never checked, since a check takes either sign.
  void combine(const Candidate& a, const Candidate& b) {
    difference_.vector = a;
    difference_.vector -= b;
    sum_.vector = a;
    sum_.vector += b;
    measure(difference_);
    measure(sum_);
    count(sum_.minus, sum_.plus, b);
    count(difference_.minus, difference_.plus, b);
    check(difference_);
    count(difference_.plus, difference_.minus, b);
    check(sum_);
    count(sum_.plus, sum_.minus, b);
  }

  void measure(Measured& c) { lattice_.computeDeviations(c.vector, c.plus, c.minus); }

  void check(const Measured& c) { lattice_.checkMeasured(c.vector, c, NOW); }

  // A candidate that beats the inhomogeneous vector that it was made of counts, or its negation for it: with
  // symmetric bounds that one tells nothing new. Nothing else is kept of it.
  void count(const HeuristicDeviation<F>& candidate, const HeuristicDeviation<F>& negation,
             const Candidate& b) {
    if (better(candidate, b.deviation) || (!lattice_.symmetricBounds && better(negation, b.deviation)))
      ++statisticsOf<T>().pairwiseCollections;
  }
};

}  // namespace

template <class T, class F>
void selectRandom(const Lattice<T, F>& lattice, const SortedSet<HeuristicVector<T, F>>& source,
                  SortedSet<HeuristicVector<T, F>>& destination) {
  const long n = source.count;
  const long want = std::min(lattice.params.pairLimit.get(), n);
  if (want <= 0) return;
  destination.limit = want;
  // The pass with step 1 offers everything that is left: what it does not bring in never comes in.
  for (long step = n / want; step >= 1 && destination.count < want; --step) {
    for (const auto* node = source.head; node != nullptr; node = node->next) {
      if (holdsExactly(destination, node->value)) continue;
      if (rand_eq(1L, step) == 1) destination.insert(node->value);
      if (destination.count == want) return;
    }
  }
}

template <class T, class F>
void pairwiseRecombination(Lattice<T, F>& lattice) {
  const ProgressScope scope(lattice.verb() > 1, "Pairwise recombination ... ");
  Recombination<T, F>(lattice).run();
}

LATBOX_BOTH_TYPES(selectRandom)
LATBOX_BOTH_TYPES(pairwiseRecombination)

}  // namespace latbox
