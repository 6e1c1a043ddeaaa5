// The parts of a QQ as numbers of their own, and its roundings: to integers, and of the digits of a fraction.
#include "numbers/qq.h"

namespace latbox {

ZZ signedGanze(const QQ& x) {
  return x.sign ? x.ganze : -x.ganze;
}
ZZ signedZaehler(const QQ& x) {
  return x.sign ? x.zaehler : -x.zaehler;
}
QQ denominator(const QQ& x) {
  return x.isInf ? qqOne() : QQ(x.nenner);
}

namespace {

// The integer part with the sign of x, its magnitude raised by one if `raise`.
QQ wholePart(const QQ& x, bool raise) {
  QQ r;
  r.ganze = x.ganze;
  r.sign = x.sign;
  if (raise) ZZ::add(r.ganze, ZZ(1), r.ganze);
  if (r.ganze.isZero()) r.sign = true;
  return r;
}

}  // namespace

QQ ceil(const QQ& x) {
  return x.isInf ? x : wholePart(x, x.sign && !x.zaehler.isZero());
}
QQ floor(const QQ& x) {
  return x.isInf ? x : wholePart(x, !x.sign && !x.zaehler.isZero());
}

// The ceiling of x - 1/2 below zero, the floor of x + 1/2 above: the magnitude rises from a half on.
QQ roundNearest(const QQ& x) {
  if (x.isInf || x.isWhole()) return x;
  return wholePart(x, x.zaehler + x.zaehler >= x.nenner);
}

void roundDigits(QQ& x, unsigned n) {
  const long d = x.nenner.digits();
  if (d <= static_cast<long>(n)) return;
  const long k = d - static_cast<long>(n);
  if (k < x.zaehler.digits()) {
    x.zaehler.decimal_rshift(k);
    x.nenner.decimal_rshift(k);
    x.unreduced_ = true;
  } else {
    x.zaehler = ZZ(0);
    x.nenner = ZZ(1);
    // A zero with a sign would send sum and difference from one to the other without end.
    if (x.ganze.isZero()) x.sign = true;
  }
}

}  // namespace latbox
