// Block enumeration after Schnorr and Euchner (Lattice basis reduction: improved practical algorithms and
// solving subset sum problems, 1994), in two modes with one body: BKZ without a target, CVP with one.
#include <algorithm>
#include <string>

#include "driver/statistics.h"
#include "lattice/lattice.h"
#include "lib/os/clock.h"
#include "lib/progress.h"
#include "numbers/number.h"

namespace latbox {
namespace {

constexpr long STATUS_INTERVAL = 3600;  // seconds between two lines that tell where a long block stands
constexpr int MAX_FIRST_SWEEPS = 64;  // a sweep that always skips must not keep the enumeration from starting

std::size_t index(long t) {
  return static_cast<std::size_t>(t);
}

}  // namespace

// One run of `enumerate`, and its present block.
template <class T, class F>
struct Lattice<T, F>::Block {
  const Vector<T>* target;  // null in BKZ mode
  Vector<F> targetCoords;   // of the target with respect to Bstar
  long beta = 0;            // effective block size
  long startRank = 0;       // rank at the start of the run
  long j = 0;               // first position of the block
  long k = 0;               // last position
  long h = 0;               // where the repair ends
  long unchanged = 0;       // blocks in a row that gave nothing
  bool wrapped = false;     // j has wrapped around since the last change
  long lastLine = 0;        // time of the last status line
};

template <class T, class F>
void Lattice<T, F>::targetCoordinates(Vector<F>& out, const Vector<T>& target, long first, long last) const {
  if (last == 0) last = rank;
  for (long i = first; i <= last; ++i) {
    F sum = F(0);
    for (long p = 1; p <= dim; ++p) sum += Bstar.rows[i].data[p] * toDouble(target.data[p]);
    out[i] = sum / bstarSq[i];
  }
}

template <class T, class F>
void Lattice<T, F>::composeAndCheck(const Vector<T>& coeffs, long first, long last) {
  combineIntoScratch(coeffs, first, last);
  checkSolution(Vector<T>(B.rows[0]), true, NOW, false, Membership::byConstruction);
}

// One sweep is no fixed point: while a sweep had to skip positions it is repeated, since enumeration of an
// unreduced basis visits thousands of nodes where a few suffice.
template <class T, class F>
void Lattice<T, F>::firstReduction() {
  for (int sweep = 0; sweep < MAX_FIRST_SWEEPS; ++sweep) {
    lll(1, 0, 0);
    if (sweepSkipped == 0 || sweepStopped) return;
  }
}

template <class T, class F>
void Lattice<T, F>::enumerate(const Vector<T>* target) {
  Block run{};
  run.target = target;
  run.beta = std::min(params.beta.get(), rank);
  const char* mode = target == nullptr ? "BKZ enumeration ( beta = " : "CVP enumeration ( beta = ";
  const ProgressScope scope(verb() > 1, mode + std::to_string(run.beta) + ", deep = " +
                                            std::to_string(params.deep.get() ? 1 : 0) + " ) ... ");
  if (rank == 0) return;
  if (target == nullptr) {
    firstReduction();
  } else {
    gsoByFull(1, 0, false);
    run.targetCoords.resizeZero(rank);
    targetCoordinates(run.targetCoords, *target, 1, 0);
  }
  run.startRank = rank;
  run.lastLine = now();
  if (run.beta <= 2 || rank <= 1) return;
  tree.reserve(rank);
  do {
    openBlock(run);
    searchBlock(run);
    const bool found = enumBound < (F(1) - EPS) * bstarSq[run.j];
    if (found) insertFind(run);
    // A block that is the whole lattice is searched once, whatever the outcome.
    if (run.startRank == run.beta) return;
    if (found) {
      repairAfterFind(run);
    } else {
      passBlock(run);
    }
  } while (run.unchanged < rank - 1);
}

// Moves on to the next block and sets its stages up.
template <class T, class F>
void Lattice<T, F>::openBlock(Block& b) {
  if (++b.j == rank) {
    b.j = 1;
    b.wrapped = true;
  }
  b.k = std::min(b.j + b.beta - 1, rank);
  b.h = std::min(b.k + 1, rank);
  // The Gram-Schmidt data of the block must stand; the sweeps have left them for all but dependent rows.
  if (b.target == nullptr) updateGso(1, b.k);
  enumCoeffs.resize(rank, false);
  for (long i = b.j; i <= b.k; ++i) enumCoeffs.data[i] = T(0);
  TreeNode<F>* const nodes = tree.nodes.data();
  // In CVP mode every level above the block counts, so that c starts as the squared distance of the target
  // from the projected span.
  const long top = b.target == nullptr ? b.k + 1 : rank + 1;
  for (long t = top; t >= b.j; --t) {
    nodes[t] = TreeNode<F>();
    if (b.target != nullptr && t <= rank) {
      nodes[t].c = b.targetCoords[t] * b.targetCoords[t] * bstarSq[t] + nodes[t + 1].c;
    }
  }
  if (b.target == nullptr) {
    enumBound = bstarSq[b.j];
    nodes[b.j].u = F(1);
    enumCoeffs[b.j] = T(1);
  } else {
    enumBound = nodes[b.j].c;
    nodes[b.j].y -= b.targetCoords[b.j];
  }
  tree.loadCoefficients(mu, b.j, b.k);
  tree.computeFactors(params.eprune.get(), b.j, b.k, b.beta);
  tree.setBound(enumBound, b.j, b.k);
}

// The walk. The clock is read once per node; nothing else in a node costs a call.
template <class T, class F>
void Lattice<T, F>::searchBlock(Block& b) {
  TreeNode<F>* const nodes = tree.nodes.data();
  const F* const limit = tree.limit.data();
  const F* const norms = bstarSq.data;
  const F* const shift = b.target == nullptr ? nullptr : b.targetCoords.data;
  const long blockStart = now();
  long t = b.j;
  long s = b.j;
  while (t <= b.k) {
    if (status.data[t] == STATUS_DEPENDENT) break;
    const long time = now();
    if (time - b.lastLine >= STATUS_INTERVAL && verb() > 1) {
      progressLine(true, std::to_string(t) + "/" + std::to_string(b.k) + " ");
      b.lastLine = time;
    }
    const long btime = params.btime.get();
    if (btime != 0 && time - blockStart >= btime) break;
    TreeNode<F>& node = nodes[t];
    const F offset = node.u + node.y;
    node.c = offset * offset * norms[t] + nodes[t + 1].c;
    if (!(node.c < limit[t])) {
      if (++t > b.k) break;
      if (s < t) s = t;
      tree.enumNext(t, s);
    } else if (t == b.j) {
      newMinimum(b);
      tree.enumNext(t, s);
    } else {
      // Down a stage. The sum runs upward from t, so that results repeat whatever the stages above hold.
      const F* const row = tree.muT.data() + (t - 1) * tree.stride;
      F y = F(0);
      for (long i = t; i <= s; ++i) y += nodes[i].u * row[i];
      TreeNode<F>& next = nodes[--t];
      next.v = roundNearest(-y);
      next.delta = F(0);
      next.sign = next.v <= -y ? F(1) : F(-1);
      next.u = next.v;
      // v is rounded from the lattice part only: the target is not folded into the rounding, by design.
      next.y = shift == nullptr ? y : y - shift[t];
    }
  }
  writeBackStages(b);
}

// The stages as the design shows them, for whoever reads or exchanges them next.
template <class T, class F>
void Lattice<T, F>::writeBackStages(const Block& b) {
  for (long t = b.j; t <= b.k; ++t) {
    const TreeNode<F>& node = tree.nodes[index(t)];
    Stage<T, F>& stage = stages[t];
    stage.c = node.c;
    stage.y = node.y;
    stage.v = fromDouble<T>(node.v);
    stage.u = fromDouble<T>(node.u);
    stage.delta = fromDouble<T>(node.delta);
    stage.sign = fromDouble<T>(node.sign);
  }
}

// The vector is a candidate solution at once, inserted or not.
template <class T, class F>
void Lattice<T, F>::newMinimum(Block& b) {
  writeBackStages(b);
  for (long i = b.j; i <= b.k; ++i) enumCoeffs.data[i] = stages.data[i].u;
  composeAndCheck(enumCoeffs, b.j, b.k);
  enumBound = tree.nodes[index(b.j)].c;
  tree.setBound(enumBound, b.j, b.k);
}

template <class T, class F>
void Lattice<T, F>::insertFind(Block& b) {
  if (trivialInsert(enumCoeffs, b.j, b.k) != 0) return;
  insertCombination(enumCoeffs, b.j, b.k);
  ++statisticsOf<T>().nontrivialBasisExtensions;
}

template <class T, class F>
void Lattice<T, F>::repairAfterFind(Block& b) {
  if (b.target == nullptr) {
    const long p = lll(b.j, b.h, rank);
    if (p < b.j) b.j = p - 1;
  } else {
    gsoByFull(b.j, b.h, false);
    targetCoordinates(b.targetCoords, *b.target, b.j, b.h);
  }
  b.unchanged = 0;
  b.wrapped = false;
}

// A block without a find: the position behind it joins the reduced part, once per round.
template <class T, class F>
void Lattice<T, F>::passBlock(Block& b) {
  if (!b.wrapped) {
    const long p = lll(b.h, b.h, rank);
    if (p < b.j) b.j = p - 1;
  }
  ++b.unchanged;
}

#define LATBOX_INSTANTIATE(T) template void Lattice<T, dbl_t>::enumerate(const Vector<T>*);
LATBOX_INSTANTIATE(dbl_t)
LATBOX_INSTANTIATE(QQ)

}  // namespace latbox
