// LLL reduction (A. K. Lenstra, H. W. Lenstra, L. Lovász, "Factoring polynomials with rational coefficients",
// 1982) with the Gram-Schmidt data in floating point (C. P. Schnorr, M. Euchner, "Lattice basis reduction",
// 1994) and an adaptive budget of swaps per sweep. Each vector that the sweep touches is judged as a
// solution, and a dependent vector is moved out of the way instead of stopping the sweep.
#include <algorithm>
#include <cmath>
#include <limits>
#include <string>
#include <utility>

#include "lattice/inner_product.h"
#include "lattice/lattice.h"
#include "lattice/row_operation.h"
#include "lib/exceptions.h"
#include "lib/heapsort.h"
#include "lib/os/clock.h"
#include "lib/progress.h"
#include "numbers/number.h"
#include "params/statistics.h"

namespace latbox {

namespace {

// Nearly 1: a position is accepted only if nothing at all is to be gained.
constexpr dbl_t LOVASZ_FACTOR = 1 - EPS;
constexpr dbl_t SIZE_BOUND = 0.5L;
constexpr long STATUS_INTERVAL = 3600;

// `blended` holds during a sweep only, whatever way the sweep ends.
template <class T>
class BlendScope {
 public:
  explicit BlendScope(Basis<T>& basis) : basis_(basis) {}
  ~BlendScope() { basis_.setBlended(false); }
  BlendScope(const BlendScope&) = delete;
  BlendScope& operator=(const BlendScope&) = delete;

 private:
  Basis<T>& basis_;
};

// Time limit and hourly status line of one sweep.
class SweepClock {
 public:
  bool outOf(long seconds) const { return seconds != 0 && now() - start_ >= seconds; }
  bool statusDue() {
    const long time = now();
    if (time - lastLine_ < STATUS_INTERVAL) return false;
    lastLine_ = time;
    return true;
  }

 private:
  long start_ = now();
  long lastLine_ = start_;
};

// What a sweep counts, and how its budget follows from that.
struct SweepCount {
  long steps = 0;
  long skipped = 0;

