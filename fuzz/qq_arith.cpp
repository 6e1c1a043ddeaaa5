// QQ against an independent library: the input is a sequence of operations on four numbers, infinities among
// them, the result written over any of them, an operand among them. Each operation is done in all the forms
// that there are; every result must be the same and in canonical form, and what has no result be refused.
#include <array>
#include <optional>

#include "numbers/number.h"
#include "refusal.h"
#include "support/gmp.h"
#include "tape.h"

namespace latbox::fuzzing {
namespace {

using testing::Mpq;
using testing::Mpz;
using testing::textOf;

constexpr std::size_t NUMBERS = 4;
// Denominators grow; what is larger starts anew.
constexpr long MAX_DIGITS = 150;
constexpr int MAX_OPERATIONS = 100;

// A rational or an infinity, whose sign is then `infinite`.
struct Value {
  int infinite = 0;
  Mpq finite;
  int sign() const { return infinite != 0 ? infinite : finite.sign(); }
};
using Result = std::optional<Value>;

Value infinityOf(int sign) {
  Value v;
  v.infinite = sign;
  return v;
}

Value negated(Value v) {
  v.infinite = -v.infinite;
  mpq_neg(v.finite.value, v.finite.value);
  return v;
}

Result sum(const Value& a, const Value& b) {
  if (a.infinite != 0 && b.infinite == -a.infinite) return {};
  if (a.infinite != 0 || b.infinite != 0) return infinityOf(a.infinite != 0 ? a.infinite : b.infinite);
  Value v;
  mpq_add(v.finite.value, a.finite.value, b.finite.value);
  return v;
}

Result difference(const Value& a, const Value& b) {
  return sum(a, negated(b));
}

Result product(const Value& a, const Value& b) {
  if (a.infinite != 0 || b.infinite != 0) {
    if (a.sign() * b.sign() == 0) return {};
    return infinityOf(a.sign() * b.sign());
  }
  Value v;
  mpq_mul(v.finite.value, a.finite.value, b.finite.value);
  return v;
}

Result quotient(const Value& a, const Value& b) {
  if (b.sign() == 0 || (a.infinite != 0 && b.infinite != 0)) return {};
  if (a.infinite != 0) return infinityOf(a.infinite * b.sign());
  if (b.infinite != 0) return Value();
  Value v;
  mpq_div(v.finite.value, a.finite.value, b.finite.value);
  return v;
}

// The canonical form, part by part.
void requireSame(QQ q, const Value& v, const char* operation) {
  q.normalize();
  require(q.isInf == (v.infinite != 0), operation);
  require(q.sign == (v.sign() >= 0), operation);
  if (q.isInf) return;
  require(q.zaehler < q.nenner && gcd(q.zaehler, q.nenner).isOne(), "canonical form");
  require(q.nenner.to_string() == textOf(mpq_denref(v.finite.value)), operation);
  const ZZ numerator = signedGanze(q) * q.nenner + signedZaehler(q);
  require(numerator.to_string() == textOf(mpq_numref(v.finite.value)), operation);
}

class Machine {
 public:
  explicit Machine(Tape& tape) : tape_(tape) {}

  void run() {
    for (std::size_t i = 0; i < NUMBERS; ++i) load(i);
    for (int i = 0; i < MAX_OPERATIONS && !tape_.atEnd(); ++i) step();
  }

 private:
  void load(std::size_t i) {
    const unsigned kind = tape_.below(16);
    wanted_[i] = Value();
    if (kind < 2) {
      exact_[i] = kind == 0 ? qqInfinity() : -qqInfinity();
      wanted_[i].infinite = kind == 0 ? 1 : -1;
    } else {
      const std::string numerator = tape_.integer(3);
      std::string denominator = kind < 6 ? "1" : tape_.integer(2);
      if (denominator == "0") denominator = "1";
      exact_[i] = QQ(ZZ(numerator), ZZ(denominator));
      wanted_[i].finite = Mpq(numerator + "/" + denominator);
    }
    requireSame(exact_[i], wanted_[i], "load");
  }

  void step() {
    const unsigned operation = tape_.below(12);
    const unsigned places = tape_.byte();
    r_ = places % NUMBERS;
    a_ = places / NUMBERS % NUMBERS;
    b_ = places / NUMBERS / NUMBERS % NUMBERS;
    operate(operation);
    if (exact_[r_].nenner.digits() + exact_[r_].ganze.digits() > MAX_DIGITS) load(r_);
  }

  void operate(unsigned operation) {
    switch (operation) {
      case 0:
        return load(r_);
      case 1:
        return apply(QQ::add, QQ::addGeneral, sum, "add");
      case 2:
        return apply(QQ::sub, QQ::subGeneral, difference, "sub");
      case 3:
        return apply(QQ::mul, QQ::mulGeneral, product, "mul");
      case 4:
        return apply(QQ::divide, QQ::divideGeneral, quotient, "divide");
      case 5:
        return accumulate(QQ::addmul, sum, "addmul");
      case 6:
        return accumulate(QQ::submul, difference, "submul");
      case 7:
        return roundToInteger();
      case 8:
        return cutDigits();
      case 9:
        return power();
      case 10:
        return throughText();
      default:
        return compareBoth();
    }
  }

  using Operation = void(QQ&, const QQ&, const QQ&);
  using Reference = Result(const Value&, const Value&);

  void take(bool done, const Result& wanted, const char* name) {
    require(done == wanted.has_value(), name);
    if (!done) return load(r_);
    wanted_[r_] = *wanted;
    requireSame(exact_[r_], wanted_[r_], name);
  }

