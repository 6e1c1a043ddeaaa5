// The measure of near-solutions and the vectors of the collections. Pulls in nothing of the lattice.
#pragma once

#include <iosfwd>
#include <limits>

#include "lib/constants.h"
#include "model/star.h"

namespace latbox {

// Values of HeuristicDeviation::kind, a number in the design.
inline constexpr unsigned char KIND_NONE = 0;  // not measured yet
inline constexpr unsigned char KIND_HOMOGENEOUS = 1;
inline constexpr unsigned char KIND_INHOMOGENEOUS = 2;

// How far a vector misses the bounds. A fresh record is the worst that can exist.
template <class F>
class HeuristicDeviation {
 public:
  bool f = false;                              // feasible: no bound is violated
  F fs = std::numeric_limits<F>::infinity();   // target norm of a feasible vector
  F fm = std::numeric_limits<F>::infinity();   // largest single violation
  long fc = std::numeric_limits<long>::max();  // number of violated coordinates
  F tn = std::numeric_limits<F>::infinity();   // sum of all violations
  long worstIndex = 0;                         // coordinate of the largest violation
  F len = std::numeric_limits<F>::infinity();  // squared Euclidean length
  unsigned char kind = KIND_NONE;

  HeuristicDeviation() = default;
  // false: the best record that can exist (kind 0 all the same); true: the worst.
  explicit HeuristicDeviation(bool worst);
};

// The measures of a vector and of its negation.
template <class F>
struct BothDeviations {
  HeuristicDeviation<F> plus, minus;
};

// True if a is strictly better than b, with EPS as margin of every test of two F values.
// Fails with: "Heuristic deviation is not initialized!" when exactly one kind is 0.
template <class F>
bool better(const HeuristicDeviation<F>& a, const HeuristicDeviation<F>& b);

// True if neither is better; the same failure.
template <class F>
bool sameDeviation(const HeuristicDeviation<F>& a, const HeuristicDeviation<F>& b);

// "[len,f,fs,fm,fc,tn] = " and the six values, separated by one blank.
template <class F>
std::ostream& operator<<(std::ostream& stream, const HeuristicDeviation<F>& d);

// A candidate with its measure and, once judged, its norms.
template <class T, class F>
class HeuristicVector : public TimeVector<T> {
 public:
  HeuristicDeviation<F> deviation;
  T targetNorm;        // infinite until judged
  T slackNorm;         // infinite until judged
  T combinedTarget{};  // atu y; written only where a best vector is judged

  HeuristicVector();
  explicit HeuristicVector(const Vector<T>& v);
  // Takes the elements and leaves everything else.
  HeuristicVector& operator=(const Vector<T>& v);
  // Empty, kind 0, time -1, norms infinite.
  void clear() override;
  // By the deviations: the better vector is the lesser one.
  virtual bool operator<(const HeuristicVector& other) const;
  // What a sorted set asks its elements.
  bool better(const HeuristicVector& other) const { return latbox::better(deviation, other.deviation); }
};

// The order of the collections: a is better than b.
template <class T, class F>
bool better(const HeuristicVector<T, F>& a, const HeuristicVector<T, F>& b) {
  return better(a.deviation, b.deviation);
}

}  // namespace latbox