  // A budget below 1 could neither sweep nor recover by doubling.
  static long budget(long interval) { return std::max(interval, 1L); }
  void adapt(long& interval) const {
    if (steps / 10 < skipped) {
      const long used = budget(interval);
      interval = used > std::numeric_limits<long>::max() / 2 ? used : 2 * used;
    } else if (skipped == 0) {
      --interval;
    }
  }
};

void tellPosition(long pos, long end) {
  progressLine(true,
               "lll interval_tt status: k = " + std::to_string(pos) + " (m = " + std::to_string(end) + ")");
}

// b_k -= round(mu[k][j]) * b_j; false where nothing is to be done.
template <class T, class F>
bool reduceAgainst(Lattice<T, F>& l, long k, long j, bool guarded) {
  const F m = l.mu.rows[k].data[j];
  if (!(std::fabs(m) > SIZE_BOUND)) return false;
  const F q = std::round(m);
  // After a blend no reduction may let the largest entry grow.
  if (guarded && supNormOfDifference(l.B.rows[k], wholeNumber<T>(q), l.B.rows[j]) > supNorm(l.B.rows[k]))
    return false;
  l.reduceRow(k, q, j);
  return true;
}

// Moves the dependent vector k behind the last independent one of the range.
template <class T, class F>
void blend(Lattice<T, F>& l, long k, long m) {
  long last = m;
  while (last > k && l.status[last] == STATUS_DEPENDENT) --last;
  if (last <= k) throw DependencyException("Blending is not possible");
  for (long t = k; t < last; ++t) l.swapBase(t, t + 1, k < t);
}

template <class T, class F>
void judgeRow(Lattice<T, F>& l, long k) {
  l.checkSolution(l.B[k], true, NOW, false, Membership::byConstruction);
}

// The recursion repeats a position after each dependent vector that it moved; there are at most `rank` of
// them, so a deeper recursion goes in circles.
template <class T, class F>
bool stepAt(Lattice<T, F>& l, long k, long m, bool& guarded, long depth) {
  if (depth > l.rank) return false;
  l.setBlended(k > 1);
  judgeRow(l, k);
  if (l.sizeReduce(k, guarded)) judgeRow(l, k);
  if (l.status[k] != STATUS_DEPENDENT) return true;
  long t = isZeroVector(l.B[k]) ? k : l.deepInsert(k);
  if (t >= k) {
    blend(l, k, m);
    guarded = true;
    t = k;
  }
  for (long p = t; p <= k; ++p)
    if (!stepAt(l, p, m, guarded, depth + 1)) return false;
  return true;
}

// One move of the sweep at a size-reduced position: the next position. Marks what has been settled.
template <class T, class F>
long lovaszMove(Lattice<T, F>& l, long pos) {
  long next = pos + 1;
  long settled = pos;
  if (l.params.deep.get()) {
    next = l.deepInsert(pos);
    settled = next - 1;
  } else if (pos > 1) {
    const F m = l.mu[pos][pos - 1];
    if (l.bstarSq[pos] + m * m * l.bstarSq[pos - 1] < LOVASZ_FACTOR * l.bstarSq[pos - 1]) {
      l.swapBase(pos, pos - 1, false);
      next = pos - 1;
      settled = pos - 2;
    }
  }
  if (settled >= 1) l.setStatusBits(settled, STATUS_SWEPT);
  return next;
}

}  // namespace

template <class T, class F>
void Lattice<T, F>::swapBase(long i, long j, bool keepStatus) {
  if (i == j) return;
  this->swap(i, j, keepStatus);
  this->exchangeStages(i, j);
}

template <class T, class F>
bool Lattice<T, F>::sizeReduce(long k, bool& guarded) {
  if (this->hasStatus(k, STATUS_REDUCED)) return false;
  if (!this->orthogonaliseRow(k)) return false;
  bool changed = false;
  for (long j = k - 1; j >= 1; --j)
    if (reduceAgainst(*this, k, j, guarded)) changed = true;
  this->setStatusBits(k, STATUS_REDUCED);
  return changed;
}

template <class T, class F>
long Lattice<T, F>::deepInsert(long k) {
  if (k < 2) return k + 1;
  T square;
  squaredLength(this->B[k], square);
  F C = toDouble(square);
  // C is the squared length of b_k orthogonal to the first i - 1 vectors. Position 1 is never a target: the
  // first vector changes by a plain exchange or by enumeration, and an insertion there would void all rows.
  long target = 0;
  for (long i = 2; i < k && target == 0; ++i) {
    C -= this->mu[k][i - 1] * this->mu[k][i - 1] * this->bstarSq[i - 1];
    if (C > EPS && C < LOVASZ_FACTOR * this->bstarSq[i]) target = i;
  }
  if (target == 0) return k + 1;
  ++statisticsOf<T>().deepInsertions;
  for (long t = k; t > target; --t) swapBase(t, t - 1, target + 1 < t);
  return target;
}

template <class T, class F>
bool Lattice<T, F>::lllStep(long k, long m, bool& guarded) {
  try {
    return stepAt(*this, k, m, guarded, 0);
  } catch (const DependencyException&) {
    return false;
  }
}

template <class T, class F>
long Lattice<T, F>::lll(long k, long end, long m, bool report) {
  if (end == 0) end = this->rank;
  if (m == 0) m = this->rank;
  const BlendScope<T> scope(*this);
  SweepClock clock;
  SweepCount count;
  bool guarded = false;
  long pos = k;
  long low = k;
  sweepStopped = false;
  // A range that is empty falls through: nothing skipped, so it lowers the budget by one and returns k.
  while (pos <= end) {
    low = std::min(low, pos);
    if (this->hasStatus(pos, STATUS_SWEPT)) {
      ++pos;
      continue;
    }
    if (!lllStep(pos, m, guarded) || clock.outOf(params.btime.get())) {
      sweepStopped = true;
      break;
    }
    if (report && verb() > 1 && clock.statusDue()) tellPosition(pos, end);
    if (count.steps >= SweepCount::budget(this->interval_tt)) {
      // The budget is used up: the position is size-reduced and stays untested.
      ++count.skipped;
      ++pos;
      continue;
    }
    ++count.steps;
    pos = lovaszMove(*this, pos);
  }
  sweepSkipped = count.skipped;
  count.adapt(this->interval_tt);
  // Positions that the loop left behind get size-reduced at least, after a time-out too.
  for (long p = pos; p <= end && lllStep(p, m, guarded); ++p) {
  }
  return low;
}

template <class T, class F>
void Lattice<T, F>::sortBasis(long m) {
  if (m == 0) m = this->rank;
  Vector<T> length(m);
  for (long i = 1; i <= m; ++i) squaredLength(this->B[i], length[i]);
  heapsort(
      m, [&](long i, long j) { return length[i] < length[j]; },
      [&](long i, long j) {
        swapBase(i, j, false);
        std::swap(length[i], length[j]);
      });
}

#define LATBOX_INSTANTIATE(T)                                   \
  template void Lattice<T, dbl_t>::swapBase(long, long, bool);  \
  template bool Lattice<T, dbl_t>::sizeReduce(long, bool&);     \
  template long Lattice<T, dbl_t>::deepInsert(long);            \
  template bool Lattice<T, dbl_t>::lllStep(long, long, bool&);  \
  template long Lattice<T, dbl_t>::lll(long, long, long, bool); \
  template void Lattice<T, dbl_t>::sortBasis(long);
LATBOX_INSTANTIATE(dbl_t)
LATBOX_INSTANTIATE(QQ)

}  // namespace latbox
