// From decimal digits and fractions to integers: variables are scaled by their digits, rows by the
// denominators of their coefficients.

#include "lib/exceptions.h"
#include "lib/failure.h"
#include "model/tessik.h"
#include "numbers/tolerance.h"

namespace latbox {

namespace {

// More digits than this ask for numbers that nobody writes down and no machine should form.
constexpr long MAX_DIGITS = 10000;

// A product or quotient that is a whole number by its definition may be off by some units in the last place
// in dbl_t; rounding up from there would be off by one. No value that a file can state is moved. The sum with
// zero turns the negative zero of floating point into zero.
template <class T>
T roundUp(const T& x) {
  return isInfinite(x) ? x : ceil(withoutRounding(x)) + T(0);
}
template <class T>
T roundDown(const T& x) {
  return isInfinite(x) ? x : floor(withoutRounding(x)) + T(0);
}

template <class T>
void scale(T& x, const T& factor, const char* message) {
  if (isInfinite(x)) return;
  x = withoutRounding(T(x * factor));
  checkPrecision(x, message);
}

template <class T>
void scaleRow(Vector<T>& row, const T& factor, const char* message) {
  for (long j = 1; j <= row.MN; ++j) scale(row[j], factor, message);
}

template <class T>
void joinDenominator(T& factor, const T& x, const char* message) {
  if (isInfinite(x)) return;
  factor = lcm(factor, denominatorOf(x));
  checkPrecision(factor, message);
}

template <class T>
void joinDenominators(T& factor, const Vector<T>& row, const char* message) {
  for (long j = 1; j <= row.MN; ++j) joinDenominator(factor, row[j], message);
}

// A quotient of dbl_t that the system would take for zero has lost its digits. The exact type has none to
// lose.
void checkQuotient(dbl_t x) {
  if (x != 0 && isZero(x)) throw PrecisionException("data overflow");
}
void checkQuotient(const QQ&) {}

template <class T>
void divideColumn(Matrix<T>& matrix, long j, const T& divisor) {
  for (long i = 1; i <= matrix.M; ++i) {
    matrix[i][j] /= divisor;
    checkQuotient(matrix[i][j]);
  }
}

// 10^digits. A digit is a step of ten: a fraction of one would make the coefficients irrational, and neither
// number type could hold them.
template <class T>
T digitScale(const T& digits) {
  if (isInfinite(digits) || !isInteger(digits) || digits > T(MAX_DIGITS))
    fail("dx has to be a whole number <= " + std::to_string(MAX_DIGITS) + " in each of its components");
  const T scale = powerOfTen<T>(static_cast<long>(toDouble(digits)));
  // Infinities pass the gate, for bounds may be infinite; here it is the range of the type that ends.
  if (isInfinite(scale)) throw PrecisionException("data overflow");
  checkPrecision(scale, "data overflow");
  return scale;
}

template <class T>
void applyDigitsOf(Tessik<T>& p, long i) {
  const T s = digitScale(p.dx[i]);
  scale(p.rx[i], s, "rx overflow");
  scale(p.lx[i], s, "lx overflow");
  divideColumn(p.At, i, s);
  divideColumn(p.Ag, i, s);
  divideColumn(p.Au, i, s);
}

// One factor for all targets: their sum is what is minimised.
template <class T>
T targetFactor(const Tessik<T>& p) {
  T factor = T(1);
  for (long i = 1; i <= p.At.M; ++i) {
    joinDenominator(factor, p.dt[i], "iMFFT overflow");
    joinDenominator(factor, p.kt[i], "iMFFT overflow");
    joinDenominators(factor, p.At[i], "iMFFT overflow");
  }
  return factor;
}

template <class T>
void scaleThreshold(Tessik<T>& p, long i, const T& factor) {
  scale(p.kt[i], factor, "kt iMFFT overflow");
  if (isPlusInfinity(p.dt[i])) p.kt[i] = roundDown(p.kt[i]);
  if (isMinusInfinity(p.dt[i])) p.kt[i] = roundUp(p.kt[i]);
}

template <class T>
void makeTargetsIntegral(Tessik<T>& p) {
  const T factor = targetFactor(p);
  if (!(factor > T(1))) return;
  for (long i = 1; i <= p.At.M; ++i) {
    scaleRow(p.At[i], factor, "At iMFFT overflow");
    scale(p.dt[i], factor, "dt iMFFT overflow");
    scaleThreshold(p, i, factor);
  }
  if (!p.tu) return;
  scale(p.ltu(), factor, "ltu iMFFT overflow");
  scale(p.rtu(), factor, "rtu iMFFT overflow");
}

template <class T>
void makeEquationIntegral(Tessik<T>& p, long i) {
  T factor = T(1);
  joinDenominator(factor, p.bg[i], "iMF overflow2");
  joinDenominators(factor, p.Ag[i], "iMF overflow2");
  if (!(factor > T(1))) return;
  scaleRow(p.Ag[i], factor, "Ag iMF overflow");
  scale(p.bg[i], factor, "bg iMF overflow");
}

template <class T>
void makeInequationIntegral(Tessik<T>& p, long i) {
  T factor = T(1);
  joinDenominators(factor, p.Au[i], "iMF overflow3");
  if (factor > T(1)) {
    scaleRow(p.Au[i], factor, "Au iMF overflow");
    scale(p.lu[i], factor, "lu iMF overflow");
    scale(p.ru[i], factor, "ru iMF overflow");
  }
  p.lu[i] = roundUp(p.lu[i]);
  p.ru[i] = roundDown(p.ru[i]);
}

}  // namespace

template <class T>
void Tessik<T>::applyDigits() {
  for (long i = 1; i <= n(); ++i)
    if (dx[i] > T(0)) applyDigitsOf(*this, i);
  for (long i = 1; i <= n(); ++i) {
    rx[i] = roundDown(rx[i]);
    lx[i] = roundUp(lx[i]);
    if (lx[i] > rx[i]) fail("Unfulfillable inequality detected --> NO SOLUTIONS!");
  }
}

template <class T>
void Tessik<T>::makeIntegral() {
  makeTargetsIntegral(*this);
  for (long i = 1; i <= Ag.M; ++i) makeEquationIntegral(*this, i);
  for (long i = 1; i <= Au.M; ++i) makeInequationIntegral(*this, i);
}

#define LATBOX_INSTANTIATE(T)             \
  template void Tessik<T>::applyDigits(); \
  template void Tessik<T>::makeIntegral();
LATBOX_INSTANTIATE(dbl_t)
LATBOX_INSTANTIATE(QQ)

}  // namespace latbox
