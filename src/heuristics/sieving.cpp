// Sieving over the vectors at hand, after the idea of M. Ajtai, R. Kumar, D. Sivakumar, "A sieve algorithm
// for the shortest lattice vector problem", 2001: in rounds, each vector is replaced by its difference to a
// centre near by, so that what is left gets better from round to round.
//
// Here the pool is what the collections hold, and not an exponential number of random points, and better is
// meant by the measure of near-solutions and not by length. A round asks for vectors that beat the worst
// inhomogeneous one of the pool. One that does goes on as it is; another one goes on as its first sum or
// difference with a centre that does. What no centre helps becomes a centre itself, for this round and all to
// come. The pool never grows, and each round leaves its worst inhomogeneous vector behind, so that the rounds
// end. Nothing is proved of the result: with so few vectors the counting of the source does not hold.
//
// The pool has the limit of the collections, and inhomogeneous vectors come first in it. So it pays with
// homogeneous vectors beside them: where the inhomogeneous ones alone fill `collectLimit`, no sum or
// difference of two of the pool is a point. It can reach what recombination does not, combinations of more
// than two vectors. It does not pay in the first iterations, while the collections fill; and behind
// recombination it has brought nothing on five packing rows (docs/search.md).
//
// Cost: in a round each vector meets each centre, two combinations of `dim` coordinates with their measures;
// so the square of `collectLimit`, and more rounds the more vectors there are. With 200 vectors on a lattice
// of rank 100: 115 ms for 177 rounds and 200 centres.
#include "heuristics/sieving.h"

#include <string>

#include "lib/progress.h"
#include "numbers/number.h"

namespace latbox {

namespace {

template <class F>
HeuristicDeviation<F> recordOfKind2(bool worst) {
  HeuristicDeviation<F> record(worst);
  record.kind = KIND_INHOMOGENEOUS;
  return record;
}
template <class F>
const HeuristicDeviation<F>& bestRecord() {
  static const HeuristicDeviation<F> record = recordOfKind2<F>(false);
  return record;
}
template <class F>
const HeuristicDeviation<F>& worstRecord() {
  static const HeuristicDeviation<F> record = recordOfKind2<F>(true);
  return record;
}

template <class T, class F>
class Sieve {
 public:
  explicit Sieve(Lattice<T, F>& lattice) : lattice_(lattice), pool_(lattice.homogeneousVectors) {
    const auto& inhomogeneous = lattice_.inhomogeneousVectors;
    for (const auto* node = inhomogeneous.head; node != nullptr; node = node->next) pool_.insert(node->value);
  }

  long size() const { return pool_.count; }

  void run() {
    while (takeBound() && round()) {
    }
    checkPool();
  }

 private:
  using Candidate = HeuristicVector<T, F>;
  using Node = typename SortedSet<Candidate>::Node;
  // A combination with the measures of itself and of its negation.
  struct Combination {
    Candidate vector;
    HeuristicDeviation<F> negation;
    bool open = false;  // may beat the bound
  };

  Lattice<T, F>& lattice_;
  SortedSet<Candidate> pool_, next_, centres_;
  HeuristicDeviation<F> bound_;
  Combination difference_, sum_;

  // The worst inhomogeneous vector of the pool; false when there is none.
  bool takeBound() {
    bound_ = bestRecord<F>();
    for (const Node* node = pool_.head; node != nullptr; node = node->next) {
      const auto& deviation = node->value.deviation;
      if (deviation.kind == KIND_INHOMOGENEOUS && !better(deviation, bound_)) bound_ = deviation;
    }
    return !sameDeviation(bound_, bestRecord<F>());
  }

  // False when nothing goes on; the pool stays as it is then.
  bool round() {
    next_.clear();
    for (const Node* node = pool_.head; node != nullptr; node = node->next)
      if (!goesOn(node->value)) centres_.insert(node->value);
    if (next_.count == 0) return false;
    pool_ = next_;
    return true;
  }

  bool goesOn(const Candidate& v) {
    if (better(v.deviation, bound_)) {
      next_.insert(v);
      return true;
    }
    for (const Node* centre = centres_.head; centre != nullptr; centre = centre->next)
      if (goesOnWith(v, centre->value)) return true;
    return false;
  }

  // v - c, v + c, -v - c, -v + c: the first that beats the bound.
  bool goesOnWith(const Candidate& v, const Candidate& c) {
    difference_.vector = static_cast<const Vector<T>&>(v);
    difference_.vector -= c;
    if (offer(difference_)) return true;
    sum_.vector = static_cast<const Vector<T>&>(v);
    sum_.vector += c;
    if (offer(sum_)) return true;
    return !lattice_.symmetricBounds && (offerNegation(sum_) || offerNegation(difference_));
  }

  bool offer(Combination& t) {
    measure(t);
    if (!t.open || !better(t.vector.deviation, bound_)) return false;
    enter(t.vector);
    return true;
  }

  bool offerNegation(Combination& t) {
    if (!t.open || !better(t.negation, bound_)) return false;
    for (long i = 1; i <= t.vector.MN; ++i) t.vector.data[i] = T(0) - t.vector.data[i];
    t.vector.deviation = t.negation;
    enter(t.vector);
    return true;
  }

  // A homogeneous vector beats no inhomogeneous one, zero among them: it needs no measure.
  void measure(Combination& t) {
    dropRemainders(t.vector);
    t.open = !isZero(t.vector.data[lattice_.dim]);
    if (!t.open) return;
    if (lattice_.symmetricBounds)
      t.vector.deviation = lattice_.computeDeviation(t.vector);
    else
      lattice_.computeDeviations(t.vector, t.vector.deviation, t.negation);
  }

  // Tiny remainders would grow from round to round and hide equal vectors from the set.
  static void dropRemainders(Vector<T>& v) {
    for (long i = 1; i <= v.MN; ++i)
      if (isZero(v.data[i])) v.data[i] = T(0);
  }

  void enter(Candidate& t) {
    t.secondsUntilDiscovered = lattice_.stamp(NOW);
    next_.insert(t);
  }

  void checkPool() {
    const Candidate* best = nullptr;
    bound_ = worstRecord<F>();
    for (const Node* node = pool_.head; node != nullptr; node = node->next) {
      const Candidate& v = node->value;
      lattice_.checkSolution(v, false, NOW, false, Membership::byConstruction);
      if (v.deviation.kind != KIND_INHOMOGENEOUS || !better(v.deviation, bound_)) continue;
      bound_ = v.deviation;
      best = &v;
    }
    if (best != nullptr) lattice_.offerInhomogeneous(*best);
  }
};

}  // namespace

template <class T, class F>
void sieve(Lattice<T, F>& lattice) {
  Sieve<T, F> sieve(lattice);
  const ProgressScope scope(lattice.verb() > 1,
                            "Sieving ( " + std::to_string(sieve.size()) + " vectors ) ...");
  sieve.run();
}

LATBOX_BOTH_TYPES(sieve)

}  // namespace latbox
