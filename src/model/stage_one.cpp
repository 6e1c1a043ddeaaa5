// Stage one of the preparation, on the program as read: every inequation two-sided and finite, every target a
// direction. What it leaves is what solutions are judged by.
#include <algorithm>

#include "lib/failure.h"
#include "lib/progress.h"
#include "model/columns.h"
#include "model/tessik.h"

namespace latbox {

namespace {

// Takes inequation i out; the ones behind it move up.
template <class T>
void removeInequation(Tessik<T>& p, long i) {
  if (i < 0) fail("Invalid row index!");
  p.Au.removeComponent(i);
  p.lu.removeComponent(i);
  p.ru.removeComponent(i);
}

// Ag and bg gain an equation; an Ag without rows takes its width from the row.
template <class T>
void appendEquation(Tessik<T>& p, Vector<T> row, const T& side) {
  if (p.Ag.M == 0) p.Ag.resize(0, row.MN);
  p.Ag.append(std::move(row));
  p.bg.append(side);
}

// Inequation i becomes an equation. It takes the place of the equation with its own number i, and the new
// last row stays zero; only where i lies beyond the grown Ag is the last row used. This is what such a
// program means: with both rows kept it would have fewer points, and files of earlier runs would not fit it.
// latbox-check warns of it.
template <class T>
void moveToEquations(Tessik<T>& p, long i) {
  appendEquation(p, Vector<T>::zeros(p.Au.N), T(0));
  const long place = std::min(i, p.Ag.M);
  p.Ag[place] = std::move(p.Au[i]);
  p.bg[place] = p.lu[i];
}

// a x <= r, with nothing below, becomes -r <= -a x.
template <class T>
void turnRow(Tessik<T>& p, long i) {
  p.lu[i] = negated(p.ru[i]);
  p.ru[i] = infinity<T>();
  for (long j = 1; j <= p.Au.N; ++j) p.Au[i][j] = negated(p.Au[i][j]);
}

// The last inequation takes the place of inequation i.
template <class T>
void replaceByLast(Tessik<T>& p, long i) {
  const long last = p.Au.M;
  p.Au.swapRows(i, last);
  p.lu[i] = p.lu[last];
  p.ru[i] = p.ru[last];
  p.Au.resize(last - 1, p.Au.N);
  p.lu.resize(last - 1, false);
  p.ru.resize(last - 1, false);
}

// l <= a x becomes a x - s = l with a slack s >= 0.
template <class T>
void insertSlack(Tessik<T>& p, long i) {
  appendEquation(p, p.Au[i], p.lu[i]);
  replaceByLast(p, i);
  if (std::max({p.Au.N, p.Ag.N, p.At.N}) != p.rx.MN) fail("Implement the insert at sdim position case!");
  widen(p.Au, p.Au.N + 1);
  widen(p.Ag, p.Ag.N + 1);
  p.Ag[p.Ag.M][p.Ag.N] = T(-1);
  p.appendComponent(T(0), infinity<T>(), T(0));
  ++p.slackCount;
}

// The slacks did not widen the targets; from here on a target row speaks of all variables.
template <class T>
void padTargets(Tessik<T>& p) {
  if (p.At.M > 0 && p.At.N < p.rx.MN) widen(p.At, p.rx.MN);
}

// A finite threshold ends as -inf: it is formed from the direction that has just replaced the asked value, so
// thresholds of finite targets bound nothing. Formed from the asked value they would cut off points that such
// a program has.
template <class T>
void replaceThreshold(Tessik<T>& p, long i) {
  if (isInfinite(p.kt[i])) return;
  const T above = p.dt[i] - p.kt[i];
  const T below = p.kt[i] - p.dt[i];
  p.kt[i] = -std::max(above, below);
}

// At[i] x asked for dt[i] becomes the equation At[i] x + p - q = dt[i] and the minimisation of p + q.
template <class T>
void insertDeviation(Tessik<T>& p, long i) {
  appendEquation(p, p.At[i], p.dt[i]);
  const long columns = p.Ag.N + 2;
  widen(p.Ag, columns);
  p.Ag[p.Ag.M][columns - 1] = T(1);
  p.Ag[p.Ag.M][columns] = T(-1);
  widen(p.At, columns);
  p.dt[i] = -infinity<T>();
  replaceThreshold(p, i);
  p.At[i].setZero();
  p.At[i][columns - 1] = T(1);
  p.At[i][columns] = T(1);
  if (p.Au.M > 0) widen(p.Au, columns);
  p.appendComponent(T(0), infinity<T>(), T(0));
  p.appendComponent(T(0), infinity<T>(), T(0));
  p.deviationCount += 2;
}

template <class T>
void swapTargets(Tessik<T>& p, long i, long j) {
  p.At.swapRows(i, j);
  p.dt.swap(i, j);
  p.kt.swap(i, j);
}

}  // namespace

template <class T>
void Tessik<T>::removeUselessInequations(bool verbose) {
  for (long i = 1; i <= Au.M;) {
    if (!isMinusInfinity(lu[i]) || !isPlusInfinity(ru[i])) {
      ++i;
      continue;
    }
    removeInequation(*this, i);
    progressLine(verbose, "Useless inequation (-inf <= ... <= inf) detected");
  }
}

template <class T>
void Tessik<T>::transferFakeInequations(bool verbose) {
  for (long i = 1; i <= Au.M;) {
    // Equal infinities have no difference, so equality comes first.
    if (lu[i] != ru[i] && !isZero(T(lu[i] - ru[i]))) {
      ++i;
      continue;
    }
    if (isInfinite(lu[i])) fail("Unfulfillable infinite inequation detected --> NO SOLUTIONS!");
    moveToEquations(*this, i);
    removeInequation(*this, i);
    progressLine(verbose, "Fake inequation detected and transfered");
  }
}

template <class T>
void Tessik<T>::insertSlacks() {
  slackCount = 0;
  for (long i = 1; i <= Au.M;) {
    if (isMinusInfinity(lu[i])) turnRow(*this, i);
    if (isPlusInfinity(ru[i]))
      insertSlack(*this, i);  // another row stands at i now
    else
      ++i;
  }
}

template <class T>
void Tessik<T>::insertDeviations() {
  deviationCount = 0;
  for (long i = 1; i <= dt.MN;) {
    if (isInfinite(dt[i])) {
      ++i;
      continue;
    }
    insertDeviation(*this, i);
    // Deviation targets gather at the end, except that a target whose number meets the count stays.
    const long k = deviationCount / 2 - 1;
    if (k != i)
      swapTargets(*this, i, dt.MN - k);
    else
      ++i;
  }
}

template <class T>
void Tessik<T>::computeAtu() {
  atu.resizeZero(At.N);
  for (long i = 1; i <= At.M; ++i) {
    const T sign = targetSign(i);
    for (long j = 1; j <= At.N; ++j) {
      atu[j] += sign * At[i][j];
      checkPrecision(atu[j], "atu overflow");
    }
  }
}

template <class T>
void Tessik<T>::prepareStageOne(bool full, bool verbose) {
  removeUselessInequations(verbose);
  transferFakeInequations(verbose);
  insertSlacks();
  padTargets(*this);
  insertDeviations();
  computeAtu();
  if (full) {
    applyThresholds();
    boundTargetByVariables();
  }
  prepared = true;
}

#define LATBOX_INSTANTIATE(T)                              \
  template void Tessik<T>::removeUselessInequations(bool); \
  template void Tessik<T>::transferFakeInequations(bool);  \
  template void Tessik<T>::insertSlacks();                 \
  template void Tessik<T>::insertDeviations();             \
  template void Tessik<T>::computeAtu();                   \
  template void Tessik<T>::prepareStageOne(bool, bool);
LATBOX_INSTANTIATE(dbl_t)
LATBOX_INSTANTIATE(QQ)

}  // namespace latbox
