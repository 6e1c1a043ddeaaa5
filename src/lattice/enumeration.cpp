// Block enumeration after Schnorr and Euchner (Lattice basis reduction: improved practical algorithms and
// solving subset sum problems, 1994), in two modes with one body: BKZ without a target, CVP with one.
#include <algorithm>
#include <cassert>
#include <cmath>
#include <string>

#include "lattice/lattice.h"
#include "lattice/row_operation.h"
#include "lib/os/clock.h"
#include "lib/progress.h"
#include "numbers/number.h"
#include "params/statistics.h"

namespace latbox {
namespace {

constexpr long STATUS_INTERVAL = 3600;  // seconds between two lines that tell where a long block stands
constexpr int MAX_FIRST_SWEEPS = 64;  // a sweep that always skips must not keep the enumeration from starting

// One call of `enumerate`.
template <class T, class F>
struct Run {
  const Vector<T>* target;  // null in BKZ mode
  Vector<F> targetCoords;   // of the target with respect to the Gram-Schmidt vectors
  long beta = 0;            // effective block size
  long startRank = 0;       // rank at the start
  long unchanged = 0;       // blocks in a row that gave nothing
  bool wrapped = false;     // the position has wrapped around since the last change
  long lastLine = 0;        // time of the last status line

  const F* shift() const { return target == nullptr ? nullptr : targetCoords.data; }
};

// The block that is searched.
struct Block {
  long j = 0;      // first position; the next block goes on from it
  long k = 0;      // last position
  long h = 0;      // where the repair ends
  long end = 0;    // k + 1, or the first dependent position: the search stops there
  long start = 0;  // time at which the search began
};

template <class T, class F>
class Enumeration {
 public:
  Enumeration(Lattice<T, F>& lattice, const Vector<T>* target) : l_(lattice), run_{target, {}} {
    run_.beta = std::min(l_.params.beta.get(), l_.rank);
  }

  void run() {
    const ProgressScope scope(l_.verb() > 1, announcement());
    enterMode();
    if (run_.beta <= 2 || l_.rank <= 1) return;
    l_.tree.reserve(l_.rank);
    do {
      openBlock();
      searchBlock();
      const bool found = insertFind();
      // A block that is the whole lattice is searched once, whatever the outcome.
      if (run_.startRank == run_.beta) return;
      if (!found || !repairAfterFind()) passBlock();
    } while (run_.unchanged < l_.rank - 1);
  }

 private:
  Lattice<T, F>& l_;
  Run<T, F> run_;
  Block block_;

  std::string announcement() const {
    const char* mode = run_.target == nullptr ? "BKZ enumeration ( beta = " : "CVP enumeration ( beta = ";
    return mode + std::to_string(run_.beta) + ", deep = " + std::to_string(l_.params.deep.get() ? 1 : 0) +
           " ) ... ";
  }

  // The rows of Bstar have length one here, hence the factor |L[i][i]|, the length of the Gram-Schmidt
  // vector. A dependent row has no orthogonal part and gives 0.
  void targetCoordinates(Vector<F>& out, const Vector<T>& target, long first, long last) const {
    if (last == 0) last = l_.rank;
    for (long i = first; i <= last; ++i) {
      out[i] = F(0);
      if (!l_.hasStatus(i, STATUS_FULL)) continue;
      F sum = F(0);
      for (long p = 1; p <= l_.dim; ++p) sum += l_.Bstar.rows[i].data[p] * toDouble(target.data[p]);
      out[i] = sum * std::fabs(l_.lqL.rows[i].data[i]) / l_.bstarSq[i];
    }
  }

  void composeAndCheck(const Vector<T>& coeffs, long first, long last) {
    l_.checkSolution(l_.combine(coeffs, first, last), true, NOW, false, Membership::byConstruction);
  }

  // One sweep is no fixed point: while a sweep had to skip positions it is repeated, since enumeration of an
  // unreduced basis visits thousands of nodes where a few suffice.
  void firstReduction() {
    for (int sweep = 0; sweep < MAX_FIRST_SWEEPS; ++sweep) {
      l_.lll(1, 0, 0);
      if (l_.sweepSkipped == 0 || l_.sweepStopped) return;
    }
  }

