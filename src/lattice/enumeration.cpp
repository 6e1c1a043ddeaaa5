// Block enumeration after Schnorr and Euchner (Lattice basis reduction: improved practical algorithms and
// solving subset sum problems, 1994), in two modes with one body: BKZ without a target, CVP with one.
#include <algorithm>
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

}  // namespace

// One run of `enumerate`, and its present block.
template <class T, class F>
struct Lattice<T, F>::Block {
  const Vector<T>* target;  // null in BKZ mode
  Vector<F> targetCoords;   // of the target with respect to the Gram-Schmidt vectors
  long beta = 0;            // effective block size
  long startRank = 0;       // rank at the start of the run
  long j = 0;               // first position of the block
  long k = 0;               // last position
  long h = 0;               // where the repair ends
  long end = 0;             // k + 1, or the first dependent position: the search stops there
  long unchanged = 0;       // blocks in a row that gave nothing
  bool wrapped = false;     // j has wrapped around since the last change
  long start = 0;           // time at which the search of the block began
  long lastLine = 0;        // time of the last status line

  const F* shift() const { return target == nullptr ? nullptr : targetCoords.data; }
};

// The rows of Bstar have length one here, hence the factor |L[i][i]|, the length of the Gram-Schmidt vector.
// A dependent row has no orthogonal part and gives 0.
template <class T, class F>
void Lattice<T, F>::targetCoordinates(Vector<F>& out, const Vector<T>& target, long first, long last) const {
  if (last == 0) last = rank;
  for (long i = first; i <= last; ++i) {
    out[i] = F(0);
    if (!hasStatus(i, STATUS_FULL)) continue;
    F sum = F(0);
    for (long p = 1; p <= dim; ++p) sum += Bstar.rows[i].data[p] * toDouble(target.data[p]);
    out[i] = sum * std::fabs(lqL.rows[i].data[i]) / bstarSq[i];
  }
}

