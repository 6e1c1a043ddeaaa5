// The program model: its members as a whole, the norms of target values, the line that shows its size.
#include "model/tessik.h"

#include "lib/failure.h"
#include "lib/progress.h"
#include "numbers/number.h"

namespace latbox {

std::ostream& operator<<(std::ostream& stream, FreedomDegree degree) {
  return stream << static_cast<unsigned short>(degree);
}

std::istream& operator>>(std::istream& stream, FreedomDegree& degree) {
  unsigned short value = 0;
  if (!(stream >> value)) return stream;
  if (value > static_cast<unsigned short>(FreedomDegree::free))
    stream.setstate(std::ios::failbit);
  else
    degree = static_cast<FreedomDegree>(value);
  return stream;
}

template <class T>
Tessik<T>::Tessik() : lrtu(-infinity<T>(), infinity<T>()) {}

template <class T>
void Tessik<T>::reset(bool keepFileNames) {
  Tessik empty;
  if (keepFileNames) {
    empty.optFile = optFile;
    empty.solFile = solFile;
  }
  // The base part alone: a lattice that resets its program keeps what is its own.
  Tessik::operator=(empty);
}

template <class T>
FreedomDegree Tessik<T>::freedomOf(const T& l, const T& r) {
  const int noLower = isMinusInfinity(l) ? 1 : 0;
  const int noUpper = isPlusInfinity(r) ? 2 : 0;
  return static_cast<FreedomDegree>(noLower + noUpper);
}

template <class T>
void Tessik<T>::appendComponent(const T& l, const T& r, const T& d) {
  fx.append(freedomOf(l, r));
  lx.append(l);
  rx.append(r);
  dx.append(d);
}

template <class T>
T Tessik<T>::targetSign(long i) const {
  return isPlusInfinity(dt[i]) ? T(-1) : T(1);
}

template <class T>
T Tessik<T>::maxNorm(const Vector<T>& v) {
  T largest = T(0);
  for (long i = 1; i <= v.MN; ++i) {
    const T size = abs(v[i]);
    if (size > largest) largest = size;
  }
  return largest;
}

template <class T>
T Tessik<T>::targetNorm(const Vector<T>& t) const {
  for (long i = 1; i <= dt.MN; ++i)
    if (!isInfinite(dt[i])) fail("This should not be the case anymore!");
  T sum = T(0);
  for (long i = 1; i <= t.MN; ++i) {
    sum += abs(t[i]);
    checkPrecision(sum, "sum overflow");
  }
  return sum;
}

namespace {

// The row of Ag whose residual counts for place i, one of the last places among the targets. That is row i as
// it stands; only where Ag is too short is it the deviation's own equation. With the own equation throughout,
// slack norms would differ from those in the files of earlier runs, by which solutions are sorted, and runs
// with `snorm` would end elsewhere. The k-th deviation, from 0, has gone to place dt.MN - k, or has stayed
// where it was and counts there.
template <class T>
long residualRow(const Tessik<T>& program, long i) {
  if (i <= program.Ag.M) return i;
  const long firstDeviation = program.Ag.M - program.deviationCount / 2 + 1;
  return firstDeviation + program.dt.MN - i;
}

// Ag[row] x - bg[row] over the user's variables.
template <class T>
T residual(const Tessik<T>& program, long row, const Vector<T>& x) {
  const long users = x.MN - program.slackCount - program.deviationCount;
  T sum = negated(program.bg[row]);
  for (long j = 1; j <= users; ++j) {
    sum += program.Ag[row][j] * x[j];
    checkPrecision(sum, "sum overflow");
  }
  return sum;
}

}  // namespace

template <class T>
SerializablePair<T, T> Tessik<T>::targetNorms(const Vector<T>& t, const Vector<T>& x) const {
  SerializablePair<T, T> norms(T(0), T(0));
  const long directions = dt.MN - deviationCount / 2;
  for (long i = 1; i <= dt.MN; ++i) {
    if (isInfinite(dt[i])) {
      norms.left += targetSign(i) * t[i];
    } else {
      if (prepared) fail("preparation inconsistency");
      const T distance = abs(T(t[i] - dt[i]));
      norms.left += distance;
      norms.right += distance;
    }
    if (prepared && i > directions) norms.right += abs(residual(*this, residualRow(*this, i), x));
    checkPrecision(norms.left, "sum overflow");
    checkPrecision(norms.right, "sum overflow");
  }
  return norms;
}

template <class T>
void Tessik<T>::printProgram(bool verbose) const {
  // The plus before deviationCount stays: the line is an interface, and nothing computes with the figure.
  progressLine(verbose, "Optimization program: Targets = " + std::to_string(At.M) +
                            ", Equations = " + std::to_string(Ag.M - slackCount - deviationCount / 2) +
                            ", Inequations = " + std::to_string(slackCount + Au.M) +
                            ", Variables = " + std::to_string(rx.MN - slackCount + deviationCount));
}

#define LATBOX_INSTANTIATE(T)                                                                       \
  template Tessik<T>::Tessik();                                                                     \
  template void Tessik<T>::reset(bool);                                                             \
  template FreedomDegree Tessik<T>::freedomOf(const T&, const T&);                                  \
  template void Tessik<T>::appendComponent(const T&, const T&, const T&);                           \
  template T Tessik<T>::targetSign(long) const;                                                     \
  template T Tessik<T>::maxNorm(const Vector<T>&);                                                  \
  template T Tessik<T>::targetNorm(const Vector<T>&) const;                                         \
  template SerializablePair<T, T> Tessik<T>::targetNorms(const Vector<T>&, const Vector<T>&) const; \
  template void Tessik<T>::printProgram(bool) const;
LATBOX_INSTANTIATE(dbl_t)
LATBOX_INSTANTIATE(QQ)

}  // namespace latbox