  void enterMode() {
    if (run_.target == nullptr) {
      firstReduction();
    } else {
      l_.gsoByFull(1, 0, false);
      run_.targetCoords.resizeZero(l_.rank);
      targetCoordinates(run_.targetCoords, *run_.target, 1, 0);
    }
    run_.startRank = l_.rank;
    run_.lastLine = now();
  }

  // Moves on to the next block and sets its stages up.
  void openBlock() {
    if (++block_.j == l_.rank) {
      block_.j = 1;
      run_.wrapped = true;
    }
    block_.k = std::min(block_.j + run_.beta - 1, l_.rank);
    block_.h = std::min(block_.k + 1, l_.rank);
    block_.end = block_.j;
    if (orthogonaliseBlock()) {
      while (block_.end <= block_.k && l_.hasStatus(block_.end, STATUS_GSO)) ++block_.end;
    }
    setUpStages();
    l_.tree.loadCoefficients(l_.mu, block_.j, block_.k);
    l_.tree.computeFactors(l_.params.eprune.get(), block_.j, block_.k, run_.beta);
    l_.tree.setBound(l_.enumBound, block_.j, block_.k);
  }

  // Marks the rows of the block whose Gram-Schmidt data stand; false where a row before the block is
  // dependent. In BKZ mode the rows before the block are right in value, marked or not: an insertion clears
  // all marks, and to compute those rows anew would cost more than the search of a small block.
  bool orthogonaliseBlock() {
    if (run_.target != nullptr) {
      // The sweep at the block's end may have moved vectors since the last block.
      l_.gsoByFull(1, block_.h, false);
      targetCoordinates(run_.targetCoords, *run_.target, 1, block_.h);
    }
    for (long i = 1; i < block_.j; ++i) {
      if (l_.status.data[i] == STATUS_DEPENDENT || (run_.target != nullptr && !l_.hasStatus(i, STATUS_FULL)))
        return false;
    }
    if (run_.target == nullptr) l_.updateGso(block_.j, block_.k);
    return true;
  }

  void setUpStages() {
    l_.enumCoeffs.resize(l_.rank, false);
    for (long i = block_.j; i <= block_.k; ++i) l_.enumCoeffs.data[i] = T(0);
    l_.tree.reset(block_.j, block_.k);
    TreeNode<F>* const nodes = l_.tree.nodes.data();
    if (run_.target == nullptr) {
      l_.enumBound = l_.bstarSq[block_.j];
      l_.tree.u.data()[block_.j] = F(1);
      l_.enumCoeffs[block_.j] = T(1);
      return;
    }
    // c starts as the squared distance of the target from the projected span, and so that it stays one on the
    // way up, every stage of the block starts with the target in its centre.
    for (long t = block_.h; t >= block_.j; --t) {
      const F coordinate = run_.targetCoords[t];
      nodes[t].c = coordinate * coordinate * l_.bstarSq[t] + nodes[t + 1].c;
      if (t <= block_.k) nodes[t].y -= coordinate;
    }
    l_.enumBound = nodes[block_.j].c;
  }

  // The hourly line, and whether the block has had its time. The operator may change both parameters
  // meanwhile.
  [[gnu::noinline]] bool blockEnded(long t) {
    const long time = now();
    if (time - run_.lastLine >= STATUS_INTERVAL && l_.verb() > 1) {
      progressLine(true, std::to_string(t) + "/" + std::to_string(block_.k) + " ");
      run_.lastLine = time;
    }
    const long btime = l_.params.btime.get();
    return btime != 0 && time - block_.start >= btime;
  }