template <class T, class F>
void Lattice<T, F>::composeAndCheck(const Vector<T>& coeffs, long first, long last) {
  combineIntoScratch(coeffs, first, last);
  checkSolution(B.rows[0], true, NOW, false, Membership::byConstruction);
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
void Lattice<T, F>::enterMode(Block& run) {
  if (run.target == nullptr) {
    firstReduction();
  } else {
    gsoByFull(1, 0, false);
    run.targetCoords.resizeZero(rank);
    targetCoordinates(run.targetCoords, *run.target, 1, 0);
  }
  run.startRank = rank;
  run.lastLine = now();
}

template <class T, class F>
void Lattice<T, F>::enumerate(const Vector<T>* target) {
  Block run{};
  run.target = target;
  run.beta = std::min(params.beta.get(), rank);
  const char* mode = target == nullptr ? "BKZ enumeration ( beta = " : "CVP enumeration ( beta = ";
  const ProgressScope scope(verb() > 1, mode + std::to_string(run.beta) + ", deep = " +
                                            std::to_string(params.deep.get() ? 1 : 0) + " ) ... ");
  enterMode(run);
  if (run.beta <= 2 || rank <= 1) return;
  tree.reserve(rank);
  do {
    openBlock(run);
    searchBlock(run);
    const bool found = insertFind(run);
    // A block that is the whole lattice is searched once, whatever the outcome.
    if (run.startRank == run.beta) return;
    if (!found || !repairAfterFind(run)) passBlock(run);
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
  b.end = b.j;
  if (orthogonaliseBlock(b)) {
    while (b.end <= b.k && hasStatus(b.end, STATUS_GSO)) ++b.end;
  }
  setUpStages(b);
  tree.loadCoefficients(mu, b.j, b.k);
  tree.computeFactors(params.eprune.get(), b.j, b.k, b.beta);
  tree.setBound(enumBound, b.j, b.k);
}

// Marks the rows of the block whose Gram-Schmidt data stand; false where a row before the block is dependent.
// In BKZ mode the rows before the block are right in value, marked or not: an insertion clears all marks, and
// to compute those rows anew would cost more than the search of a small block.
template <class T, class F>
bool Lattice<T, F>::orthogonaliseBlock(Block& b) {
  if (b.target != nullptr) {
    // The sweep at the block's end may have moved vectors since the last block.
    gsoByFull(1, b.h, false);
    targetCoordinates(b.targetCoords, *b.target, 1, b.h);
  }
  for (long i = 1; i < b.j; ++i) {
    if (status.data[i] == STATUS_DEPENDENT || (b.target != nullptr && !hasStatus(i, STATUS_FULL)))
      return false;
  }
  if (b.target == nullptr) updateGso(b.j, b.k);
  return true;
}

template <class T, class F>
void Lattice<T, F>::setUpStages(Block& b) {
  enumCoeffs.resize(rank, false);
  for (long i = b.j; i <= b.k; ++i) enumCoeffs.data[i] = T(0);
  tree.reset(b.j, b.k);
  TreeNode<F>* const nodes = tree.nodes.data();
  if (b.target == nullptr) {
    enumBound = bstarSq[b.j];
    tree.u.data()[b.j] = F(1);
    enumCoeffs[b.j] = T(1);
    return;
  }
  // c starts as the squared distance of the target from the projected span, and so that it stays one on the
  // way up, every stage of the block starts with the target in its centre.
  for (long t = b.h; t >= b.j; --t) {
    const F coordinate = b.targetCoords[t];
    nodes[t].c = coordinate * coordinate * bstarSq[t] + nodes[t + 1].c;
    if (t <= b.k) nodes[t].y -= coordinate;
  }
  enumBound = nodes[b.j].c;
}

// The hourly line, and whether the block has had its time. The operator may change both parameters meanwhile.
template <class T, class F>
bool Lattice<T, F>::blockEnded(Block& b, long t) {
  const long time = now();
  if (time - b.lastLine >= STATUS_INTERVAL && verb() > 1) {
    progressLine(true, std::to_string(t) + "/" + std::to_string(b.k) + " ");
    b.lastLine = time;
  }
  const long btime = params.btime.get();
  return btime != 0 && time - b.start >= btime;
}

// The walk. The clock is read once per node; nothing else in a node costs a call.
template <class T, class F>
void Lattice<T, F>::searchBlock(Block& b) {
  const F* const norms = bstarSq.data;
  const F* const shift = b.shift();
  b.start = now();
  long t = b.j;
  long s = b.j;
  while (t < b.end && !blockEnded(b, t)) {
    if (!tree.enter(t, norms)) {
      if (++t > b.k) break;
      if (s < t) s = t;
      tree.enumNext(t, s);
    } else if (t == b.j) {
      newMinimum(b);
      tree.enumNext(t, s);
    } else {
      tree.descend(t, s, shift);
      --t;
    }
  }
  writeBackStages(b);
}

// The stages as the design shows them, for whoever reads or exchanges them next.
template <class T, class F>
void Lattice<T, F>::writeBackStages(const Block& b) {
  for (long t = b.j; t <= b.k; ++t) {
    const TreeNode<F>& node = tree.nodes.data()[t];
    Stage<T, F>& stage = stages[t];
    stage.c = node.c;
    stage.y = node.y;
    stage.v = wholeNumber<T>(node.v);
    stage.u = wholeNumber<T>(tree.u.data()[t]);
    stage.delta = wholeNumber<T>(node.delta);
    stage.sign = wholeNumber<T>(node.sign);
  }
}

// The vector is a candidate solution at once, inserted or not.
template <class T, class F>
void Lattice<T, F>::newMinimum(Block& b) {
  writeBackStages(b);
  for (long i = b.j; i <= b.k; ++i) enumCoeffs.data[i] = stages.data[i].u;
  composeAndCheck(enumCoeffs, b.j, b.k);
  enumBound = tree.nodes.data()[b.j].c;
  tree.setBound(enumBound, b.j, b.k);
}

// True when a vector better than the block's first entered the basis. The zero vector, which is closest to a
// target that is near 0, and a true multiple of a basis vector are no finds.
template <class T, class F>
bool Lattice<T, F>::insertFind(Block& b) {
  if (!(enumBound < (F(1) - EPS) * bstarSq[b.j])) return false;
  long i = b.j;
  while (i <= b.k && isExactZero(enumCoeffs.data[i])) ++i;
  if (i > b.k) return false;
  const int trivial = trivialInsert(enumCoeffs, b.j, b.k);
  if (trivial != 0) return trivial > 0;
  insertCombination(enumCoeffs, b.j, b.k);
  ++statisticsOf<T>().nontrivialBasisExtensions;
  return true;
}

// False when nothing was gained after all: rounding noise, and in CVP mode a vector that is close but no
// shorter, must not insert for ever. Each gain lowers bstarSq at the first position that changed, so there is
// an end.
template <class T, class F>
bool Lattice<T, F>::repairAfterFind(Block& b) {
  const F before = bstarSq[b.j];
  long p = b.j;
  if (b.target == nullptr) {
    p = lll(b.j, b.h, rank);
  } else {
    gsoByFull(b.j, b.h, false);
    targetCoordinates(b.targetCoords, *b.target, b.j, b.h);
  }
  if (p >= b.j && !(bstarSq[b.j] < before)) return false;
  if (p < b.j) b.j = p - 1;
  b.unchanged = 0;
  b.wrapped = false;
  return true;
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