  void apply(Operation fast, Operation general, Reference reference, const char* name) {
    const Result wanted = reference(wanted_[a_], wanted_[b_]);
    QQ slow;
    const bool slowDone = accepted([&] { general(slow, exact_[a_], exact_[b_]); });
    require(slowDone == wanted.has_value(), name);
    if (slowDone) requireSame(slow, *wanted, name);
    take(accepted([&] { fast(exact_[r_], exact_[a_], exact_[b_]); }), wanted, name);
  }

  void accumulate(Operation operation, Reference reference, const char* name) {
    const Result step = product(wanted_[a_], wanted_[b_]);
    const Result wanted = step ? reference(wanted_[r_], *step) : Result();
    take(accepted([&] { operation(exact_[r_], exact_[a_], exact_[b_]); }), wanted, name);
  }

  void roundToInteger() {
    const unsigned kind = tape_.below(3);
    const QQ result =
        kind == 0 ? floor(exact_[a_]) : (kind == 1 ? ceil(exact_[a_]) : roundNearest(exact_[a_]));
    Value wanted = wanted_[a_];
    if (wanted.infinite == 0) wanted.finite = rounded(wanted.finite, kind);
    exact_[r_] = result;
    wanted_[r_] = wanted;
    requireSame(exact_[r_], wanted, "rounding");
  }

  // Halves away from zero: the floor of x + 1/2 above zero, the ceiling of x - 1/2 below.
  static Mpq rounded(const Mpq& x, unsigned kind) {
    const Mpq half(x.sign() < 0 ? -qqHalf() : qqHalf());
    Mpq shifted = x;
    if (kind == 2) mpq_add(shifted.value, shifted.value, half.value);
    const bool down = kind == 0 || (kind == 2 && x.sign() >= 0);
    Mpz whole;
    (down ? mpz_fdiv_q : mpz_cdiv_q)(whole.value, mpq_numref(shifted.value), mpq_denref(shifted.value));
    Mpq result;
    mpq_set_z(result.value, whole.value);
    return result;
  }

  // The fraction stays unreduced at times, as it does in the solver; one that became 1 would leave the
  // integer part to normalize.
  void cutDigits() {
    const unsigned digits = 1 + tape_.below(40);
    exact_[r_] = exact_[a_];
    QQ q = exact_[r_];
    roundDigits(exact_[r_], digits);
    const long cut = q.nenner.digits() - static_cast<long>(digits);
    if (cut > 0) {
      q.zaehler = q.zaehler / (ZZ(10) ^ ZZ(cut));
      q.nenner = q.zaehler.isZero() ? ZZ(1) : q.nenner / (ZZ(10) ^ ZZ(cut));
      require(exact_[r_].zaehler == q.zaehler && exact_[r_].nenner == q.nenner, "cut digits");
    }
    if ((digits & 1) != 0 || q.zaehler >= q.nenner) exact_[r_].normalize();
    wanted_[r_] = wanted_[a_];
    if (wanted_[r_].infinite != 0) return;
    wanted_[r_].finite = Mpq(q);
    requireSame(exact_[r_], wanted_[r_], "cut digits");
  }

  void power() {
    const int exponent = static_cast<int>(tape_.below(25)) - 12;
    const Value& base = wanted_[a_];
    if (base.infinite != 0 || (base.sign() == 0 && exponent < 0)) return;
    const unsigned long magnitude = static_cast<unsigned long>(exponent < 0 ? -exponent : exponent);
    Value wanted;
    mpz_pow_ui(mpq_numref(wanted.finite.value), mpq_numref(base.finite.value), magnitude);
    mpz_pow_ui(mpq_denref(wanted.finite.value), mpq_denref(base.finite.value), magnitude);
    if (exponent < 0) mpq_inv(wanted.finite.value, wanted.finite.value);
    exact_[r_] = pow(exact_[a_], QQ(exponent));
    wanted_[r_] = wanted;
    requireSame(exact_[r_], wanted, "power");
  }

  void throughText() {
    exact_[a_].normalize();
    QQ again;
    parse(again, toText(exact_[a_]));
    exact_[r_] = again;
    wanted_[r_] = Value(wanted_[a_]);
    requireSame(exact_[r_], wanted_[r_], "text");
    const dbl_t fast = toDouble(again);
    require(fast == toDoubleByText(again, false), "the way to the machine's number");
  }

  void compareBoth() {
    const Value &a = wanted_[a_], &b = wanted_[b_];
    int order = a.infinite - b.infinite;
    if (a.infinite == 0 && b.infinite == 0) order = mpq_cmp(a.finite.value, b.finite.value);
    const long sign = order < 0 ? -1 : (order > 0 ? 1 : 0);
    require(QQ::compare(exact_[a_], exact_[b_]) == sign, "order");
    require(QQ::compareGeneral(exact_[a_], exact_[b_]) == sign, "order in general");
    require((exact_[a_] == exact_[b_]) == (sign == 0), "equality");
    exact_[r_] = -exact_[a_];
    wanted_[r_] = negated(wanted_[a_]);
    requireSame(exact_[r_], wanted_[r_], "negation");
  }

  Tape& tape_;
  std::array<QQ, NUMBERS> exact_;
  std::array<Value, NUMBERS> wanted_;
  std::size_t r_ = 0, a_ = 0, b_ = 0;
};

}  // namespace
}  // namespace latbox::fuzzing

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  latbox::fuzzing::Tape tape(bytes, size);
  latbox::fuzzing::Machine(tape).run();
  return 0;
}