  // The walk. The clock is read once per node; nothing else in a node costs a call. Inlined into its caller
  // it would keep its sums in memory, and a node would take half as long again.
  [[gnu::noinline]] void searchBlock() {
    assert(block_.j >= 1 && block_.j <= block_.k && block_.k <= l_.rank && block_.end <= block_.k + 1);
    const F* const norms = l_.bstarSq.data;
    const F* const shift = run_.shift();
    block_.start = now();
    long t = block_.j;
    long s = block_.j;
    while (t < block_.end && !blockEnded(t)) {
      if (!l_.tree.enter(t, norms)) {
        if (++t > block_.k) break;
        if (s < t) s = t;
        l_.tree.enumNext(t, s);
      } else if (t == block_.j) {
        newMinimum();
        l_.tree.enumNext(t, s);
      } else {
        l_.tree.descend(t, s, shift);
        --t;
      }
    }
    writeBackStages();
  }

  // The stages in T again, for whoever reads or exchanges them next.
  void writeBackStages() const {
    for (long t = block_.j; t <= block_.k; ++t) {
      const TreeNode<F>& node = l_.tree.nodes.data()[t];
      Stage<T, F>& stage = l_.stages[t];
      stage.c = node.c;
      stage.y = node.y;
      stage.v = wholeNumber<T>(node.v);
      stage.u = wholeNumber<T>(l_.tree.u.data()[t]);
      stage.delta = wholeNumber<T>(node.delta);
      stage.sign = wholeNumber<T>(node.sign);
    }
  }

  // The vector is a candidate solution at once, inserted or not.
  void newMinimum() {
    writeBackStages();
    for (long i = block_.j; i <= block_.k; ++i) l_.enumCoeffs.data[i] = l_.stages.data[i].u;
    composeAndCheck(l_.enumCoeffs, block_.j, block_.k);
    l_.enumBound = l_.tree.nodes.data()[block_.j].c;
    l_.tree.setBound(l_.enumBound, block_.j, block_.k);
  }

  // True when a vector better than the block's first entered the basis. The zero vector, which is closest to
  // a target that is near 0, and a true multiple of a basis vector are no finds.
  bool insertFind() {
    if (!(l_.enumBound < (F(1) - EPS) * l_.bstarSq[block_.j])) return false;
    long i = block_.j;
    while (i <= block_.k && isExactZero(l_.enumCoeffs.data[i])) ++i;
    if (i > block_.k) return false;
    const int trivial = l_.trivialInsert(l_.enumCoeffs, block_.j, block_.k);
    if (trivial != 0) return trivial > 0;
    l_.insertCombination(l_.enumCoeffs, block_.j, block_.k);
    ++statisticsOf<T>().nontrivialBasisExtensions;
    return true;
  }

  // False when nothing was gained after all: rounding noise, and in CVP mode a vector that is close but no
  // shorter, must not insert for ever. Each gain lowers bstarSq at the first position that changed, so
  // there is an end.
  bool repairAfterFind() {
    const F before = l_.bstarSq[block_.j];
    long p = block_.j;
    if (run_.target == nullptr) {
      p = l_.lll(block_.j, block_.h, l_.rank);
    } else {
      l_.gsoByFull(block_.j, block_.h, false);
      targetCoordinates(run_.targetCoords, *run_.target, block_.j, block_.h);
    }
    if (p >= block_.j && !(l_.bstarSq[block_.j] < before)) return false;
    if (p < block_.j) block_.j = p - 1;
    run_.unchanged = 0;
    run_.wrapped = false;
    return true;
  }

  // A block without a find: the position behind it joins the reduced part, once per round.
  void passBlock() {
    if (!run_.wrapped) {
      const long p = l_.lll(block_.h, block_.h, l_.rank);
      if (p < block_.j) block_.j = p - 1;
    }
    ++run_.unchanged;
  }
};

}  // namespace

template <class T, class F>
void Lattice<T, F>::enumerate(const Vector<T>* target) {
  Enumeration<T, F>(*this, target).run();
}

template <class T, class F>
void Lattice<T, F>::reduce() {
  if (params.eenum.get())
    enumerate(nullptr);
  else
    lll(1, 0, 0);
}

#define LATBOX_INSTANTIATE(T)                                   \
  template void Lattice<T, dbl_t>::enumerate(const Vector<T>*); \
  template void Lattice<T, dbl_t>::reduce();
LATBOX_INSTANTIATE(dbl_t)
LATBOX_INSTANTIATE(QQ)

}  // namespace latbox
