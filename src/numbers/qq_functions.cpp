// Logarithms, roots and powers of QQ, to a fixed number of digits.
#include "lib/failure.h"
#include "numbers/number.h"
#include "numbers/qq.h"

namespace latbox {

namespace {

// The digits that a logarithm keeps while it squares, and that a root starts with.
constexpr unsigned DIGITS = PRECISION_DIGITS;

// The value times its denominator, with its sign.
ZZ numeratorOf(const QQ& x) {
  return signedZaehler(x) + signedGanze(x) * x.nenner;
}

QQ log2OfFraction(const QQ& x) {
  return log2(numeratorOf(x)) - log2(x.nenner);
}

bool isOdd(const ZZ& n) {
  return n[1] % 2 != 0;
}

// Powers of coprime numbers are coprime, so that nothing is left to reduce.
QQ powWhole(QQ x, const ZZ& n) {
  x.normalize();
  const ZZ numerator = numeratorOf(x) ^ n;
  QQ result;
  result.setReduced(abs(numerator), x.nenner ^ n, numerator.sign);
  return result;
}

// One step of Newton's iteration for the n-th root of x. When y^(n-1) rounds to zero, there is no step from
// here: the iteration starts again from 1, with more digits each time, as it would come back otherwise.
QQ newtonStep(QQ& y, const QQ& x, const QQ& n, unsigned& digits, bool& restarted) {
  roundDigits(y, digits);
  QQ t = pow(y, n - qqOne());
  roundDigits(t, digits);
  if (t.isExactZero()) {
    if (restarted) digits *= 2;
    restarted = true;
    return qqOne();
  }
  return y - (t * y - x) / (t * n);
}

QQ newtonRoot(const QQ& x, const ZZ& degree) {
  const QQ n(degree);
  QQ y = (x + qqOne()) / n;
  unsigned digits = DIGITS;
  bool restarted = false;
  for (;;) {
    QQ next = newtonStep(y, x, n, digits, restarted);
    if (isZero(next - y)) {
      if (isZero(pow(next, n) - x)) return next;
      ++digits;
    }
    y = std::move(next);
  }
}

QQ powInfinite(const QQ& x) {
  const long order = QQ::compare(abs(x), qqOne());
  if (order < 0) return qqZero();
  if (order == 0) return x;
  return x.sign ? qqInfinity() : -qqInfinity();
}

// An infinite base with a finite exponent above zero.
QQ powOfInfinity(const QQ& x, const QQ& y) {
  if (y.isExactZero()) return qqOne();
  return x.sign || (y.isWhole() && !isOdd(y.ganze)) ? qqInfinity() : -qqInfinity();
}

}  // namespace

// The binary digit-by-digit logarithm: each squaring of the mantissa tells one more digit.
QQ log2(const ZZ& value) {
  if (value <= ZZ(0)) fail("log2(x), x <= 0 is not implemented / defined");
  ZZ x(value), bit;
  QQ y, m, b(1);
  while (x >= ZZ(2)) {
    ZZ::div(x, ZZ(2), x, bit);
    if (bit.isOne()) m += qqOne();
    m /= qqTwo();
    y += qqOne();
  }
  m += qqOne();
  const QQ limit = qqEps() * qqEps();
  while (b > limit) {
    m *= m;
    b /= qqTwo();
    if (m >= qqTwo()) {
      y += b;
      m /= qqTwo();
    }
    roundDigits(m, DIGITS);
  }
  return y.normalize();
}

QQ log2(const QQ& x) {
  if (x.isInf && !x.sign) fail("log2(-inf) is not implemented / defined");
  return x.isInf ? x : log2OfFraction(x);
}

QQ log(const QQ& x) {
  if (x.isInf && !x.sign) fail("log(-inf) is not implemented / defined");
  // 16 digits of e: the bounds of sampling, which ask for this, need no more, and would move with more.
  static const QQ log2OfE = log2(QQ(2.718281828459045));
  return x.isInf ? x : log2OfFraction(x) / log2OfE;
}

void root(QQ& r, const QQ& x, const ZZ& n) {
  if (n.isZero()) fail("QQ: zero-th roots are not defined");
  if (n.isOne()) {
    r = x;
    return;
  }
  if (!x.sign) {
    if (!isOdd(n)) fail("QQ: complex roots are not implemented");
    root(r, abs(x), n);
    r.negate();
    return;
  }
  if (!n.sign) {
    if (x.isExactZero()) fail("QQ: division by zero");
    const QQ inverse = x.isInf ? qqZero() : QQ(x.nenner, numeratorOf(x));
    return root(r, inverse, -n);
  }
  if (x.isInf || x.isExactZero()) {
    r = x;
    return;
  }
  r = newtonRoot(x, n);
  r.normalize();
  r.sign = true;
}

QQ pow(const QQ& x, const QQ& y) {
  if (!y.sign) return qqOne() / pow(x, -y);
  if (y.isInf) return powInfinite(x);
  if (x.isInf) return powOfInfinity(x, y);
  if (y.isWhole()) return powWhole(x, y.ganze);  // the roots below would be roots of 1
  const ZZ numerator = numeratorOf(x);
  QQ r1, r2;
  root(r1, QQ(numerator ^ y.zaehler), y.nenner);
  root(r2, QQ(x.nenner ^ y.zaehler), y.nenner);
  return powWhole(x, y.ganze) * r1 / r2;
}

}  // namespace latbox
