// The arithmetic of QQ as defined, for parts of any size. The short cuts for small parts stand in
// qq_short_cuts.cpp.
#include "numbers/qq.h"

#include <utility>

#include "lib/exceptions.h"
#include "lib/failure.h"

namespace latbox {

namespace {

bool roundProductsSwitch = false;

// Digits of the denominator that a rounded partial product keeps.
constexpr unsigned PRODUCT_DIGITS = PRECISION_DIGITS;

QQ negated(QQ x) {
  x.negate();
  return x;
}

}  // namespace

QQ::QQ(long long value) : sign(value >= 0), ganze(value), nenner(1) {
  ganze.sign = true;
}

QQ::QQ(const ZZ& value) : sign(value.sign), ganze(value), nenner(1) {
  if (ganze.isZero()) setZero();  // also the empty number and the negative zero of ZZ
  ganze.sign = true;
}

QQ::QQ(const ZZ& num, const ZZ& den) : sign(num.sign == den.sign), zaehler(num), nenner(den) {
  zaehler.sign = nenner.sign = true;
  normalize();
}

QQ::QQ(const char* text) : QQ(std::string(text)) {}
QQ::QQ(const std::string& text) : nenner(1) {
  parse(*this, text);
}

QQ::QQ(QQ&& other) noexcept
    : isInf(other.isInf),
      sign(other.sign),
      ganze(std::move(other.ganze)),
      zaehler(std::move(other.zaehler)),
      nenner(std::move(other.nenner)),
      unreduced_(other.unreduced_) {
  other.setZero();
}

QQ& QQ::operator=(QQ&& other) noexcept {
  if (this == &other) return *this;
  isInf = other.isInf;
  sign = other.sign;
  ganze = std::move(other.ganze);
  zaehler = std::move(other.zaehler);
  nenner = std::move(other.nenner);
  unreduced_ = other.unreduced_;
  other.setZero();
  return *this;
}

void QQ::setZero() {
  ganze.setMagnitude(0, true);
  sign = true;
  setInteger();
}

// Finite, without a fraction.
void QQ::setInteger() {
  isInf = unreduced_ = false;
  zaehler.setMagnitude(0, true);
  nenner.setMagnitude(1, true);
}

void QQ::setInfinity(bool nonNegative) {
  setInteger();
  ganze.setMagnitude(1, true);
  isInf = true;
  sign = nonNegative;
}

void QQ::setRoundProducts(bool round) {
  roundProductsSwitch = round;
}
bool QQ::roundProducts() {
  return roundProductsSwitch;
}

QQ& QQ::normalize() {
  if (!ganze.sign || !zaehler.sign || !nenner.sign)
    fail("A ganze / zaehler / nenner sign has been set, though it should not be used");
  unreduced_ = false;
  if (isInf) return *this;
  if (!zaehler.isZero()) {
    ZZ q;
    ZZ::div(zaehler, nenner, q, zaehler);
    ZZ::add(ganze, q, ganze);
  }
  if (zaehler.isZero()) {
    setInteger();
    if (ganze.isZero()) setZero();
    return *this;
  }
  const ZZ g = gcd(zaehler, nenner);
  if (!g.isOne()) {
    zaehler = zaehler / g;
    nenner = nenner / g;
  }
  return *this;
}

void commonDenominator(ZZ& aZ, ZZ& bZ, ZZ& n, const QQ& a, const QQ& b) {
  if (&aZ == &bZ || &aZ == &n || &bZ == &n) fail("QQ: The ZZs have the same address");
  if (a.isInf || b.isInf)
    fail("a_z, b_z can not be set to ZZ::INF -- isInf is logic only available in QQ class");
  const ZZ g = gcd(a.nenner, b.nenner);
  ZZ common = (a.nenner * b.nenner) / g;
  ZZ first = (common / a.nenner) * a.zaehler;
  bZ = (common / b.nenner) * b.zaehler;
  aZ = std::move(first);
  n = std::move(common);
}

long QQ::compareGeneral(const QQ& a, const QQ& b) {
  if (&a == &b) return 0;
  if (a.sign != b.sign) return a.sign ? 1 : -1;
  const long forward = a.sign ? 1 : -1;
  if (a.isInf || b.isInf) return a.isInf == b.isInf ? 0 : (b.isInf ? -forward : forward);
  const long c = ZZ::compare(a.ganze, b.ganze);
  if (c != 0) return c * forward;
  ZZ aZ, bZ, n;
  commonDenominator(aZ, bZ, n, a, b);
  return ZZ::compare(aZ, bZ) * forward;
}

void QQ::add(QQ& r, const QQ& a, const QQ& b) {
  if (addFast(r, a, b, b.sign)) return;
  QQ result;
  addGeneral(result, a, b);
  r = std::move(result);
}

void QQ::sub(QQ& r, const QQ& a, const QQ& b) {
  if (addFast(r, a, b, !b.sign)) return;
  QQ result;
  subGeneral(result, a, b);
  r = std::move(result);
}

void QQ::mul(QQ& r, const QQ& a, const QQ& b) {
  if (mulFast(r, a, b)) return;
  QQ result;
  mulGeneral(result, a, b);
  r = std::move(result);
}

void QQ::divide(QQ& r, const QQ& a, const QQ& b) {
  if (divideFast(r, a, b)) return;
  QQ result;
  divideGeneral(result, a, b);
  r = std::move(result);
}

// The product keeps its storage from call to call: to make and drop three numbers cost as much as the sum.
void QQ::addmul(QQ& r, const QQ& a, const QQ& b) {
  thread_local QQ product;
  mul(product, a, b);
  add(r, r, product);
}

void QQ::submul(QQ& r, const QQ& a, const QQ& b) {
  thread_local QQ product;
  mul(product, a, b);
  sub(r, r, product);
}

void QQ::addGeneral(QQ& r, const QQ& a, const QQ& b) {
  if (!a.sign) return subGeneral(r, b, negated(a));
  if (!b.sign) return subGeneral(r, a, negated(b));
  if (a.isInf || b.isInf) {
    r = a.isInf ? a : b;
    return;
  }
  ZZ aZ, bZ;
  r.isInf = false;
  r.sign = true;
  commonDenominator(aZ, bZ, r.nenner, a, b);
  ZZ::add(aZ, bZ, r.zaehler);
  ZZ::add(a.ganze, b.ganze, r.ganze);
  r.normalize();
}

void QQ::subGeneral(QQ& r, const QQ& a, const QQ& b) {
  if (!a.sign) {
    addGeneral(r, negated(a), b);
    r.negate();
    return;
  }
  if (!b.sign) return addGeneral(r, a, negated(b));
  if (a.isInf && b.isInf) fail("INF - INF is not defined");
  if (a.isInf || b.isInf) {
    r = a.isInf ? a : negated(b);
    return;
  }
  ZZ aZ, bZ;
  r.isInf = false;
  commonDenominator(aZ, bZ, r.nenner, a, b);
  ZZ::sub(aZ, bZ, r.zaehler);
  ZZ::sub(a.ganze, b.ganze, r.ganze);
  if (r.zaehler.sign != r.ganze.sign) {
    r.zaehler = r.zaehler + r.ganze * r.nenner;
    r.ganze = ZZ(0);
  }
  r.sign = r.zaehler.sign && r.ganze.sign;
  r.zaehler.sign = r.ganze.sign = true;
  r.normalize();
}

// r = infinite, with the sign of the other factor applied.
void QQ::multiplySign(const QQ& infinite, bool otherSign) {
  setInfinity(infinite.sign == otherSign);
}

// The product of two mixed numbers is expanded, so that the small parts never meet in one large common
// denominator.
void QQ::mulGeneral(QQ& r, const QQ& a, const QQ& b) {
  if (a.isInf && b.isExactZero()) fail("qq: INF * 0 is not defined!");
  if (b.isInf && a.isExactZero()) fail("qq: 0 * INF is not defined!");
  if (a.isInf) return r.multiplySign(a, b.sign);
  if (b.isInf) return r.multiplySign(b, a.sign);
  const ZZ g1 = signedGanze(a), z1 = signedZaehler(a), g2 = signedGanze(b), z2 = signedZaehler(b);
  const QQ t1(g1 * g2);
  QQ t2(g1 * z2, b.nenner), t3(z1 * g2, a.nenner), t4(z1 * z2, a.nenner * b.nenner);
  if (roundProductsSwitch) {
    roundDigits(t4, PRODUCT_DIGITS);
    roundDigits(t3, PRODUCT_DIGITS);
    roundDigits(t2, PRODUCT_DIGITS);
  }
  QQ sum, partial;
  addGeneral(sum, t1, t3);
  addGeneral(partial, sum, t2);
  addGeneral(r, partial, t4);
  r.normalize();
}

void QQ::divideGeneral(QQ& r, const QQ& a, const QQ& b) {
  if (a.isInf && b.isInf) fail("QQ: +-INF / +-INF is not defined");
  // Thrown and no failure: a zero pivot in exact code is recovered from.
  if (b.isExactZero()) throw PrecisionException("QQ: division by zero3");
  if (a.isInf) return r.multiplySign(a, b.sign);
  if (b.isInf) return r.setZero();
  const ZZ numerator = signedGanze(b) * b.nenner + signedZaehler(b);
  const QQ t1(signedGanze(a) * b.nenner, numerator);
  const QQ t2(signedZaehler(a) * b.nenner, a.nenner * numerator);
  addGeneral(r, t1, t2);
  r.normalize();
}

QQ& QQ::operator+=(const QQ& b) {
  add(*this, *this, b);
  return *this;
}

QQ& QQ::operator-=(const QQ& b) {
  sub(*this, *this, b);
  return *this;
}

QQ& QQ::operator*=(const QQ& b) {
  mul(*this, *this, b);
  return *this;
}

QQ& QQ::operator/=(const QQ& b) {
  divide(*this, *this, b);
  return *this;
}

void QQ::negate() {
  if (!isExactZero()) sign = !sign;
}

QQ operator+(const QQ& a, const QQ& b) {
  QQ r;
  QQ::add(r, a, b);
  return r;
}

QQ operator-(const QQ& a, const QQ& b) {
  QQ r;
  QQ::sub(r, a, b);
  return r;
}

QQ operator*(const QQ& a, const QQ& b) {
  QQ r;
  QQ::mul(r, a, b);
  return r;
}

QQ operator/(const QQ& a, const QQ& b) {
  QQ r;
  QQ::divide(r, a, b);
  return r;
}

QQ operator-(const QQ& a) {
  return negated(a);
}

QQ abs(const QQ& x) {
  QQ r(x);
  r.sign = true;
  return r;
}

const QQ& qqZero() {
  static const QQ value(0);
  return value;
}

const QQ& qqOne() {
  static const QQ value(1);
  return value;
}

const QQ& qqTwo() {
  static const QQ value(2);
  return value;
}

const QQ& qqTen() {
  static const QQ value(10);
  return value;
}

const QQ& qqHalf() {
  static const QQ value(qqOne() / qqTwo());
  return value;
}

const QQ& qqEps() {
  static const QQ value(qqOne() / QQ(1000000000));
  return value;
}

const QQ& qqInfinity() {
  static const QQ value("inf");
  return value;
}

}  // namespace latbox
